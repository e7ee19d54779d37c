// scribera-sim-generate: writes a synthetic signature as a recording.
//
// A style is a list of strokes through hand-placed points. The points are jittered, joined by a spline, and
// run through at the speed of a hand: slow in bends and at the ends, fast between. Everything is made of
// additions, multiplications, divisions and square roots, which every machine rounds alike, so that a seed
// gives the same bytes everywhere.
#include "catalogues.h"
#include "random.h"
#include "recording.h"
#include "texts.h"
#include "words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

using simulator::Pad;
using simulator::Random;
using simulator::RecordedSample;
using simulator::Recording;

constexpr double SampleSeconds = 0.005; // 200 samples a second

struct Point
{
    double x = 0;
    double y = 0;
};

Point operator+(Point a, Point b)
{
    return {a.x + b.x, a.y + b.y};
}

Point operator-(Point a, Point b)
{
    return {a.x - b.x, a.y - b.y};
}

Point operator*(double factor, Point a)
{
    return {factor * a.x, factor * a.y};
}

double length(Point a)
{
    return std::sqrt(a.x * a.x + a.y * a.y);
}

using Path = std::vector<Point>;

// Letters stand on the baseline y = 0 with y upwards; a small letter is 1 high. Each ends where the next
// begins.
struct Glyph
{
    double advance;
    Path points;
};

// clang-format off
const std::map<char, Glyph>& glyphs()
{
    static const std::map<char, Glyph> table{
        {'a', {1.15, {{0.62, 0.93}, {0.38, 0.95}, {0.14, 0.55}, {0.22, 0.10}, {0.46, 0.10}, {0.70, 0.55},
                      {0.78, 0.92}, {0.76, 0.45}, {0.90, 0.06}}}},
        {'c', {0.90, {{0.58, 0.78}, {0.46, 0.96}, {0.18, 0.70}, {0.14, 0.25}, {0.40, 0.02}}}},
        {'e', {0.85, {{0.28, 0.34}, {0.54, 0.74}, {0.40, 1.00}, {0.20, 0.72}, {0.20, 0.28}, {0.44, 0.02}}}},
        {'i', {0.70, {{0.20, 0.55}, {0.32, 0.94}, {0.30, 0.45}, {0.42, 0.05}}}},
        {'l', {0.80, {{0.28, 0.62}, {0.56, 1.70}, {0.46, 2.25}, {0.26, 1.75}, {0.22, 0.62}, {0.40, 0.03}}}},
        {'m', {1.75, {{0.18, 0.80}, {0.27, 0.88}, {0.26, 0.06}, {0.32, 0.40}, {0.54, 0.93}, {0.70, 0.75},
                      {0.70, 0.06}, {0.78, 0.42}, {1.02, 0.92}, {1.18, 0.72}, {1.20, 0.28}, {1.36, 0.03}}}},
        {'n', {1.25, {{0.18, 0.80}, {0.27, 0.88}, {0.26, 0.06}, {0.34, 0.42}, {0.60, 0.94}, {0.76, 0.72},
                      {0.78, 0.28}, {0.94, 0.03}}}},
        {'o', {1.05, {{0.48, 0.96}, {0.22, 0.80}, {0.14, 0.32}, {0.38, 0.02}, {0.66, 0.40}, {0.56, 0.86},
                      {0.64, 0.74}, {0.84, 0.74}}}},
        {'r', {0.90, {{0.20, 0.80}, {0.30, 1.08}, {0.40, 0.86}, {0.60, 0.84}, {0.56, 0.36}, {0.68, 0.04}}}},
        {'t', {0.75, {{0.26, 0.80}, {0.40, 1.75}, {0.36, 1.00}, {0.34, 0.30}, {0.48, 0.03}}}},
    };
    return table;
}
// clang-format on

