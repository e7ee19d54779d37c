#include "inkpad.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr const CPadModel* Pads[] = {&g_PadK210, &g_PadK420, &g_PadK421B, &g_PadKM730, &g_PadT580};

// "SCK210_" is the family of the K210.
QString nameOf(const CPadModel& pad)
{
    return QString::fromLatin1(pad.m_pszFamily).mid(2).chopped(1);
}

} // namespace

QStringList padNames()
{
    QStringList names;
    for (const CPadModel* pad : Pads)
        names += nameOf(*pad);
    return names;
}

const CPadModel* padNamed(const QString& name)
{
    const auto found = std::find_if(std::begin(Pads), std::end(Pads), [&name](const CPadModel* pad) {
        return name == nameOf(*pad) || name == QLatin1String("SC") + nameOf(*pad);
    });
    return found == std::end(Pads) ? nullptr : *found;
}
