#include "page_text.h"

#include "refusal.h"
#include "texts.h"

#include <qpdf/QPDFMatrix.hh>

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <utility>

namespace sign {

namespace {

// Nobody writes pages with more.
constexpr std::size_t mostGlyphs = 5'000'000;
constexpr std::size_t mostOperands = 4096;
constexpr std::size_t deepestForm = 12;
constexpr std::size_t deepestState = 512;

struct State
{
    QPDFMatrix matrix; // to the page
    std::shared_ptr<const Font> font;
    double size = 0;
    double characterSpacing = 0;
    double wordSpacing = 0;
    double stretch = 1;
    double leading = 0;
    double rise = 0;
};

// What pages and the forms on it share.
struct Reading
{
    const Page& page;
    Fonts& fonts;
    std::vector<Glyph> glyphs;
    std::set<QPDFObjGen> openForms;
};

class ContentReader : public QPDFObjectHandle::ParserCallbacks
{
public:
    ContentReader(Reading& reading, const QPDFObjectHandle& resources, const State& state, std::size_t depth)
        : m_reading(reading), m_resources(resources), m_state(state), m_depth(depth)
    {
    }

    void handleObject(QPDFObjectHandle object, std::size_t, std::size_t) override
    {
        m_reading.fonts.contents().countObject();
        if (!object.isOperator()) {
            if (m_operands.size() < mostOperands)
                m_operands.push_back(object);
            return;
        }
        apply(object.getOperatorValue());
        m_operands.clear();
    }
    void handleEOF() override {}

private:
    QPDFObjectHandle operand(std::size_t index) const
    {
        return index < m_operands.size() ? m_operands[index] : QPDFObjectHandle::newNull();
    }
    double number(std::size_t index) const
    {
        QPDFObjectHandle value = operand(index);
        return value.isNumber() ? value.getNumericValue() : 0;
    }
    QPDFMatrix matrix() const { return {number(0), number(1), number(2), number(3), number(4), number(5)}; }

    void apply(const std::string& name)
    {
        if (name == "q" && m_states.size() < deepestState)
            m_states.push_back(m_state);
        else if (name == "Q" && !m_states.empty()) {
            m_state = m_states.back();
            m_states.pop_back();
        } else if (name == "cm")
            m_state.matrix.concat(matrix());
        else if (name == "Do")
            drawForm(operand(0));
        else
            applyToText(name);
    }

    void applyToText(const std::string& name)
    {
        if (name == "BT")
            m_line = m_text = QPDFMatrix();
        else if (name == "Tm")
            m_line = m_text = matrix();
        else if (name == "Td")
            moveLine(number(0), number(1));
        else if (name == "TD") {
            m_state.leading = -number(1);
            moveLine(number(0), number(1));
        } else if (name == "T*")
            moveLine(0, -m_state.leading);
        else if (name == "Tf") {
            m_state.font = fontNamed(operand(0));
            m_state.size = number(1);
        } else if (name == "Tc")
            m_state.characterSpacing = number(0);
        else if (name == "Tw")
            m_state.wordSpacing = number(0);
        else if (name == "Tz")
            m_state.stretch = number(0) / 100;
        else if (name == "TL")
            m_state.leading = number(0);
        else if (name == "Ts")
            m_state.rise = number(0);
        else if (name == "gs")
            applyGraphicsState(operand(0));
        else
            show(name);
    }

    void show(const std::string& name)
    {
        if (name == "Tj")
            showText(operand(0));
        else if (name == "'") {
            moveLine(0, -m_state.leading);
            showText(operand(0));
        } else if (name == "\"") {
            m_state.wordSpacing = number(0);
            m_state.characterSpacing = number(1);
            moveLine(0, -m_state.leading);
            showText(operand(2));
        } else if (name == "TJ") {
            QPDFObjectHandle items = operand(0);
            if (!items.isArray())
                return;
            for (QPDFObjectHandle item : items.aitems()) {
                if (item.isNumber())
                    m_text.translate(-item.getNumericValue() / 1000 * m_state.size * m_state.stretch, 0);
                else
                    showText(item);
            }
        }
    }

