// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/Crypt.h>

#include <GenericUtilities/util/Wiped_p.h>

#include <QRegularExpression>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <optional>

namespace qvgen {

namespace {

    constexpr int saltLength = 16;
    constexpr int derivedLength = 32;
    constexpr quint64 maxMemory = Q_UINT64_C(128) << 20; // bytes that scrypt's table takes, 128 * r * N
    constexpr quint64 maxWork = Q_UINT64_C(4) << 20; // N * r * p; as tables of that cost take seconds
    constexpr quint64 maxBlocks = Q_UINT64_C(1) << 16; // r * p; 128 bytes each, slow to make: a second for all
    constexpr int maxTextLength = 256; // characters of a stored hash

    /// The parameters of RFC 7914, with N as its binary logarithm.
    struct Cost {
        unsigned logN;
        quint64 r;
        quint64 p;

        quint64 n() const { return Q_UINT64_C(1) << logN; }
        bool isAcceptable() const
        {
            return logN >= 1 && logN <= 20 && r >= 1 && p >= 1 && r * p <= maxBlocks && 128 * r * n() <= maxMemory
                && n() * r * p <= maxWork;
        }
    };

    /// 32 MiB: what a desktop client of 32 bits can spare; p makes up for it.
    constexpr Cost defaultCost = {15, 8, 3};

    struct PasswordHash {
        Cost cost;
        QByteArray salt;
        QByteArray hash;
    };

    QString toBase64(QByteArray const& bytes)
    {
        return QString::fromLatin1(bytes.toBase64(QByteArray::OmitTrailingEquals));
    }

    QByteArray fromBase64(QString const& text)
    {
        return QByteArray::fromBase64(text.toLatin1());
    }

    QString toText(PasswordHash const& of)
    {
        return QStringLiteral("$scrypt$ln=%1,r=%2,p=%3$%4$%5")
            .arg(of.cost.logN)
            .arg(of.cost.r)
            .arg(of.cost.p)
            .arg(toBase64(of.salt), toBase64(of.hash));
    }

    std::optional<PasswordHash> fromText(QString const& text)
    {
        // 8 to 64 bytes of salt, 16 to 64 of hash.
        static QRegularExpression const form(
            QStringLiteral("\\A\\$scrypt\\$ln=([0-9]{1,2}),r=([0-9]{1,7}),p=([0-9]{1,7})"
                           "\\$([A-Za-z0-9+/]{11,86})\\$([A-Za-z0-9+/]{22,86})\\z"));
        if (text.size() > maxTextLength)
            return {};
        auto const match = form.match(text);
        if (!match.hasMatch())
            return {};
        Cost const cost = {match.captured(1).toUInt(), match.captured(2).toUInt(), match.captured(3).toUInt()};
        PasswordHash const stored = {cost, fromBase64(match.captured(4)), fromBase64(match.captured(5))};
        // One text for one hash: no leading zeros, no bits behind the last byte.
        return toText(stored) == text ? std::make_optional(stored) : std::nullopt;
    }

    /// @p length bytes; empty where the cost is not acceptable or there is no memory.
    QByteArray scrypt(QString const& password, QByteArray const& salt, Cost const& cost, int length)
    {
        Wiped<QByteArray> const secret(password.toUtf8());
        QByteArray result(length, '\0');
        constexpr quint64 withWorkspace = 2 * maxMemory;
        bool const isMade = cost.isAcceptable()
            && EVP_PBE_scrypt(secret->constData(), size_t(secret->size()),
                   reinterpret_cast<uchar const*>(salt.constData()), size_t(salt.size()), cost.n(), cost.r, cost.p,
                   withWorkspace, reinterpret_cast<uchar*>(result.data()), size_t(length))
                == 1;
        return isMade ? result : QByteArray();
    }

} // namespace

QString Crypt::hashPassword(QString const& password)
{
    QByteArray salt(saltLength, '\0');
    if (RAND_bytes(reinterpret_cast<uchar*>(salt.data()), salt.size()) != 1)
        return {};
    QByteArray const hash = scrypt(password, salt, defaultCost, derivedLength);
    return hash.isEmpty() ? QString() : toText({defaultCost, salt, hash});
}

bool Crypt::verifyPassword(QString const& password, QString const& hash)
{
    auto const stored = fromText(hash);
    if (!stored)
        return false;
    QByteArray const made = scrypt(password, stored->salt, stored->cost, stored->hash.size());
    return made.size() == stored->hash.size()
        && CRYPTO_memcmp(made.constData(), stored->hash.constData(), size_t(made.size())) == 0;
}

} // namespace qvgen
