// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "CountingNode.h"
#include "Nodes.h"
#include "TypedVariant.h"

#include <QRect>
#include <QTest>

using namespace qvgen;
using namespace nodes;

namespace {

ElementOf elementOf(ExpressionHandle const& value, std::initializer_list<ExpressionHandle> candidates)
{
    ElementOf node(value);
    for (ExpressionHandle const& candidate : candidates)
        node.append(candidate);
    return node;
}

PropertySet someProperties()
{
    PropertySet set;
    add<IntProperty>(set, "camera", 2);
    add<VariantProperty>(set, "highest signed", QVariant(typed::LongMax));
    add<U64Property>(set, "one more", 1ULL << 63);
    return set;
}

} // namespace

class TestElementOf : public QObject {
    Q_OBJECT

private slots:
    void ofAProperty();
    void printed_data();
    void printed();
    void values_data();
    void values();
    void constness_data();
    void constness();
    void laterCandidatesAreNotEvaluated();
    void valueIsEvaluatedOnce();
    void appended_data();
    void appended();
    void appendedOwnOperands();
    void manyCandidates();
    void withoutOperands();
    void equality_data();
    void equality();
    void placeholders();
};

void TestElementOf::ofAProperty()
{
    ElementOf node(IntProperty(QStringLiteral("prop"), QString(), 0));
    QCOMPARE(node.toString(Sql), QStringLiteral("prop IN ()"));
    QCOMPARE(node.evaluate({}, nullptr), QVariant(false));
    for (int candidate : {1, 2, 3})
        node.append(QVariant(candidate));
    for (auto const style : {Sql, Code, Plain})
        QCOMPARE(node.toString(style), QStringLiteral("prop IN (1,2,3)"));
    QCOMPARE(node.toString(Bound), QStringLiteral("prop IN (?,?,?)"));
}

void TestElementOf::printed_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<Expression::PrintStyle>("style");
    QTest::addColumn<QString>("text");
    ExpressionHandle const both = BooleanOperator(value("a"), BooleanOperator::And, value("b"));
    ExpressionHandle const pair = ExpressionList(constant(1), constant(2));
    auto const row = [](char const* name, ElementOf const& tree, Expression::PrintStyle style, char const* text) {
        QTest::newRow(name) << ExpressionHandle(tree) << style << QString::fromLatin1(text);
    };
    row("value is nested", elementOf(both, {constant(1)}), Sql, "(a AND b) IN (1)");
    row("value is nested in code", elementOf(both, {constant(1)}), Code, "(a && b) IN (1)");
    row("candidates are not nested", elementOf(value("c"), {both, both}), Sql, "c IN (a AND b,a AND b)");
    row("candidates are not nested when it is", elementOf(value("c"), {both}), Code | Nested, "c IN (a && b)");
    row("texts in SQL", elementOf(value("c"), {constant(QStringLiteral("it's"))}), Sql, "c IN ('it''s')");
    row("texts in code", elementOf(value("c"), {constant(QStringLiteral("it's"))}), Code, "c IN (\"it's\")");
    row("list as one candidate", elementOf(value("c"), {pair, constant(3)}), Sql, "c IN (1,2,3)");
    row("fixed and placeholder candidates", elementOf(value("c"), {constant(1), placeholder(2)}), Bound, "c IN (1,?)");
    row("nothing among nothing", elementOf({}, {{}}), Sql, " IN ()");
}

void TestElementOf::printed()
{
    QFETCH(ExpressionHandle, tree);
    QFETCH(Expression::PrintStyle, style);
    QTEST(tree.toString(style), "text");
}

