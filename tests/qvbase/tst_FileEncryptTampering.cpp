// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/EncryptedFiles.h>

#include <QDir>

using Verified = qv::FileEncrypt::VerifyResult;

namespace {

constexpr int recordCount = 200;

bool isFull()
{
    return qEnvironmentVariableIsSet("GENERICUTILITIES_FULL_TESTS");
}

/// A file of 200 records: that of the session, and 199 of one write each.
QList<QByteArray> texts()
{
    QList<QByteArray> result;
    for (int i = 1; i < recordCount; ++i)
        result.append("entry " + QByteArray::number(i) + '\n');
    return result;
}

QByteArray textUpTo(int record)
{
    return texts().mid(0, qMax(record - 1, 0)).join();
}

} // namespace

/// Whatever is changed in a file is noticed and told in its class; what is read before the change is what was written.
class tst_FileEncryptTampering : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void wholeFileIsIntact();
    void everySwap();
    void everyRepetition();
    void everyRemovalButTheLast();
    void splicesFromAnotherFile();
    void splicesFromAnOlderCopy();
    void tornTailOfEveryLength();
    void zerosBehindTheTearOfEveryLength();
    void holeInTheLastWrite_data();
    void holeInTheLastWrite();
    void damagedEndIsNotWrittenBehind();
    void recordRepeatedInTheLastWriteIsDamage();
    void suspectEndIsKeptAside();
    void anchorFinds_data();
    void anchorFinds();
    void anchorStaysValidAsTheFileGrows();
    void anchorOfTheStart_data();
    void anchorOfTheStart();

private:
    QString name() const { return m_folder->filePath(QStringLiteral("log.qvl")); }
    QString asideName() const { return name() + QStringLiteral(".torn"); }
    Verified verifiedBytes(QByteArray const& bytes) const;

    std::unique_ptr<QTemporaryDir> const m_folder = encrypted::folder();
    QByteArray m_file;
    QVector<QByteArray> m_records;
};

void tst_FileEncryptTampering::initTestCase()
{
    encrypted::useCheapKeys();
    encrypted::appendAll(name(), texts());
    m_file = encrypted::rawBytes(name());
    m_records = encrypted::recordsOf(m_file);
    QCOMPARE(m_records.size(), recordCount);
}

void tst_FileEncryptTampering::cleanup()
{
    for (QFileInfo const& file : QDir(m_folder->path()).entryInfoList(QDir::Files))
        QFile::remove(file.filePath());
}

Verified tst_FileEncryptTampering::verifiedBytes(QByteArray const& bytes) const
{
    encrypted::setRawBytes(name(), bytes);
    return encrypted::verified(name());
}

void tst_FileEncryptTampering::wholeFileIsIntact()
{
    Verified const result = verifiedBytes(m_file);
    QCOMPARE(int(result.result), int(Verified::Intact));
    QCOMPARE(result.record, qint64(recordCount));
    QCOMPARE(result.offset, qint64(m_file.size()));
    QCOMPARE(encrypted::readBack(name()).text, textUpTo(recordCount));
}

void tst_FileEncryptTampering::everySwap()
{
    for (int first = 0; first < recordCount; ++first) {
        for (int second = first + 1; second < recordCount; second += isFull() ? 1 : 3) {
            QVector<QByteArray> records = m_records;
            records.swapItemsAt(first, second);
            Verified const result = verifiedBytes(encrypted::joined(m_file, records));
            if (result.result != Verified::RecordDamaged || result.record != first)
                QFAIL(qPrintable(
                    QStringLiteral("records %1 and %2: class %3").arg(first).arg(second).arg(result.result)));
        }
        QVERIFY(first == recordCount - 1 || encrypted::readBack(name()).hasFailed);
    }
}

void tst_FileEncryptTampering::everyRepetition()
{
    for (int record = 0; record < recordCount; ++record) {
        for (int place : {record + 1, recordCount}) {
            QVector<QByteArray> records = m_records;
            records.insert(place, m_records[record]);
            Verified const result = verifiedBytes(encrypted::joined(m_file, records));
            // The session's record names its place: at the end of the file it is no record at all.
            bool const isRecord = record > 0 || place == 1;
            QCOMPARE(int(result.result), int(isRecord ? Verified::RecordDamaged : Verified::TornOrTampered));
            QCOMPARE(result.record, qint64(place));
            QVERIFY(encrypted::readBack(name()).hasFailed);
        }
    }
}

void tst_FileEncryptTampering::everyRemovalButTheLast()
{
    for (int record = 0; record + 1 < recordCount; ++record) {
        QVector<QByteArray> records = m_records;
        records.removeAt(record);
        Verified const result = verifiedBytes(encrypted::joined(m_file, records));
        QCOMPARE(int(result.result), int(Verified::RecordDamaged));
        QCOMPARE(result.record, qint64(record));
        QVERIFY(encrypted::readBack(name()).hasFailed);
    }
}

