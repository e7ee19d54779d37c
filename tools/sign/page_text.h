// The text of a page, as far as its fonts tell what their characters mean and how wide they are.
#pragma once

#include "document.h"
#include "fonts.h"

#include <string>
#include <vector>

namespace sign {

struct Glyph
{
    std::string text; // UTF-8; empty when nobody knows
    // On the page as people see it, in points from its upper left corner, downwards.
    double left;     // where its baseline begins
    double baseline; // there
    double right;    // where its baseline ends
    double slope;    // how far the baseline's end lies below its beginning
    double size;     // of the font
    bool hasWidth;   // and so an end
};

// In the order in which the page draws it.
std::vector<Glyph> textOf(const Page& page, Fonts& fonts);

// The letters of a form, such as the appearance of a field. Empty where nobody knows them.
std::string textOfForm(QPDFObjectHandle form, Fonts& fonts);

// Without what separates words, and with what stands for several letters in their place.
std::string lettersOf(std::string text);

// Where a text ends that people see from left to right.
struct TextEnd
{
    int page; // from 1
    double right;
    double baseline;
    double size;
};

// Blanks do not count. On one page, or on all with 0. Throws Refusal when the text is not there once.
TextEnd findText(Document& document, const std::string& text, int page);

} // namespace sign
