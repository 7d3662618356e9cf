// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/NumericOperators.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "CountingNode.h"
#include "Nodes.h"
#include "TypedVariant.h"

#include <QTest>

#include <type_traits>

using namespace qvgen;
using namespace nodes;

namespace {

constexpr auto OrderTerm = Expression::StyleSql | Expression::StyleOrderTerm;

UnaryOperator minus(ExpressionHandle const& operand)
{
    return {UnaryOperator::Minus, operand};
}

UnaryOperator bitNot(ExpressionHandle const& operand)
{
    return {UnaryOperator::BitNot, operand};
}

QString units(std::initializer_list<ushort> codes)
{
    QString text;
    for (ushort const code : codes)
        text += QChar(code);
    return text;
}

QDateTime utc(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
}

} // namespace

static_assert(std::is_same_v<decltype(-std::declval<ExpressionHandle>()), UnaryOperator>);
static_assert(std::is_same_v<decltype(~std::declval<ExpressionHandle>()), UnaryOperator>);
static_assert(std::is_same_v<decltype(-std::declval<BaseProperty const&>()), UnaryOperator>);
static_assert(std::is_same_v<decltype(+std::declval<ExpressionHandle>()), ExpressionHandle>);
static_assert(std::is_same_v<decltype(+std::declval<BaseProperty const&>()), ValueExpression>);

class TestUnaryOperator : public QObject {
    Q_OBJECT

private slots:
    void operationNumbersAreStored();

    void value_data();
    void value();
    void valueOfAVariable_data();
    void valueOfAVariable();
    void momentIsMirroredAroundTheEpoch_data();
    void momentIsMirroredAroundTheEpoch();
    void textTwiceIsTheText_data();
    void textTwiceIsTheText();
    void textsSortInReverse();
    void constness_data();
    void constness();

    void print_data();
    void print();
    void placeholders();

    void builders_data();
    void builders();
    void plusIsTheOperandItself();

    void equality_data();
    void equality();
    void copies();

    void deepTree();
    void tooDeepTree();
};

void TestUnaryOperator::operationNumbersAreStored()
{
    QCOMPARE(static_cast<int>(UnaryOperator::Minus), 0);
    QCOMPARE(static_cast<int>(UnaryOperator::BitNot), 1);
}

void TestUnaryOperator::value_data()
{
    QTest::addColumn<QVariant>("operand");
    QTest::addColumn<QVariant>("minusValue");
    QTest::addColumn<QVariant>("bitNotValue");

    QVariant const invalid;
    QTest::newRow("int") << QVariant(5) << QVariant(-5) << QVariant(5);
    QTest::newRow("negative int") << QVariant(-5) << QVariant(5) << QVariant(-5);
    QTest::newRow("zero") << QVariant(0) << QVariant(0) << QVariant(0);
    QTest::newRow("lowest int wraps") << QVariant(typed::IntMin) << QVariant(typed::IntMin) << QVariant(typed::IntMin);
    QTest::newRow("unsigned that fits an int") << QVariant(5U) << QVariant(-5) << QVariant(5);
    QTest::newRow("unsigned that does not fit")
        << QVariant(0x7FFFFFFFU) << QVariant(Q_INT64_C(-0x7FFFFFFF)) << QVariant(0x7FFFFFFFU);
    QTest::newRow("64 bits") << QVariant(Q_INT64_C(5)) << QVariant(Q_INT64_C(-5)) << QVariant(Q_INT64_C(5));
    QTest::newRow("unsigned 64 bits that fit an int") << QVariant(Q_UINT64_C(5)) << QVariant(-5) << QVariant(5);
    QTest::newRow("highest unsigned 64 bits")
        << QVariant(typed::ULongMax) << QVariant(-18446744073709551615.0) << QVariant(typed::ULongMax);
    QTest::newRow("double") << QVariant(2.5) << QVariant(-2.5) << invalid;
    QTest::newRow("whole double") << QVariant(4.0) << QVariant(-4.0) << invalid;
    QTest::newRow("0.0 gets no sign") << QVariant(0.0) << QVariant(0.0) << invalid;
    QTest::newRow("infinity") << QVariant(typed::Inf) << QVariant(-typed::Inf) << invalid;
    QTest::newRow("text") << QVariant("abc") << QVariant(units({0xFF9E, 0xFF9D, 0xFF9C, 0xFFFF})) << invalid;
    QTest::newRow("empty text") << QVariant("") << QVariant(units({0xFFFF})) << invalid;
    QTest::newRow("text of a number") << QVariant("5") << QVariant(units({0xFFCA, 0xFFFF})) << invalid;
    QTest::newRow("truth value is a text")
        << QVariant(true) << QVariant(units({0xFF8B, 0xFF8D, 0xFF8A, 0xFF9A, 0xFFFF})) << invalid;
    QTest::newRow("invalid") << invalid << invalid << invalid;
    QTest::newRow("rectangle") << QVariant(QRect(0, 0, 1, 1)) << invalid << invalid;
    QTest::newRow("list") << QVariant(QVariantList{1, 2}) << invalid << invalid;
}

