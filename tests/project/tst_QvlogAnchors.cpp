// SPDX-License-Identifier: LGPL-2.1-or-later
#include "QvlogScene.h"

/// What `qvlog verify` keeps of encrypted logs, and finds out by it later.
class QvlogAnchorsTest : public QObject {
    Q_OBJECT

private slots:
    void compared_data();
    void compared();
    void outlivesTheEndTag();
    void ofAFolder();
    void ofIntactLogsOnly_data();
    void ofIntactLogsOnly();
    void refused_data();
    void refused();
};

void QvlogAnchorsTest::compared_data()
{
    QTest::addColumn<QByteArrayList>("now"); // What the log holds when it is compared; it held x and y.
    QTest::addColumn<bool>("isSameFile");
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<int>("exitCode");

    QByteArray const header = QvlogScene::header();
    QByteArray const x = QvlogScene::done("x");
    QByteArray const y = QvlogScene::done("y");
    // The header of the file takes 128 bytes, the record of the session 96, each of the others 64 more than its text.
    QByteArray const recordEnd = QByteArray::number(128 + 96 + 64 + header.size() + 64 + x.size());
    QTest::newRow("nothing happened") << QByteArrayList{header, x, y} << true
                                      << QByteArray("a.qvl: intact, 2 entries, encrypted, not ended\n") << 0;
    QTest::newRow("went on") << QByteArrayList{header, x, y, x} << true
                             << QByteArray("a.qvl: intact, 3 entries, encrypted, not ended\n") << 0;
    QTest::newRow("ended") << QByteArrayList{header, x, y, QvlogScene::end()} << true
                           << QByteArray("a.qvl: intact, 2 entries, encrypted, ended\n") << 0;
    QTest::newRow("last entry cut off") << QByteArrayList{header, x} << true
                                        << "a.qvl: DAMAGED at byte " + recordEnd
            + ", record 3: The file does not continue the anchor; 1 entry before\n"
                                        << 1;
    QTest::newRow("another file in its place") << QByteArrayList{header, x, y} << false
                                               << QByteArray("a.qvl: intact, 2 entries, encrypted, not ended\n"
                                                             "then: 1 of 1 log MISSING\n")
                                               << 1;
}

void QvlogAnchorsTest::compared()
{
    QvlogScene scene;
    QFETCH(QByteArrayList, now);
    QFETCH(bool, isSameFile);
    QProcessEnvironment const environment = scene.environment("secret");
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("x"), scene.done("y")});
    QvlogResult const kept = scene.run({"verify", "--new-anchors", "then", "a.qvl"}, environment);
    QCOMPARE(kept.error, QString());
    QCOMPARE(kept.exitCode, 0);

    if (!isSameFile)
        QVERIFY(QFile::remove("a.qvl"));
    else
        scene.cutEncrypted("a.qvl", now.mid(0, 3).join().size());
    scene.appendEncrypted("a.qvl", now.mid(isSameFile ? 3 : 0));
    QCOMPARE(scene.run({"verify", "a.qvl"}, environment).exitCode, 0);
    QvlogResult const result = scene.run({"verify", "--anchors", "then", "a.qvl"}, environment);
    QCOMPARE(result.error, QString());
    QTEST(result.output, "output");
    QTEST(result.exitCode, "exitCode");
}

/// The client cuts it off where it goes on in a file that it had ended.
void QvlogAnchorsTest::outlivesTheEndTag()
{
    QvlogScene scene;
    QProcessEnvironment const environment = scene.environment("secret");
    QByteArrayList const entries = {scene.header(), scene.done("x")};
    scene.appendEncrypted("a.qvl", QByteArrayList(entries) << scene.end());
    QCOMPARE(scene.run({"verify", "--new-anchors", "then", "a.qvl"}, environment).exitCode, 0);
    scene.cutEncrypted("a.qvl", entries.join().size());
    scene.appendEncrypted("a.qvl", {scene.done("y")});
    QvlogResult const result = scene.run({"verify", "--anchors", "then", "a.qvl"}, environment);
    QCOMPARE(result.output, QByteArray("a.qvl: intact, 2 entries, encrypted, not ended\n"));
    QCOMPARE(result.exitCode, 0);
}

