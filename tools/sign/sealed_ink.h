// Ink that only the holder of a key can read, bound to the document that was signed. docs/sealed-ink.md has
// the format.
#pragma once

#include "secret.h"

#include <string>
#include <string_view>

namespace sign {

// The entry of the signature dictionary, or of the annotation where there is no signature, that holds the
// stream with the sealed ink as its data, unfiltered.
constexpr char sealedInkKey[] = "/SCRB_SealedInk";

// The ink text for the certificate in PEM, RSA or EC, bound to all bytes of the document before the revision
// that it goes into. Throws Refusal.
std::string sealInk(std::string_view ink, std::string_view document, std::string_view certificate);

// The ink text. The document is the file up to where the sealed ink stands: no revision may end between that
// and what the ink is bound to. Throws Refusal: for another key, for changed bytes, for another document.
std::string unsealInk(std::string_view sealed, std::string_view document, std::string_view privateKey,
                      const Secret& password);

} // namespace sign
