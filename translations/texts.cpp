#include "texts.h"

namespace {

std::string asItIs(const char*, const char* english)
{
    return english;
}

// Written by setTextLookup() alone, before there are threads that could read it.
TextLookup s_lookup = asItIs;

} // namespace

void setTextLookup(TextLookup lookup)
{
    s_lookup = lookup;
}

std::string trText(const char* context, const char* english)
{
    return s_lookup(context, english);
}

std::string filled(const std::string& text, std::initializer_list<std::string> values)
{
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char digit = text[at] == '%' && at + 1 < text.size() ? text[at + 1] : '0';
        if (digit >= '1' && digit < '1' + static_cast<int>(values.size())) {
            result += values.begin()[digit - '1'];
            ++at;
        } else {
            result += text[at];
        }
    }
    return result;
}
