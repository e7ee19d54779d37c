// scribera-ink: looks into an ink packet stream and turns it into other forms, and these into it.

#include "inkdrawing.h"
#include "inkfile.h"
#include "inkml.h"
#include "inkpad.h"
#include "inkplot.h"
#include "inktables.h"
#include "inkto.h"
#include "isosignature.h"
#include "optionvalues.h"
#include "output.h"
#include "program.h"
#include "text.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace {

constexpr int NothingSigned = 3; // exit code

// What is written, and how the program ends then.
struct Result
{
    Result(QByteArray text, int code = Done) : output(std::move(text)), exitCode(code) {}

    QByteArray output;
    int exitCode;
};

// From the input of that path.
using Conversion = std::function<Result(const QString& path)>;

struct Command
{
    const char* name;
    const char* summary;
    void (*addOptions)(QCommandLineParser& parser);
    // Looks at the options only, so that a wrong one is told before any input is read. Throws UsageError.
    Conversion (*prepare)(const QCommandLineParser& parser);
};

// Documents are several times as large in memory as they are in a file.
constexpr int LargestDocument = 64; // MiB

void addModelOption(QCommandLineParser& parser)
{
    parser.addOption(
        {QStringLiteral("model"),
         Text::tr("The pad: %1; the pads' own names, such as SCK210, too. Streams do not name it.")
             .arg(padNames().join(QStringLiteral(", "))),
         Text::tr("model")});
}

// Null when it is not named.
const CPadModel* optionalModel(const QCommandLineParser& parser)
{
    return parser.isSet(QStringLiteral("model")) ? &modelOption(parser) : nullptr;
}

void addResolutionOption(QCommandLineParser& parser)
{
    parser.addOption({QStringLiteral("units-per-mm"),
                      Text::tr("Pad units in a millimetre, which neither streams nor pads tell."),
                      Text::tr("number")});
}

std::optional<double> resolutionOption(const QCommandLineParser& parser)
{
    const char* const name = "units-per-mm";
    if (!parser.isSet(QLatin1String(name)))
        return std::nullopt;
    const double number = parser.value(QLatin1String(name)).toDouble();
    if (!(number >= 0.1 && number <= 10000))
        throw UsageError{wrongValue(parser, name, Text::tr("a number of 0.1 to 10000"))};
    return number;
}

void addCircumstances(QCommandLineParser& parser)
{
    addModelOption(parser);
    addResolutionOption(parser);
}

Circumstances circumstancesOf(const QCommandLineParser& parser)
{
    return {optionalModel(parser), resolutionOption(parser)};
}

void addIsoOptions(QCommandLineParser& parser)
{
    parser.addOption(
        {QStringLiteral("compact"), Text::tr("The compact form, in shares of the pad that --model names.")});
    addCircumstances(parser);
}

bool isCompact(const QCommandLineParser& parser)
{
    const bool compact = parser.isSet(QStringLiteral("compact"));
    if (!compact && parser.isSet(QStringLiteral("model")))
        throw UsageError{Text::tr("--model belongs to --compact")};
    if (compact && resolutionOption(parser))
        throw UsageError{Text::tr("--units-per-mm does not go with --compact")};
    return compact;
}

void addDrawingOptions(QCommandLineParser& parser)
{
    addModelOption(parser);
    parser.addOptions({
        {QStringLiteral("size"),
         Text::tr("Canvas in pixels; the whole writing area is on it. Default 800x400."), Text::tr("WxH"),
         QStringLiteral("800x400")},
        {QStringLiteral("pen-width"), Text::tr("1 to 10, default 3; strokes follow it and the pressure."),
         Text::tr("width"), QStringLiteral("3")},
        {QStringLiteral("color"), Text::tr("Ink as #rrggbb or by name, default black."), Text::tr("color"),
         QStringLiteral("black")},
    });
}

void addResolution(QCommandLineParser& parser, const QString& description)
{
    parser.addOption({QStringLiteral("dpi"), description, Text::tr("dpi"), QStringLiteral("150")});
}

void addSvgOptions(QCommandLineParser& parser)
{
    addDrawingOptions(parser);
    addResolution(parser, Text::tr("Resolution, 150 or 300, default 150."));
    parser.addOption(
        {QStringLiteral("compact"), Text::tr("A path a stroke, at 150 dots per inch, for a small file.")});
}

constexpr int LeastPngResolution = 30;
constexpr int LargestPngResolution = 2400;

void addPngOptions(QCommandLineParser& parser)
{
    addDrawingOptions(parser);
    addResolution(parser, Text::tr("Resolution, %1 to %2, default 150. The canvas keeps the size on paper "
                                   "that it has at 150: at 300 there are twice as many pixels each way.")
                              .arg(LeastPngResolution)
                              .arg(LargestPngResolution));
}

void addNoOptions(QCommandLineParser&) {}

