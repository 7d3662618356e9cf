// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileEncryptTesting_p.h>

#include <QCryptographicHash>
#include <QMessageAuthenticationCode>

#include <openssl/evp.h>

#include <algorithm>

/// The keys of an encrypted file, derived as docs/formats.md says, not as the device does.
namespace encrypted {

/// Salts and ids that count up: 0 to 31 is the salt of the password, 32 to 63 the file's id.
inline qv::FileEncryptTesting::RandomSource counting()
{
    return
        [next = uchar(0)](uchar* bytes, int count) mutable { std::generate_n(bytes, count, [&] { return next++; }); };
}

inline QByteArray countingFrom(char first)
{
    QByteArray result;
    while (result.size() < 32)
        result += char(first + result.size());
    return result;
}

inline QByteArray hmac(QByteArray const& key, QByteArray const& text)
{
    return QMessageAuthenticationCode::hash(text, key, QCryptographicHash::Sha256);
}

/// Of the file that alice makes with the password "secret" when random numbers count.
inline QByteArray fileKey()
{
    QByteArray const salt = countingFrom(0) + "alice";
    QByteArray kek(32, '\0');
    EVP_PBE_scrypt("secret", 6, reinterpret_cast<uchar const*>(salt.constData()), size_t(salt.size()), 16, 1, 1, 0,
        reinterpret_cast<uchar*>(kek.data()), size_t(kek.size()));
    return hmac(hmac(countingFrom(32), kek), "file\1");
}

/// Of the session that begins there, with the third salt.
inline QByteArray sessionKey()
{
    return hmac(hmac(countingFrom(64), fileKey()), "session\1");
}

} // namespace encrypted
