#include "log.h"

#include <algorithm>
#include <cstdio>

namespace bridge {

void log(const std::string& line)
{
    std::fprintf(stderr, "scribera-bridge: %s\n", line.c_str());
}

std::string printable(std::string_view text)
{
    constexpr std::size_t longest = 200;
    std::string kept(text.substr(0, longest));
    std::replace_if(
        kept.begin(), kept.end(), [](char byte) { return byte < ' ' || byte > '~'; }, '?');
    return kept;
}

} // namespace bridge
