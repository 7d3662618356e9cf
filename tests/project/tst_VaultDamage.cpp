// SPDX-License-Identifier: LGPL-2.1-or-later
#include "VaultScene.h"

/// What the example says of damaged files.
class VaultDamageTest : public QObject {
    Q_OBJECT

private slots:
    void intactFileIsToldSo_data();
    void intactFileIsToldSo();
    void changeIsFound_data();
    void changeIsFound();
    void cutIsFound_data();
    void cutIsFound();
    void cutBetweenTwoRecordsIsNotFound();
    void swappedRecordsAreFound();
    void appendPutsATornEndAside();
    void appendDoesNotHideDamage();
    void hostileNameIsPrintedHarmlessly();

private:
    // Header 128 bytes; session record 96; then records of 64 bytes and a line. They begin at 128, 224, 292, 360, and
    // the file ends at 430.
    static void create() { VaultScene::create({"one\n", "two\n", "three\n"}); }
    static void flipBit(int offset);
    static void compareDamage(VaultScene const& scene, QByteArray const& printed, QString const& where);
    static VaultResult verifyDamage(VaultScene const& scene, QString const& where);
};

void VaultDamageTest::flipBit(int offset)
{
    QByteArray bytes = VaultScene::read(VaultScene::file());
    QVERIFY(offset < bytes.size());
    bytes[offset] = static_cast<char>(bytes.at(offset) ^ 1);
    VaultScene::write(VaultScene::file(), bytes);
}

void VaultDamageTest::compareDamage(VaultScene const& scene, QByteArray const& printed, QString const& where)
{
    VaultResult const print = scene.run({"--print", scene.file()});
    QCOMPARE(print.output, printed);
    QCOMPARE(print.exitCode, 1);
    QCOMPARE(print.error, verifyDamage(scene, where).error);
}

VaultResult VaultDamageTest::verifyDamage(VaultScene const& scene, QString const& where)
{
    VaultResult const verify = scene.run({"--verify", scene.file()});
    [&] {
        QVERIFY2(verify.error.startsWith("vault: 'events.vault' is damaged at " + where), qPrintable(verify.error));
        QCOMPARE(verify.error.count('\n'), 1);
        QCOMPARE(verify.output, QByteArray());
        QCOMPARE(verify.exitCode, 1);
    }();
    return verify;
}

void VaultDamageTest::intactFileIsToldSo_data()
{
    QTest::addColumn<QByteArrayList>("lines");
    QTest::addColumn<QByteArray>("message");

    QTest::newRow("empty") << QByteArrayList() << QByteArray("'events.vault' is intact: 0 bytes of text\n");
    QTest::newRow("three lines") << QByteArrayList{"one\n", "two\n", "three\n"}
                                 << QByteArray("'events.vault' is intact: 14 bytes of text\n");
}

void VaultDamageTest::intactFileIsToldSo()
{
    VaultScene scene;
    QFETCH(QByteArrayList, lines);
    scene.create(lines);
    VaultResult const result = scene.run({"--verify", scene.file()});
    QCOMPARE(result.error, QString());
    QTEST(result.output, "message");
    QCOMPARE(result.exitCode, 0);
}

void VaultDamageTest::changeIsFound_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("printed");
    QTest::addColumn<QString>("where");

    auto const row = [](char const* name, int offset, char const* printed, char const* where) {
        QTest::newRow(name) << offset << QByteArray(printed) << QString::fromUtf8(where);
    };
    row("salt in the header", 30, "", "its very beginning\n");
    row("checksum of the header", 127, "", "its very beginning\n");
    row("salt of the session", 128 + 44, "", "byte 128, record 0: ");
    row("length of the first line's record", 224, "", "byte 224, record 1: ");
    row("text of the first line", 224 + 44, "", "byte 224, record 1: ");
    row("text of the second line", 292 + 44, "one\n", "byte 292, record 2: ");
    row("tag of the second line", 292 + 48, "one\n", "byte 292, record 2: ");
    row("second length of the second line", 292 + 67, "one\n", "byte 292, record 2: ");
    row("text of the last line", 360 + 44, "one\ntwo\n", "byte 360, record 3: ");
    row("last byte", 429, "one\ntwo\n", "byte 360, record 3: ");
}

