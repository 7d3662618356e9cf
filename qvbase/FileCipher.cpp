// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/FileCipher_p.h>

#include <QtEndian>

#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/params.h>
#include <openssl/rand.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace qv::encrypted {

namespace {

    void wipe(QByteArray& bytes)
    {
        // Only what is ours alone: data() would copy what is shared and wipe the copy.
        if (bytes.isDetached())
            OPENSSL_cleanse(bytes.data(), size_t(bytes.size()));
    }

    OSSL_PARAM octets(char const* name, void const* bytes, int size)
    {
        return OSSL_PARAM_construct_octet_string(name, const_cast<void*>(bytes), size_t(size));
    }

    bool deriveByScrypt(OSSL_PARAM const* parameters, SecretKey* key)
    {
        std::unique_ptr<EVP_KDF, decltype(&EVP_KDF_free)> const kdf(
            EVP_KDF_fetch(nullptr, "SCRYPT", nullptr), EVP_KDF_free);
        std::unique_ptr<EVP_KDF_CTX, decltype(&EVP_KDF_CTX_free)> const context(
            EVP_KDF_CTX_new(kdf.get()), EVP_KDF_CTX_free);
        return context && EVP_KDF_derive(context.get(), key->data(), size_t(SecretKey::size()), parameters) == 1;
    }

    using Mac = std::unique_ptr<EVP_MAC_CTX, decltype(&EVP_MAC_CTX_free)>;

    EVP_MAC_CTX* makeKeylessMac()
    {
        char digest[] = "SHA256";
        OSSL_PARAM const parameters[]
            = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digest, 0), OSSL_PARAM_construct_end()};
        std::unique_ptr<EVP_MAC, decltype(&EVP_MAC_free)> const algorithm(
            EVP_MAC_fetch(nullptr, "HMAC", nullptr), EVP_MAC_free);
        Mac made(algorithm ? EVP_MAC_CTX_new(algorithm.get()) : nullptr, EVP_MAC_CTX_free);
        return made && EVP_MAC_CTX_set_params(made.get(), parameters) == 1 ? made.release() : nullptr;
    }

    /// A copy of one without a key, which costs half of what looking the algorithms up does.
    Mac newMac()
    {
        // Never destroyed: devices of static objects may still be opened.
        static EVP_MAC_CTX const* const keyless = makeKeylessMac();
        return Mac(keyless ? EVP_MAC_CTX_dup(keyless) : nullptr, EVP_MAC_CTX_free);
    }

    /// HMAC-SHA256 under 32 bytes of @p key.
    void makeMac(uchar const* key, void const* bytes, size_t size, uchar* to)
    {
        Mac const mac = newMac();
        size_t length = 0;
        if (!mac || EVP_MAC_init(mac.get(), key, sizeof(Bytes32), nullptr) != 1
            || EVP_MAC_update(mac.get(), static_cast<uchar const*>(bytes), size) != 1
            || EVP_MAC_final(mac.get(), to, &length, sizeof(Bytes32)) != 1)
            throw std::bad_alloc();
    }

    /// The two steps of HKDF, RFC 5869, for keys as long as the hash.
    SecretKey extract(SecretKey const& from, uchar const* salt)
    {
        SecretKey key;
        makeMac(salt, from.data(), size_t(SecretKey::size()), key.data());
        return key;
    }

    SecretKey expand(SecretKey const& extracted, char const* info)
    {
        QByteArray const block = QByteArray(info) + '\x01';
        SecretKey key;
        makeMac(extracted.data(), block.constData(), size_t(block.size()), key.data());
        return key;
    }

} // namespace

Hooks& hooks()
{
    // Never destroyed: devices of static objects may still write.
    static Hooks& instance = *new Hooks;
    return instance;
}

SecretKey::~SecretKey()
{
    OPENSSL_cleanse(m_bytes.data(), m_bytes.size());
}

Credentials::Credentials(QString const& userName, QString const& passwordText)
    : user(userName.toUtf8())
    , password(passwordText.toUtf8())
{
}

Credentials& Credentials::operator=(Credentials&& other) noexcept
{
    // The other one wipes what was ours.
    std::swap(user, other.user);
    std::swap(password, other.password);
    return *this;
}

Credentials::~Credentials()
{
    wipe(user);
    wipe(password);
}

