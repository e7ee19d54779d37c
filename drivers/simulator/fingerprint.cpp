#include "fingerprint.h"

#include "files.h"
#include "random.h"
#include "recording.h"
#include "texts.h"

#include <algorithm>
#include <array>
#include <cmath>

// Synthetic ridges grow out of noise: a field of directions with the whirls of the pattern is laid out, and
// noise is filtered again and again along it until ridges of even width remain, with the ends and forks that
// chance gives them. The filtering is done in integers, everything around it in additions, multiplications,
// divisions and square roots, which every machine rounds alike.

namespace simulator {
namespace {

constexpr int Width = FingerprintWidth;
constexpr int Height = FingerprintHeight;

struct Vector
{
    double x = 0;
    double y = 0;
};

double smooth(double part)
{
    const double share = std::clamp(part, 0.0, 1.0);
    return share * share * (3.0 - 2.0 * share);
}

// The library's own may round differently from machine to machine. For angles from -8 to 8.
double cosine(double angle)
{
    const double square = angle * angle;
    double term = 1;
    double sum = 1;
    for (int step = 2; step <= 60; step += 2) {
        term = term * square / -(static_cast<double>(step) * (step - 1));
        sum += term;
    }
    return sum;
}

constexpr double Pi = 3.14159265358979323846;

double sine(double angle)
{
    return cosine(angle - 0.5 * Pi);
}

// Noise that changes over a distance of `cell` pixels, from -1 to 1.
class SlowNoise
{
public:
    SlowNoise(double cell, Random& random)
        : m_cell(cell), m_columns(static_cast<int>(Width / cell) + 3),
          m_values(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(Height / cell + 3))
    {
        for (double& value : m_values)
            value = 2.0 * random.even() - 1.0;
    }

    double at(double x, double y) const
    {
        const double column = x / m_cell;
        const double row = y / m_cell;
        const int left = static_cast<int>(column);
        const int top = static_cast<int>(row);
        const double right = smooth(column - left);
        const double down = smooth(row - top);
        const auto value = [&](int atColumn, int atRow) {
            return m_values[static_cast<std::size_t>(atRow) * static_cast<std::size_t>(m_columns) +
                            static_cast<std::size_t>(atColumn)];
        };
        const double above = value(left, top) + right * (value(left + 1, top) - value(left, top));
        const double below = value(left, top + 1) + right * (value(left + 1, top + 1) - value(left, top + 1));
        return above + down * (below - above);
    }

private:
    double m_cell;
    int m_columns;
    std::vector<double> m_values;
};

// A direction without head or tail, as the unit vector of twice its angle. y grows upwards.
Vector product(Vector a, Vector b)
{
    return {a.x * b.x - a.y * b.y, a.x * b.y + a.y * b.x};
}

Vector unit(Vector a)
{
    const double length = std::sqrt(a.x * a.x + a.y * a.y);
    return length < 1.0e-9 ? Vector{1, 0} : Vector{a.x / length, a.y / length};
}

// Ridges turn by half a circle around a core, and by half a circle the other way around a delta, where three
// bundles of them meet. Far from both they run level.
class DirectionField
{
public:
    DirectionField(RidgePattern pattern, Random& random) : m_wander(64, random)
    {
        const auto near = [&](double x, double y, double reach) {
            const double shiftX = reach * (2.0 * random.even() - 1.0);
            const double shiftY = reach * (2.0 * random.even() - 1.0);
            return Vector{x + shiftX, y + shiftY};
        };
        const double side = random.even() < 0.5 ? -1 : 1;
        if (pattern == RidgePattern::Loop) {
            m_cores = {near(104 + side * 4, 122, 7)};
            m_deltas = {near(104 + side * 66, 236, 10)};
        } else if (pattern == RidgePattern::Whorl) {
            const Vector centre = near(104, 128, 7);
            const double half = 6 + 6 * random.even();
            const double lean = 4 * (2.0 * random.even() - 1.0);
            m_cores = {{centre.x - lean, centre.y - half}, {centre.x + lean, centre.y + half}};
            m_deltas = {near(26, 240, 8), near(182, 240, 8)};
        }
        m_archMiddle = near(104, 165, 8);
        m_archHeight = 52 + 14 * random.even();
    }

