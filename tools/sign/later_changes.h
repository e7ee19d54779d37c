// What came after a signature, held against what it allows. A certifying signature allows some changes or
// none, one with locks keeps fields as they are, and others allow everything.
#pragma once

#include "document.h"

#include <optional>
#include <string>

namespace sign {

// Whether the same bytes are decrypted to the same, or neither document is encrypted. No signature allows
// anything else. Throws Refusal where there is too much to compare.
bool areEncryptedAlike(Document& before, Document& after);

// The first change that is not allowed, as a sentence that goes on from "afterwards"; nothing when all are.
// Objects of both revisions are compared: whatever is not known to be allowed is not. Both documents have to
// be of the same file, the one before without what came later, and encrypted alike. Throws Refusal for
// damage, and where there is too much to compare.
std::optional<std::string> forbiddenChange(Document& before, Document& after, const Limits& limits);

} // namespace sign
