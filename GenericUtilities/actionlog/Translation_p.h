// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QCoreApplication>
#include <QString>

namespace qv {

/// A text marked by QT_TRANSLATE_NOOP("ActionLog", …), in the user's language.
inline QString translated(char const* text)
{
    return QCoreApplication::translate("ActionLog", text);
}

} // namespace qv
