// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "CountingNode.h"
#include "Nodes.h"

#include <QDateTime>
#include <QTest>

using namespace qvgen;
using namespace nodes;

using Maker = CastExpression (*)(ExpressionHandle);
Q_DECLARE_METATYPE(Maker)
Q_DECLARE_METATYPE(QVariant::Type)

namespace {

// A client's operator that adds nothing of its own to the base.
class BareOperator : public Operator {
public:
    QVariant evaluate(PropertySet const&, bool*) const override { return {}; }
    BareOperator* clone() const override { return new BareOperator(*this); }
    void print(QTextStream& out, PrintStyle style) const override { printOperands(out, style, 0, QLatin1String("~")); }
};

ExpressionList list(std::initializer_list<ExpressionHandle> elements)
{
    ExpressionList result;
    for (ExpressionHandle const& element : elements)
        result.append(element);
    return result;
}

} // namespace

class TestCastsAndLists : public QObject {
    Q_OBJECT

private slots:
    void castMakers_data();
    void castMakers();
    void printedCast_data();
    void printedCast();
    void evaluatedCast_data();
    void evaluatedCast();
    void castPassesConstness_data();
    void castPassesConstness();
    void castToNoTypeAtAll();

    void flattening_data();
    void flattening();
    void listOfValuesHoldsPlaceholders();
    void appendListToItself();
    void printedList_data();
    void printedList();
    void evaluatedList_data();
    void evaluatedList();
    void everyElementIsEvaluated();
    void chainOfBuildersNests();

    void equality_data();
    void equality();
    void operatorsEqualByTheirOperands();
    void placeholders_data();
    void placeholders();
    void depth_data();
    void depth();
};

void TestCastsAndLists::castMakers_data()
{
    QTest::addColumn<Maker>("make");
    QTest::addColumn<int>("target");
    QTest::addColumn<QString>("typeName");
    auto const row = [](char const* name, Maker make, int target, char const* typeName) {
        QTest::newRow(name) << make << target << QString::fromLatin1(typeName);
    };
    row("toBool", toBool, 1, "bool");
    row("toInt", toInt, 2, "int");
    row("toUInt", toUInt, 3, "uint");
    row("toLongLong", toLongLong, 4, "qlonglong");
    row("toULongLong", toULongLong, 5, "qulonglong");
    row("toDouble", toDouble, 6, "double");
    row("toString", toString, 10, "QString");
    row("toDate", toDate, 14, "QDate");
    row("toTime", toTime, 15, "QTime");
    row("toDateTime", toDateTime, 16, "QDateTime");
}

void TestCastsAndLists::castMakers()
{
    QFETCH(Maker, make);
    QFETCH(int, target);
    QFETCH(QString, typeName);
    ExpressionHandle const age = value("age");
    CastExpression const cast = make(age);
    QCOMPARE(static_cast<int>(cast.target()), target);
    QCOMPARE(cast.operand().constData(), age.constData());
    QCOMPARE(cast.toString(Sql), QStringLiteral("CAST(age AS %1)").arg(typeName));
    QCOMPARE(cast.toString(Plain), QStringLiteral("CAST(age AS %1)").arg(typeName));
    QCOMPARE(cast.toString(Code), QStringLiteral("(%1)age").arg(typeName));
}

