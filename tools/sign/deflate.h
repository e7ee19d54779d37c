// Compressed bytes in the zlib format (RFC 1950), as PDF has them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sign {

std::string deflated(std::string_view bytes);

// Throws Refusal for what is damaged or cut off, and where more than so many bytes come out: few can stand
// for gigabytes.
std::string inflated(std::string_view bytes, std::size_t most);

} // namespace sign
