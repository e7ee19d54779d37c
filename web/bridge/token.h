// The secret by which a page gets its session back.
#pragma once

#include <string>
#include <string_view>

namespace bridge {

// 256 bits of the system's generator, as 43 characters that need no quoting anywhere.
std::string newToken();

// In a time that does not tell how much of it is right.
bool isSameToken(std::string_view one, std::string_view other);

} // namespace bridge
