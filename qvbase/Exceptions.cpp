// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/Exceptions.h>

#include <utility>

namespace qv {

ExceptionQt::ExceptionQt(QString message, std::exception_ptr cause)
    : m_message(std::move(message))
    , m_utf8(m_message.toUtf8())
    , m_cause(std::move(cause))
{
}

ExceptionQt::~ExceptionQt() = default;

char const* ExceptionQt::what() const noexcept
{
    return m_utf8.constData();
}

UnexpectedTypeException::UnexpectedTypeException(
    QString name, QString actualType, QString expectedType, QString message, std::exception_ptr cause)
    : ExceptionQt(std::move(message), std::move(cause))
    , m_name(std::move(name))
    , m_actualType(std::move(actualType))
    , m_expectedType(std::move(expectedType))
{
}

UnexpectedTypeException::~UnexpectedTypeException() = default;

IllegalArgumentException::IllegalArgumentException(QString message, QString argument)
    : ExceptionQt(std::move(message))
    , m_argument(std::move(argument))
{
}

IllegalArgumentException::~IllegalArgumentException() = default;

} // namespace qv
