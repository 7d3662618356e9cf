// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/NumericOperators.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "Nodes.h"

#include <QDate>
#include <QTest>

#include <cstddef>
#include <type_traits>

using namespace qvgen;
using namespace nodes;

namespace {

template <class L, class R, class = void> struct IsSummable : std::false_type {
};
template <class L, class R> struct IsSummable<L, R, std::void_t<decltype(std::declval<L>() + std::declval<R>())>>
    : std::true_type {
};

template <class L, class R> constexpr bool isArithmetic
    = std::is_same_v<decltype(std::declval<L>() + std::declval<R>()), NumericOperator>;

/// The eight operators in the order of their stored numbers.
template <class Left, class Right> QList<ExpressionHandle> allOf(Left const& left, Right const& right)
{
    return {
        left + right, left - right, left * right, left / right, left % right, left & right, left | right, left ^ right};
}

template <class Right> void assign(NumericOperator& node, int op, Right const& right)
{
    NumericOperator* const results[] = {op == 0 ? &(node += right) : nullptr, op == 1 ? &(node -= right) : nullptr,
        op == 2 ? &(node *= right) : nullptr, op == 3 ? &(node /= right) : nullptr,
        op == 4 ? &(node %= right) : nullptr, op == 5 ? &(node &= right) : nullptr,
        op == 6 ? &(node |= right) : nullptr, op == 7 ? &(node ^= right) : nullptr};
    QCOMPARE(results[op], &node);
}

QString symbol(int op)
{
    char const* const symbols[] = {"+", "-", "*", "/", " mod ", "&", "|", "^"};
    return QString::fromLatin1(symbols[op]);
}

NumericOperator::NumOp operation(int op)
{
    return static_cast<NumericOperator::NumOp>(op);
}

} // namespace

static_assert(isArithmetic<ExpressionHandle, ExpressionHandle>);
static_assert(isArithmetic<Expression const&, Expression const&>);
static_assert(isArithmetic<BaseProperty&, BaseProperty const&>);
static_assert(isArithmetic<BaseProperty const&, QVariant>);
static_assert(isArithmetic<NumericOperator, int>);
static_assert(isArithmetic<int, NumericOperator>);
static_assert(isArithmetic<QString, ExpressionHandle>, "not a concatenation of texts");
static_assert(!IsSummable<ExpressionHandle, std::nullptr_t>::value);
static_assert(!IsSummable<ExpressionHandle, int*>::value, "a pointer is no truth value");
static_assert(!IsSummable<ExpressionHandle, PropertySet>::value);

/// How arithmetic is put together: the free operators, the members of NumericOperator, join().
class TestArithmetic : public QObject {
    Q_OBJECT

private slots:
    void operands_data();
    void operands();

    void constructorNeverFlattens();
    void handlesNest();
    void sameOperationAppends_data();
    void sameOperationAppends();
    void otherOperationNests();
    void rightSideNests();
    void valueNests();
    void propertyNests();
    void membersLeaveTheObject();

    void assigning_data();
    void assigning();
    void assigningFourOperands();
    void assigningItself();
    void assigningManyOperands();
    void appendReturnsTheObject();

    void joinOfNothing();
    void joinOfOneIsTheElementItself();
    void joinOfSeveral_data();
    void joinOfSeveral();
    void joinNeverFlattens();

private:
    template <class Left, class Right> static void row(char const* name, Left const& left, Right const& right,
        char const* leftText, char const* rightText, QVariantList const& placeholders = {});

    ExpressionHandle const a = value("a");
    ExpressionHandle const b = value("b");
    ExpressionHandle const c = value("c");
};

template <class Left, class Right> void TestArithmetic::row(char const* name, Left const& left, Right const& right,
    char const* leftText, char const* rightText, QVariantList const& placeholders)
{
    QTest::newRow(name) << allOf(left, right) << QString::fromLatin1(leftText) << QString::fromLatin1(rightText)
                        << placeholders;
}

