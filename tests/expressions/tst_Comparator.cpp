// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "CountingNode.h"
#include "Nodes.h"

#include <QDateTime>
#include <QRect>
#include <QTest>

using namespace qvgen;
using namespace nodes;

Q_DECLARE_METATYPE(Comparator::CompOp)

namespace {

constexpr Comparator::CompOp allOperators[] = {Comparator::NotEqual, Comparator::Less, Comparator::Equal,
    Comparator::Greater, Comparator::LessEqual, Comparator::GreaterEqual};

PropertySet someProperties()
{
    PropertySet set;
    add<IntProperty>(set, "ten", 10);
    add<U64Property>(set, "nine", 9ULL);
    add<StringProperty>(set, "gate", QStringLiteral("Gate"));
    return set;
}

QVariant compared(ExpressionHandle const& left, Comparator::CompOp op, ExpressionHandle const& right)
{
    return Comparator(left, op, right).evaluate(someProperties(), nullptr);
}

} // namespace

class TestComparator : public QObject {
    Q_OBJECT

private slots:
    void operatorTable_data();
    void operatorTable();
    void truthTable_data();
    void truthTable();
    void placeholderOfAProperty();
    void printed_data();
    void printed();
    void values_data();
    void values();
    void constantsMayChangeTheirType_data();
    void constantsMayChangeTheirType();
    void incomparableIsInvalid_data();
    void incomparableIsInvalid();
    void valuesWithoutOrderEqualByConversion();
    void constness_data();
    void constness();
    void evaluatesEachSideOnce();
    void unknownOperatorIsInvalid_data();
    void unknownOperatorIsInvalid();
    void withoutOperands();
    void equality_data();
    void equality();
    void cloneIsEqual();
    void placeholdersInPrintOrder();
};

void TestComparator::operatorTable_data()
{
    QTest::addColumn<Comparator::CompOp>("op");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QString>("code");
    QTest::newRow("not equal") << Comparator::NotEqual << 0 << "a != b"
                               << "a != b";
    QTest::newRow("less") << Comparator::Less << 1 << "a < b"
                          << "a < b";
    QTest::newRow("equal") << Comparator::Equal << 2 << "a = b"
                           << "a == b";
    QTest::newRow("greater") << Comparator::Greater << 3 << "a > b"
                             << "a > b";
    QTest::newRow("less or equal") << Comparator::LessEqual << 4 << "a <= b"
                                   << "a <= b";
    QTest::newRow("greater or equal") << Comparator::GreaterEqual << 5 << "a >= b"
                                      << "a >= b";
}

void TestComparator::operatorTable()
{
    QFETCH(Comparator::CompOp, op);
    Comparator const node(value("a"), op, value("b"));
    QTEST(static_cast<int>(node.op()), "number");
    QTEST(node.toString(Sql), "sql");
    QTEST(node.toString(Plain), "sql");
    QTEST(node.toString(Code), "code");
}

void TestComparator::truthTable_data()
{
    QTest::addColumn<Comparator::CompOp>("op");
    QTest::addColumn<bool>("whenLess");
    QTest::addColumn<bool>("whenEqual");
    QTest::addColumn<bool>("whenGreater");
    QTest::newRow("not equal") << Comparator::NotEqual << true << false << true;
    QTest::newRow("less") << Comparator::Less << true << false << false;
    QTest::newRow("equal") << Comparator::Equal << false << true << false;
    QTest::newRow("greater") << Comparator::Greater << false << false << true;
    QTest::newRow("less or equal") << Comparator::LessEqual << true << true << false;
    QTest::newRow("greater or equal") << Comparator::GreaterEqual << false << true << true;
}

void TestComparator::truthTable()
{
    QFETCH(Comparator::CompOp, op);
    QVariant const less = compared(value("ten"), op, constant(11));
    QCOMPARE(less.type(), QVariant::Bool);
    QTEST(less.toBool(), "whenLess");
    QTEST(compared(value("ten"), op, constant(10)).toBool(), "whenEqual");
    QTEST(compared(value("ten"), op, constant(9)).toBool(), "whenGreater");
}

void TestComparator::placeholderOfAProperty()
{
    Comparator const node = IntProperty(QStringLiteral("prop"), QString(), 0) == QVariant(5);
    QCOMPARE(node.toString(Bound), QStringLiteral("prop = ?"));
    QCOMPARE(node.toString(Sql), QStringLiteral("prop = 5"));
    QCOMPARE(node.toString(Code), QStringLiteral("prop == 5"));
    QCOMPARE(node.collectPlaceholders(), QList<QVariant>({5}));
}

