// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Options.h"

#include <qvbase/Exceptions.h>

#include <QCommandLineParser>

namespace {

char const description[] = R"(
Keeps lines of text in an encrypted file. Lines from standard input are added
at its end: each is in the file as soon as it was read, should the program die,
and all are on the disk at the end. --print gives them back, --verify looks for
damage.

The file is created where there is none. Several vaults may append to one file
at the same time: lines of up to 1 MiB stay whole. A line that a crash has cut
is not printed, and put aside beside the file by the next append.

The password is asked for on the terminal, unless --password-file names a file
or the environment variable VAULT_PASSWORD holds it. It cannot be given on the
command line, which every user of the machine can read. Whoever loses it, or
the user name given with it, loses the content.

--verify finds every change behind the vault's back but two, which leave a file
that once was right: the newest lines cut off, an older copy put in place.

Examples:
  echo "gate 3 opened" | vault events.vault
  journalctl --follow | vault --password-file ~/.vault-password journal.vault
  vault --print events.vault | grep gate
  vault --verify events.vault && cp events.vault /media/backup

Exit status: 0 on success, 1 if the file is damaged, 2 if there is nothing to
say about that: a wrong password, a missing file, a full disk, a wrong option.)";

void addOptions(QCommandLineParser& parser)
{
    parser.addOptions({
        {QStringLiteral("print"), QStringLiteral("Print the lines of the file instead of adding to it.")},
        {QStringLiteral("verify"), QStringLiteral("Tell whether the file is damaged, and where.")},
        {QStringLiteral("user"), QStringLiteral("The user that the file is kept for (default: none)."),
            QStringLiteral("NAME")},
        {QStringLiteral("password-file"), QStringLiteral("Take the password from the first line of this file."),
            QStringLiteral("PATH")},
    });
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The encrypted file."));
}

[[noreturn]] void refuse(QString const& message)
{
    throw qv::IllegalArgumentException(message + QStringLiteral(" (see --help)"));
}

Task task(bool print, bool verify)
{
    if (print && verify)
        refuse(QStringLiteral("--print and --verify are two tasks: give one"));
    return print ? Task::Print : verify ? Task::Verify : Task::Append;
}

QString onlyFile(QStringList const& files)
{
    if (files.size() > 1)
        refuse(QStringLiteral("unexpected argument '%1'").arg(files.at(1)));
    if (files.isEmpty() || files.constFirst().isEmpty())
        refuse(QStringLiteral("no file was given"));
    return files.constFirst();
}

} // namespace

Options readOptions(QStringList const& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(description));
    QCommandLineOption const help = parser.addHelpOption();
    QCommandLineOption const version = parser.addVersionOption();
    addOptions(parser);
    if (!parser.parse(arguments))
        refuse(parser.errorText());
    if (parser.isSet(help))
        parser.showHelp();
    if (parser.isSet(version))
        parser.showVersion();

    Options options;
    options.task = task(parser.isSet(QStringLiteral("print")), parser.isSet(QStringLiteral("verify")));
    options.file = onlyFile(parser.positionalArguments());
    options.user = parser.value(QStringLiteral("user"));
    options.passwordFile = parser.value(QStringLiteral("password-file"));
    if (parser.isSet(QStringLiteral("password-file")) && options.passwordFile.isEmpty())
        refuse(QStringLiteral("--password-file takes a path"));
    return options;
}
