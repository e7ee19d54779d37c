#include "sealed_ink.h"

#include "crypto.h"
#include "deflate.h"
#include "refusal.h"
#include "texts.h"

#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <charconv>

namespace sign {

namespace {

// Its end tells the version. In the first one, the ink is as it is; in the second it is compressed.
constexpr std::string_view firstLine = "Scribera sealed ink ";
constexpr std::string_view plainVersion = "1";
constexpr std::string_view compressedVersion = "2";
constexpr std::string_view sizeLine = "document-size: ";
constexpr std::string_view digestLine = "document-sha256: ";

// As much as the tools read, of an ink that somebody hostile may have sealed: the certificate is public.
constexpr std::size_t mostInk = std::size_t{256} << 20;

Refusal unknownForm()
{
    return {trText("Sign", "the sealed ink is not in a form that this version knows")};
}

Owned<X509> certificateOf(std::string_view pem)
{
    const Owned<BIO> bio = reader(pem);
    Owned<X509> certificate(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
    if (!certificate)
        throw Refusal{trText("Sign", "what the ink is to be sealed for is no certificate in PEM")};
    if (const std::string fault = keyFault(X509_get0_pubkey(certificate.get())); !fault.empty())
        throw Refusal{filled(trText("Sign", "the ink cannot be sealed for this certificate: %1"), {fault})};
    // Whether it has expired does not matter: it says who shall read, and that does not change.
    return certificate;
}

// RSA with OAEP and SHA-256; ephemeral ECDH with SHA-256 and AES-256 key wrap.
bool chooseAlgorithms(CMS_RecipientInfo* recipient)
{
    EVP_PKEY_CTX* context = CMS_RecipientInfo_get0_pkey_ctx(recipient);
    if (!context)
        return false;
    if (CMS_RecipientInfo_type(recipient) == CMS_RECIPINFO_TRANS)
        return EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING) > 0 &&
               EVP_PKEY_CTX_set_rsa_oaep_md(context, EVP_sha256()) > 0 &&
               EVP_PKEY_CTX_set_rsa_mgf1_md(context, EVP_sha256()) > 0;
    return EVP_PKEY_CTX_set_ecdh_kdf_md(context, EVP_sha256()) > 0;
}

// The text behind the label, up to the end of the line; both are taken off.
std::string_view takeLine(std::string_view& text, std::string_view label)
{
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos || !text.starts_with(label))
        throw unknownForm();
    const std::string_view value = text.substr(label.size(), end - label.size());
    text.remove_prefix(end + 1);
    return value;
}

int givePassword(char* buffer, int size, int, void* password)
{
    const std::string_view text = static_cast<const Secret*>(password)->view();
    if (text.size() > static_cast<std::size_t>(size))
        return -1;
    text.copy(buffer, text.size());
    return static_cast<int>(text.size());
}

Owned<EVP_PKEY> keyOf(std::string_view pem, const Secret& password)
{
    const Owned<BIO> bio = reader(pem);
    Owned<EVP_PKEY> key(
        PEM_read_bio_PrivateKey(bio.get(), nullptr, givePassword, const_cast<Secret*>(&password)));
    if (!key)
        throw Refusal{password.view().empty()
                          ? trText("Sign", "the private key is not in PEM, or it has a password")
                          : trText("Sign", "the private key is not in PEM, or the password is not its own")};
    return key;
}

} // namespace

std::string sealInk(std::string_view ink, std::string_view document, std::string_view certificate)
{
    ERR_clear_error();
    const Owned<X509> recipient = certificateOf(certificate);
    std::string text(firstLine);
    text.append(compressedVersion).append("\n");
    text.append(sizeLine).append(std::to_string(document.size())).append("\n");
    text.append(digestLine).append(hexadecimal(digestOf(EVP_sha256(), {document}))).append("\n\n");
    text.append(deflated(ink));

    const Owned<BIO> content = reader(text);
    // With this cipher it is AuthEnvelopedData.
    const Owned<CMS_ContentInfo> cms(
        CMS_encrypt(nullptr, nullptr, EVP_aes_256_gcm(), CMS_PARTIAL | CMS_BINARY));
    CMS_RecipientInfo* info =
        cms ? CMS_add1_recipient_cert(cms.get(), recipient.get(), CMS_KEY_PARAM) : nullptr;
    if (!info || !chooseAlgorithms(info) || !CMS_final(cms.get(), content.get(), nullptr, CMS_BINARY))
        throw Refusal{filled(trText("Sign", "the ink cannot be sealed: %1"), {cryptoError()})};
    return derOf(cms.get());
}

std::string unsealInk(std::string_view sealed, std::string_view document, std::string_view privateKey,
                      const Secret& password)
{
    ERR_clear_error();
    const Owned<EVP_PKEY> key = keyOf(privateKey, password);
    const Owned<BIO> bio = reader(sealed);
    const Owned<CMS_ContentInfo> cms(d2i_CMS_bio(bio.get(), nullptr));
    if (!cms || OBJ_obj2nid(CMS_get0_type(cms.get())) != NID_id_smime_ct_authEnvelopedData)
        throw Refusal{trText("Sign", "the sealed ink is not AuthEnvelopedData")};
    const Owned<BIO> opened(BIO_new(BIO_s_mem()));
    if (!opened || !CMS_decrypt(cms.get(), key.get(), nullptr, nullptr, opened.get(), CMS_BINARY))
        throw Refusal{
            trText("Sign", "the sealed ink cannot be opened: it was changed, or is for another key")};
    const std::string content = contentOf(opened.get());

    std::string_view text = content;
    const std::string_view version = takeLine(text, firstLine);
    if (version != plainVersion && version != compressedVersion)
        throw unknownForm();
    const std::string_view sizeText = takeLine(text, sizeLine);
    const std::string_view digest = takeLine(text, digestLine);
    std::size_t size = 0;
    const auto [end, fault] = std::from_chars(sizeText.data(), sizeText.data() + sizeText.size(), size);
    if (fault != std::errc() || end != sizeText.data() + sizeText.size() || !takeLine(text, {}).empty())
        throw unknownForm();
    if (size > document.size() || hexadecimal(digestOf(EVP_sha256(), {document.substr(0, size)})) != digest)
        throw Refusal{trText("Sign", "the sealed ink was made for another document")};
    if (document.find("%%EOF", size) != std::string_view::npos)
        throw Refusal{trText("Sign", "the sealed ink was made for an earlier revision of the document")};
    if (version == plainVersion)
        return std::string(text);
    try {
        return inflated(text, mostInk);
    } catch (const Refusal& refusal) {
        throw Refusal{filled(trText("Sign", "the sealed ink cannot be read: %1"), {refusal.reason})};
    }
}

} // namespace sign
