// SPDX-License-Identifier: LGPL-2.1-or-later
#include "QvlogScene.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <sys/resource.h>

/// What `qvlog show` prints of the entries of a file.
class QvlogShowTest : public QObject {
    Q_OBJECT

private slots:
    void entryIsALine_data();
    void entryIsALine();
    void terminalGetsNothingThatActs_data();
    void terminalGetsNothingThatActs();
    void condition_data();
    void condition();
    void conditionsOnMinutes();
    void languageIsChosen_data();
    void languageIsChosen();
    void fullDiskIsTold();
    void largeFileIsReadInLittleMemory();
};

void QvlogShowTest::entryIsALine_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QByteArray>("line");

    auto const row = [](char const* name, QByteArray const& entry, QByteArray const& line) {
        QTest::newRow(name) << entry << line;
    };
    row("export done", QvlogScene::done("all of it"), "2024-05-31 18:30:00  ann (System)  Export done: all of it");
    row("export start fills its sentence",
        "<Entry ID=\"ExpS\" Time=\"1 Jan 2024 00:00:01\" User=\"bob\" Text=\"Format='%1'; Source='%2'; "
        "Timestamp='%4'; Target='%3'.\" Form=\"AVI\" srcP=\"Gate 3\" dstP=\"/usb\" from=\"31 Dec 2023 10:00:00\"/>",
        "2024-01-01 00:00:01  bob  Export start: Format='AVI'; Source='Gate 3'; Timestamp='31 Dec 2023 10:00:00'; "
        "Target='/usb'.");
    row("switch of the log",
        "<Entry ID=\"ALog\" Time=\"31 May 2024 18:30:00\" User=\"ann\" filO=\"a.qvl\" filN=\"b.qvl\"/>",
        "2024-05-31 18:30:00  ann  Switched log: Switched logging from 'a.qvl' to 'b.qvl'.");
    row("parse error, whose names are crossed",
        "<Entry ID=\"XmlP\" Time=\"31 May 2024 18:30:00\" User=\"Unknown\" srcP=\"Premature end\" errT=\"x.qvl\" "
        "errL=\"3\" errC=\"7\"/>",
        "2024-05-31 18:30:00  Unknown  Action log error: Error 'Premature end' reading action log 'x.qvl' in line '3', "
        "column '7'.");
    row("no user", "<Entry ID=\"ExpD\" Time=\"31 May 2024 18:30:00\" Text=\"x\"/>",
        "2024-05-31 18:30:00  -  Export done: x");
    row("no time", "<Entry ID=\"ExpD\" User=\"ann\" Text=\"x\"/>", "-  ann  Export done: x");
    row("time of another locale", QvlogScene::done("x", "31.05.24 18:30"),
        "31.05.24 18:30  ann (System)  Export done: x");
    row("no description", "<Entry ID=\"ExpD\" Time=\"31 May 2024 18:30:00\" User=\"ann\"/>",
        "2024-05-31 18:30:00  ann  Export done");
    row("type that is not known",
        "<Entry ID=\"Zoom\" Time=\"31 May 2024 18:30:00\" User=\"ann\" lens=\"5\" pos =\"3\"/>",
        "2024-05-31 18:30:00  ann  [Zoom]: lens: 5; pos: 3");
    row("entities", QvlogScene::done("&lt;&amp;&gt;&quot;'"), "2024-05-31 18:30:00  ann (System)  Export done: <&>\"'");
    row("line break in a text", QvlogScene::done("two&#10;lines&#13;&#9;"),
        "2024-05-31 18:30:00  ann (System)  Export done: two\\nlines\\x0d\\t");
    row("beyond the BMP", QvlogScene::done("\xf0\x9f\x8e\xa5"),
        "2024-05-31 18:30:00  ann (System)  Export done: \xf0\x9f\x8e\xa5");
}

void QvlogShowTest::entryIsALine()
{
    QvlogScene scene;
    QFETCH(QByteArray, entry);
    QFETCH(QByteArray, line);
    scene.write("a.qvl", scene.header() + entry + scene.end());
    QvlogResult const result = scene.run({"show", "a.qvl"});
    QCOMPARE(result.error, QString());
    QCOMPARE(result.output, line + '\n');
    QCOMPARE(result.exitCode, 0);
}

