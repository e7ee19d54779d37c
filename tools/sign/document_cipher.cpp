#include "document_cipher.h"

#include "refusal.h"
#include "texts.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <array>
#include <memory>
#include <numeric>
#include <utility>

namespace sign {

namespace {

constexpr std::size_t blockSize = 16;

// Older documents want it, and OpenSSL does not have it everywhere any more.
std::string arcFour(std::string_view text, std::string_view key)
{
    std::array<unsigned char, 256> state;
    std::iota(state.begin(), state.end(), static_cast<unsigned char>(0));
    unsigned char j = 0;
    for (std::size_t i = 0; i < state.size(); ++i) {
        j = static_cast<unsigned char>(j + state[i] + static_cast<unsigned char>(key[i % key.size()]));
        std::swap(state[i], state[j]);
    }
    std::string result(text);
    unsigned char i = 0;
    j = 0;
    for (char& byte : result) {
        ++i;
        j = static_cast<unsigned char>(j + state[i]);
        std::swap(state[i], state[j]);
        byte = static_cast<char>(static_cast<unsigned char>(byte) ^
                                 state[static_cast<unsigned char>(state[i] + state[j])]);
    }
    return result;
}

// The vector of initialisation comes first, as PDF has it.
std::string aesCbc(std::string_view text, const std::string& key)
{
    const auto bytes = [](auto& container) { return reinterpret_cast<unsigned char*>(container.data()); };
    std::array<unsigned char, blockSize> start;
    std::string result(blockSize + text.size() + blockSize, '\0');
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(),
                                                                                  &EVP_CIPHER_CTX_free);
    const EVP_CIPHER* const cipher = key.size() == 32 ? EVP_aes_256_cbc() : EVP_aes_128_cbc();
    int size = 0;
    int rest = 0;
    if (!context || RAND_bytes(start.data(), static_cast<int>(start.size())) != 1 ||
        EVP_EncryptInit_ex(context.get(), cipher, nullptr, reinterpret_cast<const unsigned char*>(key.data()),
                           start.data()) != 1 ||
        EVP_EncryptUpdate(context.get(), bytes(result) + blockSize, &size,
                          reinterpret_cast<const unsigned char*>(text.data()),
                          static_cast<int>(text.size())) != 1 ||
        EVP_EncryptFinal_ex(context.get(), bytes(result) + blockSize + size, &rest) != 1)
        throw Refusal{trText("Sign", "the addition to the document cannot be encrypted")};
    std::copy(start.begin(), start.end(), bytes(result));
    result.resize(blockSize + static_cast<std::size_t>(size + rest));
    return result;
}

} // namespace

DocumentCipher::DocumentCipher(QPDF& file)
{
    int permissions = 0;
    QPDF::encryption_method_e files = QPDF::e_none;
    if (!file.isEncrypted(m_revision, permissions, m_version, m_streams, m_strings, files))
        return;
    for (QPDF::encryption_method_e& method : {std::ref(m_streams), std::ref(m_strings)})
        if (m_version < 4)
            method = QPDF::e_rc4; // the only one, and not named
    if (m_streams == QPDF::e_unknown || m_strings == QPDF::e_unknown)
        throw Refusal{trText("Sign", "the document is encrypted in a way that is not known")};
    m_key = file.getEncryptionKey();
}

std::string DocumentCipher::ofString(std::string_view text, QPDFObjGen object) const
{
    return encrypted(text, object, m_strings);
}

std::string DocumentCipher::ofStream(std::string_view data, QPDFObjGen object) const
{
    return encrypted(data, object, m_streams);
}

std::string DocumentCipher::encrypted(std::string_view text, QPDFObjGen object,
                                      QPDF::encryption_method_e method) const
{
    if (method == QPDF::e_none)
        return std::string(text);
    const bool isAes = method != QPDF::e_rc4;
    const std::string key =
        QPDF::compute_data_key(m_key, object.getObj(), object.getGen(), isAes, m_version, m_revision);
    return isAes ? aesCbc(text, key) : arcFour(text, key);
}

} // namespace sign
