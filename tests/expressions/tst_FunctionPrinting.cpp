// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>

#include "Nodes.h"

#include <QDateTime>
#include <QRegExp>
#include <QTest>

using namespace qvgen;
using namespace nodes;

namespace {

FunctionExpression call(char const* name, QList<ExpressionHandle> const& operands, bool distinct = false)
{
    ExpressionList list;
    for (ExpressionHandle const& operand : operands)
        list.append(operand);
    return {QString::fromLatin1(name), list, distinct};
}

qint64 dayStart(QDate const& date)
{
    return QDate(1970, 1, 1).daysTo(date) * Q_INT64_C(86400000000);
}

} // namespace

/// The builders of function calls, and how calls are printed.
class TestFunctionPrinting : public QObject {
    Q_OBJECT

private slots:
    void builders_data();
    void builders();
    void print_data();
    void print();
    void placeholders_data();
    void placeholders();
    void currentDateIsPrintedAsOfNow();
    void currentValuesArePrintedAsNumbers();
    void currentValuesAsPlaceholders_data();
    void currentValuesAsPlaceholders();
};

void TestFunctionPrinting::builders_data()
{
    QTest::addColumn<ExpressionHandle>("built");
    QTest::addColumn<ExpressionHandle>("expected");

    ValueExpression const v = value("v");
    ExpressionHandle const h = value("h");
    ExpressionHandle const w = value("w");
    auto const row = [](char const* name, ExpressionHandle const& built, ExpressionHandle const& expected) {
        QTest::newRow(name) << built << expected;
    };
    row("count", count(v, false), call("count", {v}));
    row("count of distinct", count(v, true), call("count", {v}, true));
    row("group_concat", group_concat(v, false), call("group_concat", {v}));
    row("group_concat of distinct", group_concat(v, true), call("group_concat", {v}, true));
    row("max", qvgen::max(v), call("max", {v}));
    row("min", qvgen::min(v), call("min", {v}));
    row("trim", trim(h), call("trim", {h}));
    row("quote", quote(h), call("quote", {h}));
    row("upper", upper(h), call("upper", {h}));
    row("lower", lower(h), call("lower", {h}));
    row("length", length(h), call("length", {h}));
    row("round", qvgen::round(h), call("round", {h}));
    row("hex", qvgen::hex(h), call("hex", {h}));
    row("abs", qvgen::abs(h), call("abs", {h}));
    row("random", qvgen::random(), call("random", {}));
    row("currentDateTime", currentDateTime(), call("currentDateTime", {}));
    row("currentTime", currentTime(), call("currentTime", {}));
    row("currentDate", currentDate(), call("currentDate", {}));
    row("nullif", nullif(h, w), call("nullif", {h, w}));
    row("ifnull", ifnull(h, w), call("ifnull", {h, w}));
    row("coalesce", coalesce(ExpressionList(h, w)), call("coalesce", {h, w}));
    row("coalesce of nothing", coalesce(ExpressionList()), call("coalesce", {}));
    row("regexp", regexp(h, QRegExp(QStringLiteral("a+"))),
        call("regexp", {h, constant(QRegExp(QStringLiteral("a+")))}));
    row("regexp of a text", regexp(h, QStringLiteral("a+")), call("regexp", {h, constant("a+")}));
    row("like", like(h, QStringLiteral("a%")), call("like", {h, constant("a%")}));
    row("like with escape", like(h, QStringLiteral("a%"), QStringLiteral("!")),
        call("like", {h, constant("a%"), constant("!")}));
}

void TestFunctionPrinting::builders()
{
    QFETCH(ExpressionHandle, built);
    QFETCH(ExpressionHandle, expected);
    QVERIFY(held<FunctionExpression>(built));
    QVERIFY(built.equals(expected));
    QCOMPARE(built.toString(Code), expected.toString(Code));
}

