// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/TimeConversions.h>

#include <QRegularExpression>
#include <QTest>

#include <limits>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr qint64 lowest = std::numeric_limits<qint64>::min();
constexpr qint64 highest = std::numeric_limits<qint64>::max();
constexpr quint64 highestFrameTime = std::numeric_limits<quint64>::max();

QDateTime utc(QString const& isoText)
{
    QDateTime time = QDateTime::fromString(isoText, Qt::ISODateWithMs);
    time.setTimeSpec(Qt::UTC);
    return time;
}

/// What a moment is called in each of the zones that the tests run in.
struct Moment {
    char const* name;
    quint64 frameTime;
    char const* utc;
    char const* berlin;
    char const* kolkata;
    char const* newYork;
};

// clang-format off
constexpr Moment moments[] = {
    {"epoch", 0,
        "01.01.1970-00:00:00.000", "01.01.1970-01:00:00.000", "01.01.1970-05:30:00.000", "31.12.1969-19:00:00.000"},
    {"below a millisecond", 999,
        "01.01.1970-00:00:00.000", "01.01.1970-01:00:00.000", "01.01.1970-05:30:00.000", "31.12.1969-19:00:00.000"},
    {"twenty minutes", 1250250123,
        "01.01.1970-00:20:50.250", "01.01.1970-01:20:50.250", "01.01.1970-05:50:50.250", "31.12.1969-19:20:50.250"},
    {"last moment of a year", 1577836799999999,
        "31.12.2019-23:59:59.999", "01.01.2020-00:59:59.999", "01.01.2020-05:29:59.999", "31.12.2019-18:59:59.999"},
    {"leap day", 1582977600000000,
        "29.02.2020-12:00:00.000", "29.02.2020-13:00:00.000", "29.02.2020-17:30:00.000", "29.02.2020-07:00:00.000"},
    {"before Berlin's gap in spring", 1585443599999000,
        "29.03.2020-00:59:59.999", "29.03.2020-01:59:59.999", "29.03.2020-06:29:59.999", "28.03.2020-20:59:59.999"},
    {"after Berlin's gap in spring", 1585443600000000,
        "29.03.2020-01:00:00.000", "29.03.2020-03:00:00.000", "29.03.2020-06:30:00.000", "28.03.2020-21:00:00.000"},
    {"summer", 1594853130007089,
        "15.07.2020-22:45:30.007", "16.07.2020-00:45:30.007", "16.07.2020-04:15:30.007", "15.07.2020-18:45:30.007"},
    {"Berlin's 02:30 in summer time", 1603585800000000,
        "25.10.2020-00:30:00.000", "25.10.2020-02:30:00.000", "25.10.2020-06:00:00.000", "24.10.2020-20:30:00.000"},
    {"Berlin's second 02:30", 1603589400000000,
        "25.10.2020-01:30:00.000", "25.10.2020-02:30:00.000", "25.10.2020-07:00:00.000", "24.10.2020-21:30:00.000"},
    {"New York's second 01:30", 1636266600000000,
        "07.11.2021-06:30:00.000", "07.11.2021-07:30:00.000", "07.11.2021-12:00:00.000", "07.11.2021-01:30:00.000"},
    {"beyond 32 bits of seconds", 4294967296000000,
        "07.02.2106-06:28:16.000", "07.02.2106-07:28:16.000", "07.02.2106-11:58:16.000", "07.02.2106-01:28:16.000"},
    {"highest frame time", highestFrameTime,
        "19.01.586524-08:01:49.551", "19.01.586524-09:01:49.551", "19.01.586524-13:31:49.551", "19.01.586524-03:01:49.551"},
};
// clang-format on

char const* localText(Moment const& moment)
{
    QByteArray const zone = qgetenv("TZ");
    if (zone == "Europe/Berlin")
        return moment.berlin;
    if (zone == "Asia/Kolkata")
        return moment.kolkata;
    if (zone == "America/New_York")
        return moment.newYork;
    return zone == "UTC" ? moment.utc : "no expectation for this time zone";
}

void momentColumns()
{
    QTest::addColumn<quint64>("frameTime");
    QTest::addColumn<QString>("text");
    for (Moment const& moment : moments)
        QTest::newRow(moment.name) << moment.frameTime << localText(moment);
}

