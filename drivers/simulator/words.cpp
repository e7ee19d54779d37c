#include "words.h"

#include <charconv>
#include <system_error>

namespace simulator {

bool parseInteger(std::string_view text, std::int64_t& value)
{
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
    return code == std::errc() && end == text.data() + text.size();
}

bool splitWords(std::string_view line, std::string_view* words, std::size_t capacity, std::size_t& count)
{
    count = 0;
    std::size_t position = 0;
    for (;;) {
        while (position < line.size() && isBlank(line[position]))
            ++position;
        if (position == line.size())
            return count <= capacity;
        const std::size_t begin = position;
        while (position < line.size() && !isBlank(line[position]))
            ++position;
        if (count < capacity)
            words[count] = line.substr(begin, position - begin);
        ++count;
    }
}

} // namespace simulator
