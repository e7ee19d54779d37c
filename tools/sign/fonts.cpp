#include "fonts.h"

#include "standard_fonts.h"

#include <qpdf/QUtil.hh>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

namespace sign {

namespace {

// Hostile documents name ranges without an end.
constexpr unsigned largestRange = 65'536;
constexpr std::size_t mostMeanings = 200'000;
constexpr std::size_t longestMeaning = 64; // bytes of UTF-16

struct GlyphName
{
    std::string_view name;
    char32_t character;
};

// Of those that are no letter themselves and stand in documents of Western Europe.
constexpr GlyphName glyphNames[] = {
    {"space", ' '},
    {"exclam", '!'},
    {"quotedbl", '"'},
    {"numbersign", '#'},
    {"dollar", '$'},
    {"percent", '%'},
    {"ampersand", '&'},
    {"quotesingle", '\''},
    {"parenleft", '('},
    {"parenright", ')'},
    {"asterisk", '*'},
    {"plus", '+'},
    {"comma", ','},
    {"hyphen", '-'},
    {"period", '.'},
    {"slash", '/'},
    {"zero", '0'},
    {"one", '1'},
    {"two", '2'},
    {"three", '3'},
    {"four", '4'},
    {"five", '5'},
    {"six", '6'},
    {"seven", '7'},
    {"eight", '8'},
    {"nine", '9'},
    {"colon", ':'},
    {"semicolon", ';'},
    {"less", '<'},
    {"equal", '='},
    {"greater", '>'},
    {"question", '?'},
    {"at", '@'},
    {"bracketleft", '['},
    {"backslash", '\\'},
    {"bracketright", ']'},
    {"underscore", '_'},
    {"grave", '`'},
    {"braceleft", '{'},
    {"bar", '|'},
    {"braceright", '}'},
    {"asciitilde", '~'},
    {"quoteleft", 0x2018},
    {"quoteright", 0x2019},
    {"quotedblleft", 0x201c},
    {"quotedblright", 0x201d},
    {"endash", 0x2013},
    {"emdash", 0x2014},
    {"bullet", 0x2022},
    {"ellipsis", 0x2026},
    {"Euro", 0x20ac},
    {"section", 0xa7},
    {"degree", 0xb0},
    {"Agrave", 0xc0},
    {"Aacute", 0xc1},
    {"Acircumflex", 0xc2},
    {"Atilde", 0xc3},
    {"Adieresis", 0xc4},
    {"Aring", 0xc5},
    {"AE", 0xc6},
    {"Ccedilla", 0xc7},
    {"Egrave", 0xc8},
    {"Eacute", 0xc9},
    {"Ecircumflex", 0xca},
    {"Edieresis", 0xcb},
    {"Ntilde", 0xd1},
    {"Ograve", 0xd2},
    {"Oacute", 0xd3},
    {"Ocircumflex", 0xd4},
    {"Otilde", 0xd5},
    {"Odieresis", 0xd6},
    {"Oslash", 0xd8},
    {"Ugrave", 0xd9},
    {"Uacute", 0xda},
    {"Ucircumflex", 0xdb},
    {"Udieresis", 0xdc},
    {"germandbls", 0xdf},
    {"agrave", 0xe0},
    {"aacute", 0xe1},
    {"acircumflex", 0xe2},
    {"atilde", 0xe3},
    {"adieresis", 0xe4},
    {"aring", 0xe5},
    {"ae", 0xe6},
    {"ccedilla", 0xe7},
    {"egrave", 0xe8},
    {"eacute", 0xe9},
    {"ecircumflex", 0xea},
    {"edieresis", 0xeb},
    {"igrave", 0xec},
    {"iacute", 0xed},
    {"icircumflex", 0xee},
    {"idieresis", 0xef},
    {"ntilde", 0xf1},
    {"ograve", 0xf2},
    {"oacute", 0xf3},
    {"ocircumflex", 0xf4},
    {"otilde", 0xf5},
    {"odieresis", 0xf6},
    {"oslash", 0xf8},
    {"ugrave", 0xf9},
    {"uacute", 0xfa},
    {"ucircumflex", 0xfb},
    {"udieresis", 0xfc},
    {"ff", 0xfb00},
    {"fi", 0xfb01},
    {"fl", 0xfb02},
    {"ffi", 0xfb03},
    {"ffl", 0xfb04},
};

std::string meaningOf(std::string_view glyph)
{
    glyph = glyph.substr(0, glyph.find('.', 1));
    const bool isLetter =
        glyph.size() == 1 && ((glyph[0] >= 'A' && glyph[0] <= 'Z') || (glyph[0] >= 'a' && glyph[0] <= 'z'));
    if (isLetter)
        return std::string(glyph);
    const auto* const known = std::find_if(std::begin(glyphNames), std::end(glyphNames),
                                           [&](const GlyphName& row) { return row.name == glyph; });
    if (known != std::end(glyphNames))
        return QUtil::toUTF8(known->character);
    for (const std::string_view prefix : {"uni", "u"}) {
        if (!glyph.starts_with(prefix) || glyph.size() < prefix.size() + 4)
            continue;
        unsigned long character = 0;
        const char* const end = glyph.data() + glyph.size();
        const auto result = std::from_chars(glyph.data() + prefix.size(), end, character, 16);
        if (result.ec == std::errc() && result.ptr == end && character <= 0x10ffff)
            return QUtil::toUTF8(character);
    }
    return {};
}

unsigned codeOf(std::string_view bytes)
{
    unsigned code = 0;
    for (const char byte : bytes.substr(0, 4))
        code = code << 8 | static_cast<unsigned char>(byte);
    return code;
}

std::string ofUtf16(std::string_view bytes)
{
    return QUtil::utf16_to_utf8("\xfe\xff" + std::string(bytes));
}

// What /ToUnicode says.
class Meanings : public QPDFObjectHandle::ParserCallbacks
{
public:
    explicit Meanings(Contents& contents) : m_contents(contents) {}

