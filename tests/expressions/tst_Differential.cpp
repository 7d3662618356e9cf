// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "Nodes.h"
#include "support/Random.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>

#include <vector>

using namespace qvgen;
using namespace nodes;

namespace {

using Ids = QList<int>;

enum class Kind { Number, Text, Moment };

/// Random rows and random conditions on them. No value is null, numbers fit 32 bits and texts are ASCII: there, the
/// rules of evaluation in memory and those of SQL are the same.
class Generator {
public:
    PropertySet row();
    ExpressionHandle condition(int depth);

private:
    int below(int bound) { return m_random.bounded(bound); }
    bool oneIn(int chances) { return below(chances) == 0; }

    int number();
    uint unsignedNumber() { return static_cast<uint>(number()) & 0x7fffffff; }
    QString text();
    QDate date() { return QDate(1970, 1, 1).addDays(oneIn(3) ? below(47846) : below(4)); }
    QDateTime moment();

    ExpressionHandle column(Kind kind);
    QVariant value(Kind kind);
    ExpressionHandle operand(Kind kind);
    ExpressionHandle comparison();
    ExpressionHandle membership();
    ExpressionHandle junction(int depth);

    QRandomGenerator m_random = support::generator();
};

int Generator::number()
{
    constexpr int extremes[] = {INT_MIN, INT_MIN + 1, -1, 0, INT_MAX - 1, INT_MAX};
    return oneIn(4) ? extremes[below(6)] : below(12) - 4;
}

QString Generator::text()
{
    char const* const special[] = {"", " ", "'", "''", "?", "it's", "10", "9", "%", "a;--", "\"", ":a", "Ab", "\\"};
    if (oneIn(2))
        return QString::fromLatin1(special[below(14)]);
    QString letters(QLatin1String(""));
    for (int length = below(3); length > 0; --length)
        letters.append(QLatin1Char("aAbB~"[below(5)]));
    return letters;
}

QDateTime Generator::moment()
{
    qint64 const secondOfDay = oneIn(2) ? 0 : below(86400);
    return QDateTime(date(), QTime(0, 0), Qt::UTC).addSecs(secondOfDay);
}

PropertySet Generator::row()
{
    PropertySet set;
    add<IntProperty>(set, "i", number());
    add<IntProperty>(set, "j", number());
    add<UIntProperty>(set, "u", unsignedNumber());
    add<StringProperty>(set, "s", text());
    add<StringProperty>(set, "full name", text());
    add<DateProperty>(set, "d", date());
    add<DateTimeProperty>(set, "m", moment());
    return set;
}

ExpressionHandle Generator::column(Kind kind)
{
    switch (kind) {
    case Kind::Number:
        return nodes::value(oneIn(3) ? "u" : oneIn(2) ? "i" : "j");
    case Kind::Text:
        return nodes::value(oneIn(2) ? "s" : "full name");
    default:
        return nodes::value(oneIn(2) ? "d" : "m");
    }
}

QVariant Generator::value(Kind kind)
{
    switch (kind) {
    case Kind::Number:
        return number();
    case Kind::Text:
        return text();
    default:
        return oneIn(2) ? QVariant(date()) : QVariant(moment());
    }
}

ExpressionHandle Generator::operand(Kind kind)
{
    if (oneIn(3))
        return column(kind);
    return ConstExpression(value(kind), !oneIn(4));
}

ExpressionHandle Generator::comparison()
{
    auto const kind = static_cast<Kind>(below(3));
    auto const op = static_cast<Comparator::CompOp>(below(6));
    ExpressionHandle const left = oneIn(6) ? operand(kind) : column(kind);
    ExpressionHandle const right = operand(kind);
    return oneIn(4) ? Comparator(right, op, left) : Comparator(left, op, right);
}

ExpressionHandle Generator::membership()
{
    auto const kind = static_cast<Kind>(below(3));
    ElementOf node(oneIn(6) ? operand(kind) : column(kind));
    for (int candidates = below(6); candidates > 0; --candidates)
        node.append(operand(kind));
    return node;
}

ExpressionHandle Generator::junction(int depth)
{
    BooleanOperator node(oneIn(2) ? BooleanOperator::And : BooleanOperator::Or);
    for (int operands = 1 + below(3); operands > 0; --operands)
        node.append(condition(depth - 1));
    return node;
}

ExpressionHandle Generator::condition(int depth)
{
    if (depth == 0 || oneIn(6))
        return oneIn(3) ? membership() : comparison();
    return oneIn(4) ? ExpressionHandle(!condition(depth - 1)) : junction(depth);
}

/// What a column holds: dates as the microseconds that conditions compare them with.
QVariant stored(QVariant const& value)
{
    if (value.type() == QVariant::Date)
        return QDateTime(value.toDate(), QTime(0, 0), Qt::UTC).toSecsSinceEpoch() * 1000000;
    if (value.type() == QVariant::DateTime)
        return value.toDateTime().toSecsSinceEpoch() * 1000000;
    return value;
}

Ids ids(QSqlQuery& query)
{
    Ids result;
    while (query.next())
        result.append(query.value(0).toInt());
    return result;
}

} // namespace