void VaultDamageTest::changeIsFound()
{
    VaultScene scene;
    create();
    QFETCH(int, offset);
    QFETCH(QByteArray, printed);
    QFETCH(QString, where);
    flipBit(offset);
    compareDamage(scene, printed, where);
}

void VaultDamageTest::cutIsFound_data()
{
    QTest::addColumn<qint64>("size");

    QTest::newRow("one byte short") << qint64{429};
    QTest::newRow("in the midst of the last record") << qint64{400};
    QTest::newRow("one byte of the last record is left") << qint64{361};
}

void VaultDamageTest::cutIsFound()
{
    VaultScene scene;
    create();
    QFETCH(qint64, size);
    QVERIFY(QFile::resize(scene.file(), size));
    verifyDamage(scene, "byte 360, record 3: ");
    // Another process may be about to write the rest: for who prints, the file ends there.
    VaultResult const print = scene.run({"--print", scene.file()});
    QCOMPARE(print.output, QByteArray("one\ntwo\n"));
    QCOMPARE(print.error, QString());
    QCOMPARE(print.exitCode, 0);
}

// The help says so: such a file once was right.
void VaultDamageTest::cutBetweenTwoRecordsIsNotFound()
{
    VaultScene scene;
    create();
    QVERIFY(QFile::resize(scene.file(), 360));
    QCOMPARE(scene.run({"--verify", scene.file()}).exitCode, 0);
    QCOMPARE(scene.run({"--print", scene.file()}).output, QByteArray("one\ntwo\n"));
}

void VaultDamageTest::swappedRecordsAreFound()
{
    VaultScene scene;
    create();
    QByteArray const bytes = scene.read(scene.file());
    scene.write(scene.file(), bytes.left(224) + bytes.mid(292, 68) + bytes.mid(224, 68) + bytes.mid(360));
    compareDamage(scene, "", "byte 224, record 1: ");
}

void VaultDamageTest::appendPutsATornEndAside()
{
    VaultScene scene;
    create();
    QByteArray const bytes = scene.read(scene.file());
    QVERIFY(QFile::resize(scene.file(), 429));
    QCOMPARE(scene.run({scene.file()}, "four\n").exitCode, 0);
    QCOMPARE(scene.run({"--print", scene.file()}).output, QByteArray("one\ntwo\nfour\n"));
    QCOMPARE(scene.run({"--verify", scene.file()}).exitCode, 0);
    QCOMPARE(scene.read("events.vault.torn"), bytes.mid(360, 69));
}

void VaultDamageTest::appendDoesNotHideDamage()
{
    VaultScene scene;
    create();
    flipBit(292 + 44);
    QCOMPARE(scene.run({scene.file()}, "four\n").exitCode, 0); // Only the end of the file is looked at.
    compareDamage(scene, "one\n", "byte 292, record 2: ");
}

void VaultDamageTest::hostileNameIsPrintedHarmlessly()
{
    VaultScene const scene;
    create();
    QString const name = QStringLiteral("\x1b[2J%2.vault");
    QVERIFY(QFile::rename(VaultScene::file(), name));
    VaultResult const intact = scene.run({"--verify", name});
    QCOMPARE(intact.output, QByteArray("'\\x1b[2J%2.vault' is intact: 14 bytes of text\n"));
    QByteArray bytes = VaultScene::read(name);
    bytes[300] = static_cast<char>(bytes.at(300) ^ 1);
    VaultScene::write(name, bytes);
    VaultResult const damaged = scene.run({"--verify", name});
    QString const where = QStringLiteral("vault: '\\x1b[2J%2.vault' is damaged at byte 292, record 2: ");
    QVERIFY2(damaged.error.startsWith(where), qPrintable(damaged.error));
    QCOMPARE(damaged.exitCode, 1);
}

QTEST_GUILESS_MAIN(VaultDamageTest)
#include "tst_VaultDamage.moc"
