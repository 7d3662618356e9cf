// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "Nodes.h"

#include <QDate>
#include <QRegExp>
#include <QTest>

#include <cstddef>
#include <type_traits>

using namespace qvgen;
using namespace nodes;

namespace {

template <class L, class R, class = void> struct IsComparable : std::false_type {
};
template <class L, class R> struct IsComparable<L, R, std::void_t<decltype(std::declval<L>() == std::declval<R>())>>
    : std::true_type {
};

template <class L, class R> constexpr bool isComparator
    = std::is_same_v<decltype(std::declval<L>() == std::declval<R>()), Comparator>;

template <class T> constexpr bool isComparatorWithValue = isComparator<T, int>&& isComparator<int, T>;

} // namespace

static_assert(isComparator<ExpressionHandle, ExpressionHandle>, "handles are not compared as pointers");
static_assert(isComparator<ExpressionHandle&, ExpressionHandle const&>, "handles are not compared as pointers");
static_assert(isComparator<Comparator, Comparator>, "nodes are not compared as texts");
static_assert(isComparator<ValueExpression, ConstExpression>);
static_assert(isComparator<Expression const&, Expression const&>);
static_assert(isComparator<BaseProperty&, BaseProperty&>);
static_assert(isComparator<BaseProperty const&, ExpressionHandle>);
static_assert(isComparatorWithValue<ValueExpression>, "node == 5 is no comparison of texts");
static_assert(isComparatorWithValue<Comparator>);
static_assert(isComparatorWithValue<ExpressionHandle>);
static_assert(isComparatorWithValue<IntProperty const&>);
static_assert(isComparator<ValueExpression, QString>, "not a comparison with its printed text");
static_assert(!IsComparable<ExpressionHandle, std::nullptr_t>::value);
static_assert(!IsComparable<ExpressionHandle, Expression const*>::value);
static_assert(!IsComparable<ExpressionHandle, int*>::value);
static_assert(!IsComparable<IntProperty const&, int const*>::value, "a pointer is no truth value");
static_assert(!IsComparable<int PropertySet::*, ExpressionHandle>::value);
static_assert(!IsComparable<ExpressionHandle, void (&)()>::value);
static_assert(!IsComparable<ExpressionHandle, PropertySet>::value);
static_assert(std::is_same_v<decltype(std::declval<PropertySet>() == std::declval<PropertySet>()), bool>);
static_assert(
    std::is_same_v<decltype(std::declval<ExpressionHandle>() << std::declval<BaseProperty&>()), ExpressionList>);

/// Every pair of arguments that an operator takes, with the tree it gives.
class TestOverloads : public QObject {
    Q_OBJECT

private slots:
    void comparison_data();
    void comparison();
    void plainValue_data();
    void plainValue();
    void propertyBecomesAReferenceWithoutAlias();
    void listOfTwo_data();
    void listOfTwo();
    void conditionsOnASet();
    void streamsTakeNodes();

private:
    template <class Left, class Right> static void row(char const* name, Left const& left, Right const& right,
        char const* leftText, char const* rightText, QList<QVariant> const& placeholders = {});
};

template <class Left, class Right> void TestOverloads::row(char const* name, Left const& left, Right const& right,
    char const* leftText, char const* rightText, QList<QVariant> const& placeholders)
{
    QList<ExpressionHandle> const built
        = {left<right, left <= right, left == right, left != right, left >= right, left> right};
    QTest::newRow(name) << built << QString::fromLatin1(leftText) << QString::fromLatin1(rightText) << placeholders;
}

