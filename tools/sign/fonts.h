// What the characters of a document's fonts mean and how wide they are.
#pragma once

#include "contents.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sign {

class Font
{
public:
    struct Character
    {
        std::string text;      // UTF-8; empty when nobody knows
        double width = 0;      // of a font of size 1
        bool hasWidth = false; // that is known
        bool isSpace = false;  // to which the word spacing is added
    };

    Font(QPDFObjectHandle font, Contents& contents);

    std::vector<Character> charactersOf(std::string_view text) const;

private:
    void readSimple(QPDFObjectHandle font, Contents& contents);
    void readComposite(QPDFObjectHandle font, Contents& contents);
    void readMeanings(const QPDFObjectHandle& stream, Contents& contents);

    std::size_t m_codeSize = 1;
    bool m_isReadable = true; // the codes mean what they seem to
    double m_scale = 0.001;   // of the widths
    double m_otherWidth = -1; // of characters without one; below 0 unknown
    std::map<unsigned, double> m_widths;
    std::map<unsigned, std::string> m_meanings;
};

// What pages are read with: their contents, and each font once.
class Fonts
{
public:
    Contents& contents() { return m_contents; }
    // The same each time.
    std::shared_ptr<const Font> fontOf(const QPDFObjectHandle& font);

private:
    Contents m_contents;
    std::map<QPDFObjGen, std::shared_ptr<const Font>> m_fonts; // by their objects
};

} // namespace sign
