// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QString>

#include <optional>

/// What encrypted log files are opened with. The password is looked for when it is first needed.
class Access {
public:
    Access(QString const& fileUser, QString const& passwordFile)
        : m_fileUser(fileUser)
        , m_passwordFile(passwordFile)
    {
    }

    QString const& fileUser() const { return m_fileUser; }
    /// From the password file, the environment variable QVLOG_PASSWORD or the terminal. Throws RefusalException.
    QString const& password();
    /// That of a file to be made, from @p file, QVLOG_NEW_PASSWORD or the terminal. Throws RefusalException.
    static QString newPassword(QString const& file);

private:
    QString m_fileUser;
    QString m_passwordFile;
    std::optional<QString> m_password;
};
