// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/AesGcm_p.h>

#include <QByteArray>
#include <QList>

#include <openssl/core_dispatch.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/params.h>
#include <openssl/provider.h>

#include <new>

namespace qv::encrypted {

namespace {

    /// What the provider has for the cipher: provider-cipher(7).
    struct Provided {
        OSSL_FUNC_cipher_newctx_fn* newContext = nullptr;
        OSSL_FUNC_cipher_freectx_fn* freeContext = nullptr;
        OSSL_FUNC_cipher_encrypt_init_fn* beginSealing = nullptr;
        OSSL_FUNC_cipher_decrypt_init_fn* beginOpening = nullptr;
        OSSL_FUNC_cipher_update_fn* update = nullptr;
        OSSL_FUNC_cipher_final_fn* finish = nullptr;
        OSSL_FUNC_cipher_get_ctx_params_fn* get = nullptr;
        OSSL_FUNC_cipher_set_ctx_params_fn* set = nullptr;
        void* provider = nullptr;
        /// Kept for good, and the provider with it: devices of static objects may still write.
        EVP_CIPHER* cipher = nullptr;

        void take(OSSL_DISPATCH const& function);
        bool isComplete() const
        {
            return newContext && freeContext && beginSealing && beginOpening && update && finish && get && set;
        }
    };

    void Provided::take(OSSL_DISPATCH const& function)
    {
        switch (function.function_id) {
        case OSSL_FUNC_CIPHER_NEWCTX:
            newContext = OSSL_FUNC_cipher_newctx(&function);
            break;
        case OSSL_FUNC_CIPHER_FREECTX:
            freeContext = OSSL_FUNC_cipher_freectx(&function);
            break;
        case OSSL_FUNC_CIPHER_ENCRYPT_INIT:
            beginSealing = OSSL_FUNC_cipher_encrypt_init(&function);
            break;
        case OSSL_FUNC_CIPHER_DECRYPT_INIT:
            beginOpening = OSSL_FUNC_cipher_decrypt_init(&function);
            break;
        case OSSL_FUNC_CIPHER_UPDATE:
            update = OSSL_FUNC_cipher_update(&function);
            break;
        case OSSL_FUNC_CIPHER_FINAL:
            finish = OSSL_FUNC_cipher_final(&function);
            break;
        case OSSL_FUNC_CIPHER_GET_CTX_PARAMS:
            get = OSSL_FUNC_cipher_get_ctx_params(&function);
            break;
        case OSSL_FUNC_CIPHER_SET_CTX_PARAMS:
            set = OSSL_FUNC_cipher_set_ctx_params(&function);
            break;
        default:
            break;
        }
    }

    Provided findCipher(char const* name)
    {
        Provided result;
        result.cipher = EVP_CIPHER_fetch(nullptr, name, nullptr);
        if (!result.cipher)
            return result;
        OSSL_PROVIDER const* const provider = EVP_CIPHER_get0_provider(result.cipher);
        result.provider = OSSL_PROVIDER_get0_provider_ctx(provider);
        int noCache = 0;
        OSSL_ALGORITHM const* algorithm = OSSL_PROVIDER_query_operation(provider, OSSL_OP_CIPHER, &noCache);
        while (algorithm && algorithm->algorithm_names
            && !QByteArray(algorithm->algorithm_names).split(':').contains(name))
            ++algorithm;
        if (!algorithm || !algorithm->algorithm_names)
            return result;
        for (OSSL_DISPATCH const* function = algorithm->implementation; function->function_id != 0; ++function)
            result.take(*function);
        return result;
    }

    Provided const& provided()
    {
        static Provided const found = findCipher("AES-256-GCM");
        return found;
    }

    OSSL_PARAM tagAt(uchar const* tag)
    {
        return OSSL_PARAM_construct_octet_string(
            OSSL_CIPHER_PARAM_AEAD_TAG, const_cast<uchar*>(tag), size_t(AesGcm::TagSize));
    }

} // namespace

void AesGcm::Free::operator()(void* context) const
{
    provided().freeContext(context);
}

AesGcm::AesGcm(uchar const* key, Direction direction)
    : m_context(provided().isComplete() ? provided().newContext(provided().provider) : nullptr)
    , m_direction(direction)
{
    auto const begin = direction == Seal ? provided().beginSealing : provided().beginOpening;
    if (!m_context || begin(m_context.get(), key, size_t(KeySize), nullptr, 0, nullptr) != 1)
        throw std::bad_alloc();
}

bool AesGcm::begin(uchar const* nonce)
{
    auto const begin = m_direction == Seal ? provided().beginSealing : provided().beginOpening;
    return begin(m_context.get(), nullptr, 0, nonce, size_t(NonceSize), nullptr) == 1;
}

bool AesGcm::associate(uchar const* bytes, int size)
{
    size_t count = 0;
    return provided().update(m_context.get(), nullptr, &count, size_t(size), bytes, size_t(size)) == 1;
}

bool AesGcm::process(uchar const* text, int size, uchar* to)
{
    size_t count = 0;
    return provided().update(m_context.get(), to, &count, size_t(size), text, size_t(size)) == 1;
}

bool AesGcm::finish()
{
    size_t count = 0;
    uchar none = 0;
    return provided().finish(m_context.get(), &none, &count, 0) == 1;
}

bool AesGcm::takeTag(uchar* tag)
{
    OSSL_PARAM parameters[] = {tagAt(tag), OSSL_PARAM_construct_end()};
    return finish() && provided().get(m_context.get(), parameters) == 1;
}

bool AesGcm::checkTag(uchar const* tag)
{
    OSSL_PARAM const parameters[] = {tagAt(tag), OSSL_PARAM_construct_end()};
    return provided().set(m_context.get(), parameters) == 1 && finish();
}

} // namespace qv::encrypted