void QvlogShowTest::terminalGetsNothingThatActs_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("shown");

    QTest::newRow("escape, which readers drop") << QByteArray("a\x1b[31mb") << QByteArray("a[31mb");
    QTest::newRow("delete") << QByteArray("a\x7f"
                                          "b")
                            << QByteArray("a\\x7fb");
    QTest::newRow("control sequence introducer of 8 bits") << QByteArray("a\xc2\x9b"
                                                                         "31m")
                                                           << QByteArray("a\\x9b31m");
    QTest::newRow("right-to-left override") << QByteArray("a\xe2\x80\xae"
                                                          "b")
                                            << QByteArray("a\\u202eb");
    QTest::newRow("isolate") << QByteArray("a\xe2\x81\xa6"
                                           "b")
                             << QByteArray("a\\u2066b");
    QTest::newRow("line separator") << QByteArray("a\xe2\x80\xa8"
                                                  "b")
                                    << QByteArray("a\\u2028b");
    QTest::newRow("zero width space") << QByteArray("a\xe2\x80\x8b"
                                                    "b")
                                      << QByteArray("a\\u200bb");
}

void QvlogShowTest::terminalGetsNothingThatActs()
{
    QvlogScene scene;
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, shown);
    scene.write("a.qvl", scene.header() + scene.done(text, "31 May 2024 18:30:00", text) + scene.end());
    QCOMPARE(scene.run({"show", "a.qvl"}).output, "2024-05-31 18:30:00  " + shown + "  Export done: " + shown + '\n');
}

void QvlogShowTest::condition_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("shown"); // The texts of the entries.

    auto const row = [](char const* name, QStringList const& options, char const* shown) {
        QTest::newRow(name) << options << shown;
    };
    row("none", {}, "one two three four");
    row("since a day", {"--since", "2024-06-01"}, "three four");
    row("since a minute", {"--since", "2024-05-31T23:59"}, "two three four");
    row("since the very second", {"--since", "2024-05-31T23:59:59"}, "two three four");
    row("since a second later", {"--since", "2024-06-01T00:00:00"}, "three four");
    row("with a blank", {"--since", "2024-06-01 00:00:01"}, "four");
    row("until a day includes it", {"--until", "2024-05-31"}, "one two");
    row("until a minute includes it", {"--until", "2024-05-31T23:59"}, "one two");
    row("until the very second", {"--until", "2024-05-31T23:59:59"}, "one two");
    row("until a second before", {"--until", "2024-05-31T23:59:58"}, "one");
    row("span", {"--since", "2024-05-31T23:00", "--until", "2024-06-01T00:00:00"}, "two three");
    row("span that is none", {"--since", "2024-06-02", "--until", "2024-05-30"}, "");
    row("user as shown", {"--user", "ann (System)"}, "one three");
    row("user without parentheses", {"--user", "ann"}, "one three");
    row("start of a user", {"--user", "an"}, "");
    row("user in another case", {"--user", "Ann"}, "");
    row("two users", {"--user", "ann", "--user", "bob"}, "one two three");
    row("no such user", {"--user", "eve"}, "");
    row("category by code", {"--category", "Expt"}, "one two three");
    row("category by name", {"--category", "Export"}, "one two three");
    row("category by name in another case", {"--category", "error"}, "four");
    row("two categories", {"--category", "Eror", "--category", "Export"}, "one two three four");
    row("category that no entry has", {"--category", "Logon & Logoff"}, "");
    row("id", {"--id", "ExpA"}, "two");
    row("two ids", {"--id", "ExpA", "--id", "XmlP"}, "two four");
    row("text of the description", {"--contains", "TW"}, "two");
    row("text of the user", {"--contains", "bob"}, "two");
    row("text of the action", {"--contains", "export done"}, "one three");
    row("two texts", {"--contains", "export", "--contains", "o"}, "one two three");
    row("two texts of which one is missing", {"--contains", "one", "--contains", "two"}, "");
    row("all together",
        {"--since", "2024-05-31", "--until", "2024-06-01", "--user", "ann", "--category", "Expt", "--id", "ExpD",
            "--contains", "three"},
        "three");
}

