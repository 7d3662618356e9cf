// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/SplitPolicy_p.h>

#include <QLocale>
#include <QTest>

#include <limits>

using namespace qv;

Q_DECLARE_METATYPE(ESplitPolicy)

namespace {

QDateTime noon(int year, int month, int day)
{
    return QDateTime(QDate(year, month, day), QTime(12, 0));
}

} // namespace

class tst_SplitPolicy : public QObject {
    Q_OBJECT

private slots:
    void isDueByCalendar_data();
    void isDueByCalendar();
    void isDueBySize_data();
    void isDueBySize();
    void names_data();
    void names();
    void storedNumbers_data();
    void storedNumbers();
};

void tst_SplitPolicy::isDueByCalendar_data()
{
    QTest::addColumn<ESplitPolicy>("policy");
    QTest::addColumn<QDateTime>("begun");
    QTest::addColumn<QDateTime>("now");
    QTest::addColumn<bool>("isDue");
    QTest::newRow("none, next day") << SplitNone << noon(2026, 11, 21) << noon(2026, 11, 22) << false;
    QTest::newRow("none, next year") << SplitNone << noon(2026, 11, 21) << noon(2027, 12, 31) << false;

    QTest::newRow("daily, same day") << SplitDaily << noon(2026, 11, 21) << noon(2026, 11, 21).addSecs(3600) << false;
    QTest::newRow("daily, a second before midnight")
        << SplitDaily << noon(2026, 11, 21) << noon(2026, 11, 21).addSecs(43199) << false;
    QTest::newRow("daily, at midnight") << SplitDaily << noon(2026, 11, 21) << noon(2026, 11, 21).addSecs(43200)
                                        << true;
    QTest::newRow("daily, next month") << SplitDaily << noon(2026, 11, 30) << noon(2026, 12, 1) << true;
    QTest::newRow("daily, clock set back") << SplitDaily << noon(2026, 11, 21) << noon(2026, 11, 20) << false;
    QTest::newRow("daily, new year: day 1 is not above 365")
        << SplitDaily << noon(2026, 12, 31) << noon(2027, 1, 1) << false;
    QTest::newRow("daily, a year later: the number is reached, not passed")
        << SplitDaily << noon(2026, 12, 30) << noon(2027, 12, 30) << false;
    QTest::newRow("daily, a year and a day later: the number is passed")
        << SplitDaily << noon(2026, 12, 30) << noon(2027, 12, 31) << true;
    QTest::newRow("daily, day 366 of a leap year") << SplitDaily << noon(2026, 12, 31) << noon(2028, 12, 31) << true;

    QTest::newRow("weekly, Sunday of the week") << SplitWeekly << noon(2026, 11, 21) << noon(2026, 11, 22) << false;
    QTest::newRow("weekly, Monday after") << SplitWeekly << noon(2026, 11, 21) << noon(2026, 11, 23) << true;
    QTest::newRow("weekly, new year: week 1 is not above 53")
        << SplitWeekly << noon(2026, 12, 30) << noon(2027, 1, 5) << false;
    QTest::newRow("weekly, next year's last week: 52 is not above 53")
        << SplitWeekly << noon(2026, 12, 30) << noon(2027, 12, 30) << false;
    QTest::newRow("weekly, week 53 of the next year is above 52")
        << SplitWeekly << noon(2025, 12, 25) << noon(2026, 12, 30) << true;

    QTest::newRow("monthly, same month") << SplitMonthly << noon(2026, 11, 1) << noon(2026, 11, 30) << false;
    QTest::newRow("monthly, next month") << SplitMonthly << noon(2026, 11, 30) << noon(2026, 12, 1) << true;
    QTest::newRow("monthly, new year: month 1 is not above 12")
        << SplitMonthly << noon(2026, 12, 31) << noon(2027, 1, 31) << false;
    QTest::newRow("monthly, begun in November, passed in December of the next year")
        << SplitMonthly << noon(2026, 11, 30) << noon(2027, 12, 1) << true;
}