/// Day, month, year, hour, minute, second, millisecond.
QStringList fieldsOf(QString const& text)
{
    return text.split(QRegularExpression("[.:-]"));
}

} // namespace

class tst_TimeConversions : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void fromSeconds_data();
    void fromSeconds();
    void fromSecondsIsLocalTime_data();
    void fromSecondsIsLocalTime();
    void fromMilliSeconds_data();
    void fromMilliSeconds();
    void fromMicroSeconds_data();
    void fromMicroSeconds();
    void fromFrameTime_data();
    void fromFrameTime();
    void fromNanoSeconds_data();
    void fromNanoSeconds();
    void fromFractionalSeconds_data();
    void fromFractionalSeconds();
    void toCounts_data();
    void toCounts();
    void toSecondsFracOfDateTime_data();
    void toSecondsFracOfDateTime();
    void toSecondsFracOfFrameTime_data();
    void toSecondsFracOfFrameTime();
    void wholeSecondsSurviveTheRoundTrip_data();
    void wholeSecondsSurviveTheRoundTrip();
    void currentCounts();
    void dayConstants();
    void transcoderFields_data() { momentColumns(); }
    void transcoderFields();
    void transcoderTexts_data() { momentColumns(); }
    void transcoderTexts();
    void transcoderOfMilliSeconds_data();
    void transcoderOfMilliSeconds();
    void microsecondOfAFrameTime_data();
    void microsecondOfAFrameTime();
};

void tst_TimeConversions::initTestCase()
{
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", "UTC");
}

void tst_TimeConversions::fromSeconds_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QDateTime>("time");
    QTest::newRow("epoch") << qint64(0) << utc("1970-01-01T00:00:00");
    QTest::newRow("one second") << qint64(1) << utc("1970-01-01T00:00:01");
    QTest::newRow("leap day") << qint64(1582934400) << utc("2020-02-29T00:00:00");
    QTest::newRow("highest of 31 bits") << qint64(2147483647) << utc("2038-01-19T03:14:07");
    QTest::newRow("beyond 31 bits") << qint64(2147483648) << utc("2038-01-19T03:14:08");
    QTest::newRow("highest of 32 bits") << qint64(4294967295) << utc("2106-02-07T06:28:15");
    QTest::newRow("wraps after 2106") << qint64(4294967296) << utc("1970-01-01T00:00:00");
    QTest::newRow("wraps five seconds after 2106") << qint64(4294967301) << utc("1970-01-01T00:00:05");
    QTest::newRow("wraps before 1970") << qint64(-1) << utc("2106-02-07T06:28:15");
    QTest::newRow("wraps a day before 1970") << qint64(-86400) << utc("2106-02-06T06:28:16");
    QTest::newRow("lowest") << lowest << utc("1970-01-01T00:00:00");
    QTest::newRow("highest") << highest << utc("2106-02-07T06:28:15");
}

void tst_TimeConversions::fromSeconds()
{
    QFETCH(qint64, seconds);
    QFETCH(QDateTime, time);
    QCOMPARE(qv::fromSeconds(seconds), time);
    QCOMPARE(qv::fromSeconds(seconds).timeSpec(), Qt::LocalTime);
}

void tst_TimeConversions::fromSecondsIsLocalTime_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QString>("text");
    for (Moment const& moment : moments) {
        auto const seconds = qint64(moment.frameTime / 1000000);
        if (seconds <= std::numeric_limits<quint32>::max())
            QTest::newRow(moment.name) << seconds << QString(localText(moment)).left(19);
    }
}

void tst_TimeConversions::fromSecondsIsLocalTime()
{
    QFETCH(qint64, seconds);
    QFETCH(QString, text);
    QCOMPARE(QLocale::c().toString(qv::fromSeconds(seconds), QString("dd.MM.yyyy-hh:mm:ss")), text);
}

