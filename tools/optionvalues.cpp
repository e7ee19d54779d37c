#include "optionvalues.h"

#include "failures.h"
#include "inkpad.h"

QString wrongValue(const QCommandLineParser& parser, const char* option, const char* expected)
{
    return QStringLiteral("--%1 %2 is not %3")
        .arg(QLatin1String(option), parser.value(QLatin1String(option)), QLatin1String(expected));
}

int positiveNumber(const QString& text, int largest)
{
    for (const QChar c : text)
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return 0;
    const int number = text.toInt(); // 0 when it does not fit
    return number <= largest ? number : 0;
}

const CPadModel& modelOption(const QCommandLineParser& parser)
{
    const QString name = parser.value(QStringLiteral("model"));
    if (name.isEmpty())
        throw UsageError{QStringLiteral("--model is missing")};
    const CPadModel* const pad = padNamed(name);
    if (!pad)
        throw UsageError{wrongValue(parser, "model", "one of ") + padNames().join(QStringLiteral(", "))};
    return *pad;
}

QSize sizeOption(const QCommandLineParser& parser, int longestSide)
{
    const QStringList sides = parser.value(QStringLiteral("size")).split(QLatin1Char('x'));
    const QSize size = sides.size() == 2 ? QSize(positiveNumber(sides[0], longestSide),
                                                 positiveNumber(sides[1], longestSide))
                                         : QSize(0, 0);
    if (size.isEmpty())
        throw UsageError{wrongValue(parser, "size", "WxH with sides of 1 to ") +
                         QStringLiteral("%1 pixels").arg(longestSide)};
    return size;
}

int penWidthOption(const QCommandLineParser& parser, const char* option)
{
    const int width = positiveNumber(parser.value(QLatin1String(option)), 10);
    if (width == 0)
        throw UsageError{wrongValue(parser, option, "1 to 10")};
    return width;
}

QColor colorOption(const QCommandLineParser& parser, const char* option)
{
    QColor color(parser.value(QLatin1String(option)));
    if (!color.isValid() || color.alpha() != 255)
        throw UsageError{wrongValue(parser, option, "#rrggbb or the name of an opaque colour")};
    return color;
}

int dpiOption(const QCommandLineParser& parser)
{
    const int dpi = positiveNumber(parser.value(QStringLiteral("dpi")), 300);
    if (dpi != 150 && dpi != 300)
        throw UsageError{wrongValue(parser, "dpi", "150 or 300")};
    return dpi;
}
