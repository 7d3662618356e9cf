// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "CountingNode.h"
#include "Nodes.h"
#include "TypedVariant.h"

#include <QDate>
#include <QTest>

using namespace qvgen;
using namespace nodes;

Q_DECLARE_METATYPE(BooleanOperator::BoolOp)

namespace {

constexpr auto And = BooleanOperator::And;
constexpr auto Or = BooleanOperator::Or;

BooleanOperator junction(BooleanOperator::BoolOp op, std::initializer_list<ExpressionHandle> operands)
{
    BooleanOperator node(op);
    for (ExpressionHandle const& operand : operands)
        node.append(operand);
    return node;
}

PropertySet someProperties()
{
    PropertySet set;
    add<BoolProperty>(set, "yes", true);
    add<BoolProperty>(set, "no", false);
    return set;
}

} // namespace

class TestBooleanOperators : public QObject {
    Q_OBJECT

private slots:
    void operatorTable_data();
    void operatorTable();
    void values_data();
    void values();
    void truthOfAnOperand_data();
    void truthOfAnOperand();
    void constness_data();
    void constness();
    void decidingOperandEndsTheEvaluation_data();
    void decidingOperandEndsTheEvaluation();
    void unknownOperator();
    void printed_data();
    void printed();
    void equality_data();
    void equality();
    void placeholdersAndEmptiness();

    void negation_data();
    void negation();
    void negationPassesConstness_data();
    void negationPassesConstness();
    void printedNegation_data();
    void printedNegation();
    void negationEvaluatesOnce();
};

void TestBooleanOperators::operatorTable_data()
{
    QTest::addColumn<BooleanOperator::BoolOp>("op");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QString>("code");
    QTest::addColumn<bool>("valueWithoutOperands");
    QTest::newRow("AND") << And << 0 << "a AND b AND c"
                         << "a && b && c" << true;
    QTest::newRow("OR") << Or << 1 << "a OR b OR c"
                        << "a || b || c" << false;
}

void TestBooleanOperators::operatorTable()
{
    QFETCH(BooleanOperator::BoolOp, op);
    BooleanOperator const node = junction(op, {value("a"), value("b"), value("c")});
    QTEST(static_cast<int>(node.op()), "number");
    QTEST(node.toString(Sql), "sql");
    QTEST(node.toString(Plain), "sql");
    QTEST(node.toString(Code), "code");
    QFETCH(bool, valueWithoutOperands);
    QCOMPARE(BooleanOperator(op).evaluate({}, nullptr), QVariant(valueWithoutOperands));
}

void TestBooleanOperators::values_data()
{
    QTest::addColumn<QList<ExpressionHandle>>("operands");
    QTest::addColumn<QVariant>("conjunction");
    QTest::addColumn<QVariant>("disjunction");
    ExpressionHandle const yes = constant(true);
    ExpressionHandle const no = constant(false);
    ExpressionHandle const unknown = value("missing");
    using Operands = QList<ExpressionHandle>;
    auto const row
        = [](char const* name, Operands const& operands, QVariant const& conjunction, QVariant const& disjunction) {
              QTest::newRow(name) << operands << conjunction << disjunction;
          };
    row("nothing", {}, true, false);
    row("true", {yes}, true, true);
    row("false", {no}, false, false);
    row("true, true", {yes, yes}, true, true);
    row("true, false", {yes, no}, false, true);
    row("false, true", {no, yes}, false, true);
    row("false, false", {no, no}, false, false);
    row("false at the end of many", {yes, yes, yes, yes, no}, false, true);
    row("true at the end of many", {no, no, no, no, yes}, false, true);
    row("properties", {value("yes"), value("no")}, false, true);
    row("unknown", {unknown}, QVariant(), false);
    row("only unknown", {unknown, unknown}, QVariant(), false);
    row("true, unknown", {yes, unknown}, QVariant(), true);
    row("unknown, true", {unknown, yes}, QVariant(), true);
    row("true, unknown, false", {yes, unknown, no}, QVariant(), true);
    row("false, unknown", {no, unknown}, false, false);
    row("unknown, false", {unknown, no}, QVariant(), false);
    row("default handle is unknown", {yes, ExpressionHandle()}, QVariant(), true);
}

