// SPDX-License-Identifier: LGPL-2.1-or-later
// Keeps lines of text in an encrypted file. Vault.cpp has what matters: the device is opened, written, read and
// verified like any QFile. Run it with --help.

#include "Options.h"
#include "Vault.h"

#include <terminal/Password.h>
#include <terminal/Text.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QTextCodec>
#include <QTextStream>

#include <unistd.h>

namespace {

int printError(QString const& message, int exitCode)
{
    QTextStream(stderr) << "vault: " << printable(message.simplified()) << Qt::endl;
    return exitCode;
}

void perform(Task task, Vault& vault)
{
    QFile in;
    QFile out;
    if (!in.open(STDIN_FILENO, QIODevice::ReadOnly) || !out.open(STDOUT_FILENO, QIODevice::WriteOnly))
        throw qv::ExceptionQt(QStringLiteral("standard input and output cannot be used"));
    if (task == Task::Append)
        vault.append(in);
    else if (task == Task::Print)
        vault.print(out);
    else
        out.write(printable(vault.verify()).toUtf8() + '\n');
    if (!out.flush())
        throw qv::ExceptionQt(QStringLiteral("standard output cannot be written: %1").arg(out.errorString()));
}

int run(Options const& options)
{
    bool const isNew = options.task == Task::Append && QFileInfo(options.file).size() == 0;
    Vault vault(
        options.file, options.user, findPassword({options.passwordFile, "VAULT_PASSWORD", "Password: "}, isNew));
    perform(options.task, vault);
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    // File names are UTF-8 nearly everywhere, the locale C of a bare machine notwithstanding.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QCoreApplication const application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vault"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VAULT_VERSION));
    try {
        return run(readOptions(QCoreApplication::arguments()));
    } catch (DamageException const& exception) {
        return printError(exception.message(), 1);
    } catch (qv::ExceptionQt const& exception) {
        return printError(exception.message(), 2);
    }
}
