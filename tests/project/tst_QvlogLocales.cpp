// SPDX-License-Identifier: LGPL-2.1-or-later
#include "QvlogScene.h"

/// Times that were written under one locale and are read under another.
class QvlogLocalesTest : public QObject {
    Q_OBJECT

private slots:
    void localeOfTheLog_data();
    void localeOfTheLog();
    void yearsAreCompletedFromTheHeader_data();
    void yearsAreCompletedFromTheHeader();
};

void QvlogLocalesTest::localeOfTheLog_data()
{
    QTest::addColumn<QByteArray>("environment");
    QTest::addColumn<QStringList>("option");
    QTest::addColumn<QByteArray>("logged");
    QTest::addColumn<QByteArray>("shown");

    auto const row = [](char const* name, char const* environment, QStringList const& option, char const* logged,
                         char const* shown) {
        QTest::newRow(name) << QByteArray(environment) << option << QByteArray(logged) << QByteArray(shown);
    };
    row("C under C", "C", {}, "31 May 2024 18:30:15", "2024-05-31 18:30:15");
    row("German under German", "de_DE.UTF-8", {}, "31.05.24 18:30", "2024-05-31 18:30");
    row("French under French", "fr_FR.UTF-8", {}, "31/05/2024 18:30", "2024-05-31 18:30");
    row("American under American", "en_US.UTF-8", {}, "5/31/24 6:30 PM", "2024-05-31 18:30");
    row("German under C", "C", {}, "31.05.24 18:30", "31.05.24 18:30");
    row("German under C, named", "C", {"--log-locale", "de_DE"}, "31.05.24 18:30", "2024-05-31 18:30");
    row("American under French, named", "fr_FR.UTF-8", {"--log-locale", "en_US"}, "5/6/24 6:30 AM", "2024-05-06 06:30");
    row("French under American, named", "en_US.UTF-8", {"--log-locale", "fr_FR"}, "05/06/2024 06:30",
        "2024-06-05 06:30");
    row("C under German, named", "de_DE.UTF-8", {"--log-locale", "C"}, "31 May 2024 18:30:15", "2024-05-31 18:30:15");
}

void QvlogLocalesTest::localeOfTheLog()
{
    QvlogScene scene;
    QFETCH(QByteArray, environment);
    QFETCH(QStringList, option);
    QFETCH(QByteArray, logged);
    QFETCH(QByteArray, shown);
    scene.write("a.qvl", scene.header() + scene.done("x", logged) + scene.end());
    QvlogResult const result
        = scene.run(QStringList{"show", "a.qvl", "--language", "en"} + option, scene.environment({}, environment));
    QCOMPARE(result.output, shown + "  ann (System)  Export done: x\n");
}

void QvlogLocalesTest::yearsAreCompletedFromTheHeader_data()
{
    QTest::addColumn<QByteArray>("date");
    QTest::addColumn<QByteArray>("logged");
    QTest::addColumn<QByteArray>("shown");

    QTest::newRow("this century") << QByteArray("2024-05-31T18:00:00") << QByteArray("31.05.24 18:30")
                                  << QByteArray("2024-05-31 18:30");
    QTest::newRow("leap day") << QByteArray("2024-02-29T18:00:00") << QByteArray("29.02.24 18:30")
                              << QByteArray("2024-02-29 18:30");
    QTest::newRow("last century") << QByteArray("1999-12-31T18:00:00") << QByteArray("31.12.99 18:30")
                                  << QByteArray("1999-12-31 18:30");
    QTest::newRow("next century") << QByteArray("2101-05-31T18:00:00") << QByteArray("31.05.01 18:30")
                                  << QByteArray("2101-05-31 18:30");
    QTest::newRow("header without a date")
        << QByteArray() << QByteArray("31.05.24 18:30") << QByteArray("1924-05-31 18:30");
}

void QvlogLocalesTest::yearsAreCompletedFromTheHeader()
{
    QvlogScene scene;
    QFETCH(QByteArray, date);
    QFETCH(QByteArray, logged);
    QFETCH(QByteArray, shown);
    scene.write("a.qvl", scene.header(date) + scene.done("x", logged) + scene.end());
    QCOMPARE(scene.run({"show", "a.qvl", "--log-locale", "de_DE"}).output, shown + "  ann (System)  Export done: x\n");
}

QTEST_GUILESS_MAIN(QvlogLocalesTest)
#include "tst_QvlogLocales.moc"
