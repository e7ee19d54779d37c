// The driver's line on standard error.
#pragma once

#include <cstdio>
#include <string>

namespace pen {

// In one piece, so that the lines of several threads do not mix.
inline void say(const std::string& text)
{
    std::fputs(("scribera pen: " + text + "\n").c_str(), stderr);
}

} // namespace pen
