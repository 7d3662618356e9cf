// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Access.h"

#include "Failures.h"

#include <terminal/Password.h>

namespace {

QString found(PasswordSources const& sources, bool chosen)
{
    try {
        return findPassword(sources, chosen);
    } catch (qv::ExceptionQt const& exception) {
        throw RefusalException(exception.message());
    }
}

} // namespace

QString const& Access::password()
{
    if (!m_password)
        m_password = found({m_passwordFile, "QVLOG_PASSWORD", "Password of the log: "}, false);
    return *m_password;
}

QString Access::newPassword(QString const& file)
{
    return found({file, "QVLOG_NEW_PASSWORD", "Password of the new log: "}, true);
}