void tst_SplitPolicy::isDueByCalendar()
{
    QFETCH(ESplitPolicy, policy);
    QFETCH(QDateTime, begun);
    QFETCH(QDateTime, now);
    constexpr qint64 hugeFile = std::numeric_limits<qint64>::max();
    QTEST(split::isDue(policy, 0, begun, now, hugeFile), "isDue");
}

void tst_SplitPolicy::isDueBySize_data()
{
    QTest::addColumn<int>("splitSize");
    QTest::addColumn<qint64>("plainSize");
    QTest::addColumn<bool>("isDue");
    QTest::newRow("as large as allowed") << 100 << qint64(100) << false;
    QTest::newRow("a byte above") << 100 << qint64(101) << true;
    QTest::newRow("a byte, not a kilobyte") << 1 << qint64(2) << true;
    QTest::newRow("beyond 32 bits") << std::numeric_limits<int>::max() << (qint64(1) << 32) + 1 << true;
    QTest::newRow("zero, empty file") << 0 << qint64(0) << false;
    QTest::newRow("zero, one byte") << 0 << qint64(1) << true;
    QTest::newRow("negative") << -1 << qint64(0) << true;
}

void tst_SplitPolicy::isDueBySize()
{
    QFETCH(int, splitSize);
    QFETCH(qint64, plainSize);
    QTEST(split::isDue(SplitBySize, splitSize, noon(2026, 1, 1), noon(2026, 1, 1), plainSize), "isDue");
}

void tst_SplitPolicy::names_data()
{
    QTest::addColumn<ESplitPolicy>("policy");
    QTest::addColumn<QDateTime>("begun");
    QTest::addColumn<QString>("name");
    QString const november = QLocale::system().toString(QDate(2026, 11, 21), QStringLiteral("MMM"));
    QTest::newRow("daily") << SplitDaily << noon(2026, 11, 21) << "2026-47-21 Trail";
    QTest::newRow("daily, one digit") << SplitDaily << noon(2026, 2, 3) << "2026-6-03 Trail";
    QTest::newRow("daily, the year is that of the day, the week that of its year")
        << SplitDaily << noon(2027, 1, 1) << "2027-53-01 Trail";
    QTest::newRow("weekly") << SplitWeekly << noon(2026, 11, 21) << "2026-47 Trail";
    QTest::newRow("weekly, the year is that of the day, too") << SplitWeekly << noon(2027, 1, 1) << "2027-53 Trail";
    QTest::newRow("monthly") << SplitMonthly << noon(2026, 11, 21) << QStringLiteral("2026-%1 Trail").arg(november);
    QTest::newRow("by size: now, and the application")
        << SplitBySize << noon(2026, 11, 21) << "2026-12-31 12-00-00 Viewer";
}

void tst_SplitPolicy::names()
{
    QFETCH(ESplitPolicy, policy);
    QFETCH(QDateTime, begun);
    QTEST(split::movedAsideName(policy, begun, noon(2026, 12, 31), QStringLiteral("Trail"), QStringLiteral("Viewer")),
        "name");
}

void tst_SplitPolicy::storedNumbers_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<ESplitPolicy>("policy");
    QTest::newRow("0") << 0 << SplitNone;
    QTest::newRow("1") << 1 << SplitDaily;
    QTest::newRow("2") << 2 << SplitWeekly;
    QTest::newRow("4") << 4 << SplitMonthly;
    QTest::newRow("8") << 8 << SplitBySize;
    QTest::newRow("two at a time") << 3 << SplitNone;
    QTest::newRow("unknown") << 16 << SplitNone;
    QTest::newRow("negative") << -1 << SplitNone;
}

void tst_SplitPolicy::storedNumbers()
{
    QFETCH(int, number);
    QTEST(split::policyFrom(number), "policy");
}

QTEST_GUILESS_MAIN(tst_SplitPolicy)
#include "tst_SplitPolicy.moc"