    void handleObject(QPDFObjectHandle object, std::size_t, std::size_t) override
    {
        if (!object.isOperator()) {
            if (m_operands.size() < largestRange)
                m_operands.push_back(object);
            return;
        }
        const std::string word = object.getOperatorValue();
        if (word == "endcodespacerange" && !m_operands.empty() && m_operands.back().isString())
            codeSize = m_operands.back().getStringValue().size();
        else if (word == "endbfchar")
            takeCharacters();
        else if (word == "endbfrange")
            takeRanges();
        m_operands.clear();
    }
    void handleEOF() override {}

    std::size_t codeSize = 0;
    std::map<unsigned, std::string> meanings;

private:
    void takeCharacters()
    {
        for (std::size_t i = 0; i + 1 < m_operands.size(); i += 2)
            if (m_operands[i].isString() && m_operands[i + 1].isString())
                note(codeOf(m_operands[i].getStringValue()), m_operands[i + 1].getStringValue());
    }
    void takeRanges()
    {
        for (std::size_t i = 0; i + 2 < m_operands.size(); i += 3) {
            if (!m_operands[i].isString() || !m_operands[i + 1].isString())
                continue;
            const std::uint64_t first = codeOf(m_operands[i].getStringValue());
            const std::uint64_t last =
                std::min<std::uint64_t>(codeOf(m_operands[i + 1].getStringValue()), first + largestRange);
            QPDFObjectHandle target = m_operands[i + 2];
            std::string text = target.isString() ? target.getStringValue() : "";
            for (std::uint64_t code = first; code <= last; ++code) {
                if (target.isArray()) {
                    const int index = static_cast<int>(code - first);
                    if (index >= target.getArrayNItems())
                        break;
                    if (target.getArrayItem(index).isString())
                        note(static_cast<unsigned>(code), target.getArrayItem(index).getStringValue());
                } else if (!text.empty()) {
                    note(static_cast<unsigned>(code), text);
                    text.back() = static_cast<char>(text.back() + 1);
                }
            }
        }
    }
    void note(unsigned code, const std::string& utf16)
    {
        m_contents.countObject();
        if (meanings.size() < mostMeanings && utf16.size() <= longestMeaning)
            meanings[code] = ofUtf16(utf16);
    }

