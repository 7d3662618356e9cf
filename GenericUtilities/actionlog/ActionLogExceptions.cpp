// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ActionLogExceptions.h>

namespace qv {

ActionLogException::ActionLogException(QString const& message)
    : ExceptionQt(message)
{
}

ActionLogException::~ActionLogException() = default;

ActionLogFileException::ActionLogFileException(QString const& message, QString const& file, eType type)
    : ActionLogException(message)
    , m_file(file)
    , m_type(type)
{
}

ActionLogFileException::~ActionLogFileException() = default;

ActionLogXmlException::ActionLogXmlException(QString const& message, QString const& error, int line, int colum)
    : ActionLogException(message)
    , m_error(error)
    , m_line(line)
    , m_colum(colum)
{
}

ActionLogXmlException::~ActionLogXmlException() = default;

ActionLogImpersonateException::ActionLogImpersonateException(QString const& user, QString const& error, int number)
    : ActionLogException(error)
    , m_user(user)
    , m_error(error)
    , m_number(number)
{
}

ActionLogImpersonateException::~ActionLogImpersonateException() = default;

} // namespace qv
