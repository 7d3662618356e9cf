// SPDX-License-Identifier: LGPL-2.1-or-later
#include "QvlogScene.h"

/// `qvlog verify` on whole and on damaged files.
class QvlogVerifyTest : public QObject {
    Q_OBJECT

private slots:
    void plain_data();
    void plain();
    void encryptedIsIntact_data();
    void encryptedIsIntact();
    void everyFlippedBitIsFound();
    void damagedContentOfAnIntactEncryptedFile();
    void damagedRecordInTheMiddle();
    void tornEncryptedFile();
    void severalFiles();
    void unreadableFileIsNoDamage();
};

void QvlogVerifyTest::plain_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("verdict"); // Its beginning, where damage is worded by Qt.
    QTest::addColumn<int>("exitCode");

    auto const row = [](char const* name, QByteArray const& bytes, QByteArray const& verdict, int exitCode) {
        QTest::newRow(name) << bytes << verdict << exitCode;
    };
    QByteArray const header = QvlogScene::header();
    QByteArray const entry = QvlogScene::done("x");
    QByteArray const end = QvlogScene::end();
    row("empty", "", "intact, 0 entries, plain, not ended", 0);
    row("header alone", header, "intact, 0 entries, plain, not ended", 0);
    row("one entry", header + entry, "intact, 1 entry, plain, not ended", 0);
    row("ended", header + entry + entry + end, "intact, 2 entries, plain, ended", 0);
    row("type that is not known", header + entry + "<Entry ID=\"Zoom\"/>" + end,
        "intact, 2 entries (1 of unknown types), plain, ended", 0);
    row("control characters that older writers left", header + QvlogScene::done(QByteArray("a\0b\x01", 4)) + end,
        "intact, 1 entry, plain, ended", 0);
    row("half an entry", header + entry + "<Entry ID=\"ExpD\" Ti",
        "DAMAGED at byte " + QByteArray::number((header + entry).size())
            + ": the last entry is incomplete; 1 entry before",
        1);
    row("half a header", header.left(50), "DAMAGED at byte 0: the last entry is incomplete; 0 entries before", 1);
    row("cut entry before a whole one", header + "\n" + entry + "\n<Entry ID=\"ExpD\" Ti\n" + entry + end,
        "DAMAGED at line 4, column ", 1);
    row("something behind the end", header + entry + end + "<Entry/>", "DAMAGED at line 3, column ", 1);
    row("another version", QByteArray(header).replace("v0.1", "v9"), "DAMAGED at line 1, column ", 1);
    row("another document", "<a/>", "DAMAGED at line 1, column 0: this is no log file; 0 entries before", 1);
    row("entry of 17 MiB", header + entry + QvlogScene::done(QByteArray(17 * 1024 * 1024, 'x')),
        "DAMAGED at line 1, column ", 1);
}

void QvlogVerifyTest::plain()
{
    QvlogScene scene;
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, verdict);
    scene.write("a.qvl", bytes);
    QvlogResult const result = scene.run({"verify", "a.qvl"});
    QCOMPARE(result.error, QString());
    QVERIFY2(result.output.startsWith("a.qvl: " + verdict), result.output);
    QCOMPARE(result.output.count('\n'), 1);
    QTEST(result.exitCode, "exitCode");
}

void QvlogVerifyTest::encryptedIsIntact_data()
{
    QTest::addColumn<QByteArrayList>("pieces");
    QTest::addColumn<QByteArray>("verdict");

    QByteArray const header = QvlogScene::header();
    QByteArray const entry = QvlogScene::done("x");
    QTest::newRow("header alone") << QByteArrayList{header} << QByteArray("intact, 0 entries, encrypted, not ended");
    QTest::newRow("entries") << QByteArrayList{header, entry, entry}
                             << QByteArray("intact, 2 entries, encrypted, not ended");
    QTest::newRow("ended") << QByteArrayList{header, entry, QvlogScene::end()}
                           << QByteArray("intact, 1 entry, encrypted, ended");
}

void QvlogVerifyTest::encryptedIsIntact()
{
    QvlogScene scene;
    QFETCH(QByteArrayList, pieces);
    QFETCH(QByteArray, verdict);
    scene.appendEncrypted("a.qvl", pieces);
    QvlogResult const result = scene.run({"verify", "a.qvl"}, scene.environment("secret"));
    QCOMPARE(result.error, QString());
    QCOMPARE(result.output, "a.qvl: " + verdict + '\n');
    QCOMPARE(result.exitCode, 0);
}

