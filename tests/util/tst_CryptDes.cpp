// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/Crypt.h>

#include <support/Random.h>

#include "DesBits.h"

#include <QTest>

using qvgen::Crypt;

namespace {

QByteArray transformed(QByteArray const& keyBits, QByteArray block, int decrypt, unsigned saltBits = 0)
{
    Crypt::sched schedule;
    Crypt::setkey_r(&schedule, keyBits.constData());
    schedule.saltBits = saltBits;
    Crypt::encrypt_r(&schedule, block.data(), decrypt);
    return block;
}

/// A half block, its bit 1 the highest, as DEncrypt() takes it: bit 1 the lowest, then turned left by one.
unsigned asHeld(unsigned half)
{
    unsigned held = 0;
    for (unsigned bit = 0; bit < 32; ++bit)
        held |= ((half >> (31 - bit)) & 1) << ((bit + 1) % 32);
    return held;
}

/// All three in hexadecimal digits.
struct Vector {
    char const* name;
    char const* key;
    char const* plain;
    char const* cipher;
};

// clang-format off
constexpr Vector vectors[] = {
    // FIPS 81, "Now is the time for all "
    {"example of the modes of operation, 1", "0123456789abcdef", "4e6f772069732074", "3fa40e8a984d4815"},
    {"example of the modes of operation, 2", "0123456789abcdef", "68652074696d6520", "6a271787ab8883f9"},
    {"example of the modes of operation, 3", "0123456789abcdef", "666f7220616c6c20", "893d51ec4b563b53"},
    // NBS Special Publication 500-20, variable plain text
    {"plain text bit 1", "0101010101010101", "8000000000000000", "95f8a5e5dd31d900"},
    {"plain text bit 2", "0101010101010101", "4000000000000000", "dd7f121ca5015619"},
    {"plain text bit 3", "0101010101010101", "2000000000000000", "2e8653104f3834ea"},
    {"plain text bit 4", "0101010101010101", "1000000000000000", "4bd388ff6cd81d4f"},
    {"plain text bit 5", "0101010101010101", "0800000000000000", "20b9e767b2fb1456"},
    {"plain text bit 6", "0101010101010101", "0400000000000000", "55579380d77138ef"},
    {"plain text bit 7", "0101010101010101", "0200000000000000", "6cc5defaaf04512f"},
    {"plain text bit 8", "0101010101010101", "0100000000000000", "0d9f279ba5d87260"},
    {"all zeros", "0000000000000000", "0000000000000000", "8ca64de9c1b123a7"},
    {"all ones", "ffffffffffffffff", "ffffffffffffffff", "7359b2163e4edc58"},
    // NBS Special Publication 500-20, substitution tables
    {"substitution 1", "7ca110454a1a6e57", "01a1d6d039776742", "690f5b0d9a26939b"},
    {"substitution 2", "0131d9619dc1376e", "5cd54ca83def57da", "7a389d10354bd271"},
    {"substitution 3", "07a1133e4a0b2686", "0248d43806f67172", "868ebb51cab4599a"},
    {"substitution 4", "3849674c2602319e", "51454b582ddf440a", "7178876e01f19b2a"},
    {"substitution 5", "04b915ba43feb5b6", "42fd443059577fa2", "af37fb421f8c4095"},
    {"substitution 6", "0113b970fd34f2ce", "059b5e0851cf143a", "86a560f10ec6d85b"},
    {"substitution 7", "0170f175468fb5e6", "0756d8e0774761d2", "0cd3da020021dc09"},
    {"substitution 8", "43297fad38e373fe", "762514b829bf486a", "ea676b2cb7db2b7a"},
    {"substitution 9", "07a7137045da2a16", "3bdd119049372802", "dfd64a815caf1a0f"},
    {"substitution 10", "04689104c2fd3b2f", "26955f6835af609a", "5c513c9c4886c088"},
    {"substitution 11", "37d06bb516cb7546", "164d5e404f275232", "0a2aeeae3ff4ab77"},
    {"substitution 12", "1f08260d1ac2465e", "6b056e18759f5cca", "ef1bf03e5dfa575a"},
    {"substitution 13", "584023641aba6176", "004bd6ef09176062", "88bf0db6d70dee56"},
    {"substitution 14", "025816164629b007", "480d39006ee762f2", "a1f9915541020b56"},
    {"substitution 15", "49793ebc79b3258f", "437540c8698f3cfa", "6fbf1cafcffd0556"},
    {"substitution 16", "4fb05e1515ab73a7", "072d43a077075292", "2f22e49bab7ca1ac"},
    {"substitution 17", "49e95d6d4ca229bf", "02fe55778117f12a", "5a6b612cc26cce4a"},
    {"substitution 18", "018310dc409b26d6", "1d9d5c5018f728c2", "5f4c038ed12b2e41"},
    {"substitution 19", "1c587f1c13924fef", "305532286d6f295a", "63fac0d034d9f793"},
};
// clang-format on

} // namespace