void TestElementOf::values_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<bool>("found");
    ExpressionHandle const pair = ExpressionList(constant(1), constant(2));
    auto const row = [](char const* name, ElementOf const& tree, bool found) {
        QTest::newRow(name) << ExpressionHandle(tree) << found;
    };
    row("no candidates", elementOf(value("camera"), {}), false);
    row("first", elementOf(value("camera"), {constant(2), constant(3)}), true);
    row("last", elementOf(value("camera"), {constant(1), constant(3), constant(2)}), true);
    row("none", elementOf(value("camera"), {constant(1), constant(3)}), false);
    row("as text", elementOf(value("camera"), {constant(QStringLiteral("2"))}), true);
    row("double less than 1 away", elementOf(constant(2.0), {constant(2.9)}), true);
    row("among references", elementOf(constant(2), {value("missing"), value("camera")}), true);
    row("incomparable candidates count as not equal", elementOf(value("camera"), {value("missing"), pair}), false);
    row("behind incomparable candidates", elementOf(value("camera"), {value("missing"), pair, constant(2)}), true);
    row("missing property", elementOf(value("missing"), {constant(2), constant(QString())}), false);
    row("missing property among missing ones", elementOf(value("missing"), {value("gone")}), false);
    // As doubles the two are the same. A constant meets the type of the other; what is no constant keeps its own.
    row("constant candidate changes its type", elementOf(value("one more"), {constant(typed::LongMax)}), true);
    row("constant value changes its type", elementOf(constant(typed::LongMax), {value("one more")}), true);
    row("references keep their types", elementOf(value("highest signed"), {value("one more")}), false);
    row("list as one candidate", elementOf(value("camera"), {pair}), false);
    row("list among lists", elementOf(pair, {constant(1), pair}), true);
    row("rectangles equal by conversion", elementOf(constant(QRect(1, 2, 3, 4)), {constant(QRect(5, 6, 7, 8))}), true);
}

void TestElementOf::values()
{
    QFETCH(ExpressionHandle, tree);
    QFETCH(bool, found);
    QCOMPARE(typed::describe(tree.evaluate(someProperties())), typed::describe(found));
}

void TestElementOf::constness_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<bool>("isConstant");
    auto const row = [](char const* name, ElementOf const& tree, bool isConstant) {
        QTest::newRow(name) << ExpressionHandle(tree) << isConstant;
    };
    row("constants", elementOf(constant(1), {constant(2), placeholder(3)}), true);
    row("constant without candidates", elementOf(constant(1), {}), true);
    row("reference without candidates", elementOf(value("camera"), {}), false);
    row("reference among constants", elementOf(value("camera"), {constant(2)}), false);
    row("reference before the match", elementOf(constant(1), {value("camera"), constant(1)}), false);
    row("reference that matches", elementOf(constant(2), {value("camera"), constant(1)}), false);
    row("reference behind the match", elementOf(constant(1), {constant(1), value("camera")}), true);
    row("missing property as candidate", elementOf(constant(1), {value("missing")}), false);
}

void TestElementOf::constness()
{
    QFETCH(ExpressionHandle, tree);
    QFETCH(bool, isConstant);
    bool reported = !isConstant;
    tree.evaluate(someProperties(), &reported);
    QCOMPARE(reported, isConstant);
}

void TestElementOf::laterCandidatesAreNotEvaluated()
{
    Counts first;
    Counts second;
    Counts third;
    ElementOf const node = elementOf(constant(2), {counted(first, 1), counted(second, 2), counted(third, 3, false)});
    bool isConstant = false;
    QCOMPARE(node.evaluate({}, &isConstant), QVariant(true));
    QVERIFY(isConstant);
    QCOMPARE(first.evaluations, 1);
    QCOMPARE(second.evaluations, 1);
    QCOMPARE(third.evaluations, 0);
}

void TestElementOf::valueIsEvaluatedOnce()
{
    Counts counts;
    ElementOf const node = elementOf(counted(counts, 5), {constant(1), constant(2), constant(3)});
    QCOMPARE(node.evaluate({}, nullptr), QVariant(false));
    QCOMPARE(counts.evaluations, 1);
}