    Vector at(double x, double y) const
    {
        Vector direction{1, 0};
        for (const Vector& core : m_cores)
            direction = product(direction, unit({x - core.x, core.y - y}));
        for (const Vector& delta : m_deltas)
            direction = product(direction, unit({x - delta.x, y - delta.y}));
        if (m_cores.empty()) {
            // One hill over another, flat at the finger's joint and steepest in the middle.
            const double breadth = 46 + 26 * smooth((m_archMiddle.y - y) / 150);
            const double reach = (x - m_archMiddle.x) / breadth;
            const double bell = 1.0 + reach * reach;
            const double height = m_archHeight * smooth((m_archMiddle.y + 110 - y) / 130);
            const double slope = -2.0 * reach / (bell * bell) * height / breadth;
            direction = product(unit({1, slope}), unit({1, slope}));
        }
        return unit(product(direction, {1, 0.22 * m_wander.at(x, y)}));
    }

private:
    SlowNoise m_wander;
    std::vector<Vector> m_cores;
    std::vector<Vector> m_deltas;
    Vector m_archMiddle;
    double m_archHeight = 0;
};

constexpr int Directions = 48;
constexpr int Reach = 8;
constexpr int Side = 2 * Reach + 1;
constexpr std::array<double, 5> Periods{7.6, 8.1, 8.6, 9.2, 9.8};
constexpr int Strongest = 1024; // a value of the growing ridges lies within +-this

// A wave across the ridges that fades outwards, without a mean of its own.
struct Filter
{
    std::array<std::int16_t, std::size_t{Side} * Side> weights;
};

Filter ridgeFilter(double angle, double period)
{
    const double across = sine(angle);
    const double down = cosine(angle);
    std::array<double, std::size_t{Side} * Side> waves{};
    std::array<double, std::size_t{Side} * Side> windows{};
    double waveSum = 0;
    double windowSum = 0;
    for (int y = -Reach; y <= Reach; ++y) {
        for (int x = -Reach; x <= Reach; ++x) {
            const double rest = 1.0 - (x * x + y * y) / ((Reach + 0.5) * (Reach + 0.5));
            const std::size_t index =
                static_cast<std::size_t>(y + Reach) * Side + static_cast<std::size_t>(x + Reach);
            windows[index] = rest > 0 ? rest * rest : 0;
            double turns = (x * across + y * down) / period;
            turns -= std::floor(turns + 0.5);
            waves[index] = windows[index] * cosine(2.0 * Pi * turns);
            waveSum += waves[index];
            windowSum += windows[index];
        }
    }
    double strength = 0;
    for (std::size_t index = 0; index < waves.size(); ++index) {
        waves[index] -= windows[index] * waveSum / windowSum;
        strength += std::fabs(waves[index]);
    }
    Filter filter;
    for (std::size_t index = 0; index < waves.size(); ++index)
        filter.weights[index] =
            static_cast<std::int16_t>(std::floor(waves[index] / strength * 65536.0 + 0.5));
    return filter;
}

// How well the values around a pixel match a filter. ThreadSanitizer would watch every one of some 300
// million loads from memory that no other thread knows.
__attribute__((no_sanitize("thread"))) std::int32_t matchOf(const std::int16_t* weight,
                                                            const std::int16_t* value)
{
    std::int32_t sum = 0;
    for (int row = 0; row < Side; ++row, weight += Side, value += Width + 2 * Reach) {
        for (int column = 0; column < Side; ++column)
            sum += weight[column] * value[column];
    }
    return sum;
}

// The ridges before they are printed: Strongest on a ridge's back, -Strongest in the valley.
class Ridges
{
public:
    Ridges(const DirectionField& field, Random& random)
        : m_values(std::size_t{Width + 2 * Reach} * std::size_t{Height + 2 * Reach})
    {
        makeFilters();
        chooseFilters(field, random);
        for (std::int16_t& value : m_values)
            value = static_cast<std::int16_t>(2.0 * Strongest * random.even() - Strongest);
        constexpr int Rounds = 9;
        for (int round = 0; round < Rounds; ++round)
            grow();
    }

    int at(int x, int y) const { return m_values[index(x, y)]; }

private:
    static std::size_t index(int x, int y)
    {
        return static_cast<std::size_t>(y + Reach) * (Width + 2 * Reach) +
               static_cast<std::size_t>(x + Reach);
    }

    void makeFilters()
    {
        for (double period : Periods) {
            for (int direction = 0; direction < Directions; ++direction) {
                const double angle = Pi * direction / Directions;
                m_filters.push_back(ridgeFilter(angle, period));
            }
        }
        for (int direction = 0; direction < Directions; ++direction) {
            const double angle = 2.0 * Pi * direction / Directions;
            m_doubled[static_cast<std::size_t>(direction)] = {cosine(angle), sine(angle)};
        }
    }

