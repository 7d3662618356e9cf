// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/NumericOperators.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "CountingNode.h"
#include "Nodes.h"
#include "TypedVariant.h"

#include <QTest>

using namespace qvgen;
using namespace nodes;

using NumOp = NumericOperator::NumOp;
using Operands = QList<ExpressionHandle>;

namespace {

NumericOperator chain(NumOp op, Operands const& operands)
{
    NumericOperator node(op);
    for (ExpressionHandle const& operand : operands)
        node.append(operand);
    return node;
}

/// A value that depends on the properties.
ExpressionHandle variable(QVariant const& value)
{
    static Counts counts;
    return CountingNode(counts, value, false);
}

ExpressionHandle nested(int levels)
{
    ExpressionHandle tree = placeholder(0);
    for (int i = 0; i < levels; ++i)
        tree = NumericOperator(tree, NumericOperator::Add, constant(1));
    return tree;
}

} // namespace

/// What arithmetic evaluates to. How it is built: tst_Arithmetic.cpp.
class TestNumericOperators : public QObject {
    Q_OBJECT

private slots:
    void operationNumbersAreStored();

    void apply_data();
    void apply();
    void applyOfUnknownOperation_data();
    void applyOfUnknownOperation();
    void applyJoinsConstness_data();
    void applyJoinsConstness();

    void value_data();
    void value();
    void commonTypeOfEachStep_data();
    void commonTypeOfEachStep();
    void failedStepEndsTheEvaluation();
    void failedBitOperationIsCarriedOn();
    void reportsConstnessOfFirstOperand_data();
    void reportsConstnessOfFirstOperand();
    void referencesAreLookedUp();

    void deepTree();
    void tooDeepTree();
};

