// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QString>

/// Where a program takes a password from. Never from its command line, which every user of the machine can read.
struct PasswordSources {
    QString file; ///< The first line counts; empty for none.
    char const* variable; ///< Of the environment.
    char const* question; ///< For the terminal.
};

/// The password from the first source that there is. The question is put twice where the password is @p chosen for a
/// new file. Throws qv::ExceptionQt where there is none or it is of no use.
QString findPassword(PasswordSources const& sources, bool chosen);