class tst_CryptDes : public QObject {
    Q_OBJECT

private slots:
    void publishedVectors_data();
    void publishedVectors();
    void chainOfSixteen();
    void parityDoesNotCount();
    void onlyTheLowestBitOfAByteCounts();
    void decryptionUndoesEncryption();
    void keyIsReplaced();
    void scheduleIsThatOfTheVectorForm();
    void shortKeyIsFilledWithZeros();
    void twoRounds();
    void bodyEncryptsZeros25Times_data();
    void bodyEncryptsZeros25Times();
    void bytesToWord_data();
    void bytesToWord();
    void wordToBytes_data();
    void wordToBytes();
    void bitsExchangedBetweenWords();
    void bitsExchangedWithinAWord();
};

void tst_CryptDes::publishedVectors_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("plain");
    QTest::addColumn<QByteArray>("cipher");
    for (Vector const& vector : vectors)
        QTest::newRow(vector.name) << QByteArray::fromHex(vector.key) << QByteArray::fromHex(vector.plain)
                                   << QByteArray::fromHex(vector.cipher);
}

void tst_CryptDes::publishedVectors()
{
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, plain);
    QFETCH(QByteArray, cipher);
    QCOMPARE(bytesOf(transformed(bitsOf(key), bitsOf(plain), 0)).toHex(), cipher.toHex());
    QCOMPARE(bytesOf(transformed(bitsOf(key), bitsOf(cipher), 1)).toHex(), plain.toHex());
}

/// Ronald Rivest's test: a chain in which each block is its own key, and no single fault of DES stays unseen.
void tst_CryptDes::chainOfSixteen()
{
    QByteArray block = bitsOf(QByteArray::fromHex("9474b8e8c73bca7d"));
    for (int i = 0; i < 16; ++i)
        block = transformed(block, block, i % 2);
    QCOMPARE(bytesOf(block).toHex(), QByteArray("1b1a2ddb4c642438"));
}

void tst_CryptDes::parityDoesNotCount()
{
    QByteArray const plain = bitsOf("plain in");
    QByteArray key = bitsOf("some key");
    QByteArray const cipher = transformed(key, plain, 0);
    for (int i = 7; i < 64; i += 8)
        key[i] = static_cast<char>(1 - key[i]);
    QCOMPARE(transformed(key, plain, 0), cipher);
    key[6] = static_cast<char>(1 - key[6]);
    QVERIFY(transformed(key, plain, 0) != cipher);
}

void tst_CryptDes::onlyTheLowestBitOfAByteCounts()
{
    QByteArray const key = bitsOf("some key");
    QByteArray const plain = bitsOf("plain in");
    QByteArray const digits = QByteArray(key).replace('\0', '0').replace('\1', '1');
    QCOMPARE(transformed(digits, plain, 0), transformed(key, plain, 0));
}

void tst_CryptDes::decryptionUndoesEncryption()
{
    QRandomGenerator random = support::generator();
    for (int i = 0; i < support::rounds(10000); ++i) {
        QByteArray block(64, '\0');
        for (char& bit : block)
            bit = static_cast<char>(random.bounded(2));
        QByteArray const key = transformed(block, block, 1);
        unsigned const saltBits = random.bounded(4096U);
        QByteArray const cipher = transformed(key, block, 0, saltBits);
        QVERIFY2(transformed(key, cipher, 1, saltBits) == block, qPrintable(support::seedNote(i)));
    }
}

void tst_CryptDes::keyIsReplaced()
{
    QByteArray block = bitsOf(QByteArray::fromHex("01a1d6d039776742"));
    Crypt::sched schedule;
    Crypt::setkey_r(&schedule, bitsOf("some key").constData());
    Crypt::setkey_r(&schedule, bitsOf(QByteArray::fromHex("7ca110454a1a6e57")).constData());
    Crypt::encrypt_r(&schedule, block.data(), 0);
    QCOMPARE(bytesOf(block).toHex(), QByteArray("690f5b0d9a26939b"));
}

void tst_CryptDes::scheduleIsThatOfTheVectorForm()
{
    QByteArray const key = QByteArray::fromHex("133457799bbcdff1");
    QVector<unsigned> const words = Crypt::SetDESKey(key);
    Crypt::sched schedule;
    Crypt::setkey_r(&schedule, bitsOf(key).constData());
    QCOMPARE(words, QVector<unsigned>(schedule.roundKeys.begin(), schedule.roundKeys.end()));

    // The key of the first round of this much-used example: 000110 110000 001011 101111 111111 000111 000001 110010.
    // A group's first bit is the lowest of its byte.
    QCOMPARE(words.size(), 32);
    QCOMPARE(words[0], 0x203f3418U);
    QCOMPARE(words[1], 0x13383d03U);
}

void tst_CryptDes::shortKeyIsFilledWithZeros()
{
    QCOMPARE(Crypt::SetDESKey("abc"), Crypt::SetDESKey(QByteArray("abc\0\0\0\0\0", 8)));
    QCOMPARE(Crypt::SetDESKey(QByteArray()), QVector<unsigned>(32, 0));
    QCOMPARE(Crypt::SetDESKey("abcdefghijkl"), Crypt::SetDESKey("abcdefgh"));
}