void tst_TimeConversions::fromMilliSeconds_data()
{
    QTest::addColumn<qint64>("milliSeconds");
    QTest::addColumn<QDateTime>("time");
    QTest::newRow("epoch") << qint64(0) << utc("1970-01-01T00:00:00");
    QTest::newRow("below a second is dropped") << qint64(999) << utc("1970-01-01T00:00:00");
    QTest::newRow("half a second is dropped") << qint64(1500) << utc("1970-01-01T00:00:01");
    QTest::newRow("leap day") << qint64(1582934400999) << utc("2020-02-29T00:00:00");
    QTest::newRow("last in range") << qint64(4294967295999) << utc("2106-02-07T06:28:15");
    QTest::newRow("wraps after 2106") << qint64(4294967296000) << utc("1970-01-01T00:00:00");
    QTest::newRow("less than a second before 1970") << qint64(-999) << utc("1970-01-01T00:00:00");
    QTest::newRow("wraps before 1970") << qint64(-1000) << utc("2106-02-07T06:28:15");
    QTest::newRow("negative fraction is dropped") << qint64(-1999) << utc("2106-02-07T06:28:15");
    QTest::newRow("lowest") << lowest << utc("2017-11-28T00:21:29");
    QTest::newRow("highest") << highest << utc("2058-03-12T06:06:47");
}

void tst_TimeConversions::fromMilliSeconds()
{
    QFETCH(qint64, milliSeconds);
    QFETCH(QDateTime, time);
    QCOMPARE(qv::fromMilliSeconds(milliSeconds), time);
    QCOMPARE(qv::fromMilliSeconds(milliSeconds).timeSpec(), Qt::UTC);
}

void tst_TimeConversions::fromMicroSeconds_data()
{
    QTest::addColumn<qint64>("microSeconds");
    QTest::addColumn<QDateTime>("time");
    QTest::newRow("epoch") << qint64(0) << utc("1970-01-01T00:00:00");
    QTest::newRow("fraction is dropped") << qint64(1999999) << utc("1970-01-01T00:00:01");
    QTest::newRow("leap day") << qint64(1582977600000000) << utc("2020-02-29T12:00:00");
    QTest::newRow("wraps after 2106") << qint64(4294967296000000) << utc("1970-01-01T00:00:00");
    QTest::newRow("less than a second before 1970") << qint64(-999999) << utc("1970-01-01T00:00:00");
    QTest::newRow("wraps before 1970") << qint64(-1000000) << utc("2106-02-07T06:28:15");
    QTest::newRow("lowest") << lowest << utc("2040-04-10T23:55:54");
    QTest::newRow("highest") << highest << utc("2035-10-29T06:32:22");
}

void tst_TimeConversions::fromMicroSeconds()
{
    QFETCH(qint64, microSeconds);
    QFETCH(QDateTime, time);
    QCOMPARE(qv::fromMicroSeconds(microSeconds), time);
    QCOMPARE(qv::fromMicroSeconds(microSeconds).timeSpec(), Qt::UTC);
}

void tst_TimeConversions::fromFrameTime_data()
{
    QTest::addColumn<quint64>("frameTime");
    QTest::addColumn<QDateTime>("time");
    QTest::newRow("epoch") << quint64(0) << utc("1970-01-01T00:00:00");
    QTest::newRow("fraction is dropped") << quint64(1250999) << utc("1970-01-01T00:00:01");
    QTest::newRow("leap day") << quint64(1582977600000000) << utc("2020-02-29T12:00:00");
    QTest::newRow("wraps after 2106") << quint64(4294967301000000) << utc("1970-01-01T00:00:05");
    QTest::newRow("highest is not negative") << highestFrameTime << utc("2101-08-26T13:04:45");
}

void tst_TimeConversions::fromFrameTime()
{
    QFETCH(quint64, frameTime);
    QFETCH(QDateTime, time);
    QCOMPARE(qv::fromFrameTime(frameTime), time);
    QCOMPARE(qv::fromFrameTime(frameTime).timeSpec(), Qt::UTC);
}

void tst_TimeConversions::fromNanoSeconds_data()
{
    QTest::addColumn<qint64>("nanoSeconds");
    QTest::addColumn<QDateTime>("time");
    QTest::newRow("epoch") << qint64(0) << utc("1970-01-01T00:00:00");
    QTest::newRow("fraction is dropped") << qint64(1999999999) << utc("1970-01-01T00:00:01");
    QTest::newRow("leap day") << qint64(1582977600000000000) << utc("2020-02-29T12:00:00");
    QTest::newRow("less than a second before 1970") << qint64(-999999999) << utc("1970-01-01T00:00:00");
    QTest::newRow("wraps before 1970") << qint64(-1000000000) << utc("2106-02-07T06:28:15");
    QTest::newRow("wraps after 2106") << qint64(4294967296000000000) << utc("1970-01-01T00:00:00");
    QTest::newRow("lowest") << lowest << utc("2086-01-10T19:37:32");
    QTest::newRow("highest") << highest << utc("1990-01-27T10:50:44");
}

