// SPDX-License-Identifier: LGPL-2.1-or-later
#include "QvlogScene.h"

#include <QXmlStreamReader>

#include <sys/stat.h>

/// Which files are read, in which order, and what keeps them from it.
class QvlogFilesTest : public QObject {
    Q_OBJECT

private slots:
    void filesAreInTheOrderOfTime();
    void filesOfOneSecondAreInTheOrderOfNames();
    void fileIsReadOnce();
    void otherFilesOfAFolderAreLeftOut();
    void encrypted_data();
    void encrypted();
    void fileThatEndsEarly_data();
    void fileThatEndsEarly();
    void damage_data();
    void damage();
    void entriesBeforeTheDamageAreShown();
    void damageOfAnEncryptedFile();
    void fileThatCannotBeRead_data();
    void fileThatCannotBeRead();
};

void QvlogFilesTest::filesAreInTheOrderOfTime()
{
    QvlogScene scene;
    QVERIFY(QDir().mkdir("logs"));
    scene.write(
        "logs/c.qvl", scene.header("2024-05-01T00:00:00") + scene.done("one", "1 May 2024 01:00:00") + scene.end());
    scene.write(
        "logs/a.qvl", scene.header("2024-05-02T00:00:00") + scene.done("two", "2 May 2024 01:00:00") + scene.end());
    scene.write("logs/b.qvl", scene.header("2024-05-03T00:00:00") + scene.done("three", "3 May 2024 01:00:00"));
    scene.write("d", scene.header("2024-05-01T12:00:00") + scene.done("other", "1 May 2024 13:00:00") + scene.end());
    QCOMPARE(scene.run({"show", "logs"}).output,
        QByteArray("2024-05-01 01:00:00  ann (System)  Export done: one\n"
                   "2024-05-02 01:00:00  ann (System)  Export done: two\n"
                   "2024-05-03 01:00:00  ann (System)  Export done: three\n"));
    QCOMPARE(scene.run({"show", "logs", "d"}).output,
        QByteArray("2024-05-01 01:00:00  ann (System)  Export done: one\n"
                   "2024-05-01 13:00:00  ann (System)  Export done: other\n"
                   "2024-05-02 01:00:00  ann (System)  Export done: two\n"
                   "2024-05-03 01:00:00  ann (System)  Export done: three\n"));
    QCOMPARE(scene.run({"show", "logs/b.qvl", "logs/c.qvl"}).output,
        QByteArray("2024-05-01 01:00:00  ann (System)  Export done: one\n"
                   "2024-05-03 01:00:00  ann (System)  Export done: three\n"));
}

void QvlogFilesTest::filesOfOneSecondAreInTheOrderOfNames()
{
    QvlogScene scene;
    QVERIFY(QDir().mkdir("logs"));
    QStringList const names{"2024-05-31 18-00-00 client.qvl", "2024-05-31 18-00-00 client (2).qvl",
        "2024-05-31 18-00-00 client (10).qvl", "2024-05-31 18-00-01 client.qvl", "ActionLog.qvl"};
    for (int i = names.size(); i-- > 0;)
        scene.write("logs/" + names.at(i), scene.header() + scene.done(QByteArray::number(i)) + scene.end());
    QByteArray texts;
    for (QByteArray const& line : scene.run({"show", "logs"}).output.split('\n'))
        texts += line.right(1);
    QCOMPARE(texts, QByteArray("01234"));
}

void QvlogFilesTest::fileIsReadOnce()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header() + scene.done("x") + scene.end());
    QVERIFY(QFile::link("a.qvl", "b.qvl"));
    QCOMPARE(scene.run({"show", "a.qvl", ".", "./a.qvl", "b.qvl"}).output.count('\n'), 1);
}

void QvlogFilesTest::otherFilesOfAFolderAreLeftOut()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header() + scene.done("x") + scene.end());
    scene.write("b.qvl.corrupt", "<");
    scene.write("notes.txt", "<");
    QVERIFY(QDir().mkdir("folder.qvl"));
    QvlogResult const result = scene.run({"show", "."});
    QCOMPARE(result.error, QString());
    QCOMPARE(result.output.count('\n'), 1);
    QCOMPARE(result.exitCode, 0);
}

void QvlogFilesTest::encrypted_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("password");
    QTest::addColumn<QString>("error"); // Empty where the entry is shown.

    QString const wrong = "qvlog: 'a.qvl': it has another file user or password\n";
    QTest::newRow("password in the environment") << QStringList{"--file-user", "ann"} << QByteArray("secret") << "";
    QTest::newRow("password in a file") << QStringList{"--file-user", "ann", "--password-file", "word"} << QByteArray()
                                        << "";
    QTest::newRow("file before environment")
        << QStringList{"--file-user", "ann", "--password-file", "word"} << QByteArray("other") << "";
    QTest::newRow("wrong password") << QStringList{"--file-user", "ann"} << QByteArray("Secret") << wrong;
    QTest::newRow("wrong user") << QStringList() << QByteArray("secret") << wrong;
    QTest::newRow("nobody to ask") << QStringList() << QByteArray()
                                   << "qvlog: 'a.qvl': there is no terminal to ask for the password: use "
                                      "--password-file or QVLOG_PASSWORD\n";
    QTest::newRow("empty password") << QStringList() << QByteArray("")
                                    << "qvlog: 'a.qvl': the password is empty: the file would not be encrypted\n";
}

