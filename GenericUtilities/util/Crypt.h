// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QByteArray>
#include <QString>
#include <QVector>

#include <array>

namespace qvgen {

/// Password hashes: those that network cameras and Unix password files of old expect, and one for everything else.
///
/// DES and MD5 hashes are bound to the devices that ask for them: whoever gets hold of one finds the password within
/// hours. Where no device prescribes the format, use hashPassword() and verifyPassword(). docs/passwords.md says what
/// each is fit for.
///
/// A salt is two characters of the alphabet "./0-9A-Za-z". Other characters count by their code, as in crypt(3) of the
/// seventh edition; a missing one counts as code 0 and is written as "G", which hashes alike. Passwords that are texts
/// count by their Latin-1 bytes (anything else as "?"), of which the DES hashes see the low seven bits of the first
/// eight. Nothing here reports errors but where said; pointers must not be null. All operations are reentrant but
/// crypt_sll(). Keys, schedules and copies of passwords are wiped from memory; the caller's own texts are not, nor what
/// SetDESKey() returns, nor what OpenSSL's DES_crypt (crypt_sll()) and Qt's MD5 (md5()) keep while they work.
class GENERICUTILITIES_EXPORT Crypt {
public:
    /// Key schedule and salt of the reentrant operations: the caller's, one per thread, wiped when it dies.
    struct GENERICUTILITIES_EXPORT sched {
        ~sched();

        /// Two words for each of 16 rounds, as SetDESKey() makes them.
        std::array<unsigned, 32> roundKeys = {};
        /// 12 bits, the first character's in the low six; 0 is plain DES.
        unsigned saltBits = 0;
    };

    /// The traditional DES hash: 13 characters, the first two being the salt.
    static QString crypt(QString const& password, QString const& salt);
    /// With the same salt for every password and at every call.
    static QString crypt(QString const& password);
    /// The same hash in @p out, at least 14 bytes: 13 characters and the terminating zero. Returns @p out.
    static char* crypt_r(char const* key, char const* salt, char* out);

    /// Takes a key of 64 bytes, each a bit in its lowest bit, the most significant first. Every eighth (parity) is not
    /// used. Leaves the salt as it is.
    static void setkey_r(sched* schedule, char const* key);
    /// Encrypts, or decrypts where @p decrypt is not 0, a block of 64 bytes as those of a key in its place.
    static void encrypt_r(sched* schedule, char* block, int decrypt);

    /// Writes @p n characters of the alphabet, six bits of @p v each, the lowest first. No terminating zero.
    static void to64(char* s, long v, int n);

    /// OpenSSL's DES_crypt with a salt made from the current time. The result is OpenSSL's, valid until the next call
    /// in any thread: not reentrant.
    static char* crypt_sll(char const* password);
    /// OpenSSL's DES_crypt, likewise. Null for a salt that is shorter than two characters or not ASCII.
    static char* crypt_sll(char const* password, char const* salt);

    /// 16 bytes.
    static QByteArray md5(QByteArray const& data);
    /// 16 bytes that the caller releases with free(); null where there is no memory.
    static unsigned char* md5_sql(char const* data, unsigned long length);

    /// The line "user:label:hash:digest" that lets a user into a camera: the DES hash of the password (salt made from
    /// the current time) for Basic authentication, HA1 of RFC 2617 in hexadecimal digits for Digest authentication in
    /// @p realm. No ":" or line end may stand in user, label or realm: the line would say something else.
    static QString cameraUserAccess(
        QString const& user, QString const& password, QString const& label, QString const& realm);

    /// A hash to be stored, made with scrypt (RFC 7914) and a random salt of 16 bytes: "$scrypt$ln=15,r=8,p=3$", the
    /// salt, "$" and 32 bytes of hash, both in Base64 without padding. Takes 32 MiB and some tenths of a second. The
    /// whole password counts, as UTF-8. Empty where libcrypto has no random numbers or no memory.
    static QString hashPassword(QString const& password);
    /// Whether @p hash was made from @p password, at whatever cost up to a table of 128 MiB and some five times the
    /// work of hashPassword(). False for any text that is no such hash or asks for more. How long it takes does not
    /// tell where the hashes differ.
    static bool verifyPassword(QString const& password, QString const& hash);

    /// The least significant byte first. Bytes beyond the end read as 0.
    static unsigned FourBytesToInt(QByteArray const& bytes, unsigned offset);
    /// The least significant byte first. Bytes beyond the end are not written.
    static void IntToFourBytes(unsigned value, QByteArray& bytes, unsigned offset);
    /// Exchanges the bits @p mask of @p b with those of @p a that lie @p shift (0 to 31) higher.
    static constexpr void PermOperation(unsigned& a, unsigned& b, int shift, unsigned mask)
    {
        unsigned const difference = ((a >> shift) ^ b) & mask;
        b ^= difference;
        a ^= difference << shift;
    }
    /// Exchanges the bits @p mask of @p a with those that lie 16 - @p shift (1 to 31) lower.
    static constexpr unsigned HPermOperation(unsigned a, int shift, unsigned mask)
    {
        unsigned const difference = ((a << (16 - shift)) ^ a) & mask;
        return a ^ difference ^ (difference >> (16 - shift));
    }
    /// The schedule of a key of eight bytes (missing ones are 0): two words a round, the six bits for S1, S3, S5, S7 in
    /// the low bits of the first's bytes, those for S2, S4, S6, S8 in the second's.
    static QVector<unsigned> SetDESKey(QByteArray const& key);
    /// Two rounds over halves as Body() holds them, with the keys of rounds @p first and @p second (0 to 15) of
    /// @p roundKeys (32 words).
    static void DEncrypt(
        unsigned& left, unsigned& right, unsigned const* roundKeys, int first, int second, unsigned saltBits);
    /// 25 encryptions of the block of zeros by a schedule of 32 words: the result's bytes 0 to 3 and 4 to 7, as
    /// IntToFourBytes() writes them.
    static std::array<unsigned, 2> Body(QVector<unsigned> const& schedule, unsigned saltBits);
};

} // namespace qvgen
