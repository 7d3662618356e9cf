// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "CountingNode.h"
#include "Nodes.h"

#include <QTest>

#include <limits>

using namespace qvgen;
using namespace nodes;

namespace {

ConstExpression text(char const* characters)
{
    return constant(QString::fromLatin1(characters));
}

PropertySet someProperties()
{
    PropertySet set;
    add<IntProperty>(set, "camera", 2);
    add<VariantProperty>(set, "highest signed", QVariant(std::numeric_limits<qlonglong>::max()));
    add<U64Property>(set, "one more", 1ULL << 63);
    return set;
}

} // namespace

class TestSwitchCase : public QObject {
    Q_OBJECT

private slots:
    void printed_data();
    void printed();
    void printedPlaceholders();
    void values_data();
    void values();
    void alwaysConstant_data();
    void alwaysConstant();
    void laterPairsAreNotEvaluated();
    void defaultIsEvaluatedWithoutMatchOnly();
    void callsChainOnTheSameObject();
    void operandOrder();
    void lastDefaultStays();
    void propertyIsASelector();
    void equality_data();
    void equality();
    void placeholdersInTheOrderOfOperands();
};

void TestSwitchCase::printed_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QString>("code");
    auto const row = [](char const* name, SwitchCase const& tree, char const* sql, char const* code) {
        QTest::newRow(name) << ExpressionHandle(tree) << QString::fromLatin1(sql) << QString::fromLatin1(code);
    };
    auto const selected = [] { return SwitchCase(value("sel")); };
    auto const searched = [] { return SwitchCase(ExpressionHandle()); };
    ExpressionHandle const both = BooleanOperator(value("a"), BooleanOperator::Or, value("b"));
    row("no pairs, no default", selected(), "CASE sel END", "switch(sel)\n{\n\n}\n");
    row("default only", selected().defaultCase(constant(0)), "CASE sel ELSE 0 END",
        "switch(sel)\n{\ndefault: return 0\n}\n");
    row("one pair", selected().switchCase(constant(1), value("x")), "CASE sel WHEN 1 THEN x END",
        "switch(sel)\n{\n\tcase 1: return x;\n\n}\n");
    row("pairs and default",
        selected().switchCase(constant(1), value("x")).switchCase(constant(2), value("y")).defaultCase(value("z")),
        "CASE sel WHEN 1 THEN x WHEN 2 THEN y ELSE z END",
        "switch(sel)\n{\n\tcase 1: return x;\n\tcase 2: return y;\ndefault: return z\n}\n");
    row("nothing at all", searched(), "CASE  END", "");
    row("searched without default", searched().switchCase(value("c"), value("x")), "CASE  WHEN c THEN x END",
        "if (c) return x;\n");
    row("searched default only", searched().defaultCase(value("z")), "CASE  ELSE z END", "else return z");
    row("searched pairs and default",
        searched().switchCase(value("c"), value("x")).switchCase(value("d"), value("y")).defaultCase(value("z")),
        "CASE  WHEN c THEN x WHEN d THEN y ELSE z END", "if (c) return x;\nelse if (d) return y;\nelse return z");
    row("selector and default that are empty nodes",
        SwitchCase(value("")).switchCase(value("c"), value("x")).defaultCase(constant(QVariant())),
        "CASE  WHEN c THEN x END", "if (c) return x;\n");
    row("ifThen", ifThen(value("c"), value("a"), value("b")), "CASE  WHEN c THEN a ELSE b END",
        "if (c) return a;\nelse return b");
    row("ifThen without else", ifThen(value("c"), value("a"), {}), "CASE  WHEN c THEN a END", "if (c) return a;\n");
    row("operands are not nested", SwitchCase(both).switchCase(both, both).defaultCase(both),
        "CASE a OR b WHEN a OR b THEN a OR b ELSE a OR b END",
        "switch(a || b)\n{\n\tcase a || b: return a || b;\ndefault: return a || b\n}\n");
    row("condition is not nested", ifThen(both, both, both), "CASE  WHEN a OR b THEN a OR b ELSE a OR b END",
        "if (a || b) return a || b;\nelse return a || b");
    row("constants by style", ifThen(value("c"), text("it's"), placeholder(2)), "CASE  WHEN c THEN 'it''s' ELSE 2 END",
        "if (c) return \"it's\";\nelse return 2");
}