/// The first two rounds of the same example, of the block 0123456789abcdef.
void tst_CryptDes::twoRounds()
{
    QVector<unsigned> const words = Crypt::SetDESKey(QByteArray::fromHex("133457799bbcdff1"));
    unsigned left = asHeld(0xcc00ccff);
    unsigned right = asHeld(0xf0aaf0aa);
    Crypt::DEncrypt(left, right, words.constData(), 0, 1, 0);
    QCOMPARE(left, asHeld(0xef4a6544)); // R1
    QCOMPARE(right, asHeld(0xcc017709)); // R2
}

void tst_CryptDes::bodyEncryptsZeros25Times_data()
{
    QTest::addColumn<unsigned>("saltBits");

    QTest::newRow("plain DES") << 0U;
    QTest::newRow("the first character's bits") << 0x03fU;
    QTest::newRow("the second character's bits") << 0xfc0U;
    QTest::newRow("bits of both") << 0xa65U;
}

void tst_CryptDes::bodyEncryptsZeros25Times()
{
    QFETCH(unsigned, saltBits);
    QByteArray const key = "some key";
    QByteArray block(64, '\0');
    for (int i = 0; i < 25; ++i)
        block = transformed(bitsOf(key), block, 0, saltBits);

    auto const words = Crypt::Body(Crypt::SetDESKey(key), saltBits);
    QByteArray result(8, '\0');
    Crypt::IntToFourBytes(words[0], result, 0);
    Crypt::IntToFourBytes(words[1], result, 4);
    QCOMPARE(result, bytesOf(block));
}

void tst_CryptDes::bytesToWord_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<unsigned>("offset");
    QTest::addColumn<unsigned>("word");

    QTest::newRow("the least significant first") << QByteArray("\x01\x02\x03\x04") << 0U << 0x04030201U;
    QTest::newRow("high bytes") << QByteArray("\xff\xfe\xfd\xfc") << 0U << 0xfcfdfeffU;
    QTest::newRow("from the middle") << QByteArray("\x01\x02\x03\x04\x05") << 1U << 0x05040302U;
    QTest::newRow("across the end") << QByteArray("\x01\x02\x03\x04") << 2U << 0x00000403U;
    QTest::newRow("beyond the end") << QByteArray("\x01\x02\x03\x04") << 4U << 0U;
    QTest::newRow("far beyond the end") << QByteArray("\x01\x02\x03\x04") << 0xffffffffU << 0U;
    QTest::newRow("of nothing") << QByteArray() << 0U << 0U;
}

void tst_CryptDes::bytesToWord()
{
    QFETCH(QByteArray, bytes);
    QFETCH(unsigned, offset);
    QTEST(Crypt::FourBytesToInt(bytes, offset), "word");
}

void tst_CryptDes::wordToBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<unsigned>("offset");
    QTest::addColumn<QByteArray>("written");

    QTest::newRow("the least significant first") << QByteArray("abcd") << 0U << QByteArray("\x01\x02\x03\xff");
    QTest::newRow("into the middle") << QByteArray("abcdef") << 1U
                                     << QByteArray("a\x01\x02\x03\xff"
                                                   "f");
    QTest::newRow("across the end") << QByteArray("abcd") << 2U << QByteArray("ab\x01\x02");
    QTest::newRow("beyond the end") << QByteArray("abcd") << 4U << QByteArray("abcd");
    QTest::newRow("far beyond the end") << QByteArray("abcd") << 0xffffffffU << QByteArray("abcd");
}

void tst_CryptDes::wordToBytes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(unsigned, offset);
    Crypt::IntToFourBytes(0xff030201U, bytes, offset);
    QTEST(bytes, "written");
}

void tst_CryptDes::bitsExchangedBetweenWords()
{
    unsigned a = 0xabcdef12;
    unsigned b = 0x34567890;
    Crypt::PermOperation(a, b, 16, 0x0000ffff); // the upper half of a for the lower one of b
    QCOMPARE(a, 0x7890ef12U);
    QCOMPARE(b, 0x3456abcdU);
    Crypt::PermOperation(a, b, 4, 0x0f0f0f0f); // upper digits of a for lower digits of b
    QCOMPARE(a, 0x4860bfd2U);
    QCOMPARE(b, 0x3759aec1U);
}

void tst_CryptDes::bitsExchangedWithinAWord()
{
    // A shift of 8: each byte named by the mask for the one below it.
    QCOMPARE(Crypt::HPermOperation(0x12345678, 8, 0xff00ff00), 0x34127856U);
    QCOMPARE(Crypt::HPermOperation(0x12345678, 8, 0xff000000), 0x34125678U);
    // A shift of -2: 18 bits down.
    QCOMPARE(Crypt::HPermOperation(0x80000000, -2, 0xcccc0000), 0x00002000U);
    QCOMPARE(Crypt::HPermOperation(0x40000000, -2, 0xcccc0000), 0x00001000U);
    QCOMPARE(Crypt::HPermOperation(0x20000000, -2, 0xcccc0000), 0x20000000U);
}

QTEST_APPLESS_MAIN(tst_CryptDes)
#include "tst_CryptDes.moc"
