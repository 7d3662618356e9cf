// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/TypeTool.h>

#include "TypedVariant.h"

#include <QtTest>

using qvgen::TypeTool;
using namespace typed;

namespace {

/// What compare() gives for two values that have no order.
constexpr int NoOrder = 0;

/// One apart. With the left one constant they meet in ULongLong, which compares as double and finds no difference; with
/// the right one constant they meet in LongLong, which is exact.
QVariant const OddLong(Q_INT64_C(9007199254740993));
QVariant const EvenULong(Q_UINT64_C(9007199254740992));

int sign(int number)
{
    return number < 0 ? -1 : number > 0;
}

QVariantList nested(int depth, QVariant const& innermost)
{
    QVariantList list{innermost};
    for (int i = 1; i < depth; ++i)
        list = QVariantList{QVariant(list)};
    return list;
}

void orderRow(char const* name, QVariant const& a, QVariant const& b, int order)
{
    QTest::newRow(name) << a << b << order;
}

void orderColumns()
{
    QTest::addColumn<QVariant>("a");
    QTest::addColumn<QVariant>("b");
    QTest::addColumn<int>("order");
}

void equalRow(char const* name, QVariant const& a, QVariant const& b, bool equal, bool ok)
{
    QTest::newRow(name) << a << b << equal << ok;
}

} // namespace

class TestTypeToolOrder : public QObject {
    Q_OBJECT

private slots:
    void numbers_data();
    void numbers();
    void constantNumbers_data();
    void constantNumbers();
    void texts_data();
    void texts();
    void withoutOrder_data();
    void withoutOrder();
    void successFollowsFailure();

    void lists_data();
    void lists();
    void listEndsWhereNoOrderIs();
    void nestedLists();

    void equality_data();
    void equality();
    void outcomeFallback_data();
    void outcomeFallback();
    void equalityUsesConstants();

    void membership_data();
    void membership();
    void membershipStopsAtTheFirstHit();
    void emptyListsAreNoFailure();
    void elementIsTheLeftOperand();
};

void TestTypeToolOrder::numbers_data()
{
    orderColumns();
    orderRow("ints give their difference", 5, 3, 2);
    orderRow("ints, negative", 3, 5, -2);
    orderRow("ints, equal", 5, 5, 0);
    orderRow("ints clamp up", IntMax, IntMin, IntMax);
    orderRow("ints clamp down", IntMin, IntMax, IntMin);
    orderRow("ints, exactly the lowest", IntMin, 0, IntMin);
    orderRow("ints, exactly the highest", IntMax, 0, IntMax);
    orderRow("ints, one beyond the highest", IntMax, -1, IntMax);
    orderRow("uints", 3u, 5u, -2);
    orderRow("uints clamp", 0u, UIntMax, IntMin);
    orderRow("int and uint meet in longlong", -1, UIntMax, IntMin);
    orderRow("longlongs", 5ll, 3ll, 2);
    orderRow("longlongs clamp", 0x100000000ll, 0ll, IntMax);
    orderRow("longlongs, difference beyond 64 bits keeps its sign", LongMax, LongMin, IntMax);
    orderRow("longlongs, negative difference beyond 64 bits", LongMin, LongMax, IntMin);
    orderRow("longlongs, lowest and one", LongMin, 1ll, IntMin);
    orderRow("ulonglongs", 3ull, 5ull, -2);
    orderRow("ulonglongs clamp up", ULongMax, 0ull, IntMax);
    orderRow("ulonglongs clamp down", 0ull, ULongMax, IntMin);
    orderRow("ulonglongs compare as doubles", 9223372036854775808ull, 9223372036854775809ull, 0);
    orderRow("longlongs compare exactly", 9007199254740993ll, 9007199254740992ll, 1);

    orderRow("doubles closer than one", 1.2, 1.9, 0);
    orderRow("doubles closer than one, reversed", 1.9, 1.2, 0);
    orderRow("doubles truncate", 1.0, 2.5, -1);
    orderRow("doubles truncate, reversed", 2.5, 1.0, 1);
    orderRow("doubles exactly one apart", 2.0, 1.0, 1);
    orderRow("doubles clamp up", 1e10, 0.0, IntMax);
    orderRow("doubles clamp down", -1e10, 0.0, IntMin);
    orderRow("doubles just above the highest", 2147483647.5, 0.0, IntMax);
    orderRow("doubles just below the lowest", -2147483648.5, 0.0, IntMin);
    orderRow("doubles just inside", -2147483647.5, 0.0, -2147483647);
    orderRow("infinity is after all", Inf, 1e300, IntMax);
    orderRow("minus infinity is before all", -Inf, -1e300, IntMin);
    orderRow("NaN on the left", NaN, 1.0, IntMin);
    orderRow("NaN on the right", 1.0, NaN, IntMin);
    orderRow("NaN with itself", NaN, NaN, IntMin);
    orderRow("infinity with itself is NaN", Inf, Inf, IntMin);
    orderRow("int and double", 5, 5.9, 0);
    orderRow("double and ulonglong", 0.0, ULongMax, IntMin);
}

