// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/Exceptions.h>

/// What the program ends with; scripts rely on the numbers.
enum ExitCode {
    Fine = 0,
    DamageFound = 1,
    WrongUsage = 2,
    NotDone = 3 ///< a file cannot be read or written, a password is missing or wrong
};

/// The command line asks for what makes no sense.
class UsageException : public qv::ExceptionQt {
public:
    using qv::ExceptionQt::ExceptionQt;
};

/// A log file is not what was written to it.
class DamageException : public qv::ExceptionQt {
public:
    using qv::ExceptionQt::ExceptionQt;
};

/// Neither the command line nor a log is at fault: the system refuses.
class RefusalException : public qv::ExceptionQt {
public:
    using qv::ExceptionQt::ExceptionQt;
};

/// The same of where a report goes to.
class OutputException : public RefusalException {
public:
    using RefusalException::RefusalException;
};

/// Does @p work on a file. What it throws because of the file names it then.
template <typename Work> void workOn(QString const& file, Work const& work)
{
    try {
        work();
    } catch (DamageException const& exception) {
        throw DamageException(QStringLiteral("'%1' is damaged: %2").arg(file, exception.message()));
    } catch (OutputException const&) {
        throw;
    } catch (RefusalException const& exception) {
        throw RefusalException(QStringLiteral("'%1': %2").arg(file, exception.message()));
    }
}

/// A line on standard error.
void printError(QString const& message);