// Puts small letters behind a path's last point, as one movement. Letters shrink and flatten towards the end,
// as they do when a name has been written a thousand times.
void appendWord(Path& path, const std::string& word, double x, double haste, Random& random)
{
    const double step = word.size() > 1 ? 1.0 / static_cast<double>(word.size() - 1) : 0.0;
    double progress = 0;
    for (char letter : word) {
        const Glyph& glyph = glyphs().at(letter);
        const double height = (1.0 - haste * 0.45 * progress) * (1.0 + 0.05 * random.bell());
        const double width = (1.0 + haste * 0.35 * progress) * (1.0 + 0.05 * random.bell());
        for (const Point& point : glyph.points)
            path.push_back({x + width * point.x, height * point.y});
        x += width * glyph.advance;
        progress += step;
    }
}

void append(Path& path, const Path& points)
{
    path.insert(path.end(), points.begin(), points.end());
}

double rightEnd(const Path& path)
{
    double right = path.front().x;
    for (const Point& point : path)
        right = std::max(right, point.x);
    return right;
}

struct Style
{
    const char* name;
    const char* description;
    double seconds; // of writing, pauses in the air apart
    double slant;   // x added for each unit of y
    double rise;    // y added for each unit of x
    std::vector<Path> (*strokes)(Random&);
};

// A whole name in round joined letters, with its dot, its bar and a tail.
std::vector<Path> flowingStrokes(Random& random)
{
    Path capital{{-0.55, 0.35}, {-0.30, 0.05}, {0.02, 0.55}, {0.42, 2.10}, {0.66, 2.45},
                 {0.72, 1.60},  {0.70, 0.10},  {0.84, 0.95}, {1.22, 2.20}, {1.46, 2.40},
                 {1.50, 1.40},  {1.56, 0.25},  {1.84, 0.02}};
    appendWord(capital, "arie", 2.05, 0.25, random);

    Path second{{7.35, 2.20}, {7.05, 2.42}, {6.78, 2.05}, {7.00, 1.45}, {7.20, 1.28},
                {6.80, 1.05}, {6.52, 0.50}, {6.80, 0.02}, {7.30, 0.12}, {7.62, 0.60}};
    appendWord(second, "llerton", 7.55, 0.55, random);
    const double end = rightEnd(second);
    append(second, {{end + 0.70, 0.16}, {end + 1.70, 0.55}, {end + 2.60, 1.25}});

    const Path bar{{11.05, 1.30}, {11.60, 1.40}, {12.60, 1.55}};
    const Path dot{{4.36, 1.80}, {4.43, 1.72}, {4.46, 1.62}};
    return {capital, dot, second, bar};
}

// Two large capitals, each with a full stop, and a line below.
std::vector<Path> initialsStrokes(Random&)
{
    const Path stemOfR{{0.30, 3.05},  {0.22, 2.20},   {0.10, 1.00},
                       {-0.05, 0.05}, {-0.22, -0.12}, {-0.40, 0.10}};
    const Path bowlOfR{{-0.55, 2.55}, {-0.20, 3.05}, {0.70, 3.35}, {1.45, 3.00}, {1.40, 2.25}, {0.75, 1.75},
                       {0.30, 1.65},  {0.55, 1.52},  {1.05, 0.90}, {1.60, 0.20}, {2.15, 0.02}, {2.60, 0.30}};
    const Path firstStop{{2.98, 0.08}, {3.06, 0.02}, {3.08, -0.10}};
    const Path stemOfK{{4.70, 3.25}, {4.62, 2.30}, {4.45, 1.00}, {4.28, -0.05}, {4.20, -0.30}};
    const Path armsOfK{{6.35, 3.20}, {5.90, 2.85}, {5.15, 1.95}, {4.62, 1.55},  {4.50, 1.72},
                       {4.72, 1.80}, {5.10, 1.30}, {5.70, 0.45}, {6.30, -0.05}, {6.85, 0.05}};
    const Path secondStop{{7.32, 0.06}, {7.40, -0.01}, {7.43, -0.13}};
    const Path line{{-0.30, -1.05}, {1.60, -0.85}, {4.20, -0.72}, {6.60, -0.62},
                    {8.20, -0.40},  {8.60, -0.52}, {7.90, -0.86}, {6.60, -1.10}};
    return {stemOfR, bowlOfR, firstStop, stemOfK, armsOfK, secondStop, line};
}