void TestUnaryOperator::value()
{
    QFETCH(QVariant, operand);
    QFETCH(QVariant, minusValue);
    QFETCH(QVariant, bitNotValue);
    QCOMPARE(typed::describe(minus(constant(operand)).evaluate({}, nullptr)), typed::describe(minusValue));
    QCOMPARE(typed::describe(bitNot(constant(operand)).evaluate({}, nullptr)), typed::describe(bitNotValue));
}

// The 0 to subtract from is a constant, so that it is its type that yields.
void TestUnaryOperator::valueOfAVariable_data()
{
    QTest::addColumn<QVariant>("operand");
    QTest::addColumn<QVariant>("minusValue");
    QTest::addColumn<QVariant>("bitNotValue");
    QTest::newRow("int") << QVariant(5) << QVariant(-5) << QVariant(5);
    QTest::newRow("unsigned") << QVariant(5U) << QVariant(Q_INT64_C(-5)) << QVariant(5U);
    QTest::newRow("64 bits") << QVariant(Q_INT64_C(5)) << QVariant(Q_INT64_C(-5)) << QVariant(Q_INT64_C(5));
    QTest::newRow("unsigned 64 bits") << QVariant(Q_UINT64_C(5)) << QVariant(-5.0) << QVariant(Q_UINT64_C(5));
    QTest::newRow("double") << QVariant(2.5) << QVariant(-2.5) << QVariant();
}

void TestUnaryOperator::valueOfAVariable()
{
    QFETCH(QVariant, operand);
    QFETCH(QVariant, minusValue);
    QFETCH(QVariant, bitNotValue);
    Counts counts;
    ExpressionHandle const variable = counted(counts, operand, false);
    QCOMPARE(typed::describe(minus(variable).evaluate({}, nullptr)), typed::describe(minusValue));
    QCOMPARE(typed::describe(bitNot(variable).evaluate({}, nullptr)), typed::describe(bitNotValue));
    QCOMPARE(counts.evaluations, 2);
}

// Moments come back as unsigned 32-bit seconds, so one before the epoch shows up 2^32 seconds later; one from before
// the epoch counts as the last of these seconds.
void TestUnaryOperator::momentIsMirroredAroundTheEpoch_data()
{
    QTest::addColumn<QVariant>("operand");
    QTest::addColumn<qint64>("seconds");
    qint64 const twoTo32 = Q_INT64_C(1) << 32;
    QTest::newRow("the epoch") << QVariant(utc(0)) << Q_INT64_C(0);
    QTest::newRow("moment after") << QVariant(utc(1577836800)) << twoTo32 - 1577836800;
    QTest::newRow("moment before") << QVariant(utc(-3600)) << Q_INT64_C(1);
    QTest::newRow("moment in local time") << QVariant(utc(1577836800).toLocalTime()) << twoTo32 - 1577836800;
    QTest::newRow("date") << QVariant(QDate(1970, 1, 3)) << twoTo32 - 172800;
    QTest::newRow("time") << QVariant(QTime(1, 0)) << twoTo32 - 3600;
}

void TestUnaryOperator::momentIsMirroredAroundTheEpoch()
{
    QFETCH(QVariant, operand);
    QVariant const mirrored = minus(constant(operand)).evaluate({}, nullptr);
    QCOMPARE(mirrored.type(), QVariant::DateTime);
    QTEST(mirrored.toDateTime().toSecsSinceEpoch(), "seconds");
    QVERIFY(!bitNot(constant(operand)).evaluate({}, nullptr).isValid());
}

void TestUnaryOperator::textTwiceIsTheText_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("word") << QStringLiteral("abc");
    QTest::newRow("umlauts and a surrogate pair") << QString::fromUtf8("\xC3\xA4\xF0\x9F\x98\x80");
}

void TestUnaryOperator::textTwiceIsTheText()
{
    QFETCH(QString, text);
    QCOMPARE(minus(minus(constant(text))).evaluate({}, nullptr), QVariant(text));
}

void TestUnaryOperator::textsSortInReverse()
{
    QStringList const sorted = {QString(), QStringLiteral("a"), QStringLiteral("ab"), QStringLiteral("b")};
    for (int i = 1; i < sorted.size(); ++i) {
        QString const lower = minus(constant(sorted.at(i - 1))).evaluate({}, nullptr).toString();
        QString const upper = minus(constant(sorted.at(i))).evaluate({}, nullptr).toString();
        QVERIFY(upper < lower);
    }
}

