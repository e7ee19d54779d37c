#include "crypto.h"

#include "refusal.h"
#include "texts.h"

#include <openssl/err.h>
#include <openssl/x509v3.h>

#include <climits>

namespace sign {

namespace {

constexpr int fewestRsaBits = 2048;
constexpr int fewestCurveBits = 256;

} // namespace

Owned<BIO> reader(std::string_view bytes)
{
    if (bytes.size() > INT_MAX)
        throw Refusal{trText("Sign", "more than 2 GB cannot be read at once")};
    Owned<BIO> bio(BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size())));
    if (!bio)
        throw std::bad_alloc();
    return bio;
}

std::string contentOf(BIO* memory)
{
    char* text = nullptr;
    const long size = BIO_get_mem_data(memory, &text);
    return {text, static_cast<std::size_t>(size)};
}

std::string derOf(const CMS_ContentInfo* cms)
{
    unsigned char* bytes = nullptr;
    const int size = i2d_CMS_ContentInfo(cms, &bytes);
    if (size < 0)
        throw Refusal{filled(trText("Sign", "CMS cannot be written: %1"), {cryptoError()})};
    std::string der(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
    OPENSSL_free(bytes);
    return der;
}

std::string cryptoError()
{
    const char* reason = ERR_reason_error_string(ERR_peek_last_error());
    std::string text = reason ? reason : trText("Sign", "no reason given");
    ERR_clear_error();
    return text;
}

std::string keyFault(EVP_PKEY* key)
{
    const int bits = EVP_PKEY_get_bits(key);
    switch (EVP_PKEY_get_base_id(key)) {
    case EVP_PKEY_RSA:
        if (bits < fewestRsaBits)
            return filled(trText("Sign", "its RSA key has only %1 bits, fewer than %2"),
                          {std::to_string(bits), std::to_string(fewestRsaBits)});
        return {};
    case EVP_PKEY_EC:
        if (bits < fewestCurveBits)
            return filled(trText("Sign", "its EC key has only %1 bits, fewer than %2"),
                          {std::to_string(bits), std::to_string(fewestCurveBits)});
        return {};
    default:
        return trText("Sign", "its key is neither RSA nor EC");
    }
}

bool maySign(X509* certificate)
{
    return (X509_get_key_usage(certificate) & (X509v3_KU_DIGITAL_SIGNATURE | X509v3_KU_NON_REPUDIATION)) != 0;
}

std::string nameOf(const X509_NAME* name)
{
    const int place = X509_NAME_get_index_by_NID(name, NID_commonName, -1);
    if (place >= 0) {
        unsigned char* text = nullptr;
        const int size =
            ASN1_STRING_to_UTF8(&text, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, place)));
        if (size > 0) {
            std::string common(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
            OPENSSL_free(text);
            return common;
        }
        ERR_clear_error();
    }
    const Owned<BIO> bio(BIO_new(BIO_s_mem()));
    if (!bio || X509_NAME_print_ex(bio.get(), name, 0, XN_FLAG_RFC2253 & ~ASN1_STRFLGS_ESC_MSB) < 0)
        return {};
    return contentOf(bio.get());
}

std::string digestOf(const EVP_MD* algorithm, const std::vector<std::string_view>& parts)
{
    const Owned<EVP_MD_CTX> digest(EVP_MD_CTX_new());
    bool isDone = digest && EVP_DigestInit_ex(digest.get(), algorithm, nullptr);
    for (const std::string_view part : parts)
        isDone = isDone && EVP_DigestUpdate(digest.get(), part.data(), part.size());
    std::string bytes(static_cast<std::size_t>(EVP_MD_get_size(algorithm)), '\0');
    if (!isDone || !EVP_DigestFinal_ex(digest.get(), reinterpret_cast<unsigned char*>(bytes.data()), nullptr))
        throw Refusal{filled(trText("Sign", "a digest cannot be made: %1"), {cryptoError()})};
    return bytes;
}

std::string hexadecimal(std::string_view bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const unsigned char byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

} // namespace sign