void TestArithmetic::operands_data()
{
    QTest::addColumn<QList<ExpressionHandle>>("built");
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<QVariantList>("placeholders");

    IntProperty const age(QStringLiteral("age"), QString(), 0);
    StringProperty const name(QStringLiteral("full name"), QString(), QString());
    BaseProperty const& base = age;
    ExpressionHandle const handle = value("h");
    ValueExpression const node = value("n");
    QString const text = QStringLiteral("x");

    row("handle, handle", handle, handle, "h", "h");
    row("handle, node", handle, node, "h", "n");
    row("node, handle", node, handle, "n", "h");
    row("node, node", node, constant(1), "n", "1");
    row("property, property", age, name, "age", "full_name");
    row("property, handle", age, handle, "age", "h");
    row("property, node", age, node, "age", "n");
    row("handle, property", handle, age, "h", "age");
    row("node, property", node, age, "n", "age");
    row("base property, variant", base, QVariant(18), "age", "?", {18});
    row("property, variant", age, QVariant(18), "age", "?", {18});
    row("property, invalid variant", age, QVariant(), "age", "?", {QVariant()});
    row("property, int", age, 18, "age", "?", {18});
    row("property, long", age, 18L, "age", "?", {18LL});
    row("property, size", age, std::size_t(18), "age", "?", {18ULL});
    row("property, double", age, 1.5, "age", "?", {1.5});
    row("property, bool", age, true, "age", "?", {true});
    row("property, text", name, text, "full_name", "?", {text});
    row("property, literal", name, "x", "full_name", "?", {text});
    row("property, date", age, QDate(1970, 1, 2), "age", "?", {86400000000LL});
    row("handle, variant", handle, QVariant(18), "h", "?", {18});
    row("handle, int", handle, 18, "h", "?", {18});
    row("handle, long", handle, 18L, "h", "?", {18LL});
    row("handle, double", handle, 1.5, "h", "?", {1.5});
    row("handle, text", handle, text, "h", "?", {text});
    row("handle, literal", handle, "x", "h", "?", {text});
    row("node, int", node, 18, "n", "?", {18});
    row("node, text", node, text, "n", "?", {text});
    row("variant, property", QVariant(18), age, "?", "age", {18});
    row("int, property", 18, age, "?", "age", {18});
    row("size, property", std::size_t(18), age, "?", "age", {18ULL});
    row("double, property", 1.5, age, "?", "age", {1.5});
    row("literal, property", "x", name, "?", "full_name", {text});
    row("variant, handle", QVariant(18), handle, "?", "h", {18});
    row("int, handle", 18, handle, "?", "h", {18});
    row("text, handle", text, handle, "?", "h", {text});
    row("int, node", 18, node, "?", "n", {18});
    row("literal, node", "x", node, "?", "n", {text});
}

void TestArithmetic::operands()
{
    QFETCH(QList<ExpressionHandle>, built);
    QFETCH(QString, left);
    QFETCH(QString, right);
    QCOMPARE(built.size(), 8);
    for (int op = 0; op < built.size(); ++op) {
        QCOMPARE(held<NumericOperator>(built.at(op))->op(), operation(op));
        QCOMPARE(built.at(op).toString(Bound), left + symbol(op) + right);
        QTEST(built.at(op).collectPlaceholders(), "placeholders");
    }
}

void TestArithmetic::constructorNeverFlattens()
{
    NumericOperator const sum(a, NumericOperator::Add, b);
    NumericOperator const node(sum, NumericOperator::Add, sum);
    QCOMPARE(node.operands().size(), 2);
    QCOMPARE(node.toString(Sql), QStringLiteral("(a+b)+(a+b)"));
}

void TestArithmetic::handlesNest()
{
    ExpressionHandle const sum = a + b;
    QCOMPARE(operandCount(sum + c), 2);
    QCOMPARE((sum + c).toString(Sql), QStringLiteral("(a+b)+c"));
}

void TestArithmetic::sameOperationAppends_data()
{
    QTest::addColumn<ExpressionHandle>("built");
    QTest::addColumn<int>("op");
    QTest::newRow("+") << ExpressionHandle(a + b + c) << 0;
    QTest::newRow("-") << ExpressionHandle(a - b - c) << 1;
    QTest::newRow("*") << ExpressionHandle(a * b * c) << 2;
    QTest::newRow("/") << ExpressionHandle(a / b / c) << 3;
    QTest::newRow("%") << ExpressionHandle(a % b % c) << 4;
    QTest::newRow("&") << ExpressionHandle(a & b & c) << 5;
    QTest::newRow("|") << ExpressionHandle(a | b | c) << 6;
    QTest::newRow("^") << ExpressionHandle(a ^ b ^ c) << 7;
}

void TestArithmetic::sameOperationAppends()
{
    QFETCH(ExpressionHandle, built);
    QFETCH(int, op);
    QCOMPARE(operandCount(built), 3);
    QCOMPARE(
        built.toString(Sql), QStringLiteral("a") + symbol(op) + QStringLiteral("b") + symbol(op) + QStringLiteral("c"));
}

void TestArithmetic::otherOperationNests()
{
    QList<ExpressionHandle> const built = allOf(NumericOperator(a, NumericOperator::Add, b), c);
    QCOMPARE(built.at(0).toString(Sql), QStringLiteral("a+b+c"));
    for (int op = 1; op < built.size(); ++op)
        QCOMPARE(built.at(op).toString(Sql), QStringLiteral("(a+b)") + symbol(op) + QStringLiteral("c"));
}

void TestArithmetic::rightSideNests()
{
    QCOMPARE((a + b * c).toString(Sql), QStringLiteral("a+(b*c)"));
    QCOMPARE((a + b + (b + c)).toString(Sql), QStringLiteral("a+b+(b+c)"));
}

