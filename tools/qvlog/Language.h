// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QString>

/// Has the texts of entries translated from now on: into @p language ("de", "fr", "en"), or, where that is empty, into
/// the language of the environment as far as there is a catalogue.
void chooseLanguage(QString const& language);