void TestSwitchCase::printed()
{
    QFETCH(ExpressionHandle, tree);
    QFETCH(QString, code);
    QTEST(tree.toString(Sql), "sql");
    QTEST(tree.toString(Sql | Nested), "sql");
    QCOMPARE(tree.toString(Code), code);
    QCOMPARE(tree.toString(Code | Nested), code);
    code.replace(QLatin1String("||"), QLatin1String("OR"));
    QCOMPARE(tree.toString(Plain), code);
}

void TestSwitchCase::printedPlaceholders()
{
    SwitchCase const node = SwitchCase(value("sel")).switchCase(placeholder(1), placeholder(2));
    QCOMPARE(node.toString(Bound), QStringLiteral("CASE sel WHEN ? THEN ? END"));
    QCOMPARE(node.toString(Code | Expression::StylePlaceholders),
        QStringLiteral("switch(sel)\n{\n\tcase ?: return ?;\n\n}\n"));
}

void TestSwitchCase::values_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<QVariant>("result");
    auto const row = [](char const* name, SwitchCase const& tree, QVariant const& result) {
        QTest::newRow(name) << ExpressionHandle(tree) << result;
    };
    auto const camera = [] { return SwitchCase(value("camera")); };
    QVariant const emptyList = QVariantList();
    row("no pairs, no default", camera(), emptyList);
    row("no pairs", camera().defaultCase(text("z")), QStringLiteral("z"));
    row("first match",
        camera().switchCase(constant(2), text("x")).switchCase(constant(2), text("y")).defaultCase(text("z")),
        QStringLiteral("x"));
    row("second match", camera().switchCase(constant(1), text("x")).switchCase(constant(2), text("y")),
        QStringLiteral("y"));
    row("no match", camera().switchCase(constant(1), text("x")).defaultCase(text("z")), QStringLiteral("z"));
    row("no match, no default", camera().switchCase(constant(1), text("x")), emptyList);
    row("incomparable case does not match", camera().switchCase(value("gone"), text("x")).defaultCase(text("z")),
        QStringLiteral("z"));
    row("missing selector matches no missing case",
        SwitchCase(value("missing")).switchCase(value("gone"), text("x")).defaultCase(text("z")), QStringLiteral("z"));
    // As numbers of one type, doubles, the two are the same; what is no constant keeps its type.
    row("selector and cases count as constants, which may change their type",
        SwitchCase(value("highest signed")).switchCase(value("one more"), text("x")).defaultCase(text("z")),
        QStringLiteral("x"));
    row("default without a value", camera().defaultCase(constant(QVariant())), QVariant());
    row("result is a reference", camera().switchCase(constant(2), value("camera")), 2);
    row("result is a missing property", camera().switchCase(constant(2), value("missing")).defaultCase(text("z")),
        QVariant());
    row("true condition does not equal the missing selector", ifThen(constant(true), text("a"), text("b")),
        QStringLiteral("b"));
    row("false condition", ifThen(constant(false), text("a"), text("b")), QStringLiteral("b"));
    row("empty list as condition equals the missing selector", ifThen({}, text("a"), text("b")), QStringLiteral("a"));
    row("filled list as condition", ifThen(ExpressionList(constant(1), constant(2)), text("a"), text("b")),
        QStringLiteral("b"));
}

void TestSwitchCase::values()
{
    QFETCH(ExpressionHandle, tree);
    QTEST(tree.evaluate(someProperties()), "result");
}

void TestSwitchCase::alwaysConstant_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    auto const row = [](char const* name, SwitchCase const& tree) { QTest::newRow(name) << ExpressionHandle(tree); };
    ExpressionHandle const reference = value("camera");
    row("constants", SwitchCase(constant(1)).switchCase(constant(1), constant(2)));
    row("reference as selector", SwitchCase(reference));
    row("reference as case", SwitchCase(constant(2)).switchCase(reference, constant(1)));
    row("reference as result", SwitchCase(constant(2)).switchCase(constant(2), reference));
    row("reference as default", SwitchCase(constant(2)).defaultCase(reference));
    row("references only", ifThen(reference, reference, reference));
}

void TestSwitchCase::alwaysConstant()
{
    QFETCH(ExpressionHandle, tree);
    bool isConstant = false;
    tree.evaluate(someProperties(), &isConstant);
    QVERIFY(isConstant);
}