void TestUnaryOperator::constness_data()
{
    QTest::addColumn<int>("op");
    QTest::addColumn<QVariant>("operand");
    QTest::addColumn<bool>("operandConstant");
    QTest::addColumn<bool>("isConstant");
    QTest::newRow("minus constant number") << 0 << QVariant(5) << true << true;
    QTest::newRow("minus variable number") << 0 << QVariant(5) << false << false;
    QTest::newRow("not constant number") << 1 << QVariant(5) << true << true;
    QTest::newRow("not variable number") << 1 << QVariant(5) << false << false;
    QTest::newRow("not variable double") << 1 << QVariant(1.5) << false << false;
    QTest::newRow("minus constant date") << 0 << QVariant(QDate(2020, 1, 1)) << true << true;
    QTest::newRow("minus variable date") << 0 << QVariant(QDate(2020, 1, 1)) << false << false;
    QTest::newRow("minus constant text") << 0 << QVariant("abc") << true << true;
    QTest::newRow("minus variable text stays constant") << 0 << QVariant("abc") << false << true;
    QTest::newRow("not variable text stays constant") << 1 << QVariant("abc") << false << true;
    QTest::newRow("not variable date stays constant") << 1 << QVariant(QDate(2020, 1, 1)) << false << true;
    QTest::newRow("minus nothing stays constant") << 0 << QVariant() << false << true;
}

void TestUnaryOperator::constness()
{
    QFETCH(int, op);
    QFETCH(QVariant, operand);
    QFETCH(bool, operandConstant);
    QFETCH(bool, isConstant);
    Counts counts;
    bool reported = !isConstant;
    UnaryOperator(static_cast<UnaryOperator::UnaryOp>(op), counted(counts, operand, operandConstant))
        .evaluate({}, &reported);
    QCOMPARE(reported, isConstant);
}

void TestUnaryOperator::print_data()
{
    QTest::addColumn<ExpressionHandle>("node");
    QTest::addColumn<Expression::PrintStyle>("style");
    QTest::addColumn<QString>("text");

    ExpressionHandle const x = nodes::value("x");
    ExpressionHandle const sum = nodes::value("a") + nodes::value("b");
    auto const row = [](char const* name, ExpressionHandle const& node, Expression::PrintStyle style,
                         char const* text) { QTest::newRow(name) << node << style << QString::fromLatin1(text); };
    row("minus, plain", minus(x), Plain, "-x");
    row("minus in SQL", minus(x), Sql, "-x");
    row("minus in code", minus(x), Code, "-x");
    row("not, plain", bitNot(x), Plain, "~x");
    row("not in SQL", bitNot(x), Sql, "~x");
    row("not in code", bitNot(x), Code, "~x");
    row("minus of a compound", minus(sum), Sql, "-(a+b)");
    row("not of a compound", bitNot(sum), Code, "~(a+b)");
    row("minus of a not", minus(bitNot(x)), Sql, "-~x");
    row("minus, nested", minus(x), Sql | Nested, "-x");
    row("minus as operand", minus(x) * x, Sql, "-x*x");
    row("minus as sort term", minus(x), OrderTerm, "x DESC");
    row("minus as sort term, plain", minus(x), Expression::StyleOrderTerm, "x DESC");
    row("minus as sort term in code", minus(x), Code | Expression::StyleOrderTerm, "x DESC");
    row("not as sort term is the operand", bitNot(x), OrderTerm, "x");
    row("compound as sort term gets no parentheses", minus(sum), OrderTerm, "a+b DESC");
    row("nested compound as sort term", minus(sum), OrderTerm | Nested, "(a+b) DESC");
    row("not of a compound as sort term", bitNot(sum), OrderTerm, "a+b");
    row("list of sort terms", ExpressionList(x, minus(nodes::value("y"))), OrderTerm, "x,y DESC");
    row("list outside of an order", ExpressionList(x, minus(nodes::value("y"))), Sql, "x,-y");
}

void TestUnaryOperator::print()
{
    QFETCH(ExpressionHandle, node);
    QFETCH(Expression::PrintStyle, style);
    QTEST(node.toString(style), "text");
}

void TestUnaryOperator::placeholders()
{
    ExpressionHandle const node = minus(placeholder(5));
    QCOMPARE(node.toString(Bound), QStringLiteral("-?"));
    QCOMPARE(node.toString(Bound | Expression::StyleOrderTerm), QStringLiteral("? DESC"));
    QCOMPARE(node.collectPlaceholders(), (QVariantList{5}));
}

