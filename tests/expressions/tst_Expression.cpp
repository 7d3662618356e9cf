// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "CountingNode.h"
#include "Nodes.h"

#include <QLocale>
#include <QTest>
#include <QTextStream>

#include <type_traits>

using namespace qvgen;
using namespace nodes;

static_assert(!std::is_convertible_v<ConstExpression, QString>, "a node is no text by itself");
static_assert(std::is_constructible_v<QString, ConstExpression const&>, "its SQL text is asked for");
static_assert(std::is_base_of_v<QSharedData, Expression>);
static_assert(std::is_abstract_v<Expression> && std::has_virtual_destructor_v<Expression>);
static_assert(sizeof(Expression::PrintStyle) == sizeof(int));

// Both leaves have Expression as a virtual base, so that a class may be both and still have one count.
class ConstantAndReference : public ConstExpression, public ValueExpression {
    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    ConstantAndReference* clone() const override;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
    void collectPlaceholders(QList<QVariant>& values) const override;
    bool isEmpty() const override;
    void write(QDataStream& out) const override;
    void read(QDataStream& in) override;
};
static_assert(std::is_convertible_v<ConstantAndReference*, Expression*>, "one base only");

class TestExpression : public QObject {
    Q_OBJECT

private slots:
    void styleBits_data();
    void styleBits();
    void styleBitOperators();

    void printedReference_data();
    void printedReference();
    void referenceTakesNameFromProperty();
    void evaluatedReference_data();
    void evaluatedReference();
    void entryWithoutPropertyHidesTheName();
    void referenceHasNoPlaceholders();

    void equality_data();
    void equality();
    void nullIsEqualToNothing();
    void staticEqualsOfNull();
    void emptiness_data();
    void emptiness();

    void textFormsAreSql();
    void numberFormatOfTheStreamIsNotUsed();
    void copyStartsWithoutHandles();
    void assignmentLeavesTheCount();
    void clientNodeWithoutPlaceholders();
};

void TestExpression::styleBits_data()
{
    QTest::addColumn<Expression::PrintStyle>("style");
    QTest::addColumn<int>("bits");
    QTest::newRow("code") << Expression::StyleCode << 0x1;
    QTest::newRow("SQL") << Expression::StyleSql << 0x2;
    QTest::newRow("placeholders") << Expression::StylePlaceholders << 0x4;
    QTest::newRow("order term") << Expression::StyleOrderTerm << 0x8;
    QTest::newRow("distinct") << Expression::StyleDistinct << 0x10;
    QTest::newRow("nested") << Expression::StyleNested << 0x800;
}

void TestExpression::styleBits()
{
    QFETCH(Expression::PrintStyle, style);
    QTEST(static_cast<int>(style), "bits");
}

void TestExpression::styleBitOperators()
{
    QCOMPARE(static_cast<int>(Sql | Nested), 0x802);
    QCOMPARE((Sql | Nested) & ~Nested, Sql);
    QCOMPARE(Sql ^ Sql, Plain);
    auto style = Plain;
    QCOMPARE(style |= Bound, Bound);
    QCOMPARE(style &= Sql, Sql);
    QCOMPARE(style ^= Sql | Code, Code);
}

void TestExpression::printedReference_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("alias");
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QString>("other");
    QTest::newRow("name") << "age"
                          << ""
                          << "age"
                          << "age";
    QTest::newRow("name with a blank") << "camera name"
                                       << ""
                                       << "camera_name"
                                       << "camera_name";
    QTest::newRow("alias") << "camera name"
                           << "cn"
                           << "camera_name AS cn"
                           << "camera_name";
    QTest::newRow("alias with a blank stays") << "a"
                                              << "c n"
                                              << "a AS c n"
                                              << "a";
    QTest::newRow("every blank, no other white space") << " a  b\tc "
                                                       << ""
                                                       << "_a__b\tc_"
                                                       << "_a__b\tc_";
    QTest::newRow("no name") << ""
                             << ""
                             << ""
                             << "";
    QTest::newRow("alias only") << ""
                                << "cn"
                                << " AS cn"
                                << "";
}