/// Whatever the names of its files.
void QvlogAnchorsTest::ofAFolder()
{
    QvlogScene scene;
    QProcessEnvironment const environment = scene.environment("secret");
    scene.appendEncrypted("a.qvl", {scene.header("2024-05-01T00:00:00"), scene.done("x")});
    scene.appendEncrypted("b.qvl", {scene.header("2024-05-02T00:00:00"), scene.done("x")});
    scene.write("c.qvl", scene.header("2024-05-03T00:00:00"));
    QCOMPARE(scene.run({"verify", "--new-anchors", "then", "."}, environment).exitCode, 0);
    QByteArrayList const lines = scene.read("then").split('\n');
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines.at(0).size(), 112);
    QCOMPARE(lines.at(1).size(), 112);

    QVERIFY(QFile::rename("b.qvl", "2024-18 b.qvl"));
    scene.appendEncrypted("b.qvl", {scene.header("2024-05-04T00:00:00")});
    QStringList const compare = {"verify", "--anchors", "then", "."};
    QCOMPARE(scene.run(compare, environment).exitCode, 0);
    QvlogResult const both = scene.run({"verify", "--anchors", "then", "--new-anchors", "now", "."}, environment);
    QCOMPARE(both.exitCode, 0);
    QCOMPARE(scene.read("now").count('\n'), 3);

    QVERIFY(QFile::remove("2024-18 b.qvl"));
    QvlogResult const result = scene.run(compare, environment);
    QVERIFY2(result.output.endsWith("\nthen: 1 of 2 logs MISSING\n"), result.output);
    QCOMPARE(result.exitCode, 1);
    // Which files these are, only their password tells.
    QvlogResult const unread = scene.run(compare, scene.environment("wrong"));
    QCOMPARE(unread.output, QByteArray("./c.qvl: intact, 0 entries, plain, not ended\n"));
    QCOMPARE(unread.exitCode, 3);
}

void QvlogAnchorsTest::ofIntactLogsOnly_data()
{
    QTest::addColumn<QByteArray>("other"); // A plain log beside the encrypted one; none where it is empty.
    QTest::addColumn<QByteArray>("password");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("all are intact") << QvlogScene::header() << QByteArray("secret") << 0;
    QTest::newRow("one is damaged") << QByteArray("</x>") << QByteArray("secret") << 1;
    QTest::newRow("one cannot be read") << QvlogScene::header() << QByteArray("wrong") << 3;
}

void QvlogAnchorsTest::ofIntactLogsOnly()
{
    QvlogScene scene;
    QFETCH(QByteArray, other);
    QFETCH(QByteArray, password);
    QFETCH(int, exitCode);
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("x")});
    scene.write("b.qvl", other);
    QvlogResult const result = scene.run({"verify", "--new-anchors", "now", "."}, scene.environment(password));
    QCOMPARE(result.exitCode, exitCode);
    QCOMPARE(QFile::exists("now"), exitCode == 0);
}

void QvlogAnchorsTest::refused_data()
{
    QTest::addColumn<QByteArray>("anchors");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("error");
    QByteArray const line = QByteArray(112, 'a') + '\n';
    QStringList const compare = {"--anchors", "kept"};
    QTest::newRow("no such file") << line << QStringList{"--anchors", "none"}
                                  << "'none': it cannot be read: No such file or directory";
    QTest::newRow("folder") << line << QStringList{"--anchors", "."} << "'.': it is no regular file";
    QTest::newRow("empty file") << QByteArray() << compare << "'kept': it is empty";
    QTest::newRow("too short") << line + line.mid(1) << compare << "'kept': line 2 holds no anchor";
    QTest::newRow("too long") << line + "aa" + line << compare << "'kept': line 2 holds no anchor";
    QTest::newRow("empty line") << line + "\n" + line << compare << "'kept': line 2 holds no anchor";
    QTest::newRow("another text") << QByteArray(112, 'x') << compare << "'kept': line 1 holds no anchor";
    QTest::newRow("one line without end") << QByteArray(1000000, 'a') << compare << "'kept': line 1 holds no anchor";
    QTest::newRow("more than are ever kept") << line.repeated(100001) << compare << "'kept': it is too long";
    QTest::newRow("new file that exists")
        << line << QStringList{"--new-anchors", "kept"} << "'kept' cannot be written: File exists";
    QTest::newRow("nothing to be kept") << line << QStringList{"--new-anchors", "new"}
                                        << "'new': no log is encrypted, and so none has an anchor";
}

void QvlogAnchorsTest::refused()
{
    QvlogScene scene;
    QFETCH(QByteArray, anchors);
    QFETCH(QStringList, options);
    QFETCH(QString, error);
    scene.write("a.qvl", scene.header());
    scene.write("kept", anchors);
    QvlogResult const result = scene.run(QStringList{"verify"} + options + QStringList{"a.qvl"});
    QCOMPARE(result.error, "qvlog: " + error + '\n');
    QCOMPARE(result.exitCode, 3);
    QCOMPARE(scene.read("kept"), anchors);
    QCOMPARE(QDir().entryList(QDir::Files), (QStringList{"a.qvl", "kept"}));
}

QTEST_GUILESS_MAIN(QvlogAnchorsTest)
#include "tst_QvlogAnchors.moc"