    void chooseFilters(const DirectionField& field, Random& random)
    {
        const SlowNoise breadth(70, random);
        m_choice.reserve(FingerprintSize);
        for (int y = 0; y < Height; ++y) {
            for (int x = 0; x < Width; ++x) {
                const Vector wanted = field.at(x, y);
                const auto closeness = [&](const Vector& direction) {
                    return wanted.x * direction.x + wanted.y * direction.y;
                };
                const auto best = std::max_element(
                    m_doubled.begin(), m_doubled.end(),
                    [&](const Vector& a, const Vector& b) { return closeness(a) < closeness(b); });
                // Ridges are broader towards the joint.
                const double place = 0.28 + 0.35 * y / Height + 0.3 * breadth.at(x, y);
                const int period = std::clamp(static_cast<int>(place * Periods.size()), 0,
                                              static_cast<int>(Periods.size()) - 1);
                m_choice.push_back(static_cast<std::uint16_t>(std::ptrdiff_t{period} * Directions +
                                                              (best - m_doubled.begin())));
            }
        }
    }

    void grow()
    {
        std::vector<std::int16_t> grown = m_values;
        for (int y = 0; y < Height; ++y) {
            for (int x = 0; x < Width; ++x) {
                const std::size_t pixel = static_cast<std::size_t>(y) * Width + static_cast<std::size_t>(x);
                const std::int32_t sum = matchOf(m_filters[m_choice[pixel]].weights.data(),
                                                 &m_values[index(x - Reach, y - Reach)]);
                // Weights sum up to 65536, so a perfect match reaches Strongest; less must do.
                grown[index(x, y)] =
                    static_cast<std::int16_t>(std::clamp(sum / 16384, -Strongest, Strongest));
            }
        }
        m_values.swap(grown);
    }

    std::vector<Filter> m_filters;
    std::array<Vector, Directions> m_doubled;
    std::vector<std::uint16_t> m_choice;
    std::vector<std::int16_t> m_values;
};

// The finger on the sensor: an oval that fades out, uneven pressure, pores on the ridges, noise.
std::vector<unsigned char> printed(const Ridges& ridges, Random& random)
{
    const SlowNoise pressure(48, random);
    const SlowNoise fine(5, random);
    const SlowNoise edge(26, random);
    const Vector middle{104 + 3 * random.bell(), 148 + 3 * random.bell()};
    std::vector<unsigned char> pixels;
    pixels.reserve(FingerprintSize);
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            const double acrossOval = (x - middle.x) / 97;
            const double alongOval = (y - middle.y) / 136;
            const double distance = std::sqrt(acrossOval * acrossOval + alongOval * alongOval);
            const double contact = 1.0 - smooth((distance + 0.06 * edge.at(x, y) - 0.80) / 0.22);
            const double ridge = static_cast<double>(ridges.at(x, y)) / Strongest;
            const double pressed = 0.16 * pressure.at(x, y) + 0.12 * fine.at(x, y);
            double ink = smooth((ridge + pressed + 0.75) / 1.5);
            // Sweat pores open on the back of a ridge.
            if (ridge > 0.85 && random.even() < 0.025)
                ink *= 0.45;
            const double strength = 0.86 + 0.10 * pressure.at(x, y) + 0.08 * fine.at(x, y);
            const double grey =
                250.0 - contact * (26.0 + 190.0 * strength * ink) + (2.0 + 4.0 * contact) * random.bell();
            pixels.push_back(static_cast<unsigned char>(std::clamp(grey + 0.5, 0.0, 255.0)));
        }
    }
    return pixels;
}

// Reads the words and the comments of a PGM file's text part.
class GreyMapReader
{
public:
    explicit GreyMapReader(std::string_view content) : m_rest(content) {}

    // Digits after white space and comments; false when there are none, or too many.
    bool takeNumber(int& number)
    {
        skipSpace();
        std::size_t digits = 0;
        std::int64_t value = 0;
        while (digits < m_rest.size() && m_rest[digits] >= '0' && m_rest[digits] <= '9' && digits < 10)
            value = value * 10 + (m_rest[digits++] - '0');
        if (digits == 0 || digits == 10 || (digits < m_rest.size() && !isSpace(m_rest[digits])))
            return false;
        number = static_cast<int>(value);
        m_rest.remove_prefix(digits);
        return true;
    }

