#include "signer.h"

#include "refusal.h"
#include "texts.h"

#include <openssl/err.h>
#include <openssl/pkcs12.h>
#include <openssl/provider.h>

#include <algorithm>
#include <cstdint>

namespace sign {

namespace {

struct Pkcs12
{
    explicit Pkcs12(std::string_view content)
    {
        const Owned<BIO> bio = reader(content);
        file = d2i_PKCS12_bio(bio.get(), nullptr);
        if (!file)
            throw Refusal{trText("Sign", "the certificate is not a PKCS#12 file")};
    }
    ~Pkcs12() { PKCS12_free(file); }
    Pkcs12(const Pkcs12&) = delete;
    Pkcs12& operator=(const Pkcs12&) = delete;

    bool parse(const Secret& password, EVP_PKEY** key, X509** certificate, STACK_OF(X509) * *issuers) const
    {
        return PKCS12_parse(file, password.text(), key, certificate, issuers) == 1;
    }

    PKCS12* file = nullptr;
};

[[noreturn]] void refuse(const std::string& what)
{
    throw Refusal{what + ": " + cryptoError()};
}

// As strong as the key, so that neither is the weak part.
const EVP_MD* digestFor(EVP_PKEY* key)
{
    if (EVP_PKEY_get_base_id(key) != EVP_PKEY_EC || EVP_PKEY_get_bits(key) <= 256)
        return EVP_sha256();
    return EVP_PKEY_get_bits(key) <= 384 ? EVP_sha384() : EVP_sha512();
}

std::string certificateFault(X509* certificate)
{
    if (X509_cmp_current_time(X509_get0_notBefore(certificate)) >= 0)
        return trText("Sign", "it is not valid yet");
    if (X509_cmp_current_time(X509_get0_notAfter(certificate)) <= 0)
        return trText("Sign", "it has expired");
    if (!maySign(certificate))
        return trText("Sign", "it is not meant for signatures");
    return {};
}

std::string lengthOf(std::size_t size)
{
    if (size < 128)
        return std::string(1, static_cast<char>(size));
    std::string bytes;
    for (; size > 0; size >>= 8)
        bytes.insert(bytes.begin(), static_cast<char>(size & 0xff));
    return static_cast<char>(0x80 | bytes.size()) + bytes;
}

// What is signed in place of the document: the attributes, which hold its digest, as a SET in DER.
std::string signedSet(CMS_SignerInfo* signer)
{
    std::vector<std::string> attributes;
    for (int i = 0; i < CMS_signed_get_attr_count(signer); ++i) {
        unsigned char* bytes = nullptr;
        const int size = i2d_X509_ATTRIBUTE(CMS_signed_get_attr(signer, i), &bytes);
        if (size < 0)
            refuse(trText("Sign", "the signature cannot be made"));
        attributes.emplace_back(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
        OPENSSL_free(bytes);
    }
    std::sort(attributes.begin(), attributes.end(), [](const std::string& one, const std::string& other) {
        return std::lexicographical_compare(
            one.begin(), one.end(), other.begin(), other.end(),
            [](char a, char b) { return static_cast<unsigned char>(a) < static_cast<unsigned char>(b); });
    });
    std::string content;
    for (const std::string& attribute : attributes)
        content += attribute;
    return '\x31' + lengthOf(content.size()) + content;
}

std::string signatureOf(EVP_PKEY* key, const EVP_MD* algorithm, const std::string& bytes)
{
    const Owned<EVP_MD_CTX> context(EVP_MD_CTX_new());
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    std::size_t size = 0;
    if (!context || EVP_DigestSignInit(context.get(), nullptr, algorithm, nullptr, key) != 1 ||
        EVP_DigestSign(context.get(), nullptr, &size, data, bytes.size()) != 1)
        refuse(trText("Sign", "the signature cannot be made"));
    std::string signature(size, '\0');
    if (EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size, data,
                       bytes.size()) != 1)
        refuse(trText("Sign", "the signature cannot be made"));
    signature.resize(size);
    return signature;
}

std::size_t derSize(X509* certificate)
{
    return static_cast<std::size_t>(std::max(0, i2d_X509(certificate, nullptr)));
}

} // namespace

Signer::Signer(std::string_view pkcs12, const Secret& password)
{
    ERR_clear_error();
    const Pkcs12 container(pkcs12);
    EVP_PKEY* key = nullptr;
    X509* certificate = nullptr;
    STACK_OF(X509)* issuers = nullptr;
    bool isRead = container.parse(password, &key, &certificate, &issuers);
    const auto isPasswordWrong = [] {
        return ERR_GET_REASON(ERR_peek_last_error()) == PKCS12_R_MAC_VERIFY_FAILURE;
    };
    // Many programs still write files with ciphers that OpenSSL keeps apart.
    if (OSSL_PROVIDER* const old =
            isRead || isPasswordWrong() ? nullptr : OSSL_PROVIDER_try_load(nullptr, "legacy", 1)) {
        ERR_clear_error();
        isRead = container.parse(password, &key, &certificate, &issuers);
        OSSL_PROVIDER_unload(old);
    }
    if (!isRead) {
        if (isPasswordWrong())
            throw Refusal{password.view().empty()
                              ? trText("Sign", "the certificate's file has a password")
                              : trText("Sign", "the password is not that of the certificate's file")};
        refuse(trText("Sign", "the certificate's file cannot be read"));
    }
    m_key.reset(key);
    m_certificate.reset(certificate);
    m_issuers.reset(issuers);
    if (!m_key || !m_certificate)
        throw Refusal{trText("Sign", "the certificate's file lacks the private key or its certificate")};
    if (const std::string fault = keyFault(m_key.get()); !fault.empty())
        throw Refusal{filled(trText("Sign", "the certificate cannot be used: %1"), {fault})};
    if (const std::string fault = certificateFault(m_certificate.get()); !fault.empty())
        throw Refusal{filled(trText("Sign", "the certificate cannot be used: %1"), {fault})};
}

std::string Signer::name() const
{
    return nameOf(X509_get_subject_name(m_certificate.get()));
}

std::size_t Signer::reservedSize() const
{
    // Algorithms, attributes, and tags with their lengths take some hundreds of bytes; the signer is named by
    // the certificate's issuer once more, twice.
    constexpr std::size_t aroundIt = 1024;
    std::size_t size = aroundIt + static_cast<std::size_t>(EVP_PKEY_get_size(m_key.get()));
    size += 3 * derSize(m_certificate.get());
    for (int i = 0; i < sk_X509_num(m_issuers.get()); ++i)
        size += derSize(sk_X509_value(m_issuers.get(), i));
    return size;
}

std::string Signer::sign(const std::vector<std::string_view>& parts) const
{
    ERR_clear_error();
    const EVP_MD* algorithm = digestFor(m_key.get());
    const std::string digest = digestOf(algorithm, parts);

    // Not CMS_final: it adds the time of signing, which PAdES wants in the signature dictionary alone.
    const Owned<CMS_ContentInfo> cms(
        CMS_sign(nullptr, nullptr, m_issuers.get(), nullptr, CMS_PARTIAL | CMS_DETACHED | CMS_BINARY));
    CMS_SignerInfo* signer = cms ? CMS_add1_signer(cms.get(), m_certificate.get(), m_key.get(), algorithm,
                                                   CMS_CADES | CMS_NOSMIMECAP | CMS_BINARY)
                                 : nullptr;
    if (!signer ||
        !CMS_signed_add1_attr_by_NID(signer, NID_pkcs9_contentType, V_ASN1_OBJECT,
                                     OBJ_nid2obj(NID_pkcs7_data), -1) ||
        !CMS_signed_add1_attr_by_NID(signer, NID_pkcs9_messageDigest, V_ASN1_OCTET_STRING, digest.data(),
                                     static_cast<int>(digest.size())))
        refuse(trText("Sign", "the signature cannot be made"));
    const std::string signature = signatureOf(m_key.get(), algorithm, signedSet(signer));
    if (!ASN1_OCTET_STRING_set(CMS_SignerInfo_get0_signature(signer),
                               reinterpret_cast<const unsigned char*>(signature.data()),
                               static_cast<int>(signature.size())))
        refuse(trText("Sign", "the signature cannot be made"));

    std::string der = derOf(cms.get());
    if (der.size() > reservedSize())
        throw Refusal{trText("Sign", "the signature is longer than the place for it")};
    return der;
}

} // namespace sign
