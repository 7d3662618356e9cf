// SPDX-License-Identifier: LGPL-2.1-or-later
#include "QvlogScene.h"

/// `qvlog convert`.
class QvlogConvertTest : public QObject {
    Q_OBJECT

private slots:
    void report_data();
    void report();
    void reportOfAFolder();
    void reportOfWhatIsAskedFor();
    void logIsEncryptedAndDecrypted();
    void logIsEncryptedAnew();
    void newPasswordIsAskedForTwice();
    void targetIsNeverOverwritten_data();
    void targetIsNeverOverwritten();
    void damagedLog_data();
    void damagedLog();
    void nothingIsLeftOfAFailure_data();
    void nothingIsLeftOfAFailure();

private:
    static QByteArray log() { return QvlogScene::header() + QvlogScene::done("x") + QvlogScene::end(); }
};

void QvlogConvertTest::report_data()
{
    QTest::addColumn<QString>("form");
    QTest::addColumn<QString>("format"); // The same, as show has it.

    QTest::newRow("csv") << "csv"
                         << "csv";
    QTest::newRow("jsonl") << "jsonl"
                           << "json";
    QTest::newRow("xml") << "xml"
                         << "xml";
}

void QvlogConvertTest::report()
{
    QvlogScene scene;
    QFETCH(QString, form);
    QFETCH(QString, format);
    scene.write("a.qvl", log());
    QvlogResult const result = scene.run({"convert", "--to", form, "a.qvl", "report"});
    QCOMPARE(result.error, QString());
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(result.exitCode, 0);
    QByteArray const shown = scene.run({"show", "--format", format, "a.qvl"}).output;
    QVERIFY(shown.contains("Export done"));
    QCOMPARE(scene.read("report"), shown);
}

void QvlogConvertTest::reportOfAFolder()
{
    QvlogScene scene;
    QVERIFY(QDir().mkdir("logs"));
    scene.write("logs/a.qvl", log());
    scene.appendEncrypted("logs/b.qvl", {log()});
    QCOMPARE(scene.run({"convert", "--to", "jsonl", "logs", "report"}, scene.environment("secret")).exitCode, 0);
    QCOMPARE(scene.read("report").count('\n'), 2);
}

void QvlogConvertTest::reportOfWhatIsAskedFor()
{
    QvlogScene scene;
    scene.write("a.qvl", log());
    QCOMPARE(scene.run({"convert", "--to", "jsonl", "--user", "bob", "a.qvl", "report"}).exitCode, 0);
    QCOMPARE(scene.read("report"), QByteArray());
}

void QvlogConvertTest::logIsEncryptedAndDecrypted()
{
    QvlogScene scene;
    // With what readers pass over, so that a copy shows itself as one.
    QByteArray const bytes
        = scene.header() + "<!-- kept -->" + scene.done(QByteArray("\x01\xc3\xa4")) + "<Entry ID=\"Zoom\" a=\"1\"/>";
    scene.write("a.qvl", bytes);
    scene.write("word", "new word\n");
    QvlogResult const encrypted = scene.run(
        {"convert", "--to", "encrypted", "--file-user", "ann", "--new-password-file", "word", "a.qvl", "b.qvl"});
    QCOMPARE(encrypted.error, QString());
    QCOMPARE(encrypted.exitCode, 0);
    QVERIFY(!scene.read("b.qvl").contains("Zoom"));
    QCOMPARE(scene.run({"show", "--file-user", "ann", "b.qvl"}, scene.environment("new word")).output.count('\n'), 2);
    QvlogResult const plain = scene.run(
        {"convert", "--to", "plain", "--file-user", "ann", "b.qvl", "c.qvl"}, scene.environment("new word"));
    QCOMPARE(plain.error, QString());
    QCOMPARE(plain.exitCode, 0);
    QVERIFY(scene.read("c.qvl") == bytes);
    QVERIFY(scene.read("a.qvl") == bytes);
}

void QvlogConvertTest::logIsEncryptedAnew()
{
    QvlogScene scene;
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("x")});
    QProcessEnvironment environment = scene.environment("secret");
    environment.insert("QVLOG_NEW_PASSWORD", "other");
    QCOMPARE(scene.run({"convert", "--to", "encrypted", "a.qvl", "b.qvl"}, environment).exitCode, 0);
    QCOMPARE(scene.run({"show", "b.qvl"}, scene.environment("other")).output.count('\n'), 1);
    QCOMPARE(scene.run({"show", "b.qvl"}, scene.environment("secret")).exitCode, 3);
}

