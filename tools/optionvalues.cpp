#include "optionvalues.h"

#include "failures.h"
#include "inkpad.h"
#include "text.h"

QString wrongValue(const QCommandLineParser& parser, const char* option, const QString& expected)
{
    return Text::tr("--%1 %2 is not %3")
        .arg(QLatin1String(option), parser.value(QLatin1String(option)), expected);
}

QString oneOf(const QStringList& names)
{
    return Text::tr("one of %1").arg(names.join(QStringLiteral(", ")));
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
        throw UsageError{Text::tr("--model is missing")};
    const CPadModel* const pad = padNamed(name);
    if (!pad)
        throw UsageError{wrongValue(parser, "model", oneOf(padNames()))};
    return *pad;
}

QSize sizeOption(const QCommandLineParser& parser, int longestSide)
{
    const QStringList sides = parser.value(QStringLiteral("size")).split(QLatin1Char('x'));
    const QSize size = sides.size() == 2 ? QSize(positiveNumber(sides[0], longestSide),
                                                 positiveNumber(sides[1], longestSide))
                                         : QSize(0, 0);
    if (size.isEmpty())
        throw UsageError{
            wrongValue(parser, "size", Text::tr("WxH with sides of 1 to %1 pixels").arg(longestSide))};
    return size;
}

int penWidthOption(const QCommandLineParser& parser, const char* option)
{
    const int width = positiveNumber(parser.value(QLatin1String(option)), 10);
    if (width == 0)
        throw UsageError{wrongValue(parser, option, Text::tr("1 to 10"))};
    return width;
}

QColor colorOption(const QCommandLineParser& parser, const char* option)
{
    QColor color(parser.value(QLatin1String(option)));
    if (!color.isValid() || color.alpha() != 255)
        throw UsageError{wrongValue(parser, option, Text::tr("#rrggbb or the name of an opaque colour"))};
    return color;
}

int dpiOption(const QCommandLineParser& parser)
{
    const int dpi = positiveNumber(parser.value(QStringLiteral("dpi")), 300);
    if (dpi != 150 && dpi != 300)
        throw UsageError{wrongValue(parser, "dpi", Text::tr("150 or 300"))};
    return dpi;
}
