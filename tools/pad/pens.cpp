#include "pens.h"

#include "devices.h"
#include "failures.h"
#include "mapping.h"
#include "settings.h"
#include "surfacedrawing.h"

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
        return QStringLiteral("no: ") + toText(device.judgement.reason);
    if (&device == chosen)
        return QStringLiteral("yes: signed on");
    return device.judgement.kind == pen::Kind::Touchpad
               ? QStringLiteral("yes, where SCRIBERA_PEN_DEVICE names it")
               : QStringLiteral("yes");
}

QString axisText(const Axis& axis)
{
    return QStringLiteral("%1 to %2").arg(axis.minimum).arg(axis.maximum) +
           (axis.resolution > 0 ? QStringLiteral(", %1 units/mm").arg(axis.resolution) : QString());
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
        return QStringLiteral("none");
    const char* const name = libevdev_event_code_get_name(EV_KEY, button->code);
    const QString code = name ? QString::fromLatin1(name) : QString::number(button->code);
    if (!button->device.empty())
        return QStringLiteral("%1 of %2").arg(code, toText(button->device));
    if (device.buttons[button->code])
        return code + QStringLiteral(" of this device");
    return code + (button->isUsual ? QStringLiteral(", which this device does not have")
                                   : QStringLiteral(" of another device"));
}

// Size of what is used, and where it begins.
QString usedText(const pen::Surface& surface, const Stretch& x, const Stretch& y)
{
    const auto begin = [](const Axis& axis, const Stretch& stretch) {
        return std::min(std::abs(stretch.firstValue() - axis.minimum),
                        std::abs(stretch.lastValue() - axis.minimum));
    };
    const auto length = [](const Stretch& stretch) { return stretch.lastValue() - stretch.firstValue(); };
    const auto mm = [](const Axis& axis, double value) {
        return QString::number(millimetres(axis, value), 'f', 1);
    };
    if (surface.x.resolution <= 0 || surface.y.resolution <= 0)
        return QStringLiteral("x %1 to %2, y %3 to %4; the device does not tell its size")
            .arg(QString::number(x.firstValue(), 'f', 1), QString::number(x.lastValue(), 'f', 1),
                 QString::number(y.firstValue(), 'f', 1), QString::number(y.lastValue(), 'f', 1));
    return QStringLiteral("%1 x %2 mm of %3 x %4 mm, %5 mm from the left and %6 mm from the top")
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
                          device.judgement.kind == pen::Kind::None
                              ? QStringLiteral("-")
                              : QString::fromLatin1(nameOf(device.judgement.kind)),
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
        QString text;
        const auto line = [&text](const char* name, const QString& value) {
            text += QString::fromLatin1(name).leftJustified(16) + value + QLatin1Char('\n');
        };
        line("device:", QStringLiteral("%1, %2, a %3")
                            .arg(toText(device.node), toText(device.name),
                                 QString::fromLatin1(nameOf(device.judgement.kind))));
        line("its x axis:", axisText(surface.x));
        line("its y axis:", axisText(surface.y));
        line("its pressure:", surface.pressure ? axisText(*surface.pressure)
                                               : QStringLiteral("not felt; half of the pad's is told"));
        line("confirm key:", buttonText(look.settings.confirm, device));
        line("cancel key:", buttonText(look.settings.cancel, device));
        line("used:", usedText(surface, mapping.usedX(), mapping.usedY()));
        return text + drawingOf(surface, mapping, look.settings.rotation % 180 != 0);
    });
}

QString chosenDevice()
{
    return orFailure<QString>([] {
        const Look look;
        const Found& device = look.chosen();
        return QStringLiteral("%1, %2, a %3")
            .arg(toText(device.node), toText(device.name),
                 QString::fromLatin1(nameOf(device.judgement.kind)));
    });
}
