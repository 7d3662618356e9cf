// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/TypeTool.h>

#include "TypedVariant.h"

#include <QtTest>

using qvgen::TypeTool;
using namespace typed;

namespace {

using Operation = QVariant (TypeTool::*)(QVariant const&, QVariant const&);

QVariant const Fails;
QVariant const NoValue;

void operands()
{
    QTest::addColumn<QVariant>("a");
    QTest::addColumn<QVariant>("b");
    QTest::addColumn<QVariant>("expected");
}

void row(char const* name, QVariant const& a, QVariant const& b, QVariant const& expected)
{
    QTest::newRow(name) << a << b << expected;
}

/// Without constants; an invalid result is expected to be a failure.
void check(Operation operation)
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    QFETCH(QVariant, expected);
    TypeTool tool(false, false);
    QCOMPARE(describe((tool.*operation)(a, b)), describe(expected));
    QCOMPARE(tool.wasOK(), expected.isValid());
}

/// Without constants; the flag is expected to stay set whatever the result.
void checkBits(Operation operation)
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    QFETCH(QVariant, expected);
    TypeTool tool(false, false);
    QCOMPARE(describe((tool.*operation)(a, b)), describe(expected));
    QVERIFY(tool.wasOK());
}

void bitRefusals()
{
    row("doubles", 3.0, 2.0, NoValue);
    row("double and int", 1.5, 2, NoValue);
    row("int and double", 2, 1.5, NoValue);
    row("int and ulonglong have no common type", 3, 2ull, NoValue);
    row("texts", "3", "2", NoValue);
    row("bools", true, true, NoValue);
    row("date and int", QDate(2020, 1, 1), 1, NoValue);
    row("invalid", QVariant(), 1, NoValue);
}

} // namespace

class TestTypeToolArithmetic : public QObject {
    Q_OBJECT

private slots:
    void addition_data();
    void addition() { check(&TypeTool::do_add); }
    void concatenation_data();
    void concatenation() { check(&TypeTool::do_add); }
    void subtraction_data();
    void subtraction() { check(&TypeTool::do_subtract); }
    void multiplication_data();
    void multiplication() { check(&TypeTool::do_multiply); }
    void division_data();
    void division() { check(&TypeTool::do_divide); }
    void remainder_data();
    void remainder() { check(&TypeTool::do_modulo); }
    void bitAnd_data();
    void bitAnd() { checkBits(&TypeTool::do_bitand); }
    void bitOr_data();
    void bitOr() { checkBits(&TypeTool::do_bitor); }
    void bitXor_data();
    void bitXor() { checkBits(&TypeTool::do_bitxor); }
    void constants_data();
    void constants();

    void refusalsOfNonNumbers_data();
    void refusalsOfNonNumbers();
};

void TestTypeToolArithmetic::addition_data()
{
    operands();
    row("ints", 5, -7, -2);
    row("ints wrap up", IntMax, 1, IntMin);
    row("ints wrap down", IntMin, -1, IntMax);
    row("uints", 5u, 7u, 12u);
    row("uints wrap", UIntMax, 1u, 0u);
    row("longlongs", 5ll, -7ll, -2ll);
    row("longlongs wrap", LongMax, 1ll, LongMin);
    row("ulonglongs", 5ull, 7ull, 12ull);
    row("ulonglongs wrap", ULongMax, 2ull, 1ull);
    row("doubles", 0.5, -1.25, -0.75);
    row("infinities cancel to NaN", Inf, -Inf, NaN);
    row("int and uint meet in longlong", IntMax, UIntMax, 6442450942ll);
    row("int and double", 5, 0.5, 5.5);
    row("ulonglong and double", ULongMax, 0.0, 18446744073709551616.0);
    row("null numbers are zero", QVariant(QVariant::Int), 5, 5);
}

void TestTypeToolArithmetic::concatenation_data()
{
    operands();
    row("text and text", "abc", "def", "abcdef");
    row("text and int", "abc", 5, "abc5");
    row("int and text", 5, "abc", "5abc");
    row("numeric texts are no numbers", "5", "7", "57");
    row("empty texts", "", "", "");
    row("null text", QString(), 5, "5");
    row("int and ulonglong have no common type", 5, 7ull, "57");
    row("ulonglong and negative longlong have no common type", 7ull, -5ll, "7-5");
    row("bool is no number", true, 5, "true5");
    row("float is no number", 1.5f, 5, "1.55");
    row("date and text", QDate(2020, 1, 1), "abc", "2020-01-01abc");
    row("text and date", "abc", QDate(2020, 1, 1), "abc2020-01-01");
    row("date and bool", QDate(2020, 1, 1), false, "2020-01-01false");
    row("byte array", QByteArray("ab"), "c", "abc");
    row("character", QChar('a'), QChar('b'), "ab");
    row("list of one text", QStringList({"a"}), "b", "ab");
    row("list of two texts", QStringList({"a", "b"}), "c", Fails);
    row("lists", QVariantList({1}), QVariantList({2}), Fails);
    row("rectangle", QRect(), "abc", Fails);
    row("map", QVariantMap(), "abc", Fails);
    row("invalid on the left", QVariant(), 5, Fails);
    row("invalid on the right", "abc", QVariant(), Fails);
    row("date and list", QDate(2020, 1, 1), QVariantList(), Fails);
    row("long texts", QString(100000, 'a'), QString(100000, 'b'), QString(100000, 'a') + QString(100000, 'b'));
}

