// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/AesGcm_p.h>
#include <qvbase/Octets.h>

#include <QTest>

#include <openssl/evp.h>

#include <memory>
#include <utility>

using qv::encrypted::AesGcm;

namespace {

QByteArray hex(char const* digits)
{
    return QByteArray::fromHex(digits);
}

QByteArray patterned(int size, int seed)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = char(seed + i * 31 + i / 251);
    return bytes;
}

struct Sealed {
    QByteArray text;
    QByteArray tag;
    bool succeeded;
};

Sealed seal(AesGcm& gcm, QByteArray const& nonce, QByteArray const& associated, QByteArray const& text)
{
    Sealed result = {QByteArray(text.size(), '?'), QByteArray(AesGcm::TagSize, '?'), false};
    gcm.begin(octets(nonce), text.size());
    gcm.associate(octets(associated), associated.size());
    gcm.encrypt(octets(text), text.size(), octets(result.text));
    result.succeeded = gcm.takeTag(octets(result.tag));
    return result;
}

/// The text, where the tag fits; else a null one.
QByteArray open(AesGcm& gcm, QByteArray const& nonce, QByteArray const& associated, Sealed const& sealed)
{
    QByteArray text(sealed.text.size(), '?');
    gcm.begin(octets(nonce), sealed.text.size());
    gcm.associate(octets(associated), associated.size());
    gcm.decrypt(octets(sealed.text), sealed.text.size(), octets(text));
    return gcm.checkTag(octets(sealed.tag)) ? text : QByteArray();
}

/// By the whole mode of libcrypto.
Sealed sealByEvp(QByteArray const& key, QByteArray const& nonce, QByteArray const& associated, QByteArray const& text)
{
    Sealed result = {QByteArray(text.size(), '?'), QByteArray(AesGcm::TagSize, '?'), false};
    std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> const context(
        EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    int count = 0;
    uchar none = 0;
    result.succeeded = EVP_EncryptInit_ex2(context.get(), EVP_aes_256_gcm(), octets(key), octets(nonce), nullptr) == 1
        && EVP_EncryptUpdate(context.get(), nullptr, &count, octets(associated), associated.size()) == 1
        && EVP_EncryptUpdate(context.get(), octets(result.text), &count, octets(text), text.size()) == 1
        && EVP_EncryptFinal_ex(context.get(), &none, &count) == 1
        && EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, AesGcm::TagSize, result.tag.data()) == 1;
    return result;
}

} // namespace

class tst_AesGcm : public QObject {
    Q_OBJECT

private slots:
    void sealsAsItsInventorsDo_data();
    void sealsAsItsInventorsDo();
    void sealsAsLibcryptoDoes_data();
    void sealsAsLibcryptoDoes();
    void takesWhatIsAssociatedInPieces();
    void opensNothingThatWasChanged();
    void failsWhereMoreComesThanWasAnnounced();
    void goesOnWhenMoved();
};

void tst_AesGcm::sealsAsItsInventorsDo_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("nonce");
    QTest::addColumn<QByteArray>("associated");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("sealedText");
    QTest::addColumn<QByteArray>("tag");

    // McGrew and Viega, The Galois/Counter Mode of Operation, appendix B: AES-256 with a nonce of 96 bits.
    QByteArray const zeros(32, '\0');
    QByteArray const key = hex("feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308");
    QByteArray const nonce = hex("cafebabefacedbaddecaf888");
    QByteArray const text = hex("d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
                                "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b391aafd255");
    QByteArray const sealedText = hex("522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
                                      "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662898015ad");
    QTest::newRow("case 13, nothing") << zeros << zeros.left(12) << QByteArray() << QByteArray() << QByteArray()
                                      << hex("530f8afbc74536b9a963b4f1c4cb738b");
    QTest::newRow("case 14, one block") << zeros << zeros.left(12) << QByteArray() << zeros.left(16)
                                        << hex("cea7403d4d606b6e074ec5d3baf39d18")
                                        << hex("d0d1c8a799996bf0265b98b5d48ab919");
    QTest::newRow("case 15, four blocks")
        << key << nonce << QByteArray() << text << sealedText << hex("b094dac5d93471bdec1a502270e3cc6c");
    QTest::newRow("case 16, part of a block and more authenticated")
        << key << nonce << hex("feedfacedeadbeeffeedfacedeadbeefabaddad2") << text.left(60) << sealedText.left(60)
        << hex("76fc6ece0f4e1768cddf8853bb2d551b");
}

void tst_AesGcm::sealsAsItsInventorsDo()
{
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, nonce);
    QFETCH(QByteArray, associated);
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, sealedText);
    QFETCH(QByteArray, tag);
    AesGcm gcm(octets(key));
    Sealed const sealed = seal(gcm, nonce, associated, text);
    QVERIFY(sealed.succeeded);
    QCOMPARE(sealed.text, sealedText);
    QCOMPARE(sealed.tag, tag);
    QCOMPARE(open(gcm, nonce, associated, sealed), text);
}

