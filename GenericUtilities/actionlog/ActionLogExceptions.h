// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <qvbase/Exceptions.h>

#include <QString>

namespace qv {

/// Why an operation of the action log ended early. The log turns these into its signals; ActionLog::readEntries() alone
/// lets one out.
class GENERICUTILITIES_EXPORT ActionLogException : public ExceptionQt {
public:
    /// @p message is for people, translated.
    explicit ActionLogException(QString const& message);
    ActionLogException(ActionLogException const&) = default;
    ActionLogException& operator=(ActionLogException const&) = default;
    ~ActionLogException() override;
};

/// The file cannot be used.
class GENERICUTILITIES_EXPORT ActionLogFileException : public ActionLogException {
public:
    /// Told by a signal; never renumber.
    enum eType {
        CouldNotOpen = 1,
        InvalidHeader = 4 ///< of another version or for other credentials
    };

    ActionLogFileException(QString const& message, QString const& file, eType type);
    ActionLogFileException(ActionLogFileException const&) = default;
    ActionLogFileException& operator=(ActionLogFileException const&) = default;
    ~ActionLogFileException() override;

    QString const& file() const noexcept { return m_file; }
    eType type() const noexcept { return m_type; }

private:
    QString m_file;
    eType m_type;
};

/// What is read or was to be written is no text of a log file.
class GENERICUTILITIES_EXPORT ActionLogXmlException : public ActionLogException {
public:
    /// @p line counts from 1, @p colum from 0; both are 0 where there is no place to tell.
    ActionLogXmlException(QString const& message, QString const& error, int line, int colum);
    ActionLogXmlException(ActionLogXmlException const&) = default;
    ActionLogXmlException& operator=(ActionLogXmlException const&) = default;
    ~ActionLogXmlException() override;

    QString const& error() const noexcept { return m_error; }
    int line() const noexcept { return m_line; }
    int colum() const noexcept { return m_colum; }

private:
    QString m_error;
    int m_line;
    int m_colum;
};

/// The file user cannot be logged on.
class GENERICUTILITIES_EXPORT ActionLogImpersonateException : public ActionLogException {
public:
    /// @p error is the reason as a text, @p number as an errno value.
    ActionLogImpersonateException(QString const& user, QString const& error, int number);
    ActionLogImpersonateException(ActionLogImpersonateException const&) = default;
    ActionLogImpersonateException& operator=(ActionLogImpersonateException const&) = default;
    ~ActionLogImpersonateException() override;

    QString const& user() const noexcept { return m_user; }
    QString const& error() const noexcept { return m_error; }
    int number() const noexcept { return m_number; }

private:
    QString m_user;
    QString m_error;
    int m_number;
};

} // namespace qv