void TestTypeToolArithmetic::subtraction_data()
{
    operands();
    row("ints", 5, 7, -2);
    row("ints wrap", IntMin, 1, IntMax);
    row("longlongs", 5ll, 7ll, -2ll);
    row("longlongs wrap", LongMin, 1ll, LongMax);
    row("uints, positive", 5u, 3u, 2u);
    row("uints, negative", 3u, 5u, -2ll);
    row("uints, zero", 5u, 5u, 0ll);
    row("uints, highest", UIntMax, 0u, UIntMax);
    row("uints, lowest", 0u, UIntMax, -4294967295ll);
    row("ulonglongs, positive", 5ull, 3ull, 2ull);
    row("ulonglongs, negative", 3ull, 5ull, -2.0);
    row("ulonglongs, zero", 5ull, 5ull, 0.0);
    row("ulonglongs, highest", ULongMax, 0ull, ULongMax);
    row("ulonglongs, lowest", 0ull, ULongMax, -18446744073709551616.0);
    row("ulonglongs, difference lost in doubles", 9223372036854775807ull, 9223372036854775808ull, 0.0);
    row("uint and ulonglong, negative", 3u, 5ull, -2.0);
    row("doubles", 0.5, 1.25, -0.75);
    row("NaN", NaN, 1.0, NaN);
    row("int and uint meet in longlong", 3, 5u, -2ll);
    row("no common type", 5, 7ull, Fails);
    row("texts", "abc", "b", Fails);
    row("numeric texts", "7", "5", Fails);
    row("invalid", QVariant(), 5, Fails);
    row("bools", true, true, Fails);
}

void TestTypeToolArithmetic::multiplication_data()
{
    operands();
    row("ints", 5, -7, -35);
    row("ints wrap", IntMax, 2, -2);
    row("lowest int by -1", IntMin, -1, IntMin);
    row("uints wrap", UIntMax, UIntMax, 1u);
    row("longlongs", -5ll, -7ll, 35ll);
    row("longlongs wrap", LongMax, 2ll, -2ll);
    row("lowest longlong by -1", LongMin, -1ll, LongMin);
    row("ulonglongs wrap", ULongMax, ULongMax, 1ull);
    row("doubles", 0.5, -1.5, -0.75);
    row("zero by infinity", 0.0, Inf, NaN);
    row("int and uint meet in longlong", -1, UIntMax, -4294967295ll);
    row("no common type", 5, 7ull, Fails);
    row("texts", "5", "7", Fails);
    row("date and int", QDate(2020, 1, 1), 2, Fails);
}

void TestTypeToolArithmetic::division_data()
{
    operands();
    row("ints truncate", 7, 2, 3);
    row("negative dividend truncates toward zero", -7, 2, -3);
    row("negative divisor truncates toward zero", 7, -2, -3);
    row("uints", UIntMax, 2u, 0x7FFFFFFFu);
    row("longlongs", -7ll, -2ll, 3ll);
    row("ulonglongs", ULongMax, 2ull, 0x7FFFFFFFFFFFFFFFull);
    row("doubles", 7.0, 2.0, 3.5);
    row("int and double", 7, 2.0, 3.5);
    row("lowest int by -1 wraps", IntMin, -1, IntMin);
    row("lowest longlong by -1 wraps", LongMin, -1ll, LongMin);
    row("int by zero", 7, 0, Fails);
    row("uint by zero", 7u, 0u, Fails);
    row("longlong by zero", 7ll, 0ll, Fails);
    row("ulonglong by zero", 7ull, 0ull, Fails);
    row("double by zero", 1.0, 0.0, Fails);
    row("double by negative zero", 1.0, -0.0, Fails);
    row("double by int zero", 1.0, 0, Fails);
    row("zero by zero", 0.0, 0.0, Fails);
    row("double by NaN", 1.0, NaN, NaN);
    row("double by infinity", 1.0, Inf, 0.0);
    row("null divisor is zero", 7, QVariant(QVariant::Int), Fails);
    row("no common type", 7, 7ull, Fails);
    row("texts", "7", "7", Fails);
}

