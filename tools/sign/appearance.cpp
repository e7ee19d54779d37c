#include "appearance.h"

#include "deflate.h"
#include "numbers.h"
#include "refusal.h"
#include "standard_fonts.h"
#include "texts.h"

#include <qpdf/QUtil.hh>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace sign {

namespace {

constexpr double largestFont = 8;  // points
constexpr double smallestFont = 3; // below that nobody reads it
constexpr double leading = 1.2;    // from line to line, of the font's size
constexpr double descent = 0.25;   // below the line, of the font's size
constexpr double leastInkHeight = 4;
constexpr double leastInkWidth = 20;
// Beyond what the whole writing area would be: a dot shall not become a blot.
constexpr double largestEnlargement = 3;

struct Bounds
{
    double left = std::numeric_limits<double>::max();
    double top = std::numeric_limits<double>::max();
    double right = std::numeric_limits<double>::lowest();
    double bottom = std::numeric_limits<double>::lowest();

    void include(double x, double y, double radius)
    {
        left = std::min(left, x - radius);
        top = std::min(top, y - radius);
        right = std::max(right, x + radius);
        bottom = std::max(bottom, y + radius);
    }
    double width() const { return std::max(right - left, 1e-3); }
    double height() const { return std::max(bottom - top, 1e-3); }
};

Bounds boundsOf(const Ink& ink)
{
    Bounds bounds;
    for (const Ink::Segment& segment : ink.segments) {
        bounds.include(segment.fromX, segment.fromY, segment.width / 2);
        bounds.include(segment.toX, segment.toY, segment.width / 2);
    }
    return bounds;
}

std::string join(std::initializer_list<double> numbers, int decimals = 4)
{
    std::string text;
    for (const double number : numbers)
        text += decimal(number, decimals) + ' ';
    return text;
}

QPDFObjectHandle array(std::initializer_list<double> numbers)
{
    return QPDFObjectHandle::parse("[ " + join(numbers) + "]");
}

// Lines that go on with the same width are one, which looks the same.
std::string drawing(const Ink& ink)
{
    constexpr int decimals = 2; // of the canvas's pixels
    std::string text = join({ink.colour[0], ink.colour[1], ink.colour[2]}) + "RG 1 J 1 j\n";
    std::string width;
    std::string end;
    bool isOpen = false;
    for (const Ink::Segment& segment : ink.segments) {
        const std::string itsWidth = join({segment.width}, decimals);
        const std::string from = join({segment.fromX, segment.fromY}, decimals);
        if (!isOpen || itsWidth != width || from != end) {
            if (isOpen)
                text += "S\n";
            if (itsWidth != width)
                text += itsWidth + "w ";
            text += from + "m ";
        }
        end = join({segment.toX, segment.toY}, decimals);
        text += end + "l ";
        width = itsWidth;
        isOpen = true;
    }
    return text + "S\n";
}

// So that it stands upright on the turned page.
QPDFObjectHandle turned(int rotation)
{
    switch (rotation) {
    case 90:
        return array({0, 1, -1, 0, 0, 0});
    case 180:
        return array({-1, 0, 0, -1, 0, 0});
    case 270:
        return array({0, -1, 1, 0, 0, 0});
    default:
        return array({1, 0, 0, 1, 0, 0});
    }
}

} // namespace

Layout Layout::at(const Page& page, const Place& corner, double areaHeightByWidth,
                  const std::vector<std::string>& lines)
{
    Layout layout;
    layout.m_rotation = page.rotation;
    layout.m_room = corner;
    layout.m_room.height = corner.width * areaHeightByWidth;
    layout.setLines(lines, largestFont);
    layout.m_room.height = std::min(layout.m_room.height + layout.m_textHeight, page.height() - corner.top);
    constexpr double slack = 0.01;
    if (corner.left < 0 || corner.top < 0 || corner.right() > page.width() + slack ||
        layout.m_room.height - layout.m_textHeight < leastInkHeight)
        throw Refusal{filled(
            trText("Sign", "the signature would lie beyond the edge of the page, which is %1 by %2 points"),
            {decimal(page.width(), 1), decimal(page.height(), 1)})};
    return layout;
}