void tst_TimeConversions::fromNanoSeconds()
{
    QFETCH(qint64, nanoSeconds);
    QFETCH(QDateTime, time);
    QCOMPARE(qv::fromNanoSeconds(nanoSeconds), time);
    QCOMPARE(qv::fromNanoSeconds(nanoSeconds).timeSpec(), Qt::UTC);
}

void tst_TimeConversions::fromFractionalSeconds_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QDateTime>("time");
    QTest::newRow("epoch") << 0.0 << utc("1970-01-01T00:00:00");
    QTest::newRow("fraction is dropped") << 1.75 << utc("1970-01-01T00:00:01");
    QTest::newRow("leap day") << 1582977600.5 << utc("2020-02-29T12:00:00");
    QTest::newRow("less than a second before 1970") << -0.5 << utc("1970-01-01T00:00:00");
    QTest::newRow("wraps before 1970") << -1.0 << utc("2106-02-07T06:28:15");
    QTest::newRow("wraps after 2106") << 4294967296.0 << utc("1970-01-01T00:00:00");
    QTest::newRow("smallest") << std::numeric_limits<double>::denorm_min() << utc("1970-01-01T00:00:00");
    QTest::newRow("beyond 64 bits of nanoseconds") << 1e300 << utc("1990-01-27T10:50:44");
    QTest::newRow("infinity") << infinity << utc("1990-01-27T10:50:44");
    QTest::newRow("below 64 bits of nanoseconds") << -1e300 << utc("2086-01-10T19:37:32");
    QTest::newRow("negative infinity") << -infinity << utc("2086-01-10T19:37:32");
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << utc("2086-01-10T19:37:32");
}

void tst_TimeConversions::fromFractionalSeconds()
{
    QFETCH(double, seconds);
    QFETCH(QDateTime, time);
    QCOMPARE(qv::fromSeconds(seconds), time);
    QCOMPARE(qv::fromSeconds(seconds).timeSpec(), Qt::UTC);
}

void tst_TimeConversions::toCounts_data()
{
    QTest::addColumn<QDateTime>("time");
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<qint64>("milliSeconds");
    QDateTime const leapDay = utc("2020-02-29T12:00:00.007");
    QDateTime const newYear(QDate(2020, 1, 1), QTime(0, 30, 0, 1), Qt::OffsetFromUTC, 3600);
    QTest::newRow("epoch") << utc("1970-01-01T00:00:00") << qint64(0) << qint64(0);
    QTest::newRow("milliseconds") << utc("1970-01-01T00:00:01.250") << qint64(1) << qint64(1250);
    QTest::newRow("leap day") << leapDay << qint64(1582977600) << qint64(1582977600007);
    QTest::newRow("leap day in local time") << leapDay.toLocalTime() << qint64(1582977600) << qint64(1582977600007);
    QTest::newRow("with an offset") << newYear << qint64(1577835000) << qint64(1577835000001);
    QTest::newRow("last before the limit")
        << utc("2106-02-07T06:28:14.999") << qint64(4294967294) << qint64(4294967294999);
    QTest::newRow("the limit") << utc("2106-02-07T06:28:15.999") << qint64(4294967295) << qint64(4294967295999);
    QTest::newRow("after 2106") << utc("2107-01-01T00:00:00.003") << qint64(4294967295) << qint64(4294967295003);
    QTest::newRow("year 9999") << utc("9999-12-31T23:59:59.999") << qint64(4294967295) << qint64(4294967295999);
    QTest::newRow("a part of a second before 1970") << utc("1969-12-31T23:59:59.250") << qint64(0) << qint64(250);
    QTest::newRow("a second before 1970") << utc("1969-12-31T23:59:59") << qint64(4294967295) << qint64(4294967295000);
    QTest::newRow("long before 1970") << utc("1800-01-01T00:00:00.5") << qint64(4294967295) << qint64(4294967295500);
    QTest::newRow("no time of day") << QDateTime(QDate(2020, 2, 29), QTime(), Qt::UTC) << qint64(1582934400)
                                    << qint64(1582934400000);
    QTest::newRow("no date") << QDateTime(QDate(), QTime(12, 0), Qt::UTC) << qint64(4294967295)
                             << qint64(4294967295000);
    QTest::newRow("null") << QDateTime() << qint64(4294967295) << qint64(4294967295000);
}

