// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/AesGcm_p.h>

#include <QtEndian>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/modes.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

namespace qv::encrypted {

namespace {

    constexpr int blockSize = 16;

    EVP_CIPHER const* blockCipher()
    {
        // Kept for good: devices of static objects may still write.
        static EVP_CIPHER const* const cipher = EVP_CIPHER_fetch(nullptr, "AES-256-ECB", nullptr);
        return cipher;
    }

} // namespace

/// The enciphered counters of one text, in the order in which the mode asks for them. As many as there is room for
/// are enciphered in one call, which for twenty of them takes hardly longer than for one.
class KeyStream {
public:
    explicit KeyStream(uchar const* key);
    KeyStream(KeyStream const&) = delete;
    KeyStream& operator=(KeyStream const&) = delete;
    ~KeyStream();

    void begin(uchar const* nonce, int blocks);
    void take(uchar* to);
    void addTo(uchar const* text, uchar* to, size_t blocks);
    /// Whether every call of the cipher succeeded since begin(), and no more was taken than was announced there.
    bool isGood() const { return m_isGood; }

private:
    void encipher(int blocks);
    void refill();

    static constexpr int Room = 64;
    /// As the cipher takes and leaves it.
    struct Block {
        std::array<quint32, 3> nonce;
        quint32 bigEndianCounter;
    };
    static_assert(sizeof(Block) == blockSize);

    EVP_CIPHER_CTX* m_cipher;
    std::array<Block, Room> m_blocks = {};
    std::array<quint32, 3> m_nonce = {};
    quint32 m_counter = 0;
    int m_used = 0;
    int m_filled = 0;
    int m_due = 0;
    bool m_isGood = true;
};

KeyStream::KeyStream(uchar const* key)
    : m_cipher(EVP_CIPHER_CTX_new())
{
    m_isGood = m_cipher && EVP_EncryptInit_ex2(m_cipher, blockCipher(), key, nullptr, nullptr) == 1
        && EVP_CIPHER_CTX_set_padding(m_cipher, 0) == 1;
    // The hash key, which the mode asks for first: a block of zeros.
    if (m_isGood)
        encipher(1);
}

KeyStream::~KeyStream()
{
    OPENSSL_cleanse(m_blocks.data(), sizeof(m_blocks));
    EVP_CIPHER_CTX_free(m_cipher);
}

void KeyStream::encipher(int blocks)
{
    auto* const bytes = reinterpret_cast<uchar*>(m_blocks.data());
    // Whole blocks need nothing of what EVP_EncryptUpdate() keeps from one call to the next.
    m_isGood = EVP_Cipher(m_cipher, bytes, bytes, unsigned(blocks * blockSize)) > 0 && m_isGood;
    m_used = 0;
    m_filled = blocks;
}

void KeyStream::begin(uchar const* nonce, int blocks)
{
    std::memcpy(m_nonce.data(), nonce, sizeof(m_nonce));
    m_counter = 1;
    m_due = blocks;
    m_isGood = true;
    refill();
}

void KeyStream::refill()
{
    m_isGood = m_isGood && m_due > 0;
    int const blocks = std::clamp(m_due, 1, Room);
    // On its own, so that it is not read again for each of them.
    auto const nonce = m_nonce;
    std::generate_n(m_blocks.begin(), blocks, [&nonce, counter = m_counter]() mutable {
        return Block{nonce, qToBigEndian(counter++)};
    });
    m_counter += quint32(blocks);
    m_due -= blocks;
    encipher(blocks);
}

void KeyStream::take(uchar* to)
{
    if (m_used == m_filled)
        refill();
    std::memcpy(to, &m_blocks[size_t(m_used++)], blockSize);
}

void KeyStream::addTo(uchar const* text, uchar* to, size_t blocks)
{
    while (blocks > 0) {
        if (m_used == m_filled)
            refill();
        auto const count = std::min(blocks, size_t(m_filled - m_used));
        auto const* const stream = reinterpret_cast<uchar const*>(&m_blocks[size_t(m_used)]);
        size_t const size = count * blockSize;
        for (size_t i = 0; i < size; i += sizeof(quint64))
            qToUnaligned(qFromUnaligned<quint64>(text + i) ^ qFromUnaligned<quint64>(stream + i), to + i);
        m_used += int(count);
        blocks -= count;
        text += size;
        to += size;
    }
}

namespace {

    KeyStream& streamOf(void const* key)
    {
        return *static_cast<KeyStream*>(const_cast<void*>(key));
    }

    // What the mode calls. The counters need no look: it counts as the stream does, SP 800-38D leaves no choice.
    void takeBlock(uchar const*, uchar* to, void const* key)
    {
        streamOf(key).take(to);
    }

    void addBlocks(uchar const* text, uchar* to, size_t blocks, void const* key, uchar const*)
    {
        streamOf(key).addTo(text, to, blocks);
    }

} // namespace

struct AesGcm::State {
    explicit State(uchar const* key)
        : stream(key)
        , mode(stream.isGood() ? CRYPTO_gcm128_new(&stream, takeBlock) : nullptr)
    {
        if (!mode)
            throw std::bad_alloc();
    }
    State(State const&) = delete;
    State& operator=(State const&) = delete;
    ~State() { CRYPTO_gcm128_release(mode); }

    KeyStream stream;
    GCM128_CONTEXT* mode;
    bool isGood = true;
};

AesGcm::AesGcm(uchar const* key)
    : m_state(std::make_unique<State>(key))
{
}

AesGcm::AesGcm(AesGcm&& other) noexcept = default;
AesGcm& AesGcm::operator=(AesGcm&& other) noexcept = default;
AesGcm::~AesGcm() = default;

void AesGcm::begin(uchar const* nonce, int size)
{
    // One more, which hides the tag.
    m_state->stream.begin(nonce, 1 + (size + blockSize - 1) / blockSize);
    CRYPTO_gcm128_setiv(m_state->mode, nonce, size_t(NonceSize));
    m_state->isGood = true;
}

void AesGcm::associate(uchar const* bytes, int size)
{
    m_state->isGood = CRYPTO_gcm128_aad(m_state->mode, bytes, size_t(size)) == 0 && m_state->isGood;
}

void AesGcm::encrypt(uchar const* text, int size, uchar* to)
{
    int const failed = CRYPTO_gcm128_encrypt_ctr32(m_state->mode, text, to, size_t(size), addBlocks);
    m_state->isGood = failed == 0 && m_state->isGood;
}

void AesGcm::decrypt(uchar const* text, int size, uchar* to)
{
    int const failed = CRYPTO_gcm128_decrypt_ctr32(m_state->mode, text, to, size_t(size), addBlocks);
    m_state->isGood = failed == 0 && m_state->isGood;
}

bool AesGcm::takeTag(uchar* tag)
{
    CRYPTO_gcm128_tag(m_state->mode, tag, size_t(TagSize));
    return m_state->isGood && m_state->stream.isGood();
}

bool AesGcm::checkTag(uchar const* tag)
{
    bool const fits = CRYPTO_gcm128_finish(m_state->mode, tag, size_t(TagSize)) == 0;
    return fits && m_state->isGood && m_state->stream.isGood();
}

} // namespace qv::encrypted
