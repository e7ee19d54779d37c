// Encrypts what is added to an encrypted document with the document's own key.
#pragma once

#include "qpdf.h"

#include <string>
#include <string_view>

namespace sign {

class DocumentCipher
{
public:
    // Changes nothing where the document is not encrypted. Throws Refusal for an encryption that is not
    // known.
    explicit DocumentCipher(QPDF& file);

    std::string ofString(std::string_view text, QPDFObjGen object) const;
    std::string ofStream(std::string_view data, QPDFObjGen object) const;

private:
    std::string encrypted(std::string_view text, QPDFObjGen object, QPDF::encryption_method_e method) const;

    int m_version = 0;  // V of the encryption dictionary
    int m_revision = 0; // R
    QPDF::encryption_method_e m_strings = QPDF::e_none;
    QPDF::encryption_method_e m_streams = QPDF::e_none;
    std::string m_key;
};

} // namespace sign
