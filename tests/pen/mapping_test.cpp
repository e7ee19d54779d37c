// The driver's arithmetic against exact fractions, which a Python program of the tests computes.
#include "mapping.h"
#include "pythonprogram.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

#include "model/padmodel.h"

namespace pen {
namespace {

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();

struct MappingCase
{
    Axis x;
    Axis y;
    Axis pressure;
    const CPadModel* model;
    Settings settings;
    int atX;
    int atY;
    int force;
};

std::ostream& operator<<(std::ostream& out, const MappingCase& c)
{
    const auto axis = [&](const Axis& a) {
        out << a.minimum << ' ' << a.maximum << ' ' << a.resolution << ' ';
    };
    const CPadModel& pad = *c.model;
    axis(c.x);
    axis(c.y);
    out << pad.m_nPadOriginX << ' ' << pad.m_nPadOriginY << ' ' << pad.m_nAreaWidth << ' '
        << pad.m_nAreaHeight << ' ' << pad.PressureLimit(pad.m_nInitialMaxPressure) << ' '
        << (c.settings.fit == Fit::Keep ? "keep" : "stretch") << ' ' << c.settings.rotation << ' ';
    const SurfaceArea area = c.settings.area.value_or(SurfaceArea{0, 0, 0, 0});
    return out << area.left << ' ' << area.top << ' ' << area.width << ' ' << area.height << ' '
               << c.pressure.minimum << ' ' << c.pressure.maximum << ' ' << c.atX << ' ' << c.atY << ' '
               << c.force;
}

std::array<int, 3> answer(const MappingCase& c)
{
    const CPadModel& pad = *c.model;
    const Mapping mapping(
        c.x, c.y, {pad.m_nPadOriginX, pad.m_nPadOriginY, pad.m_nAreaWidth, pad.m_nAreaHeight}, c.settings);
    const PadPoint point = mapping.map(c.atX, c.atY);
    const std::optional<Axis> pressure = c.pressure.isUsable() ? std::optional(c.pressure) : std::nullopt;
    return {point.x, point.y, padPressure(pressure, c.force, pad.PressureLimit(pad.m_nInitialMaxPressure))};
}

class Cases
{
public:
    explicit Cases(unsigned seed) : m_engine(seed) {}

    int among(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_engine); }
    bool oneOf(int count) { return among(1, count) == 1; }

    Axis axis()
    {
        constexpr int kEnds[] = {kLeast, kLeast + 1, -1, 0, 1, kMost - 1, kMost};
        const auto end = [&] {
            return oneOf(4) ? kEnds[among(0, 6)] : oneOf(3) ? among(kLeast, kMost) : among(-500, 60000);
        };
        Axis result{end(), end(), oneOf(4) ? 0 : oneOf(4) ? among(1, kMost) : among(1, 400)};
        if (!result.isUsable())
            result.maximum += result.maximum == kMost ? -1 : 1;
        return result;
    }

    int value(const Axis& axis)
    {
        if (oneOf(8))
            return among(kLeast, kMost);
        if (oneOf(8))
            return oneOf(2) ? axis.minimum : axis.maximum;
        return static_cast<int>(axis.minimum + axis.span() * among(0, 100000) / 100000);
    }

    MappingCase next()
    {
        MappingCase c{axis(), axis(), axis(), nullptr, {}, 0, 0, 0};
        if (oneOf(5))
            c.pressure.maximum = c.pressure.minimum;
        c.model = AllPads()[static_cast<std::size_t>(among(0, static_cast<int>(AllPads().size()) - 1))];
        c.settings.fit = oneOf(2) ? Fit::Keep : Fit::Stretch;
        c.settings.rotation = 90 * among(0, 3);
        if (c.x.resolution > 0 && c.y.resolution > 0 && oneOf(2))
            c.settings.area = part(c.x, c.y);
        c.atX = value(c.x);
        c.atY = value(c.y);
        c.force = value(c.pressure);
        return c;
    }

private:
    // A part of the device, if it has as much as a micrometre to spare.
    std::optional<SurfaceArea> part(const Axis& x, const Axis& y)
    {
        const auto stretch = [&](const Axis& axis) -> std::pair<long long, long long> {
            const long long all = std::abs(axis.span()) * 1000 / axis.resolution;
            const long long begin = all * among(0, 99) / 100;
            return {begin, (all - begin) * among(1, 100) / 100};
        };
        const auto [left, width] = stretch(x);
        const auto [top, height] = stretch(y);
        if (width == 0 || height == 0)
            return std::nullopt;
        return SurfaceArea{left, top, width, height};
    }