void TestBooleanOperators::values()
{
    QFETCH(QList<ExpressionHandle>, operands);
    BooleanOperator all(And);
    BooleanOperator any(Or);
    for (ExpressionHandle const& operand : qAsConst(operands)) {
        all.append(operand);
        any.append(operand);
    }
    QFETCH(QVariant, conjunction);
    QFETCH(QVariant, disjunction);
    QCOMPARE(typed::describe(all.evaluate(someProperties(), nullptr)), typed::describe(conjunction));
    QCOMPARE(typed::describe(any.evaluate(someProperties(), nullptr)), typed::describe(disjunction));
}

void TestBooleanOperators::truthOfAnOperand_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVariant>("truth");
    auto const row
        = [](char const* name, QVariant const& value, QVariant const& truth) { QTest::newRow(name) << value << truth; };
    row("true", true, true);
    row("false", false, false);
    row("zero", 0, false);
    row("number", -2, true);
    row("64-bit number", 1ULL << 40, true);
    row("fraction", 0.5, true);
    row("text true", QStringLiteral("true"), true);
    row("text false", QStringLiteral("FALSE"), false);
    row("text zero", QStringLiteral("0"), false);
    row("any other text", QStringLiteral("abc"), true);
    row("empty text", QString(), false);
    row("date", QDate(2020, 1, 1), QVariant());
    row("list", QVariantList{true}, QVariant());
    row("invalid", QVariant(), QVariant());
}

void TestBooleanOperators::truthOfAnOperand()
{
    QFETCH(QVariant, value);
    QFETCH(QVariant, truth);
    QVariant const negated = truth.isValid() ? QVariant(!truth.toBool()) : QVariant();
    QCOMPARE(junction(And, {constant(value)}).evaluate({}, nullptr), truth);
    QCOMPARE(junction(Or, {constant(value)}).evaluate({}, nullptr), QVariant(truth.toBool()));
    QCOMPARE(NotOperator(constant(value)).evaluate({}, nullptr), negated);
}

void TestBooleanOperators::constness_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<bool>("isConstant");
    auto const row = [](char const* name, BooleanOperator const& tree, bool isConstant) {
        QTest::newRow(name) << ExpressionHandle(tree) << isConstant;
    };
    ExpressionHandle const yes = constant(true);
    ExpressionHandle const no = constant(false);
    row("no operands", BooleanOperator(And), true);
    row("constants", junction(And, {yes, yes}), true);
    row("reference", junction(And, {yes, value("yes")}), false);
    row("reference that decides", junction(And, {yes, value("no")}), false);
    row("reference behind the decision of an AND", junction(And, {no, value("yes")}), true);
    row("reference behind the decision of an OR", junction(Or, {yes, value("yes")}), true);
    row("reference before the decision", junction(Or, {value("no"), yes}), false);
    row("unknown that poisons", junction(And, {value("missing"), yes}), false);
    row("reference behind the unknown", junction(And, {constant(QVariant()), value("yes")}), true);
    row("unknown that is passed over", junction(Or, {value("missing"), yes}), false);
    row("unknown constant that is passed over", junction(Or, {constant(QVariant()), yes}), true);
}

void TestBooleanOperators::constness()
{
    QFETCH(ExpressionHandle, tree);
    QFETCH(bool, isConstant);
    bool reported = !isConstant;
    tree.evaluate(someProperties(), &reported);
    QCOMPARE(reported, isConstant);
}

void TestBooleanOperators::decidingOperandEndsTheEvaluation_data()
{
    QTest::addColumn<BooleanOperator::BoolOp>("op");
    QTest::addColumn<QVariant>("first");
    QTest::addColumn<QVariant>("second");
    QTest::addColumn<int>("evaluated");
    QVariant const unknown;
    auto const row = [](char const* name, BooleanOperator::BoolOp op, QVariant const& first, QVariant const& second,
                         int evaluated) { QTest::newRow(name) << op << first << second << evaluated; };
    row("AND, first is false", And, false, true, 1);
    row("AND, second is false", And, true, false, 2);
    row("AND, none is false", And, true, true, 3);
    row("AND, first is unknown", And, unknown, true, 1);
    row("AND, second is unknown", And, true, unknown, 2);
    row("OR, first is true", Or, true, false, 1);
    row("OR, second is true", Or, false, true, 2);
    row("OR, none is true", Or, false, false, 3);
    row("OR, unknown decides nothing", Or, unknown, unknown, 3);
}

