// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/TypeTool.h>

#include "TypedVariant.h"

#include <QtTest>

using qvgen::TypeTool;
using namespace typed;

namespace {

constexpr qint64 Second = 1000000;
constexpr qint64 Hour = 3600 * Second;
constexpr qint64 Day = 24 * Hour;

/// What an unusable date with time, or one outside of 1970 to 2106, counts as: 2^32 - 1 seconds.
constexpr qint64 Saturated = 4294967295 * Second;

QDateTime utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0, int millis = 0)
{
    return {QDate(year, month, day), QTime(hour, minute, second, millis), Qt::UTC};
}

QDateTime withOffset(QDate const& date, QTime const& time, int offsetSeconds)
{
    return {date, time, Qt::OffsetFromUTC, offsetSeconds};
}

QDate const NewYear(2020, 1, 1);
/// The second that 2^32 - 1 stands for.
QDateTime const LastSecond = utc(2106, 2, 7, 6, 28, 15);
QVariant const Fails;

void microsRow(char const* name, QVariant const& value, qint64 micros)
{
    QTest::newRow(name) << value << micros;
}

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

void moveRow(char const* name, QVariant const& value, qint64 micros, QVariant const& expected)
{
    QTest::newRow(name) << value << micros << expected;
}

void castRow(char const* name, QVariant const& value, QVariant::Type target, QVariant const& expected)
{
    QTest::newRow(name) << value << int(target) << expected;
}

} // namespace

class TestTypeToolDates : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("TZ", "UTC"); }

    void microSeconds_data();
    void microSeconds();
    void seconds();

    void movement_data();
    void movement();

    void addition_data();
    void addition();
    void subtraction_data();
    void subtraction();
    void order_data();
    void order();

    void castToNumber_data();
    void castToNumber() { checkCast(); }
    void castToDate_data();
    void castToDate() { checkCast(); }
    void castOfOthers_data();
    void castOfOthers() { checkCast(); }

private:
    static void checkCast();
};

void TestTypeToolDates::microSeconds_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<qint64>("micros");
    microsRow("int counts milliseconds", 5, 5000);
    microsRow("negative int", -5, -5000);
    microsRow("highest int", IntMax, 2147483647000);
    microsRow("lowest int", IntMin, -2147483648000);
    microsRow("highest uint", UIntMax, 4294967295000);
    microsRow("longlong counts microseconds", 5ll, 5);
    microsRow("negative longlong", -5ll, -5);
    microsRow("lowest longlong", LongMin, LongMin);
    microsRow("ulonglong", 5ull, 5);
    microsRow("highest ulonglong is signed", ULongMax, -1);
    microsRow("double counts days", 1.0, 86400000000);
    microsRow("half a day", 0.5, 43200000000);
    microsRow("negative double", -1.5, -129600000000);
    microsRow("double truncates toward zero", 1e-11, 0);
    microsRow("negative double truncates toward zero", -1e-11, 0);
    microsRow("NaN is the lowest", NaN, LongMin);
    microsRow("infinity is the highest", Inf, LongMax);
    microsRow("minus infinity is the lowest", -Inf, LongMin);
    microsRow("double out of range", 1e300, LongMax);

    microsRow("epoch", QDate(1970, 1, 1), 0);
    microsRow("day after the epoch", QDate(1970, 1, 2), 86400000000);
    microsRow("day before the epoch", QDate(1969, 12, 31), -86400000000);
    microsRow("date", NewYear, 1577836800000000);
    microsRow("date after 2106", QDate(2107, 1, 1), 4323283200000000);
    microsRow("null date", QDate(), 0);
    microsRow("null date variant", QVariant(QVariant::Date), 0);
    microsRow("midnight", QTime(0, 0), 0);
    microsRow("time", QTime(23, 0), 82800000000);
    microsRow("time with milliseconds", QTime(0, 0, 0, 1), 1000);
    microsRow("last time of the day", QTime(23, 59, 59, 999), 86399999000);
    microsRow("null time", QTime(), 0);

    microsRow("moment with milliseconds", utc(1970, 1, 1, 0, 0, 1, 250), 1250000);
    microsRow("moment", utc(2020, 1, 1), 1577836800000000);
    microsRow("moment with offset", withOffset(NewYear, QTime(1, 0), 3600), 1577836800000000);
    microsRow("moment before 1970 saturates", utc(1969, 12, 31), Saturated);
    microsRow("moment before 1970 keeps its milliseconds", utc(1960, 1, 1, 0, 0, 0, 250), Saturated + 250000);
    microsRow("last moment that fits", utc(2106, 2, 7, 6, 28, 14), 4294967294000000);
    microsRow("moment after 2106 saturates", utc(2107, 1, 1), Saturated);
    microsRow("invalid moment saturates", QDateTime(), Saturated);

    microsRow("text of a date", "Wed Jan 1 00:00:00 2020", 1577836800000000);
    microsRow("bytes of a date", QByteArray("Wed Jan 1 00:00:00 2020"), 1577836800000000);
    microsRow("list of one text of a date", QStringList({"Wed Jan 1 00:00:00 2020"}), 1577836800000000);
    microsRow("ISO text is not understood", "2020-01-01T00:00:00", Saturated);
    microsRow("text", "abc", Saturated);
    microsRow("empty text", "", Saturated);
    microsRow("bool", true, Saturated);
    microsRow("float", 1.5f, Saturated);
    microsRow("character", QChar('a'), Saturated);
    microsRow("list of two texts", QStringList({"a", "b"}), 0);
    microsRow("list", QVariantList({5}), 0);
    microsRow("map", QVariantMap(), 0);
    microsRow("rectangle", QRect(0, 0, 1, 1), 0);
    microsRow("invalid", QVariant(), 0);
}

