// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "Nodes.h"

#include <QTest>

#include <type_traits>

using namespace qvgen;
using namespace nodes;

using Handle = ExpressionHandle;
static_assert(std::is_same_v<decltype(std::declval<Handle>() && std::declval<Handle>()), BooleanOperator>);
static_assert(std::is_same_v<decltype(std::declval<Handle>() || std::declval<Handle>()), BooleanOperator>);
static_assert(std::is_same_v<decltype(!std::declval<Handle>()), NotOperator>);
static_assert(std::is_same_v<decltype(std::declval<BooleanOperator&>() && std::declval<Handle>()), BooleanOperator>);
static_assert(std::is_same_v<decltype(std::declval<BooleanOperator&>() &= std::declval<Handle>()), BooleanOperator&>);
static_assert(std::is_same_v<decltype(std::declval<BooleanOperator&>() |= std::declval<Handle>()), BooleanOperator&>);

/// How conditions are put together: the members of BooleanOperator, the free operators, join().
class TestJunctions : public QObject {
    Q_OBJECT

private slots:
    void init();

    void constructorNeverFlattens();
    void appendNeverFlattens();
    void freeOperatorsNest();
    void freeOperatorsTakeNodes();

    void namedAndAppendsToItself();
    void namedAndAppendsWithoutFlattening();
    void namedAndIsKeptByOr();
    void namedOrAppendsToItself();
    void namedOrIsKeptByAnd();
    void constantNameNests();
    void temporaryNests();
    void namedOperatorAsRightSide();

    void assigningSameKindAppends();
    void assigningOtherKindNests();
    void assigningReturnsTheObject();
    void assigningItself();
    void handleOfTheOldStateStays();

    void joinOfNothing();
    void joinOfOneIsTheElementItself();
    void joinOfSeveral_data();
    void joinOfSeveral();

private:
    ExpressionHandle const a = value("a");
    ExpressionHandle const b = value("b");
    ExpressionHandle const c = value("c");
    BooleanOperator conjunction = BooleanOperator(a, BooleanOperator::And, b);
    BooleanOperator disjunction = BooleanOperator(a, BooleanOperator::Or, b);
};

void TestJunctions::init()
{
    conjunction = BooleanOperator(a, BooleanOperator::And, b);
    disjunction = BooleanOperator(a, BooleanOperator::Or, b);
}

void TestJunctions::constructorNeverFlattens()
{
    BooleanOperator const node(conjunction, BooleanOperator::And, conjunction);
    QCOMPARE(node.operands().size(), 2);
    QCOMPARE(node.toString(Sql), QStringLiteral("(a AND b) AND (a AND b)"));
}

void TestJunctions::appendNeverFlattens()
{
    conjunction.append(BooleanOperator(b, BooleanOperator::And, c));
    QCOMPARE(conjunction.operands().size(), 3);
    QCOMPARE(conjunction.toString(Sql), QStringLiteral("a AND b AND (b AND c)"));
}

void TestJunctions::freeOperatorsNest()
{
    QCOMPARE((a && b).toString(Sql), QStringLiteral("a AND b"));
    QCOMPARE(((a && b) && c).toString(Sql), QStringLiteral("(a AND b) AND c"));
    QCOMPARE((a && (b && c)).toString(Sql), QStringLiteral("a AND (b AND c)"));
    QCOMPARE(((a || b) || c).toString(Sql), QStringLiteral("(a OR b) OR c"));
    QCOMPARE(((a || b) && !c).toString(Sql), QStringLiteral("(a OR b) AND  NOT c"));
    QCOMPARE(((a && b) || c).toString(Code), QStringLiteral("(a && b) || c"));
}

void TestJunctions::freeOperatorsTakeNodes()
{
    ElementOf membership(value("camera"));
    membership.append(QVariant(1));
    BooleanOperator const node = (value("age") >= 18 && membership) || !(value("name") == QStringLiteral("x"));
    QCOMPARE(node.toString(Sql), QStringLiteral("(age >= 18 AND camera IN (1)) OR  NOT name = 'x'"));
    QCOMPARE(node.collectPlaceholders(), QList<QVariant>({18, 1, QStringLiteral("x")}));
}

// Code that chains conditions on a named operator relies on the name holding all of them.
void TestJunctions::namedAndAppendsToItself()
{
    BooleanOperator const result = conjunction && c;
    QCOMPARE(result.toString(Sql), QStringLiteral("a AND b AND c"));
    QCOMPARE(conjunction.toString(Sql), QStringLiteral("a AND b AND c"));
}

void TestJunctions::namedAndAppendsWithoutFlattening()
{
    BooleanOperator const other = conjunction;
    BooleanOperator const result = conjunction && other;
    QCOMPARE(result.toString(Sql), QStringLiteral("a AND b AND (a AND b)"));
    QCOMPARE(other.toString(Sql), QStringLiteral("a AND b"));
}

void TestJunctions::namedAndIsKeptByOr()
{
    BooleanOperator const result = conjunction || c;
    QCOMPARE(result.toString(Sql), QStringLiteral("(a AND b) OR c"));
    QCOMPARE(conjunction.toString(Sql), QStringLiteral("a AND b"));
}

