// Lines for the administrator: never a token, ink, or what a page has sent but its origin.
#pragma once

#include <string>
#include <string_view>

namespace bridge {

// To standard error, where the service's manager collects it.
void log(const std::string& line);

// A text from outside as it may stand in a line: cut, and printable.
std::string printable(std::string_view text);

} // namespace bridge