FileKeys::FileKeys(SecretKey const& kek, Bytes32 const& fileId)
{
    SecretKey const extracted = extract(kek, fileId.data());
    headerKey = expand(extracted, "header");
    fileKey = expand(extracted, "file");
}

Bytes32 FileKeys::macOf(FileHeader const& header) const
{
    return sha256Mac(headerKey, header.authenticated());
}

bool FileKeys::fits(FileHeader const& header) const
{
    return CRYPTO_memcmp(macOf(header).data(), header.mac().data(), sizeof(Bytes32)) == 0;
}

std::optional<SecretKey> deriveKek(Credentials const& credentials, Bytes32 const& salt, ScryptCost cost)
{
    constexpr std::uint64_t maxMemory = Q_UINT64_C(256) << 20;
    QByteArray const salted
        = QByteArray(reinterpret_cast<char const*>(salt.data()), int(salt.size())) + credentials.user;
    std::uint64_t n = Q_UINT64_C(1) << cost.logN;
    std::uint64_t memory = maxMemory;
    OSSL_PARAM const parameters[]
        = {octets(OSSL_KDF_PARAM_PASSWORD, credentials.password.constData(), credentials.password.size()),
            octets(OSSL_KDF_PARAM_SALT, salted.constData(), salted.size()),
            OSSL_PARAM_construct_uint64(OSSL_KDF_PARAM_SCRYPT_N, &n),
            OSSL_PARAM_construct_uint32(OSSL_KDF_PARAM_SCRYPT_R, &cost.r),
            OSSL_PARAM_construct_uint32(OSSL_KDF_PARAM_SCRYPT_P, &cost.p),
            OSSL_PARAM_construct_uint64(OSSL_KDF_PARAM_SCRYPT_MAXMEM, &memory), OSSL_PARAM_construct_end()};
    SecretKey kek;
    return deriveByScrypt(parameters, &kek) ? std::make_optional(kek) : std::nullopt;
}

SecretKey deriveSessionKey(SecretKey const& fileKey, uchar const* salt)
{
    return expand(extract(fileKey, salt), "session");
}

std::optional<Bytes32> randomBytes32()
{
    Bytes32 bytes = {};
    if (hooks().random) {
        hooks().random(bytes.data(), int(bytes.size()));
        return bytes;
    }
    return RAND_bytes(bytes.data(), int(bytes.size())) == 1 ? std::make_optional(bytes) : std::nullopt;
}

Bytes32 sha256Mac(SecretKey const& key, QByteArray const& bytes)
{
    Bytes32 mac = {};
    makeMac(key.data(), bytes.constData(), size_t(bytes.size()), mac.data());
    return mac;
}

RecordCipher::RecordCipher(SecretKey const& key, AesGcm::Direction direction)
    : m_gcm(key.data(), direction)
{
    if (direction == AesGcm::Seal && hooks().observer)
        m_observedKey = QByteArray(reinterpret_cast<char const*>(key.data()), SecretKey::size());
}

bool RecordCipher::process(quint64 number, Associated const& with, uchar const* text, int size, uchar* to)
{
    std::array<uchar, AesGcm::NonceSize> nonce = {};
    qToLittleEndian(number, nonce.data());
    if (!m_observedKey.isEmpty())
        hooks().observer(m_observedKey, QByteArray(reinterpret_cast<char const*>(nonce.data()), int(nonce.size())));

    // In one piece: each call of libcrypto costs a tenth of a record.
    std::array<uchar, RecordHeader::Length + sizeof(Tag)> associated;
    std::copy_n(with.previousTag, sizeof(Tag), std::copy_n(with.header, RecordHeader::Length, associated.begin()));
    return m_gcm.begin(nonce.data()) && m_gcm.associate(associated.data(), int(associated.size()))
        && (with.payloadSize == 0 || m_gcm.associate(with.payload, with.payloadSize))
        && (size == 0 || m_gcm.process(text, size, to));
}

bool RecordCipher::seal(quint64 number, Associated const& with, uchar const* text, int size, uchar* to, uchar* tag)
{
    return process(number, with, text, size, to) && m_gcm.takeTag(tag);
}

bool RecordCipher::open(
    quint64 number, Associated const& with, uchar const* text, int size, uchar* to, uchar const* tag)
{
    return process(number, with, text, size, to) && m_gcm.checkTag(tag);
}

} // namespace qv::encrypted
