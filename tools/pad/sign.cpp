// scribera-pad sign: takes one signature and saves it.
#include "commands.h"
#include "display.h"
#include "failures.h"
#include "optionvalues.h"
#include "program.h"
#include "signature.h"
#include "signwindow.h"
#include "taking.h"
#include "text.h"
#include "waiting.h"

namespace {

// Above, the library's canvas might be larger than it makes one.
constexpr int longestSide = 10000;

QColor inkOption(const QCommandLineParser& parser)
{
    QColor color = colorOption(parser, "colour");
    if (color == QColor(Qt::white))
        throw UsageError{Text::tr("--colour cannot be white: ink of that colour is taken for paper")};
    return color;
}

} // namespace

void addSignOptions(QCommandLineParser& parser)
{
    addDriverAndModel(parser);
    parser.addOptions({
        {{QStringLiteral("o"), QStringLiteral("output")},
         Text::tr("File to save, as its suffix says: %1; the last two are the ink packet stream. May be "
                  "given several times.")
             .arg(kindsOfFiles()),
         Text::tr("file")},
        {QStringLiteral("size"),
         Text::tr("Canvas in pixels; the whole writing area is on it. Default 400 high, in the "
                  "proportions of the pad."),
         Text::tr("WxH")},
        {QStringLiteral("width"),
         Text::tr("Of the pen, 1 to 10, default 3; strokes follow it and the pressure."), Text::tr("width"),
         QStringLiteral("3")},
        {QStringLiteral("colour"), Text::tr("Of the ink as #rrggbb or by name, default black."),
         Text::tr("colour"), QStringLiteral("black")},
        {QStringLiteral("clip"), Text::tr("Only the ink and 10 pixels around it.")},
        {QStringLiteral("transparent"), Text::tr("Paper that is not seen, in PNG.")},
        {QStringLiteral("dpi"), Text::tr("Resolution, 150 or 300, default 300."), Text::tr("dpi"),
         QStringLiteral("300")},
        {QStringLiteral("timeout"), Text::tr("Wait no longer than this."), Text::tr("seconds")},
        {QStringLiteral("window"), Text::tr("Show the canvas and buttons in a window.")},
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
        throw UsageError{Text::tr("--output is missing")};
    const bool inWindow = parser.isSet(QStringLiteral("window"));
    SignatureFiles files(paths, look);
    if (inWindow && !display().fault.isEmpty())
        throw Failure{Text::tr("no window can be shown: %1").arg(display().fault)};

    const std::unique_ptr<SignWindow> window = inWindow ? std::make_unique<SignWindow>(canvas) : nullptr;
    const Strokes strokes = takeSignature(model, driver, canvas, pen, Deadline(timeout), window.get(),
                                          [&](const Session& session) { return files.take(session); });
    files.write();
    QString text = Text::tr("%1: %2, %3, %4 seconds", "pad, points, strokes")
                       .arg(QLatin1String(model.m_pszName), pointsText(strokes.points()),
                            strokesText(strokes.strokes()), numberText(strokes.seconds(), 1)) +
                   QLatin1Char('\n');
    for (const QString& path : paths)
        text += path + QLatin1Char('\n');
    print(stdout, text);
    return Done;
}
