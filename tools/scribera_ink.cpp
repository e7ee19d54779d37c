// scribera-ink: looks into an ink packet stream and turns it into other forms.

#include "failures.h"
#include "inkfile.h"
#include "inkpad.h"
#include "inktables.h"
#include "inkto.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>
#include <functional>
#include <new>

namespace {

enum ExitCode
{
    Done = 0,
    Failed = 1,
    WrongUsage = 2,
};

using Conversion = std::function<QByteArray(const CInkSnapshot&)>;

struct Command
{
    const char* name;
    const char* summary;
    void (*addOptions)(QCommandLineParser& parser);
    // Looks at the options only, so that a wrong one is told before any input is read. Throws UsageError.
    Conversion (*prepare)(const QCommandLineParser& parser);
};

QString wrongValue(const QCommandLineParser& parser, const char* option, const char* expected)
{
    return QStringLiteral("--%1 %2 is not %3")
        .arg(QLatin1String(option), parser.value(QLatin1String(option)), QLatin1String(expected));
}

void addModelOption(QCommandLineParser& parser)
{
    parser.addOption(
        {QStringLiteral("model"),
         QStringLiteral(
             "The pad that the points are from, needed because a stream does not name it: %1; the pads' own "
             "names, such as SCK210, too.")
             .arg(padNames().join(QStringLiteral(", "))),
         QStringLiteral("model")});
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

void addDrawingOptions(QCommandLineParser& parser)
{
    addModelOption(parser);
    parser.addOptions({
        {QStringLiteral("size"),
         QStringLiteral("Canvas in pixels; the whole writing area is on it. Default 800x400."),
         QStringLiteral("WxH"), QStringLiteral("800x400")},
        {QStringLiteral("pen-width"),
         QStringLiteral("1 to 10, default 3; strokes follow it and the pressure."), QStringLiteral("width"),
         QStringLiteral("3")},
        {QStringLiteral("color"), QStringLiteral("Ink as #rrggbb or by name, default black."),
         QStringLiteral("color"), QStringLiteral("black")},
        {QStringLiteral("dpi"), QStringLiteral("Resolution, 150 or 300, default 150."), QStringLiteral("dpi"),
         QStringLiteral("150")},
    });
}

// A whole number of digits alone within the limits, or 0. The lower limit is above 0.
int positiveNumber(const QString& text, int largest)
{
    for (const QChar c : text)
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return 0;
    const int number = text.toInt(); // 0 when it does not fit
    return number <= largest ? number : 0;
}

QSize sizeOption(const QCommandLineParser& parser)
{
    constexpr int LargestSide = 32767;
    const QStringList sides = parser.value(QStringLiteral("size")).split(QLatin1Char('x'));
    const QSize size = sides.size() == 2 ? QSize(positiveNumber(sides[0], LargestSide),
                                                 positiveNumber(sides[1], LargestSide))
                                         : QSize(0, 0);
    if (size.isEmpty())
        throw UsageError{wrongValue(parser, "size", "WxH with sides of 1 to 32767 pixels")};
    return size;
}

int penWidthOption(const QCommandLineParser& parser)
{
    const int width = positiveNumber(parser.value(QStringLiteral("pen-width")), 10);
    if (width == 0)
        throw UsageError{wrongValue(parser, "pen-width", "1 to 10")};
    return width;
}

QColor colorOption(const QCommandLineParser& parser)
{
    const QColor color(parser.value(QStringLiteral("color")));
    if (!color.isValid() || color.alpha() != 255)
        throw UsageError{wrongValue(parser, "color", "#rrggbb or the name of an opaque colour")};
    return color;
}

int dpiOption(const QCommandLineParser& parser)
{
    const int dpi = positiveNumber(parser.value(QStringLiteral("dpi")), 300);
    if (dpi != 150 && dpi != 300)
        throw UsageError{wrongValue(parser, "dpi", "150 or 300")};
    return dpi;
}

Conversion prepareSvg(const QCommandLineParser& parser)
{
    const Drawing drawing{modelOption(parser), sizeOption(parser), penWidthOption(parser),
                          colorOption(parser), dpiOption(parser)};
    return [drawing](const CInkSnapshot& ink) { return toSvg(ink, drawing); };
}

Conversion prepareRecording(const QCommandLineParser& parser)
{
    return [&pad = modelOption(parser)](const CInkSnapshot& ink) { return toRecording(ink, pad); };
}

void addNoOptions(QCommandLineParser&) {}

template <QByteArray (*convert)(const CInkSnapshot&)>
Conversion prepareAsItIs(const QCommandLineParser&)
{
    return convert;
}

constexpr Command Commands[] = {
    {"info", "Points, strokes, duration, bounding box in pad units, pressures, report rate.", addNoOptions,
     prepareAsItIs<toInfo>},
    {"to-json", "The points as JSON.", addNoOptions, prepareAsItIs<toJson>},
    {"to-csv", "The points as comma-separated values.", addNoOptions, prepareAsItIs<toCsv>},
    {"to-svg", "The strokes as the library saves them: SVG.", addDrawingOptions, prepareSvg},
    {"to-recording", "A recording that the simulated pad plays.", addModelOption, prepareRecording},
};

const Command& commandNamed(const QString& name)
{
    for (const Command& command : Commands)
        if (name == QLatin1String(command.name))
            return command;
    throw UsageError{QStringLiteral("there is no command '%1'").arg(name)};
}

void print(std::FILE* file, const QString& text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), file);
}

