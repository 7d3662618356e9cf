// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/EncryptedFiles.h>

#include <support/Random.h>

using Verified = qv::FileEncrypt::VerifyResult;

namespace {

constexpr int recordCount = 200;

/// Whether all bits of all bytes are changed, which takes minutes; else all at both ends and in the middle, and of each
/// byte between one.
bool isFull()
{
    return qEnvironmentVariableIsSet("GENERICUTILITIES_FULL_TESTS");
}

QVector<int> bitsToFlip(int record, int at)
{
    bool const isSpecial = record < 3 || record >= recordCount - 3 || record / 3 == recordCount / 6;
    if (isFull() || isSpecial)
        return {0, 1, 2, 3, 4, 5, 6, 7};
    return {at % 8};
}

/// A byte of a file changed for as long as this lives.
class Flip {
public:
    Flip(QFile& file, QByteArray const& content, int offset, int mask)
        : m_file(file)
        , m_offset(offset)
        , m_byte(content[offset])
    {
        put(char(m_byte ^ mask));
    }
    ~Flip() { put(m_byte); }
    Flip(Flip const&) = delete;
    Flip& operator=(Flip const&) = delete;

private:
    void put(char byte)
    {
        m_file.seek(m_offset);
        m_file.write(&byte, 1);
    }

    QFile& m_file;
    int m_offset;
    char m_byte;
};

} // namespace

/// Every bit of a file of 200 records, one of the session and 199 of one byte of text each, is changed in turn.
class tst_FileEncryptFlips : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void ofTheHeaderAreRefused();
    void ofRecordsAreTold();
    void ofRecordsAreMetByReaders();

private:
    /// Calls @p check with record and place of each byte of each record.
    template <typename Check> void forEachByte(Check check) const;
    Flip flipped(int offset, int mask) { return Flip(m_raw, m_content, offset, mask); }

    std::unique_ptr<QTemporaryDir> const m_folder = encrypted::folder();
    QString const m_name = m_folder->filePath(QStringLiteral("log.qvl"));
    QFile m_raw{m_name};
    QByteArray m_content;
    QByteArray m_text;
    /// Where each record begins.
    QVector<int> m_offsets;
};

void tst_FileEncryptFlips::initTestCase()
{
    encrypted::useCheapKeys();
    for (int i = 1; i < recordCount; ++i)
        m_text += char(i);
    QList<QByteArray> texts;
    for (char const c : m_text)
        texts.append(QByteArray(1, c));
    encrypted::appendAll(m_name, texts);
    m_content = encrypted::rawBytes(m_name);
    int offset = encrypted::HeaderLength;
    for (QByteArray const& record : encrypted::recordsOf(m_content)) {
        m_offsets.append(offset);
        offset += record.size();
    }
    QCOMPARE(m_offsets.size(), recordCount);
    QVERIFY(m_raw.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
}

template <typename Check> void tst_FileEncryptFlips::forEachByte(Check check) const
{
    for (int record = 0; record < recordCount; ++record) {
        int const end = record + 1 < recordCount ? m_offsets[record + 1] : m_content.size();
        for (int at = m_offsets[record]; at < end && !QTest::currentTestFailed(); at += 10 / support::rounds(10))
            check(record, at);
    }
}

void tst_FileEncryptFlips::ofTheHeaderAreRefused()
{
    for (int bit = 0; bit < 8 * encrypted::HeaderLength; ++bit) {
        Flip const flip = flipped(bit / 8, 1 << bit % 8);
        auto const file = encrypted::device(m_name);
        QVERIFY(!file->open(QIODevice::ReadOnly));
        QCOMPARE(file->headerError(), bit < 64 ? qv::FileEncrypt::NotOurFormat : qv::FileEncrypt::Damaged);
    }
}

void tst_FileEncryptFlips::ofRecordsAreTold()
{
    auto const file = encrypted::device(m_name);
    forEachByte([&](int record, int at) {
        auto const expected = record == recordCount - 1 ? Verified::TornOrTampered : Verified::RecordDamaged;
        for (int const bit : bitsToFlip(record, at)) {
            Flip const flip = flipped(at, 1 << bit);
            Verified const result = file->verify();
            if (result.result != expected || result.record != record || result.offset != m_offsets[record])
                QFAIL(qPrintable(QStringLiteral("byte %1 bit %2: class %3").arg(at).arg(bit).arg(result.result)));
        }
    });
    QCOMPARE(int(file->verify().result), int(Verified::Intact));
}

void tst_FileEncryptFlips::ofRecordsAreMetByReaders()
{
    forEachByte([&](int record, int at) {
        if (!isFull() && at % 4)
            return;
        Flip const flip = flipped(at, 1 << (at / 4) % 8);
        encrypted::ReadBack const back = encrypted::readBack(m_name);
        // What stands before it is read.
        if (!back.hasFailed || back.text != m_text.left(qMax(record - 1, 0)))
            QFAIL(qPrintable(QStringLiteral("byte %1 of record %2").arg(at).arg(record)));
    });
    QCOMPARE(encrypted::readBack(m_name).text, m_text);
}

QTEST_GUILESS_MAIN(tst_FileEncryptFlips)
#include "tst_FileEncryptFlips.moc"