void tst_TimeConversions::toCounts()
{
    QFETCH(QDateTime, time);
    QFETCH(qint64, milliSeconds);
    QTEST(qv::toSeconds(time), "seconds");
    QCOMPARE(qv::toMilliSeconds(time), milliSeconds);
    QCOMPARE(qv::toMicroSeconds(time), milliSeconds * 1000);
    QCOMPARE(qv::toFrameTime(time), quint64(milliSeconds) * 1000);
    QCOMPARE(qv::toNanoSeconds(time), milliSeconds * 1000000);
}

void tst_TimeConversions::toSecondsFracOfDateTime_data()
{
    QTest::addColumn<QDateTime>("time");
    QTest::addColumn<double>("seconds");
    QTest::newRow("epoch") << utc("1970-01-01T00:00:00") << 0.0;
    QTest::newRow("fraction") << utc("1970-01-01T00:00:01.250") << 1.25;
    QTest::newRow("leap day") << utc("2020-02-29T12:00:00.500") << 1582977600.5;
    QTest::newRow("before 1970") << utc("1960-01-01T00:00:00.500") << 4294967295.5;
    QTest::newRow("null") << QDateTime() << 4294967295.0;
}

void tst_TimeConversions::toSecondsFracOfDateTime()
{
    QFETCH(QDateTime, time);
    QTEST(qv::toSecondsFrac(time), "seconds");
}

void tst_TimeConversions::toSecondsFracOfFrameTime_data()
{
    QTest::addColumn<quint64>("frameTime");
    QTest::addColumn<double>("seconds");
    QTest::newRow("epoch") << quint64(0) << 0.0;
    QTest::newRow("one microsecond") << quint64(1) << 1e-6;
    QTest::newRow("fraction") << quint64(1500000) << 1.5;
    QTest::newRow("beyond 63 bits is not negative") << quint64(9223372036854775808u) << 9223372036854.775808;
    QTest::newRow("highest") << highestFrameTime << 18446744073709.551615;
}

void tst_TimeConversions::toSecondsFracOfFrameTime()
{
    QFETCH(quint64, frameTime);
    QTEST(qv::toSecondsFrac(frameTime), "seconds");
}

void tst_TimeConversions::wholeSecondsSurviveTheRoundTrip_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::newRow("epoch") << qint64(0);
    QTest::newRow("first day") << qint64(86399);
    QTest::newRow("Berlin's 02:30 in summer time") << qint64(1603585800);
    QTest::newRow("Berlin's second 02:30") << qint64(1603589400);
    QTest::newRow("beyond 31 bits") << qint64(2147483648);
    QTest::newRow("last before the limit") << qint64(4294967294);
}

void tst_TimeConversions::wholeSecondsSurviveTheRoundTrip()
{
    QFETCH(qint64, seconds);
    QCOMPARE(qv::toSeconds(qv::fromSeconds(seconds)), seconds);
    QCOMPARE(qv::toMilliSeconds(qv::fromMilliSeconds(seconds * 1000)), seconds * 1000);
    QCOMPARE(qv::toMicroSeconds(qv::fromMicroSeconds(seconds * 1000000)), seconds * 1000000);
    QCOMPARE(qv::toFrameTime(qv::fromFrameTime(quint64(seconds) * 1000000)), quint64(seconds) * 1000000);
    QCOMPARE(qv::toNanoSeconds(qv::fromNanoSeconds(seconds * 1000000000)), seconds * 1000000000);
}

void tst_TimeConversions::currentCounts()
{
    qint64 const before = QDateTime::currentMSecsSinceEpoch();
    qint64 const seconds = qv::currentSeconds();
    qint64 const counts[]
        = {qv::currentMilliSeconds(), qv::currentMicroSeconds() / 1000, qv::currentNanoSeconds() / 1000000,
            qint64(qv::currentFrameTime() / 1000), qRound64(qv::currentSecondsFrac() * 1000)};
    qint64 const after = QDateTime::currentMSecsSinceEpoch();
    QVERIFY2(seconds >= before / 1000 && seconds <= after / 1000, QByteArray::number(seconds));
    for (qint64 const count : counts)
        QVERIFY2(count >= before && count <= after, QByteArray::number(count));
}