void TestBooleanOperators::decidingOperandEndsTheEvaluation()
{
    QFETCH(BooleanOperator::BoolOp, op);
    QFETCH(QVariant, first);
    QFETCH(QVariant, second);
    Counts counts;
    BooleanOperator const node
        = junction(op, {counted(counts, first), counted(counts, second), counted(counts, op == And)});
    node.evaluate({}, nullptr);
    QTEST(counts.evaluations, "evaluated");
}

void TestBooleanOperators::unknownOperator()
{
    for (int const number : {2, -1, INT_MAX, INT_MIN}) {
        auto const node = junction(static_cast<BooleanOperator::BoolOp>(number), {constant(true), constant(false)});
        QCOMPARE(node.evaluate({}, nullptr), QVariant());
        QVERIFY(!node.equals(ExpressionHandle(junction(And, {constant(true), constant(false)})).constData()));
    }
}

void TestBooleanOperators::printed_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QString>("code");
    auto const row = [](char const* name, BooleanOperator const& tree, char const* sql, char const* code) {
        QTest::newRow(name) << ExpressionHandle(tree) << QString::fromLatin1(sql) << QString::fromLatin1(code);
    };
    ExpressionHandle const a = value("a");
    ExpressionHandle const b = value("b");
    ExpressionHandle const c = value("c");
    row("no operands", BooleanOperator(And), "", "");
    row("one operand", junction(And, {a}), "a", "a");
    row("two operands", junction(Or, {a, b}), "a OR b", "a || b");
    row("OR inside AND", junction(And, {a, junction(Or, {b, c})}), "a AND (b OR c)", "a && (b || c)");
    row("AND inside OR", junction(Or, {junction(And, {a, b}), c}), "(a AND b) OR c", "(a && b) || c");
    row("AND inside AND", junction(And, {junction(And, {a, b}), c}), "(a AND b) AND c", "(a && b) && c");
    row("one operand inside AND", junction(And, {a, junction(Or, {b})}), "a AND b", "a && b");
    row("two operands inside one inside AND", junction(And, {a, junction(Or, {junction(Or, {b, c})})}),
        "a AND (b OR c)", "a && (b || c)");
    row("no operands inside AND", junction(And, {a, BooleanOperator(Or)}), "a AND ", "a && ");
    row("comparators", junction(And, {Comparator(a, Comparator::Equal, b), Comparator(b, Comparator::Less, c)}),
        "a = b AND b < c", "a == b && b < c");
    row("negation inside AND", junction(And, {a, NotOperator(b)}), "a AND  NOT b", "a &&  ! b");
}

void TestBooleanOperators::printed()
{
    QFETCH(ExpressionHandle, tree);
    QTEST(tree.toString(Sql), "sql");
    QTEST(tree.toString(Plain), "sql");
    QTEST(tree.toString(Code), "code");
}

void TestBooleanOperators::equality_data()
{
    QTest::addColumn<ExpressionHandle>("a");
    QTest::addColumn<ExpressionHandle>("b");
    QTest::addColumn<bool>("equal");
    ExpressionHandle const a = value("a");
    ExpressionHandle const b = value("b");
    auto const row = [](char const* name, ExpressionHandle const& left, ExpressionHandle const& right, bool equal) {
        QTest::newRow(name) << left << right << equal;
    };
    row("same", junction(And, {a, b}), junction(And, {value("a"), value("b")}), true);
    row("another order", junction(And, {a, b}), junction(And, {b, a}), false);
    row("another operator", junction(And, {a, b}), junction(Or, {a, b}), false);
    row("another number of operands", junction(And, {a, b}), junction(And, {a, b, b}), false);
    row("another nesting", junction(And, {junction(And, {a, b}), a}), junction(And, {a, junction(And, {b, a})}), false);
    row("without operands", BooleanOperator(And), BooleanOperator(And), true);
    row("without operands, another operator", BooleanOperator(And), BooleanOperator(Or), false);
    row("no operands and empty list", BooleanOperator(And), ExpressionHandle(), false);
    row("single operand and itself", junction(And, {a}), a, false);
    row("negations", NotOperator(a), NotOperator(value("a")), true);
    row("negations of others", NotOperator(a), NotOperator(b), false);
    row("negation and junction", NotOperator(a), junction(And, {a}), false);
    row("negation and list", NotOperator(a), ExpressionList(a), false);
    row("double negation", !(!a), a, false);
}

