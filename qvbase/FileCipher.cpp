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

    using MacContext = std::unique_ptr<EVP_MAC_CTX, decltype(&EVP_MAC_CTX_free)>;

    EVP_MAC_CTX* makeKeylessContext()
    {
        char digest[] = "SHA256";
        OSSL_PARAM const parameters[]
            = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digest, 0), OSSL_PARAM_construct_end()};
        std::unique_ptr<EVP_MAC, decltype(&EVP_MAC_free)> const algorithm(
            EVP_MAC_fetch(nullptr, "HMAC", nullptr), EVP_MAC_free);
        MacContext made(algorithm ? EVP_MAC_CTX_new(algorithm.get()) : nullptr, EVP_MAC_CTX_free);
        return made && EVP_MAC_CTX_set_params(made.get(), parameters) == 1 ? made.release() : nullptr;
    }

    /// HMAC-SHA256, for one key after the other. Wipes the last of them.
    class Hmac {
    public:
        Hmac();
        /// Of @p bytes, under the 32 bytes of @p key.
        void make(uchar const* key, void const* bytes, int size, uchar* to);

        /// The two steps of HKDF, RFC 5869, for keys as long as the hash.
        SecretKey extract(SecretKey const& from, uchar const* salt);
        SecretKey expand(SecretKey const& extracted, char const* info);

    private:
        MacContext m_context;
    };

    Hmac::Hmac()
        : m_context(nullptr, EVP_MAC_CTX_free)
    {
        // Copied, which costs half of what looking the algorithms up does. Never destroyed: devices of static objects
        // may still be opened.
        static EVP_MAC_CTX const* const keyless = makeKeylessContext();
        m_context.reset(keyless ? EVP_MAC_CTX_dup(keyless) : nullptr);
        if (!m_context)
            throw std::bad_alloc();
    }

    void Hmac::make(uchar const* key, void const* bytes, int size, uchar* to)
    {
        size_t length = 0;
        if (EVP_MAC_init(m_context.get(), key, sizeof(Bytes32), nullptr) != 1
            || EVP_MAC_update(m_context.get(), static_cast<uchar const*>(bytes), size_t(size)) != 1
            || EVP_MAC_final(m_context.get(), to, &length, sizeof(Bytes32)) != 1)
            throw std::bad_alloc();
    }

    SecretKey Hmac::extract(SecretKey const& from, uchar const* salt)
    {
        SecretKey key;
        make(salt, from.data(), SecretKey::size(), key.data());
        return key;
    }

    SecretKey Hmac::expand(SecretKey const& extracted, char const* info)
    {
        QByteArray const block = QByteArray(info) + '\x01';
        SecretKey key;
        make(extracted.data(), block.constData(), block.size(), key.data());
        return key;
    }

    using Nonce = std::array<uchar, AesGcm::NonceSize>;

    Nonce nonceOf(quint64 number)
    {
        Nonce nonce = {};
        qToLittleEndian(number, nonce.data());
        return nonce;
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
    Hmac hmac;
    SecretKey const extracted = hmac.extract(kek, fileId.data());
    headerKey = hmac.expand(extracted, "header");
    fileKey = hmac.expand(extracted, "file");
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
    Hmac hmac;
    return hmac.expand(hmac.extract(fileKey, salt), "session");
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
    Hmac().make(key.data(), bytes.constData(), bytes.size(), mac.data());
    return mac;
}

RecordCipher::RecordCipher(SecretKey const& key)
    : m_gcm(key.data())
{
    if (hooks().observer)
        m_observedKey = QByteArray(reinterpret_cast<char const*>(key.data()), SecretKey::size());
}

void RecordCipher::begin(Nonce const& nonce, Associated const& with, int size)
{
    m_gcm.begin(nonce.data(), size);
    // In one piece: what is no multiple of a block is hashed byte by byte.
    std::array<uchar, RecordHeader::Length + sizeof(Tag)> associated;
    std::copy_n(with.previousTag, sizeof(Tag), std::copy_n(with.header, RecordHeader::Length, associated.begin()));
    m_gcm.associate(associated.data(), int(associated.size()));
    m_gcm.associate(with.payload, with.payloadSize);
}

bool RecordCipher::seal(quint64 number, Associated const& with, uchar const* text, int size, uchar* to, uchar* tag)
{
    Nonce const nonce = nonceOf(number);
    if (!m_observedKey.isEmpty())
        hooks().observer(m_observedKey, QByteArray(reinterpret_cast<char const*>(nonce.data()), int(nonce.size())));
    begin(nonce, with, size);
    m_gcm.encrypt(text, size, to);
    return m_gcm.takeTag(tag);
}

bool RecordCipher::open(
    quint64 number, Associated const& with, uchar const* text, int size, uchar* to, uchar const* tag)
{
    begin(nonceOf(number), with, size);
    m_gcm.decrypt(text, size, to);
    return m_gcm.checkTag(tag);
}

} // namespace qv::encrypted