void QvlogVerifyTest::everyFlippedBitIsFound()
{
    QvlogScene scene;
    scene.appendEncrypted("whole.qvl", {scene.header(), scene.done("x"), scene.done("y"), scene.end()});
    qint64 const size = QFileInfo("whole.qvl").size();
    for (qint64 offset = 0; offset < size; offset += 61) {
        QFile::remove("a.qvl");
        QVERIFY(QFile::copy("whole.qvl", "a.qvl"));
        scene.flipBit("a.qvl", offset);
        QvlogResult const result = scene.run({"verify", "a.qvl"}, scene.environment("secret"));
        // In the first 8 bytes stands what tells an encrypted file from others.
        QVERIFY2(result.exitCode == 1, qPrintable(QString::number(offset) + ": " + result.output + result.error));
        QVERIFY(result.output.startsWith("a.qvl: DAMAGED at "));
    }
}

void QvlogVerifyTest::damagedContentOfAnIntactEncryptedFile()
{
    QvlogScene scene;
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("x"), "\n</x>"});
    QvlogResult const result = scene.run({"verify", "a.qvl"}, scene.environment("secret"));
    QVERIFY2(result.output.startsWith("a.qvl: DAMAGED at line 2, column "), result.output);
    QVERIFY(result.output.endsWith("; 1 entry before\n"));
    QCOMPARE(result.exitCode, 1);
}

void QvlogVerifyTest::damagedRecordInTheMiddle()
{
    QvlogScene scene;
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("x"), scene.done("y"), scene.done("z"), scene.end()});
    // The header of the file takes 128 bytes, the record of the session 96, each of the others 64 more than its text.
    int const start = 128 + 96 + 64 + scene.header().size() + 64 + scene.done("x").size();
    scene.flipBit("a.qvl", start + 50);
    QByteArray const damage
        = "byte " + QByteArray::number(start) + ", record 3: A record is damaged, or is not the one that belongs here";
    QvlogResult const result = scene.run({"verify", "a.qvl"}, scene.environment("secret"));
    QCOMPARE(result.output, "a.qvl: DAMAGED at " + damage + "; 1 entry before\n");
    QCOMPARE(result.error, QString());
    QCOMPARE(result.exitCode, 1);
    QvlogResult const shown = scene.run({"show", "a.qvl"}, scene.environment("secret"));
    QCOMPARE(shown.output, QByteArray("2024-05-31 18:30:00  ann (System)  Export done: x\n"));
    QCOMPARE(shown.error, "qvlog: 'a.qvl' is damaged: " + damage + '\n');
    QCOMPARE(shown.exitCode, 1);
}

void QvlogVerifyTest::tornEncryptedFile()
{
    QvlogScene scene;
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("x"), scene.done("y")});
    qint64 const start = QFileInfo("a.qvl").size() - scene.done("y").size() - 64;
    QVERIFY(QFile::resize("a.qvl", QFileInfo("a.qvl").size() - 10));
    QvlogResult const result = scene.run({"verify", "a.qvl"}, scene.environment("secret"));
    QVERIFY2(result.output.startsWith("a.qvl: DAMAGED at byte " + QByteArray::number(start)), result.output);
    QVERIFY(result.output.endsWith("; 1 entry before\n"));
    QCOMPARE(result.exitCode, 1);
}

void QvlogVerifyTest::severalFiles()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header("2024-05-01T00:00:00") + scene.end());
    scene.write("b.qvl", scene.header("2024-05-02T00:00:00") + "</x>");
    scene.write("c.qvl", scene.header("2024-05-03T00:00:00") + scene.done("x"));
    QvlogResult const result = scene.run({"verify", "."});
    QByteArrayList const lines = result.output.split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines.at(0), QByteArray("./a.qvl: intact, 0 entries, plain, ended"));
    QVERIFY(lines.at(1).startsWith("./b.qvl: DAMAGED at line 1, column "));
    QCOMPARE(lines.at(2), QByteArray("./c.qvl: intact, 1 entry, plain, not ended"));
    QCOMPARE(result.exitCode, 1);
}

void QvlogVerifyTest::unreadableFileIsNoDamage()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header() + scene.end());
    scene.appendEncrypted("b.qvl", {scene.header()});
    QvlogResult const wrong = scene.run({"verify", "."}, scene.environment("wrong"));
    QCOMPARE(wrong.output, QByteArray("./a.qvl: intact, 0 entries, plain, ended\n"));
    QCOMPARE(wrong.error, QString("qvlog: './b.qvl': it has another file user or password\n"));
    QCOMPARE(wrong.exitCode, 3);
    scene.write("c.qvl", "<");
    QCOMPARE(scene.run({"verify", "."}, scene.environment("wrong")).exitCode, 1);
}

QTEST_GUILESS_MAIN(QvlogVerifyTest)
#include "tst_QvlogVerify.moc"