void TestTypeToolOrder::numbers()
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    TypeTool tool(false, false);
    QTEST(tool.compare(a, b), "order");
    QVERIFY(tool.wasOK());
}

void TestTypeToolOrder::constantNumbers_data()
{
    QTest::addColumn<bool>("left");
    QTest::addColumn<bool>("right");
    orderColumns();
    QTest::newRow("constant int, ulonglong") << true << false << QVariant(10) << QVariant(9ull) << 1;
    QTest::newRow("int, constant ulonglong") << false << true << QVariant(-1) << QVariant(9ull) << -10;
    QTest::newRow("ulonglong, constant int") << false << true << QVariant(ULongMax) << QVariant(9) << IntMax;
    QTest::newRow("constant ulonglong, longlong") << true << false << QVariant(9ull) << QVariant(-1ll) << 10;
    QTest::newRow("two constants") << true << true << QVariant(9ull) << QVariant(10) << -1;
}

void TestTypeToolOrder::constantNumbers()
{
    QFETCH(bool, left);
    QFETCH(bool, right);
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    QTEST(TypeTool(left, right).compare(a, b), "order");
}

void TestTypeToolOrder::texts_data()
{
    orderColumns();
    orderRow("before", "abc", "abd", -1);
    orderRow("after", "b", "abc", 1);
    orderRow("equal", "abc", "abc", 0);
    orderRow("prefix is before", "ab", "abc", -1);
    orderRow("empty is before", "", "a", -1);
    orderRow("empty and null are equal", "", QString(), 0);
    orderRow("case counts", "B", "a", -1);
    orderRow("umlaut by code unit", QString::fromUtf8("Ä"), "z", 1);
    orderRow("surrogates by code unit", QString::fromUtf8("\U00010000"), QString(QChar(0xFF5E)), -1);
    orderRow("numeric texts are texts", "10", "9", -1);
    orderRow("text and int", "10", 9, -1);
    orderRow("int and ulonglong have no common type", 5, 7ull, -1);
    orderRow("numbers without common type compare as texts", 10, 9ull, -1);
    orderRow("negative number without common type", -5, 7ull, -1);
    orderRow("bools as texts", false, true, -1);
    orderRow("bool and int", true, 1, 1);
    orderRow("date and text", QDate(2020, 1, 1), "2020-01-01", 0);
    orderRow("date and later text", QDate(2020, 1, 1), "2020-01-02", -1);
    orderRow("byte array and text", QByteArray("a"), "b", -1);
    orderRow("characters", QChar('b'), QChar('a'), 1);
    orderRow("floats as texts", 10.0f, 9.0f, -1);
    orderRow("list of one text, and text", QStringList({"a"}), "a", 0);
}

void TestTypeToolOrder::texts()
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    TypeTool tool(false, false);
    QTEST(sign(tool.compare(a, b)), "order");
    QVERIFY(tool.wasOK());
}

void TestTypeToolOrder::withoutOrder_data()
{
    QTest::addColumn<QVariant>("a");
    QTest::addColumn<QVariant>("b");
    QTest::newRow("rectangles") << QVariant(QRect(0, 0, 1, 1)) << QVariant(QRect());
    QTest::newRow("rectangle and int") << QVariant(QRect()) << QVariant(5);
    QTest::newRow("int and rectangle") << QVariant(5) << QVariant(QRect());
    QTest::newRow("invalid and int") << QVariant() << QVariant(5);
    QTest::newRow("invalid and invalid") << QVariant() << QVariant();
    QTest::newRow("maps") << QVariant(QVariantMap()) << QVariant(QVariantMap());
    QTest::newRow("list and text") << QVariant(QVariantList({"a"})) << QVariant("a");
    QTest::newRow("list of two texts, and text") << QVariant(QStringList({"a", "b"})) << QVariant("a");
    QTest::newRow("date and list") << QVariant(QDate(2020, 1, 1)) << QVariant(QVariantList());
    QTest::newRow("date and invalid") << QVariant(QDate(2020, 1, 1)) << QVariant();
}

