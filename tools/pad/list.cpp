// scribera-pad list: the input devices and drivers that are there.
#include "commands.h"
#include "driver.h"
#include "failures.h"
#include "output.h"
#include "pens.h"
#include "program.h"

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
    return rows.isEmpty() ? QStringLiteral("  none\n") : table(rows);
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
         {Place{QStringLiteral("current folder"), driverHere()}, Place{QStringLiteral("pen"), penDriver()},
          Place{QStringLiteral("simulated"), simulatedDriver()}}) {
        const QString fault = faultOf(place.driver, nullptr);
        rows.append({place.name, place.driver.path,
                     fault.isEmpty() ? QStringLiteral("yes: ") + nameOf(place.driver.kind)
                                     : QStringLiteral("no: ") + fault});
    }
    return table(rows);
}

} // namespace

int listDevices(const QCommandLineParser&, const QString&)
{
    writeOutput((QStringLiteral("Input devices, and whether they can be signed on:\n") + devicesText() +
                 QStringLiteral("Drivers, and whether they can be used:\n") + driversText())
                    .toLocal8Bit(),
                QStringLiteral("-"));
    return Done;
}