void TestTypeToolDates::microSeconds()
{
    QFETCH(QVariant, value);
    QTEST(TypeTool::dateMicroSeconds(value), "micros");
}

void TestTypeToolDates::seconds()
{
    QCOMPARE(TypeTool::dateSeconds(1500), 1.5);
    QCOMPARE(TypeTool::dateSeconds(-1ll), -0.000001);
    QCOMPARE(TypeTool::dateSeconds(NewYear), 1577836800.0);
    QCOMPARE(TypeTool::dateSeconds(QVariant()), 0.0);
}

void TestTypeToolDates::movement_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<qint64>("micros");
    QTest::addColumn<QVariant>("expected");
    moveRow("int stays in milliseconds", 5, 1000, 6);
    moveRow("int drops microseconds", 5, 999, 5);
    moveRow("uint becomes int", 7u, 0, 7);
    moveRow("high uint wraps in int", UIntMax, 0, -1);
    // (2^64 - 5000) / 1000 = 0x4189374BC6A7EA
    moveRow("negative int is divided unsigned", -5, 0, 0x4BC6A7EA);
    moveRow("longlong of whole milliseconds becomes int", 5000ll, 1000, 6);
    moveRow("longlong of microseconds becomes ulonglong", 5000ll, 1, 5001ull);
    moveRow("ulonglong of whole milliseconds becomes int", 5000ull, 0, 5);
    moveRow("ulonglong of microseconds", 5000ull, 999, 5999ull);
    moveRow("whole milliseconds wrap in int", 2147483648000ll, 0, IntMin);
    moveRow("negative whole milliseconds", -5000ll, 0, -5);
    moveRow("negative microseconds", -5ll, 0, 18446744073709551611ull);
    moveRow("double stays in days", 1.0, Day / 2, 1.5);
    moveRow("negative double is read unsigned", 0.0, -1, 18446744073709551616.0 / 86400000000.0);

    moveRow("date by a day", NewYear, Day, QDate(2020, 1, 2));
    moveRow("date by a day back", NewYear, -Day, QDate(2019, 12, 31));
    moveRow("date by nothing", NewYear, 0, NewYear);
    moveRow("date by a second", NewYear, Second, utc(2020, 1, 1, 0, 0, 1));
    moveRow("date by a day and a half", NewYear, Day + Day / 2, utc(2020, 1, 2, 12));
    moveRow("date by a microsecond", NewYear, 1, utc(2020, 1, 1));
    moveRow("date by milliseconds drops them", NewYear, 1500000, utc(2020, 1, 1, 0, 0, 1));
    moveRow("day before the epoch by a day", QDate(1969, 12, 31), Day, QDate(1970, 1, 1));
    moveRow("date before the epoch wraps, and is no whole day", QDate(1970, 1, 1), -Day, utc(2106, 2, 6, 6, 28, 16));
    moveRow("date after 2106 wraps", QDate(2107, 1, 1), 0, QDate(1970, 11, 24));
    moveRow("null date", QDate(), Day, QDate(1970, 1, 2));

    moveRow("time within the day", QTime(22, 0), Hour, QTime(23, 0));
    moveRow("time past midnight", QTime(23, 0), 2 * Hour, utc(1970, 1, 2, 1));
    moveRow("time to midnight exactly", QTime(23, 59, 59), Second, utc(1970, 1, 2));
    moveRow("time to just before midnight", QTime(23, 0), Hour - 1, QTime(23, 59, 59));
    moveRow("time before midnight", QTime(0, 0), -Second, LastSecond);
    moveRow("time drops milliseconds", QTime(1, 2, 3, 999), 0, QTime(1, 2, 3));
    moveRow("null time", QTime(), Hour, QTime(1, 0));

    moveRow("moment by a second", utc(2020, 1, 1, 12), Second, utc(2020, 1, 1, 12, 0, 1));
    moveRow("moment drops milliseconds", utc(2020, 1, 1, 12, 0, 0, 999), 0, utc(2020, 1, 1, 12));
    moveRow("moment with offset becomes UTC", withOffset(NewYear, QTime(1, 0), 3600), 0, utc(2020, 1, 1));
    moveRow("invalid moment", QDateTime(), 0, LastSecond);
    moveRow("moment past 2106 wraps", LastSecond, Second, utc(1970, 1, 1));
    moveRow("text", "abc", 0, LastSecond);
    moveRow("text of a date", "Wed Jan 1 00:00:00 2020", Second, utc(2020, 1, 1, 0, 0, 1));
    moveRow("invalid", QVariant(), Second, utc(1970, 1, 1, 0, 0, 1));
    moveRow("rectangle", QRect(), Second, utc(1970, 1, 1, 0, 0, 1));
    moveRow("distance wraps", 1ll, LongMax, 9223372036854775808ull);
}

