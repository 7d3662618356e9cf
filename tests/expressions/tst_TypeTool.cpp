// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/TypeTool.h>

#include <qvbase/Exceptions.h>

#include "TypedVariant.h"

#include <QRandomGenerator>
#include <QtTest>

#include <support/Random.h>

using qvgen::TypeTool;
using namespace typed;

namespace {

constexpr int N = QVariant::Invalid;
constexpr int I = QVariant::Int;
constexpr int U = QVariant::UInt;
constexpr int L = QVariant::LongLong;
constexpr int X = QVariant::ULongLong;
constexpr int D = QVariant::Double;

using Operation = QVariant (TypeTool::*)(QVariant const&, QVariant const&);

struct NamedOperation {
    char const* name;
    Operation apply;
};

NamedOperation const Operations[] = {
    {"add", &TypeTool::do_add},
    {"subtract", &TypeTool::do_subtract},
    {"multiply", &TypeTool::do_multiply},
    {"divide", &TypeTool::do_divide},
    {"modulo", &TypeTool::do_modulo},
    {"bitand", &TypeTool::do_bitand},
    {"bitor", &TypeTool::do_bitor},
    {"bitxor", &TypeTool::do_bitxor},
};

/// The common type for each setting of the two constant flags.
void coercion(char const* name, QVariant const& a, QVariant const& b, int none, int left, int right, int both)
{
    QTest::newRow(name) << a << b << QVector<int>{none, left, right, both};
}

int sign(int number)
{
    return number < 0 ? -1 : number > 0;
}

/// Without the units 0 and 0xFFFF; of few different units, so that common beginnings are frequent.
QString randomText(QRandomGenerator& random)
{
    QString text(random.bounded(6), QLatin1Char('a'));
    for (QChar& unit : text)
        unit = QChar(random.bounded(4) == 0 ? random.bounded(1, 0xFFFF) : random.bounded(int('a'), int('d')));
    return text;
}

} // namespace

class TestTypeTool : public QObject {
    Q_OBJECT

private slots:
    void classConstants();
    void startsOK();
    void typeGroups_data();
    void typeGroups();

    void numericCoercion_data();
    void numericCoercion();
    void otherCoercion_data();
    void otherCoercion();

    void eachOperationSetsTheFlagAnew_data();
    void eachOperationSetsTheFlagAnew();
    void copyKeepsTheState();
    void returnOK();
    void throwOKPassesAfterSuccess();
    void throwOKThrowsAfterFailure();

    void inversion_data();
    void inversion();
    void inversionUndoesItself();
    void inversionReversesOrder();
};

void TestTypeTool::classConstants()
{
    QVERIFY(!TypeTool::INVALID.isValid());
    QCOMPARE(TypeTool::EPOCH, QDate(1970, 1, 1));
    QCOMPARE(TypeTool::MIDNIGHT, QTime(0, 0, 0, 0));
}

void TestTypeTool::startsOK()
{
    for (bool left : {false, true})
        for (bool right : {false, true})
            QVERIFY(TypeTool(left, right).wasOK());
}

void TestTypeTool::typeGroups_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("numeric");
    QTest::addColumn<bool>("date");
    QTest::addColumn<bool>("list");
    QTest::newRow("Invalid") << 0 << false << false << false;
    QTest::newRow("Bool") << 1 << false << false << false;
    QTest::newRow("Int") << 2 << true << false << false;
    QTest::newRow("UInt") << 3 << true << false << false;
    QTest::newRow("LongLong") << 4 << true << false << false;
    QTest::newRow("ULongLong") << 5 << true << false << false;
    QTest::newRow("Double") << 6 << true << false << false;
    QTest::newRow("Char") << 7 << false << false << false;
    QTest::newRow("Map") << 8 << false << false << false;
    QTest::newRow("List") << 9 << false << false << true;
    QTest::newRow("String") << 10 << false << false << false;
    QTest::newRow("StringList") << 11 << false << false << true;
    QTest::newRow("ByteArray") << 12 << false << false << false;
    QTest::newRow("BitArray") << 13 << false << false << false;
    QTest::newRow("Date") << 14 << false << true << false;
    QTest::newRow("Time") << 15 << false << true << false;
    QTest::newRow("DateTime") << 16 << false << true << false;
    QTest::newRow("Url") << 17 << false << false << false;
    QTest::newRow("Float") << int(QMetaType::Float) << false << false << false;
    QTest::newRow("user type") << 1024 << false << false << false;
}

