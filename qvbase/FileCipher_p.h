// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/AesGcm_p.h>
#include <qvbase/EncryptedFormat_p.h>
#include <qvbase/FileEncryptTesting_p.h>

#include <QString>

#include <optional>

/// Keys and ciphers of encrypted files, by libcrypto.
namespace qv::encrypted {

/// 32 secret bytes, wiped where they end.
class SecretKey {
public:
    SecretKey() = default;
    SecretKey(SecretKey const&) = default;
    SecretKey& operator=(SecretKey const&) = default;
    ~SecretKey();

    uchar* data() { return m_bytes.data(); }
    uchar const* data() const { return m_bytes.data(); }
    static constexpr int size() { return 32; }

private:
    Bytes32 m_bytes = {};
};

/// User and password as UTF-8, wiped where they end.
struct Credentials {
    QByteArray user;
    QByteArray password;

    Credentials() = default;
    Credentials(QString const& userName, QString const& passwordText);
    Credentials(Credentials const&) = delete;
    Credentials& operator=(Credentials&& other) noexcept;
    ~Credentials();
};

/// The keys of one file.
struct FileKeys {
    FileKeys(SecretKey const& kek, Bytes32 const& fileId);

    Bytes32 macOf(FileHeader const& header) const;
    bool fits(FileHeader const& header) const;

    SecretKey headerKey;
    SecretKey fileKey;
};

/// Nothing where memory is short or the system has no random numbers.
std::optional<SecretKey> deriveKek(Credentials const& credentials, Bytes32 const& salt, ScryptCost cost);
SecretKey deriveSessionKey(SecretKey const& fileKey, uchar const* salt);
std::optional<Bytes32> randomBytes32();

Bytes32 sha256Mac(SecretKey const& key, QByteArray const& bytes);

/// AES-256-GCM under the key of one session, with one context for all its records.
class RecordCipher {
public:
    explicit RecordCipher(SecretKey const& key);

    /// What is authenticated beside the text: a record's header and the tag before it, then more in a session record.
    struct Associated {
        uchar const* header;
        uchar const* previousTag;
        uchar const* payload;
        int payloadSize;
    };

    /// Fills @p to (of @p size) and the 16 bytes of @p tag.
    bool seal(quint64 number, Associated const& with, uchar const* text, int size, uchar* to, uchar* tag);
    /// Fills @p to; what stands there is worth nothing unless the result is true.
    bool open(quint64 number, Associated const& with, uchar const* text, int size, uchar* to, uchar const* tag);

private:
    void begin(std::array<uchar, AesGcm::NonceSize> const& nonce, Associated const& with, int size);

    AesGcm m_gcm;
    /// Empty unless a test observes.
    QByteArray m_observedKey;
};

/// What tests replace.
struct Hooks {
    ScryptCost cost;
    FileEncryptTesting::RandomSource random;
    FileEncryptTesting::NonceObserver observer;
    quint64 sessionRecords = Q_UINT64_C(1) << 32;
    quint64 sessionBytes = Q_UINT64_C(64) << 30;
};
Hooks& hooks();

} // namespace qv::encrypted