void TestTypeToolDates::movement()
{
    QFETCH(QVariant, value);
    QFETCH(qint64, micros);
    QFETCH(QVariant, expected);
    QCOMPARE(describe(TypeTool(false, false).dateAdd(value, micros)), describe(expected));
}

void TestTypeToolDates::addition_data()
{
    operands();
    row("date and int milliseconds", NewYear, 86400000, QDate(2020, 1, 2));
    row("date and int below a day", NewYear, 1000, utc(2020, 1, 1, 0, 0, 1));
    row("date and uint milliseconds", NewYear, 86400000u, QDate(2020, 1, 2));
    row("date and longlong microseconds", NewYear, 86400000000ll, QDate(2020, 1, 2));
    row("date and ulonglong microseconds", NewYear, 86400000000ull, QDate(2020, 1, 2));
    row("date and double days", NewYear, 1.5, utc(2020, 1, 2, 12));
    row("date and negative double", NewYear, -1.0, QDate(2019, 12, 31));
    row("time and longlong past midnight", QTime(23, 0), 7200000000ll, utc(1970, 1, 2, 1));
    row("time and int", QTime(22, 0), 3600000, QTime(23, 0));
    row("moment and int", utc(2020, 1, 1), 1000, utc(2020, 1, 1, 0, 0, 1));
    row("int and date", 5, NewYear, utc(2020, 1, 1));
    row("int of a day, and date", 86400000, NewYear, QDate(2020, 1, 2));
    row("double and time", 0.5, QTime(1, 0), QTime(13, 0));
    row("longlong and moment", 1000000ll, utc(2020, 1, 1), utc(2020, 1, 1, 0, 0, 1));
    row("date and date add the distance from the epoch", NewYear, QDate(1970, 1, 3), QDate(2020, 1, 3));
    row("date and time", NewYear, QTime(12, 0), utc(2020, 1, 1, 12));
    row("time and date take the type of the left", QTime(12, 0), NewYear, utc(2020, 1, 1, 12));
    row("time and time", QTime(10, 0), QTime(13, 0), QTime(23, 0));
    row("time and time past midnight", QTime(12, 0), QTime(12, 0), utc(1970, 1, 2));
    row("date and NaN", QDate(1970, 1, 1), NaN, utc(2040, 4, 10, 23, 55, 54));
    row("date and infinity", QDate(1970, 1, 1), Inf, utc(2035, 10, 29, 6, 32, 22));
    row("date and text concatenate", NewYear, "abc", "2020-01-01abc");
    row("date and float concatenate", NewYear, 1.5f, "2020-01-011.5");
    row("date and list", NewYear, QVariantList(), Fails);
    row("invalid and date", QVariant(), NewYear, Fails);
}

void TestTypeToolDates::addition()
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    QFETCH(QVariant, expected);
    TypeTool tool(false, false);
    QCOMPARE(describe(tool.do_add(a, b)), describe(expected));
    QCOMPARE(tool.wasOK(), expected.isValid());
}

