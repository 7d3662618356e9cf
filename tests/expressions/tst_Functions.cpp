// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "CountingNode.h"
#include "Nodes.h"
#include "TypedVariant.h"

#include <QTest>

#include <cstdlib>

using namespace qvgen;
using namespace nodes;

namespace {

FunctionExpression call(char const* name, QVariantList const& values, bool distinct = false)
{
    return {QString::fromLatin1(name), ExpressionList(values), distinct};
}

FunctionExpression callOn(char const* name, QList<ExpressionHandle> const& operands, bool distinct = false)
{
    ExpressionList list;
    for (ExpressionHandle const& operand : operands)
        list.append(operand);
    return {QString::fromLatin1(name), list, distinct};
}

QVariant textOf(char const* utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

/// What the built-in functions evaluate to in memory.
class TestFunctions : public QObject {
    Q_OBJECT

private slots:
    void value_data();
    void value();
    void distinct_data();
    void distinct();
    void aritiesAreNotChecked_data();
    void aritiesAreNotChecked();
    void lackingOperands_data();
    void lackingOperands();

    void currentDate();
    void currentTime();
    void currentDateTime();
    void randomIsTheLibrarysRand();

    void operandsAreEvaluatedOnceInOrder();
    void operandsAreAskedForConstnessAsTheCallIs();
    void constness_data();
    void constness();
    void unregisteredNameHasNoValue();

    void equality_data();
    void equality();
    void isEmptyWithoutOperands();
    void copies();

    void deepTree();
    void tooDeepTree();
};

void TestFunctions::value_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QVariant>("result");

    auto const row = [](char const* name, char const* meaning, QVariantList const& values, QVariant const& result) {
        QTest::addRow("%s: %s", name, meaning) << QString::fromLatin1(name) << values << result;
    };
    QVariant const null;
    QVariant const nullText = QString();
    QVariant const date = QDate(1969, 12, 31);

    row("abs", "positive", {5}, 5);
    row("abs", "negative", {-5}, 5);
    row("abs", "zero", {0}, 0);
    row("abs", "lowest integer wraps", {typed::IntMin}, typed::IntMin);
    row("abs", "unsigned", {5U}, 5U);
    row("abs", "64 bits", {Q_INT64_C(-5)}, Q_INT64_C(5));
    row("abs", "unsigned 64 bits", {Q_UINT64_C(5)}, Q_UINT64_C(5));
    row("abs", "double", {-2.5}, 2.5);
    row("abs", "less than one below zero counts as zero", {-0.5}, -0.5);
    row("abs", "text", {"abc"}, "abc");
    row("abs", "text of a negative number", {"-5"}, null);
    row("abs", "date before the epoch", {date}, null);
    row("abs", "invalid", {null}, null);

    row("min", "the largest", {3, 1, 2}, 3);
    row("min", "the largest, last", {1, 2, 3}, 3);
    row("min", "one", {7}, 7);
    row("min", "texts", {"a", "c", "b"}, "c");
    row("min", "the first of equals", {1.2, 1.9}, 1.2);
    row("min", "nothing compares to an invalid value", {null, 1}, null);
    row("max", "the smallest", {3, 1, 2}, 1);
    row("max", "the smallest, first", {1, 2, 3}, 1);
    row("max", "one", {7}, 7);
    row("max", "texts", {"b", "a", "c"}, "a");
    row("max", "the first of equals", {1.9, 1.2}, 1.9);
    row("max", "dates", {QDate(2020, 1, 2), QDate(2020, 1, 1)}, QDate(2020, 1, 1));
    row("max", "nothing compares to an invalid value", {null, 1}, null);

    row("count", "with repeated values", {1, 1, 2}, 3);
    row("count", "one", {1}, 1);
    row("count", "nulls count", {null, nullText}, 2);

    row("group_concat", "begins with a separator", {"a", "b"}, ",a,b");
    row("group_concat", "one", {"a"}, ",a");
    row("group_concat", "no separator after a comma", {"a,", "b"}, ",a,b");
    row("group_concat", "a leading comma stays", {",a"}, ",,a");
    row("group_concat", "empty texts", {"", ""}, ",");
    row("group_concat", "an empty text in between", {"a", "", "b"}, ",a,b");
    row("group_concat", "numbers", {1, 2.5}, ",1,2.5");
    row("group_concat", "an invalid value", {null, 1}, ",1");

    for (char const* const name : {"coalesce", "ifnull"}) {
        row(name, "first", {1, 2}, 1);
        row(name, "second", {null, 2}, 2);
        row(name, "none", {null, null}, null);
        row(name, "a null text is null", {nullText, 2}, 2);
        row(name, "a null integer is null", {QVariant(QVariant::Int), 2}, 2);
        row(name, "an empty text is not null", {"", "b"}, "");
        row(name, "zero is not null", {0, 2}, 0);
        row(name, "only nulls", {nullText, null}, null);
    }
    row("coalesce", "third", {null, null, "c", "d"}, "c");

    row("nullif", "equal", {1, 1}, 1);
    row("nullif", "different", {1, 2}, null);
    row("nullif", "number and its text", {1, "1"}, 1);
    row("nullif", "less than one apart", {1.2, 1.9}, 1.2);
    row("nullif", "no common type compares as text", {5, Q_UINT64_C(5)}, 5);
    row("nullif", "texts differ in case", {"a", "A"}, null);

    row("hex", "255", {255}, "ff");
    row("hex", "zero", {0}, "0");
    row("hex", "negative", {-1}, "ffffffffffffffff");
    row("hex", "highest", {typed::ULongMax}, "ffffffffffffffff");
    row("hex", "text of a number", {"2748"}, "abc");
    row("hex", "no number", {"xyz"}, "0");
    row("hex", "invalid", {null}, "0");

    row("round", "half up", {2.5}, 3.0);
    row("round", "negative half up", {-2.5}, -2.0);
    row("round", "down", {2.4}, 2.0);
    row("round", "negative", {-2.6}, -3.0);
    row("round", "integer", {7}, 7.0);
    row("round", "text of a number", {"2.5"}, 3.0);
    row("round", "no number", {"x"}, 0.0);
    row("round", "huge", {1e300}, 1e300);
    row("round", "infinite", {typed::Inf}, typed::Inf);
    row("round", "not a number", {typed::NaN}, typed::NaN);

    row("length", "text", {"abc"}, 3);
    row("length", "empty", {""}, 0);
    row("length", "number", {12345}, 5);
    row("length", "negative double", {-1.5}, 4);
    row("length", "a surrogate pair is two", {textOf("\xF0\x9F\x98\x80")}, 2);
    row("length", "invalid", {null}, 0);

    row("lower", "text", {textOf("AbC \xC3\x84")}, textOf("abc \xC3\xA4"));
    row("lower", "number", {12}, "12");
    row("upper", "text", {textOf("aBc \xC3\xA4")}, textOf("ABC \xC3\x84"));
    row("upper", "number", {1.5}, "1.5");
    row("upper", "empty", {""}, "");

    row("quote", "unchanged", {"it's"}, "it's");
    row("quote", "place markers stay", {"%1 %2"}, "%1 %2");
    row("quote", "number", {5}, "5");
    row("trim", "both ends", {" \t a  b \n"}, "a  b");
    row("trim", "blank", {"  "}, "");
    row("trim", "number", {5}, "5");
}

void TestFunctions::value()
{
    QFETCH(QString, name);
    QFETCH(QVariantList, values);
    QFETCH(QVariant, result);
    FunctionExpression const node(name, ExpressionList(values), false);
    QCOMPARE(typed::describe(node.evaluate({}, nullptr)), typed::describe(result));
}

void TestFunctions::distinct_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QVariant>("result");

