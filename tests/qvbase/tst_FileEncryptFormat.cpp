// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/EncryptedFiles.h>

#include <QDir>

#include <numeric>

using qv::FileEncrypt;

namespace {

/// docs/formats.md, "Worked example".
QByteArray exampleBytes()
{
    return QByteArray::fromHex("89414c450d0a1a0a010000008000000004000000010000000100000000010203"
                               "0405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f20212223"
                               "2425262728292a2b2c2d2e2f303132333435363738393a3b3c3d3e3f827ec234"
                               "9c50a92cc4c5ca4de0ccbf7ca5421d5e82dd7b12e7a074bbb8706791ae039176"
                               "6000000001000000000000000000000000000000000000008000000000000000"
                               "00000000000000005514f996404142434445464748494a4b4c4d4e4f50515253"
                               "5455565758595a5b5c5d5e5f61cd5141ef373eee07bf807ac275c27060000000"
                               "4500000002000100010000000000000000000000000000008000000000000000"
                               "0100000000000000d3c2a4ab77e2f4d22f6149d2d2643a1780de366d2c4eca86"
                               "3a45000000460000000200000002000000000000000500000000000000800000"
                               "00000000000200000000000000eed3fb73495428d2833d8b6c8681d1d1073537"
                               "7b7e74f030911646000000");
}

quint32 crc32c(QByteArray const& bytes)
{
    quint32 value = 0xFFFFFFFFu;
    for (char const c : bytes) {
        value ^= quint8(c);
        for (int bit = 0; bit < 8; ++bit)
            value = (value >> 1) ^ ((value & 1) ? 0x82F63B78u : 0);
    }
    return value ^ 0xFFFFFFFFu;
}

QByteArray number(quint32 value)
{
    std::array<char, 4> bytes = {};
    qToLittleEndian(value, bytes.data());
    return QByteArray(bytes.data(), int(bytes.size()));
}

/// The example with other bytes in its header and a checksum that fits them.
QByteArray withHeader(int offset, QByteArray const& bytes)
{
    QByteArray const file = exampleBytes().replace(offset, bytes.size(), bytes);
    return file.left(124) + number(crc32c(file.left(124))) + file.mid(128);
}

} // namespace

class tst_FileEncryptFormat : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void workedExample();
    void workedExampleIsRead();
    void headerIsRefused_data();
    void headerIsRefused();
    void refusedFileIsKept_data() { headerIsRefused_data(); }
    void refusedFileIsKept();
    void laterMinorVersionIsRead();
    void tornAtItsMaking_data();
    void tornAtItsMaking();
    void keysBelongToUserAndPassword_data();
    void keysBelongToUserAndPassword();

private:
    QString name() const { return m_folder->filePath(QStringLiteral("log.qvl")); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_FileEncryptFormat::init()
{
    encrypted::useCheapKeys();
    qv::FileEncryptTesting::clearKeyCache();
    m_folder = encrypted::folder();
}

void tst_FileEncryptFormat::cleanup()
{
    qv::FileEncryptTesting::setRandomSource({});
}

void tst_FileEncryptFormat::workedExample()
{
    uchar next = 0;
    qv::FileEncryptTesting::setRandomSource([&next](uchar* bytes, int count) {
        std::iota(bytes, bytes + count, next);
        next = uchar(next + count);
    });
    encrypted::appendAll(name(), {"Hello", ", log\n"});
    QCOMPARE(encrypted::rawBytes(name()).toHex(), exampleBytes().toHex());
}

void tst_FileEncryptFormat::workedExampleIsRead()
{
    encrypted::setRawBytes(name(), exampleBytes());
    auto const file = encrypted::device(name());
    QVERIFY(file->open(QIODevice::ReadOnly));
    QCOMPARE(file->size(), qint64(11));
    QCOMPARE(file->readAll(), QByteArray("Hello, log\n"));
}

void tst_FileEncryptFormat::headerIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("error");
    auto const row = [](char const* meaning, QByteArray const& bytes, FileEncrypt::HeaderError error) {
        QTest::newRow(meaning) << bytes << int(error);
    };
    row("plain text", "A plain text.\n", FileEncrypt::NotOurFormat);
    row("one other byte", "X", FileEncrypt::NotOurFormat);
    row("long plain text", QByteArray(1000, 'x'), FileEncrypt::NotOurFormat);
    row("zeros, longer than a header", QByteArray(129, '\0'), FileEncrypt::NotOurFormat);
    row("checksum does not fit", exampleBytes().replace(30, 1, "?"), FileEncrypt::Damaged);
    row("checksum changed", exampleBytes().replace(124, 1, "?"), FileEncrypt::Damaged);
    row("header length beyond the file", withHeader(12, number(4000)), FileEncrypt::Damaged);
    row("header length of 4 GB", withHeader(12, number(0xFFFFFFFFu)), FileEncrypt::Damaged);
    row("header length zero", withHeader(12, number(0)), FileEncrypt::Damaged);
    row("major version 2", withHeader(8, QByteArray::fromHex("0200")), FileEncrypt::UnknownVersion);
    row("minor version raised by whoever lacks the key", withHeader(10, QByteArray::fromHex("0700")),
        FileEncrypt::WrongCredentials);
    row("major version 0", withHeader(8, QByteArray::fromHex("0000")), FileEncrypt::UnknownVersion);
    row("log2(N) 0", withHeader(16, number(0)), FileEncrypt::Damaged);
    row("log2(N) 18", withHeader(16, number(18)), FileEncrypt::Damaged);
    row("log2(N) 63", withHeader(16, number(63)), FileEncrypt::Damaged);
    row("log2(N) 2^32 - 1", withHeader(16, number(0xFFFFFFFFu)), FileEncrypt::Damaged);
    row("log2(N) 16 with r 1", withHeader(16, number(16)), FileEncrypt::Damaged);
    row("r 0", withHeader(20, number(0)), FileEncrypt::Damaged);
    row("r 9", withHeader(20, number(9)), FileEncrypt::Damaged);
    row("p 0", withHeader(24, number(0)), FileEncrypt::Damaged);
    row("p 9", withHeader(24, number(9)), FileEncrypt::Damaged);
    row("p 2^32 - 1", withHeader(24, number(0xFFFFFFFFu)), FileEncrypt::Damaged);
    row("another cost within the bound", withHeader(16, number(5)), FileEncrypt::WrongCredentials);
    row("another salt", withHeader(28, "salt"), FileEncrypt::WrongCredentials);
    row("another file id", withHeader(60, "id"), FileEncrypt::WrongCredentials);
    row("another HMAC", withHeader(92, "hmac"), FileEncrypt::WrongCredentials);
}

