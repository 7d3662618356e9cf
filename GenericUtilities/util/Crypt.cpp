// SPDX-License-Identifier: LGPL-2.1-or-later
#define OPENSSL_SUPPRESS_DEPRECATED // DES_crypt, MD5_*: no others make these hashes
#include <GenericUtilities/util/Crypt.h>

#include <GenericUtilities/util/DesTables_p.h>
#include <GenericUtilities/util/Wiped_p.h>

#include <QCryptographicHash>
#include <QStringList>
#include <QStringView>
#include <QtEndian>

#include <openssl/des.h>
#include <openssl/md5.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace qvgen {

namespace {

    constexpr char alphabet[] = "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    using des::cryptCount;
    using des::sixBits;

    constexpr int keyLength = 8; // characters
    constexpr int hashLength = 13;

    struct Salt {
        char first;
        char second;
        unsigned bits;
    };

    /// The place of a character in the alphabet, and of any other what the seventh edition's crypt(3) made of its code.
    unsigned alphabetIndex(char character)
    {
        unsigned code = static_cast<uchar>(character);
        if (code > 'Z')
            code -= 6;
        if (code > '9')
            code -= 7;
        return (code - '.') & sixBits;
    }

    Salt makeSalt(char first, char second)
    {
        unsigned const bits = alphabetIndex(first) | alphabetIndex(second) << 6;
        // The code 0 cannot be written; what is written must hash alike.
        auto const written = [](char character) { return character ? character : alphabet[alphabetIndex(character)]; };
        return {written(first), written(second), bits};
    }

    /// Two characters and the terminating zero.
    std::array<char, 3> randomSalt(unsigned seed)
    {
        // rand_r gives what Qt 4's qsrand() and qrand() gave, and touches no other generator.
        std::array<char, 3> salt = {};
        Crypt::to64(salt.data(), rand_r(&seed), 2);
        return salt;
    }

    std::array<char, 3> saltOfNow()
    {
        return randomSalt(static_cast<unsigned>(std::time(nullptr)));
    }

    /// Writes 13 characters: the salt, then the 64 bits of the result and two zero bits, six at a time.
    void writeHash(Salt const& salt, quint64 result, char* out)
    {
        *out++ = salt.first;
        *out++ = salt.second;
        for (int shift = 58; shift >= 0; shift -= 6)
            *out++ = alphabet[(result >> shift) & sixBits];
        *out = alphabet[(result << 2) & sixBits];
    }

    quint64 fromBits(std::array<char, 64> const& bits)
    {
        quint64 result = 0;
        for (char const bit : bits)
            result = result << 1 | static_cast<uchar>(bit);
        return result;
    }

    /// The low seven bits of up to eight characters, each followed by an unused one.
    void writeKeyBits(char const* key, char* bits)
    {
        for (int i = 0; i < keyLength && key[i]; ++i, bits += 8) {
            for (int bit = 0; bit < 7; ++bit)
                bits[bit] = static_cast<char>((key[i] >> (6 - bit)) & 1);
        }
    }

    /// MD5_Final wipes what the context has read; none of the three fails.
    void writeMd5(char const* data, unsigned long length, unsigned char* digest)
    {
        MD5_CTX context;
        MD5_Init(&context);
        MD5_Update(&context, data, length);
        MD5_Final(digest, &context);
    }

    /// Wiped by the caller; made in one piece, so that no other copy is left behind.
    QByteArray joinedByColons(QByteArray const& first, QByteArray const& second, QByteArray const& third)
    {
        QByteArray text;
        text.reserve(first.size() + second.size() + third.size() + 2);
        text.append(first).append(':').append(second).append(':').append(third);
        return text;
    }

} // namespace

QString Crypt::crypt(QString const& password, QString const& salt)
{
    QByteArray const saltText = salt.left(2).toLatin1().leftJustified(2, '\0');
    Salt const used = makeSalt(saltText[0], saltText[1]);

    Wiped<QByteArray> key(QStringView(password).left(keyLength).toLatin1());
    for (char& character : *key)
        character = static_cast<char>(static_cast<uchar>(character) << 1);
    Wiped<QVector<unsigned>> const schedule(SetDESKey(*key));

    auto const words = Body(*schedule, used.bits);
    QByteArray result(8, '\0');
    IntToFourBytes(words[0], result, 0);
    IntToFourBytes(words[1], result, 4);

    std::array<char, hashLength> hash = {};
    writeHash(used, qFromBigEndian<quint64>(result.constData()), hash.data());
    return QString::fromLatin1(hash.data(), hashLength);
}

QString Crypt::crypt(QString const& password)
{
    // The same salt every time: stored hashes are compared with what this gives.
    return crypt(password, QString::fromLatin1(randomSalt(64).data()));
}

char* Crypt::crypt_r(char const* key, char const* salt, char* out)
{
    Salt const used = makeSalt(salt[0], salt[0] ? salt[1] : '\0');

    Wiped<std::array<char, 64>> keyBits({});
    writeKeyBits(key, keyBits->data());
    sched schedule;
    setkey_r(&schedule, keyBits->data());
    schedule.saltBits = used.bits;

    std::array<char, 64> block = {};
    for (int i = 0; i < cryptCount; ++i)
        encrypt_r(&schedule, block.data(), 0);

    writeHash(used, fromBits(block), out);
    out[hashLength] = '\0';
    return out;
}

void Crypt::to64(char* s, long v, int n)
{
    for (; n > 0; --n) {
        *s++ = alphabet[v & sixBits];
        v >>= 6;
    }
}

char* Crypt::crypt_sll(char const* password)
{
    return crypt_sll(password, saltOfNow().data());
}

char* Crypt::crypt_sll(char const* password, char const* salt)
{
    return DES_crypt(password, salt);
}

QByteArray Crypt::md5(QByteArray const& data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Md5);
}

unsigned char* Crypt::md5_sql(char const* data, unsigned long length)
{
    auto* const digest = static_cast<unsigned char*>(std::malloc(MD5_DIGEST_LENGTH));
    if (digest)
        writeMd5(data, length, digest);
    return digest;
}

QString Crypt::cameraUserAccess(
    QString const& user, QString const& password, QString const& label, QString const& realm)
{
    Wiped<QByteArray> const secret(password.toLatin1());
    std::array<char, hashLength + 1> hash = {};
    crypt_r(secret->constData(), saltOfNow().data(), hash.data());
    Wiped<QByteArray> const account(joinedByColons(user.toLatin1(), realm.toLatin1(), *secret));
    QByteArray digest(MD5_DIGEST_LENGTH, '\0'); // HA1 of RFC 2617, 3.2.2.2
    // Not by md5(): QCryptographicHash leaves what it read in memory.
    writeMd5(account->constData(), unsigned(account->size()), reinterpret_cast<unsigned char*>(digest.data()));
    return QStringList{user, label, QString::fromLatin1(hash.data()), QString::fromLatin1(digest.toHex())}.join(
        QLatin1Char(':'));
}

} // namespace qvgen
