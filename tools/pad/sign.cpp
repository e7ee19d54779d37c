// scribera-pad sign: takes one signature and saves it.
#include "commands.h"
#include "display.h"
#include "failures.h"
#include "optionvalues.h"
#include "program.h"
#include "signature.h"
#include "signwindow.h"
#include "taking.h"
#include "waiting.h"

namespace {

// Above, the library's canvas might be larger than it makes one.
constexpr int longestSide = 10000;

QColor inkOption(const QCommandLineParser& parser)
{
    QColor color = colorOption(parser, "colour");
    if (color == QColor(Qt::white))
        throw UsageError{QStringLiteral("--colour cannot be white: ink of that colour is taken for paper")};
    return color;
}

} // namespace

void addSignOptions(QCommandLineParser& parser)
{
    addDriverAndModel(parser);
    parser.addOptions({
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral(
             "File to save, as its suffix says: %1; the last two are the ink packet stream. May be "
             "given several times.")
             .arg(kindsOfFiles()),
         QStringLiteral("file")},
        {QStringLiteral("size"),
         QStringLiteral("Canvas in pixels; the whole writing area is on it. Default 400 high, in the "
                        "proportions of the pad."),
         QStringLiteral("WxH")},
        {QStringLiteral("width"),
         QStringLiteral("Of the pen, 1 to 10, default 3; strokes follow it and the pressure."),
         QStringLiteral("width"), QStringLiteral("3")},
        {QStringLiteral("colour"), QStringLiteral("Of the ink as #rrggbb or by name, default black."),
         QStringLiteral("colour"), QStringLiteral("black")},
        {QStringLiteral("clip"), QStringLiteral("Only the ink and 10 pixels around it.")},
        {QStringLiteral("transparent"), QStringLiteral("Paper that is not seen, in PNG.")},
        {QStringLiteral("dpi"), QStringLiteral("Resolution, 150 or 300, default 300."), QStringLiteral("dpi"),
         QStringLiteral("300")},
        {QStringLiteral("timeout"), QStringLiteral("Wait no longer than this."), QStringLiteral("seconds")},
        {QStringLiteral("window"), QStringLiteral("Show the canvas and buttons in a window.")},
    });
}

int signOnPad(const QCommandLineParser& parser, const QString&)
{
    const CPadModel& model = modelOption(parser);
    const Driver driver = driverOption(parser);
    const QSize canvas =
        parser.isSet(QStringLiteral("size")) ? sizeOption(parser, longestSide) : canvasFor(model, 400);
    const Pen pen{penWidthOption(parser, "width"), inkOption(parser)};
    const Look look{dpiOption(parser), parser.isSet(QStringLiteral("clip")),
                    parser.isSet(QStringLiteral("transparent"))};
    const std::optional<int> timeout = secondsOption(parser, "timeout");
    const QStringList paths = parser.values(QStringLiteral("output"));
    if (paths.isEmpty())
        throw UsageError{QStringLiteral("--output is missing")};
    const bool inWindow = parser.isSet(QStringLiteral("window"));
    SignatureFiles files(paths, look);
    if (inWindow && !display().fault.isEmpty())
        throw Failure{QStringLiteral("no window can be shown: ") + display().fault};

    const std::unique_ptr<SignWindow> window = inWindow ? std::make_unique<SignWindow>(canvas) : nullptr;
    const Strokes strokes = takeSignature(model, driver, canvas, pen, Deadline(timeout), window.get(),
                                          [&](const Session& session) { return files.take(session); });
    files.write();
    QString text = QStringLiteral("%1: %2 points, %3 strokes, %4 seconds\n")
                       .arg(QLatin1String(model.m_pszName))
                       .arg(strokes.points())
                       .arg(strokes.strokes())
                       .arg(strokes.seconds(), 0, 'f', 1);
    for (const QString& path : paths)
        text += path + QLatin1Char('\n');
    print(stdout, text);
    return Done;
}