void TestSwitchCase::laterPairsAreNotEvaluated()
{
    Counts selector;
    Counts skipped;
    Counts matched;
    Counts later;
    SwitchCase const node = SwitchCase(counted(selector, 2))
                                .switchCase(constant(1), counted(skipped, 10))
                                .switchCase(counted(matched, 2), counted(matched, 20))
                                .switchCase(counted(later, 2), counted(later, 30))
                                .defaultCase(counted(later, 40));
    QCOMPARE(node.evaluate({}, nullptr), QVariant(20));
    QCOMPARE(selector.evaluations, 1);
    QCOMPARE(skipped.evaluations, 0);
    QCOMPARE(matched.evaluations, 2);
    QCOMPARE(later.evaluations, 0);
}

void TestSwitchCase::defaultIsEvaluatedWithoutMatchOnly()
{
    Counts counts;
    SwitchCase node = SwitchCase(constant(2)).defaultCase(counted(counts, 40));
    QCOMPARE(node.evaluate({}, nullptr), QVariant(40));
    QCOMPARE(counts.evaluations, 1);
}

void TestSwitchCase::callsChainOnTheSameObject()
{
    SwitchCase node(constant(1));
    QCOMPARE(&node.switchCase(constant(1), constant(2)), &node);
    QCOMPARE(&node.defaultCase(constant(3)), &node);
    QCOMPARE(node.toString(Sql), QStringLiteral("CASE 1 WHEN 1 THEN 2 ELSE 3 END"));
}

void TestSwitchCase::operandOrder()
{
    SwitchCase const node = SwitchCase(constant(1)).switchCase(constant(3), constant(4)).defaultCase(constant(2));
    QStringList texts;
    for (ExpressionHandle const& operand : node.operands())
        texts.append(operand.toString(Sql));
    QCOMPARE(texts, QStringList({"1", "2", "3", "4"}));
}

void TestSwitchCase::lastDefaultStays()
{
    SwitchCase const node = SwitchCase(value("s")).defaultCase(toInt(toInt(constant(1)))).defaultCase(constant(2));
    QCOMPARE(node.toString(Sql), QStringLiteral("CASE s ELSE 2 END"));
    QCOMPARE(node.operands().size(), 2);
    QCOMPARE(node.depth(), 2);
}

void TestSwitchCase::propertyIsASelector()
{
    SwitchCase const node(IntProperty(QStringLiteral("camera name"), QString(), 0));
    QCOMPARE(node.toString(Sql), QStringLiteral("CASE camera_name END"));
    QVERIFY(held<ValueExpression>(node.operands().at(0))->alias().isEmpty());
    QCOMPARE(node.operands().at(1).constData(), ExpressionHandle(ExpressionList::empty()).constData());
}

void TestSwitchCase::equality_data()
{
    QTest::addColumn<ExpressionHandle>("other");
    QTest::addColumn<bool>("equal");
    auto const row
        = [](char const* name, ExpressionHandle const& other, bool equal) { QTest::newRow(name) << other << equal; };
    ExpressionList operands(value("s"), constant(9));
    operands.append(ExpressionList(constant(1), constant(2)));
    ElementOf membership;
    membership.append(operands);
    row("same", SwitchCase(value("s")).defaultCase(constant(9)).switchCase(constant(1), constant(2)), true);
    row("another result", SwitchCase(value("s")).switchCase(constant(1), constant(3)).defaultCase(constant(9)), false);
    row("another default", SwitchCase(value("s")).switchCase(constant(1), constant(2)), false);
    row("no pairs", SwitchCase(value("s")).defaultCase(constant(9)), false);
    row("no selector", SwitchCase(ExpressionHandle()).switchCase(constant(1), constant(2)).defaultCase(constant(9)),
        false);
    row("list of the same operands", operands, false);
    row("membership with the same operands", membership, false);
}

void TestSwitchCase::equality()
{
    QFETCH(ExpressionHandle, other);
    ExpressionHandle const node = SwitchCase(value("s")).switchCase(constant(1), constant(2)).defaultCase(constant(9));
    QTEST(node.equals(other), "equal");
    QTEST(other.equals(node), "equal");
}

// Selector, default, pairs: not the order in which they are printed.
void TestSwitchCase::placeholdersInTheOrderOfOperands()
{
    SwitchCase const node
        = SwitchCase(placeholder(1)).switchCase(placeholder(3), placeholder(4)).defaultCase(placeholder(2));
    QCOMPARE(node.collectPlaceholders(), QList<QVariant>({1, 2, 3, 4}));
    QCOMPARE(node.toString(Sql), QStringLiteral("CASE 1 WHEN 3 THEN 4 ELSE 2 END"));
    QVERIFY(!node.isEmpty());
}

QTEST_APPLESS_MAIN(TestSwitchCase)
#include "tst_SwitchCase.moc"