void TestCastsAndLists::printedCast_data()
{
    QTest::addColumn<ExpressionHandle>("operand");
    QTest::addColumn<Expression::PrintStyle>("style");
    QTest::addColumn<QString>("text");
    ExpressionHandle const both = BooleanOperator(value("a"), BooleanOperator::And, value("b"));
    auto const row = [](char const* name, ExpressionHandle const& operand, Expression::PrintStyle style,
                         char const* text) { QTest::newRow(name) << operand << style << QString::fromLatin1(text); };
    row("code nests its operand", both, Code, "(int)(a && b)");
    row("SQL does not nest its operand", both, Sql, "CAST(a AND b AS int)");
    row("plain does not nest its operand", both, Plain, "CAST(a AND b AS int)");
    row("SQL passes nesting on", both, Sql | Nested, "CAST((a AND b) AS int)");
    row("cast of a cast in SQL", toBool(value("a")), Sql, "CAST(CAST(a AS bool) AS int)");
    row("cast of a cast in code", toBool(value("a")), Code, "(int)(bool)a");
    row("placeholder", placeholder(5), Bound, "CAST(? AS int)");
    row("placeholder in code", placeholder(5), Code | Expression::StylePlaceholders, "(int)?");
    row("alias", ValueExpression(QStringLiteral("a"), QStringLiteral("b")), Sql, "CAST(a AS b AS int)");
    row("nothing", ExpressionHandle(), Sql, "CAST( AS int)");
}

void TestCastsAndLists::printedCast()
{
    QFETCH(ExpressionHandle, operand);
    QFETCH(Expression::PrintStyle, style);
    QTEST(toInt(operand).toString(style), "text");
}

void TestCastsAndLists::evaluatedCast_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVariant::Type>("target");
    QTest::addColumn<QVariant>("result");
    auto const row = [](char const* name, QVariant const& value, QVariant::Type target, QVariant const& result) {
        QTest::newRow(name) << value << target << result;
    };
    row("text to int", QStringLiteral("5"), QVariant::Int, 5);
    row("text that is no number", QStringLiteral("abc"), QVariant::Int, 0);
    row("double to int rounds", 2.5, QVariant::Int, 3);
    row("text to unsigned", QStringLiteral("5"), QVariant::UInt, 5U);
    row("int to 64 bits", -5, QVariant::LongLong, -5LL);
    row("text to unsigned 64 bits", QStringLiteral("18446744073709551615"), QVariant::ULongLong, ~0ULL);
    row("text to double", QStringLiteral("2.5"), QVariant::Double, 2.5);
    row("int to text", -5, QVariant::String, QStringLiteral("-5"));
    row("number to truth value", 2, QVariant::Bool, true);
    row("text to date", QStringLiteral("2020-02-29"), QVariant::Date, QDate(2020, 2, 29));
    row("text to time", QStringLiteral("13:14:15"), QVariant::Time, QTime(13, 14, 15));
    row("date to moment", QDate(2020, 2, 29), QVariant::DateTime, QDateTime({2020, 2, 29}, {0, 0}));
    row("moment to time", QDateTime({2020, 2, 29}, {13, 14, 15}), QVariant::Time, QTime(13, 14, 15));
    row("date to text", QDate(2020, 2, 29), QVariant::String, QStringLiteral("2020-02-29"));
    row("to its own type", 5, QVariant::Int, 5);
    row("date to 64 bits gives unsigned microseconds", QDate(1970, 1, 2), QVariant::LongLong, 86400000000ULL);
    row("date to days", QDate(1970, 1, 3), QVariant::Double, 2.0);
    row("time to int gives milliseconds", QTime(0, 0, 1), QVariant::Int, 1000);
    row("time to unsigned gives milliseconds", QTime(0, 0, 1), QVariant::UInt, 1000U);
    row("time to int keeps 32 bits of the microseconds", QTime(3, 4, 5, 6), QVariant::Int, -1839895);
    row("milliseconds to date", 86400000, QVariant::Date, QDate(1970, 1, 2));
    row("microseconds to time", 1000000LL, QVariant::Time, QTime(0, 0, 1));
    row("microseconds to moment", 1000000LL, QVariant::DateTime, QDateTime({1970, 1, 1}, {0, 0, 1}, Qt::UTC));
    row("list to number", QVariantList{1}, QVariant::Int, QVariant());
    row("truth value to date", true, QVariant::Date, QVariant());
    row("nothing to number", QVariant(), QVariant::Int, QVariant());
    row("nothing to date", QVariant(), QVariant::Date, QVariant());
}

