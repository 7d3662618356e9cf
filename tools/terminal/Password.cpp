// SPDX-License-Identifier: LGPL-2.1-or-later
#include <terminal/Password.h>

#include <terminal/Terminal.h>

#include <qvbase/Exceptions.h>

#include <QFile>

namespace {

[[noreturn]] void refuse(QString const& message)
{
    throw qv::ExceptionQt(message);
}

QByteArray firstLineOf(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        refuse(QStringLiteral("the password file '%1' cannot be read: %2").arg(path, file.errorString()));
    // A device may have no end, and no line either.
    constexpr int maxBytes = 4096;
    QByteArray line = file.readLine(maxBytes + 2); // One more, and the zero that Qt puts behind it.
    if (line.size() > maxBytes)
        refuse(QStringLiteral("the first line of the password file '%1' is longer than 4096 bytes").arg(path));
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return line;
}

QByteArray answerTo(char const* question, char const* variable)
{
    auto const answer = askHidden(question);
    if (!answer)
        refuse(QStringLiteral("there is no terminal to ask for the password: use --password-file or %1")
                   .arg(QLatin1String(variable)));
    return *answer;
}

QByteArray passwordFromTerminal(PasswordSources const& sources, bool chosen)
{
    QByteArray password = answerTo(sources.question, sources.variable);
    if (chosen && !password.isEmpty() && answerTo("The same again: ", sources.variable) != password)
        refuse(QStringLiteral("those were two different passwords"));
    return password;
}

} // namespace

QString findPassword(PasswordSources const& sources, bool chosen)
{
    QByteArray const bytes = !sources.file.isEmpty()  ? firstLineOf(sources.file)
        : qEnvironmentVariableIsSet(sources.variable) ? qgetenv(sources.variable)
                                                      : passwordFromTerminal(sources, chosen);
    QString password = QString::fromUtf8(bytes);
    if (password.isEmpty())
        refuse(QStringLiteral("the password is empty: the file would not be encrypted"));
    // Different bytes must not become the same password.
    if (password.toUtf8() != bytes)
        refuse(QStringLiteral("the password is not a text in UTF-8"));
    return password;
}
