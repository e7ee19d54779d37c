// scribera-ink: looks into an ink packet stream and turns it into other forms.

#include "inkfile.h"
#include "inkpad.h"
#include "inktables.h"
#include "inkto.h"
#include "optionvalues.h"
#include "output.h"
#include "program.h"

#include <QCoreApplication>

#include <functional>

namespace {

using Conversion = std::function<QByteArray(const CInkSnapshot&)>;

struct Command
{
    const char* name;
    const char* summary;
    void (*addOptions)(QCommandLineParser& parser);
    // Looks at the options only, so that a wrong one is told before any input is read. Throws UsageError.
    Conversion (*prepare)(const QCommandLineParser& parser);
};

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

Conversion prepareSvg(const QCommandLineParser& parser)
{
    const Drawing drawing{modelOption(parser), sizeOption(parser, 32767), penWidthOption(parser, "pen-width"),
                          colorOption(parser, "color"), dpiOption(parser)};
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

QString generalHelp()
{
    return QStringLiteral("Usage: scribera-ink COMMAND [options] [FILE]\n"
                          "Reads an ink packet stream: the Base64 text in which the library hands over the "
                          "points of a signature.\n\n") +
           listOf(Commands) +
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
    const Command& command = commandNamed(Commands, commandName(arguments));

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
    return exitCodeOf("scribera-ink", run, QCoreApplication::arguments());
}