void TestTypeToolOrder::withoutOrder()
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    TypeTool tool(true, true);
    QCOMPARE(tool.compare(a, b), NoOrder);
    QVERIFY(!tool.wasOK());
}

void TestTypeToolOrder::successFollowsFailure()
{
    TypeTool tool(false, false);
    tool.compare(QRect(), 5);
    QCOMPARE(tool.compare(5, 3), 2);
    QVERIFY(tool.wasOK());
}

void TestTypeToolOrder::lists_data()
{
    QTest::addColumn<QVariantList>("left");
    QTest::addColumn<QVariantList>("right");
    QTest::addColumn<int>("order");
    QTest::newRow("left is a beginning of right") << QVariantList{1, 2} << QVariantList{1, 2, 3} << IntMin;
    QTest::newRow("right is a beginning of left") << QVariantList{1, 2, 3} << QVariantList{1, 2} << IntMax;
    QTest::newRow("equal") << QVariantList{1, 2} << QVariantList{1, 2} << 0;
    QTest::newRow("both empty") << QVariantList{} << QVariantList{} << 0;
    QTest::newRow("left empty") << QVariantList{} << QVariantList{1} << IntMin;
    QTest::newRow("right empty") << QVariantList{1} << QVariantList{} << IntMax;
    QTest::newRow("first difference decides") << QVariantList{1, 7, 0} << QVariantList{1, 5, 9} << 2;
    QTest::newRow("difference before length") << QVariantList{1} << QVariantList{4, 0} << -3;
    QTest::newRow("elements of several types") << QVariantList{1, "a", 2.5} << QVariantList{1u, "a", 1.0} << 1;
    QTest::newRow("inner lists") << QVariantList{QVariant(QVariantList{1, 2})}
                                 << QVariantList{QVariant(QVariantList{1, 2, 3})} << IntMin;
    QTest::newRow("inner list of texts") << QVariantList{QVariant(QStringList{"a"})}
                                         << QVariantList{QVariant(QVariantList{"a"})} << 0;
}

void TestTypeToolOrder::lists()
{
    QFETCH(QVariantList, left);
    QFETCH(QVariantList, right);
    TypeTool tool(false, false);
    QTEST(tool.compareList(left, right), "order");
    QVERIFY(tool.wasOK());
    QTEST(tool.compare(left, right), "order");
}

void TestTypeToolOrder::listEndsWhereNoOrderIs()
{
    QVariantList const left{1, QRect(), 3};
    QVariantList const right{1, QRect(), 4, 5};
    TypeTool tool(false, false);
    QCOMPARE(tool.compareList(left, right), NoOrder);
    QVERIFY(!tool.wasOK());
}

void TestTypeToolOrder::nestedLists()
{
    TypeTool tool(false, false);
    QCOMPARE(tool.compareList(nested(500, 1), nested(500, 3)), -2);
    QVERIFY(tool.wasOK());
    QCOMPARE(tool.compareList(nested(500, 1), nested(501, 1)), NoOrder);
    QVERIFY(!tool.wasOK());
}

void TestTypeToolOrder::equality_data()
{
    QTest::addColumn<QVariant>("a");
    QTest::addColumn<QVariant>("b");
    QTest::addColumn<bool>("equal");
    QTest::addColumn<bool>("ok");
    equalRow("ints", 5, 5, true, true);
    equalRow("other ints", 5, 6, false, true);
    equalRow("int and double", 5, 5.0, true, true);
    equalRow("doubles closer than one", 1.2, 1.9, true, true);
    equalRow("NaN is not itself", NaN, NaN, false, true);
    equalRow("longlongs far apart", LongMax, LongMin, false, true);
    equalRow("numbers without common type, as texts", 7, 7ull, true, true);
    equalRow("texts", "abc", "abc", true, true);
    equalRow("other case", "abc", "ABC", false, true);
    equalRow("text and number", "5", 5, true, true);
    equalRow("null text and empty text", QString(), "", true, true);
    equalRow("bool and its text", true, "true", true, true);
    equalRow("date and milliseconds", QDate(1970, 1, 2), 86400000, true, true);
    equalRow("lists", QVariantList({1, 2}), QVariantList({1, 2}), true, true);
    equalRow("longer list", QVariantList({1, 2}), QVariantList({1, 2, 3}), false, true);
    equalRow("list and list of texts", QVariantList({"a"}), QStringList({"a"}), true, true);
}

void TestTypeToolOrder::equality()
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    TypeTool tool(false, false);
    QTEST(tool.equals(a, b), "equal");
    QTEST(tool.wasOK(), "ok");
}

