// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/AesGcm_p.h>
#include <qvbase/Crc32c_p.h>
#include <qvbase/EncryptedFiles.h>
#include <qvbase/EncryptedKeys.h>

using Verified = qv::FileEncrypt::VerifyResult;
using qv::encrypted::AesGcm;

namespace {

constexpr int headerOfRecord = 44;
constexpr int tagAndLength = 20;

uchar const* octets(QByteArray const& bytes)
{
    return reinterpret_cast<uchar const*>(bytes.constData());
}

template <typename Number> QByteArray littleEndian(Number number)
{
    QByteArray bytes(int(sizeof(Number)), '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

/// A data record of the session at the file's start, by itself in its write.
struct Forged {
    quint64 index;
    quint64 plainOffset;
    quint64 number;
    QByteArray text;

    /// As it stands behind @p file, which ends in a record.
    QByteArray behind(QByteArray const& file) const;
};

QByteArray Forged::behind(QByteArray const& file) const
{
    QByteArray const length = littleEndian(quint32(headerOfRecord + text.size() + tagAndLength));
    QByteArray header = length + littleEndian(quint16(2)) + littleEndian(quint16(0)) + littleEndian(index)
        + littleEndian(plainOffset) + littleEndian(quint64(encrypted::HeaderLength)) + littleEndian(number);
    header += littleEndian(qv::crc32c(octets(header), header.size()));
    QByteArray const associated = header + file.right(tagAndLength).left(AesGcm::TagSize);
    QByteArray const nonce = littleEndian(number) + QByteArray(4, '\0');

    QByteArray sealedText(text.size(), '\0');
    QByteArray tag(AesGcm::TagSize, '\0');
    AesGcm gcm(octets(encrypted::sessionKey()));
    gcm.begin(octets(nonce), text.size());
    gcm.associate(octets(associated), associated.size());
    gcm.encrypt(octets(text), text.size(), reinterpret_cast<uchar*>(sealedText.data()));
    gcm.takeTag(reinterpret_cast<uchar*>(tag.data()));
    return header + sealedText + tag + length;
}

} // namespace

/// Records that only somebody with the password can make: their tags are right where they stand.
class tst_FileEncryptForged : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { qv::FileEncryptTesting::setRandomSource({}); }
    void nextRecordIsTaken();
    void outOfOrderIsDamage_data();
    void outOfOrderIsDamage();

private:
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

QTEST_GUILESS_MAIN(tst_FileEncryptForged)
#include "tst_FileEncryptForged.moc"