void TestExpression::printedReference()
{
    QFETCH(QString, name);
    QFETCH(QString, alias);
    ValueExpression const node(name, alias);
    QTEST(node.toString(Sql), "sql");
    QTEST(node.toString(Bound | Nested), "sql");
    QTEST(node.toString(Code), "other");
    QTEST(node.toString(Plain), "other");
}

void TestExpression::referenceTakesNameFromProperty()
{
    ValueExpression const node(IntProperty(QStringLiteral("age"), QString(), 5), QStringLiteral("years"));
    QCOMPARE(node.name(), QStringLiteral("age"));
    QCOMPARE(node.alias(), QStringLiteral("years"));
}

void TestExpression::evaluatedReference_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("alias");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("by name") << "age"
                             << "" << QVariant(42);
    QTest::newRow("alias before name") << "age"
                                       << "years" << QVariant(43);
    QTest::newRow("name where the alias is missing") << "age"
                                                     << "missing" << QVariant(42);
    QTest::newRow("alias where the name is missing") << "missing"
                                                     << "years" << QVariant(43);
    QTest::newRow("both missing") << "missing"
                                  << "gone" << QVariant();
    QTest::newRow("by its case") << "Age"
                                 << "" << QVariant();
    QTest::newRow("name with a blank") << "camera name"
                                       << "" << QVariant(QStringLiteral("Gate"));
    QTest::newRow("its printed form is no name") << "camera_name"
                                                 << "" << QVariant();
}

void TestExpression::evaluatedReference()
{
    QFETCH(QString, name);
    QFETCH(QString, alias);
    PropertySet set;
    add<IntProperty>(set, "age", 42);
    add<IntProperty>(set, "years", 43);
    add<StringProperty>(set, "camera name", QStringLiteral("Gate"));
    bool isConstant = true;
    QTEST(ValueExpression(name, alias).evaluate(set, &isConstant), "value");
    QVERIFY(!isConstant);
    QTEST(ValueExpression(name, alias).evaluate(set, nullptr), "value");
}

void TestExpression::entryWithoutPropertyHidesTheName()
{
    PropertySet set;
    add<IntProperty>(set, "age", 42);
    set.setVariantValues({{QStringLiteral("years"), 1}});
    QCOMPARE(ValueExpression(QStringLiteral("age"), QStringLiteral("years")).evaluate(set, nullptr), QVariant());
}

void TestExpression::referenceHasNoPlaceholders()
{
    QCOMPARE(value("age").collectPlaceholders(), QList<QVariant>());
}

void TestExpression::equality_data()
{
    QTest::addColumn<ExpressionHandle>("a");
    QTest::addColumn<ExpressionHandle>("b");
    QTest::addColumn<bool>("equal");
    auto const row = [](char const* name, ExpressionHandle const& a, ExpressionHandle const& b, bool equal) {
        QTest::newRow(name) << a << b << equal;
    };
    auto const reference = [](char const* name, char const* alias) {
        return ValueExpression(QLatin1String(name), QLatin1String(alias));
    };
    row("same constant", constant(5), constant(5), true);
    row("placeholder flag is not compared", constant(5), placeholder(5), true);
    row("another constant", constant(5), constant(6), false);
    row("numbers of other types, as variants compare", constant(5), constant(5LL), true);
    row("invalid constants", constant(QVariant()), constant(QVariant()), true);
    row("constant and reference", constant(QStringLiteral("a")), reference("a", ""), false);
    row("same reference", reference("a", "b"), reference("a", "b"), true);
    row("another alias", reference("a", "b"), reference("a", ""), false);
    row("another name", reference("a", "b"), reference("b", "b"), false);
    row("names that print alike", reference("a b", ""), reference("a_b", ""), false);
    row("reference and list of it", reference("a", ""), ExpressionList(ExpressionHandle(reference("a", ""))), false);
}

void TestExpression::equality()
{
    QFETCH(ExpressionHandle, a);
    QFETCH(ExpressionHandle, b);
    QTEST(Expression::equals(a.constData(), b.constData()), "equal");
    QTEST(Expression::equals(b.constData(), a.constData()), "equal");
    QTEST(qAsConst(a)->equals(b.constData()), "equal");
}