void TestArithmetic::valueNests()
{
    NumericOperator const sum(a, NumericOperator::Add, b);
    QCOMPARE((sum + 5).toString(Sql), QStringLiteral("(a+b)+5"));
    QCOMPARE((5 + sum).toString(Sql), QStringLiteral("5+(a+b)"));
    QCOMPARE((sum + constant(5)).toString(Sql), QStringLiteral("a+b+5"));
}

void TestArithmetic::propertyNests()
{
    IntProperty const age(QStringLiteral("age"), QString(), 0);
    NumericOperator const sum(a, NumericOperator::Add, b);
    QCOMPARE((sum + age).toString(Sql), QStringLiteral("(a+b)+age"));
    QCOMPARE((age + sum).toString(Sql), QStringLiteral("age+(a+b)"));
}

void TestArithmetic::membersLeaveTheObject()
{
    NumericOperator const sum(a, NumericOperator::Add, b);
    QCOMPARE(allOf(sum, c).size(), 8);
    QCOMPARE(sum.toString(Sql), QStringLiteral("a+b"));
}

void TestArithmetic::assigning_data()
{
    QTest::addColumn<int>("left");
    QTest::addColumn<int>("right");
    for (int left = 0; left < 8; ++left) {
        for (int right = 0; right < 8; ++right)
            QTest::addRow("%s to %s", qPrintable(symbol(right)), qPrintable(symbol(left))) << left << right;
    }
}

void TestArithmetic::assigning()
{
    QFETCH(int, left);
    QFETCH(int, right);
    NumericOperator node(a, operation(left), b);
    assign(node, right, c);
    QString const inner = QStringLiteral("a") + symbol(left) + QStringLiteral("b");
    QString const first = left == right ? inner : QLatin1Char('(') + inner + QLatin1Char(')');
    QCOMPARE(node.toString(Sql), first + symbol(right) + QStringLiteral("c"));
    QCOMPARE(node.op(), operation(right));
}

void TestArithmetic::assigningFourOperands()
{
    NumericOperator node(NumericOperator::Add);
    node.append(a);
    node += b;
    node += c;
    node += value("d");
    QCOMPARE(node.operands().size(), 4);
    QCOMPARE(node.toString(Sql), QStringLiteral("a+b+c+d"));
    node -= value("e");
    QCOMPARE(node.operands().size(), 2);
    QCOMPARE(node.op(), NumericOperator::Subtract);
    QCOMPARE(node.toString(Sql), QStringLiteral("(a+b+c+d)-e"));
}

void TestArithmetic::assigningItself()
{
    NumericOperator node(a, NumericOperator::Add, b);
    node += node;
    QCOMPARE(node.toString(Sql), QStringLiteral("a+b+(a+b)"));
    node *= node;
    QCOMPARE(node.toString(Sql), QStringLiteral("(a+b+(a+b))*(a+b+(a+b))"));
}

// Each one appended: to copy those before with it would take minutes.
void TestArithmetic::assigningManyOperands()
{
    NumericOperator node(NumericOperator::Add);
    for (int i = 0; i < 100000; ++i)
        node += a;
    QCOMPARE(node.operands().size(), 100000);
}

void TestArithmetic::appendReturnsTheObject()
{
    NumericOperator node(NumericOperator::Multiply);
    QCOMPARE(&node.append(a).append(b), &node);
    QCOMPARE(node.toString(Sql), QStringLiteral("a*b"));
}

void TestArithmetic::joinOfNothing()
{
    ExpressionHandle const joined = NumericOperator::join(ExpressionList(), NumericOperator::Add);
    QCOMPARE(joined.constData(), ExpressionList::empty().constData());
}

void TestArithmetic::joinOfOneIsTheElementItself()
{
    ExpressionHandle const joined = NumericOperator::join(ExpressionList(a), NumericOperator::Add);
    QCOMPARE(joined.constData(), a.constData());
}

void TestArithmetic::joinOfSeveral_data()
{
    QTest::addColumn<int>("op");
    for (int op = 0; op < 8; ++op)
        QTest::newRow(qPrintable(symbol(op))) << op;
}

void TestArithmetic::joinOfSeveral()
{
    QFETCH(int, op);
    ExpressionList list(a, b);
    list.append(c);
    ExpressionHandle const joined = NumericOperator::join(list, operation(op));
    QCOMPARE(operandCount(joined), 3);
    QCOMPARE(joined.toString(Sql),
        QStringLiteral("a") + symbol(op) + QStringLiteral("b") + symbol(op) + QStringLiteral("c"));
}

void TestArithmetic::joinNeverFlattens()
{
    ExpressionHandle const joined = NumericOperator::join(ExpressionList(a + b, c), NumericOperator::Add);
    QCOMPARE(joined.toString(Sql), QStringLiteral("(a+b)+c"));
}

QTEST_APPLESS_MAIN(TestArithmetic)
#include "tst_Arithmetic.moc"
