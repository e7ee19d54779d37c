// What the signatures of a document say, and whether that is true.
#pragma once

#include "document.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sign {

struct SignatureReport
{
    std::string field;
    int page = 0;       // from 1; 0 where the field is on no page
    std::string signer; // the certificate's name for itself; empty where there is no certificate
    std::string issuer; // of the certificate
    std::string serial; // of the certificate, hexadecimal
    std::string time;   // that the signer claims, as 2024-05-06T07:08:09+02:00; empty where it claims none
    std::string name;   // what follows is said in the signature dictionary
    std::string reason;
    std::string location;
    std::string fault;   // why the signature is not valid; empty when it is
    std::size_t end = 0; // bytes of the file from its start that are covered, but for the signature itself
    bool isWholeFile = false;
    bool limitsChanges = false; // that come after it; when it is valid, they keep to that
    std::string distrust;       // why the certificate is not trusted; empty when it is, or when nobody asked
};

// Each signature, in the order of what they cover. Trusted certificates in PEM, empty when nobody asks.
// Throws Refusal when the file cannot be read as a PDF.
std::vector<SignatureReport> verifySignatures(Document& document, std::string_view trusted);

// Whether the document as it stands is what was signed, and otherwise the first reason why not.
struct Verdict
{
    enum class Kind
    {
        AsSigned,
        NotSigned,
        NotValid,   // a signature
        NotTrusted, // a signature
        Continued,  // after the last signature
    };

    Kind kind;
    std::string field; // of the signature
};

Verdict verdictOn(const std::vector<SignatureReport>& reports);

struct SealedInk
{
    std::string bytes;
    std::size_t offset = 0;                   // where it stands in the file
    std::optional<SignatureReport> signature; // that covers it and is valid; none where there is only a mark
};

// Of the field's signature, or without a name of the only place that has any. Throws Refusal: for none or
// several, for a signature that is not valid.
SealedInk sealedInkOf(Document& document, const std::string& field);

} // namespace sign