void TestExpression::nullIsEqualToNothing()
{
    Expression const* const none = nullptr;
    QVERIFY(!constant(5).equals(none));
    QVERIFY(!value("a").equals(none));
    QVERIFY(!toInt(constant(5)).equals(none));
    QVERIFY(!ExpressionList().equals(none));
}

void TestExpression::staticEqualsOfNull()
{
    ConstExpression const node = constant(5);
    QVERIFY(Expression::equals(nullptr, nullptr));
    QVERIFY(!Expression::equals(&node, nullptr));
    QVERIFY(!Expression::equals(nullptr, &node));
    QVERIFY(Expression::equals(&node, &node));
}

void TestExpression::emptiness_data()
{
    QTest::addColumn<ExpressionHandle>("node");
    QTest::addColumn<bool>("empty");
    auto const row
        = [](char const* name, ExpressionHandle const& node, bool empty) { QTest::newRow(name) << node << empty; };
    row("constant", constant(0), false);
    row("empty text", constant(QString()), false);
    row("null of a type", constant(QVariant(QVariant::Int)), false);
    row("invalid constant", constant(QVariant()), true);
    row("invalid placeholder", placeholder(QVariant()), true);
    row("reference", value("a"), false);
    row("reference without name", value(""), true);
    row("alias without name", ValueExpression(QString(), QStringLiteral("a")), true);
    row("cast", toInt(constant(0)), false);
    row("cast of an empty operand", toInt(value("")), true);
    row("cast of a cast of nothing", toInt(toBool(ExpressionHandle())), true);
    row("list", ExpressionList(ExpressionHandle(constant(0))), false);
    row("list without elements", ExpressionList(), true);
    row("list of an empty list", ExpressionList(ExpressionHandle(), ExpressionHandle()), false);
}

void TestExpression::emptiness()
{
    QFETCH(ExpressionHandle, node);
    QTEST(node.isEmpty(), "empty");
    QTEST(qAsConst(node)->isEmpty(), "empty");
}

void TestExpression::textFormsAreSql()
{
    ConstExpression const node = placeholder(QStringLiteral("it's"));
    QString streamed;
    QTextStream out(&streamed);
    out << node;
    out.flush();
    QCOMPARE(QString(node), QStringLiteral("'it''s'"));
    QCOMPARE(streamed, QStringLiteral("'it''s'"));
}

void TestExpression::numberFormatOfTheStreamIsNotUsed()
{
    QString text;
    QTextStream out(&text);
    out.setLocale(QLocale(QLocale::German, QLocale::Germany));
    out << ExpressionList(constant(QDate(1970, 1, 2)), constant(2.5)) << ';';
    out.setIntegerBase(16);
    out << ExpressionList(constant(QDate(1970, 1, 2)), constant(255));
    out.flush();
    QCOMPARE(text, QStringLiteral("86400000000,2.5;86400000000,255"));
}

void TestExpression::copyStartsWithoutHandles()
{
    ExpressionHandle const handle = toInt(constant(5));
    CastExpression const copy(*held<CastExpression>(handle));
    QCOMPARE(copy.ref.loadRelaxed(), 0);
    QCOMPARE(handle.constData()->ref.loadRelaxed(), 1);
}

void TestExpression::assignmentLeavesTheCount()
{
    ExpressionHandle handle = constant(1);
    ExpressionHandle const source = constant(2);
    ExpressionHandle const another = source;
    dynamic_cast<ConstExpression&>(*handle) = *held<ConstExpression>(source);
    QCOMPARE(handle.toString(Sql), QStringLiteral("2"));
    QCOMPARE(handle.constData()->ref.loadRelaxed(), 1);
    QCOMPARE(source.constData()->ref.loadRelaxed(), 2);
}

void TestExpression::clientNodeWithoutPlaceholders()
{
    Counts counts;
    QCOMPARE(CountingNode(counts).collectPlaceholders(), QList<QVariant>());
}

QTEST_APPLESS_MAIN(TestExpression)
#include "tst_Expression.moc"
