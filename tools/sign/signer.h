// The certificate that seals a document, with its private key.
#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sign {

class Signer
{
public:
    // Of a PKCS#12 file's content. Throws Refusal: for a wrong password, a key that is neither RSA nor EC or
    // too weak, a certificate that has expired or must not sign.
    Signer(std::string_view pkcs12, const std::string& password);

    // Of the certificate's subject: its common name, or all of it where it has none. UTF-8.
    std::string name() const;

    // No CMS of this signer is longer. /Contents takes two hexadecimal digits for each byte; what is left is
    // zeros.
    std::size_t reservedSize() const;

    // The detached CMS (ETSI.CAdES.detached) in DER over the parts, one after another. Throws Refusal.
    std::string sign(const std::vector<std::string_view>& parts) const;

private:
    struct Free
    {
        void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
        void operator()(X509* certificate) const { X509_free(certificate); }
        void operator()(STACK_OF(X509) * certificates) const { sk_X509_pop_free(certificates, X509_free); }
    };

    std::unique_ptr<EVP_PKEY, Free> m_key;
    std::unique_ptr<X509, Free> m_certificate;
    std::unique_ptr<STACK_OF(X509), Free> m_issuers;
};

} // namespace sign