void TestTypeTool::typeGroups()
{
    QFETCH(int, type);
    auto const variantType = static_cast<QVariant::Type>(type);
    QTEST(TypeTool::isNumeric(variantType), "numeric");
    QTEST(TypeTool::isDate(variantType), "date");
    QTEST(TypeTool::isList(variantType), "list");
}

void TestTypeTool::numericCoercion_data()
{
    QTest::addColumn<QVariant>("a");
    QTest::addColumn<QVariant>("b");
    QTest::addColumn<QVector<int>>("types");

    //                                                                 none left right both
    coercion("int, int", 5, 7, I, I, I, I);
    coercion("uint, uint", 5u, UIntMax, U, U, U, U);
    coercion("longlong, longlong", LongMin, 7ll, L, L, L, L);
    coercion("ulonglong, ulonglong", 5ull, ULongMax, X, X, X, X);
    coercion("double, double", 5.0, NaN, D, D, D, D);

    coercion("int, uint", 5, 7u, L, U, I, I);
    coercion("negative int, uint", -5, 7u, L, L, I, I);
    coercion("zero int, zero uint", 0, 0u, L, U, I, I);
    coercion("int, uint just fits", 5, 0x7FFFFFFEu, L, U, I, I);
    coercion("int, uint just does not fit", 5, 0x7FFFFFFFu, L, U, L, U);
    coercion("negative int, uint just does not fit", -5, 0x7FFFFFFFu, L, L, L, L);
    coercion("zero int, uint beyond int", 0, 0x80000000u, L, U, L, U);
    coercion("lowest int, highest uint", IntMin, UIntMax, L, L, L, L);

    coercion("int, longlong", 5, 7ll, L, L, L, L);
    coercion("negative int, highest longlong", -5, LongMax, L, L, L, L);

    coercion("int, ulonglong", 5, 7ull, N, X, I, I);
    coercion("negative int, ulonglong", -5, 7ull, N, N, I, I);
    coercion("int, ulonglong just fits", 5, 0x7FFFFFFEull, N, X, I, I);
    coercion("int, ulonglong just does not fit", 5, 0x7FFFFFFFull, N, X, N, X);
    coercion("negative int, ulonglong just does not fit", -5, 0x7FFFFFFFull, N, N, N, N);
    coercion("zero int, highest ulonglong", 0, ULongMax, N, X, N, X);
    coercion("int, ulonglong whose low half is small", 5, 0x100000001ull, N, X, N, X);

    coercion("uint, int", 7u, 5, L, I, U, I);
    coercion("uint, negative int", 7u, -5, L, I, L, I);
    coercion("zero uint, zero int", 0u, 0, L, I, U, I);
    coercion("uint just fits, int", 0x7FFFFFFEu, 5, L, I, U, I);
    coercion("uint just does not fit, int", 0x7FFFFFFFu, 5, L, L, U, U);
    coercion("uint just does not fit, negative int", 0x7FFFFFFFu, -5, L, L, L, L);
    coercion("highest uint, lowest int", UIntMax, IntMin, L, L, L, L);

    coercion("uint, longlong", 7u, -5ll, L, L, L, L);
    coercion("uint, ulonglong", 7u, 5ull, X, X, X, X);

    coercion("longlong, int", 7ll, -5, L, L, L, L);
    coercion("longlong, uint", -7ll, UIntMax, L, L, L, L);

    coercion("longlong, ulonglong", 5ll, 7ull, N, X, L, L);
    coercion("negative longlong, ulonglong", -5ll, 7ull, N, N, L, L);
    coercion("longlong, ulonglong just fits", 5ll, 0x7FFFFFFFFFFFFFFEull, N, X, L, L);
    coercion("longlong, ulonglong just does not fit", 5ll, 0x7FFFFFFFFFFFFFFFull, N, X, N, X);
    coercion("negative longlong, ulonglong just does not fit", -5ll, 0x7FFFFFFFFFFFFFFFull, N, N, N, N);
    coercion("zero longlong, highest ulonglong", 0ll, ULongMax, N, X, N, X);
    coercion("lowest longlong, ulonglong beyond longlong", LongMin, 0x8000000000000000ull, N, N, N, N);

    coercion("ulonglong, int", 7ull, 5, N, I, X, X);
    coercion("ulonglong, zero int", 7ull, 0, N, I, X, X);
    coercion("ulonglong, negative int", 7ull, -5, N, I, N, I);
    coercion("ulonglong just fits, int", 0x7FFFFFFEull, 5, N, I, X, X);
    coercion("ulonglong just does not fit, int", 0x7FFFFFFFull, 5, N, N, X, X);
    coercion("ulonglong just does not fit, negative int", 0x7FFFFFFFull, -5, N, N, N, N);
    coercion("highest ulonglong, lowest int", ULongMax, IntMin, N, N, N, N);

    coercion("ulonglong, uint", 7ull, 5u, X, X, X, X);

    coercion("ulonglong, longlong", 7ull, 5ll, N, L, X, X);
    coercion("ulonglong, zero longlong", 7ull, 0ll, N, L, X, X);
    coercion("ulonglong, negative longlong", 7ull, -5ll, N, L, N, L);
    coercion("ulonglong just fits, negative longlong", 0x7FFFFFFFFFFFFFFEull, -5ll, N, L, N, L);
    coercion("ulonglong just does not fit, negative longlong", 0x7FFFFFFFFFFFFFFFull, -5ll, N, N, N, N);
    coercion("ulonglong just does not fit, longlong", 0x7FFFFFFFFFFFFFFFull, 5ll, N, N, X, X);
    coercion("highest ulonglong, lowest longlong", ULongMax, LongMin, N, N, N, N);

    coercion("int, double", 5, 0.5, D, D, D, D);
    coercion("double, uint", 0.5, 5u, D, D, D, D);
    coercion("longlong, double", -5ll, NaN, D, D, D, D);
    coercion("double, ulonglong", Inf, ULongMax, D, D, D, D);
}

