// The words and numbers in a line of text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace simulator {

inline bool isBlank(char character)
{
    return character == ' ' || character == '\t';
}

// Whole integer, sign allowed, nothing around it. False also when it does not fit.
bool parseInteger(std::string_view text, std::int64_t& value);

// The blank-separated words of a line; false when there are more than capacity. count is set either way.
bool splitWords(std::string_view line, std::string_view* words, std::size_t capacity, std::size_t& count);

} // namespace simulator