void TestComparator::printed_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<Expression::PrintStyle>("style");
    QTest::addColumn<QString>("text");
    ExpressionHandle const both = BooleanOperator(value("a"), BooleanOperator::And, value("b"));
    ExpressionHandle const inner = Comparator(value("a"), Comparator::Equal, value("b"));
    auto const row = [](char const* name, Comparator const& tree, Expression::PrintStyle style, char const* text) {
        QTest::newRow(name) << ExpressionHandle(tree) << style << QString::fromLatin1(text);
    };
    row("placeholders in SQL", Comparator(value("age"), Comparator::GreaterEqual, placeholder(3)), Bound, "age >= ?");
    row("code", Comparator(value("age"), Comparator::Equal, placeholder(3)), Code, "age == 3");
    row("no parentheses of its own", Comparator(inner, Comparator::Less, inner), Sql, "a = b < a = b");
    row("no parentheses when nested", Comparator(inner, Comparator::Less, inner), Sql | Nested, "a = b < a = b");
    row("left side is nested", Comparator(both, Comparator::NotEqual, value("c")), Sql, "(a AND b) != c");
    row("right side is nested", Comparator(value("c"), Comparator::NotEqual, both), Code, "c != (a && b)");
    row("nothing on either side", Comparator({}, Comparator::Equal, {}), Sql, " = ");
}

void TestComparator::printed()
{
    QFETCH(ExpressionHandle, tree);
    QFETCH(Expression::PrintStyle, style);
    QTEST(tree.toString(style), "text");
}

void TestComparator::values_data()
{
    QTest::addColumn<QVariant>("left");
    QTest::addColumn<Comparator::CompOp>("op");
    QTest::addColumn<QVariant>("right");
    QTest::addColumn<bool>("holds");
    auto const row = [](char const* name, QVariant const& left, Comparator::CompOp op, QVariant const& right,
                         bool holds) { QTest::newRow(name) << left << op << right << holds; };
    QDateTime const moment(QDate(2020, 1, 1), QTime(), Qt::UTC);
    row("texts by code units", QStringLiteral("Z"), Comparator::Less, QStringLiteral("a"), true);
    row("texts with case", QStringLiteral("gate"), Comparator::Equal, QStringLiteral("Gate"), false);
    row("text and number as texts", QStringLiteral("10"), Comparator::Less, 9, true);
    row("int and double", 2, Comparator::Less, 3.5, true);
    row("doubles less than 1 apart are equal", 1.2, Comparator::Equal, 1.9, true);
    row("doubles less than 1 apart are not less", 1.2, Comparator::Less, 1.9, false);
    row("extreme ints", INT_MIN, Comparator::Less, INT_MAX, true);
    row("date and moment", QDate(2020, 1, 1), Comparator::Equal, moment, true);
    row("date and microseconds", QDate(1970, 1, 2), Comparator::Equal, 86400000000LL, true);
    row("date and milliseconds", QDate(1970, 1, 2), Comparator::Equal, 86400000, true);
    row("shorter list", QVariantList{1, 2}, Comparator::Less, QVariantList{1, 2, 3}, true);
    row("truth values", true, Comparator::Equal, true, true);
    row("empty text and text", QString(), Comparator::Less, QStringLiteral("a"), true);
}

void TestComparator::values()
{
    QFETCH(QVariant, left);
    QFETCH(Comparator::CompOp, op);
    QFETCH(QVariant, right);
    QFETCH(bool, holds);
    QCOMPARE(compared(constant(left), op, constant(right)), QVariant(holds));
}

// As numbers 9 < 10, as texts "10" < "9": a signed and an unsigned 64-bit number compare as numbers only where a
// constant may change its type.
void TestComparator::constantsMayChangeTheirType_data()
{
    QTest::addColumn<ExpressionHandle>("left");
    QTest::addColumn<ExpressionHandle>("right");
    QTest::addColumn<bool>("greater");
    auto const row = [](char const* name, ExpressionHandle const& left, ExpressionHandle const& right, bool greater) {
        QTest::newRow(name) << left << right << greater;
    };
    row("right is constant", value("ten"), constant(9ULL), true);
    row("right placeholder is constant", value("ten"), placeholder(9ULL), true);
    row("left is constant", constant(10), value("nine"), true);
    row("neither is constant", value("ten"), value("nine"), false);
    row("cast keeps constness", value("ten"), toULongLong(constant(9)), true);
    row("cast of a reference is not constant", value("ten"), toULongLong(value("nine")), false);
}

void TestComparator::constantsMayChangeTheirType()
{
    QFETCH(ExpressionHandle, left);
    QFETCH(ExpressionHandle, right);
    QFETCH(bool, greater);
    QCOMPARE(compared(left, Comparator::Greater, right), QVariant(greater));
}

void TestComparator::incomparableIsInvalid_data()
{
    QTest::addColumn<ExpressionHandle>("left");
    QTest::addColumn<ExpressionHandle>("right");
    auto const row = [](char const* name, ExpressionHandle const& left, ExpressionHandle const& right) {
        QTest::newRow(name) << left << right;
    };
    row("missing property and number", value("missing"), constant(5));
    row("number and missing property", constant(5), value("missing"));
    row("missing property and text", value("missing"), value("gate"));
    row("two missing properties", value("missing"), value("gone"));
    row("rectangle and number", constant(QRect(1, 2, 3, 4)), constant(5));
    row("list and number", ExpressionList(constant(1), constant(2)), constant(5));
    row("list and text", ExpressionHandle(), value("gate"));
}