void tst_AesGcm::sealsAsLibcryptoDoes_data()
{
    QTest::addColumn<int>("size");
    // Around a block, around what is enciphered in one call (64 blocks, the first of them for the tag), around what is
    // hashed in one (3072 bytes), and the largest record.
    for (int const size : {1, 15, 16, 17, 250, 991, 992, 993, 1007, 1008, 1009, 1023, 1024, 1025, 2031, 2032, 2033,
             3071, 3072, 3073, 4080, 6145, 100003, 1048576})
        QTest::addRow("%d bytes", size) << size;
}

void tst_AesGcm::sealsAsLibcryptoDoes()
{
    QFETCH(int, size);
    QByteArray const key = patterned(AesGcm::KeySize, 3);
    QByteArray const text = patterned(size, 7);
    AesGcm gcm(octets(key));
    for (int const associatedSize : {1, 16, 60, 92}) {
        QByteArray const nonce = patterned(AesGcm::NonceSize, associatedSize);
        QByteArray const associated = patterned(associatedSize, 11);
        Sealed const sealed = seal(gcm, nonce, associated, text);
        Sealed const expected = sealByEvp(key, nonce, associated, text);
        QVERIFY(sealed.succeeded && expected.succeeded);
        QVERIFY(sealed.text == expected.text);
        QCOMPARE(sealed.tag, expected.tag);
        QVERIFY(open(gcm, nonce, associated, expected) == text);
    }
}

void tst_AesGcm::takesWhatIsAssociatedInPieces()
{
    QByteArray const key = patterned(AesGcm::KeySize, 1);
    QByteArray const nonce = patterned(AesGcm::NonceSize, 2);
    QByteArray const associated = patterned(92, 3);
    AesGcm gcm(octets(key));
    gcm.begin(octets(nonce), 0);
    gcm.associate(octets(associated), 60);
    gcm.associate(octets(associated) + 60, 0);
    gcm.associate(octets(associated) + 60, 32);
    QByteArray tag(AesGcm::TagSize, '?');
    QVERIFY(gcm.takeTag(octets(tag)));
    QCOMPARE(tag, sealByEvp(key, nonce, associated, QByteArray()).tag);
}

void tst_AesGcm::opensNothingThatWasChanged()
{
    QByteArray const nonce = patterned(AesGcm::NonceSize, 2);
    QByteArray const associated = patterned(20, 3);
    QByteArray const text = patterned(37, 4);
    AesGcm gcm(octets(patterned(AesGcm::KeySize, 1)));
    Sealed const sealed = seal(gcm, nonce, associated, text);
    auto const flipped = [](QByteArray bytes, int bit) {
        bytes[bit / 8] = char(bytes[bit / 8] ^ (1 << (bit % 8)));
        return bytes;
    };
    for (int bit = 0; bit < 8 * nonce.size(); ++bit)
        QVERIFY(open(gcm, flipped(nonce, bit), associated, sealed).isNull());
    for (int bit = 0; bit < 8 * associated.size(); ++bit)
        QVERIFY(open(gcm, nonce, flipped(associated, bit), sealed).isNull());
    for (int bit = 0; bit < 8 * text.size(); ++bit)
        QVERIFY(open(gcm, nonce, associated, {flipped(sealed.text, bit), sealed.tag, true}).isNull());
    for (int bit = 0; bit < 8 * sealed.tag.size(); ++bit)
        QVERIFY(open(gcm, nonce, associated, {sealed.text, flipped(sealed.tag, bit), true}).isNull());
    // After all that, the same context opens what is right.
    QCOMPARE(open(gcm, nonce, associated, sealed), text);
}

void tst_AesGcm::failsWhereMoreComesThanWasAnnounced()
{
    QByteArray const nonce = patterned(AesGcm::NonceSize, 2);
    QByteArray const text = patterned(5000, 4);
    QByteArray to(text.size(), '?');
    QByteArray tag(AesGcm::TagSize, '?');
    AesGcm gcm(octets(patterned(AesGcm::KeySize, 1)));
    gcm.begin(octets(nonce), 16);
    gcm.encrypt(octets(text), text.size(), octets(to));
    QVERIFY(!gcm.takeTag(octets(tag)));
    QVERIFY(seal(gcm, nonce, QByteArray(), text).succeeded);
}

void tst_AesGcm::goesOnWhenMoved()
{
    QByteArray const nonce = patterned(AesGcm::NonceSize, 2);
    QByteArray const text = patterned(250, 4);
    AesGcm first(octets(patterned(AesGcm::KeySize, 1)));
    Sealed const sealed = seal(first, nonce, QByteArray(), text);
    AesGcm second(std::move(first));
    QCOMPARE(open(second, nonce, QByteArray(), sealed), text);
}

QTEST_GUILESS_MAIN(tst_AesGcm)
#include "tst_AesGcm.moc"
