// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/NumericOperators.h>

#include "Nodes.h"

#include <QScopedPointer>
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

} // namespace

/// How arithmetic prints, compares and is copied.
class TestArithmeticNodes : public QObject {
    Q_OBJECT

private slots:
    void symbols_data();
    void symbols();
    void print_data();
    void print();
    void placeholdersInPrintOrder();

    void equality_data();
    void equality();
    void isEmptyWithoutOperands();
    void copiesShareOperands();
    void assignment();
    void cloneIsANodeOfItsOwn();
};

void TestArithmeticNodes::symbols_data()
{
    QTest::addColumn<int>("op");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("code");
    char const* const texts[] = {"a+b+c", "a-b-c", "a*b*c", "a/b/c", "a mod b mod c", "a&b&c", "a|b|c", "a^b^c"};
    for (int op = 0; op < 8; ++op) {
        QString const text = QString::fromLatin1(texts[op]);
        QTest::newRow(texts[op]) << op << text << (op == 4 ? QStringLiteral("a%b%c") : text);
    }
}

void TestArithmeticNodes::symbols()
{
    QFETCH(int, op);
    NumericOperator const node
        = chain(static_cast<NumOp>(op), {nodes::value("a"), nodes::value("b"), nodes::value("c")});
    QTEST(node.toString(Plain), "text");
    QTEST(node.toString(Sql), "text");
    QTEST(node.toString(Code), "code");
    QTEST(node.toString(Code | Sql), "code");
}

void TestArithmeticNodes::print_data()
{
    QTest::addColumn<ExpressionHandle>("node");
    QTest::addColumn<Expression::PrintStyle>("style");
    QTest::addColumn<QString>("text");

    ExpressionHandle const a = nodes::value("a");
    ExpressionHandle const b = nodes::value("b");
    ExpressionHandle const c = nodes::value("c");
    ExpressionHandle const none = NumericOperator(NumericOperator::Add);
    ExpressionHandle const one = chain(NumericOperator::Add, {a});
    ExpressionHandle const product = NumericOperator(b, NumericOperator::Multiply, c);
    ExpressionHandle const sum = NumericOperator(a, NumericOperator::Add, product);
    ExpressionHandle const date = NumericOperator(a, NumericOperator::Subtract, ConstExpression::date(1970, 1, 2));
    ExpressionHandle const descending
        = NumericOperator(UnaryOperator(UnaryOperator::Minus, a), NumericOperator::Add, b);

    QTest::newRow("no operands") << none << Sql << QString();
    QTest::newRow("no operands, nested") << none << (Sql | Nested) << QString();
    QTest::newRow("one operand") << one << Sql << QStringLiteral("a");
    QTest::newRow("one operand is never in parentheses") << one << (Sql | Nested) << QStringLiteral("a");
    QTest::newRow("the operand of one operand is nested")
        << ExpressionHandle(chain(NumericOperator::Add, {product})) << Sql << QStringLiteral("(b*c)");
    QTest::newRow("right operand is nested") << sum << Plain << QStringLiteral("a+(b*c)");
    QTest::newRow("left operand is nested")
        << ExpressionHandle(NumericOperator(product, NumericOperator::Add, a)) << Sql << QStringLiteral("(b*c)+a");
    QTest::newRow("same operation as operand keeps its parentheses")
        << ExpressionHandle(NumericOperator(product, NumericOperator::Multiply, a)) << Sql << QStringLiteral("(b*c)*a");
    QTest::newRow("nested") << sum << (Sql | Nested) << QStringLiteral("(a+(b*c))");
    QTest::newRow("modulo in code, nested") << ExpressionHandle(NumericOperator(a, NumericOperator::Modulo, b))
                                            << (Code | Nested) << QStringLiteral("(a%b)");
    QTest::newRow("date in SQL") << date << Sql << QStringLiteral("a-86400000000");
    QTest::newRow("text in SQL") << ExpressionHandle(NumericOperator(a, NumericOperator::Add, constant("it's"))) << Sql
                                 << QStringLiteral("a+'it''s'");
    QTest::newRow("text in code") << ExpressionHandle(NumericOperator(a, NumericOperator::Add, constant("it's")))
                                  << Code << QStringLiteral("a+\"it's\"");
    QTest::newRow("operands are sort terms, too")
        << descending << (Sql | Expression::StyleOrderTerm) << QStringLiteral("a DESC+b");
}