void TestJunctions::namedOrAppendsToItself()
{
    BooleanOperator const result = disjunction || c;
    QCOMPARE(result.toString(Sql), QStringLiteral("a OR b OR c"));
    QCOMPARE(disjunction.toString(Sql), QStringLiteral("a OR b OR c"));
}

void TestJunctions::namedOrIsKeptByAnd()
{
    BooleanOperator const result = disjunction && c;
    QCOMPARE(result.toString(Sql), QStringLiteral("(a OR b) AND c"));
    QCOMPARE(disjunction.toString(Sql), QStringLiteral("a OR b"));
}

void TestJunctions::constantNameNests()
{
    BooleanOperator const& constantName = conjunction;
    QCOMPARE((constantName && c).toString(Sql), QStringLiteral("(a AND b) AND c"));
    QCOMPARE(conjunction.toString(Sql), QStringLiteral("a AND b"));
}

void TestJunctions::temporaryNests()
{
    QCOMPARE((BooleanOperator(conjunction) && c).toString(Sql), QStringLiteral("(a AND b) AND c"));
    QCOMPARE((BooleanOperator(disjunction) || c).toString(Sql), QStringLiteral("(a OR b) OR c"));
}

void TestJunctions::namedOperatorAsRightSide()
{
    QCOMPARE((c && conjunction).toString(Sql), QStringLiteral("c AND (a AND b)"));
    QCOMPARE(conjunction.toString(Sql), QStringLiteral("a AND b"));
}

void TestJunctions::assigningSameKindAppends()
{
    conjunction &= c;
    disjunction |= c;
    QCOMPARE(conjunction.toString(Sql), QStringLiteral("a AND b AND c"));
    QCOMPARE(conjunction.operands().size(), 3);
    QCOMPARE(disjunction.toString(Sql), QStringLiteral("a OR b OR c"));
    QCOMPARE(disjunction.operands().size(), 3);
}

void TestJunctions::assigningOtherKindNests()
{
    conjunction |= c;
    disjunction &= c;
    QCOMPARE(conjunction.toString(Sql), QStringLiteral("(a AND b) OR c"));
    QCOMPARE(conjunction.op(), BooleanOperator::Or);
    QCOMPARE(disjunction.toString(Sql), QStringLiteral("(a OR b) AND c"));
    QCOMPARE(disjunction.op(), BooleanOperator::And);
}

void TestJunctions::assigningReturnsTheObject()
{
    QCOMPARE(&(conjunction &= c), &conjunction);
    QCOMPARE(&(conjunction |= c), &conjunction);
    QCOMPARE(&(conjunction |= c), &conjunction);
    QCOMPARE(conjunction.toString(Sql), QStringLiteral("(a AND b AND c) OR c OR c"));
}

void TestJunctions::assigningItself()
{
    conjunction &= conjunction;
    disjunction &= disjunction;
    QCOMPARE(conjunction.toString(Sql), QStringLiteral("a AND b AND (a AND b)"));
    QCOMPARE(disjunction.toString(Sql), QStringLiteral("(a OR b) AND (a OR b)"));
}

void TestJunctions::handleOfTheOldStateStays()
{
    ExpressionHandle const before = conjunction;
    conjunction &= c;
    QCOMPARE(before.toString(Sql), QStringLiteral("a AND b"));
}

void TestJunctions::joinOfNothing()
{
    ExpressionHandle const joined = BooleanOperator::join(ExpressionList(), BooleanOperator::And);
    QVERIFY(joined.isEmpty());
    QCOMPARE(joined.constData(), ExpressionHandle().constData());
}

void TestJunctions::joinOfOneIsTheElementItself()
{
    ExpressionHandle const joined = BooleanOperator::join(ExpressionList(a), BooleanOperator::Or);
    QCOMPARE(joined.constData(), a.constData());
    QCOMPARE(joined.toString(Sql | Nested), QStringLiteral("a"));
}

void TestJunctions::joinOfSeveral_data()
{
    QTest::addColumn<ExpressionHandle>("list");
    QTest::addColumn<QString>("conjunction");
    QTest::addColumn<QString>("disjunction");
    ExpressionList three(a, b);
    three.append(c);
    QTest::newRow("two") << Handle(ExpressionList(a, b)) << "a AND b"
                         << "a OR b";
    QTest::newRow("three") << Handle(three) << "a AND b AND c"
                           << "a OR b OR c";
    QTest::newRow("junction among them") << Handle(ExpressionList(conjunction, c)) << "(a AND b) AND c"
                                         << "(a AND b) OR c";
    QTest::newRow("nested list stays one operand") << Handle(ExpressionList(ExpressionList(a, b), c)) << "a,b AND c"
                                                   << "a,b OR c";
}

void TestJunctions::joinOfSeveral()
{
    QFETCH(ExpressionHandle, list);
    QTEST(BooleanOperator::join(list, BooleanOperator::And).toString(Sql), "conjunction");
    QTEST(BooleanOperator::join(list, BooleanOperator::Or).toString(Sql), "disjunction");
}

QTEST_APPLESS_MAIN(TestJunctions)
#include "tst_Junctions.moc"
