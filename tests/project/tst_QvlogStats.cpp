// SPDX-License-Identifier: LGPL-2.1-or-later
#include "QvlogScene.h"

/// `qvlog stats`.
class QvlogStatsTest : public QObject {
    Q_OBJECT

private slots:
    void countsArePlainWhereNoTerminalIs();
    void conditionsCount();
    void barsFitTheTerminal_data();
    void barsFitTheTerminal();
    void namesAreEscapedAndShortened();
    void manyUsersAreSummedUp();
    void nothingAtAll();

private:
    static void writeLog(QvlogScene& scene);
};

void QvlogStatsTest::writeLog(QvlogScene& scene)
{
    QByteArray log = scene.header();
    for (int i = 0; i < 8; ++i)
        log += scene.done("x", "31 May 2024 18:30:00", "ann");
    log += scene.done("x", "1 Jun 2024 18:30:00", "bob") + scene.done("x", "1 Jun 2024 18:30:00", "bob");
    log += "<Entry ID=\"Zoom\" User=\"bob\"/><Entry ID=\"XmlP\" Time=\"1 Jun 2024 18:30:00\"/>";
    scene.write("a.qvl", log);
}

void QvlogStatsTest::countsArePlainWhereNoTerminalIs()
{
    QvlogScene scene;
    writeLog(scene);
    QvlogResult const result = scene.run({"stats", "a.qvl"});
    QCOMPARE(result.error, QString());
    QCOMPARE(result.output,
        QByteArray("By user\n"
                   "  -    1\n"
                   "  ann  8\n"
                   "  bob  3\n"
                   "\n"
                   "By category\n"
                   "  -        1\n"
                   "  Error    1\n"
                   "  Export  10\n"
                   "\n"
                   "By day\n"
                   "  -           1\n"
                   "  2024-05-31  8\n"
                   "  2024-06-01  3\n"
                   "\n"
                   "12 entries\n"));
    QCOMPARE(result.exitCode, 0);
}

void QvlogStatsTest::conditionsCount()
{
    QvlogScene scene;
    writeLog(scene);
    QByteArray const output = scene.run({"stats", "--user", "bob", "--id", "ExpD", "a.qvl"}).output;
    QVERIFY2(output.startsWith("By user\n  bob  2\n\n"), output);
    QVERIFY(output.endsWith("\n2 entries\n"));
    QVERIFY(
        scene.run({"stats", "--since", "2024-06-01", "--category", "Error", "a.qvl"}).output.endsWith("\n1 entry\n"));
}

void QvlogStatsTest::barsFitTheTerminal_data()
{
    QTest::addColumn<QString>("columns");
    QTest::addColumn<int>("longest"); // Of the bars by user: the line without 2 + 3 + 2 + 1 + 2.

    QTest::newRow("narrow") << "30" << 20;
    QTest::newRow("wide") << "90" << 80;
    QTest::newRow("narrower than can be") << "1" << 10;
    QTest::newRow("not a number") << "many" << 70;
}

void QvlogStatsTest::barsFitTheTerminal()
{
    QvlogScene scene;
    writeLog(scene);
    QFETCH(QString, columns);
    QFETCH(int, longest);
    Terminal terminal;
    TerminalProcess process;
    QProcessEnvironment environment = scene.environment({});
    environment.insert("COLUMNS", columns);
    process.setProcessEnvironment(environment);
    process.setStandardOutputFile(terminal.name());
    process.start(QVLOG_PROGRAM, {"stats", "a.qvl"});
    QCOMPARE(scene.resultOf(process).exitCode, 0);
    QTRY_VERIFY(terminal.shown().endsWith("12 entries\n"));
    QByteArrayList const lines = terminal.shown().split('\n');
    QCOMPARE(lines.at(1), "  -    1  " + QByteArray(longest / 8, '#'));
    QCOMPARE(lines.at(2), "  ann  8  " + QByteArray(longest, '#'));
    QCOMPARE(lines.at(3), "  bob  3  " + QByteArray(longest * 3 / 8, '#'));
}

void QvlogStatsTest::namesAreEscapedAndShortened()
{
    QvlogScene scene;
    scene.write("a.qvl",
        scene.header() + scene.done("x", "31 May 2024 18:30:00", "a\x7f")
            + scene.done("x", "1 Jun 2024 00:00:00", QByteArray(50, 'b')));
    QVERIFY(scene.run({"stats", "a.qvl"})
                .output.startsWith(
                    "By user\n  a\\x7f" + QByteArray(35, ' ') + "  1\n  " + QByteArray(37, 'b') + "...  1\n"));
}

void QvlogStatsTest::manyUsersAreSummedUp()
{
    QvlogScene scene;
    QByteArray log = scene.header();
    for (int i = 0; i < 10003; ++i)
        log += scene.done("x", "31 May 2024 18:30:00", QByteArray::number(i));
    scene.write("a.qvl", log);
    QvlogResult const result = scene.run({"stats", "a.qvl"});
    QVERIFY(result.output.startsWith("By user\n  (others)  3\n  0         1\n"));
    QVERIFY(result.output.endsWith("\n10,003 entries\n"));
}

void QvlogStatsTest::nothingAtAll()
{
    QvlogScene scene;
    scene.write("a.qvl", "");
    QCOMPARE(scene.run({"stats", "a.qvl"}).output, QByteArray("By user\n\nBy category\n\nBy day\n\n0 entries\n"));
}

QTEST_GUILESS_MAIN(QvlogStatsTest)
#include "tst_QvlogStats.moc"