    Contents& m_contents;
    std::vector<QPDFObjectHandle> m_operands;
};

double number(QPDFObjectHandle value, double otherwise)
{
    return value.isNumber() ? value.getNumericValue() : otherwise;
}

unsigned codeIn(QPDFObjectHandle value)
{
    return value.isInteger() ? value.getUIntValueAsUInt() : 0;
}

} // namespace

Font::Font(QPDFObjectHandle font, Contents& contents)
{
    if (font.getKey("/Subtype").isNameAndEquals("/Type0"))
        readComposite(font, contents);
    else
        readSimple(font, contents);
    if (QPDFObjectHandle meanings = font.getKey("/ToUnicode"); meanings.isStream())
        readMeanings(meanings, contents);
}

void Font::readSimple(QPDFObjectHandle font, Contents& contents)
{
    QPDFObjectHandle encoding = font.getKey("/Encoding");
    QPDFObjectHandle base = encoding.isDictionary() ? encoding.getKey("/BaseEncoding") : encoding;
    const bool isType3 = font.getKey("/Subtype").isNameAndEquals("/Type3");
    for (unsigned code = ' '; code < 256 && !isType3; ++code) {
        const std::string character(1, static_cast<char>(code));
        if (base.isNameAndEquals("/WinAnsiEncoding"))
            m_meanings[code] = QUtil::win_ansi_to_utf8(character);
        else if (base.isNameAndEquals("/MacRomanEncoding"))
            m_meanings[code] = QUtil::mac_roman_to_utf8(character);
        else if (code < 127)
            m_meanings[code] = character;
    }
    QPDFObjectHandle differences = encoding.isDictionary() ? encoding.getKey("/Differences") : encoding;
    unsigned code = 0;
    if (differences.isArray())
        for (QPDFObjectHandle item : differences.aitems()) {
            contents.countObject();
            if (item.isInteger())
                code = static_cast<unsigned>(item.getIntValue() & 0xff);
            else if (item.isName())
                m_meanings[code++ & 0xff] = meaningOf(std::string_view(item.getName()).substr(1));
        }

    if (isType3) {
        QPDFObjectHandle matrix = font.getKey("/FontMatrix");
        m_scale = matrix.isArray() && matrix.getArrayNItems() == 6 ? number(matrix.getArrayItem(0), 0) : 0;
    }
    QPDFObjectHandle widths = font.getKey("/Widths");
    QPDFObjectHandle first = font.getKey("/FirstChar");
    if (widths.isArray() && first.isInteger()) {
        m_otherWidth = number(font.getKey("/FontDescriptor").getKeyIfDict("/MissingWidth"), 0);
        long long at = first.getIntValue();
        for (const QPDFObjectHandle& width : widths.aitems()) {
            contents.countObject();
            m_widths[static_cast<unsigned>(at++ & 0xff)] = number(width, 0);
        }
        return;
    }
    QPDFObjectHandle name = font.getKey("/BaseFont");
    if (!name.isName())
        return;
    for (const auto& [at, text] : m_meanings)
        if (std::string encoded; QUtil::utf8_to_win_ansi(text, encoded) && encoded.size() == 1)
            if (const auto width = standardWidth(std::string_view(name.getName()).substr(1), encoded))
                m_widths[at] = *width;
}

void Font::readComposite(QPDFObjectHandle font, Contents& contents)
{
    m_codeSize = 2;
    m_otherWidth = 1000;
    m_isReadable = font.getKey("/Encoding").isNameAndEquals("/Identity-H");
    QPDFObjectHandle descendants = font.getKey("/DescendantFonts");
    if (!m_isReadable || !descendants.isArray() || descendants.getArrayNItems() != 1)
        return;
    QPDFObjectHandle descendant = descendants.getArrayItem(0);
    m_otherWidth = number(descendant.getKeyIfDict("/DW"), 1000);
    QPDFObjectHandle widths = descendant.getKeyIfDict("/W");
    if (!widths.isArray())
        return;
    const std::vector<QPDFObjectHandle> items = widths.getArrayAsVector();
    for (std::size_t i = 0; i + 1 < items.size();) {
        const QPDFObjectHandle& first = items[i];
        QPDFObjectHandle next = items[i + 1];
        std::uint64_t code = codeIn(first);
        if (next.isArray()) {
            for (const QPDFObjectHandle& width : next.aitems()) {
                contents.countObject();
                if (m_widths.size() < mostMeanings)
                    m_widths[static_cast<unsigned>(code++)] = number(width, 0);
            }
            i += 2;
        } else {
            const std::uint64_t last = std::min<std::uint64_t>(codeIn(next), code + largestRange);
            for (; i + 2 < items.size() && code <= last && m_widths.size() < mostMeanings; ++code) {
                contents.countObject();
                m_widths[static_cast<unsigned>(code)] = number(items[i + 2], 0);
            }
            i += 3;
        }
    }
}

void Font::readMeanings(const QPDFObjectHandle& stream, Contents& contents)
{
    Meanings read(contents);
    contents.parse(stream, read);
    if (m_codeSize == 2 && read.codeSize != 0 && read.codeSize != 2)
        m_isReadable = false;
    for (auto& [code, meaning] : read.meanings)
        m_meanings[code] = std::move(meaning);
}

std::vector<Font::Character> Font::charactersOf(std::string_view text) const
{
    std::vector<Character> characters;
    for (; text.size() >= m_codeSize; text.remove_prefix(m_codeSize)) {
        const unsigned code = codeOf(text.substr(0, m_codeSize));
        Character character;
        const auto width = m_widths.find(code);
        const double units = width != m_widths.end() ? width->second : m_otherWidth;
        character.width = m_scale * std::max(units, 0.0);
        character.hasWidth = units >= 0 && m_isReadable;
        character.isSpace = m_codeSize == 1 && code == ' ';
        const auto meaning = m_meanings.find(code);
        if (m_isReadable && meaning != m_meanings.end())
            character.text = meaning->second;
        characters.push_back(std::move(character));
    }
    return characters;
}

std::shared_ptr<const Font> Fonts::fontOf(const QPDFObjectHandle& font)
{
    if (!font.isIndirect())
        return std::make_shared<Font>(font, m_contents);
    std::shared_ptr<const Font>& known = m_fonts[font.getObjGen()];
    if (!known)
        known = std::make_shared<Font>(font, m_contents);
    return known;
}

} // namespace sign