void TestOverloads::comparison_data()
{
    QTest::addColumn<QList<ExpressionHandle>>("built");
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<QList<QVariant>>("placeholders");

    IntProperty const age(QStringLiteral("age"), QString(), 0);
    StringProperty const name(QStringLiteral("full name"), QString(), QString());
    BaseProperty const& base = age;
    ExpressionHandle const handle = value("h");
    ValueExpression const node = value("n");
    QString const text = QStringLiteral("x");

    row("handle, handle", handle, handle, "h", "h");
    row("handle, node", handle, node, "h", "n");
    row("node, handle", node, handle, "n", "h");
    row("node, node", node, toInt(node), "n", "CAST(n AS int)");
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
    row("handle, variant", handle, QVariant(18), "h", "?", {18});
    row("handle, int", handle, 18, "h", "?", {18});
    row("handle, long", handle, 18L, "h", "?", {18LL});
    row("handle, size", handle, std::size_t(18), "h", "?", {18ULL});
    row("handle, double", handle, 1.5, "h", "?", {1.5});
    row("handle, bool", handle, true, "h", "?", {true});
    row("handle, text", handle, text, "h", "?", {text});
    row("handle, literal", handle, "x", "h", "?", {text});
    row("node, variant", node, QVariant(18), "n", "?", {18});
    row("node, int", node, 18, "n", "?", {18});
    row("node, long", node, 18L, "n", "?", {18LL});
    row("node, size", node, std::size_t(18), "n", "?", {18ULL});
    row("node, double", node, 1.5, "n", "?", {1.5});
    row("node, bool", node, true, "n", "?", {true});
    row("node, text", node, text, "n", "?", {text});
    row("node, literal", node, "x", "n", "?", {text});
    row("variant, property", QVariant(18), age, "?", "age", {18});
    row("int, property", 18, age, "?", "age", {18});
    row("long, property", 18L, age, "?", "age", {18LL});
    row("size, property", std::size_t(18), age, "?", "age", {18ULL});
    row("double, property", 1.5, age, "?", "age", {1.5});
    row("bool, property", true, age, "?", "age", {true});
    row("text, property", text, name, "?", "full_name", {text});
    row("literal, property", "x", name, "?", "full_name", {text});
    row("variant, handle", QVariant(18), handle, "?", "h", {18});
    row("int, handle", 18, handle, "?", "h", {18});
    row("size, handle", std::size_t(18), handle, "?", "h", {18ULL});
    row("text, handle", text, handle, "?", "h", {text});
    row("int, node", 18, node, "?", "n", {18});
    row("bool, node", true, node, "?", "n", {true});
    row("literal, node", "x", node, "?", "n", {text});
    row("date, property", QDate(1970, 1, 2), age, "?", "age", {86400000000LL});
}

void TestOverloads::comparison()
{
    QFETCH(QList<ExpressionHandle>, built);
    QFETCH(QString, left);
    QFETCH(QString, right);
    QStringList const signs = {QStringLiteral(" < "), QStringLiteral(" <= "), QStringLiteral(" = "),
        QStringLiteral(" != "), QStringLiteral(" >= "), QStringLiteral(" > ")};
    QCOMPARE(built.size(), signs.size());
    for (int i = 0; i < signs.size(); ++i) {
        QCOMPARE(built.at(i).toString(Bound), left + signs.at(i) + right);
        QTEST(built.at(i).collectPlaceholders(), "placeholders");
    }
}

// A value keeps its kind: a literal is a text, not a truth value, and a long is no double.
void TestOverloads::plainValue_data()
{
    enum Channel { SecondChannel = 2 };
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<QVariant>("value");
    auto const with = [](char const* name, auto const& plain, QVariant const& expected) {
        QTest::newRow(name) << ExpressionHandle(value("a") == plain) << expected;
    };
    with("int", 18, 18);
    with("unsigned", 18U, 18U);
    with("short", short(18), 18);
    with("long", 18L, 18LL);
    with("unsigned long", 18UL, 18ULL);
    with("long long", 18LL, 18LL);
    with("unsigned long long", ~0ULL, ~0ULL);
    with("size", std::size_t(18), 18ULL);
    with("double", 1.5, 1.5);
    with("float", 1.5F, QVariant(1.5F));
    with("bool", true, true);
    with("text", QStringLiteral("it's"), QStringLiteral("it's"));
    with("literal", "it's", QStringLiteral("it's"));
    with("empty literal", "", QStringLiteral(""));
    with("Latin-1 literal", QLatin1String("x"), QStringLiteral("x"));
    with("bytes", QByteArray("x"), QByteArray("x"));
    with("character", QChar('x'), QChar('x'));
    with("enumerator", SecondChannel, 2);
    with("date", QDate(2020, 1, 1), QDate(2020, 1, 1));
    with("list", QVariantList{1, 2}, QVariantList{1, 2});
    with("texts", QStringList{QStringLiteral("x")}, QStringList{QStringLiteral("x")});
    with("pattern", QRegExp(QStringLiteral("a.*")), QRegExp(QStringLiteral("a.*")));
    with("variant", QVariant(2.5), 2.5);
}