// A hurried name that ends in a flourish: back under the name in loops and off to the right.
std::vector<Path> paraphStrokes(Random& random)
{
    Path bow{{0.55, 3.10},   {0.40, 2.10},   {0.20, 0.80}, {0.00, -0.20},
             {-0.35, -0.50}, {-0.70, -0.10}, {-0.40, 0.60}};
    Path name{{-0.70, 2.40}, {-0.20, 3.20}, {1.00, 3.70}, {1.90, 3.20}, {1.50, 2.30},  {0.55, 1.85},
              {1.60, 1.75},  {2.15, 1.05},  {1.60, 0.25}, {0.60, 0.05}, {1.20, -0.05}, {2.10, 0.15}};
    appendWord(name, "ecmn", 2.20, 1.0, random);
    const double end = rightEnd(name);
    append(name, {{end + 0.80, 0.30},
                  {end + 2.00, 0.62},
                  {end + 3.00, 1.05},
                  {end + 3.45, 0.95},
                  {end + 2.90, 0.10},
                  {end + 1.00, -0.90},
                  {end - 2.60, -1.62},
                  {end - 5.60, -1.85},
                  {end - 7.10, -1.45},
                  {end - 6.70, -0.95},
                  {end - 5.00, -1.05},
                  {end - 2.20, -1.55},
                  {end + 0.60, -1.95},
                  {end + 2.10, -1.70},
                  {end + 1.90, -1.25},
                  {end + 1.00, -1.45},
                  {end + 1.50, -2.15},
                  {end + 3.40, -2.20},
                  {end + 5.00, -1.60}});
    const Path strike{{end + 0.20, -2.70}, {end + 0.75, -1.75}, {end + 1.15, -0.75}};
    const Path stop{{end + 3.96, 0.16}, {end + 4.04, 0.08}, {end + 4.06, -0.06}};
    return {bow, name, strike, stop};
}

const std::vector<Style>& styles()
{
    static const std::vector<Style> table{
        {"flowing", TR_LATER("Simulator", "a whole name in round joined letters"), 3.6, 0.30, 0.035,
         flowingStrokes},
        {"initials", TR_LATER("Simulator", "two large capitals with full stops over a line"), 1.9, 0.16, 0.03,
         initialsStrokes},
        {"paraph", TR_LATER("Simulator", "a hurried name that ends in a looping flourish"), 2.5, 0.26, 0.06,
         paraphStrokes},
    };
    return table;
}

// One stroke on its way through the generator: a dense path, then the time at each of its points.
struct Stroke
{
    Path path;
    std::vector<double> times;
};

// Centripetal Catmull-Rom spline: it passes through all points without loops of its own between close ones.
Path splineThrough(const Path& points)
{
    constexpr int Steps = 48;
    Path control;
    control.push_back(points[0] + (points[0] - points[1]));
    append(control, points);
    control.push_back(points.back() + (points.back() - points[points.size() - 2]));

    Path path;
    for (std::size_t index = 1; index + 2 < control.size(); ++index) {
        const Point* p = &control[index - 1];
        double knots[4] = {0, 0, 0, 0};
        for (int knot = 1; knot < 4; ++knot)
            knots[knot] = knots[knot - 1] + std::sqrt(std::max(length(p[knot] - p[knot - 1]), 1.0e-6));
        const auto mix = [&](Point a, Point b, double from, double to, double at) {
            return (to - at) / (to - from) * a + (at - from) / (to - from) * b;
        };
        for (int step = 0; step < Steps; ++step) {
            const double at = knots[1] + (knots[2] - knots[1]) * step / Steps;
            const Point a1 = mix(p[0], p[1], knots[0], knots[1], at);
            const Point a2 = mix(p[1], p[2], knots[1], knots[2], at);
            const Point a3 = mix(p[2], p[3], knots[2], knots[3], at);
            const Point b1 = mix(a1, a2, knots[0], knots[2], at);
            const Point b2 = mix(a2, a3, knots[1], knots[3], at);
            path.push_back(mix(b1, b2, knots[1], knots[2], at));
        }
    }
    path.push_back(points.back());
    return path;
}

