// OpenSSL's objects with an owner, and its errors as a sentence.
#pragma once

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sign {

struct FreeCrypto
{
    void operator()(BIO* bio) const { BIO_free_all(bio); }
    void operator()(CMS_ContentInfo* cms) const { CMS_ContentInfo_free(cms); }
    void operator()(EVP_MD_CTX* digest) const { EVP_MD_CTX_free(digest); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(X509_STORE* store) const { X509_STORE_free(store); }
    void operator()(X509_STORE_CTX* check) const { X509_STORE_CTX_free(check); }
    void operator()(STACK_OF(X509) * certificates) const { sk_X509_pop_free(certificates, X509_free); }
};

template <typename Type>
using Owned = std::unique_ptr<Type, FreeCrypto>;

using Certificates = Owned<STACK_OF(X509)>;

// For OpenSSL to read; the bytes must stay. Throws Refusal where there are too many.
Owned<BIO> reader(std::string_view bytes);

std::string contentOf(BIO* memory);

std::string derOf(const CMS_ContentInfo* cms);

// The last reason that OpenSSL gave, as the end of a sentence; its errors are gone afterwards.
std::string cryptoError();

// Why a key is not used: it is neither RSA nor EC, or too weak. Empty when it is used.
std::string keyFault(EVP_PKEY* key);

// Without a statement in the certificate every use is allowed.
bool maySign(X509* certificate);

// A certificate's subject or issuer: its common name, or all of it where it has none. UTF-8.
std::string nameOf(const X509_NAME* name);

// The digest's bytes, over the parts one after another.
std::string digestOf(const EVP_MD* algorithm, const std::vector<std::string_view>& parts);

std::string hexadecimal(std::string_view bytes);

} // namespace sign
