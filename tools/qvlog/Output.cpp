// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Output.h"

#include "Failures.h"

#include <terminal/Text.h>

#include <unistd.h>

namespace {

QString printableLines(QString const& text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString& line : lines)
        line = printable(line.endsWith(QLatin1Char('\r')) ? line.chopped(1) : line);
    return lines.join(QLatin1Char('\n'));
}

} // namespace

Output::Output()
    : m_name(QStringLiteral("standard output"))
    , m_isTerminal(isatty(STDOUT_FILENO) != 0)
{
    if (!m_file.open(STDOUT_FILENO, QIODevice::WriteOnly))
        fail();
}

Output::Output(QString const& path)
    : m_file(path)
    , m_name(QLatin1Char('\'') + path + QLatin1Char('\''))
{
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        fail();
}

void Output::write(QString const& text)
{
    QByteArray const bytes = (m_isTerminal ? printableLines(text) : text).toUtf8();
    if (m_file.write(bytes) != bytes.size())
        fail();
}

void Output::flush()
{
    if (!m_file.flush())
        fail();
}

void Output::fail() const
{
    throw OutputException(QStringLiteral("%1 cannot be written: %2").arg(m_name, m_file.errorString()));
}
