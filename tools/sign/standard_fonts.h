// The fonts that every reader has, of which documents need not tell how wide their characters are.
#pragma once

#include <optional>
#include <string_view>

namespace sign {

// Of text in WinAnsiEncoding, in thousandths of the font's size. Nothing for other fonts than those, and for
// the two of symbols.
std::optional<int> standardWidth(std::string_view font, std::string_view text);

} // namespace sign