void TestBooleanOperators::equality()
{
    QFETCH(ExpressionHandle, a);
    QFETCH(ExpressionHandle, b);
    QTEST(a.equals(b), "equal");
    QTEST(b.equals(a), "equal");
}

void TestBooleanOperators::placeholdersAndEmptiness()
{
    BooleanOperator const node
        = junction(Or, {placeholder(3), NotOperator(placeholder(1)), constant(9), junction(And, {placeholder(2)})});
    QCOMPARE(node.collectPlaceholders(), QList<QVariant>({3, 1, 2}));
    QCOMPARE(node.toString(Bound), QStringLiteral("? OR  NOT ? OR 9 OR ?"));
    QVERIFY(!node.isEmpty());
    QVERIFY(BooleanOperator(Or).isEmpty());
    QVERIFY(!NotOperator(ExpressionHandle()).isEmpty());
}

void TestBooleanOperators::negation_data()
{
    QTest::addColumn<ExpressionHandle>("operand");
    QTest::addColumn<QVariant>("negated");
    QTest::newRow("true property") << ExpressionHandle(value("yes")) << QVariant(false);
    QTest::newRow("false property") << ExpressionHandle(value("no")) << QVariant(true);
    QTest::newRow("missing property") << ExpressionHandle(value("missing")) << QVariant();
    QTest::newRow("negation") << ExpressionHandle(NotOperator(value("yes"))) << QVariant(true);
    QTest::newRow("negation of the unknown") << ExpressionHandle(NotOperator(value("missing"))) << QVariant();
    QTest::newRow("empty conjunction") << ExpressionHandle(BooleanOperator(And)) << QVariant(false);
    QTest::newRow("nothing") << ExpressionHandle() << QVariant();
}

void TestBooleanOperators::negation()
{
    QFETCH(ExpressionHandle, operand);
    QFETCH(QVariant, negated);
    QCOMPARE(typed::describe((!operand).evaluate(someProperties(), nullptr)), typed::describe(negated));
}

void TestBooleanOperators::negationPassesConstness_data()
{
    QTest::addColumn<ExpressionHandle>("operand");
    QTest::addColumn<bool>("isConstant");
    QTest::newRow("constant") << ExpressionHandle(constant(true)) << true;
    QTest::newRow("unknown constant") << ExpressionHandle(constant(QVariant())) << true;
    QTest::newRow("reference") << ExpressionHandle(value("yes")) << false;
    QTest::newRow("missing property") << ExpressionHandle(value("missing")) << false;
}

void TestBooleanOperators::negationPassesConstness()
{
    QFETCH(ExpressionHandle, operand);
    QFETCH(bool, isConstant);
    bool reported = !isConstant;
    NotOperator(operand).evaluate(someProperties(), &reported);
    QCOMPARE(reported, isConstant);
}

void TestBooleanOperators::printedNegation_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QString>("code");
    auto const row = [](char const* name, ExpressionHandle const& tree, char const* sql, char const* code) {
        QTest::newRow(name) << tree << QString::fromLatin1(sql) << QString::fromLatin1(code);
    };
    Comparator const equal(value("a"), Comparator::Equal, value("b"));
    row("blanks on both sides", NotOperator(equal), " NOT a = b", " ! a == b");
    row("twice", !ExpressionHandle(NotOperator(equal)), " NOT  NOT a = b", " !  ! a == b");
    row("of a junction", NotOperator(junction(And, {value("a"), value("b")})), " NOT (a AND b)", " ! (a && b)");
    row("of a junction of one", NotOperator(junction(And, {value("a")})), " NOT a", " ! a");
    row("inside a comparator", Comparator(NotOperator(value("a")), Comparator::Equal, value("b")), " NOT a = b",
        " ! a == b");
    row("of nothing", NotOperator(ExpressionHandle()), " NOT ", " ! ");
}

void TestBooleanOperators::printedNegation()
{
    QFETCH(ExpressionHandle, tree);
    QTEST(tree.toString(Sql), "sql");
    QTEST(tree.toString(Plain), "sql");
    QTEST(tree.toString(Code), "code");
}

void TestBooleanOperators::negationEvaluatesOnce()
{
    Counts counts;
    QCOMPARE(NotOperator(counted(counts, false)).evaluate({}, nullptr), QVariant(true));
    QCOMPARE(counts.evaluations, 1);
}

QTEST_APPLESS_MAIN(TestBooleanOperators)
#include "tst_BooleanOperators.moc"
