#include "surfacedrawing.h"
#include "text.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

constexpr int widest = 60;              // characters
constexpr int highest = 24;             // lines
constexpr double heightOfCharacter = 2; // in its widths

class Picture
{
public:
    Picture(int columns, int rows) : m_columns(columns), m_rows(rows)
    {
        for (int row = 0; row < rows; ++row)
            m_lines.append(QString(columns, QLatin1Char(' ')));
    }

    void box(int left, int top, int right, int bottom, const char* characters)
    {
        for (int column = left; column <= right; ++column)
            put(column, top, characters[0]), put(column, bottom, characters[0]);
        for (int row = top; row <= bottom; ++row)
            put(left, row, characters[1]), put(right, row, characters[1]);
        for (const int column : {left, right})
            for (const int row : {top, bottom})
                put(column, row, characters[2]);
    }
    void put(int column, int row, char character) { m_lines[row][column] = QLatin1Char(character); }

    // The character at which a place from 0 to 1 lies, inside the outermost ones.
    int columnAt(double place) const { return 1 + at(place, m_columns - 2); }
    int rowAt(double place) const { return 1 + at(place, m_rows - 2); }

    QString text() const { return m_lines.join(QLatin1Char('\n')) + QLatin1Char('\n'); }

private:
    static int at(double place, int count)
    {
        return std::clamp(static_cast<int>(std::lround(place * (count - 1))), 0, count - 1);
    }

    int m_columns;
    int m_rows;
    QStringList m_lines;
};

} // namespace

QString drawing(const UsedSurface& used, double widthByHeight)
{
    const double lines = std::clamp(widest / widthByHeight / heightOfCharacter, 3.0, double{highest});
    const double characters = std::clamp(lines * heightOfCharacter * widthByHeight, 6.0, double{widest});
    Picture picture(static_cast<int>(std::lround(characters)) + 2, static_cast<int>(std::lround(lines)) + 2);
    picture.box(0, 0, picture.columnAt(1) + 1, picture.rowAt(1) + 1, ".:.");
    const auto [left, right] = std::minmax({picture.columnAt(used.left), picture.columnAt(used.right)});
    const auto [top, bottom] = std::minmax({picture.rowAt(used.top), picture.rowAt(used.bottom)});
    picture.box(left, top, right, bottom, "-|+");
    picture.put(picture.columnAt(used.left), picture.rowAt(used.top), '1');
    if (used.isTurned)
        picture.put(picture.columnAt(used.left), picture.rowAt(used.bottom), '2');
    else
        picture.put(picture.columnAt(used.right), picture.rowAt(used.top), '2');
    return picture.text() +
           Text::tr(". the device   - used   1 the pad's upper left corner   2 its upper right one") +
           QLatin1Char('\n');
}
