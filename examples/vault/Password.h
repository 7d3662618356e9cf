// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QString>

/// The password from the first source that there is: the first line of @p passwordFile, the environment variable
/// VAULT_PASSWORD, a question on the terminal, put twice where the password is @p chosen for a new file. Throws
/// qv::ExceptionQt where there is none or it is of no use.
QString findPassword(QString const& passwordFile, bool chosen);