void TestElementOf::appended_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<int>("operands");
    QTest::addColumn<QList<QVariant>>("placeholders");
    ExpressionList const pair(constant(1), placeholder(2));
    auto const row = [](char const* name, ElementOf const& tree, int operands, QList<QVariant> const& placeholders) {
        QTest::newRow(name) << ExpressionHandle(tree) << operands << placeholders;
    };
    auto const with = [](auto const& candidate) {
        ElementOf node(value("camera"));
        node.append(candidate);
        return node;
    };
    row("variant", with(QVariant(5)), 2, {5});
    row("plain number", with(5), 2, {5});
    row("text", with(QStringLiteral("a")), 2, {QStringLiteral("a")});
    row("variant of a list is one candidate", with(QVariant(QVariantList{1, 2})), 2, {QVariant(QVariantList{1, 2})});
    row("node", with(constant(5)), 2, {});
    row("handle", with(ExpressionHandle(placeholder(5))), 2, {5});
    row("elements of a list", with(pair), 3, {2});
    row("empty list", with(ExpressionList()), 1, {});
    row("handle of a list is one candidate", with(ExpressionHandle(pair)), 2, {2});
    row("list of values", with(ExpressionList(QList<QVariant>{7, 8, 9})), 4, {7, 8, 9});
}

void TestElementOf::appended()
{
    QFETCH(ExpressionHandle, tree);
    QTEST(operandCount(tree), "operands");
    QTEST(tree.collectPlaceholders(), "placeholders");
}

void TestElementOf::appendedOwnOperands()
{
    ElementOf node = elementOf(value("camera"), {constant(1)});
    node.append(node.operands().at(1));
    node.append(ExpressionHandle(node));
    QCOMPARE(node.toString(Sql), QStringLiteral("camera IN (1,1,camera IN (1,1))"));
}

void TestElementOf::manyCandidates()
{
    ElementOf node(value("camera"));
    for (int i = 100000; i > 0; --i)
        node.append(QVariant(i));
    QCOMPARE(node.evaluate(someProperties(), nullptr), QVariant(true));
    QCOMPARE(node.toString(Bound).count(QLatin1Char('?')), 100000);
    QCOMPARE(node.collectPlaceholders().size(), 100000);
    QCOMPARE(node.depth(), 2);
}

void TestElementOf::withoutOperands()
{
    ElementOf const node;
    QVERIFY(node.isEmpty());
    QCOMPARE(node.evaluate({}, nullptr), QVariant());
    QCOMPARE(node.collectPlaceholders(), QList<QVariant>());
}

void TestElementOf::equality_data()
{
    QTest::addColumn<ExpressionHandle>("other");
    QTest::addColumn<bool>("equal");
    auto const row
        = [](char const* name, ExpressionHandle const& other, bool equal) { QTest::newRow(name) << other << equal; };
    row("same", elementOf(value("a"), {constant(1), constant(2)}), true);
    row("another order", elementOf(value("a"), {constant(2), constant(1)}), false);
    row("fewer candidates", elementOf(value("a"), {constant(1)}), false);
    row("another value", elementOf(value("b"), {constant(1), constant(2)}), false);
    row("list of the same operands", ExpressionList(ExpressionList(value("a"), constant(1)), constant(2)), false);
    row("switch", SwitchCase(value("a")), false);
}

void TestElementOf::equality()
{
    QFETCH(ExpressionHandle, other);
    ExpressionHandle const node = elementOf(value("a"), {constant(1), constant(2)});
    QTEST(node.equals(other), "equal");
    QTEST(other.equals(node), "equal");
}

void TestElementOf::placeholders()
{
    ElementOf const node = elementOf(placeholder(3), {placeholder(1), constant(9), placeholder(2)});
    QCOMPARE(node.collectPlaceholders(), QList<QVariant>({3, 1, 2}));
    QCOMPARE(node.toString(Bound), QStringLiteral("? IN (?,9,?)"));
}

QTEST_APPLESS_MAIN(TestElementOf)
#include "tst_ElementOf.moc"
