// The certificate that seals a document, with its private key.
#pragma once

#include "crypto.h"
#include "secret.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace sign {

class Signer
{
public:
    // Of a PKCS#12 file's content. Throws Refusal: for a wrong password, a key that is neither RSA nor EC or
    // too weak, a certificate that has expired or must not sign.
    Signer(std::string_view pkcs12, const Secret& password);

    // Of the certificate's subject: its common name, or all of it where it has none. UTF-8.
    std::string name() const;

    // No CMS of this signer is longer. /Contents takes two hexadecimal digits for each byte; what is left is
    // zeros.
    std::size_t reservedSize() const;

    // The detached CMS (ETSI.CAdES.detached) in DER over the parts, one after another. Throws Refusal.
    std::string sign(const std::vector<std::string_view>& parts) const;

private:
    Owned<EVP_PKEY> m_key;
    Owned<X509> m_certificate;
    Certificates m_issuers; // those that the file brings
};

} // namespace sign