void QvlogShowTest::condition()
{
    QvlogScene scene;
    QFETCH(QStringList, options);
    QFETCH(QString, shown);
    scene.write("a.qvl",
        scene.header() + scene.done("one", "31 May 2024 18:30:00")
            + "<Entry ID=\"ExpA\" Time=\"31 May 2024 23:59:59\" User=\"bob\" Text=\"two\"/>"
            + scene.done("three", "1 Jun 2024 00:00:00")
            + "<Entry ID=\"XmlP\" Time=\"1 Jun 2024 12:00:00\" User=\"Unknown\" srcP=\"four\"/>" + scene.end());
    QvlogResult const result = scene.run(QStringList{"show", "a.qvl", "--format", "json"} + options);
    QCOMPARE(result.error, QString());
    QStringList texts;
    for (QByteArray const& line : result.output.split('\n').mid(0, result.output.count('\n'))) {
        QJsonObject const values = QJsonDocument::fromJson(line)["values"].toObject();
        texts += values.contains("Text") ? values["Text"].toString() : values["srcP"].toString();
    }
    QCOMPARE(texts.join(' '), shown);
}

void QvlogShowTest::conditionsOnMinutes()
{
    QvlogScene scene;
    scene.write(
        "a.qvl", scene.header() + scene.done("x", "31/05/2024 18:30") + scene.done("?", "some day") + scene.end());
    auto const count = [&](QStringList const& options) {
        return scene.run(QStringList{"show", "a.qvl", "--log-locale", "fr_FR"} + options).output.count('\n');
    };
    QCOMPARE(count({"--since", "2024-05-31T18:30:59"}), 1);
    QCOMPARE(count({"--since", "2024-05-31T18:31:00"}), 0);
    QCOMPARE(count({"--until", "2024-05-31T18:30:00"}), 1);
    QCOMPARE(count({"--until", "2024-05-31T18:29:59"}), 0);
    QCOMPARE(count({}), 2);
}

void QvlogShowTest::languageIsChosen_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("locale");
    QTest::addColumn<QByteArray>("action");

    QTest::newRow("German") << QStringList{"--language", "de"} << QByteArray("C") << QByteArray("Export abgeschlossen");
    QTest::newRow("French") << QStringList{"--language", "fr"} << QByteArray("C") << QByteArray("Exportation terminée");
    QTest::newRow("English") << QStringList{"--language", "en"} << QByteArray("de_DE.UTF-8")
                             << QByteArray("Export done");
    QTest::newRow("that of the environment")
        << QStringList() << QByteArray("de_AT.UTF-8") << QByteArray("Export abgeschlossen");
    QTest::newRow("environment without a catalogue")
        << QStringList() << QByteArray("sv_SE.UTF-8") << QByteArray("Export done");
}

void QvlogShowTest::languageIsChosen()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, locale);
    QFETCH(QByteArray, action);
    QvlogScene scene;
    scene.write("a.qvl", scene.header() + scene.done("x") + scene.end());
    QvlogResult const result
        = scene.run(QStringList{"show", "--log-locale", "C", "a.qvl"} + options, scene.environment({}, locale));
    QCOMPARE(result.error, QString());
    QCOMPARE(result.output, "2024-05-31 18:30:00  ann (System)  " + action + ": x\n");
}

void QvlogShowTest::fullDiskIsTold()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header() + scene.done("x") + scene.end());
    TerminalProcess process;
    process.setProcessEnvironment(scene.environment({}));
    process.setStandardOutputFile("/dev/full");
    process.start(QVLOG_PROGRAM, {"show", "a.qvl"});
    QvlogResult const result = scene.resultOf(process);
    QCOMPARE(result.error, QString("qvlog: standard output cannot be written: No space left on device\n"));
    QCOMPARE(result.exitCode, 3);
}

void QvlogShowTest::largeFileIsReadInLittleMemory()
{
    constexpr int entries = 200;
    QvlogScene scene;
    QByteArray const entry = scene.done(QByteArray(100000, 'x'));
    scene.write("small.qvl", scene.header() + entry);
    scene.write("large.qvl", scene.header());
    for (int i = 0; i < entries; ++i)
        scene.append("large.qvl", entry);
    QProcessEnvironment environment = scene.environment({});
    environment.insert("ASAN_OPTIONS", "quarantine_size_mb=1"); // Else it keeps what is released.
    auto const kilobytes = [&](QString const& file, int lines) {
        QvlogResult const result = scene.run({"show", file}, environment);
        rusage usage = {};
        getrusage(RUSAGE_CHILDREN, &usage);
        return result.output.count('\n') == lines ? usage.ru_maxrss : -1;
    };
    auto const small = kilobytes("small.qvl", 1);
    QVERIFY(small > 0);
    auto const large = kilobytes("large.qvl", entries);
    QVERIFY2(large > 0 && large - small < 10 * 1024, qPrintable(QString("%1 KiB more").arg(large - small)));
}

QTEST_GUILESS_MAIN(QvlogShowTest)
#include "tst_QvlogShow.moc"