    auto const row = [](char const* meaning, char const* name, QVariantList const& values, QVariant const& result) {
        QTest::newRow(meaning) << QString::fromLatin1(name) << values << result;
    };
    row("neighbours", "count", {1, 1, 2}, 2);
    row("apart", "count", {1, 2, 1}, 2);
    row("all the same", "count", {7, 7, 7}, 1);
    row("all different", "count", {1, 2, 3}, 3);
    row("number and its text", "count", {1, "1"}, 1);
    row("less than one apart", "count", {1.2, 1.9}, 1);
    row("integer and double", "count", {1, 1.0, 2.0}, 2);
    row("no common type compares as text", "count", {5, Q_UINT64_C(5)}, 1);
    row("constants keep their types, too", "count", {typed::LongMax, Q_UINT64_C(1) << 63}, 2);
    row("case", "count", {"a", "A"}, 2);
    row("the first of equals is kept", "group_concat", {"a", "b", "a"}, ",a,b");
    row("an operand less", "nullif", {1, 1}, QVariant());
}

void TestFunctions::distinct()
{
    QFETCH(QString, name);
    QFETCH(QVariantList, values);
    QFETCH(QVariant, result);
    FunctionExpression const node(name, ExpressionList(values), true);
    QCOMPARE(typed::describe(node.evaluate({}, nullptr)), typed::describe(result));
}

