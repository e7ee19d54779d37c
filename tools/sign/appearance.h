// What people see of a signature: its ink, and lines of text below.
#pragma once

#include "document.h"
#include "page_text.h"
#include "qpdf.h"

#include <array>
#include <string>
#include <vector>

namespace sign {

// On a canvas of any unit, downwards.
struct Ink
{
    // With round ends, as the library draws each line from point to point.
    struct Segment
    {
        double fromX;
        double fromY;
        double toX;
        double toY;
        double width;
    };

    std::vector<Segment> segments; // in the order of drawing
    double areaWidth = 0;          // of all that can be written on
    double areaHeight = 0;
    std::array<double, 3> colour{}; // red, green, blue, from 0 to 1
};

// A form that a page shows in a place.
struct Appearance
{
    Place place;
    QPDFObjectHandle dictionary;
    std::string data; // compressed
};

class Layout
{
public:
    // The ink's upper left corner lies there. It is at most as wide, and as high as a writing area of that
    // width in these proportions, or as there is room to the lower edge of the page. Throws Refusal when
    // there is none, and for text that the font does not have.
    static Layout at(const Page& page, const Place& corner, double areaHeightByWidth,
                     const std::vector<std::string>& lines);
    // The ink stands on the end of a line of text, its lines below it. Otherwise the same.
    static Layout behind(const Page& page, const TextEnd& text, double width, double areaHeightByWidth,
                         const std::vector<std::string>& lines);
    // In the middle of a field, as large as it fits.
    static Layout in(const Page& page, const Place& field, const std::vector<std::string>& lines);

    // The ink with its lines. Throws Refusal without any.
    Appearance appearance(const Ink& ink) const;

private:
    enum class Anchor
    {
        Corner, // the upper left one of the room
        Line,   // that the ink stands on: the room's lower edge, but for the text
        Middle, // of the room, all of which the signature takes
    };

    Layout() = default;
    void setLines(const std::vector<std::string>& lines, double largestSize);

    int m_rotation = 0;
    Place m_room; // for ink and text
    Anchor m_anchor = Anchor::Corner;
    std::vector<std::string> m_lines; // in the font's encoding
    double m_fontSize = 0;
    double m_textHeight = 0;
};

} // namespace sign