Layout Layout::behind(const Page& page, const TextEnd& text, double width, double areaHeightByWidth,
                      const std::vector<std::string>& lines)
{
    constexpr double gap = 0.5; // of the font's size
    const double left = text.right + gap * text.size;
    Layout layout;
    layout.m_rotation = page.rotation;
    layout.m_anchor = Anchor::Line;
    layout.m_room.left = left;
    layout.m_room.width = std::min(width, page.width() - left);
    if (left < 0 || layout.m_room.width < leastInkWidth)
        throw Refusal{trText("Sign", "there is no room for a signature after the text")};
    layout.setLines(lines, largestFont);
    const double inkHeight = std::min(layout.m_room.width * areaHeightByWidth, text.baseline);
    layout.m_room.top = text.baseline - inkHeight;
    layout.m_room.height = inkHeight + layout.m_textHeight;
    if (inkHeight < leastInkHeight || layout.m_room.bottom() > page.height())
        throw Refusal{trText("Sign", "there is no room for a signature after the text")};
    return layout;
}

Layout Layout::in(const Page& page, const Place& field, const std::vector<std::string>& lines)
{
    Layout layout;
    layout.m_rotation = page.rotation;
    layout.m_room = field;
    layout.m_anchor = Anchor::Middle;
    // At least half of the field is for the ink.
    const double count = static_cast<double>(std::max<std::size_t>(lines.size(), 1));
    layout.setLines(lines, std::min(largestFont, field.height / 2 / count / leading));
    return layout;
}

void Layout::setLines(const std::vector<std::string>& lines, double largestSize)
{
    m_fontSize = largestSize;
    for (const std::string& line : lines) {
        std::string encoded;
        if (!QUtil::utf8_to_win_ansi(line, encoded))
            throw Refusal{
                filled(trText("Sign", "the line below the signature has characters that its font lacks: %1"),
                       {line})};
        m_fontSize = std::min(m_fontSize, m_room.width * 1000 /
                                              std::max(standardWidth("Helvetica", encoded).value_or(0), 1));
        m_lines.push_back(std::move(encoded));
    }
    if (!m_lines.empty() && m_fontSize < smallestFont)
        throw Refusal{trText("Sign", "there is no room for the lines below the signature")};
    m_textHeight = leading * m_fontSize * static_cast<double>(m_lines.size());
}

Appearance Layout::appearance(const Ink& ink) const
{
    if (ink.segments.empty())
        throw Refusal{trText("Sign", "the ink has no strokes")};
    const Bounds bounds = boundsOf(ink);
    const double inkRoom = m_room.height - m_textHeight;
    const double scale = std::min({m_room.width / bounds.width(), inkRoom / bounds.height(),
                                   largestEnlargement * m_room.width / ink.areaWidth});
    const double inkWidth = scale * bounds.width();
    const double inkHeight = scale * bounds.height();

    Appearance appearance;
    appearance.place = m_room;
    double left = 0;
    double top = 0;
    if (m_anchor == Anchor::Middle) {
        left = (m_room.width - inkWidth) / 2;
        top = (inkRoom - inkHeight) / 2;
    } else {
        if (m_anchor == Anchor::Line)
            appearance.place.top += inkRoom - inkHeight;
        appearance.place.height = inkHeight + m_textHeight;
        if (m_lines.empty())
            appearance.place.width = inkWidth;
    }
    const double width = appearance.place.width;
    const double height = appearance.place.height;

    std::string content =
        "q " + join({scale, 0, 0, -scale, left - scale * bounds.left, height - top + scale * bounds.top}, 6) +
        "cm\n" + drawing(ink) + "Q\n";
    QPDFObjectHandle resources = QPDFObjectHandle::newDictionary();
    double line = m_textHeight;
    for (const std::string& text : m_lines) {
        line -= leading * m_fontSize;
        content += "BT /Helv " + join({m_fontSize}) + "Tf " + join({0, line + descent * m_fontSize}) + "Td " +
                   QPDFObjectHandle::newString(text).unparse() + " Tj ET\n";
        resources = QPDFObjectHandle::parse("<< /Font << /Helv << /Type /Font /Subtype /Type1 /BaseFont "
                                            "/Helvetica /Encoding /WinAnsiEncoding >> >> >>");
    }
    appearance.data = deflated(content);
    appearance.dictionary =
        QPDFObjectHandle::parse("<< /Type /XObject /Subtype /Form /Filter /FlateDecode >>");
    appearance.dictionary.replaceKey("/BBox", array({0, 0, width, height}));
    appearance.dictionary.replaceKey("/Matrix", turned(m_rotation));
    appearance.dictionary.replaceKey("/Resources", resources);
    return appearance;
}

} // namespace sign
