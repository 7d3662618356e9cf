// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Expression.h>

#include "CountingNode.h"
#include "Nodes.h"

#include <QTest>

#include <type_traits>

using namespace qvgen;
using namespace nodes;

using Reading = void (*)(ExpressionHandle const&);
using Access = void (*)(ExpressionHandle&);
Q_DECLARE_METATYPE(Reading)
Q_DECLARE_METATYPE(Access)

static_assert(std::is_convertible_v<ConstExpression, ExpressionHandle>, "a node becomes a handle by itself");
static_assert(!std::is_convertible_v<ExpressionHandle, bool>, "a handle is no condition");
static_assert(!std::is_constructible_v<bool, ExpressionHandle>, "a handle is no condition");
static_assert(!std::is_convertible_v<ExpressionHandle, Expression*>, "a handle is no pointer");
static_assert(!std::is_convertible_v<ExpressionHandle, Expression const*>, "a handle is no pointer");
static_assert(!std::is_convertible_v<ExpressionHandle, void const*>, "a handle is no pointer");
static_assert(!std::is_convertible_v<Expression*, ExpressionHandle>, "a handle adopts no node");

class TestExpressionHandle : public QObject {
    Q_OBJECT

private slots:
    void holdsACloneOfItsNode();
    void copiesShareTheNode();
    void lastHandleDeletesTheNode();
    void assignmentReleasesTheOldNode();
    void assignmentToItselfKeepsTheNode();
    void assignmentOfAnOwnOperand();
    void swapExchangesNodes();

    void readingNeverClones_data();
    void readingNeverClones();
    void accessClonesASharedNodeOnce_data();
    void accessClonesASharedNodeOnce();
    void accessLeavesAnUnsharedNode_data();
    void accessLeavesAnUnsharedNode();
    void changeStaysWithTheHandle();
    void cloneSharesItsOperands();

    void textStreamClonesASharedNode();
    void textStreamTakesAnUnsharedNodeAsItIs();
    void dataStreamClonesASharedNode();
    void dataStreamTakesAnUnsharedNodeAsItIs();
    void writeExpressionClonesASharedNode();
    void writeExpressionTakesAnUnsharedNodeAsItIs();

    void defaultHandleIsTheSharedEmptyList();
    void defaultHandleReadsAsNothing();
    void changedDefaultHandleLeavesTheOthersEmpty();
    void equality_data();
    void equality();
    void forwardedResultsAreThoseOfTheNode();

private:
    static void accesses();
};

void TestExpressionHandle::holdsACloneOfItsNode()
{
    Counts counts;
    CountingNode const node(counts);
    ExpressionHandle const handle(node);
    QCOMPARE(counts.clones, 1);
    QVERIFY(handle.constData() != &node);
}

void TestExpressionHandle::copiesShareTheNode()
{
    Counts counts;
    ExpressionHandle const first = counted(counts);
    ExpressionHandle const second = first;
    QCOMPARE(second.constData(), first.constData());
    QCOMPARE(first.constData()->ref.loadRelaxed(), 2);
    QCOMPARE(counts.clones, 0);
}

void TestExpressionHandle::lastHandleDeletesTheNode()
{
    Counts counts;
    {
        ExpressionHandle const first = counted(counts);
        {
            ExpressionHandle const second = first;
        }
        QCOMPARE(counts.alive, 1);
    }
    QCOMPARE(counts.alive, 0);
}

void TestExpressionHandle::assignmentReleasesTheOldNode()
{
    Counts counts;
    ExpressionHandle handle = counted(counts);
    handle = constant(1);
    QCOMPARE(counts.alive, 0);
    QCOMPARE(handle.toString(Sql), QStringLiteral("1"));
}

void TestExpressionHandle::assignmentToItselfKeepsTheNode()
{
    Counts counts;
    ExpressionHandle handle = counted(counts);
    ExpressionHandle const& same = handle;
    handle = same;
    QCOMPARE(counts.alive, 1);
    QCOMPARE(handle.constData()->ref.loadRelaxed(), 1);
}

void TestExpressionHandle::assignmentOfAnOwnOperand()
{
    ExpressionHandle handle = ExpressionList(constant(1), constant(2));
    handle = held<Operator>(handle)->operands().at(1);
    QCOMPARE(handle.toString(Sql), QStringLiteral("2"));
}

