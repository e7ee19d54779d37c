#include "display.h"

#include "apart.h"
#include "text.h"

#include <QGuiApplication>

#include <array>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace {

// Runs apart.
QByteArray platformName()
{
    // What Qt has to complain about is told in one line elsewhere.
    const int nothing = open("/dev/null", O_WRONLY);
    dup2(nothing, STDERR_FILENO);
    std::array<char, 16> name = {"scribera-pad"};
    std::array<char*, 2> arguments = {name.data(), nullptr};
    int count = 1;
    new QGuiApplication(count, arguments.data()); // the process ends without it
    return QGuiApplication::platformName().toUtf8();
}

WindowPlatform tryDisplay()
{
    WindowPlatform display;
    QStringList names;
    for (const char* variable : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"})
        if (!qEnvironmentVariableIsEmpty(variable))
            names += QStringLiteral("%1=%2").arg(QLatin1String(variable), qEnvironmentVariable(variable));
    display.isNamed = !names.isEmpty();
    const Apart tried = workApart(platformName);
    display.platform = QString::fromUtf8(tried.answer);
    if (!tried.fault.isEmpty())
        display.fault = display.isNamed ? Text::tr("%1 cannot be used").arg(names.join(QLatin1Char(' ')))
                                        : Text::tr("there is no display");
    return display;
}

} // namespace

const WindowPlatform& display()
{
    static const WindowPlatform tried = tryDisplay();
    return tried;
}