void TestArithmeticNodes::print()
{
    QFETCH(ExpressionHandle, node);
    QFETCH(Expression::PrintStyle, style);
    QTEST(node.toString(style), "text");
}

void TestArithmeticNodes::placeholdersInPrintOrder()
{
    ExpressionHandle const inner = NumericOperator(placeholder(2), NumericOperator::Multiply, constant(3));
    NumericOperator const node = chain(NumericOperator::Add, {placeholder(1), inner, placeholder(QDate(1970, 1, 2))});
    QCOMPARE(node.toString(Bound), QStringLiteral("?+(?*3)+?"));
    QCOMPARE(node.collectPlaceholders(), (QVariantList{1, 2, Q_INT64_C(86400000000)}));
}

void TestArithmeticNodes::equality_data()
{
    QTest::addColumn<ExpressionHandle>("other");
    QTest::addColumn<bool>("equal");

    ExpressionHandle const a = nodes::value("a");
    ExpressionHandle const b = nodes::value("b");
    QTest::newRow("twin") << ExpressionHandle(NumericOperator(a, NumericOperator::Add, b)) << true;
    QTest::newRow("other operation") << ExpressionHandle(NumericOperator(a, NumericOperator::Subtract, b)) << false;
    QTest::newRow("operands swapped") << ExpressionHandle(NumericOperator(b, NumericOperator::Add, a)) << false;
    QTest::newRow("one operand less") << ExpressionHandle(chain(NumericOperator::Add, {a})) << false;
    QTest::newRow("one operand more") << ExpressionHandle(chain(NumericOperator::Add, {a, b, b})) << false;
    QTest::newRow("list of the same operands") << ExpressionHandle(ExpressionList(a, b)) << false;
    QTest::newRow("unary operator") << ExpressionHandle(UnaryOperator(UnaryOperator::Minus, a)) << false;
    QTest::newRow("value") << a << false;
}

void TestArithmeticNodes::equality()
{
    QFETCH(ExpressionHandle, other);
    NumericOperator const node(nodes::value("a"), NumericOperator::Add, nodes::value("b"));
    QTEST(node.equals(other.constData()), "equal");
    QTEST(other.constData()->equals(&node), "equal");
    QVERIFY(!node.equals(nullptr));
}

void TestArithmeticNodes::isEmptyWithoutOperands()
{
    QVERIFY(NumericOperator(NumericOperator::Add).isEmpty());
    QVERIFY(!chain(NumericOperator::Add, {ExpressionHandle()}).isEmpty());
}

void TestArithmeticNodes::copiesShareOperands()
{
    NumericOperator const node(nodes::value("a"), NumericOperator::BitOr, nodes::value("b"));
    NumericOperator copy(node);
    QCOMPARE(copy.op(), NumericOperator::BitOr);
    QCOMPARE(copy.operands().at(1).constData(), node.operands().at(1).constData());
    copy.append(constant(1));
    QCOMPARE(node.toString(Sql), QStringLiteral("a|b"));
}

void TestArithmeticNodes::assignment()
{
    NumericOperator node(nodes::value("a"), NumericOperator::BitOr, nodes::value("b"));
    NumericOperator const other = chain(NumericOperator::Modulo, {nodes::value("c"), nodes::value("d"), constant(3)});
    node = other;
    QCOMPARE(node.toString(Code), QStringLiteral("c%d%3"));
    QVERIFY(node.equals(&other));
}

void TestArithmeticNodes::cloneIsANodeOfItsOwn()
{
    NumericOperator const node(nodes::value("a"), NumericOperator::Divide, nodes::value("b"));
    QScopedPointer<NumericOperator> const clone(node.clone());
    QVERIFY(clone.data() != &node);
    QVERIFY(clone->equals(&node));
}

QTEST_APPLESS_MAIN(TestArithmeticNodes)
#include "tst_ArithmeticNodes.moc"
