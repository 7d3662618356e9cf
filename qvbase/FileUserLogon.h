// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/Export.h>

#include <QString>

#include <functional>
#include <memory>

namespace qv {

/// The logon of a file user: whoever a protected file is written in the name of. An object exists only for a user who
/// could be logged on; what it says of him does not change.
class QVBASE_EXPORT FileUserLogon {
public:
    /// Logs a user on. Returns null on failure and then sets the reason (a text for people) and an errno value, where
    /// it was given places for them. May be called in several threads at once.
    using Provider = std::function<std::unique_ptr<FileUserLogon>(
        QString const& user, QString const& password, QString* errorText, int* error)>;

    FileUserLogon(QString firstName, QString secondName);
    FileUserLogon(FileUserLogon const&) = delete;
    FileUserLogon& operator=(FileUserLogon const&) = delete;
    virtual ~FileUserLogon();

    /// Asks the provider in force. @p errorText and @p error may be null; on success they are set to an empty text
    /// and 0.
    ///
    /// The built-in provider finds the account in the system's user database. It asks for no password: that one
    /// protects the file, and is the file's business. An unknown account fails with the system's reason and ENOENT.
    static std::unique_ptr<FileUserLogon> logon(
        QString const& user, QString const& password, QString* errorText = nullptr, int* error = nullptr);
    /// Exchanges the provider of the process; an empty one restores the built-in. A logon under way in another thread
    /// ends with the provider that it began with.
    static void setProvider(Provider provider);

    /// The login name.
    QString const& firstName() const { return m_firstName; }
    /// The full name of the account; may be empty.
    QString const& secondName() const { return m_secondName; }

private:
    QString m_firstName;
    QString m_secondName;
};

} // namespace qv
