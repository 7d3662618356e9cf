// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QtGlobal>

#include <memory>

namespace qv::encrypted {

/// AES-256-GCM under one key, keyed once for any number of texts. It calls the functions of libcrypto's provider, which
/// EVP calls as well: EVP of OpenSSL 3.0 asks for the length of each nonce by name, and in all takes as long for a text
/// of 250 bytes as the encryption does.
class AesGcm {
public:
    enum Direction { Open, Seal };
    static constexpr int KeySize = 32;
    static constexpr int NonceSize = 12;
    static constexpr int TagSize = 16;

    /// Throws std::bad_alloc where there is no memory or no such cipher.
    AesGcm(uchar const* key, Direction direction);

    /// Each returns whether it succeeded. A text is begun, what is authenticated only is given before what is
    /// encrypted too, and the tag ends it.
    bool begin(uchar const* nonce);
    bool associate(uchar const* bytes, int size);
    bool process(uchar const* text, int size, uchar* to);
    bool takeTag(uchar* tag);
    bool checkTag(uchar const* tag);

private:
    bool finish();

    struct Free {
        void operator()(void* context) const;
    };
    std::unique_ptr<void, Free> m_context;
    Direction m_direction;
};

} // namespace qv::encrypted