// What is made of a stream.
template <typename TConvert>
Conversion fromStream(TConvert convert)
{
    return [convert](const QString& path) { return convert(readInk(path)); };
}

// The stream that is made of something else.
template <typename TConvert>
Conversion toStream(int mebibytes, TConvert convert)
{
    return [mebibytes, convert](const QString& path) {
        return toStreamText(convert(readInput(path, mebibytes), inputName(path)));
    };
}

template <QByteArray (*convert)(const CInkSnapshot&)>
Conversion prepareAsItIs(const QCommandLineParser&)
{
    return fromStream(convert);
}

template <CInkSnapshot (*convert)(const QByteArray&, const QString&), int mebibytes>
Conversion prepareReading(const QCommandLineParser&)
{
    return toStream(mebibytes, convert);
}

void addInfoOptions(QCommandLineParser& parser)
{
    addCircumstances(parser);
    parser.addOption({QStringLiteral("require-signature"), Text::tr("Exit code 3 when nothing was signed.")});
}

Conversion prepareInfo(const QCommandLineParser& parser)
{
    const Circumstances circumstances = circumstancesOf(parser);
    const bool isRequired = parser.isSet(QStringLiteral("require-signature"));
    return fromStream([circumstances, isRequired](const CInkSnapshot& ink) -> Result {
        const Info info = toInfo(ink, circumstances);
        return {info.text, isRequired && !info.isSigned ? NothingSigned : Done};
    });
}

void addPlotOptions(QCommandLineParser& parser)
{
    addResolutionOption(parser);
    parser.addOption({QStringLiteral("png"), Text::tr("A PNG picture instead of SVG.")});
}

Conversion preparePlot(const QCommandLineParser& parser)
{
    const auto plot = parser.isSet(QStringLiteral("png")) ? toPngPlot : toSvgPlot;
    return fromStream([plot, resolution = resolutionOption(parser)](const CInkSnapshot& ink) {
        return plot(ink, resolution);
    });
}

Drawing drawingOptions(const QCommandLineParser& parser, int dotsPerInch)
{
    return {modelOption(parser), sizeOption(parser, 32767), penWidthOption(parser, "pen-width"),
            colorOption(parser, "color"), dotsPerInch};
}

template <QByteArray (*convert)(const CInkSnapshot&, const Drawing&)>
Conversion drawnBy(const Drawing& drawing)
{
    return fromStream([drawing](const CInkSnapshot& ink) { return convert(ink, drawing); });
}

Conversion prepareSvg(const QCommandLineParser& parser)
{
    const Drawing drawing = drawingOptions(parser, dpiOption(parser));
    if (!parser.isSet(QStringLiteral("compact")))
        return drawnBy<toSvg>(drawing);
    if (drawing.dotsPerInch != CanvasDotsPerInch)
        throw UsageError{Text::tr("--compact does not go with --dpi %1").arg(drawing.dotsPerInch)};
    return drawnBy<toCompactSvg>(drawing);
}

Conversion preparePng(const QCommandLineParser& parser)
{
    const int dotsPerInch = positiveNumber(parser.value(QStringLiteral("dpi")), LargestPngResolution);
    if (dotsPerInch < LeastPngResolution)
        throw UsageError{wrongValue(parser, "dpi", Text::tr("a whole number of 30 to 2400"))};
    return drawnBy<toPng>(drawingOptions(parser, dotsPerInch));
}

Conversion preparePdf(const QCommandLineParser& parser)
{
    return drawnBy<toPdf>(drawingOptions(parser, CanvasDotsPerInch));
}

Conversion prepareRecording(const QCommandLineParser& parser)
{
    return fromStream(
        [&pad = modelOption(parser)](const CInkSnapshot& ink) { return toRecording(ink, pad); });
}

Conversion prepareInkMl(const QCommandLineParser& parser)
{
    return fromStream([circumstances = circumstancesOf(parser)](const CInkSnapshot& ink) {
        return toInkMl(ink, circumstances);
    });
}

Conversion prepareInkMlReading(const QCommandLineParser& parser)
{
    return toStream(LargestDocument,
                    [circumstances = circumstancesOf(parser)](const QByteArray& text, const QString& name) {
                        return fromInkMl(text, name, circumstances);
                    });
}

Conversion prepareIso(const QCommandLineParser& parser)
{
    if (!isCompact(parser))
        return fromStream([resolution = resolutionOption(parser)](const CInkSnapshot& ink) {
            return toIsoSignature(ink, resolution);
        });
    return fromStream(
        [&pad = modelOption(parser)](const CInkSnapshot& ink) { return toCompactIsoSignature(ink, pad); });
}

Conversion prepareIsoReading(const QCommandLineParser& parser)
{
    if (!isCompact(parser))
        return toStream(LargestInput, [resolution = resolutionOption(parser)](const QByteArray& bytes,
                                                                              const QString& name) {
            return fromIsoSignature(bytes, name, resolution);
        });
    return toStream(LargestInput, [&pad = modelOption(parser)](const QByteArray& bytes, const QString& name) {
        return fromCompactIsoSignature(bytes, name, pad);
    });
}

