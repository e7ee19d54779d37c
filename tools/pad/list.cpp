// scribera-pad list: the input devices and drivers that are there.
#include "commands.h"
#include "driver.h"
#include "failures.h"
#include "output.h"
#include "pens.h"
#include "program.h"
#include "text.h"

#include <QStringList>

#include <algorithm>

namespace {

// Columns as wide as their widest cell; the last one ends the line.
QString table(const QList<QStringList>& rows)
{
    QList<int> widths;
    for (const QStringList& row : rows) {
        while (widths.size() < row.size())
            widths.append(0);
        for (int column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], static_cast<int>(row[column].size()));
    }
    QString text;
    for (const QStringList& row : rows) {
        text += QStringLiteral("  ");
        for (int column = 0; column < row.size(); ++column)
            text += column + 1 < row.size() ? row[column].leftJustified(widths[column] + 2) : row[column];
        text += QLatin1Char('\n');
    }
    return text;
}

QString devicesText()
{
    QList<QStringList> rows;
    try {
        for (const InputDeviceLine& device : inputDevices())
            rows.append({device.node, device.name, device.kind, device.verdict});
    } catch (const Failure& failure) {
        return QStringLiteral("  ") + failure.reason + QLatin1Char('\n');
    }
    return rows.isEmpty() ? QStringLiteral("  %1\n").arg(Text::tr("none", "device")) : table(rows);
}

QString driversText()
{
    struct Place
    {
        QString name;
        Driver driver;
    };
    QList<QStringList> rows;
    for (const Place& place :
         {Place{Text::tr("current folder"), driverHere()}, Place{QStringLiteral("pen"), penDriver()},
          Place{QStringLiteral("simulated"), simulatedDriver()}}) {
        const QString fault = faultOf(place.driver, nullptr);
        rows.append({place.name, place.driver.path,
                     fault.isEmpty() ? Text::tr("yes: %1").arg(nameOf(place.driver.kind))
                                     : Text::tr("no: %1").arg(fault)});
    }
    return table(rows);
}

} // namespace

int listDevices(const QCommandLineParser&, const QString&)
{
    writeOutput((Text::tr("Input devices, and whether they can be signed on:") + QLatin1Char('\n') +
                 devicesText() + Text::tr("Drivers, and whether they can be used:") + QLatin1Char('\n') +
                 driversText())
                    .toLocal8Bit(),
                QStringLiteral("-"));
    return Done;
}