void TestTypeToolDates::subtraction_data()
{
    operands();
    row("date and int", QDate(2020, 1, 2), 86400000, NewYear);
    row("date and int below a day", QDate(2020, 1, 2), 1000, utc(2020, 1, 1, 23, 59, 59));
    row("date and negative double", NewYear, -1.0, QDate(2020, 1, 2));
    row("date and ulonglong", QDate(2020, 1, 2), 86400000000ull, NewYear);
    row("dates keep the type of the left", QDate(2020, 1, 3), NewYear, QDate(1970, 1, 3));
    row("date and itself", NewYear, NewYear, QDate(1970, 1, 1));
    row("date and later date wraps", NewYear, QDate(2020, 1, 2), utc(2106, 2, 6, 6, 28, 16));
    row("times", QTime(13, 0), QTime(12, 0), QTime(1, 0));
    row("time and later time wraps", QTime(0, 0), QTime(0, 0, 1), LastSecond);
    row("moments", utc(2020, 1, 2), utc(2020, 1, 1), utc(1970, 1, 2));
    row("moment and date", utc(2020, 1, 1, 12), NewYear, utc(1970, 1, 1, 12));
    row("lowest distance stays negative", QDate(1970, 1, 1), LongMin, utc(2040, 4, 10, 23, 55, 54));
    row("int and date", 5, NewYear, Fails);
    row("double and moment", 5.0, utc(2020, 1, 1), Fails);
    row("date and text", NewYear, "abc", Fails);
    row("text and date", "abc", NewYear, Fails);
    row("date and bool", NewYear, true, Fails);
    row("date and invalid", NewYear, QVariant(), Fails);
}

void TestTypeToolDates::subtraction()
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    QFETCH(QVariant, expected);
    TypeTool tool(false, false);
    QCOMPARE(describe(tool.do_subtract(a, b)), describe(expected));
    QCOMPARE(tool.wasOK(), expected.isValid());
}

void TestTypeToolDates::order_data()
{
    QTest::addColumn<QVariant>("a");
    QTest::addColumn<QVariant>("b");
    QTest::addColumn<int>("order");
    auto order = [](char const* name, QVariant const& a, QVariant const& b, int expected) {
        QTest::newRow(name) << a << b << expected;
    };
    order("times in microseconds", QTime(0, 0, 0, 1), QTime(0, 0), 1000);
    order("times, earlier", QTime(0, 0), QTime(0, 0, 2), -2000000);
    order("dates clamp up", QDate(2020, 1, 2), NewYear, IntMax);
    order("dates clamp down", NewYear, QDate(2020, 1, 2), IntMin);
    order("equal dates", NewYear, NewYear, 0);
    order("date and moment", NewYear, utc(2020, 1, 1), 0);
    order("date and later moment", NewYear, utc(2020, 1, 1, 0, 0, 1), -1000000);
    order("time and moment on the epoch", QTime(1, 0), utc(1970, 1, 1, 1), 0);
    order("time and int milliseconds", QTime(0, 0, 0, 500), 499, 1000);
    order("int milliseconds and time", 499, QTime(0, 0, 0, 500), -1000);
    order("longlong microseconds and time", 1ll, QTime(0, 0), 1);
    order("date and double days", QDate(1970, 1, 2), 1.0, 0);
    order("date before the epoch", QDate(1969, 12, 31), 0, IntMin);
    order("moments before 1970 are all the same", utc(1969, 12, 31), utc(1950, 1, 1), 0);
    order("moment before 1970 and its date", utc(1969, 12, 31), QDate(1969, 12, 31), IntMax);
    order("invalid moment is late", QDateTime(), utc(2020, 1, 1), IntMax);
    order("null date is the epoch", QDate(), QDate(1970, 1, 1), 0);
    order("difference beyond 64 bits keeps its sign", QDate(1970, 1, 2), LongMin, IntMax);
    order("negative difference beyond 64 bits", QDate(1969, 12, 31), LongMax, IntMin);
    order("date and NaN", NewYear, NaN, IntMax);
}

void TestTypeToolDates::order()
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);
    TypeTool tool(false, false);
    QTEST(tool.compare(a, b), "order");
    QVERIFY(tool.wasOK());
}

