// The pen driver's way from the events of a device to the samples of a pad: the input describes a device, how
// it is mounted, and what happens on it.

#include "fuzzer.h"
#include "model/padmodel.h"
#include "reports.h"
#include "wholestrokes.h"

#include <cstring>
#include <iterator>

#include <linux/input.h>

namespace {

using namespace pen;

class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : m_at(data), m_end(data + size) {}

    bool isAtEnd() const { return m_at == m_end; }
    int below(int limit) { return take<std::uint8_t>() % limit; }
    template <typename T>
    T take() // zeros behind the end
    {
        T value{};
        const std::size_t size = std::min(sizeof value, static_cast<std::size_t>(m_end - m_at));
        std::memcpy(&value, m_at, size);
        m_at += size;
        return value;
    }
    template <typename T, std::size_t size>
    T oneOf(const T (&values)[size])
    {
        return values[below(static_cast<int>(size))];
    }

private:
    const std::uint8_t* m_at;
    const std::uint8_t* const m_end;
};

Axis axisOf(Input& input)
{
    const Axis axis{input.take<int>(), input.take<int>(), input.take<int>()};
    return axis.isUsable() ? axis : Axis{0, 1, axis.resolution}; // others are not signed on
}

Surface surfaceOf(Input& input)
{
    Surface surface;
    surface.touch = static_cast<Touch>(input.below(3));
    surface.x = axisOf(input);
    surface.y = axisOf(input);
    if (surface.touch == Touch::Pressure || input.below(2) == 1)
        surface.pressure = axisOf(input);
    surface.slots = surface.touch == Touch::Contacts ? 1 + input.below(255) : 0;
    surface.fingersWrite = input.below(2) == 1;
    return surface;
}

Settings settingsOf(Input& input)
{
    constexpr long long kLongest = 10000000; // micrometres
    Settings settings;
    settings.fit = input.below(2) == 1 ? Fit::Stretch : Fit::Keep;
    settings.rotation = 90 * input.below(4);
    if (input.below(2) == 1) {
        const auto length = [&] { return input.take<std::uint32_t>() % kLongest; };
        settings.area = SurfaceArea{length(), length(), 1 + length(), 1 + length()};
    }
    return settings;
}

void happen(Input& input, Reports& reports)
{
    constexpr unsigned kButtons[] = {BTN_TOUCH,       BTN_STYLUS,     BTN_STYLUS2,    BTN_TOOL_PEN,
                                     BTN_TOOL_RUBBER, BTN_TOOL_MOUSE, BTN_TOOL_FINGER};
    constexpr unsigned kAxes[] = {ABS_X,
                                  ABS_Y,
                                  ABS_PRESSURE,
                                  ABS_MT_SLOT,
                                  ABS_MT_POSITION_X,
                                  ABS_MT_POSITION_Y,
                                  ABS_MT_TRACKING_ID,
                                  ABS_MT_TOOL_TYPE,
                                  ABS_MT_PRESSURE};
    switch (input.below(8)) {
    case 0:
        reports.lose();
        break;
    case 1:
        reports.take(EV_KEY, input.oneOf(kButtons), input.below(3));
        break;
    case 2:
        reports.take(EV_ABS, input.oneOf(kAxes), input.take<std::int8_t>());
        break;
    case 3:
        reports.take(EV_ABS, input.oneOf(kAxes), input.take<int>());
        break;
    case 4:
        reports.take(input.take<std::uint16_t>(), input.take<std::uint16_t>(), input.take<int>());
        break;
    case 5:
        reports.key(input.below(2) == 1 ? ConfirmKey : CancelKey, input.below(2) == 1);
        break;
    default:
        reports.take(EV_SYN, SYN_REPORT, 0);
    }
}

} // namespace

int LLVMFuzzerInitialize(int*, char***)
{
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const CPadModel& model =
        *AllPads()[static_cast<std::size_t>(input.below(static_cast<int>(AllPads().size())))];
    const WritingArea area{model.m_nPadOriginX, model.m_nPadOriginY, model.m_nAreaWidth, model.m_nAreaHeight};
    const int limit = model.PressureLimit(model.m_nInitialMaxPressure);
    const Surface surface = surfaceOf(input);
    const Settings settings = settingsOf(input);
    try {
        const Mapping mapping(surface.x, surface.y, area, settings);
        scribera::test::WholeStrokes strokes(area, limit);
        Reports reports(surface, mapping, limit, [&](const Sample& sample) { strokes.take(sample); });
        reports.setKeyCodes(BTN_STYLUS2, BTN_STYLUS);
        while (!input.isAtEnd())
            happen(input, reports);
        reports.end();
        require(strokes.isRight(), "samples are whole strokes and keys on the pad");
        require(!strokes.hasOpenStroke(), "no stroke is left open");
    } catch (const Refusal&) {
        require(settings.area.has_value(), "only an area is refused");
    }
    return 0;
}
