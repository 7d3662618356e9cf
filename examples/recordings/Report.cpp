// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Report.h"

#include <GenericUtilities/properties/CommonProperties.h>
#include <terminal/Text.h>

#include <QTextStream>

#include <algorithm>

using namespace qvgen;

namespace {

struct Column {
    QString title;
    bool right; ///< Aligned to the right.
    Elide elide;
    int maximum; ///< Columns of the terminal.
};

QString padded(QString const& text, int width, bool right)
{
    QString const blanks(std::max(0, width - displayWidth(text)), QLatin1Char(' '));
    return right ? blanks + text : text + blanks;
}

/// Prints @p rows under @p columns, each as wide as its longest text but not wider than its maximum.
void printTable(QTextStream& out, QVector<Column> const& columns, QVector<QStringList> rows)
{
    QVector<int> widths;
    QStringList titles;
    for (int i = 0; i < columns.size(); ++i) {
        titles += columns.at(i).title;
        widths += displayWidth(columns.at(i).title);
        for (QStringList& row : rows) {
            row[i] = elided(row.at(i), columns.at(i).maximum, columns.at(i).elide);
            widths[i] = std::max(widths.at(i), displayWidth(row.at(i)));
        }
    }
    rows.prepend(titles);
    for (QStringList const& row : qAsConst(rows)) {
        QString line = QStringLiteral("  ");
        for (int i = 0; i < columns.size(); ++i)
            line += QStringLiteral("  ") + padded(row.at(i), widths.at(i), columns.at(i).right);
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        out << line << '\n';
    }
}

QString displayed(QVariant const& value)
{
    switch (value.type()) {
    case QVariant::DateTime:
        return value.toDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm"));
    case QVariant::Time:
        return value.toTime().toString(QStringLiteral("hh:mm:ss"));
    case QVariant::StringList:
        return printable(value.toStringList().join(QLatin1String(", ")));
    case QVariant::Map:
        return QLatin1Char('{') + QStringList(value.toMap().keys()).join(QLatin1String(", ")) + QLatin1Char('}');
    default:
        return printable(value.toString());
    }
}

QString bindValues(ExpressionHandle const& condition)
{
    QStringList texts;
    for (QVariant const& value : condition.collectPlaceholders()) {
        QString const text = printable(value.toString());
        texts += value.type() == QVariant::String ? QLatin1Char('\'') + text + QLatin1Char('\'') : text;
    }
    return texts.isEmpty() ? QStringLiteral("none") : texts.join(QLatin1String(", "));
}

QString shownPath(PropertySet const& recording)
{
    return recording["folder"].variantValue().toString() + QLatin1Char('/')
        + recording["name"].variantValue().toString();
}

} // namespace

Report::Report(QTextStream& out, int width, int shownRows)
    : m_out(out)
    , m_width(std::max(width, 60))
    , m_shownRows(shownRows)
{
}

void Report::catalogue(Catalogue const& catalogue, double seconds)
{
    m_out << "Recordings beneath " << printable(catalogue.folder()) << "\n\n";
    field("indexed",
        QStringLiteral("%1 in %2, in %3 s")
            .arg(counted(catalogue.recordings().size(), QStringLiteral("file")),
                counted(catalogue.folders(), QStringLiteral("folder")))
            .arg(seconds, 0, 'f', 2));
    field("left out",
        QStringLiteral("%1, %2, %3")
            .arg(counted(catalogue.symbolicLinks(), QStringLiteral("symbolic link")),
                counted(catalogue.specialFiles(), QStringLiteral("special file")),
                counted(catalogue.unreadableFolders(), QStringLiteral("unreadable folder"))));
    QStringList refusals;
    for (auto refusal = catalogue.refusals().begin(); refusal != catalogue.refusals().end(); ++refusal)
        refusals += QStringLiteral("%1 %2").arg(refusal.key(), grouped(static_cast<qulonglong>(refusal.value())));
    field("validated",
        refusals.isEmpty() ? QStringLiteral("all values are in the range of their validators")
                           : QStringLiteral("%1 with a value out of range (kept): %2")
                                 .arg(counted(catalogue.refusedRecordings(), QStringLiteral("file")),
                                     refusals.join(QLatin1String(", "))));
}

void Report::stored(QString const& databaseFile, double seconds)
{
    field("stored", QStringLiteral("in %1 s, in %2").arg(seconds, 0, 'f', 2).arg(printable(databaseFile)));
}

void Report::saved(QString const& searchFile)
{
    field("saved", QStringLiteral("your search, in ") + printable(searchFile));
}

void Report::exported(QString const& file, int rows)
{
    m_out << "Exported " << counted(rows, QStringLiteral("path")) << " to " << printable(file) << "\n\n";
}