void TestComparator::incomparableIsInvalid()
{
    QFETCH(ExpressionHandle, left);
    QFETCH(ExpressionHandle, right);
    for (Comparator::CompOp const op : allOperators)
        QVERIFY2(!compared(left, op, right).isValid(), qPrintable(Comparator(left, op, right).toString(Code)));
}

// Two rectangles have no order; they are equal, since both convert to the common type.
void TestComparator::valuesWithoutOrderEqualByConversion()
{
    ExpressionHandle const left = constant(QRect(1, 2, 3, 4));
    ExpressionHandle const right = constant(QRect(5, 6, 7, 8));
    QCOMPARE(compared(left, Comparator::Equal, right), QVariant(true));
    QCOMPARE(compared(left, Comparator::NotEqual, right), QVariant(false));
    QCOMPARE(compared(left, Comparator::Less, right), QVariant());
    QCOMPARE(compared(left, Comparator::GreaterEqual, right), QVariant());
}

void TestComparator::constness_data()
{
    QTest::addColumn<ExpressionHandle>("left");
    QTest::addColumn<ExpressionHandle>("right");
    QTest::addColumn<bool>("isConstant");
    auto const row = [](char const* name, ExpressionHandle const& left, ExpressionHandle const& right, bool constant) {
        QTest::newRow(name) << left << right << constant;
    };
    row("constants", constant(1), placeholder(2), true);
    row("left reference", value("ten"), constant(2), false);
    row("right reference", constant(2), value("ten"), false);
    row("references", value("ten"), value("nine"), false);
    row("missing property", constant(2), value("missing"), false);
    row("incomparable constants", constant(QVariant()), constant(2), true);
}

void TestComparator::constness()
{
    QFETCH(ExpressionHandle, left);
    QFETCH(ExpressionHandle, right);
    QFETCH(bool, isConstant);
    bool reported = !isConstant;
    Comparator(left, Comparator::Equal, right).evaluate(someProperties(), &reported);
    QCOMPARE(reported, isConstant);
}

void TestComparator::evaluatesEachSideOnce()
{
    Counts left;
    Counts right;
    Comparator const node(counted(left, 1), Comparator::Equal, counted(right, 1));
    QCOMPARE(node.evaluate({}, nullptr), QVariant(true));
    QCOMPARE(left.evaluations, 1);
    QCOMPARE(right.evaluations, 1);
}

void TestComparator::unknownOperatorIsInvalid_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("one too many") << 6;
    QTest::newRow("negative") << -1;
    QTest::newRow("highest") << INT_MAX;
    QTest::newRow("lowest") << INT_MIN;
}

void TestComparator::unknownOperatorIsInvalid()
{
    QFETCH(int, number);
    Comparator const node(constant(1), static_cast<Comparator::CompOp>(number), value("ten"));
    bool isConstant = true;
    QCOMPARE(node.evaluate(someProperties(), &isConstant), QVariant());
    QVERIFY(!isConstant);
}

void TestComparator::withoutOperands()
{
    Comparator const node(Comparator::Less);
    QVERIFY(node.isEmpty());
    QCOMPARE(node.op(), Comparator::Less);
    QCOMPARE(node.evaluate({}, nullptr), QVariant());
    QCOMPARE(node.collectPlaceholders(), QList<QVariant>());
}

void TestComparator::equality_data()
{
    QTest::addColumn<ExpressionHandle>("other");
    QTest::addColumn<bool>("equal");
    auto const row
        = [](char const* name, ExpressionHandle const& other, bool equal) { QTest::newRow(name) << other << equal; };
    row("same", Comparator(value("a"), Comparator::Less, constant(1)), true);
    row("placeholder flag is not compared", Comparator(value("a"), Comparator::Less, placeholder(1)), true);
    row("another operator", Comparator(value("a"), Comparator::LessEqual, constant(1)), false);
    row("another side", Comparator(value("a"), Comparator::Less, constant(2)), false);
    row("sides exchanged", Comparator(constant(1), Comparator::Greater, value("a")), false);
    row("without operands", Comparator(Comparator::Less), false);
    row("list of the same operands", ExpressionList(value("a"), constant(1)), false);
}

void TestComparator::equality()
{
    QFETCH(ExpressionHandle, other);
    ExpressionHandle const node = Comparator(value("a"), Comparator::Less, constant(1));
    QTEST(node.equals(other), "equal");
    QTEST(other.equals(node), "equal");
}

void TestComparator::cloneIsEqual()
{
    Comparator const node(value("a"), Comparator::GreaterEqual, placeholder(1));
    ExpressionHandle const handle = node;
    QVERIFY(node.equals(handle.constData()));
    QCOMPARE(handle.toString(Bound), QStringLiteral("a >= ?"));
}

void TestComparator::placeholdersInPrintOrder()
{
    Comparator const node(placeholder(2), Comparator::Less, placeholder(1));
    QCOMPARE(node.collectPlaceholders(), QList<QVariant>({2, 1}));
}

QTEST_APPLESS_MAIN(TestComparator)
#include "tst_Comparator.moc"