void TestNumericOperators::operationNumbersAreStored()
{
    QList<int> const numbers
        = {NumericOperator::Add, NumericOperator::Subtract, NumericOperator::Multiply, NumericOperator::Divide,
            NumericOperator::Modulo, NumericOperator::BitAnd, NumericOperator::BitOr, NumericOperator::BitXor};
    QCOMPARE(numbers, (QList<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

void TestNumericOperators::apply_data()
{
    QTest::addColumn<int>("op");
    QTest::addColumn<QVariant>("left");
    QTest::addColumn<QVariant>("right");
    QTest::addColumn<QVariant>("result");
    QTest::addColumn<bool>("ok");

    QTest::newRow("add") << 0 << QVariant(12) << QVariant(10) << QVariant(22) << true;
    QTest::newRow("subtract") << 1 << QVariant(12) << QVariant(10) << QVariant(2) << true;
    QTest::newRow("multiply") << 2 << QVariant(12) << QVariant(10) << QVariant(120) << true;
    QTest::newRow("divide") << 3 << QVariant(12) << QVariant(10) << QVariant(1) << true;
    QTest::newRow("modulo") << 4 << QVariant(12) << QVariant(10) << QVariant(2) << true;
    QTest::newRow("bit and") << 5 << QVariant(12) << QVariant(10) << QVariant(8) << true;
    QTest::newRow("bit or") << 6 << QVariant(12) << QVariant(10) << QVariant(14) << true;
    QTest::newRow("bit xor") << 7 << QVariant(12) << QVariant(10) << QVariant(6) << true;
    QTest::newRow("division by zero") << 3 << QVariant(12) << QVariant(0) << QVariant() << false;
    QTest::newRow("remainder of zero") << 4 << QVariant(12) << QVariant(0) << QVariant() << false;
    QTest::newRow("remainder of doubles") << 4 << QVariant(7.0) << QVariant(2.0) << QVariant() << false;
    QTest::newRow("product of texts") << 2 << QVariant("a") << QVariant("b") << QVariant() << false;
    QTest::newRow("bits of a double are no failure") << 5 << QVariant(1.5) << QVariant(2) << QVariant() << true;
    QTest::newRow("bits of a text are no failure") << 6 << QVariant("a") << QVariant(2) << QVariant() << true;
    QTest::newRow("bits of a date are no failure")
        << 7 << QVariant(QDate(2020, 1, 1)) << QVariant(2) << QVariant() << true;
}

void TestNumericOperators::apply()
{
    QFETCH(int, op);
    QFETCH(QVariant, left);
    QFETCH(QVariant, right);
    QFETCH(QVariant, result);

    bool isConstant = true;
    QTEST(NumericOperator::apply(left, isConstant, static_cast<NumOp>(op), right, true), "ok");
    QCOMPARE(typed::describe(left), typed::describe(result));
}

void TestNumericOperators::applyOfUnknownOperation_data()
{
    QTest::addColumn<int>("op");
    QTest::newRow("below the first") << -1;
    QTest::newRow("above the last") << 8;
    QTest::newRow("lowest number") << typed::IntMin;
    QTest::newRow("highest number") << typed::IntMax;
}

void TestNumericOperators::applyOfUnknownOperation()
{
    QFETCH(int, op);
    QVariant left = 12;
    bool isConstant = true;
    QVERIFY(!NumericOperator::apply(left, isConstant, static_cast<NumOp>(op), 10, false));
    QCOMPARE(left, QVariant(12));
    QVERIFY(isConstant);
}

void TestNumericOperators::applyJoinsConstness_data()
{
    QTest::addColumn<bool>("left");
    QTest::addColumn<bool>("right");
    QTest::addColumn<bool>("joined");
    QTest::newRow("both constant") << true << true << true;
    QTest::newRow("left constant") << true << false << false;
    QTest::newRow("right constant") << false << true << false;
    QTest::newRow("none constant") << false << false << false;
}

void TestNumericOperators::applyJoinsConstness()
{
    QFETCH(bool, left);
    QFETCH(bool, right);
    for (QVariant const& divisor : {QVariant(5), QVariant(0)}) {
        QVariant value = 10;
        bool isConstant = left;
        NumericOperator::apply(value, isConstant, NumericOperator::Divide, divisor, right);
        QTEST(isConstant, "joined");
    }
}

void TestNumericOperators::value_data()
{
    QTest::addColumn<int>("op");
    QTest::addColumn<QVariantList>("operands");
    QTest::addColumn<QVariant>("result");

    QDate const date(2020, 1, 1);
    QTest::newRow("no operands") << 0 << QVariantList{} << QVariant();
    QTest::newRow("a single operand is the value") << 1 << QVariantList{5} << QVariant(5);
    QTest::newRow("a single text is the value") << 4 << QVariantList{"abc"} << QVariant("abc");
    QTest::newRow("a single invalid value") << 0 << QVariantList{QVariant()} << QVariant();
    QTest::newRow("sum of four") << 0 << QVariantList{1, 2, 3, 4} << QVariant(10);
    QTest::newRow("differences from left to right") << 1 << QVariantList{10, 4, 3} << QVariant(3);
    QTest::newRow("product of three") << 2 << QVariantList{2, 3, 7} << QVariant(42);
    QTest::newRow("quotients from left to right") << 3 << QVariantList{100, 7, 2} << QVariant(7);
    QTest::newRow("quotient truncates toward zero") << 3 << QVariantList{-7, 2} << QVariant(-3);
    QTest::newRow("remainder has the dividend's sign") << 4 << QVariantList{-7, 3} << QVariant(-1);
    QTest::newRow("remainders from left to right") << 4 << QVariantList{100, 30, 7} << QVariant(3);
    QTest::newRow("bit and of three") << 5 << QVariantList{15, 14, 7} << QVariant(6);
    QTest::newRow("bit or of three") << 6 << QVariantList{1, 2, 8} << QVariant(11);
    QTest::newRow("bit xor of three") << 7 << QVariantList{1, 3, 7} << QVariant(5);
    QTest::newRow("integer and double") << 0 << QVariantList{1, 0.5} << QVariant(1.5);
    QTest::newRow("overflow wraps") << 0 << QVariantList{typed::IntMax, 1} << QVariant(typed::IntMin);
    QTest::newRow("lowest integer by -1 wraps") << 3 << QVariantList{typed::IntMin, -1} << QVariant(typed::IntMin);
    QTest::newRow("lowest integer modulo -1") << 4 << QVariantList{typed::IntMin, -1} << QVariant(0);
    QTest::newRow("texts are concatenated") << 0 << QVariantList{"abc", 5, "d"} << QVariant("abc5d");
    QTest::newRow("numbers before a text are summed") << 0 << QVariantList{1, 2, "c"} << QVariant("3c");
    QTest::newRow("a day in milliseconds") << 0 << QVariantList{date, 86400000} << QVariant(QDate(2020, 1, 2));
    QTest::newRow("number plus date") << 0 << QVariantList{86400000, date} << QVariant(QDate(2020, 1, 2));
    QTest::newRow("number minus date") << 1 << QVariantList{5, date} << QVariant();
    QTest::newRow("text minus text") << 1 << QVariantList{"b", "a"} << QVariant();
    QTest::newRow("division by zero") << 3 << QVariantList{7, 0} << QVariant();
    QTest::newRow("division by 0.0") << 3 << QVariantList{7.0, 0.0} << QVariant();
    QTest::newRow("division by zero, then on") << 3 << QVariantList{7, 0, 2} << QVariant();
    QTest::newRow("remainder of doubles") << 4 << QVariantList{7.0, 2.0} << QVariant();
    QTest::newRow("bits of a double") << 5 << QVariantList{1.5, 2} << QVariant();
    QTest::newRow("invalid first") << 0 << QVariantList{QVariant(), 1} << QVariant();
    QTest::newRow("invalid last") << 0 << QVariantList{1, QVariant()} << QVariant();
}

void TestNumericOperators::value()
{
    QFETCH(int, op);
    QFETCH(QVariantList, operands);
    QFETCH(QVariant, result);

    NumericOperator node(static_cast<NumOp>(op));
    for (QVariant const& operand : qAsConst(operands))
        node.append(constant(operand));
    QCOMPARE(typed::describe(node.evaluate({}, nullptr)), typed::describe(result));
}

void TestNumericOperators::commonTypeOfEachStep_data()
{
    QTest::addColumn<Operands>("operands");
    QTest::addColumn<QVariant>("result");

    QVariant const five = 5;
    QVariant const seven = Q_UINT64_C(7);
    QTest::newRow("constants") << Operands{constant(five), constant(seven)} << QVariant(12);
    QTest::newRow("left constant") << Operands{constant(five), variable(seven)} << QVariant(Q_UINT64_C(12));
    QTest::newRow("left constant does not fit")
        << Operands{constant(-5), variable(seven)} << QVariant(QStringLiteral("-57"));
    QTest::newRow("right constant") << Operands{variable(five), constant(seven)} << QVariant(12);
    QTest::newRow("no constant: no common type")
        << Operands{variable(five), variable(seven)} << QVariant(QStringLiteral("57"));
    QTest::newRow("constant as long as every operand is")
        << Operands{constant(2), constant(3), variable(seven)} << QVariant(Q_UINT64_C(12));
    QTest::newRow("not constant since the second operand")
        << Operands{constant(2), variable(3), variable(seven)} << QVariant(QStringLiteral("57"));
    QTest::newRow("not constant since the first operand")
        << Operands{variable(2), constant(3), variable(seven)} << QVariant(QStringLiteral("57"));
    QTest::newRow("double since the second operand")
        << Operands{constant(2), constant(0.5), variable(seven)} << QVariant(9.5);
}

void TestNumericOperators::commonTypeOfEachStep()
{
    QFETCH(Operands, operands);
    QFETCH(QVariant, result);
    QVariant const value = chain(NumericOperator::Add, operands).evaluate({}, nullptr);
    QCOMPARE(typed::describe(value), typed::describe(result));
}

void TestNumericOperators::failedStepEndsTheEvaluation()
{
    Counts counts;
    NumericOperator const node = chain(NumericOperator::Divide, {constant(7), constant(0), counted(counts, 2)});
    QVERIFY(!node.evaluate({}, nullptr).isValid());
    QCOMPARE(counts.evaluations, 0);
}

void TestNumericOperators::failedBitOperationIsCarriedOn()
{
    Counts counts;
    NumericOperator const node = chain(NumericOperator::BitOr, {constant(1.5), constant(2), counted(counts, 4)});
    QVERIFY(!node.evaluate({}, nullptr).isValid());
    QCOMPARE(counts.evaluations, 1);
}

void TestNumericOperators::reportsConstnessOfFirstOperand_data()
{
    QTest::addColumn<Operands>("operands");
    QTest::addColumn<bool>("isConstant");
    QTest::newRow("no operands") << Operands{} << true;
    QTest::newRow("all constant") << Operands{constant(1), constant(2)} << true;
    QTest::newRow("first constant") << Operands{constant(1), variable(2)} << true;
    QTest::newRow("second constant") << Operands{variable(1), constant(2)} << false;
    QTest::newRow("none constant") << Operands{variable(1), variable(2)} << false;
    QTest::newRow("a missing property") << Operands{nodes::value("missing"), constant(2)} << false;
    QTest::newRow("one constant") << Operands{constant(1)} << true;
    QTest::newRow("one variable") << Operands{variable(1)} << false;
}

void TestNumericOperators::reportsConstnessOfFirstOperand()
{
    QFETCH(Operands, operands);
    QFETCH(bool, isConstant);
    bool reported = !isConstant;
    chain(NumericOperator::Add, operands).evaluate({}, &reported);
    QCOMPARE(reported, isConstant);
}

void TestNumericOperators::referencesAreLookedUp()
{
    PropertySet set;
    add<IntProperty>(set, "width", 6);
    add<IntProperty>(set, "height", 7);
    NumericOperator const area(nodes::value("width"), NumericOperator::Multiply, nodes::value("height"));
    QCOMPARE(area.evaluate(set, nullptr), QVariant(42));
}

void TestNumericOperators::deepTree()
{
    ExpressionHandle const tree = nested(Expression::MaxDepth - 1);
    QCOMPARE(tree.evaluate({}), QVariant(999));
    QCOMPARE(tree.toString(Bound).size(), 1 + 4 * 999 - 2);
    QCOMPARE(tree.collectPlaceholders(), (QVariantList{0}));
}

void TestNumericOperators::tooDeepTree()
{
    ExpressionHandle const tree = nested(1000000);
    QVERIFY(!tree.evaluate({}).isValid());
    QCOMPARE(tree.toString(Bound), QString());
    QVERIFY(tree.collectPlaceholders().isEmpty());
}

QTEST_APPLESS_MAIN(TestNumericOperators)
#include "tst_NumericOperators.moc"
