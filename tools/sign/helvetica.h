// The standard font of the lines below a signature: how wide its characters are.
#pragma once

#include <string_view>

namespace sign {

// Of text in WinAnsiEncoding, in thousandths of the font's size.
int helveticaWidth(std::string_view text);

} // namespace sign