void tst_TimeConversions::dayConstants()
{
    QCOMPARE(qint64(qv::CTimeTranscoder::MICROSECONDS_PER_DAY), qint64(86400000000));
    QCOMPARE(int(qv::CTimeTranscoder::MILLISECONDS_PER_DAY), 86400000);
}

void tst_TimeConversions::transcoderFields()
{
    QFETCH(quint64, frameTime);
    QFETCH(QString, text);
    qv::CTimeTranscoder const time(frameTime);
    QStringList const fields = fieldsOf(text);
    QCOMPARE(fields.size(), 7);
    QCOMPARE(time.day(), fields[0].toInt());
    QCOMPARE(time.month(), fields[1].toInt());
    QCOMPARE(time.year(), fields[2].toInt());
    QCOMPARE(time.hour(), fields[3].toInt());
    QCOMPARE(time.minute(), fields[4].toInt());
    QCOMPARE(time.second(), fields[5].toInt());
    QCOMPARE(time.millisecond(), fields[6].toInt());
}

void tst_TimeConversions::transcoderTexts()
{
    QFETCH(quint64, frameTime);
    QFETCH(QString, text);
    qv::CTimeTranscoder const time(frameTime);
    QStringList const fields = fieldsOf(text);
    QCOMPARE(QString::fromStdString(time.toString()), text);
    QCOMPARE(fields.size(), 7);
    QString const idText
        = fields[2] + fields[1] + fields[0] + '_' + fields[3] + fields[4] + fields[5] + '_' + fields[6];
    QCOMPARE(QString::fromStdString(time.toIdString()), idText);
}

void tst_TimeConversions::transcoderOfMilliSeconds_data()
{
    static constexpr Moment milliMoments[] = {
        {"epoch", 0, "01.01.1970-00:00:00.000", "01.01.1970-01:00:00.000", "01.01.1970-05:30:00.000",
            "31.12.1969-19:00:00.000"},
        {"twenty minutes", 1250250, "01.01.1970-00:20:50.250", "01.01.1970-01:20:50.250", "01.01.1970-05:50:50.250",
            "31.12.1969-19:20:50.250"},
        {"beyond 31 bits", 2147483648, "25.01.1970-20:31:23.648", "25.01.1970-21:31:23.648", "26.01.1970-02:01:23.648",
            "25.01.1970-15:31:23.648"},
        {"highest", 4294967295, "19.02.1970-17:02:47.295", "19.02.1970-18:02:47.295", "19.02.1970-22:32:47.295",
            "19.02.1970-12:02:47.295"},
    };
    QTest::addColumn<unsigned int>("milliSeconds");
    QTest::addColumn<QString>("text");
    for (Moment const& moment : milliMoments)
        QTest::newRow(moment.name) << static_cast<unsigned int>(moment.frameTime) << localText(moment);
}

void tst_TimeConversions::transcoderOfMilliSeconds()
{
    QFETCH(unsigned int, milliSeconds);
    QFETCH(QString, text);
    qv::CTimeTranscoder const time(milliSeconds);
    QCOMPARE(QString::fromStdString(time.toString()), text);
    QCOMPARE(time.millisecond(), fieldsOf(text).last().toInt());
    QCOMPARE(time.microsecond(), 0);
}

void tst_TimeConversions::microsecondOfAFrameTime_data()
{
    QTest::addColumn<quint64>("frameTime");
    QTest::addColumn<int>("microsecond");
    QTest::newRow("none") << quint64(1250250000) << 0;
    QTest::newRow("some") << quint64(1250250123) << 123;
    QTest::newRow("most") << quint64(999) << 999;
    QTest::newRow("whole millisecond") << quint64(1000) << 0;
    QTest::newRow("highest frame time") << highestFrameTime << 615;
}

void tst_TimeConversions::microsecondOfAFrameTime()
{
    QFETCH(quint64, frameTime);
    QTEST(qv::CTimeTranscoder(frameTime).microsecond(), "microsecond");
}

QTEST_GUILESS_MAIN(tst_TimeConversions)
#include "tst_TimeConversions.moc"
