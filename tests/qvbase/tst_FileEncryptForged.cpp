// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/AesGcm_p.h>
#include <qvbase/Crc32c_p.h>
#include <qvbase/EncryptedFiles.h>
#include <qvbase/EncryptedKeys.h>
#include <qvbase/Octets.h>

using Verified = qv::FileEncrypt::VerifyResult;
using qv::encrypted::AesGcm;

namespace {

constexpr int headerOfRecord = 44;
constexpr int tagAndLength = 20;

template <typename Number> QByteArray littleEndian(Number number)
{
    QByteArray bytes(int(sizeof(Number)), '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

/// A data record; its session is that at the file's start, and it is by itself in its write, unless told otherwise.
struct Forged {
    quint64 index;
    quint64 plainOffset;
    quint64 number;
    QByteArray text;
    quint16 place = 0;
    quint64 session = encrypted::HeaderLength;

    QByteArray length() const { return littleEndian(quint32(headerOfRecord + text.size() + tagAndLength)); }
    QByteArray header() const;
    /// As it stands behind @p file, which ends in a record.
    QByteArray behind(QByteArray const& file) const;
    /// The same with a wrong tag, as anybody can make it.
    QByteArray withWrongTag() const { return header() + text + QByteArray(AesGcm::TagSize, '?') + length(); }
};

QByteArray Forged::header() const
{
    QByteArray const bytes = length() + littleEndian(quint16(2)) + littleEndian(place) + littleEndian(index)
        + littleEndian(plainOffset) + littleEndian(session) + littleEndian(number);
    return bytes + littleEndian(qv::crc32c(octets(bytes), bytes.size()));
}

QByteArray Forged::behind(QByteArray const& file) const
{
    QByteArray const associated = header() + file.right(tagAndLength).left(AesGcm::TagSize);
    QByteArray const nonce = littleEndian(number) + QByteArray(4, '\0');

    QByteArray sealedText(text.size(), '\0');
    QByteArray tag(AesGcm::TagSize, '\0');
    static AesGcm gcm(octets(encrypted::sessionKey()));
    gcm.begin(octets(nonce), text.size());
    gcm.associate(octets(associated), associated.size());
    gcm.encrypt(octets(text), text.size(), octets(sealedText));
    gcm.takeTag(octets(tag));
    return header() + sealedText + tag + length();
}

} // namespace

/// Records that no device writes. Most have the right tag where they stand, as only somebody with the password can make
/// them.
class tst_FileEncryptForged : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { qv::FileEncryptTesting::setRandomSource({}); }
    void nextRecordIsTaken();
    void outOfOrderIsDamage_data();
    void outOfOrderIsDamage();
    void placeOutOfOrderIsDamage();
    void recordsOfTwoWritesAreNoTornOne();
    void endThatTellsOfLessHidesNothing();
    void recordsForSessionsAreDamage();
    void longWriteOutOfOrderIsDamage();

private:
    void expectDamage(QByteArray const& bytes) const;
    QString name() const { return m_folder->filePath(QStringLiteral("log.qvl")); }

    std::unique_ptr<QTemporaryDir> const m_folder = encrypted::folder();
    /// That of the session, then "one" and "two".
    QByteArray m_file;
};

void tst_FileEncryptForged::initTestCase()
{
    encrypted::useCheapKeys();
    qv::FileEncryptTesting::clearKeyCache();
    qv::FileEncryptTesting::setRandomSource(encrypted::counting());
    encrypted::appendAll(name(), {"one", "two"});
    m_file = encrypted::rawBytes(name());
    QCOMPARE(encrypted::recordsOf(m_file).size(), 3);
}

void tst_FileEncryptForged::nextRecordIsTaken()
{
    encrypted::setRawBytes(name(), m_file + Forged{3, 6, 3, "three"}.behind(m_file));
    QCOMPARE(int(encrypted::verified(name()).result), int(Verified::Intact));
    QCOMPARE(encrypted::readBack(name()).text, QByteArray("onetwothree"));
    encrypted::appendAll(name(), {"four"});
    QCOMPARE(encrypted::readBack(name()).text, QByteArray("onetwothreefour"));
}

void tst_FileEncryptForged::outOfOrderIsDamage_data()
{
    QTest::addColumn<quint64>("index");
    QTest::addColumn<quint64>("plainOffset");
    QTest::newRow("an index left out") << quint64(4) << quint64(6);
    QTest::newRow("an index come twice") << quint64(2) << quint64(6);
    QTest::newRow("the first index again") << quint64(0) << quint64(6);
    QTest::newRow("a byte left out") << quint64(3) << quint64(7);
    QTest::newRow("a byte come twice") << quint64(3) << quint64(5);
    QTest::newRow("the first byte again") << quint64(3) << quint64(0);
}

void tst_FileEncryptForged::outOfOrderIsDamage()
{
    QFETCH(quint64, index);
    QFETCH(quint64, plainOffset);
    QByteArray const bytes = m_file + Forged{index, plainOffset, 3, "three"}.behind(m_file);
    expectDamage(bytes);
}

/// At the first record behind what was written.
void tst_FileEncryptForged::expectDamage(QByteArray const& bytes) const
{
    encrypted::setRawBytes(name(), bytes);
    Verified const result = encrypted::verified(name());
    QCOMPARE(int(result.result), int(Verified::RecordDamaged));
    QCOMPARE(result.record, qint64(3));
    QCOMPARE(result.offset, qint64(m_file.size()));
    QVERIFY(encrypted::readBack(name()).hasFailed);
    // Nor is it a torn write, which would be cut off.
    QVERIFY(!encrypted::device(name())->open(QIODevice::Append));
    QCOMPARE(encrypted::rawBytes(name()), bytes);
    QVERIFY(!QFile::exists(name() + QStringLiteral(".torn")));
}

/// The third record of a write, but none before it.
void tst_FileEncryptForged::placeOutOfOrderIsDamage()
{
    expectDamage(m_file + Forged{3, 6, 3, "three", 2}.behind(m_file));
}

/// The second of them is the third of its write by its place, and the second by its index.
void tst_FileEncryptForged::recordsOfTwoWritesAreNoTornOne()
{
    expectDamage(m_file + Forged{3, 6, 3, "x"}.withWrongTag() + Forged{4, 7, 4, "x", 2}.withWrongTag());
}

/// Two bad records, of which the first claims that it follows the first byte of a text of 1000.
void tst_FileEncryptForged::endThatTellsOfLessHidesNothing()
{
    QByteArray const bytes = m_file + Forged{3, 6, 3, QByteArray(1000, 'x')}.behind(m_file);
    QByteArray const bad = Forged{4, 7, 4, "y"}.withWrongTag();
    encrypted::setRawBytes(name(), bytes + bad + bad);
    QCOMPARE(int(encrypted::verified(name()).result), int(Verified::RecordDamaged));
    QVERIFY(encrypted::readBack(name()).hasFailed);
}

/// Each names the one before it as its session: whoever followed that would go as deep as there are records.
void tst_FileEncryptForged::recordsForSessionsAreDamage()
{
    constexpr quint64 count = 100000;
    QByteArray bytes = m_file;
    quint64 before = encrypted::HeaderLength;
    for (quint64 i = 3; i < count; ++i) {
        auto const offset = quint64(bytes.size());
        bytes += Forged{i, i + 3, i, "x", 0, before}.withWrongTag();
        before = offset;
    }
    expectDamage(bytes);
}

/// As many records as one write can have, a byte left out before the first: none of them may be looked at for each
/// other.
void tst_FileEncryptForged::longWriteOutOfOrderIsDamage()
{
    constexpr quint64 count = 1 << 16;
    QByteArray bytes = m_file;
    for (quint64 i = 0; i < count; ++i)
        bytes += Forged{3 + i, 7 + i, 3 + i, "x", quint16(i)}.behind(bytes);
    expectDamage(bytes);
}

QTEST_GUILESS_MAIN(tst_FileEncryptForged)
#include "tst_FileEncryptForged.moc"