double cubeRoot(double value)
{
    double root = std::max(value, 1.0);
    for (int round = 0; round < 60; ++round)
        root = (2.0 * root + value / (root * root)) / 3.0;
    return root;
}

// Times along the path in units of no meaning yet: speed falls with the third root of the curvature, as in
// human drawing movements, and cannot change faster than the hand accelerates.
std::vector<double> handTimes(const Path& path)
{
    constexpr double StartSpeed = 0.25;
    constexpr double Acceleration = 3.2;
    const std::size_t count = path.size();
    std::vector<double> speeds(count, StartSpeed);
    for (std::size_t index = 1; index + 1 < count; ++index) {
        const Point before = path[index] - path[index - 1];
        const Point behind = path[index + 1] - path[index];
        const double chord = length(path[index + 1] - path[index - 1]);
        const double product = std::max(length(before) * length(behind) * chord, 1.0e-9);
        const double curvature = 2.0 * std::fabs(before.x * behind.y - before.y * behind.x) / product;
        speeds[index] = 1.9 / cubeRoot(curvature + 0.12);
    }
    const auto limit = [&](std::size_t from, std::size_t to) {
        const double reach = 2.0 * Acceleration * length(path[to] - path[from]);
        speeds[to] = std::min(speeds[to], std::sqrt(speeds[from] * speeds[from] + reach));
    };
    for (std::size_t index = 1; index < count; ++index)
        limit(index - 1, index);
    // A hand leaves the paper while it still moves.
    speeds.back() = std::max(speeds.back(), 0.8);
    for (std::size_t index = count - 1; index > 0; --index)
        limit(index, index - 1);

    std::vector<double> times(count, 0.0);
    for (std::size_t index = 1; index < count; ++index)
        times[index] = times[index - 1] +
                       2.0 * length(path[index] - path[index - 1]) / (speeds[index] + speeds[index - 1]);
    return times;
}

std::vector<Stroke> writtenStrokes(const Style& style, Random& random)
{
    const double slant = style.slant + 0.03 * random.bell();
    const double rise = style.rise + 0.01 * random.bell();
    std::vector<Stroke> strokes;
    double total = 0;
    for (Path points : style.strokes(random)) {
        const Point drift{0.04 * random.bell(), 0.04 * random.bell()};
        for (Point& point : points) {
            const Point moved = point + drift + Point{0.022 * random.bell(), 0.022 * random.bell()};
            point = {moved.x + slant * moved.y, moved.y + rise * moved.x};
        }
        Stroke stroke;
        stroke.path = splineThrough(points);
        stroke.times = handTimes(stroke.path);
        total += stroke.times.back();
        strokes.push_back(std::move(stroke));
    }
    const double factor = style.seconds * (1.0 + 0.04 * random.bell()) / total;
    for (Stroke& stroke : strokes) {
        for (double& time : stroke.times)
            time *= factor;
    }
    return strokes;
}

// Slow wandering of a hand that is never quite still: noise through two smoothing steps.
class Tremor
{
public:
    double next(Random& random)
    {
        m_first += 0.30 * (random.bell() - m_first);
        m_second += 0.30 * (m_first - m_second);
        return m_second;
    }

private:
    double m_first = 0;
    double m_second = 0;
};

// Letters to pad units: as large as the margins allow, proportions kept, y downwards.
struct Placement
{
    Point origin;
    Point lowest;
    double scale = 1;

    Point operator()(Point point) const
    {
        return {origin.x + scale * (point.x - lowest.x), origin.y - scale * (point.y - lowest.y)};
    }
};

