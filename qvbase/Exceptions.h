// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/Export.h>

#include <QByteArray>
#include <QString>

#include <exception>

namespace qv {

/// Base of the exceptions of these libraries: a message for people and, optionally, the exception that caused this one.
class QVBASE_EXPORT ExceptionQt : public std::exception {
public:
    explicit ExceptionQt(QString message, std::exception_ptr cause = {});
    ExceptionQt(ExceptionQt const&) = default;
    ExceptionQt& operator=(ExceptionQt const&) = default;
    ~ExceptionQt() override;

    virtual QString const& message() const noexcept { return m_message; }
    /// The message as UTF-8; valid as long as the exception.
    char const* what() const noexcept override;
    /// The exception that led to this one; null where there was none.
    std::exception_ptr cause() const noexcept { return m_cause; }

private:
    QString m_message;
    QByteArray m_utf8;
    std::exception_ptr m_cause;
};

/// A named object is of another type than its user expected.
class QVBASE_EXPORT UnexpectedTypeException : public ExceptionQt {
public:
    UnexpectedTypeException(
        QString name, QString actualType, QString expectedType, QString message, std::exception_ptr cause = {});
    UnexpectedTypeException(UnexpectedTypeException const&) = default;
    UnexpectedTypeException& operator=(UnexpectedTypeException const&) = default;
    ~UnexpectedTypeException() override;

    QString const& name() const noexcept { return m_name; }
    QString const& actualType() const noexcept { return m_actualType; }
    QString const& expectedType() const noexcept { return m_expectedType; }

private:
    QString m_name;
    QString m_actualType;
    QString m_expectedType;
};

/// An operation was called with an argument that it cannot work on.
class QVBASE_EXPORT IllegalArgumentException : public ExceptionQt {
public:
    explicit IllegalArgumentException(QString message, QString argument = {});
    IllegalArgumentException(IllegalArgumentException const&) = default;
    IllegalArgumentException& operator=(IllegalArgumentException const&) = default;
    ~IllegalArgumentException() override;

    /// The argument as text; empty where the message says all.
    QString const& argument() const noexcept { return m_argument; }

private:
    QString m_argument;
};

} // namespace qv