void TestTypeTool::numericCoercion()
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    QFETCH(QVector<int>, types);
    QCOMPARE(int(TypeTool(false, false).coerceNumericTypes(a, b)), types.at(0));
    QCOMPARE(int(TypeTool(true, false).coerceNumericTypes(a, b)), types.at(1));
    QCOMPARE(int(TypeTool(false, true).coerceNumericTypes(a, b)), types.at(2));
    QCOMPARE(int(TypeTool(true, true).coerceNumericTypes(a, b)), types.at(3));
}

void TestTypeTool::otherCoercion_data()
{
    QTest::addColumn<QVariant>("a");
    QTest::addColumn<QVariant>("b");
    QTest::addColumn<int>("type");
    auto other = [](char const* name, QVariant const& a, QVariant const& b, int type) {
        QTest::newRow(name) << a << b << type;
    };
    other("same type", true, false, QVariant::Bool);
    other("right converts to left", QDate(2020, 1, 1), QDate(2020, 1, 1).startOfDay(), QVariant::Date);
    other("left wins where both convert", QDate(2020, 1, 1).startOfDay(), QDate(2020, 1, 1), QVariant::DateTime);
    other("content does not matter", 5, "abc", QVariant::Int);
    other("time from date with time", QTime(1, 0), QDate(2020, 1, 1).startOfDay(), QVariant::Time);
    other("text from time", "abc", QTime(1, 0), QVariant::String);
    other("left to right only", "abc", QStringList({"a", "b"}), QVariant::StringList);
    other("right to left only", QStringList({"a", "b"}), "abc", QVariant::StringList);
    other("only by text", 5, QTime(1, 0), QVariant::String);
    other("lists convert to each other", QVariantList(), QStringList(), QVariant::List);
    other("rectangles", QRect(0, 0, 1, 1), QRect(), QVariant::Rect);
    other("nothing in common", QRect(), 5, N);
    other("list and number", QVariantList(), 5, N);
    other("invalid and number", QVariant(), 5, N);
    other("invalid and invalid", QVariant(), QVariant(), N);
}

