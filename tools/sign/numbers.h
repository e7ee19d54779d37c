// Numbers as PDF has them: without an exponent, with a point whatever the locale says.
#pragma once

#include <array>
#include <charconv>
#include <string>

namespace sign {

// With at most so many decimals.
inline std::string decimal(double number, int decimals)
{
    std::array<char, 64> text{};
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, decimals);
    std::string result(text.data(), error == std::errc() ? end : text.data());
    if (result.find('.') != std::string::npos) {
        result.erase(result.find_last_not_of('0') + 1);
        if (result.back() == '.')
            result.pop_back();
    }
    return result.empty() || result == "-0" ? "0" : result;
}

} // namespace sign
