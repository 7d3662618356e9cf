// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvlog/LogTimes.h>
#include <qvlog/Moments.h>
#include <qvlog/Sources.h>

#include <QtTest>

/// Pieces of the tool that need no process.
class QvlogPartsTest : public QObject {
    Q_OBJECT

private slots:
    void moments_data();
    void moments();
    void noMoments_data();
    void noMoments();
    void times_data();
    void times();
    void secondsOfLocales();
    void names_data();
    void names();
};

void QvlogPartsTest::moments_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDateTime>("first");
    QTest::addColumn<QDateTime>("last");

    QDate const day(2024, 5, 31);
    QTest::newRow("day") << "2024-05-31" << QDateTime(day, QTime(0, 0)) << QDateTime(day, QTime(23, 59, 59, 999));
    QTest::newRow("minute") << "2024-05-31T18:30" << QDateTime(day, QTime(18, 30))
                            << QDateTime(day, QTime(18, 30, 59, 999));
    QTest::newRow("second") << "2024-05-31T18:30:15" << QDateTime(day, QTime(18, 30, 15))
                            << QDateTime(day, QTime(18, 30, 15, 999));
    QTest::newRow("blank between") << "2024-05-31 18:30" << QDateTime(day, QTime(18, 30))
                                   << QDateTime(day, QTime(18, 30, 59, 999));
    QTest::newRow("UTC") << "2024-05-31T18:30Z" << QDateTime(day, QTime(18, 30), Qt::UTC)
                         << QDateTime(day, QTime(18, 30, 59, 999), Qt::UTC);
    QTest::newRow("offset") << "2024-05-31T18:30:15+02:00" << QDateTime(day, QTime(16, 30, 15), Qt::UTC)
                            << QDateTime(day, QTime(16, 30, 15, 999), Qt::UTC);
    QTest::newRow("leap day") << "2024-02-29" << QDateTime(QDate(2024, 2, 29), QTime(0, 0))
                              << QDateTime(QDate(2024, 2, 29), QTime(23, 59, 59, 999));
}

void QvlogPartsTest::moments()
{
    QFETCH(QString, text);
    Moments const moments = momentsOf(text);
    QTEST(moments.first, "first");
    QTEST(moments.last, "last");
    QCOMPARE(moments.first.timeSpec(), Qt::LocalTime);
}

void QvlogPartsTest::noMoments_data()
{
    QTest::addColumn<QString>("text");

    for (char const* text : {"", "today", "2024", "2024-05", "2024-5-31", "31.05.2024", "2024-05-32", "2023-02-29",
             "2024-13-01", "2024-05-31T", "2024-05-31T18", "2024-05-31T25:00", "2024-05-31T18:60",
             "2024-05-31T18:30:61", " 2024-05-31", "2024-05-31 ", "2024-05-31\n", "2024-05-31T18:30+2", "2024-05-31Z"})
        QTest::newRow(text) << QString::fromLatin1(text);
}

void QvlogPartsTest::noMoments()
{
    QFETCH(QString, text);
    Moments const moments = momentsOf(text);
    QVERIFY(moments.first.isNull());
    QVERIFY(moments.last.isNull());
}

void QvlogPartsTest::times_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QDate>("logDate");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDateTime>("time");

    auto const row
        = [](char const* name, char const* locale, QDate const& date, char const* text, QDateTime const& time) {
              QTest::newRow(name) << QString::fromLatin1(locale) << date << QString::fromUtf8(text) << time;
          };
    QDate const date(2024, 1, 1);
    QDateTime const evening(QDate(2024, 5, 31), QTime(18, 30));
    row("C", "C", date, "31 May 2024 18:30:00", evening);
    row("German", "de_DE", date, "31.05.24 18:30", evening);
    row("American", "en_US", date, "5/31/24 6:30 PM", evening);
    row("British", "en_GB", date, "31/05/2024 18:30", evening);
    row("French", "fr_FR", date, "31/05/2024 18:30", evening);
    row("Swedish", "sv_SE", date, "2024-05-31 18:30", evening);
    row("Czech", "cs_CZ", date, "31.05.24 18:30", evening);
    row("German of the last century", "de_DE", QDate(1998, 1, 1), "31.05.24 18:30", evening.addYears(-100));
    row("four digits stay as they are", "fr_FR", QDate(2124, 1, 1), "31/05/2024 18:30", evening);
    row("German without a header", "de_DE", QDate(), "31.05.24 18:30", evening.addYears(-100));
    row("leap day that the century does not have", "de_DE", QDate(2100, 1, 1), "29.02.04 18:30",
        QDateTime(QDate(2104, 2, 29), QTime(18, 30)));
    row("another locale's", "de_DE", date, "5/31/24 6:30 PM", QDateTime());
    row("nothing", "de_DE", date, "", QDateTime());
    row("ISO 8601", "de_DE", date, "2024-05-31T18:30:00", QDateTime());
}

void QvlogPartsTest::times()
{
    QFETCH(QString, locale);
    QFETCH(QDate, logDate);
    QFETCH(QString, text);
    LogTimes times(QLocale(locale), logDate.isValid() ? QDateTime(logDate, QTime(12, 0)) : QDateTime());
    QTEST(times.read(text), "time");
}

void QvlogPartsTest::secondsOfLocales()
{
    QVERIFY(LogTimes(QLocale::c(), {}).hasSeconds());
    QVERIFY(!LogTimes(QLocale("de_DE"), {}).hasSeconds());
    QVERIFY(!LogTimes(QLocale("en_US"), {}).hasSeconds());
}

void QvlogPartsTest::names_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");

    QTest::newRow("no number first") << "a.qvl"
                                     << "a (2).qvl";
    QTest::newRow("numbers as such") << "a (2).qvl"
                                     << "a (10).qvl";
    QTest::newRow("numbers of one name") << "a (10).qvl"
                                         << "b.qvl";
    QTest::newRow("numbers before the whole suffix") << "a (9).qvl.corrupt"
                                                     << "a (10).qvl.corrupt";
    QTest::newRow("folders do not matter") << "z/a.qvl"
                                           << "b/b.qvl";
    QTest::newRow("folders of one name do") << "b/a.qvl"
                                            << "z/a.qvl";
    QTest::newRow("dates before names") << "2024-05-31 client.qvl"
                                        << "ActionLog.qvl";
    QTest::newRow("number within a name") << "a (2) b.qvl"
                                          << "a (3) a.qvl";
    QTest::newRow("number that is none") << "a (10000000000).qvl"
                                         << "a (2000000000).qvl";
}

void QvlogPartsTest::names()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QVERIFY(isNamedEarlier(first, second));
    QVERIFY(!isNamedEarlier(second, first));
    QVERIFY(!isNamedEarlier(first, first));
}

QTEST_GUILESS_MAIN(QvlogPartsTest)
#include "tst_QvlogParts.moc"
