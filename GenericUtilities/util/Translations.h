// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QLocale>

namespace qv {

/// Has the library's texts (categories, actions and descriptions of the action log, formats, errors) appear in the
/// language of @p locale from now on, in place of the language of an earlier call. There are German and French; English
/// is what the texts are written in. A client's own catalogues are not touched; where they hold a text too, the one
/// installed last wins.
///
/// Returns false, and leaves the texts English, where there is no catalogue for the language, or where one is wanted
/// and there is no QCoreApplication, which owns what is loaded. To be called in the application's thread.
GENERICUTILITIES_EXPORT bool installTranslations(QLocale const& locale = QLocale());

} // namespace qv