void TestFunctionPrinting::print_data()
{
    QTest::addColumn<ExpressionHandle>("node");
    QTest::addColumn<Expression::PrintStyle>("style");
    QTest::addColumn<QString>("text");

    ExpressionHandle const x = value("x");
    ExpressionHandle const sum = value("a") + value("b");
    ValueExpression const name = value("name");
    QString const pattern = QStringLiteral("a%");
    QString const backslash = QStringLiteral("\\");
    auto const row = [](char const* meaning, ExpressionHandle const& node, Expression::PrintStyle style,
                         char const* text) { QTest::newRow(meaning) << node << style << QString::fromLatin1(text); };
    row("in SQL", count(name, false), Sql, "count(name)");
    row("in code", count(name, false), Code, "count(name)");
    row("plain", count(name, false), Plain, "count(name)");
    row("distinct in SQL", count(name, true), Sql, "count(DISTINCT name)");
    row("distinct is left out in code", count(name, true), Code, "count(name)");
    row("distinct is left out, plain", count(name, true), Plain, "count(name)");
    row("distinct of the caller's style", count(name, false), Expression::StyleDistinct, "count(DISTINCT name)");
    row("distinct goes down", call("count", {upper(x)}, true), Sql, "count(DISTINCT upper(DISTINCT x))");
    row("distinct below", upper(count(name, true)), Sql, "upper(count(DISTINCT name))");
    row("no operands", qvgen::random(), Sql, "random()");
    row("no operands in code", qvgen::random(), Code, "random()");
    row("several operands", coalesce(ExpressionList(x, constant(5))), Sql, "coalesce(x,5)");
    row("text in SQL", ifnull(x, constant("it's")), Sql, "ifnull(x,'it''s')");
    row("text in code", ifnull(x, constant("it's")), Code, "ifnull(x,\"it's\")");
    row("compound", qvgen::abs(sum), Sql, "abs(a+b)");
    row("style goes to operands unchanged", qvgen::abs(sum), Sql | Nested, "abs((a+b))");
    row("in arithmetic", qvgen::abs(sum) * x, Sql, "abs((a+b))*x");
    row("modulo in code", qvgen::abs(value("a") % value("b")), Code, "abs(a%b)");
    row("sort term", -qvgen::abs(x), Sql | Expression::StyleOrderTerm, "abs(x) DESC");
    row("lacking operand", call("abs", {}), Sql, "abs()");
    row("unknown name, plain", call("nosuch", {x}), Plain, "nosuch(x)");
    row("unknown name in code", call("nosuch", {x}), Code, "nosuch(x)");
    row("unknown name in SQL is its value, an invalid one", call("nosuch", {x}), Sql, "''");

    row("like", like(x, QStringLiteral("p")), Sql, "(x LIKE 'p')");
    row("like with escape", like(name, pattern, backslash), Sql, "(name LIKE 'a%' ESCAPE '\\')");
    row("like in code", like(x, QStringLiteral("p")), Code, "like(x,\"p\")");
    row("like, plain", like(x, pattern, backslash), Plain, "like(x,\"a%\",\"\\\")");
    row("like of a compound", like(sum, QStringLiteral("p")), Sql, "((a+b) LIKE 'p')");
    row("like, nested", like(x, QStringLiteral("p")), Sql | Nested, "(x LIKE 'p')");
    row("regexp", regexp(x, QStringLiteral("p+")), Sql, "(x REGEXP 'p+')");
    row("regexp of an expression", regexp(x, QRegExp(QStringLiteral("p+"))), Sql, "(x REGEXP 'p+')");
    row("regexp in code", regexp(x, QStringLiteral("p+")), Code, "regexp(x,\"p+\")");

    row("current date in code", currentDate(), Code, "currentDate()");
    row("current time, plain", currentTime(), Plain, "currentTime()");
    row("current date and time in code", currentDateTime(), Code, "currentDateTime()");
}

void TestFunctionPrinting::print()
{
    QFETCH(ExpressionHandle, node);
    QFETCH(Expression::PrintStyle, style);
    QTEST(node.toString(style), "text");
}

