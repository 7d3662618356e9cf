// SPDX-License-Identifier: LGPL-2.1-or-later
// Reads action logs. Options.cpp knows the command line; EntryReader.cpp reads a file, Trail.cpp several; Show.cpp,
// Follow.cpp, Verify.cpp, Stats.cpp and Convert.cpp are the commands. docs/qvlog.md is the manual.

#include "Commands.h"

#include <QCoreApplication>
#include <QTextCodec>

namespace {

ExitCode perform(Options const& options)
{
    Access access(options.fileUser, options.passwordFile);
    switch (options.command) {
    case Command::Show:
        return show(options, access);
    case Command::Follow:
        return follow(options, access);
    case Command::Verify:
        return verify(options, access);
    case Command::Stats:
        return stats(options, access);
    case Command::Convert:
        return convert(options, access);
    }
    Q_UNREACHABLE();
}

int fail(qv::ExceptionQt const& exception, ExitCode code)
{
    printError(exception.message());
    return code;
}

} // namespace

int main(int argc, char* argv[])
{
    // Else the C library looks at the file of the time zone for every time that is read.
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", ":/etc/localtime");
    // File names are UTF-8 nearly everywhere, the locale C of a bare machine notwithstanding.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QCoreApplication const application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("qvlog"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QVLOG_VERSION));
    try {
        return perform(readOptions(QCoreApplication::arguments()));
    } catch (UsageException const& exception) {
        return fail(exception, WrongUsage);
    } catch (DamageException const& exception) {
        return fail(exception, DamageFound);
    } catch (qv::ExceptionQt const& exception) {
        return fail(exception, NotDone);
    }
}