void TestTypeTool::otherCoercion()
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    QTEST(int(TypeTool(false, false).coerceOtherTypes(a, b)), "type");
}

void TestTypeTool::eachOperationSetsTheFlagAnew_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(Operations)); ++i)
        QTest::newRow(Operations[i].name) << i;
}

void TestTypeTool::eachOperationSetsTheFlagAnew()
{
    QFETCH(int, index);
    TypeTool tool(false, false);
    tool.do_divide(7, 0);
    QVERIFY(!tool.wasOK());
    QVERIFY((tool.*Operations[index].apply)(7, 2).isValid());
    QVERIFY(tool.wasOK());
}

void TestTypeTool::copyKeepsTheState()
{
    TypeTool tool(true, false);
    tool.do_divide(7, 0);
    TypeTool copy = tool;
    QVERIFY(!copy.wasOK());
    QCOMPARE(describe(copy.do_add(5, 7ull)), describe(QVariant(12ull)));
    QVERIFY(!tool.wasOK());
}

void TestTypeTool::returnOK()
{
    QVariant const value(5);
    TypeTool tool(false, false);
    QCOMPARE(&tool.returnOK(value), &value);
    tool.do_divide(7, 0);
    QCOMPARE(&tool.returnOK(value), &TypeTool::INVALID);
}

void TestTypeTool::throwOKPassesAfterSuccess()
{
    TypeTool tool(false, false);
    QVERIFY(tool.throwOK());
    tool.compare(5, 7);
    QVERIFY(tool.throwOK());
}

void TestTypeTool::throwOKThrowsAfterFailure()
{
    TypeTool tool(false, false);
    tool.compare(QRect(), 5);
    try {
        tool.throwOK();
        QFAIL("no exception");
    } catch (qv::IllegalArgumentException const& e) {
        QCOMPARE(e.message(), QStringLiteral("can't compare values"));
        QCOMPARE(e.argument(), QString());
    }
}

void TestTypeTool::inversion_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("inverted");
    QChar const end(0xFFFF);
    QTest::newRow("empty") << QString() << QString(end);
    QTest::newRow("one letter") << QStringLiteral("a") << QString(QChar(0xFF9E)) + end;
    QTest::newRow("two letters") << QStringLiteral("ab") << QString(QChar(0xFF9E)) + QChar(0xFF9D) + end;
    QTest::newRow("already inverted") << QString(QChar(0xFF9E)) + end << QStringLiteral("a");
    QTest::newRow("terminator alone") << QString(end) << QString();
    QTest::newRow("terminator inside") << QStringLiteral("a") + end + QLatin1Char('b')
                                       << QString(QChar(0xFF9E)) + QChar(0xFF9D);
    QTest::newRow("several terminators") << QString(end) + end << QString();
    QTest::newRow("zero unit") << QString(QChar(0)) << QString(end) + end;
    QTest::newRow("surrogates") << QString(QChar(0xD800)) + QChar(0xDC00)
                                << QString(QChar(0x27FF)) + QChar(0x23FF) + end;
}

void TestTypeTool::inversion()
{
    QFETCH(QString, text);
    QTEST(TypeTool::invertString(text), "inverted");
}

void TestTypeTool::inversionUndoesItself()
{
    QRandomGenerator random = support::generator();
    for (int i = 0; i < support::rounds(10000); ++i) {
        QString const text = randomText(random);
        QVERIFY2(TypeTool::invertString(TypeTool::invertString(text)) == text, qPrintable(support::seedNote(i)));
    }
}

void TestTypeTool::inversionReversesOrder()
{
    QRandomGenerator random = support::generator();
    for (int i = 0; i < support::rounds(10000); ++i) {
        QString const a = randomText(random);
        QString const b = randomText(random);
        int const inverted = QString::compare(TypeTool::invertString(a), TypeTool::invertString(b));
        QVERIFY2(sign(inverted) == -sign(QString::compare(a, b)), qPrintable(support::seedNote(i)));
    }
}

QTEST_GUILESS_MAIN(TestTypeTool)
#include "tst_TypeTool.moc"