void TestFunctions::aritiesAreNotChecked_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QVariant>("result");
    QTest::newRow("round") << "round" << QVariantList{2.5, "more"} << QVariant(3.0);
    QTest::newRow("abs") << "abs" << QVariantList{-1, -2} << QVariant(1);
    QTest::newRow("hex") << "hex" << QVariantList{10, 11} << QVariant("a");
    QTest::newRow("nullif") << "nullif" << QVariantList{1, 1, 2} << QVariant(1);
    QTest::newRow("ifnull") << "ifnull" << QVariantList{QVariant(), QVariant(), 3} << QVariant(3);
    QTest::newRow("count of nothing") << "count" << QVariantList{} << QVariant(0);
    QTest::newRow("coalesce of one") << "coalesce" << QVariantList{"a"} << QVariant("a");
    QTest::newRow("ifnull of one") << "ifnull" << QVariantList{"a"} << QVariant("a");
    QTest::newRow("trim") << "trim" << QVariantList{" a ", "b"} << QVariant("a");
}

void TestFunctions::aritiesAreNotChecked()
{
    QFETCH(QString, name);
    QFETCH(QVariantList, values);
    QFETCH(QVariant, result);
    FunctionExpression const node(name, ExpressionList(values), false);
    QCOMPARE(typed::describe(node.evaluate({}, nullptr)), typed::describe(result));
}

namespace {

/// Whether the function has a value for any number of operands down to @p operands.
bool isDefinedFor(QString const& name, int operands)
{
    return name == QLatin1String("count")
        || (operands == 1 && (name == QLatin1String("coalesce") || name == QLatin1String("ifnull")));
}

} // namespace

void TestFunctions::lackingOperands_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("operands");
    auto const& functions = FunctionExpression::functionMap();
    for (auto entry = functions.begin(); entry != functions.end(); ++entry) {
        for (int operands = 0; operands < entry->minArguments; ++operands) {
            if (!isDefinedFor(entry.key(), operands))
                QTest::addRow("%s of %d", qPrintable(entry.key()), operands) << entry.key() << operands;
        }
    }
}

void TestFunctions::lackingOperands()
{
    QFETCH(QString, name);
    QFETCH(int, operands);
    QVariantList values;
    while (values.size() < operands)
        values.append(QStringLiteral("a"));
    FunctionExpression const node(name, ExpressionList(values), false);
    QVERIFY(!node.evaluate({}, nullptr).isValid());
    QVERIFY(!FunctionExpression::functionMap().value(name).evaluate(values).isValid());
    QVERIFY(!node.toString(Sql).isEmpty());
    QVERIFY(node.toString(Code).startsWith(name + QLatin1Char('(')));
}

void TestFunctions::currentDate()
{
    QDate const before = QDate::currentDate();
    QVariant const value = qvgen::currentDate().evaluate({});
    QCOMPARE(value.type(), QVariant::Date);
    QVERIFY(before <= value.toDate() && value.toDate() <= QDate::currentDate());
}

void TestFunctions::currentTime()
{
    QDateTime const before = QDateTime::currentDateTime();
    QVariant const value = qvgen::currentTime().evaluate({});
    QDateTime const after = QDateTime::currentDateTime();
    QCOMPARE(value.type(), QVariant::Time);
    bool const isMidnight = before.date() != after.date();
    QVERIFY(isMidnight || (before.time() <= value.toTime() && value.toTime() <= after.time()));
}

void TestFunctions::currentDateTime()
{
    QDateTime const before = QDateTime::currentDateTime();
    QVariant const value = qvgen::currentDateTime().evaluate({});
    QCOMPARE(value.type(), QVariant::DateTime);
    QCOMPARE(value.toDateTime().timeSpec(), Qt::LocalTime);
    QVERIFY(before <= value.toDateTime() && value.toDateTime() <= QDateTime::currentDateTime());
}

void TestFunctions::randomIsTheLibrarysRand()
{
    std::srand(7);
    int const expected = std::rand();
    std::srand(7);
    QCOMPARE(typed::describe(qvgen::random().evaluate({})), typed::describe(expected));
}

void TestFunctions::operandsAreEvaluatedOnceInOrder()
{
    Counts counts;
    ExpressionHandle const node
        = callOn("group_concat", {counted(counts, "a"), counted(counts, "b"), counted(counts, "a")}, true);
    QCOMPARE(node.evaluate({}), QVariant(QStringLiteral(",a,b")));
    QCOMPARE(counts.evaluations, 3);
}

void TestFunctions::operandsAreAskedForConstnessAsTheCallIs()
{
    Counts counts;
    ExpressionHandle const node = callOn("count", {counted(counts, 1)});
    node.evaluate({});
    QCOMPARE(counts.flagRequests, 0);
    bool isConstant = false;
    node.evaluate({}, &isConstant);
    QCOMPARE(counts.flagRequests, 1);
}

void TestFunctions::constness_data()
{
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QList<bool>>("constants");
    QTest::addColumn<bool>("distinct");
    QTest::addColumn<bool>("isConstant");
    QTest::newRow("no operands") << QVariantList{} << QList<bool>{} << false << true;
    QTest::newRow("constants") << QVariantList{1, 2} << QList<bool>{true, true} << false << true;
    QTest::newRow("first varies") << QVariantList{1, 2} << QList<bool>{false, true} << false << false;
    QTest::newRow("last varies") << QVariantList{1, 2} << QList<bool>{true, false} << false << false;
    QTest::newRow("distinct constants") << QVariantList{1, 1} << QList<bool>{true, true} << true << true;
    QTest::newRow("a skipped one varies") << QVariantList{1, 1} << QList<bool>{true, false} << true << false;
}

