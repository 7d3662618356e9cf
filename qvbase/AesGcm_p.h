// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QtGlobal>

#include <memory>

namespace qv::encrypted {

/// AES-256-GCM (NIST SP 800-38D) under one key, keyed once for any number of texts. The block cipher and the hash are
/// libcrypto's, which also has the whole mode behind EVP; but that takes twice as long for a text of 250 bytes, most of
/// it for parameters that are looked up by name.
class AesGcm {
public:
    static constexpr int KeySize = 32;
    static constexpr int NonceSize = 12;
    static constexpr int TagSize = 16;

    /// Throws std::bad_alloc where there is no memory or no such cipher.
    explicit AesGcm(uchar const* key);
    AesGcm(AesGcm&& other) noexcept;
    AesGcm& operator=(AesGcm&& other) noexcept;
    ~AesGcm();

    /// A text of @p size bytes is begun, what is authenticated only is given, then all of what is encrypted too, in one
    /// piece, and the tag ends it. Whether all of it succeeded is what takeTag() and checkTag() return.
    void begin(uchar const* nonce, int size);
    void associate(uchar const* bytes, int size);
    void encrypt(uchar const* text, int size, uchar* to);
    void decrypt(uchar const* text, int size, uchar* to);
    bool takeTag(uchar* tag);
    bool checkTag(uchar const* tag);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace qv::encrypted
