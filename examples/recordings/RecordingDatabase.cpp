// SPDX-License-Identifier: LGPL-2.1-or-later
#include "RecordingDatabase.h"

#include <GenericUtilities/expressions/TypeTool.h>
#include <qvbase/Exceptions.h>

#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>

using namespace qvgen;

namespace {

char const connection[] = "recordings";
/// Marks a database file as one that this program made and may replace.
constexpr int applicationId = 0x52656373;

QString columnName(QString const& propertyName)
{
    return QString(propertyName).replace(QLatin1Char(' '), QLatin1Char('_')); // As the library prints it.
}

QVariant bindable(QVariant const& value)
{
    QVariant const stored = storable(value);
    QString const text = stored.type() == QVariant::String ? stored.toString() : QString();
    // SQLite takes such a character at the start for a mark of the byte order, and drops it: one more to be dropped.
    bool const isMark = text.startsWith(QChar(QChar::ByteOrderMark)) || text.startsWith(QChar(QChar::ByteOrderSwapped));
    return isMark ? QVariant(QChar(QChar::ByteOrderMark) + text) : stored;
}

QString printedCondition(Search const& search)
{
    return search.condition.toString(Expression::StyleSql | Expression::StylePlaceholders).trimmed();
}

/// The row's id comes last, so that there is but one order.
QString printedOrder(Search const& search)
{
    ExpressionList terms = search.order;
    terms.append(ValueExpression(QStringLiteral("id"), QString()));
    return terms.toString(Expression::StyleSql | Expression::StyleOrderTerm);
}

[[noreturn]] void failSearch(Search const& search, QSqlQuery const& query)
{
    throw qv::ExceptionQt(
        QStringLiteral("SQLite cannot answer '%1': %2").arg(search.title, query.lastError().databaseText()));
}

} // namespace

QString columnType(QVariant const& value)
{
    switch (value.type()) {
    case QVariant::Bool:
    case QVariant::Int:
    case QVariant::UInt:
    case QVariant::LongLong:
    case QVariant::ULongLong:
    case QVariant::Date:
    case QVariant::Time:
    case QVariant::DateTime:
        return QStringLiteral("INTEGER");
    case QVariant::Double:
        return QStringLiteral("REAL");
    case QVariant::String:
        return QStringLiteral("TEXT");
    default:
        return {};
    }
}

QStringList columnsOf(PropertySet const& recording)
{
    QStringList names;
    for (auto const& property : recording) {
        if (!columnType(property->variantValue()).isEmpty())
            names += property->name();
    }
    return names;
}

QVariant storable(QVariant const& value)
{
    if (TypeTool::isDate(value.type()))
        return TypeTool::dateMicroSeconds(value);
    if (value.type() == QVariant::String && value.isNull())
        return QString(QLatin1String("")); // A null text would become NULL, which equals nothing.
    if (value.type() == QVariant::ULongLong)
        return value.toLongLong(); // Qt's driver binds an unsigned 64-bit number as text.
    return value;
}

RecordingDatabase::RecordingDatabase(QString const& file, PropertySet const& prototype)
    : m_file(file)
    , m_database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QLatin1String(connection)))
{
    try {
        open();
        refuseForeign();
        createTable(prototype);
    } catch (...) {
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(QLatin1String(connection));
        throw;
    }
}

RecordingDatabase::~RecordingDatabase()
{
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(QLatin1String(connection));
}

void RecordingDatabase::open()
{
    if (!m_database.isValid())
        fail(QStringLiteral("Qt's driver for SQLite is missing (on Debian: libqt5sql5-sqlite)"));
    m_database.setDatabaseName(m_file);
    if (!m_database.open())
        fail(m_database.lastError().databaseText());
    // Nobody else is to change the rows between two searches.
    value(QStringLiteral("PRAGMA locking_mode = EXCLUSIVE"));
    // The library's like() tells case apart, SQLite's LIKE by itself does not.
    value(QStringLiteral("PRAGMA case_sensitive_like = ON"));
}

void RecordingDatabase::refuseForeign()
{
    if (value(QStringLiteral("SELECT count(*) FROM sqlite_master")).toInt() > 0
        && value(QStringLiteral("PRAGMA application_id")).toInt() != applicationId)
        fail(QStringLiteral("it holds data of another program"));
}

void RecordingDatabase::createTable(PropertySet const& prototype)
{
    QStringList columns{QStringLiteral("id INTEGER PRIMARY KEY")};
    m_columns = columnsOf(prototype);
    for (QString const& name : qAsConst(m_columns))
        columns += columnName(name) + QLatin1Char(' ') + columnType(prototype[name].variantValue());
    // Committed by store(): until then the file keeps what it had.
    value(QStringLiteral("BEGIN IMMEDIATE"));
    value(QStringLiteral("PRAGMA application_id = %1").arg(applicationId));
    value(QStringLiteral("DROP TABLE IF EXISTS recordings"));
    value(QStringLiteral("CREATE TABLE recordings (%1)").arg(columns.join(QLatin1String(", "))));
}

void RecordingDatabase::store(QVector<PropertySet> const& recordings, Progress const& progress)
{
    QStringList marks;
    for (int i = 0; i <= m_columns.size(); ++i)
        marks += QStringLiteral("?");
    QSqlQuery insert(m_database);
    if (!insert.prepare(QStringLiteral("INSERT INTO recordings VALUES (%1)").arg(marks.join(QLatin1Char(',')))))
        fail(insert.lastError().databaseText());
    for (int id = 0; id < recordings.size(); ++id) {
        insert.addBindValue(id);
        for (QString const& column : qAsConst(m_columns))
            insert.addBindValue(bindable(recordings.at(id)[column].variantValue()));
        run(insert);
        progress(id + 1);
    }
    value(QStringLiteral("COMMIT"));
}

QString RecordingDatabase::statement(Search const& search)
{
    QString text = QStringLiteral("SELECT id FROM recordings");
    if (!search.findsAll())
        text += QStringLiteral(" WHERE ") + printedCondition(search);
    if (!search.order.isEmpty())
        text += QStringLiteral(" ORDER BY ") + printedOrder(search);
    return text;
}

QSqlQuery RecordingDatabase::prepared(Search const& search) const
{
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    if (!query.prepare(statement(search)))
        failSearch(search, query);
    return query;
}

void RecordingDatabase::check(Search const& search) const
{
    prepared(search);
}

QVector<int> RecordingDatabase::find(Search const& search) const
{
    QSqlQuery query = prepared(search);
    for (QVariant const& bindValue : search.condition.collectPlaceholders())
        query.addBindValue(bindable(bindValue));
    if (!query.exec())
        failSearch(search, query);
    QVector<int> ids;
    while (query.next())
        ids += query.value(0).toInt();
    if (query.lastError().isValid())
        failSearch(search, query);
    if (search.order.isEmpty())
        std::sort(ids.begin(), ids.end());
    return ids;
}

/// The first value that @p statement gives; invalid where it gives none.
QVariant RecordingDatabase::value(QString const& statement) const
{
    QSqlQuery query(m_database);
    if (!query.exec(statement))
        fail(query.lastError().databaseText());
    return query.next() ? query.value(0) : QVariant();
}

void RecordingDatabase::run(QSqlQuery& query) const
{
    if (!query.exec())
        fail(query.lastError().databaseText());
}

void RecordingDatabase::fail(QString const& reason) const
{
    throw qv::ExceptionQt(QStringLiteral("the database '%1' cannot be used: %2").arg(m_file, reason));
}