Placement placementOn(const Pad& pad, const std::vector<Stroke>& strokes)
{
    Point low = strokes.front().path.front();
    Point high = low;
    for (const Stroke& stroke : strokes) {
        for (const Point& point : stroke.path) {
            low = {std::min(low.x, point.x), std::min(low.y, point.y)};
            high = {std::max(high.x, point.x), std::max(high.y, point.y)};
        }
    }
    const Point size = high - low;
    Placement placement;
    placement.scale = std::min(0.80 * pad.area.width / size.x, 0.56 * pad.area.height / size.y);
    placement.lowest = low;
    placement.origin = {pad.area.originX + 0.5 * (pad.area.width - placement.scale * size.x),
                        pad.area.originY + 0.5 * (pad.area.height + placement.scale * size.y)};
    return placement;
}

int rounded(double value, int least, int most)
{
    return std::clamp(static_cast<int>(std::floor(value + 0.5)), least, most);
}

class Writer
{
public:
    Writer(const Pad& pad, const Placement& placement, Random& random)
        : m_pad(pad), m_place(placement), m_random(random)
    {
        m_recording.model = pad.model;
        m_recording.area = pad.area;
        m_recording.maxPressure = pad.maxPressure;
    }

    void write(const Stroke& stroke)
    {
        if (!m_recording.samples.empty())
            m_milliseconds += airTime(stroke.path.front());
        const double duration = stroke.times.back();
        const int count = std::max(static_cast<int>(duration / SampleSeconds), 2);
        std::size_t index = 0;
        Point previous = stroke.path.front();
        for (int step = 0; step <= count; ++step) {
            const double time = duration * step / count;
            while (index + 2 < stroke.times.size() && stroke.times[index + 1] < time)
                ++index;
            const double span = std::max(stroke.times[index + 1] - stroke.times[index], 1.0e-9);
            const double part = std::clamp((time - stroke.times[index]) / span, 0.0, 1.0);
            const Point point = stroke.path[index] + part * (stroke.path[index + 1] - stroke.path[index]);
            add(point, pressureAt(time, duration, point - previous),
                step == 0 ? simulator::PenDown : simulator::PenMove);
            previous = point;
        }
        RecordedSample up = m_recording.samples.back();
        up.milliseconds = m_milliseconds;
        up.pressure = 0;
        up.status = simulator::PenUp;
        m_recording.samples.push_back(up);
        m_end = previous;
    }

    const Recording& recording() const { return m_recording; }

private:
    // The farther the next stroke, the longer the way through the air, in whole sample times.
    std::int64_t airTime(Point begin)
    {
        const double seconds = 0.075 + 0.022 * length(begin - m_end) + 0.03 * m_random.even();
        return static_cast<std::int64_t>(std::floor(seconds / SampleSeconds + 0.5)) * 5;
    }

    // Share of the largest pressure. A hand presses on downstrokes, is light when fast, and needs a moment to
    // come down and to lift.
    double pressureAt(double time, double duration, Point moved)
    {
        const double speed = length(moved) / SampleSeconds;
        const double downwards = moved.y < 0 ? -moved.y / std::max(length(moved), 1.0e-6) : 0.0;
        const double wanted =
            0.44 + 0.20 * downwards - 0.10 * speed / (speed + 25.0) + 0.16 * m_pressureTremor.next(m_random);
        m_pressure += 0.18 * (wanted - m_pressure);
        const double attack = std::min(time / std::min(0.045, 0.3 * duration), 1.0);
        const double release = std::min((duration - time) / std::min(0.06, 0.3 * duration), 1.0);
        const double envelope = (0.12 + 0.88 * smooth(attack)) * (0.10 + 0.90 * smooth(release));
        return m_pressure * envelope;
    }

    static double smooth(double part) { return part * part * (3.0 - 2.0 * part); }

    void add(Point point, double pressure, int status)
    {
        const simulator::Area& area = m_pad.area;
        const Point shaken = point + Point{0.02 * m_xTremor.next(m_random), 0.02 * m_yTremor.next(m_random)};
        const Point onPad = m_place(shaken);
        RecordedSample sample;
        sample.milliseconds = m_milliseconds;
        sample.x = rounded(onPad.x, area.originX, area.originX + area.width - 1);
        sample.y = rounded(onPad.y, area.originY, area.originY + area.height - 1);
        sample.pressure = rounded(pressure * m_pad.maxPressure, 1, m_pad.maxPressure);
        sample.status = status;
        m_recording.samples.push_back(sample);
        m_milliseconds += 5;
    }