void TestTypeToolDates::castToNumber_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("target");
    QTest::addColumn<QVariant>("expected");
    QDateTime const second = utc(1970, 1, 1, 0, 0, 1);
    castRow("moment to int", second, QVariant::Int, 1000);
    castRow("moment to uint", second, QVariant::UInt, 1000u);
    castRow("moment to longlong gives ulonglong", second, QVariant::LongLong, 1000000ull);
    castRow("moment to ulonglong", second, QVariant::ULongLong, 1000000ull);
    castRow("moment to double", utc(1970, 1, 2, 12), QVariant::Double, 1.5);
    castRow("date to double", QDate(1970, 1, 2), QVariant::Double, 1.0);
    castRow("time to int", QTime(0, 0, 0, 250), QVariant::Int, 250);
    // 2400 s is 2400000000 - 2^32 = -1894967296 in 32 bits
    castRow("40 minutes to int are negative", utc(1970, 1, 1, 0, 40), QVariant::Int, -1894967);
    castRow("40 minutes to uint", utc(1970, 1, 1, 0, 40), QVariant::UInt, 2400000u);
    // 4295 s is 4295000000 - 2^32 = 32704
    castRow("more than 32 bits to int", utc(1970, 1, 1, 1, 11, 35), QVariant::Int, 32);
    castRow("more than 32 bits to uint", utc(1970, 1, 1, 1, 11, 35), QVariant::UInt, 32u);
    castRow("date before the epoch to longlong", QDate(1969, 12, 31), QVariant::LongLong, 18446743987309551616ull);
    castRow("date before the epoch to double", QDate(1969, 12, 31), QVariant::Double,
        18446743987309551616.0 / 86400000000.0);
    castRow("null date", QDate(), QVariant::Int, 0);
    castRow("null time", QTime(), QVariant::Double, 0.0);
    castRow("invalid moment", QDateTime(), QVariant::ULongLong, quint64(Saturated));
}

void TestTypeToolDates::castToDate_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("target");
    QTest::addColumn<QVariant>("expected");
    // A negative count is read unsigned: (2^64 - 1) / 10^6 seconds, in 32 bits 4154504685
    QDateTime const wrapped = utc(2101, 8, 26, 13, 4, 45);
    castRow("int to moment", 1000, QVariant::DateTime, utc(1970, 1, 1, 0, 0, 1));
    castRow("int to time", 1000, QVariant::Time, QTime(0, 0, 1));
    castRow("int to date", 86400000, QVariant::Date, QDate(1970, 1, 2));
    castRow("int drops milliseconds", 1999, QVariant::Time, QTime(0, 0, 1));
    castRow("negative int wraps", -1, QVariant::DateTime, wrapped);
    castRow("uint to moment", UIntMax, QVariant::DateTime, utc(1970, 2, 19, 17, 2, 47));
    castRow("longlong to date", 1577836800000000ll, QVariant::Date, NewYear);
    castRow("negative longlong wraps", -1ll, QVariant::DateTime, wrapped);
    castRow("ulonglong to time", 3600000000ull, QVariant::Time, QTime(1, 0));
    castRow("highest ulonglong wraps", ULongMax, QVariant::DateTime, wrapped);
    castRow("double to moment", 1.5, QVariant::DateTime, utc(1970, 1, 2, 12));
    castRow("double to date", 1.5, QVariant::Date, QDate(1970, 1, 2));
    castRow("double to time", 1.5, QVariant::Time, QTime(12, 0));
    castRow("negative double is zero", -1.0, QVariant::DateTime, utc(1970, 1, 1));
    castRow("NaN is zero", NaN, QVariant::DateTime, utc(1970, 1, 1));
    castRow("infinity is the highest", Inf, QVariant::DateTime, wrapped);
    castRow("seconds beyond 32 bits wrap", 4294967296000000ll, QVariant::DateTime, utc(1970, 1, 1));
}

void TestTypeToolDates::castOfOthers_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("target");
    QTest::addColumn<QVariant>("expected");
    castRow("date to moment", NewYear, QVariant::DateTime, Fails);
    castRow("date to date", NewYear, QVariant::Date, Fails);
    castRow("date to text", NewYear, QVariant::String, Fails);
    castRow("date to bool", NewYear, QVariant::Bool, Fails);
    castRow("int to double", 5, QVariant::Double, Fails);
    castRow("int to text", 5, QVariant::String, Fails);
    castRow("bool to date", true, QVariant::Date, Fails);
    castRow("text to date", "2020-01-01", QVariant::Date, Fails);
    castRow("float to date", 1.5f, QVariant::Date, Fails);
    castRow("date to float", NewYear, static_cast<QVariant::Type>(QMetaType::Float), Fails);
    castRow("invalid to date", QVariant(), QVariant::Date, Fails);
    castRow("date to invalid", NewYear, QVariant::Invalid, Fails);
}

void TestTypeToolDates::checkCast()
{
    QFETCH(QVariant, value);
    QFETCH(int, target);
    QFETCH(QVariant, expected);
    QCOMPARE(describe(TypeTool::castDate(value, static_cast<QVariant::Type>(target))), describe(expected));
}

QTEST_GUILESS_MAIN(TestTypeToolDates)
#include "tst_TypeToolDates.moc"