void TestTypeToolArithmetic::remainder_data()
{
    operands();
    row("ints", 7, 4, 3);
    row("sign of the dividend", -7, 4, -3);
    row("sign of the divisor is ignored", 7, -4, 3);
    row("uints", UIntMax, 2u, 1u);
    row("longlongs", -7ll, -4ll, -3ll);
    row("ulonglongs", ULongMax, 10ull, 5ull);
    row("lowest int by -1", IntMin, -1, 0);
    row("lowest longlong by -1", LongMin, -1ll, 0ll);
    row("int by zero", 7, 0, Fails);
    row("uint by zero", 7u, 0u, Fails);
    row("longlong by zero", 7ll, 0ll, Fails);
    row("ulonglong by zero", 7ull, 0ull, Fails);
    row("doubles", 7.0, 2.0, Fails);
    row("int and double", 7, 2.0, Fails);
    row("no common type", 7, 2ull, Fails);
    row("texts", "7", "2", Fails);
}

void TestTypeToolArithmetic::bitAnd_data()
{
    operands();
    row("ints", 12, 10, 8);
    row("negative int", -1, 10, 10);
    row("uints", UIntMax, 10u, 10u);
    row("longlongs", -2ll, 0x100000001ll, 0x100000000ll);
    row("ulonglongs", ULongMax, 0x8000000000000000ull, 0x8000000000000000ull);
    row("negative int and uint meet in longlong", -1, UIntMax, 4294967295ll);
    bitRefusals();
}

void TestTypeToolArithmetic::bitOr_data()
{
    operands();
    row("ints", 12, 10, 14);
    row("negative int", -8, 1, -7);
    row("uints", 0x80000000u, 1u, 0x80000001u);
    row("longlongs", LongMin, 1ll, -9223372036854775807ll);
    row("ulonglongs", 0x8000000000000000ull, 1ull, 0x8000000000000001ull);
    row("negative int and uint meet in longlong", -1, 0u, -1ll);
    bitRefusals();
}

void TestTypeToolArithmetic::bitXor_data()
{
    operands();
    row("ints", 12, 10, 6);
    row("negative int", -1, 1, -2);
    row("uints", UIntMax, 1u, 0xFFFFFFFEu);
    row("longlongs", LongMin, LongMax, -1ll);
    row("ulonglongs", ULongMax, 1ull, 0xFFFFFFFFFFFFFFFEull);
    row("negative int and uint meet in longlong", -1, UIntMax, -4294967296ll);
    bitRefusals();
}

void TestTypeToolArithmetic::constants_data()
{
    QTest::addColumn<bool>("left");
    QTest::addColumn<bool>("right");
    operands();
    auto add = [](char const* name, bool left, bool right, QVariant const& a, QVariant const& b, QVariant const& sum) {
        QTest::newRow(name) << left << right << a << b << sum;
    };
    add("constant int plus ulonglong", true, false, 5, 7ull, 12ull);
    add("negative constant int plus ulonglong", true, false, -5, 7ull, "-57");
    add("int plus constant ulonglong", false, true, -5, 7ull, 2);
    add("int plus constant uint", false, true, 5, 7u, 12);
    add("int plus constant uint that does not fit", false, true, 5, 0x7FFFFFFFu, 2147483652ll);
    add("constant int plus constant uint that does not fit", true, true, 5, 0x7FFFFFFFu, 0x80000004u);
    add("negative constant int plus uint", true, false, -5, 7u, 2ll);
    add("constant uint plus negative int", true, false, 7u, -5, 2);
    add("constants still wrap in the common type", true, true, IntMax, 1u, IntMin);
    add("longlong plus constant ulonglong", false, true, -5ll, 7ull, 2ll);
    add("constant longlong plus ulonglong", true, false, 5ll, ULongMax, 4ull);
    add("ulonglong plus constant int", false, true, ULongMax, 1, 0ull);
    add("constant ulonglong plus negative longlong", true, false, 7ull, -8ll, -1ll);
}

void TestTypeToolArithmetic::constants()
{
    QFETCH(bool, left);
    QFETCH(bool, right);
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    QFETCH(QVariant, expected);
    QCOMPARE(describe(TypeTool(left, right).do_add(a, b)), describe(expected));
}

void TestTypeToolArithmetic::refusalsOfNonNumbers_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("text") << QVariant("5");
    QTest::newRow("bool") << QVariant(true);
    QTest::newRow("float") << QVariant(1.5f);
    QTest::newRow("date") << QVariant(QDate(2020, 1, 1));
    QTest::newRow("list") << QVariant(QVariantList({1}));
    QTest::newRow("rectangle") << QVariant(QRect());
    QTest::newRow("invalid") << QVariant();
}

void TestTypeToolArithmetic::refusalsOfNonNumbers()
{
    QFETCH(QVariant, value);
    for (Operation operation : {&TypeTool::do_multiply, &TypeTool::do_divide, &TypeTool::do_modulo}) {
        TypeTool tool(true, true);
        QVERIFY(!(tool.*operation)(value, 5).isValid() && !tool.wasOK());
        QVERIFY(!(tool.*operation)(5, value).isValid() && !tool.wasOK());
    }
}

QTEST_GUILESS_MAIN(TestTypeToolArithmetic)
#include "tst_TypeToolArithmetic.moc"