void TestCastsAndLists::evaluatedCast()
{
    QFETCH(QVariant, value);
    QFETCH(QVariant::Type, target);
    QFETCH(QVariant, result);
    QVariant const converted = CastExpression(target, constant(value)).evaluate({}, nullptr);
    QCOMPARE(converted, result);
    QCOMPARE(converted.type(), result.type());
}

void TestCastsAndLists::castPassesConstness_data()
{
    QTest::addColumn<ExpressionHandle>("operand");
    QTest::addColumn<bool>("isConstant");
    QTest::newRow("constant") << ExpressionHandle(constant(5)) << true;
    QTest::newRow("reference") << ExpressionHandle(value("age")) << false;
    QTest::newRow("missing property") << ExpressionHandle(value("missing")) << false;
}

void TestCastsAndLists::castPassesConstness()
{
    QFETCH(ExpressionHandle, operand);
    QFETCH(bool, isConstant);
    PropertySet set;
    add<IntProperty>(set, "age", 42);
    bool reported = !isConstant;
    toInt(operand).evaluate(set, &reported);
    QCOMPARE(reported, isConstant);
}

void TestCastsAndLists::castToNoTypeAtAll()
{
    auto const unknown = static_cast<QVariant::Type>(1000000);
    QCOMPARE(CastExpression(unknown, constant(5)).evaluate({}, nullptr), QVariant());
    QCOMPARE(CastExpression(QVariant::Invalid, constant(5)).evaluate({}, nullptr), QVariant());
    QCOMPARE(CastExpression(unknown, constant(5)).toString(Code), QStringLiteral("()5"));
}

void TestCastsAndLists::flattening_data()
{
    QTest::addColumn<ExpressionHandle>("list");
    QTest::addColumn<int>("elements");
    QTest::addColumn<QString>("text");
    ExpressionHandle const one = constant(1);
    ExpressionHandle const pair = ExpressionList(one, constant(2));
    ExpressionList appended(one);
    appended.append(ExpressionList(pair));
    ExpressionList appendedAsOne(one);
    appendedAsOne.append(pair);
    auto const row = [](char const* name, ExpressionList const& elements, int count, char const* text) {
        QTest::newRow(name) << ExpressionHandle(elements) << count << QString::fromLatin1(text);
    };
    row("nothing", ExpressionList(), 0, "");
    row("single element", ExpressionList(one), 1, "1");
    row("handle of a list gives its elements", ExpressionList(pair), 2, "1,2");
    row("handle of nested lists is flattened by one level", ExpressionList(ExpressionHandle(ExpressionList(pair, one))),
        2, "1,2,1");
    row("default handle gives no elements", ExpressionList(ExpressionHandle()), 0, "");
    row("two elements", ExpressionList(one, one), 2, "1,1");
    row("list as second of two stays a list", ExpressionList(one, pair), 2, "1,1,2");
    row("list as first of two stays a list", ExpressionList(pair, one), 2, "1,2,1");
    row("appended list gives its elements", appended, 3, "1,1,2");
    row("appended handle of a list stays a list", appendedAsOne, 2, "1,1,2");
}

void TestCastsAndLists::flattening()
{
    QFETCH(ExpressionHandle, list);
    QTEST(operandCount(list), "elements");
    QTEST(list.toString(Sql), "text");
}

void TestCastsAndLists::listOfValuesHoldsPlaceholders()
{
    ExpressionList const elements(QList<QVariant>{1, QStringLiteral("a"), QDate(1970, 1, 2)});
    QCOMPARE(elements.operands().size(), 3);
    QCOMPARE(elements.toString(Bound), QStringLiteral("?,?,?"));
    QCOMPARE(elements.toString(Sql), QStringLiteral("1,'a',86400000000"));
    QCOMPARE(elements.collectPlaceholders(), QList<QVariant>({1, QStringLiteral("a"), 86400000000LL}));
    QVERIFY(ExpressionList(QList<QVariant>()).isEmpty());
}