void TestOverloads::plainValue()
{
    QFETCH(ExpressionHandle, tree);
    QFETCH(QVariant, value);
    auto const* const right = held<ConstExpression>(held<Operator>(tree)->operands().at(1));
    QVERIFY(right->isPlaceholder());
    QCOMPARE(right->value(), value);
    QCOMPARE(right->value().userType(), value.userType());
}

void TestOverloads::propertyBecomesAReferenceWithoutAlias()
{
    IntProperty const age(QStringLiteral("age"), QString(), 0);
    Comparator const node = age < age;
    for (ExpressionHandle const& side : node.operands()) {
        QCOMPARE(held<ValueExpression>(side)->name(), QStringLiteral("age"));
        QVERIFY(held<ValueExpression>(side)->alias().isEmpty());
    }
}

void TestOverloads::listOfTwo_data()
{
    QTest::addColumn<ExpressionHandle>("list");
    QTest::addColumn<QString>("text");
    IntProperty const age(QStringLiteral("age"), QString(), 0);
    StringProperty const name(QStringLiteral("full name"), QString(), QString());
    BaseProperty const& base = age;
    ExpressionHandle const handle = value("h");
    ConstExpression const node = constant(5);
    ExpressionList const pair(handle, node);
    auto const with = [](char const* rowName, ExpressionList const& list, char const* text) {
        QTest::newRow(rowName) << ExpressionHandle(list) << QString::fromLatin1(text);
    };
    with("property, property", age << name, "age,full_name");
    with("base property, base property", base << base, "age,age");
    with("handle, property", handle << age, "h,age");
    with("property, handle", age << handle, "age,h");
    with("handle, handle", handle << handle, "h,h");
    with("handle, node", handle << node, "h,5");
    with("node, handle", node << handle, "5,h");
    with("node, node", node << toInt(node), "5,CAST(5 AS int)");
    with("node, property", node << age, "5,age");
    with("property, node", age << node, "age,5");
    with("list, property", pair << age, "h,5,age");
    with("property, list", age << pair, "age,h,5");
    with("list, list", pair << pair, "h,5,h,5");
    with("three", age << name << handle, "age,full_name,h");
}

void TestOverloads::listOfTwo()
{
    QFETCH(ExpressionHandle, list);
    QCOMPARE(operandCount(list), 2);
    QTEST(list.toString(Sql), "text");
}

void TestOverloads::conditionsOnASet()
{
    PropertySet set;
    add<IntProperty>(set, "age", 20);
    add<StringProperty>(set, "name", QStringLiteral("y"));
    PropertySet const& constantSet = set;
    BooleanOperator const adult = set["age"] >= 18 && set["name"] != QString("x");
    BooleanOperator const minor = constantSet["age"] < 18 || constantSet["name"] == "x";
    QCOMPARE(adult.toString(Bound), QStringLiteral("age >= ? AND name != ?"));
    QCOMPARE(adult.collectPlaceholders(), QList<QVariant>({18, QStringLiteral("x")}));
    QCOMPARE(adult.evaluate(set, nullptr), QVariant(true));
    QCOMPARE(minor.evaluate(set, nullptr), QVariant(false));
    QCOMPARE((!(set["age"] == set["name"])).toString(Sql), QStringLiteral(" NOT age = name"));
}

void TestOverloads::streamsTakeNodes()
{
    QString text;
    QTextStream texts(&text);
    texts << (value("a") == 5) << ';' << (value("a") << value("b")) << ';' << ExpressionHandle(constant(1));
    texts.flush();
    QCOMPARE(text, QStringLiteral("a = 5;a,b;1"));
}

QTEST_APPLESS_MAIN(TestOverloads)
#include "tst_Overloads.moc"
