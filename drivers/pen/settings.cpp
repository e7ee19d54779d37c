#include "settings.h"

#include "texts.h"

#include <libevdev/libevdev.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string_view>

namespace pen {
namespace {

std::string variable(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

[[noreturn]] void refuse(const char* name, const std::string& value, const std::string& wanted)
{
    throw Refusal(filled(trText("PenDriver", "%1 is \"%2\"; it has to be %3"), {name, value, wanted}));
}

// Millimetres with a decimal point, as micrometres; a device of more than ten metres is none.
std::optional<long long> micrometres(std::string_view text)
{
    double millimetres = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), millimetres);
    if (error != std::errc() || end != text.data() + text.size() || !(std::abs(millimetres) <= 10000))
        return std::nullopt;
    return std::llround(millimetres * 1000);
}

std::optional<SurfaceArea> readArea()
{
    constexpr char kName[] = "SCRIBERA_PEN_AREA";
    const std::string wanted =
        trText("PenDriver", "left,top,width,height in millimetres, such as 10,10,120.5,80");
    const std::string value = variable(kName);
    if (value.empty())
        return std::nullopt;
    std::array<long long, 4> numbers{};
    std::string_view rest = value;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const bool last = i + 1 == numbers.size();
        const std::size_t comma = rest.find(',');
        if (last != (comma == std::string_view::npos))
            refuse(kName, value, wanted);
        const std::optional<long long> number = micrometres(rest.substr(0, comma));
        if (!number)
            refuse(kName, value, wanted);
        numbers[i] = *number;
        if (!last)
            rest.remove_prefix(comma + 1);
    }
    const SurfaceArea area{numbers[0], numbers[1], numbers[2], numbers[3]};
    if (area.left < 0 || area.top < 0 || area.width <= 0 || area.height <= 0)
        refuse(kName, value, wanted);
    return area;
}

// "CODE", "CODE@DEVICE" or "none".
std::optional<Button> readButton(const char* name, unsigned usual)
{
    const std::string value = variable(name);
    if (value.empty())
        return Button{usual, {}, true};
    if (value == "none")
        return std::nullopt;
    const std::size_t at = value.find('@');
    const int code = libevdev_event_code_from_name(EV_KEY, value.substr(0, at).c_str());
    if (code < 0 || (at != std::string::npos && at + 1 == value.size()))
        refuse(name, value,
               trText("PenDriver",
                      "the name of a key or button, such as BTN_STYLUS or KEY_ENTER, with @ and a part of a "
                      "device's name behind it or not, or none"));
    return Button{static_cast<unsigned>(code), at == std::string::npos ? "" : value.substr(at + 1)};
}

bool readSwitch(const char* name, bool usual)
{
    const std::string value = variable(name);
    if (!value.empty() && value != "0" && value != "1")
        refuse(name, value, trText("PenDriver", "0 or 1"));
    return value.empty() ? usual : value == "1";
}

Fit readFit()
{
    constexpr char kName[] = "SCRIBERA_PEN_FIT";
    const std::string value = variable(kName);
    if (!value.empty() && value != "keep" && value != "stretch")
        refuse(kName, value, trText("PenDriver", "keep or stretch"));
    return value == "stretch" ? Fit::Stretch : Fit::Keep;
}

int readRotation()
{
    constexpr char kName[] = "SCRIBERA_PEN_ROTATE";
    const std::string value = variable(kName);
    for (const int degrees : {0, 90, 180, 270}) {
        if (value == std::to_string(degrees))
            return degrees;
    }
    if (!value.empty())
        refuse(kName, value, trText("PenDriver", "0, 90, 180 or 270"));
    return 0;
}

} // namespace

Settings readSettings()
{
    Settings settings;
    settings.device = variable("SCRIBERA_PEN_DEVICE");
    settings.fit = readFit();
    settings.area = readArea();
    settings.rotation = readRotation();
    settings.confirm = readButton("SCRIBERA_PEN_CONFIRM", BTN_STYLUS2);
    settings.cancel = readButton("SCRIBERA_PEN_CANCEL", BTN_STYLUS);
    settings.grab = readSwitch("SCRIBERA_PEN_GRAB", true);
    return settings;
}

} // namespace pen