void TestFunctionPrinting::placeholders_data()
{
    QTest::addColumn<ExpressionHandle>("node");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariantList>("values");

    ExpressionHandle const x = value("x");
    QString const pattern = QStringLiteral("a%");
    QTest::newRow("none") << qvgen::abs(x) << QStringLiteral("abs(x)") << QVariantList{};
    QTest::newRow("constant that is none") << qvgen::abs(constant(5)) << QStringLiteral("abs(5)") << QVariantList{};
    QTest::newRow("in order") << ExpressionHandle(call("coalesce", {placeholder(1), x, placeholder("b")}))
                              << QStringLiteral("coalesce(?,x,?)") << QVariantList{1, "b"};
    QTest::newRow("distinct ones that are equal")
        << ExpressionHandle(call("count", {placeholder(1), placeholder(1)}, true))
        << QStringLiteral("count(DISTINCT ?,?)") << QVariantList{1, 1};
    QTest::newRow("date") << ifnull(x, placeholder(QDate(1970, 1, 2))) << QStringLiteral("ifnull(x,?)")
                          << QVariantList{Q_INT64_C(86400000000)};
    QTest::newRow("like") << like(x, pattern) << QStringLiteral("(x LIKE ?)") << QVariantList{pattern};
    QTest::newRow("like with escape") << like(x, pattern, QStringLiteral("!")) << QStringLiteral("(x LIKE ? ESCAPE ?)")
                                      << QVariantList{pattern, "!"};
    QTest::newRow("regexp of a text") << regexp(x, pattern) << QStringLiteral("(x REGEXP ?)") << QVariantList{pattern};
    QTest::newRow("regexp of an expression")
        << regexp(x, QRegExp(pattern)) << QStringLiteral("(x REGEXP 'a%')") << QVariantList{};
    QTest::newRow("unknown name has no value to print")
        << ExpressionHandle(call("nosuch", {placeholder(1)})) << QStringLiteral("?") << QVariantList{QVariant()};
}

void TestFunctionPrinting::placeholders()
{
    QFETCH(ExpressionHandle, node);
    QTEST(node.toString(Bound), "text");
    QTEST(node.collectPlaceholders(), "values");
}

void TestFunctionPrinting::currentDateIsPrintedAsOfNow()
{
    QDate const before = QDate::currentDate();
    QString const text = currentDate().toString(Sql);
    QDate const after = QDate::currentDate();
    QVERIFY(text == QString::number(dayStart(before)) || text == QString::number(dayStart(after)));
}

void TestFunctionPrinting::currentValuesArePrintedAsNumbers()
{
    qint64 const before = QDateTime::currentMSecsSinceEpoch() * 1000;
    qint64 const moment = currentDateTime().toString(Sql).toLongLong();
    QVERIFY(before <= moment && moment <= QDateTime::currentMSecsSinceEpoch() * 1000);
    bool isNumber = false;
    qint64 const time = currentTime().toString(Sql).toLongLong(&isNumber);
    QVERIFY(isNumber && time >= 0 && time < Q_INT64_C(86400000000));
}

void TestFunctionPrinting::currentValuesAsPlaceholders_data()
{
    QTest::addColumn<ExpressionHandle>("node");
    QTest::newRow("date") << currentDate();
    QTest::newRow("time") << currentTime();
    QTest::newRow("date and time") << currentDateTime();
}

void TestFunctionPrinting::currentValuesAsPlaceholders()
{
    QFETCH(ExpressionHandle, node);
    QCOMPARE(node.toString(Bound), QStringLiteral("?"));
    QVariantList const values = node.collectPlaceholders();
    QCOMPARE(values.size(), 1);
    QCOMPARE(values.first().type(), QVariant::LongLong);
    QVERIFY(values.first().toLongLong() >= 0);
}

QTEST_APPLESS_MAIN(TestFunctionPrinting)
#include "tst_FunctionPrinting.moc"