    void moveLine(double x, double y)
    {
        m_line.translate(x, y);
        m_text = m_line;
    }

    void applyGraphicsState(const QPDFObjectHandle& name)
    {
        QPDFObjectHandle font = resource("/ExtGState", name).getKeyIfDict("/Font");
        if (!font.isArray() || font.getArrayNItems() != 2 || !font.getArrayItem(1).isNumber())
            return;
        m_state.font = fontOf(font.getArrayItem(0));
        m_state.size = font.getArrayItem(1).getNumericValue();
    }

    void showText(QPDFObjectHandle string)
    {
        if (!m_state.font || !string.isString())
            return;
        for (Font::Character& character : m_state.font->charactersOf(string.getStringValue())) {
            QPDFMatrix toPage = m_state.matrix;
            toPage.concat(m_text);
            note(character, toPage);
            const double spacing = m_state.characterSpacing + (character.isSpace ? m_state.wordSpacing : 0);
            m_text.translate((character.width * m_state.size + spacing) * m_state.stretch, 0);
        }
    }

    void note(Font::Character& character, const QPDFMatrix& toPage)
    {
        if (m_reading.glyphs.size() >= mostGlyphs)
            throw Refusal{trText("Sign", "the page has too much text on it to be searched")};
        const Place start = placeOf(toPage, 0);
        const Place end = placeOf(toPage, character.width * m_state.size * m_state.stretch);
        const double size = std::hypot(toPage.c, toPage.d) * std::abs(m_state.size) * m_reading.page.unit;
        m_reading.glyphs.push_back({std::move(character.text), start.left, start.top, end.left,
                                    end.top - start.top, size, character.hasWidth});
    }

    Place placeOf(const QPDFMatrix& toPage, double x) const
    {
        Rectangle point;
        toPage.transform(x, m_state.rise, point.left, point.bottom);
        point.right = point.left;
        point.top = point.bottom;
        return m_reading.page.toPlace(point);
    }

    QPDFObjectHandle resource(const char* kind, QPDFObjectHandle name)
    {
        return name.isName() ? m_resources.getKeyIfDict(kind).getKeyIfDict(name.getName())
                             : QPDFObjectHandle::newNull();
    }

    std::shared_ptr<const Font> fontNamed(const QPDFObjectHandle& name)
    {
        return fontOf(resource("/Font", name));
    }

    std::shared_ptr<const Font> fontOf(QPDFObjectHandle font)
    {
        return font.isDictionary() ? m_reading.fonts.fontOf(font) : nullptr;
    }

    void drawForm(const QPDFObjectHandle& name)
    {
        QPDFObjectHandle form = resource("/XObject", name);
        if (!form.isStream() || !form.getDict().getKey("/Subtype").isNameAndEquals("/Form") ||
            m_depth >= deepestForm || !m_reading.openForms.insert(form.getObjGen()).second)
            return;
        State state = m_state;
        if (QPDFObjectHandle own = form.getDict().getKey("/Matrix"); own.isMatrix())
            state.matrix.concat(QPDFMatrix(own.getArrayAsMatrix()));
        QPDFObjectHandle resources = form.getDict().getKey("/Resources");
        ContentReader reader(m_reading, resources.isDictionary() ? resources : m_resources, state,
                             m_depth + 1);
        m_reading.fonts.contents().parse(form, reader);
        m_reading.openForms.erase(form.getObjGen());
    }