    const Pad& m_pad;
    const Placement& m_place;
    Random& m_random;
    Recording m_recording;
    std::int64_t m_milliseconds = 0;
    Point m_end;
    double m_pressure = 0.4;
    Tremor m_xTremor;
    Tremor m_yTremor;
    Tremor m_pressureTremor;
};

Recording generate(const Style& style, std::uint64_t seed, const Pad& pad)
{
    Random random(seed);
    const std::vector<Stroke> strokes = writtenStrokes(style, random);
    const Placement placement = placementOn(pad, strokes);
    Writer writer(pad, placement, random);
    for (const Stroke& stroke : strokes)
        writer.write(stroke);
    return writer.recording();
}

std::string usage()
{
    std::string styleList;
    for (const Style& style : styles())
        styleList += "                   " + std::string(style.name) +
                     std::string(10 - std::strlen(style.name), ' ') + trText("Simulator", style.description) +
                     "\n";
    return filled(
        trText("Simulator",
               "usage: scribera-sim-generate --style NAME [--seed N] [--model MODEL] [-o FILE]\n"
               "Writes a synthetic signature as a recording for the simulated pad.\n\n"
               "  --style NAME   kind of signature:\n%1"
               "  --seed N       0 or a positive integer, default 1; the same seed gives the same bytes\n"
               "  --model MODEL  pad it is written on, default SCT580; one of these, also without SC:\n"
               "                 %2\n"
               "  -o FILE        file to write, default standard output\n"
               "  --help         this text\n"
               "  --version      name and version\n\n"
               "Exit code: 0 done, 1 the file cannot be written, 2 wrong arguments.\n"),
        {styleList, simulator::modelNames()});
}

int refuseArguments(const std::string& reason)
{
    std::fprintf(stderr, "scribera-sim-generate: %s\n%s\n", reason.c_str(),
                 filled(trText("Simulator", "Try '%1 --help'."), {"scribera-sim-generate"}).c_str());
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    loadCatalogues();
    const Style* style = nullptr;
    std::int64_t seed = 1;
    const Pad* pad = simulator::padForModel("SCT580");
    std::string output = "-";
    for (int index = 1; index < argc; ++index) {
        const std::string option = argv[index];
        if (option == "--help" || option == "-h") {
            std::fputs(usage().c_str(), stdout);
            return 0;
        }
        if (option == "--version") {
            std::puts("scribera-sim-generate " SCRIBERA_VERSION);
            return 0;
        }
        if (option != "--style" && option != "--seed" && option != "--model" && option != "-o")
            return refuseArguments(filled(trText("Simulator", "unknown argument '%1'"), {option}));
        if (++index == argc)
            return refuseArguments(filled(trText("Simulator", "%1 needs a value"), {option}));
        const std::string value = argv[index];
        if (option == "--style") {
            const auto found = std::find_if(styles().begin(), styles().end(),
                                            [&](const Style& candidate) { return value == candidate.name; });
            if (found == styles().end())
                return refuseArguments(filled(trText("Simulator", "there is no style '%1'"), {value}));
            style = &*found;
        } else if (option == "--seed") {
            if (!simulator::parseInteger(value, seed) || seed < 0)
                return refuseArguments(
                    filled(trText("Simulator", "the seed '%1' is not 0 or a positive integer"), {value}));
        } else if (option == "--model") {
            pad = simulator::padForModel(value);
            if (pad == nullptr)
                return refuseArguments(filled(trText("Simulator", "there is no model '%1'"), {value}));
        } else {
            output = value;
        }
    }
    if (style == nullptr)
        return refuseArguments(filled(trText("Simulator", "%1 is missing"), {"--style"}));
    std::string error;
    if (!simulator::writeRecording(generate(*style, static_cast<std::uint64_t>(seed), *pad), output, error)) {
        std::fprintf(stderr, "scribera-sim-generate: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