// Standard output counts as written only when it was flushed.
int printHelp(const QString& text)
{
    writeOutput(text.toLocal8Bit(), QStringLiteral("-"));
    return Done;
}

QString generalHelp()
{
    QString text =
        QStringLiteral("Usage: scribera-ink COMMAND [options] [FILE]\n"
                       "Reads an ink packet stream: the Base64 text in which the library hands over the "
                       "points of a signature.\n\n"
                       "Commands:\n");
    for (const Command& command : Commands)
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command.name), -13)
                    .arg(QLatin1String(command.summary));
    return text +
           QStringLiteral("\nFILE is a file, or - or nothing for standard input.\n"
                          "'scribera-ink COMMAND --help' tells the options; --version the version.\n"
                          "Exit code: 0 done, 1 malformed input or a file that cannot be read or written, 2 "
                          "wrong usage.\n");
}

int run(const QStringList& arguments)
{
    const QString first = arguments.value(1);
    if (first == QLatin1String("--help") || first == QLatin1String("-h"))
        return printHelp(generalHelp());
    if (first == QLatin1String("--version") || first == QLatin1String("-v"))
        return printHelp(QStringLiteral("scribera-ink " SCRIBERA_VERSION "\n"));
    if (first.isEmpty() || first.startsWith(QLatin1Char('-')))
        throw UsageError{first.isEmpty() ? QStringLiteral("no command named")
                                         : QStringLiteral("a command comes first, not '%1'").arg(first)};
    const Command& command = commandNamed(first);

    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(command.summary));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("This text."));
    const QCommandLineOption output({QStringLiteral("o"), QStringLiteral("output")},
                                    QStringLiteral("File to write, default standard output."),
                                    QStringLiteral("file"), QStringLiteral("-"));
    parser.addOption(help);
    parser.addOption(output);
    command.addOptions(parser);
    parser.addPositionalArgument(first, QLatin1String(command.summary), first);
    parser.addPositionalArgument(QStringLiteral("file"),
                                 QStringLiteral("File to read, default standard input."),
                                 QStringLiteral("[file]"));
    if (!parser.parse(arguments))
        throw UsageError{parser.errorText()};
    if (parser.isSet(help))
        return printHelp(parser.helpText());
    const QStringList files = parser.positionalArguments().mid(1);
    if (files.size() > 1)
        throw UsageError{QStringLiteral("more than one file")};
    const Conversion convert = command.prepare(parser);
    const CInkSnapshot ink = readInk(files.value(0, QStringLiteral("-")));
    writeOutput(convert(ink), parser.value(output));
    return Done;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("scribera-ink"));
    const auto refuse = [](const QString& reason, ExitCode code) {
        print(stderr, QStringLiteral("scribera-ink: %1\n").arg(reason));
        return code;
    };
    try {
        return run(QCoreApplication::arguments());
    } catch (const UsageError& error) {
        return refuse(error.reason + QStringLiteral("\nTry 'scribera-ink --help'."), WrongUsage);
    } catch (const Failure& failure) {
        return refuse(failure.reason, Failed);
    } catch (const std::bad_alloc&) {
        return refuse(QStringLiteral("not enough memory"), Failed);
    }
}