    std::mt19937 m_engine;
};

void expectExact(const std::vector<MappingCase>& cases)
{
    std::ostringstream questions;
    for (const MappingCase& c : cases)
        questions << c << '\n';
    std::istringstream answers(scribera::test::runPython("formula.py", {}, questions.str()));
    for (const MappingCase& c : cases) {
        std::array<int, 3> exact{};
        ASSERT_TRUE(answers >> exact[0] >> exact[1] >> exact[2]) << c;
        ASSERT_EQ(answer(c), exact) << c;
    }
}

TEST(PenDriverMapping, IsExactForRandomDevices)
{
    const char* const wanted = std::getenv("SCRIBERA_TEST_SEED");
    const unsigned seed =
        wanted ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : std::random_device{}();
    RecordProperty("seed", std::to_string(seed));
    SCOPED_TRACE("SCRIBERA_TEST_SEED=" + std::to_string(seed));
    Cases random(seed);
    std::vector<MappingCase> cases;
    for (int i = 0; i < 20000; ++i)
        cases.push_back(random.next());
    expectExact(cases);
}

// Every value of an axis at which the rounding could go either way, for all pads.
TEST(PenDriverMapping, RoundsHalvesUpEverywhere)
{
    std::vector<MappingCase> cases;
    for (const CPadModel* model : AllPads()) {
        // Two values for each step of the pad: each other one lies on a half.
        const Axis x{0, 2 * (model->m_nAreaWidth - 1), 0};
        const Axis inverted{2 * (model->m_nAreaHeight - 1), 0, 0};
        const Axis pressure{0, 2 * (model->PressureLimit(model->m_nInitialMaxPressure) - 1), 0};
        Settings stretch;
        stretch.fit = Fit::Stretch;
        for (int i = 0; i < 400; ++i)
            cases.push_back({x, inverted, pressure, model, stretch, i, i, i});
    }
    expectExact(cases);
}

TEST(PenDriverMapping, ReachesTheCornersOfEveryPad)
{
    const Axis x{-100, 20000, 0};
    const Axis y{9000, 3, 0};
    for (const CPadModel* model : AllPads()) {
        const WritingArea area{model->m_nPadOriginX, model->m_nPadOriginY, model->m_nAreaWidth,
                               model->m_nAreaHeight};
        const int right = area.left + area.width - 1;
        const int bottom = area.top + area.height - 1;
        Settings settings;
        settings.fit = Fit::Stretch;
        const PadPoint corners[] = {
            {area.left, area.top}, {right, area.top}, {right, bottom}, {area.left, bottom}};
        const PadPoint device[] = {
            {x.minimum, y.minimum}, {x.maximum, y.minimum}, {x.maximum, y.maximum}, {x.minimum, y.maximum}};
        for (std::size_t quarter = 0; quarter < 4; ++quarter) {
            settings.rotation = static_cast<int>(90 * quarter);
            const Mapping mapping(x, y, area, settings);
            for (std::size_t corner = 0; corner < 4; ++corner)
                EXPECT_EQ(mapping.map(device[corner].x, device[corner].y), corners[(corner + quarter) % 4])
                    << model->m_pszName << ' ' << settings.rotation << ' ' << corner;
        }
    }
}

TEST(PenDriverMapping, KeepsTheProportionsInTheMiddle)
{
    // 200 x 100 mm for a pad of 1:1: the middle 100 mm of the first axis.
    const Mapping mapping({0, 4000, 20}, {0, 1000, 10}, {0, 0, 500, 500}, {});
    EXPECT_EQ(mapping.usedX().firstValue(), 1000);
    EXPECT_EQ(mapping.usedX().lastValue(), 3000);
    EXPECT_EQ(mapping.usedY().firstValue(), 0);
    EXPECT_EQ(mapping.usedY().lastValue(), 1000);
    EXPECT_EQ(mapping.map(0, 0), (PadPoint{0, 0})) << "what lies outside lands on the edge";
    EXPECT_EQ(mapping.map(4000, 1000), (PadPoint{499, 499}));
}

TEST(PenDriverMapping, OneMissingResolutionMakesBothEqual)
{
    for (const auto& [across, down] :
         {std::pair{0, 50}, std::pair{50, 0}, std::pair{-3, 50}, std::pair{0, 0}}) {
        const Mapping mapping({0, 2000, across}, {0, 1000, down}, {0, 0, 500, 500}, {});
        EXPECT_EQ(mapping.usedX().firstValue(), 500) << across << ' ' << down;
        EXPECT_EQ(mapping.usedX().lastValue(), 1500) << across << ' ' << down;
    }
}

TEST(PenDriverMapping, RefusesAnAreaThatIsNotOnTheDevice)
{
    const auto refusal = [](Axis x, Axis y, SurfaceArea area) -> std::string {
        Settings settings;
        settings.area = area;
        try {
            Mapping(x, y, {0, 0, 100, 100}, settings);
        } catch (const Refusal& error) {
            return error.what();
        }
        return "";
    };
    const Axis x{0, 2000, 10};
    const Axis y{1500, 0, 10};
    EXPECT_EQ(refusal(x, y, {0, 0, 200000, 150000}), "");
    EXPECT_EQ(refusal(x, y, {0, 0, 200001, 150000}),
              "SCRIBERA_PEN_AREA does not lie on the device, which has 200 x 150 mm");
    EXPECT_EQ(refusal(x, y, {0, 1, 200000, 150000}),
              "SCRIBERA_PEN_AREA does not lie on the device, which has 200 x 150 mm");
    EXPECT_EQ(refusal({0, 2000, 0}, y, {0, 0, 1000, 1000}),
              "SCRIBERA_PEN_AREA cannot be used: the device does not tell its size");
}

TEST(PenDriverMapping, TouchNeverHasNoPressure)
{
    for (const int limit : {2048, 8192}) {
        EXPECT_EQ(padPressure(std::nullopt, 77, limit), limit / 2);
        for (const Axis& axis : {Axis{0, 1023, 0}, Axis{1023, 0, 0}, Axis{kLeast, kMost, 0}}) {
            EXPECT_EQ(padPressure(axis, axis.minimum, limit), 1);
            EXPECT_EQ(padPressure(axis, axis.maximum, limit), limit);
        }
        EXPECT_EQ(padPressure(Axis{0, 1023, 0}, kLeast, limit), 1);
        EXPECT_EQ(padPressure(Axis{0, 1023, 0}, kMost, limit), limit);
    }
}

} // namespace
} // namespace pen