    bool takeSpace()
    {
        if (m_rest.empty() || !isSpace(m_rest.front()))
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    void skipSpace()
    {
        while (!m_rest.empty() && (isSpace(m_rest.front()) || m_rest.front() == '#')) {
            if (m_rest.front() == '#')
                m_rest.remove_prefix(std::min(m_rest.find('\n'), m_rest.size()));
            else
                m_rest.remove_prefix(1);
        }
    }

    std::string_view rest() const { return m_rest; }

private:
    static bool isSpace(char character)
    {
        return character == ' ' || (character >= '\t' && character <= '\r');
    }

    std::string_view m_rest;
};

} // namespace

std::optional<RidgePattern> ridgePatternByName(std::string_view name)
{
    if (name == "loop")
        return RidgePattern::Loop;
    if (name == "whorl")
        return RidgePattern::Whorl;
    if (name == "arch")
        return RidgePattern::Arch;
    return std::nullopt;
}

std::vector<unsigned char> syntheticFingerprint(RidgePattern pattern, std::uint64_t seed)
{
    Random random(seed);
    const DirectionField field(pattern, random);
    const Ridges ridges(field, random);
    return printed(ridges, random);
}

bool parseGreyMap(std::string_view content, const std::string& name, std::vector<unsigned char>& pixels,
                  std::string& error)
{
    constexpr int LargestSide = 16384;
    const auto refuse = [&](const std::string& reason) {
        error = name + ": " + reason;
        return false;
    };
    const bool isPlain = content.starts_with("P2");
    if (!isPlain && !content.starts_with("P5"))
        return refuse(trText("Simulator", "is not a grey PGM picture, which would begin with P5 or P2"));
    GreyMapReader reader(content.substr(2));
    int width = 0;
    int height = 0;
    int maxValue = 0;
    if (!reader.takeNumber(width) || !reader.takeNumber(height) || !reader.takeNumber(maxValue))
        return refuse(trText("Simulator", "the header does not give width, height and largest grey value"));
    if (width < 1 || width > LargestSide || height < 1 || height > LargestSide)
        return refuse(trText("Simulator", "width or height is not within 1 to 16384"));
    if (maxValue != 255)
        return refuse(
            filled(trText("Simulator", "the largest grey value is %1, not 255"), {std::to_string(maxValue)}));

    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const auto more = [&] {
        return filled(trText("Simulator", "more than %1 x %2 grey values"),
                      {std::to_string(width), std::to_string(height)});
    };
    std::vector<unsigned char> picture;
    if (isPlain) {
        int value = 0;
        for (reader.skipSpace(); !reader.rest().empty(); reader.skipSpace()) {
            if (picture.size() == count)
                return refuse(more());
            if (!reader.takeNumber(value) || value > 255)
                return refuse(filled(trText("Simulator", "grey value %1 is not an integer from 0 to 255"),
                                     {std::to_string(picture.size() + 1)}));
            picture.push_back(static_cast<unsigned char>(value));
        }
    } else {
        if (!reader.takeSpace())
            return refuse(trText("Simulator", "no white space between header and picture"));
        if (reader.rest().size() > count)
            return refuse(more());
        picture.assign(reader.rest().begin(), reader.rest().end());
    }
    if (picture.size() < count)
        return refuse(filled(trText("Simulator", "fewer than %1 x %2 grey values"),
                             {std::to_string(width), std::to_string(height)}));

    pixels.assign(FingerprintSize, 255);
    const int columns = std::min(width, Width);
    const int rows = std::min(height, Height);
    const int fromLeft = (width - columns) / 2;
    const int fromTop = (height - rows) / 2;
    const int toLeft = (Width - columns) / 2;
    const int toTop = (Height - rows) / 2;
    for (int row = 0; row < rows; ++row) {
        std::copy_n(picture.begin() + static_cast<std::ptrdiff_t>(fromTop + row) * width + fromLeft, columns,
                    pixels.begin() + static_cast<std::ptrdiff_t>(toTop + row) * Width + toLeft);
    }
    return true;
}

bool readGreyMap(const std::string& path, std::vector<unsigned char>& pixels, std::string& error)
{
    std::string content;
    return readFile(path, content, error) && parseGreyMap(content, path, pixels, error);
}

std::string formatGreyMap(const std::vector<unsigned char>& pixels)
{
    std::string text = "P5\n" + std::to_string(Width) + " " + std::to_string(Height) + "\n255\n";
    text.append(pixels.begin(), pixels.end());
    return text;
}

} // namespace simulator