void TestFunctions::constness()
{
    QFETCH(QVariantList, values);
    QFETCH(QList<bool>, constants);
    QFETCH(bool, distinct);
    QFETCH(bool, isConstant);
    Counts counts;
    ExpressionList operands;
    for (int i = 0; i < values.size(); ++i)
        operands.append(counted(counts, values.at(i), constants.at(i)));
    bool reported = !isConstant;
    FunctionExpression(QStringLiteral("count"), operands, distinct).evaluate({}, &reported);
    QCOMPARE(reported, isConstant);
}

void TestFunctions::unregisteredNameHasNoValue()
{
    QStringList const names = FunctionExpression::functionMap().keys();
    FunctionExpression const node = call("nosuch", {1});
    QVERIFY(!node.evaluate({}, nullptr).isValid());
    QVERIFY(!call("", {}).evaluate({}, nullptr).isValid());
    QVERIFY(!call("ABS", {1}).evaluate({}, nullptr).isValid());
    QVERIFY(node.equals(&node));
    for (Expression::PrintStyle const style : {Plain, Code, Sql, Bound})
        QVERIFY(!node.toString(style).isEmpty());
    QCOMPARE(node.collectPlaceholders().size(), node.toString(Bound).count(QLatin1Char('?')));
    QCOMPARE(FunctionExpression::functionMap().keys(), names);
}

void TestFunctions::equality_data()
{
    QTest::addColumn<ExpressionHandle>("other");
    QTest::addColumn<bool>("equal");
    QTest::newRow("twin") << ExpressionHandle(call("max", {1, 2})) << true;
    QTest::newRow("other name") << ExpressionHandle(call("min", {1, 2})) << false;
    QTest::newRow("name in other case") << ExpressionHandle(call("MAX", {1, 2})) << false;
    QTest::newRow("distinct") << ExpressionHandle(call("max", {1, 2}, true)) << false;
    QTest::newRow("operands swapped") << ExpressionHandle(call("max", {2, 1})) << false;
    QTest::newRow("one operand less") << ExpressionHandle(call("max", {1})) << false;
    QTest::newRow("one operand more") << ExpressionHandle(call("max", {1, 2, 3})) << false;
    QTest::newRow("constants instead of placeholders")
        << ExpressionHandle(callOn("max", {constant(1), constant(2)})) << true;
    QTest::newRow("list of the operands") << ExpressionHandle(ExpressionList(QVariantList{1, 2})) << false;
    QTest::newRow("value") << ExpressionHandle(nodes::value("max")) << false;
}

void TestFunctions::equality()
{
    QFETCH(ExpressionHandle, other);
    FunctionExpression const node = call("max", {1, 2});
    QTEST(node.equals(other.constData()), "equal");
    QTEST(other.constData()->equals(&node), "equal");
    QVERIFY(!node.equals(nullptr));
}

void TestFunctions::isEmptyWithoutOperands()
{
    QVERIFY(qvgen::currentDate().isEmpty());
    QVERIFY(!call("abs", {QVariant()}).isEmpty());
}

void TestFunctions::copies()
{
    FunctionExpression const node = call("count", {1, 2}, true);
    FunctionExpression copy = call("abs", {3});
    copy = node;
    QScopedPointer<FunctionExpression> const clone(copy.clone());
    QVERIFY(clone->equals(&node));
    QCOMPARE(clone->name(), QStringLiteral("count"));
    QVERIFY(clone->isDistinct());
    QCOMPARE(clone->operands().at(0).constData(), node.operands().at(0).constData());
}

void TestFunctions::deepTree()
{
    ExpressionHandle tree = placeholder(-7);
    for (int i = 1; i < Expression::MaxDepth; ++i)
        tree = qvgen::abs(tree);
    QCOMPARE(tree.evaluate({}), QVariant(7));
    QCOMPARE(tree.toString(Bound).size(), 999 * 5 + 1);
    QCOMPARE(tree.collectPlaceholders(), (QVariantList{-7}));
}

void TestFunctions::tooDeepTree()
{
    ExpressionHandle tree = placeholder(-7);
    for (int i = 0; i < 1000000; ++i)
        tree = qvgen::abs(tree);
    QVERIFY(!tree.evaluate({}).isValid());
    QCOMPARE(tree.toString(Bound), QString());
    QVERIFY(tree.collectPlaceholders().isEmpty());
}

QTEST_APPLESS_MAIN(TestFunctions)
#include "tst_Functions.moc"