void TestUnaryOperator::builders_data()
{
    QTest::addColumn<ExpressionHandle>("built");
    QTest::addColumn<int>("op");
    QTest::addColumn<QString>("text");
    IntProperty const age(QStringLiteral("my age"), QString(), 0);
    BaseProperty const& base = age;
    ExpressionHandle const handle = nodes::value("h");
    QTest::newRow("- handle") << ExpressionHandle(-handle) << 0 << QStringLiteral("-h");
    QTest::newRow("- node") << ExpressionHandle(-nodes::value("n")) << 0 << QStringLiteral("-n");
    QTest::newRow("- arithmetic") << ExpressionHandle(-(handle + handle)) << 0 << QStringLiteral("-(h+h)");
    QTest::newRow("- property") << ExpressionHandle(-age) << 0 << QStringLiteral("-my_age");
    QTest::newRow("- base property") << ExpressionHandle(-base) << 0 << QStringLiteral("-my_age");
    QTest::newRow("~ handle") << ExpressionHandle(~handle) << 1 << QStringLiteral("~h");
    QTest::newRow("~ node") << ExpressionHandle(~nodes::value("n")) << 1 << QStringLiteral("~n");
    QTest::newRow("~ property") << ExpressionHandle(~age) << 1 << QStringLiteral("~my_age");
}

void TestUnaryOperator::builders()
{
    QFETCH(ExpressionHandle, built);
    QTEST(static_cast<int>(held<UnaryOperator>(built)->op()), "op");
    QTEST(built.toString(Sql), "text");
    QCOMPARE(operandCount(built), 1);
}

void TestUnaryOperator::plusIsTheOperandItself()
{
    ExpressionHandle const handle = nodes::value("h");
    QCOMPARE((+handle).constData(), handle.constData());
    ValueExpression const reference = +IntProperty(QStringLiteral("age"), QString(), 0);
    QCOMPARE(reference.name(), QStringLiteral("age"));
    QCOMPARE(reference.alias(), QString());
}

void TestUnaryOperator::equality_data()
{
    QTest::addColumn<ExpressionHandle>("other");
    QTest::addColumn<bool>("equal");
    ExpressionHandle const x = nodes::value("x");
    QTest::newRow("twin") << ExpressionHandle(minus(x)) << true;
    QTest::newRow("other operation") << ExpressionHandle(bitNot(x)) << false;
    QTest::newRow("other operand") << ExpressionHandle(minus(nodes::value("y"))) << false;
    QTest::newRow("twice") << ExpressionHandle(minus(minus(x))) << false;
    QTest::newRow("sum of the operand") << ExpressionHandle(NumericOperator(NumericOperator::Add).append(x)) << false;
    QTest::newRow("the operand") << x << false;
    QTest::newRow("list of the operand") << ExpressionHandle(ExpressionList(x)) << false;
}

void TestUnaryOperator::equality()
{
    QFETCH(ExpressionHandle, other);
    UnaryOperator const node = minus(nodes::value("x"));
    QTEST(node.equals(other.constData()), "equal");
    QTEST(other.constData()->equals(&node), "equal");
    QVERIFY(!node.equals(nullptr));
}

void TestUnaryOperator::copies()
{
    UnaryOperator const node = bitNot(nodes::value("x"));
    UnaryOperator copy = minus(nodes::value("y"));
    copy = node;
    QScopedPointer<UnaryOperator> const clone(copy.clone());
    QVERIFY(clone->equals(&node));
    QCOMPARE(clone->operands().at(0).constData(), node.operands().at(0).constData());
    QVERIFY(!clone->isEmpty());
}

void TestUnaryOperator::deepTree()
{
    ExpressionHandle tree = placeholder(7);
    for (int i = 1; i < Expression::MaxDepth; ++i)
        tree = bitNot(tree);
    QCOMPARE(tree.evaluate({}), QVariant(7));
    QCOMPARE(tree.toString(Bound), QString(999, QLatin1Char('~')) + QLatin1Char('?'));
    QCOMPARE(tree.collectPlaceholders(), (QVariantList{7}));
}

void TestUnaryOperator::tooDeepTree()
{
    ExpressionHandle tree = placeholder(7);
    for (int i = 0; i < 1000000; ++i)
        tree = minus(tree);
    QVERIFY(!tree.evaluate({}).isValid());
    QCOMPARE(tree.toString(Bound), QString());
    QVERIFY(tree.collectPlaceholders().isEmpty());
}

QTEST_APPLESS_MAIN(TestUnaryOperator)
#include "tst_UnaryOperator.moc"