void tst_FileEncryptTampering::splicesFromAnotherFile()
{
    QString const other = m_folder->filePath(QStringLiteral("other"));
    encrypted::appendAll(other, texts());
    QVector<QByteArray> const foreign = encrypted::recordsOf(encrypted::rawBytes(other));
    for (int record = 0; record < recordCount; ++record) {
        QVector<QByteArray> records = m_records;
        records[record] = foreign[record];
        Verified const result = verifiedBytes(encrypted::joined(m_file, records));
        QVERIFY(result.result == Verified::RecordDamaged
            || (record == recordCount - 1 && result.result == Verified::TornOrTampered));
        QCOMPARE(result.record, qint64(record));
    }
}

void tst_FileEncryptTampering::splicesFromAnOlderCopy()
{
    // The same file id and keys, another history from the 100th record on.
    QByteArray const common = encrypted::joined(m_file, m_records.mid(0, 100));
    encrypted::setRawBytes(name(), common);
    encrypted::appendAll(name(), texts().mid(99));
    QVector<QByteArray> const older = encrypted::recordsOf(encrypted::rawBytes(name()));
    for (int record = 100; record < recordCount; ++record) {
        QVector<QByteArray> const records = m_records.mid(0, record) + older.mid(record);
        Verified const result = verifiedBytes(encrypted::joined(m_file, records));
        QCOMPARE(int(result.result), int(record == 100 ? Verified::Intact : Verified::RecordDamaged));
    }
}

void tst_FileEncryptTampering::tornTailOfEveryLength()
{
    QByteArray const kept = m_file.left(m_file.size() - m_records.last().size());
    for (int length = 1; length < m_records.last().size(); ++length) {
        QByteArray const tail = m_records.last().left(length);
        Verified const result = verifiedBytes(kept + tail);
        QCOMPARE(int(result.result), int(Verified::Torn));
        QCOMPARE(result.record, qint64(recordCount - 1));
        QVERIFY(!encrypted::readBack(name()).hasFailed);
        encrypted::appendAll(name(), {"on"});
        QCOMPARE(encrypted::readBack(name()).text, textUpTo(recordCount - 1) + "on");
        QCOMPARE(encrypted::rawBytes(asideName()), tail);
        cleanup();
    }
}

void tst_FileEncryptTampering::zerosBehindTheTearOfEveryLength()
{
    QByteArray const kept = m_file.left(m_file.size() - m_records.last().size());
    for (int length = 0; length <= m_records.last().size() - 20; ++length) {
        QByteArray const tail = m_records.last().left(length).leftJustified(m_records.last().size(), '\0');
        QCOMPARE(int(verifiedBytes(kept + tail).result), int(Verified::Torn));
        encrypted::appendAll(name(), {"on"});
        QCOMPARE(encrypted::readBack(name()).text, textUpTo(recordCount - 1) + "on");
        QCOMPARE(encrypted::rawBytes(asideName()), tail);
        cleanup();
    }
}

void tst_FileEncryptTampering::holeInTheLastWrite_data()
{
    QTest::addColumn<int>("record");
    QTest::newRow("first piece") << 2;
    QTest::newRow("second piece") << 3;
    QTest::newRow("last piece") << 4;
}

/// A loss of power may keep the end of a write that was never synced, and lose some before it.
void tst_FileEncryptTampering::holeInTheLastWrite()
{
    QFETCH(int, record);
    constexpr int piece = 1048576;
    encrypted::appendAll(name(), {"kept", QByteArray(3 * piece, 'x')});
    QByteArray const whole = encrypted::rawBytes(name());
    QVector<QByteArray> records = encrypted::recordsOf(whole);
    QCOMPARE(records.size(), 5);
    records[record].replace(1000, 512, QByteArray(512, '\0'));
    QCOMPARE(int(verifiedBytes(encrypted::joined(whole, records)).result), int(Verified::TornOrTampered));
    QByteArray const before = "kept" + QByteArray((record - 2) * piece, 'x');
    QVERIFY(encrypted::readBack(name()).text == before);
    encrypted::appendAll(name(), {"on"});
    QVERIFY(encrypted::readBack(name()).text == before + "on");
    QCOMPARE(int(encrypted::verified(name()).result), int(Verified::Intact));
}

void tst_FileEncryptTampering::damagedEndIsNotWrittenBehind()
{
    // With the session's record all others are lost: that is no tear.
    QByteArray changed = m_file;
    changed[encrypted::HeaderLength + 50] = char(changed[encrypted::HeaderLength + 50] ^ 1);
    encrypted::setRawBytes(name(), changed);
    auto const file = encrypted::device(name());
    QVERIFY(!file->open(QIODevice::Append));
    QCOMPARE(file->headerError(), qv::FileEncrypt::NoHeaderError);
    QVERIFY(!file->errorString().isEmpty());
    QCOMPARE(encrypted::rawBytes(name()), changed);
    QVERIFY(!QFile::exists(asideName()));
}