void Report::properties(PropertySet const& recording)
{
    m_out << "\nA recording is a set of " << recording.count()
          << " properties; most of them are columns of the database\n\n";
    QVector<QStringList> rows;
    for (auto const& property : recording) {
        QString const column = columnType(property->variantValue());
        rows.append({property->name(), property->type(), column.isEmpty() ? QStringLiteral("-") : column,
            displayed(property->variantValue()), property->description()});
    }
    // Two blanks before each column, and two more at the start.
    constexpr int nameWidth = 11, classWidth = 19, columnWidth = 7, valueWidth = 16, leastDescription = 24;
    int const rest = m_width - 12 - nameWidth - classWidth - columnWidth - valueWidth;
    QVector<Column> columns{{"name", false, Elide::Right, nameWidth}, {"class", false, Elide::Right, classWidth},
        {"column", false, Elide::Right, columnWidth}, {"value", false, Elide::Right, valueWidth}};
    if (rest >= leastDescription)
        columns.append({"description", false, Elide::Right, rest});
    printTable(m_out, columns, rows);
    m_out << '\n';
}

void Report::search(Search const& search, Answer const& answer, QVector<PropertySet> const& recordings)
{
    m_out << ++m_searches << ". " << search.title << "\n\n";
    condition(search);
    field("found",
        QStringLiteral("%1 by SQLite in %2 ms, %3 in memory in %4 ms: %5")
            .arg(counted(answer.byDatabase.size(), QStringLiteral("row")))
            .arg(answer.databaseMilliSeconds, 0, 'f', 1)
            .arg(grouped(static_cast<qulonglong>(answer.inMemory.size())))
            .arg(answer.memoryMilliSeconds, 0, 'f', 1)
            .arg(answer.agrees() ? QStringLiteral("the same") : QStringLiteral("THEY DIFFER")));
    rows(answer.inMemory, recordings);
    m_out << '\n';
    m_disagreements += !answer.agrees();
}

void Report::condition(Search const& search)
{
    QString const code = printable(search.condition.toString(Expression::StyleCode).trimmed());
    field("code", search.findsAll() ? QStringLiteral("none: all recordings") : code);
    if (!search.order.isEmpty())
        field("sorted by", search.order.toString(Expression::StyleCode));
    field("SQL", printable(RecordingDatabase::statement(search)));
    field("values", bindValues(search.condition));
    if (!search.note.isEmpty())
        field("note", search.note);
}

void Report::rows(QVector<int> const& rows, QVector<PropertySet> const& recordings)
{
    int const shown = std::min(rows.size(), m_shownRows);
    if (shown == 0)
        return;
    QVector<QStringList> texts;
    for (int const row : rows.mid(0, shown)) {
        PropertySet const& recording = recordings.at(row);
        texts.append({displayed(recording["name"].variantValue()), displayed(recording["folder"].variantValue()),
            grouped(recording["size"].variantValue().toULongLong()), displayed(recording["modified"].variantValue())});
    }
    // Two blanks before each column, and two more at the start; 15 for a size, 16 for a moment.
    int const room = m_width - 10 - 15 - 16;
    m_out << '\n';
    printTable(m_out,
        {{"name", false, Elide::Right, room * 2 / 5}, {"folder", false, Elide::Left, room - room * 2 / 5},
            {"size", true, Elide::Right, 26}, {"modified", false, Elide::Right, 16}},
        texts);
    if (rows.size() > shown)
        m_out << "    ... and " << grouped(static_cast<qulonglong>(rows.size() - shown)) << " more\n";
}

void Report::verdict()
{
    if (m_disagreements == 0)
        m_out << "All " << m_searches << " searches were answered by SQLite and in memory with the same rows.\n";
}

QString Report::disagreement(Search const& search, Answer const& answer, QVector<PropertySet> const& recordings)
{
    QVector<int> const onlyByDatabase = answer.onlyByDatabase();
    QVector<int> const onlyInMemory = answer.onlyInMemory();
    if (onlyByDatabase.isEmpty() && onlyInMemory.isEmpty())
        return QStringLiteral("SQLite and memory find the same rows for '%1', but in another order").arg(search.title);
    int const example = (onlyByDatabase.isEmpty() ? onlyInMemory : onlyByDatabase).value(0);
    return QStringLiteral("SQLite and memory disagree on '%1': %2 only by SQLite, %3 only in memory, such as '%4'")
        .arg(search.title, counted(onlyByDatabase.size(), QStringLiteral("row")),
            counted(onlyInMemory.size(), QStringLiteral("row")),
            example < recordings.size() ? shownPath(recordings.at(example)) : QString());
}

void Report::field(char const* name, QString const& text)
{
    constexpr int indent = 13;
    m_out << "  " << padded(QString::fromLatin1(name), indent - 2, false) << wrapped(text, m_width - indent, indent)
          << '\n';
}