constexpr Command Commands[] = {
    {"info", QT_TRANSLATE_NOOP("Tools", "What the points are, from when, and whether something was signed."),
     addInfoOptions, prepareInfo},
    {"plot", QT_TRANSLATE_NOOP("Tools", "Position, pressure, speed and pen lifts over time: SVG or PNG."),
     addPlotOptions, preparePlot},
    {"to-json", QT_TRANSLATE_NOOP("Tools", "The points as JSON."), addNoOptions, prepareAsItIs<toJson>},
    {"to-csv", QT_TRANSLATE_NOOP("Tools", "The points as comma-separated values."), addNoOptions,
     prepareAsItIs<toCsv>},
    {"to-svg", QT_TRANSLATE_NOOP("Tools", "The strokes as the library saves them: SVG."), addSvgOptions,
     prepareSvg},
    {"to-png", QT_TRANSLATE_NOOP("Tools", "The strokes as a picture of any resolution: PNG."), addPngOptions,
     preparePng},
    {"to-pdf", QT_TRANSLATE_NOOP("Tools", "The strokes as vectors on a page of their canvas's size: PDF."),
     addDrawingOptions, preparePdf},
    {"to-recording", QT_TRANSLATE_NOOP("Tools", "A recording that the simulated pad plays."), addModelOption,
     prepareRecording},
    {"to-inkml", QT_TRANSLATE_NOOP("Tools", "The points in the Ink Markup Language of the W3C."),
     addCircumstances, prepareInkMl},
    {"to-iso19794-7",
     QT_TRANSLATE_NOOP("Tools", "The points as signature time series of ISO/IEC 19794-7:2007."),
     addIsoOptions, prepareIso},
    {"from-json", QT_TRANSLATE_NOOP("Tools", "The stream of what to-json wrote."), addNoOptions,
     prepareReading<fromJson, LargestDocument>},
    {"from-csv", QT_TRANSLATE_NOOP("Tools", "The stream of what to-csv wrote."), addNoOptions,
     prepareReading<fromCsv, LargestInput>},
    {"from-recording", QT_TRANSLATE_NOOP("Tools", "The stream of a recording."), addNoOptions,
     prepareReading<fromRecording, LargestInput>},
    {"from-inkml", QT_TRANSLATE_NOOP("Tools", "The stream of a document in the Ink Markup Language."),
     addCircumstances, prepareInkMlReading},
    {"from-iso19794-7",
     QT_TRANSLATE_NOOP("Tools", "The stream of signature time series of ISO/IEC 19794-7:2007."),
     addIsoOptions, prepareIsoReading},
};

QString generalHelp()
{
    return Text::tr("Usage: scribera-ink COMMAND [options] [FILE]\n"
                    "Reads an ink packet stream, the Base64 text in which the library hands over the "
                    "points of a signature, or with from-... writes one.\n\n") +
           listOf(Commands) + QLatin1Char('\n') +
           Text::tr("FILE is a file, or - or nothing for standard input.\n"
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
    const QString name = commandName(arguments);
    const Command& command = commandNamed(Commands, name);

    QCommandLineParser parser;
    startParser(parser, command.summary);
    const QCommandLineOption output({QStringLiteral("o"), QStringLiteral("output")},
                                    Text::tr("File to write, default standard output."), Text::tr("file"),
                                    QStringLiteral("-"));
    parser.addOption(output);
    command.addOptions(parser);
    parser.addPositionalArgument(first, Text::tr(command.summary), first);
    parser.addPositionalArgument(Text::tr("file"), Text::tr("File to read, default standard input."),
                                 QStringLiteral("[%1]").arg(Text::tr("file")));
    if (!parse(parser, arguments))
        return printHelp(parser.helpText());
    const QStringList files = parser.positionalArguments().mid(1);
    if (files.size() > 1)
        throw UsageError{Text::tr("more than one file")};
    const Conversion convert = command.prepare(parser);
    const Result result = convert(files.value(0, QStringLiteral("-")));
    writeOutput(result.output, parser.value(output));
    return result.exitCode;
}

} // namespace

int main(int argc, char** argv)
{
    // A picture with texts needs fonts, and Qt has none without a display; one that shows nothing will do.
    const bool hasTexts =
        std::any_of(argv, argv + argc, [](const char* word) { return std::string_view(word) == "--png"; });
    if (hasTexts) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QLoggingCategory::setFilterRules(
            QStringLiteral("default.warning=false")); // on where it would keep files
    }
    const std::unique_ptr<QCoreApplication> application(hasTexts ? new QGuiApplication(argc, argv)
                                                                 : new QCoreApplication(argc, argv));
    QCoreApplication::setApplicationName(QStringLiteral("scribera-ink"));
    loadCatalogues();
    return exitCodeOf("scribera-ink", run, QCoreApplication::arguments());
}