void tst_FileEncryptTampering::recordRepeatedInTheLastWriteIsDamage()
{
    constexpr int mebibyte = 1048576;
    encrypted::setRawBytes(name(), m_file);
    encrypted::appendAll(name(), {QByteArray(2 * mebibyte, 'x')});
    // A session and two records by one write.
    QVector<QByteArray> records = encrypted::recordsOf(encrypted::rawBytes(name()));
    QCOMPARE(records.size(), recordCount + 3);
    QByteArray& first = records[recordCount + 1];
    first[100] = char(first[100] ^ 1);
    encrypted::setRawBytes(name(), encrypted::joined(m_file, records));
    QCOMPARE(int(encrypted::verified(name()).result), int(Verified::TornOrTampered));

    records.append(records.last());
    encrypted::setRawBytes(name(), encrypted::joined(m_file, records));
    QCOMPARE(int(encrypted::verified(name()).result), int(Verified::RecordDamaged));
    QVERIFY(!encrypted::device(name())->open(QIODevice::Append));
}

void tst_FileEncryptTampering::suspectEndIsKeptAside()
{
    for (int round = 0; round < 3; ++round) {
        QByteArray changed = m_file;
        changed[m_file.size() - 10] = char(changed[m_file.size() - 10] ^ 1);
        encrypted::setRawBytes(name(), changed);
        encrypted::appendAll(name(), {"on"});
        QCOMPARE(int(encrypted::verified(name()).result), int(Verified::Intact));
    }
    QStringList const expected = {"log (2).qvl.torn", "log (3).qvl.torn", "log.qvl", "log.qvl.torn"};
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files, QDir::Name), expected);
    QCOMPARE(encrypted::rawBytes(asideName()).size(), m_records.last().size());
}

void tst_FileEncryptTampering::anchorFinds_data()
{
    QTest::addColumn<int>("kept");
    QTest::addColumn<bool>("isFromOther");
    QTest::newRow("last record cut off") << recordCount - 1 << false;
    QTest::newRow("all but the header cut off") << 0 << false;
    QTest::newRow("another file in its place") << recordCount << true;
}

void tst_FileEncryptTampering::anchorFinds()
{
    QFETCH(int, kept);
    QFETCH(bool, isFromOther);
    encrypted::setRawBytes(name(), m_file);
    auto const file = encrypted::device(name());
    QVERIFY(file->open(QIODevice::ReadOnly));
    QByteArray const anchor = file->anchor();
    QCOMPARE(anchor.size(), 56);
    if (isFromOther) {
        QFile::remove(name());
        encrypted::appendAll(name(), texts());
    } else {
        encrypted::setRawBytes(name(), encrypted::joined(m_file, m_records.mid(0, kept)));
    }
    QCOMPARE(int(encrypted::verified(name()).result), int(Verified::Intact));
    QCOMPARE(int(encrypted::verified(name(), anchor).result), int(Verified::RecordDamaged));
}

void tst_FileEncryptTampering::anchorStaysValidAsTheFileGrows()
{
    encrypted::setRawBytes(name(), m_file);
    auto const file = encrypted::device(name());
    QVERIFY(file->open(QIODevice::Append));
    QByteArray const before = file->anchor();
    QCOMPARE(file->write("more"), qint64(4));
    QVERIFY(file->anchor() != before);
    QCOMPARE(int(encrypted::verified(name(), before).result), int(Verified::Intact));
    QCOMPARE(int(encrypted::verified(name(), file->anchor()).result), int(Verified::Intact));
    QCOMPARE(int(encrypted::verified(name(), "no anchor").result), int(Verified::RecordDamaged));
}

void tst_FileEncryptTampering::anchorOfTheStart_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<int>("records");
    // The first record is that of the session, the next ones hold "entry 1\n", "entry 2\n" ...
    auto const row = [](char const* name, qint64 size, int records) { QTest::newRow(name) << size << records; };
    row("nothing", 0, 0);
    row("less than nothing", -1, 0);
    row("within the first text", 7, 1);
    row("the first text", 8, 2);
    row("within the second text", 9, 2);
    row("two texts", 16, 3);
    row("all but a byte", textUpTo(recordCount).size() - 1, recordCount - 1);
    row("all", textUpTo(recordCount).size(), recordCount);
    row("more than all", textUpTo(recordCount).size() + 1, recordCount);
}

void tst_FileEncryptTampering::anchorOfTheStart()
{
    QFETCH(qint64, size);
    QFETCH(int, records);
    encrypted::setRawBytes(name(), m_file);
    auto const file = encrypted::device(name());
    QVERIFY(file->open(QIODevice::Append));
    QByteArray const anchor = file->anchor(size);
    QCOMPARE(int(anchor.at(32)), int(char(records)));
    QCOMPARE(anchor.size(), 56);
    // What follows may change.
    QVERIFY(file->resize(qBound(qint64(0), size, file->size())));
    QCOMPARE(file->write("other"), qint64(5));
    QCOMPARE(int(encrypted::verified(name(), anchor).result), int(Verified::Intact));
    if (records < 2)
        return;
    QByteArray const shorter = encrypted::joined(m_file, m_records.mid(0, records - 1));
    encrypted::setRawBytes(name(), shorter);
    QCOMPARE(int(encrypted::verified(name(), anchor).result), int(Verified::RecordDamaged));
}

QTEST_GUILESS_MAIN(tst_FileEncryptTampering)
#include "tst_FileEncryptTampering.moc"