void TestExpressionHandle::swapExchangesNodes()
{
    ExpressionHandle first = constant(1);
    ExpressionHandle second = constant(2);
    first.swap(second);
    QCOMPARE(first.toString(Sql), QStringLiteral("2"));
    QCOMPARE(second.toString(Sql), QStringLiteral("1"));
}

void TestExpressionHandle::readingNeverClones_data()
{
    QTest::addColumn<Reading>("read");
    auto const row = [](char const* name, Reading read) { QTest::newRow(name) << read; };
    row("arrow", [](ExpressionHandle const& handle) { handle->isEmpty(); });
    row("dereference", [](ExpressionHandle const& handle) { (*handle).isEmpty(); });
    row("constData", [](ExpressionHandle const& handle) { handle.constData()->isEmpty(); });
    row("isEmpty", [](ExpressionHandle const& handle) { handle.isEmpty(); });
    row("toString", [](ExpressionHandle const& handle) { handle.toString(Sql); });
    row("evaluate", [](ExpressionHandle const& handle) { handle.evaluate(PropertySet()); });
    row("collectPlaceholders", [](ExpressionHandle const& handle) { handle.collectPlaceholders(); });
    row("equals itself", [](ExpressionHandle const& handle) { handle.equals(handle); });
    row("equals another", [](ExpressionHandle const& handle) { handle.equals(constant(1)); });
    row("copy", [](ExpressionHandle const& handle) { ExpressionHandle copy(handle); });
    row("as an operand", [](ExpressionHandle const& handle) { toInt(handle).toString(Sql); });
    row("evaluated as an operand", [](ExpressionHandle const& handle) { toInt(handle).evaluate({}, nullptr); });
    row("in a list", [](ExpressionHandle const& handle) { ExpressionList(handle, handle).evaluate({}, nullptr); });
}

void TestExpressionHandle::readingNeverClones()
{
    QFETCH(Reading, read);
    Counts counts;
    ExpressionHandle handle = counted(counts);
    ExpressionHandle const other = handle;
    read(handle);
    QCOMPARE(counts.clones, 0);
    QCOMPARE(other.constData(), qAsConst(handle).constData());
}

void TestExpressionHandle::accesses()
{
    QTest::addColumn<Access>("access");
    auto const row = [](char const* name, Access access) { QTest::newRow(name) << access; };
    row("arrow", [](ExpressionHandle& handle) { handle->isEmpty(); });
    row("dereference", [](ExpressionHandle& handle) { (*handle).isEmpty(); });
    row("data", [](ExpressionHandle& handle) { handle.data(); });
    row("detach", [](ExpressionHandle& handle) { handle.detach(); });
}

void TestExpressionHandle::accessClonesASharedNodeOnce_data()
{
    accesses();
}

void TestExpressionHandle::accessClonesASharedNodeOnce()
{
    QFETCH(Access, access);
    Counts counts;
    ExpressionHandle handle = counted(counts);
    ExpressionHandle const second = handle;
    ExpressionHandle const third = handle;
    access(handle);
    access(handle);
    QCOMPARE(counts.clones, 1);
    QCOMPARE(handle.constData()->ref.loadRelaxed(), 1);
    QCOMPARE(second.constData(), third.constData());
    QVERIFY(second.constData() != handle.constData());
}

void TestExpressionHandle::accessLeavesAnUnsharedNode_data()
{
    accesses();
}

void TestExpressionHandle::accessLeavesAnUnsharedNode()
{
    QFETCH(Access, access);
    Counts counts;
    ExpressionHandle handle = counted(counts);
    Expression const* const node = handle.constData();
    access(handle);
    QCOMPARE(counts.clones, 0);
    QCOMPARE(handle.constData(), node);
}

void TestExpressionHandle::changeStaysWithTheHandle()
{
    ExpressionHandle changed = ExpressionList(constant(1), constant(2));
    ExpressionHandle const kept = changed;
    dynamic_cast<ExpressionList&>(*changed).append(ExpressionHandle(constant(3)));
    QCOMPARE(changed.toString(Sql), QStringLiteral("1,2,3"));
    QCOMPARE(kept.toString(Sql), QStringLiteral("1,2"));
}

void TestExpressionHandle::cloneSharesItsOperands()
{
    Counts counts;
    ExpressionHandle handle = toInt(counted(counts));
    ExpressionHandle const other = handle;
    handle.detach();
    QCOMPARE(counts.clones, 0);
    QCOMPARE(held<CastExpression>(handle)->operand().constData(), held<CastExpression>(other)->operand().constData());
}