    Reading& m_reading;
    QPDFObjectHandle m_resources;
    State m_state;
    std::vector<State> m_states;
    std::vector<QPDFObjectHandle> m_operands;
    QPDFMatrix m_line;
    QPDFMatrix m_text;
    const std::size_t m_depth;
};

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Whether the characters are one after another, as people read them.
bool isOneLine(const std::vector<Glyph>& glyphs, std::size_t first, std::size_t last)
{
    for (std::size_t index = first; index <= last; ++index) {
        const Glyph& glyph = glyphs[index];
        if (!glyph.hasWidth || std::abs(glyph.baseline - glyphs[first].baseline) > glyph.size / 2 ||
            std::abs(glyph.slope) > 0.01 * glyph.size || glyph.right < glyph.left)
            return false;
        constexpr double widestGap = 3; // of the font's size
        if (index > first && std::abs(glyph.left - glyphs[index - 1].right) > widestGap * glyph.size)
            return false;
    }
    return true;
}

} // namespace

std::vector<Glyph> textOf(const Page& page, Fonts& fonts)
{
    Reading reading{page, fonts, {}, {}};
    QPDFObjectHandle object = page.object;
    ContentReader reader(reading, inheritedValue(object, "/Resources"), {}, 0);
    fonts.contents().parse(object.getKey("/Contents"), reader);
    return std::move(reading.glyphs);
}

std::string lettersOf(std::string text)
{
    constexpr std::pair<std::string_view, std::string_view> others[] = {
        {"\u00a0", ""},   {"\ufb00", "ff"},  {"\ufb01", "fi"},
        {"\ufb02", "fl"}, {"\ufb03", "ffi"}, {"\ufb04", "ffl"},
    };
    for (const auto& [other, letters] : others)
        for (std::size_t at = text.find(other); at != std::string::npos; at = text.find(other))
            text.replace(at, other.size(), letters);
    text.erase(std::remove_if(text.begin(), text.end(), isBlank), text.end());
    return text;
}

std::string textOfForm(QPDFObjectHandle form, Fonts& fonts)
{
    const Page page;
    Reading reading{page, fonts, {}, {}};
    ContentReader reader(reading, form.getDict().getKey("/Resources"), {}, 0);
    fonts.contents().parse(form, reader);
    std::string text;
    for (const Glyph& glyph : reading.glyphs)
        text += lettersOf(glyph.text);
    return text;
}

TextEnd findText(Document& document, const std::string& text, int onlyPage)
{
    const std::string wanted = lettersOf(text);
    if (wanted.empty())
        throw Refusal{trText("Sign", "an empty text is everywhere")};
    std::vector<TextEnd> found;
    Fonts fonts;
    bool isAllRead = true;
    bool isElsewise = false; // drawn upwards, for instance
    for (int number = onlyPage == 0 ? 1 : onlyPage;
         number <= (onlyPage == 0 ? document.pageCount() : onlyPage); ++number) {
        const std::vector<Glyph> glyphs = textOf(document.page(number), fonts);
        std::string all;
        std::vector<std::size_t> owners; // of each byte
        for (std::size_t index = 0; index < glyphs.size(); ++index) {
            isAllRead = isAllRead && !glyphs[index].text.empty();
            all += lettersOf(glyphs[index].text);
            owners.resize(all.size(), index);
        }
        for (std::size_t at = all.find(wanted); at != std::string::npos; at = all.find(wanted, at + 1)) {
            const std::size_t last = owners[at + wanted.size() - 1];
            if (isOneLine(glyphs, owners[at], last))
                found.push_back({number, glyphs[last].right, glyphs[last].baseline, glyphs[last].size});
            else
                isElsewise = true;
        }
    }
    if (found.empty() && isElsewise)
        throw Refusal{
            filled(trText("Sign", "a signature cannot stand after the text '%1' as it is drawn"), {text})};
    if (found.empty())
        throw Refusal{filled(
            isAllRead
                ? trText("Sign", "the text '%1' is not found")
                : trText("Sign",
                         "the text '%1' is not found; not all that the document shows can be read as text"),
            {text})};
    if (found.size() > 1)
        throw Refusal{filled(trText("Sign", "the text '%1' is there %2 times; use a longer one, or --at"),
                             {text, std::to_string(found.size())})};
    return found.front();
}

} // namespace sign