// Values without an order are equal where both or neither convert to the common type; their content is not looked at.
void TestTypeToolOrder::outcomeFallback_data()
{
    QTest::addColumn<QVariant>("a");
    QTest::addColumn<QVariant>("b");
    QTest::addColumn<bool>("equal");
    QTest::addColumn<bool>("ok");
    QVariantList const small{QRect(0, 0, 1, 1)};
    QVariantList const large{QRect(0, 0, 9, 9)};
    // The one kind of value here that does not convert although its type does.
    QVariant const nullText(QVariant::String);
    equalRow("equal rectangles", QRect(0, 0, 1, 1), QRect(0, 0, 1, 1), true, true);
    equalRow("different rectangles", QRect(0, 0, 1, 1), QRect(5, 5, 9, 9), true, true);
    equalRow("different maps", QVariantMap({{"a", 1}}), QVariantMap(), true, true);
    equalRow("lists of different rectangles", small, large, true, true);
    equalRow("lists of rectangles, one longer", small, large + large, true, true);
    equalRow("lists that differ before the rectangle", QVariantList{1} + small, QVariantList{2} + small, false, true);
    equalRow("lists of rectangle and int", small, QVariantList{1}, true, true);
    equalRow("text and list of other texts", "x", QStringList({"a", "b"}), true, true);
    equalRow("list of texts, and other text", QStringList({"a", "b"}), "x", true, true);
    equalRow("text variant without a value, and list of texts", nullText, QStringList({"a", "b"}), false, true);
    equalRow("list of texts, and text variant without a value", QStringList({"a", "b"}), nullText, false, true);
    equalRow("rectangle and int", QRect(), 5, false, false);
    equalRow("list and int", QVariantList({5}), 5, false, false);
    equalRow("map and text", QVariantMap(), "a", false, false);
    equalRow("int and invalid", 5, QVariant(), false, false);
    equalRow("invalid and invalid", QVariant(), QVariant(), false, false);
}

void TestTypeToolOrder::outcomeFallback()
{
    equality();
}

void TestTypeToolOrder::equalityUsesConstants()
{
    QVERIFY(TypeTool(true, false).equals(OddLong, EvenULong));
    QVERIFY(!TypeTool(false, true).equals(OddLong, EvenULong));
}

void TestTypeToolOrder::membership_data()
{
    QTest::addColumn<QVariantList>("list");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("contained");
    QTest::newRow("first") << QVariantList{5, 6, 7} << QVariant(5) << true;
    QTest::newRow("last") << QVariantList{5, 6, 7} << QVariant(7) << true;
    QTest::newRow("none") << QVariantList{5, 6, 7} << QVariant(8) << false;
    QTest::newRow("empty list") << QVariantList{} << QVariant(5) << false;
    QTest::newRow("other type, equal as text") << QVariantList{"5"} << QVariant(5) << true;
    QTest::newRow("double closer than one") << QVariantList{1.2} << QVariant(1.9) << true;
    QTest::newRow("any rectangle") << QVariantList{QRect()} << QVariant(QRect(0, 0, 1, 1)) << true;
    QTest::newRow("behind what has no order") << QVariantList{QRect(), 5} << QVariant(5) << true;
    QTest::newRow("invalid value") << QVariantList{5, QVariant()} << QVariant() << false;
    QTest::newRow("date by milliseconds") << QVariantList{86400000} << QVariant(QDate(1970, 1, 2)) << true;
}

void TestTypeToolOrder::membership()
{
    QFETCH(QVariantList, list);
    QFETCH(QVariant, value);
    QTEST(TypeTool(false, false).contains(list, value), "contained");
}

void TestTypeToolOrder::membershipStopsAtTheFirstHit()
{
    TypeTool tool(false, false);
    QVERIFY(tool.contains({5, QRect()}, 5));
    QVERIFY(tool.wasOK());
}

void TestTypeToolOrder::emptyListsAreNoFailure()
{
    TypeTool tool(false, false);
    tool.compare(QRect(), 5);
    QVERIFY(!tool.contains({}, 5));
    QVERIFY(tool.wasOK());
    tool.compare(QRect(), 5);
    QCOMPARE(tool.compareList({}, {}), 0);
    QVERIFY(tool.wasOK());
}

void TestTypeToolOrder::elementIsTheLeftOperand()
{
    QVERIFY(TypeTool(true, false).contains({OddLong}, EvenULong));
    QVERIFY(!TypeTool(false, true).contains({OddLong}, EvenULong));
}

QTEST_GUILESS_MAIN(TestTypeToolOrder)
#include "tst_TypeToolOrder.moc"