void QvlogConvertTest::newPasswordIsAskedForTwice()
{
    QvlogScene scene;
    scene.write("a.qvl", log());
    Terminal terminal;
    TerminalProcess process(terminal.name());
    process.setProcessEnvironment(scene.environment({}));
    process.start(QVLOG_PROGRAM, {"convert", "--to", "encrypted", "a.qvl", "b.qvl"});
    QTRY_COMPARE(terminal.shown(), QByteArray("Password of the new log: "));
    terminal.type("one\n");
    QTRY_COMPARE(terminal.shown(), QByteArray("Password of the new log: \nThe same again: "));
    terminal.type("two\n");
    QvlogResult const result = scene.resultOf(process);
    QCOMPARE(result.error, QString("qvlog: those were two different passwords\n"));
    QCOMPARE(result.exitCode, 3);
    QVERIFY(!QFile::exists("b.qvl"));
}

void QvlogConvertTest::targetIsNeverOverwritten_data()
{
    QTest::addColumn<QString>("form");

    for (char const* form : {"csv", "jsonl", "xml", "plain", "encrypted"})
        QTest::newRow(form) << QString::fromLatin1(form);
}

void QvlogConvertTest::targetIsNeverOverwritten()
{
    QvlogScene scene;
    QFETCH(QString, form);
    scene.write("a.qvl", log());
    scene.write("word", "new\n");
    scene.write("there", "kept");
    QVERIFY(QFile::link("nowhere", "link"));
    for (QString const& target : {QString("there"), QString("link"), QString("a.qvl")}) {
        QvlogResult const result = scene.run({"convert", "--to", form, "--new-password-file", "word", "a.qvl", target});
        QVERIFY2(result.error.startsWith("qvlog: '" + target + "' cannot be written: "), qPrintable(result.error));
        QCOMPARE(result.exitCode, 3);
    }
    QCOMPARE(scene.read("there"), QByteArray("kept"));
    QCOMPARE(scene.read("a.qvl"), log());
    QVERIFY(!QFile::exists("nowhere"));
}

void QvlogConvertTest::damagedLog_data()
{
    QTest::addColumn<QString>("form");
    QTest::addColumn<int>("lines"); // Of the target; -1 where there is none.

    QTest::newRow("csv holds what stands before") << "csv" << 2;
    QTest::newRow("jsonl holds what stands before") << "jsonl" << 1;
    QTest::newRow("plain is not made") << "plain" << -1;
    QTest::newRow("encrypted is not made") << "encrypted" << -1;
}

void QvlogConvertTest::damagedLog()
{
    QvlogScene scene;
    QFETCH(QString, form);
    QFETCH(int, lines);
    scene.write("word", "new\n");
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("x"), scene.done("y"), scene.done("z")});
    scene.flipBit("a.qvl", QFileInfo("a.qvl").size() - 2 * (scene.done("z").size() + 64) + 30);
    QvlogResult const result = scene.run(
        {"convert", "--to", form, "--new-password-file", "word", "a.qvl", "b"}, scene.environment("secret"));
    QVERIFY2(result.error.startsWith("qvlog: 'a.qvl' is damaged: byte "), qPrintable(result.error));
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(QFile::exists("b") ? scene.read("b").count('\n') : -1, lines);
}

void QvlogConvertTest::nothingIsLeftOfAFailure_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");

    auto const row = [](char const* name, QStringList const& arguments, char const* message) {
        QTest::newRow(name) << arguments << QString::fromUtf8(message);
    };
    row("report of a missing log", {"--to", "csv", "nowhere.qvl", "b"},
        "'nowhere.qvl': there is no such file or folder");
    row("plain of a missing log", {"--to", "plain", "nowhere.qvl", "b"},
        "'nowhere.qvl': it cannot be read: No such file or directory");
    row("report with a wrong password", {"--to", "csv", "a.qvl", "b"}, "'a.qvl': it has another file user or password");
    row("plain with a wrong password", {"--to", "plain", "a.qvl", "b"},
        "'a.qvl': it has another file user or password");
    row("no new password", {"--to", "encrypted", "a.qvl", "b"},
        "there is no terminal to ask for the password: use --password-file or QVLOG_NEW_PASSWORD");
    row("report of a category that is none", {"--to", "csv", "--category", "Coffee", "a.qvl", "b"},
        "--category takes a code such as Expt or a name such as Export, not 'Coffee'");
    row("missing folder", {"--to", "csv", "a.qvl", "nowhere/b"},
        "'nowhere/b' cannot be written: No such file or directory");
}

void QvlogConvertTest::nothingIsLeftOfAFailure()
{
    QvlogScene scene;
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("x")});
    QvlogResult const result = scene.run(QStringList{"convert"} + arguments, scene.environment("wrong"));
    QCOMPARE(result.error, "qvlog: " + message + '\n');
    QVERIFY(result.exitCode == 3 || result.exitCode == 2);
    QCOMPARE(QDir().entryList(QDir::Files), QStringList{"a.qvl"});
}

QTEST_GUILESS_MAIN(QvlogConvertTest)
#include "tst_QvlogConvert.moc"