void tst_FileEncryptFormat::headerIsRefused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, error);
    encrypted::setRawBytes(name(), bytes);
    auto const file = encrypted::device(name());
    QVERIFY(!file->open(QIODevice::ReadOnly));
    QCOMPARE(int(file->headerError()), error);
    QVERIFY(!file->errorString().isEmpty());
    QCOMPARE(int(file->verify().result), int(FileEncrypt::VerifyResult::HeaderRefused));
}

void tst_FileEncryptFormat::refusedFileIsKept()
{
    QFETCH(QByteArray, bytes);
    encrypted::setRawBytes(name(), bytes);
    auto const file = encrypted::device(name());
    for (auto const mode : {QIODevice::ReadWrite, QIODevice::Append, QIODevice::WriteOnly, QIODevice::Truncate})
        QVERIFY(!file->open(mode | QIODevice::WriteOnly));
    QCOMPARE(encrypted::rawBytes(name()), bytes);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 1);
}

void tst_FileEncryptFormat::laterMinorVersionIsRead()
{
    // The header of the example with minor version 7, its HMAC and checksum made anew.
    encrypted::setRawBytes(name(),
        QByteArray::fromHex("89414c450d0a1a0a010007008000000004000000010000000100000000010203"
                            "0405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f20212223"
                            "2425262728292a2b2c2d2e2f303132333435363738393a3b3c3d3e3fa9e856d4"
                            "6fb7fea9c32cc7365ae4000e9fae01186b32facf100d1d060435e9d6289726e4"));
    auto const file = encrypted::device(name());
    QVERIFY2(file->open(QIODevice::ReadOnly), qPrintable(file->errorString()));
    QCOMPARE(file->readAll(), QByteArray());
}

void tst_FileEncryptFormat::tornAtItsMaking_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QByteArray const header = exampleBytes().left(encrypted::HeaderLength);
    for (int length : {1, 7, 8, 50, 127})
        QTest::addRow("%d bytes", length) << header.left(length);
    QTest::newRow("ends in zeros") << header.left(96) + QByteArray(32, '\0');
    QTest::newRow("zeros, shorter than a header") << QByteArray(90, '\0');
    QTest::newRow("zeros, as long as a header") << QByteArray(128, '\0');
}

void tst_FileEncryptFormat::tornAtItsMaking()
{
    QFETCH(QByteArray, bytes);
    encrypted::setRawBytes(name(), bytes);
    QCOMPARE(int(encrypted::verified(name()).result), int(FileEncrypt::VerifyResult::Torn));
    QCOMPARE(encrypted::readBack(name()).text, QByteArray());
    encrypted::appendAll(name(), {"begun anew"});
    QCOMPARE(encrypted::readBack(name()).text, QByteArray("begun anew"));
    QCOMPARE(encrypted::rawBytes(name() + QStringLiteral(".torn")), bytes);
}

void tst_FileEncryptFormat::keysBelongToUserAndPassword_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("password");
    QTest::addColumn<bool>("isOpened");
    QTest::newRow("the same") << "alice"
                              << "secret" << true;
    QTest::newRow("another password") << "alice"
                                      << "Secret" << false;
    QTest::newRow("another user") << "bob"
                                  << "secret" << false;
    QTest::newRow("no user") << ""
                             << "secret" << false;
    QTest::newRow("letters moved from user to password") << "alic"
                                                         << "esecret" << false;
    // HMAC, which scrypt begins with, fills a short key with zeros: part of the format.
    QTest::newRow("password with a zero behind") << "alice" << QString::fromLatin1("secret\0", 7) << true;
}

void tst_FileEncryptFormat::keysBelongToUserAndPassword()
{
    QFETCH(QString, user);
    QFETCH(QString, password);
    QFETCH(bool, isOpened);
    encrypted::setRawBytes(name(), exampleBytes());
    auto const file = encrypted::device(name(), password, user);
    QCOMPARE(file->open(QIODevice::ReadOnly), isOpened);
    QCOMPARE(int(file->headerError()), int(isOpened ? FileEncrypt::NoHeaderError : FileEncrypt::WrongCredentials));
}

QTEST_GUILESS_MAIN(tst_FileEncryptFormat)
#include "tst_FileEncryptFormat.moc"
