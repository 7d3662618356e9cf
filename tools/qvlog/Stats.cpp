// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Commands.h"
#include "Output.h"
#include "Trail.h"

#include <terminal/Terminal.h>
#include <terminal/Text.h>

#include <QMap>

#include <algorithm>

namespace {

// A hostile log could name another user in every entry.
constexpr int MaxRows = 10000;
constexpr int MaxLabel = 40; ///< Columns of the terminal.

/// How many entries there are of each kind.
class Counter {
public:
    explicit Counter(char const* title)
        : m_title(title)
    {
    }

    void add(QString const& label)
    {
        QString const shown = label.isEmpty() ? QStringLiteral("-") : elided(printable(label), MaxLabel, Elide::Right);
        bool const hasRoom = m_counts.size() < MaxRows || m_counts.contains(shown);
        ++m_counts[hasRoom ? shown : QStringLiteral("(others)")];
    }
    char const* title() const { return m_title; }
    QMap<QString, qint64> const& counts() const { return m_counts; }

private:
    char const* m_title;
    QMap<QString, qint64> m_counts;
};

/// Columns for a line; 0 where bars would be in the way of whoever reads what is no terminal.
int lineWidth(Output const& output)
{
    if (!output.isTerminal())
        return 0;
    bool isNumber = false;
    int const columns = qEnvironmentVariableIntValue("COLUMNS", &isNumber);
    return std::clamp(isNumber && columns > 0 ? columns : terminalWidth().value_or(80), 20, 1000);
}

QString bar(qint64 count, qint64 greatest, int width)
{
    return QString(static_cast<int>(std::max<qint64>(1, count * width / greatest)), QLatin1Char('#'));
}

void print(Counter const& counter, Output& output, int width)
{
    int labelWidth = 0;
    qint64 greatest = 1;
    for (auto row = counter.counts().begin(); row != counter.counts().end(); ++row) {
        labelWidth = std::max(labelWidth, displayWidth(row.key()));
        greatest = std::max(greatest, row.value());
    }
    int const countWidth = grouped(static_cast<qulonglong>(greatest)).size();
    int const room = width - 2 - labelWidth - 2 - countWidth - 2;
    output.write(QLatin1String(counter.title()) + QLatin1Char('\n'));
    for (auto row = counter.counts().begin(); row != counter.counts().end(); ++row) {
        QString const blanks(labelWidth - displayWidth(row.key()), QLatin1Char(' '));
        QString const count = grouped(static_cast<qulonglong>(row.value())).rightJustified(countWidth);
        output.write(QLatin1String("  ") + row.key() + blanks + QLatin1String("  ") + count
            + (room > 0 ? QLatin1String("  ") + bar(row.value(), greatest, room) : QString()) + QLatin1Char('\n'));
    }
}

} // namespace

ExitCode stats(Options const& options, Access& access)
{
    Output output;
    qint64 all = 0;
    Counter users("By user");
    Counter categories("By category");
    Counter days("By day");
    ExitCode const code = readTrail(options, access, [&](LoggedEntry const& entry) {
        ++all;
        users.add(entry.user);
        categories.add(entry.categoryName);
        days.add(entry.time.isValid() ? entry.time.date().toString(Qt::ISODate) : QString());
    });
    for (Counter const* counter : {&users, &categories, &days}) {
        print(*counter, output, lineWidth(output));
        output.write(QStringLiteral("\n"));
    }
    output.write(QStringLiteral("%1 %2\n").arg(
        grouped(static_cast<qulonglong>(all)), all == 1 ? QStringLiteral("entry") : QStringLiteral("entries")));
    output.flush();
    return code;
}
