#include "pens.h"

#include "devices.h"
#include "failures.h"
#include "mapping.h"
#include "settings.h"
#include "surfacedrawing.h"
#include "text.h"

#include <libevdev/libevdev.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace {

using pen::Axis;
using pen::Found;
using pen::Stretch;

QString toText(const std::string& text)
{
    return QString::fromStdString(text);
}

// What the driver refuses, in its own words.
template <typename Result>
Result orFailure(const std::function<Result()>& work)
{
    try {
        return work();
    } catch (const pen::Refusal& refusal) {
        throw Failure{toText(refusal.what())};
    }
}

struct Look
{
    pen::Settings settings = pen::readSettings();
    std::vector<Found> devices = pen::Udev().devices(settings.device);

    const Found& chosen() const { return pen::choose(devices, settings.device); }
    const Found* chosenOrNone() const
    {
        try {
            return &chosen();
        } catch (const pen::Refusal&) {
            return nullptr;
        }
    }
};

QString verdictOn(const Found& device, const Found* chosen)
{
    if (device.judgement.kind == pen::Kind::None)
        return Text::tr("no: %1").arg(toText(device.judgement.reason));
    if (&device == chosen)
        return Text::tr("yes: signed on");
    return device.judgement.kind == pen::Kind::Touchpad ? Text::tr("yes, where SCRIBERA_PEN_DEVICE names it")
                                                        : Text::tr("yes");
}

QString summaryOf(const Found& device)
{
    return Text::tr("%1, %2, a %3")
        .arg(toText(device.node), toText(device.name), toText(nameOf(device.judgement.kind)));
}

QString axisText(const Axis& axis)
{
    const QString range = Text::tr("%1 to %2").arg(numberText(axis.minimum), numberText(axis.maximum));
    return axis.resolution > 0 ? Text::tr("%1, %2 units/mm").arg(range, numberText(axis.resolution)) : range;
}

// Where a value lies on an axis, from 0 at its beginning to 1.
double placeOf(const Axis& axis, double value)
{
    return (value - axis.minimum) / static_cast<double>(axis.span());
}

double millimetres(const Axis& axis, double value)
{
    return std::abs(value) / axis.resolution;
}

QString buttonText(const std::optional<pen::Button>& button, const Found& device)
{
    if (!button)
        return Text::tr("none", "button");
    const char* const name = libevdev_event_code_get_name(EV_KEY, button->code);
    const QString code = name ? QString::fromLatin1(name) : QString::number(button->code);
    if (!button->device.empty())
        return Text::tr("%1 of %2").arg(code, toText(button->device));
    if (device.buttons[button->code])
        return Text::tr("%1 of this device").arg(code);
    return (button->isUsual ? Text::tr("%1, which this device does not have")
                            : Text::tr("%1 of another device"))
        .arg(code);
}

// Size of what is used, and where it begins.
QString usedText(const pen::Surface& surface, const Stretch& x, const Stretch& y)
{
    const auto begin = [](const Axis& axis, const Stretch& stretch) {
        return std::min(std::abs(stretch.firstValue() - axis.minimum),
                        std::abs(stretch.lastValue() - axis.minimum));
    };
    const auto length = [](const Stretch& stretch) { return stretch.lastValue() - stretch.firstValue(); };
    const auto mm = [](const Axis& axis, double value) { return numberText(millimetres(axis, value), 1); };
    if (surface.x.resolution <= 0 || surface.y.resolution <= 0)
        return Text::tr("x %1 to %2, y %3 to %4; the device does not tell its size")
            .arg(numberText(x.firstValue(), 1), numberText(x.lastValue(), 1), numberText(y.firstValue(), 1),
                 numberText(y.lastValue(), 1));
    return Text::tr("%1 x %2 mm of %3 x %4 mm, %5 mm from the left and %6 mm from the top")
        .arg(mm(surface.x, length(x)), mm(surface.y, length(y)),
             mm(surface.x, static_cast<double>(surface.x.span())),
             mm(surface.y, static_cast<double>(surface.y.span())), mm(surface.x, begin(surface.x, x)),
             mm(surface.y, begin(surface.y, y)));
}

QString drawingOf(const pen::Surface& surface, const pen::Mapping& mapping, bool isTurned)
{
    const Stretch& x = mapping.usedX();
    const Stretch& y = mapping.usedY();
    UsedSurface used;
    used.left = placeOf(surface.x, x.firstValue());
    used.right = placeOf(surface.x, x.lastValue());
    used.top = placeOf(surface.y, y.firstValue());
    used.bottom = placeOf(surface.y, y.lastValue());
    used.isTurned = isTurned;
    const bool hasSize = surface.x.resolution > 0 && surface.y.resolution > 0;
    const auto size = [&](const Axis& axis) {
        return std::abs(static_cast<double>(axis.span())) / (hasSize ? axis.resolution : 1);
    };
    return drawing(used, size(surface.x) / size(surface.y));
}

} // namespace

QList<InputDeviceLine> inputDevices()
{
    return orFailure<QList<InputDeviceLine>>([] {
        const Look look;
        const Found* const chosen = look.chosenOrNone();
        QList<InputDeviceLine> lines;
        for (const Found& device : look.devices)
            lines.append({toText(device.node), toText(device.name),
                          device.judgement.kind == pen::Kind::None ? QStringLiteral("-")
                                                                   : toText(nameOf(device.judgement.kind)),
                          verdictOn(device, chosen)});
        return lines;
    });
}

QString deviceOf(const CPadModel& model)
{
    return orFailure<QString>([&model] {
        const Look look;
        const Found& device = look.chosen();
        const pen::Surface& surface = device.judgement.surface;
        const pen::Mapping mapping(
            surface.x, surface.y,
            {model.m_nPadOriginX, model.m_nPadOriginY, model.m_nAreaWidth, model.m_nAreaHeight},
            look.settings);
        NamedLines lines(16);
        lines.add(Text::tr("device:"), summaryOf(device));
        lines.add(Text::tr("its x axis:"), axisText(surface.x));
        lines.add(Text::tr("its y axis:"), axisText(surface.y));
        lines.add(Text::tr("its pressure:"), surface.pressure
                                                 ? axisText(*surface.pressure)
                                                 : Text::tr("not felt; half of the pad's is told"));
        lines.add(Text::tr("confirm key:"), buttonText(look.settings.confirm, device));
        lines.add(Text::tr("cancel key:"), buttonText(look.settings.cancel, device));
        lines.add(Text::tr("used:"), usedText(surface, mapping.usedX(), mapping.usedY()));
        return lines.text() + drawingOf(surface, mapping, look.settings.rotation % 180 != 0);
    });
}

QString chosenDevice()
{
    return orFailure<QString>([] {
        const Look look;
        return summaryOf(look.chosen());
    });
}