void TestCastsAndLists::appendListToItself()
{
    ExpressionList elements(constant(1), constant(2));
    elements.append(elements);
    QCOMPARE(elements.toString(Sql), QStringLiteral("1,2,1,2"));
}

void TestCastsAndLists::printedList_data()
{
    QTest::addColumn<Expression::PrintStyle>("style");
    QTest::addColumn<QString>("text");
    QTest::newRow("SQL") << Sql << "a AND b,'x',3,c";
    QTest::newRow("elements are not nested") << (Sql | Nested) << "a AND b,'x',3,c";
    QTest::newRow("placeholders") << Bound << "a AND b,?,3,c";
    QTest::newRow("code") << Code << "a && b,\"x\",3,c";
    QTest::newRow("plain") << Plain << "a AND b,\"x\",3,c";
}

void TestCastsAndLists::printedList()
{
    QFETCH(Expression::PrintStyle, style);
    ExpressionList const inner(constant(3), value("c"));
    ExpressionList const elements = list(
        {BooleanOperator(value("a"), BooleanOperator::And, value("b")), placeholder(QStringLiteral("x")), inner});
    QTEST(elements.toString(style), "text");
}

void TestCastsAndLists::evaluatedList_data()
{
    QTest::addColumn<ExpressionHandle>("list");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<bool>("isConstant");
    auto const row = [](char const* name, ExpressionList const& elements, QVariantList const& values, bool constant) {
        QTest::newRow(name) << ExpressionHandle(elements) << values << constant;
    };
    row("nothing", {}, {}, true);
    row("constants", list({constant(1), constant(QStringLiteral("a"))}), {1, QStringLiteral("a")}, true);
    row("reference first", list({value("age"), constant(1)}), {42, 1}, false);
    row("reference last", list({constant(1), value("age")}), {1, 42}, false);
    row("missing property keeps its place", list({constant(1), value("missing"), constant(2)}), {1, QVariant(), 2},
        false);
    row("nested lists", list({list({constant(1), constant(2)}), list({})}),
        {QVariant(QVariantList{1, 2}), QVariant(QVariantList())}, true);
    row("reference in a nested list", list({list({value("age")}), constant(2)}), {QVariant(QVariantList{42}), 2},
        false);
}

void TestCastsAndLists::evaluatedList()
{
    QFETCH(ExpressionHandle, list);
    QFETCH(QVariantList, values);
    QFETCH(bool, isConstant);
    PropertySet set;
    add<IntProperty>(set, "age", 42);
    bool reported = !isConstant;
    QCOMPARE(list.evaluate(set, &reported), QVariant(values));
    QCOMPARE(reported, isConstant);
    QCOMPARE(list.evaluate(set), QVariant(values));
}

void TestCastsAndLists::everyElementIsEvaluated()
{
    Counts counts;
    ExpressionList const elements = list({counted(counts, 1, false), counted(counts, 2), counted(counts, 3, false)});
    bool isConstant = true;
    QCOMPARE(elements.evaluate({}, &isConstant), QVariant(QVariantList({1, 2, 3})));
    QVERIFY(!isConstant);
    QCOMPARE(counts.evaluations, 3);
}

void TestCastsAndLists::chainOfBuildersNests()
{
    ExpressionHandle const chain = ExpressionHandle(constant(1)) << constant(2) << constant(3);
    QCOMPARE(operandCount(chain), 2);
    QCOMPARE(operandCount(held<Operator>(chain)->operands().at(0)), 2);
    QCOMPARE(chain.evaluate({}), QVariant(QVariantList({QVariant(QVariantList({1, 2})), 3})));
}