/// Random conditions select the same rows in memory as in a database.
class TestDifferential : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void sameRows();
    void cleanupTestCase();

private:
    void insert(int id, PropertySet const& row);
    Ids inMemory(ExpressionHandle const& condition) const;
    Ids inSql(QString const& text, QList<QVariant> const& bound, QString* error) const;

    QSqlDatabase m_database;
    Generator m_generator;
    std::vector<PropertySet> m_rows;
};

void TestDifferential::initTestCase()
{
    m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
    m_database.setDatabaseName(QStringLiteral(":memory:"));
    QVERIFY2(m_database.open(), qPrintable(m_database.lastError().text()));
    QSqlQuery query(m_database);
    QVERIFY(query.exec(QStringLiteral("CREATE TABLE t (id INTEGER PRIMARY KEY, i INTEGER, j INTEGER, u INTEGER, "
                                      "s TEXT, full_name TEXT, d INTEGER, m INTEGER)")));
    for (int id = 0; id < 200; ++id)
        insert(id, m_generator.row());
}

void TestDifferential::insert(int id, PropertySet const& row)
{
    QSqlQuery query(m_database);
    query.prepare(QStringLiteral("INSERT INTO t (id, i, j, u, s, full_name, d, m) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"));
    query.addBindValue(id);
    for (char const* name : {"i", "j", "u", "s", "full name", "d", "m"})
        query.addBindValue(stored(row[QString::fromLatin1(name)].variantValue()));
    QVERIFY2(query.exec(), qPrintable(query.lastError().text()));
    m_rows.push_back(row);
}

Ids TestDifferential::inMemory(ExpressionHandle const& condition) const
{
    Ids result;
    for (std::size_t id = 0; id < m_rows.size(); ++id) {
        QVariant const verdict = condition.evaluate(m_rows[id]);
        if (!verdict.isValid())
            return {-1};
        if (verdict.toBool())
            result.append(static_cast<int>(id));
    }
    return result;
}

Ids TestDifferential::inSql(QString const& text, QList<QVariant> const& bound, QString* error) const
{
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    query.prepare(QLatin1String("SELECT id FROM t WHERE ") + text + QLatin1String(" ORDER BY id"));
    for (QVariant const& value : bound)
        query.addBindValue(value);
    query.exec();
    *error = query.lastError().text();
    return ids(query);
}

void TestDifferential::sameRows()
{
    int const rounds = support::rounds(5000);
    int selective = 0;
    for (int round = 0; round < rounds; ++round) {
        ExpressionHandle const condition = m_generator.condition(4);
        QString const sql = condition.toString(Sql);
        QString const bound = condition.toString(Bound);
        QString error;
        QString boundError;
        Ids const expected = inSql(sql, {}, &error);
        Ids const expectedBound = inSql(bound, condition.collectPlaceholders(), &boundError);
        Ids const actual = inMemory(condition);
        QString const note
            = QStringList{support::seedNote(round), sql, error, bound, boundError}.join(QLatin1Char('\n'));
        QVERIFY2(error.trimmed().isEmpty() && boundError.trimmed().isEmpty(), qPrintable(note));
        QVERIFY2(actual == expected, qPrintable(note));
        QVERIFY2(actual == expectedBound, qPrintable(note));
        selective += actual.isEmpty() || actual.size() == 200 ? 0 : 1;
    }
    // Conditions that hold for all rows or for none prove little.
    QVERIFY(selective > rounds / 3);
}

void TestDifferential::cleanupTestCase()
{
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(QLatin1String(QSqlDatabase::defaultConnection));
}

QTEST_GUILESS_MAIN(TestDifferential)
#include "tst_Differential.moc"