void TestExpressionHandle::textStreamClonesASharedNode()
{
    Counts counts;
    ExpressionHandle const handle = counted(counts);
    QString text;
    QTextStream out(&text);
    out << handle << '|' << handle;
    out.flush();
    QCOMPARE(text, QStringLiteral("counted|counted"));
    QCOMPARE(counts.clones, 2);
    QCOMPARE(counts.alive, 1);
}

void TestExpressionHandle::textStreamTakesAnUnsharedNodeAsItIs()
{
    Counts counts;
    QString text;
    QTextStream out(&text);
    out << counted(counts);
    QCOMPARE(counts.prints, 1);
    QCOMPARE(counts.clones, 0);
}

void TestExpressionHandle::dataStreamClonesASharedNode()
{
    Counts counts;
    ExpressionHandle const handle = counted(counts);
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << handle;
    QCOMPARE(counts.writes, 1);
    QCOMPARE(counts.clones, 1);
}

void TestExpressionHandle::dataStreamTakesAnUnsharedNodeAsItIs()
{
    Counts counts;
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << counted(counts);
    QCOMPARE(counts.writes, 1);
    QCOMPARE(counts.clones, 0);
}

void TestExpressionHandle::writeExpressionClonesASharedNode()
{
    Counts counts;
    ExpressionHandle const handle = counted(counts);
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    Expression::writeExpression(out, handle);
    QCOMPARE(counts.writes, 1);
    QCOMPARE(counts.clones, 1);
}

void TestExpressionHandle::writeExpressionTakesAnUnsharedNodeAsItIs()
{
    Counts counts;
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    Expression::writeExpression(out, counted(counts));
    QCOMPARE(counts.writes, 1);
    QCOMPARE(counts.clones, 0);
}

void TestExpressionHandle::defaultHandleIsTheSharedEmptyList()
{
    ExpressionHandle const first;
    ExpressionHandle const second;
    QVERIFY(held<ExpressionList>(first));
    QCOMPARE(first.constData(), second.constData());
    QCOMPARE(ExpressionHandle(ExpressionList::empty()).constData(), first.constData());
    QVERIFY(first.equals(second));
}

void TestExpressionHandle::defaultHandleReadsAsNothing()
{
    ExpressionHandle const handle;
    bool isConstant = false;
    QVERIFY(handle.isEmpty());
    QCOMPARE(handle.toString(Sql), QString());
    QCOMPARE(handle.evaluate({}, &isConstant), QVariant(QVariantList()));
    QVERIFY(isConstant);
    QCOMPARE(handle.collectPlaceholders(), QList<QVariant>());
}

void TestExpressionHandle::changedDefaultHandleLeavesTheOthersEmpty()
{
    ExpressionHandle const before;
    ExpressionHandle changed;
    dynamic_cast<ExpressionList&>(*changed).append(ExpressionHandle(constant(1)));
    QCOMPARE(changed.toString(Sql), QStringLiteral("1"));
    QVERIFY(before.isEmpty());
    QVERIFY(ExpressionHandle().isEmpty());
}

void TestExpressionHandle::equality_data()
{
    QTest::addColumn<ExpressionHandle>("other");
    QTest::addColumn<bool>("equal");
    QTest::newRow("equal node") << ExpressionHandle(constant(5)) << true;
    QTest::newRow("another value") << ExpressionHandle(constant(6)) << false;
    QTest::newRow("another class") << ExpressionHandle(value("5")) << false;
    QTest::newRow("default handle") << ExpressionHandle() << false;
}

void TestExpressionHandle::equality()
{
    QFETCH(ExpressionHandle, other);
    ExpressionHandle const handle = constant(5);
    QTEST(handle.equals(other), "equal");
    QTEST(other.equals(handle), "equal");
}

void TestExpressionHandle::forwardedResultsAreThoseOfTheNode()
{
    ExpressionHandle const handle = placeholder(5);
    bool isConstant = false;
    QCOMPARE(handle.evaluate({}, &isConstant), QVariant(5));
    QVERIFY(isConstant);
    QCOMPARE(handle.toString(Sql), QStringLiteral("5"));
    QCOMPARE(handle.collectPlaceholders(), QList<QVariant>({5}));
}

QTEST_APPLESS_MAIN(TestExpressionHandle)
#include "tst_ExpressionHandle.moc"