void TestCastsAndLists::equality_data()
{
    QTest::addColumn<ExpressionHandle>("a");
    QTest::addColumn<ExpressionHandle>("b");
    QTest::addColumn<bool>("equal");
    ExpressionHandle const one = constant(1);
    ExpressionHandle const two = constant(2);
    auto const row = [](char const* name, ExpressionHandle const& a, ExpressionHandle const& b, bool equal) {
        QTest::newRow(name) << a << b << equal;
    };
    row("same cast", toInt(one), toInt(constant(1)), true);
    row("another target", toInt(one), toUInt(one), false);
    row("another operand", toInt(one), toInt(two), false);
    row("cast and its operand", toInt(one), one, false);
    row("same lists", ExpressionList(one, two), ExpressionList(constant(1), constant(2)), true);
    row("another order", ExpressionList(one, two), ExpressionList(two, one), false);
    row("shorter list", ExpressionList(one, two), ExpressionList(one), false);
    row("empty lists", ExpressionList(), ExpressionHandle(), true);
    row("list and its only element", ExpressionList(one), one, false);
    row("another nesting", ExpressionList(one, ExpressionList(one)), ExpressionList(one, one), false);
    row("list and a junction of the same operands", ExpressionList(one, two),
        BooleanOperator(one, BooleanOperator::And, two), false);
    row("list and cast", ExpressionList(one), toInt(one), false);
}

void TestCastsAndLists::equality()
{
    QFETCH(ExpressionHandle, a);
    QFETCH(ExpressionHandle, b);
    QTEST(a.equals(b), "equal");
    QTEST(b.equals(a), "equal");
}

void TestCastsAndLists::operatorsEqualByTheirOperands()
{
    BareOperator bare;
    bare.append(constant(1));
    BareOperator const same = bare;
    QVERIFY(bare.equals(&same));
    ExpressionList const list(ExpressionHandle(constant(1)));
    QVERIFY(bare.equals(&list)); // any operator will do
    QVERIFY(!list.equals(&bare));
    bare.append(constant(2));
    QVERIFY(!bare.equals(&same));
    QCOMPARE(bare.toString(Sql), QStringLiteral("1~2"));
}

void TestCastsAndLists::placeholders_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<QList<QVariant>>("values");
    auto const row = [](char const* name, ExpressionHandle const& tree, QList<QVariant> const& values) {
        QTest::newRow(name) << tree << values;
    };
    row("cast forwards", toInt(placeholder(1)), {1});
    row("cast of a fixed constant", toInt(constant(1)), {});
    row("cast of a date", toInt(placeholder(QDate(1970, 1, 2))), {86400000000LL});
    row("from left to right", list({placeholder(3), constant(9), placeholder(1), placeholder(2)}), {3, 1, 2});
    row("through nested nodes", list({list({placeholder(3), toInt(placeholder(1))}), placeholder(2)}), {3, 1, 2});
    row("one value twice", list({placeholder(1), placeholder(1)}), {1, 1});
    row("references have none", list({value("a"), value("b")}), {});
    row("nothing", ExpressionHandle(), {});
}

void TestCastsAndLists::placeholders()
{
    QFETCH(ExpressionHandle, tree);
    QFETCH(QList<QVariant>, values);
    QCOMPARE(tree.collectPlaceholders(), values);
    QCOMPARE(tree.toString(Bound).count(QLatin1Char('?')), values.size());
}

void TestCastsAndLists::depth_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<int>("levels");
    ExpressionHandle const one = constant(1);
    QTest::newRow("leaf") << one << 1;
    QTest::newRow("empty list") << ExpressionHandle() << 1;
    QTest::newRow("cast") << ExpressionHandle(toInt(one)) << 2;
    QTest::newRow("deepest operand counts") << ExpressionHandle(list({one, list({toInt(one)}), one})) << 4;
}

void TestCastsAndLists::depth()
{
    QFETCH(ExpressionHandle, tree);
    QTEST(tree.constData()->depth(), "levels");
}

QTEST_APPLESS_MAIN(TestCastsAndLists)
#include "tst_CastsAndLists.moc"