void QvlogFilesTest::encrypted()
{
    QvlogScene scene;
    QFETCH(QStringList, options);
    QFETCH(QByteArray, password);
    QFETCH(QString, error);
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("x"), scene.end()}, "ann");
    scene.write("word", "secret\n");
    QvlogResult const result = scene.run(QStringList{"show", "a.qvl"} + options, scene.environment(password));
    QCOMPARE(result.error, error);
    QCOMPARE(result.output,
        error.isEmpty() ? QByteArray("2024-05-31 18:30:00  ann (System)  Export done: x\n") : QByteArray());
    QCOMPARE(result.exitCode, error.isEmpty() ? 0 : 3);
}

void QvlogFilesTest::fileThatEndsEarly_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("lines");

    QByteArray const whole = QvlogScene::header() + QvlogScene::done("x");
    QTest::newRow("empty") << QByteArray() << 0;
    QTest::newRow("half a header") << whole.left(60) << 0;
    QTest::newRow("header alone") << QvlogScene::header() << 0;
    QTest::newRow("no end tag") << whole << 1;
    QTest::newRow("half an entry") << whole + "<Entry ID=\"ExpD\" Te" << 1;
    QTest::newRow("half an end tag") << whole + "\n</Entr" << 1;
}

void QvlogFilesTest::fileThatEndsEarly()
{
    QvlogScene scene;
    QFETCH(QByteArray, bytes);
    QFETCH(int, lines);
    scene.write("a.qvl", bytes);
    QvlogResult const result = scene.run({"show", "a.qvl"});
    QCOMPARE(result.error, QString());
    QCOMPARE(result.output.count('\n'), lines);
    QCOMPARE(result.exitCode, 0);
}

void QvlogFilesTest::damage_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("place");

    QByteArray const header = QvlogScene::header();
    QTest::newRow("no XML") << QByteArray("hello") << "line 1, column ";
    QTest::newRow("another document") << QByteArray("<html></html>") << "line 1, column 0: this is no log file";
    QTest::newRow("header of another version")
        << QByteArray(header).replace("v0.1", "v0.2") << "the header has the version 'v0.2', not 'v0.1'";
    QTest::newRow("header without a version")
        << QByteArray(header).replace("Version=\"v0.1\" ", "") << "the header has the version '', not 'v0.1'";
    QTest::newRow("entry within an entry") << header + "\n<Entry ID=\"ExpD\" <Entry"
                                           << "line 2, column ";
    QTest::newRow("wrong end tag") << header + "\n\n</Entry>"
                                   << "line 3, column ";
    QTest::newRow("document type") << QByteArray("<!DOCTYPE Entries [<!ENTITY a \"b\">]>") + header
                                   << "A log file has no document type.";
}

void QvlogFilesTest::damage()
{
    QvlogScene scene;
    QFETCH(QByteArray, bytes);
    QFETCH(QString, place);
    scene.write("a.qvl", bytes);
    QvlogResult const result = scene.run({"show", "a.qvl"});
    QVERIFY2(result.error.startsWith("qvlog: 'a.qvl' is damaged: "), qPrintable(result.error));
    QVERIFY2(result.error.contains(place), qPrintable(result.error));
    QCOMPARE(result.error.count('\n'), 1);
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(result.exitCode, 1);
}

void QvlogFilesTest::entriesBeforeTheDamageAreShown()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header("2024-05-01T00:00:00") + scene.done("a") + "</x>" + scene.done("lost"));
    scene.write("b.qvl", scene.header("2024-05-02T00:00:00") + scene.done("b") + scene.end());
    QvlogResult const result = scene.run({"show", "."});
    QCOMPARE(result.output.count('\n'), 2);
    QVERIFY(result.output.endsWith("b\n"));
    QCOMPARE(result.exitCode, 1);
    QvlogResult const document = scene.run({"show", "--format", "xml", "."});
    QXmlStreamReader reader(document.output);
    while (!reader.atEnd())
        reader.readNext();
    QVERIFY2(!reader.hasError(), document.output);
}

void QvlogFilesTest::damageOfAnEncryptedFile()
{
    QvlogScene scene;
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("x"), scene.done("y"), scene.end()});
    // Header and session record, the log's header in a record of its own, then somewhere in the first entry.
    qint64 const inFirstEntry = 128 + 96 + (scene.header().size() + 64) + 40;
    scene.flipBit("a.qvl", inFirstEntry);
    QvlogResult const result = scene.run({"show", "a.qvl"}, scene.environment("secret"));
    QVERIFY2(result.error.startsWith("qvlog: 'a.qvl' is damaged: byte "), qPrintable(result.error));
    QVERIFY(result.error.contains(", record "));
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(result.exitCode, 1);
}

void QvlogFilesTest::fileThatCannotBeRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("message");

    QTest::newRow("missing") << "nowhere.qvl"
                             << "'nowhere.qvl': there is no such file or folder";
    QTest::newRow("folder without logs") << "empty"
                                         << "'empty': the folder holds no log file (*.qvl)";
    QTest::newRow("pipe") << "pipe"
                          << "'pipe': it is no regular file";
    QTest::newRow("control characters in the name") << "a\x1b[1m"
                                                    << "'a\\x1b[1m': there is no such file or folder";
}

void QvlogFilesTest::fileThatCannotBeRead()
{
    QvlogScene scene;
    QFETCH(QString, name);
    QFETCH(QString, message);
    QVERIFY(QDir().mkdir("empty"));
    QCOMPARE(mkfifo("pipe", 0600), 0);
    QvlogResult const result = scene.run({"show", name});
    QCOMPARE(result.error, "qvlog: " + message + '\n');
    QCOMPARE(result.exitCode, 3);
}

QTEST_GUILESS_MAIN(QvlogFilesTest)
#include "tst_QvlogFiles.moc"
