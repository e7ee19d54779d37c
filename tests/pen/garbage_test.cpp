// Recordings that break off anywhere and have wrong bytes in them: strokes are whole all the same.
#include "devices.h"
#include "wholestrokes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>

#include "mockdevices.h"
#include "model/padmodel.h"
#include "pen.h"
#include "pendriver.h"

namespace scribera::test {
namespace {

class Damage
{
public:
    Damage()
    {
        const char* const wanted = std::getenv("SCRIBERA_TEST_SEED");
        m_seed = wanted ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : std::random_device{}();
        m_engine.seed(m_seed);
    }
    std::string seed() const { return "SCRIBERA_TEST_SEED=" + std::to_string(m_seed); }

    std::vector<Event> damaged(std::vector<Event> events)
    {
        if (events.empty())
            return events;
        events.resize(among(1, events.size()));
        auto* const bytes = reinterpret_cast<unsigned char*>(events.data());
        for (std::size_t flips = among(0, 30); flips > 0; --flips)
            bytes[among(0, events.size() * sizeof(Event) - 1)] ^=
                static_cast<unsigned char>(1u << among(0, 7));
        return events;
    }

private:
    std::size_t among(std::size_t low, std::size_t high)
    {
        return std::uniform_int_distribution<std::size_t>(low, high)(m_engine);
    }

    unsigned m_seed;
    std::mt19937 m_engine;
};

class PenDriverDamaged : public testing::TestWithParam<std::string>
{
protected:
    MockDevices m_devices;
    Damage m_damage;
};

TEST_P(PenDriverDamaged, RecordingsStayWholeStrokes)
{
    SCOPED_TRACE(m_damage.seed());
    const std::vector<Event> events = eventsOf(recordingNamed(GetParam()));
    m_devices.plug(recordingNamed(GetParam()));
    const pen::Surface surface = judge(pen::InputDevice("/dev/input/event5")).surface;
    const CPadModel& model = g_PadK421B;
    const pen::WritingArea area{model.m_nPadOriginX, model.m_nPadOriginY, model.m_nAreaWidth,
                                model.m_nAreaHeight};
    const int limit = model.PressureLimit(model.m_nInitialMaxPressure);
    for (int i = 0; i < 100; ++i) {
        WholeStrokes strokes(area, limit);
        pen::Reports reports(surface, pen::Mapping(surface.x, surface.y, area, {}), limit,
                             [&](const pen::Sample& sample) { strokes.take(sample); });
        reports.setKeyCodes(BTN_STYLUS2, BTN_STYLUS);
        for (const Event& event : m_damage.damaged(events)) {
            if (event.type == EV_SYN && event.code == SYN_DROPPED)
                reports.lose();
            else
                reports.take(event.type, event.code, event.value);
        }
        reports.end();
        ASSERT_TRUE(strokes.isRight()) << i;
        ASSERT_FALSE(strokes.hasOpenStroke()) << i;
    }
}

TEST_P(PenDriverDamaged, EventsOfADeviceStayWholeStrokes)
{
    SCOPED_TRACE(m_damage.seed());
    const std::vector<Event> events = eventsOf(recordingNamed(GetParam()));
    MockKernel& device = m_devices.plug(recordingNamed(GetParam()));
    installPenDriver();
    const PadModel& model = padModel("K421B");
    WholeStrokes strokes({model.originX, model.originY, model.areaWidth, model.areaHeight},
                         model.maxPressure);
    PenDriver driver;
    std::size_t seen = 0;
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(driver.start(model.deviceType), 0);
        device.send(m_damage.damaged(events));
        ASSERT_TRUE(device.waitUntilTaken());
        ASSERT_EQ(driver.UnInitial(), 0);
        const std::vector<PadSample> samples = driver.samples();
        for (; seen < samples.size(); ++seen)
            strokes.take({samples[seen].x, samples[seen].y, samples[seen].pressure, samples[seen].status});
        strokes.end();
        ASSERT_TRUE(strokes.isRight()) << i;
        ASSERT_FALSE(strokes.hasOpenStroke()) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(, PenDriverDamaged,
                         testing::Values("offset", "inverted", "by-pressure", "buttons", "lost", "absurd",
                                         "fingers", "lost-fingers"),
                         [](const auto& info) {
                             std::string name = info.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

} // namespace
} // namespace scribera::test
