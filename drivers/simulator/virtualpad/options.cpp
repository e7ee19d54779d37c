#include "options.h"

#include "padstate.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>

#include <array>

namespace virtualpad {
namespace {

constexpr int LargestExtent = 16384;

class Text
{
    Q_DECLARE_TR_FUNCTIONS(VirtualPad)
};

enum Option
{
    Model,
    Socket,
    Replay,
    Loop,
    Finger,
    Position,
    Size,
    Screenshot,
    Help,
    Version,
};

std::array<QCommandLineOption, 10> allOptions()
{
    const auto value = [](const char* name, const QString& text, const QString& placeholder) {
        return QCommandLineOption(QString::fromLatin1(name), text, placeholder);
    };
    const auto flag = [](const QStringList& names, const QString& text) {
        return QCommandLineOption(names, text);
    };
    const QString models = QString::fromStdString(simulator::modelNames());
    return {
        value(
            "model",
            Text::tr("be this pad, whatever device type a host asks for; one of %1, also without SC. Without "
                     "it, an SCK210 that turns into what a host asks for")
                .arg(models),
            Text::tr("MODEL")),
        value("socket",
              Text::tr("wait for hosts at this path; default is where the driver looks with "
                       "SCRIBERA_SIM_PAD=default"),
              Text::tr("PATH")),
        value("replay", Text::tr("play this recording for each host that has opened the pad"),
              Text::tr("FILE")),
        flag({QStringLiteral("loop")}, Text::tr("play it again and again")),
        value("fingerprint",
              Text::tr("put this finger on the sensor after that: loop, whorl, arch or a grey PGM picture"),
              Text::tr("PATTERN|FILE")),
        value("position", Text::tr("place of the window on the screen"), QStringLiteral("X,Y")),
        value("size", Text::tr("size of the window"), Text::tr("WxH")),
        value("screenshot",
              Text::tr("save a picture of the window and quit; with --replay, play at once and save it "
                       "afterwards"),
              Text::tr("FILE")),
        flag({QStringLiteral("help"), QStringLiteral("h")}, Text::tr("show this text")),
        flag({QStringLiteral("version"), QStringLiteral("v")}, Text::tr("show the version"))};
}

bool parsePair(const QString& text, QChar separator, int least, int most, int& first, int& second)
{
    const QStringList parts = text.split(separator);
    bool isFirst = false;
    bool isSecond = false;
    if (parts.size() != 2)
        return false;
    first = parts[0].toInt(&isFirst);
    second = parts[1].toInt(&isSecond);
    return isFirst && isSecond && first >= least && second >= least && first <= most && second <= most;
}

} // namespace

bool parseOptions(const QStringList& arguments, Options& options, QString& reason)
{
    const auto refuse = [&](const QString& text) {
        reason = text;
        return false;
    };
    const auto known = allOptions();
    QCommandLineParser parser;
    for (const QCommandLineOption& option : known)
        parser.addOption(option);
    if (!parser.parse(arguments)) {
        QString text = parser.errorText();
        while (text.endsWith(QLatin1Char('.')))
            text.chop(1);
        return refuse(text);
    }
    if (!parser.positionalArguments().isEmpty())
        return refuse(Text::tr("unexpected argument '%1'").arg(parser.positionalArguments().constFirst()));
    for (const QCommandLineOption& option : known) {
        const QString name = option.names().constFirst();
        if (parser.values(option).size() > 1)
            return refuse(Text::tr("--%1 is given twice").arg(name));
        if (parser.isSet(option) && !option.valueName().isEmpty() && parser.value(option).isEmpty())
            return refuse(Text::tr("--%1 needs a value").arg(name));
    }

    options.fingerprint = parser.value(known[Finger]).toStdString();
    options.isPinned = parser.isSet(known[Model]);
    const std::string model = options.isPinned               ? parser.value(known[Model]).toStdString()
                              : !options.fingerprint.empty() ? "SCK421B"
                                                             : "SCK210";
    options.pad = simulator::padForModel(model);
    if (options.pad == nullptr)
        return refuse(
            Text::tr("there is no model '%1', only %2")
                .arg(QString::fromStdString(model), QString::fromStdString(simulator::modelNames())));
    if (!options.fingerprint.empty() && !hasFingerprintSensor(*options.pad))
        return refuse(Text::tr("the %1 has no fingerprint sensor").arg(QString::fromStdString(model)));
    options.socket = parser.value(known[Socket]).toStdString();
    options.replay = parser.value(known[Replay]).toStdString();
    options.loop = parser.isSet(known[Loop]);
    if (options.loop && options.replay.empty())
        return refuse(Text::tr("--loop needs --replay"));
    options.screenshot = parser.value(known[Screenshot]);
    if (options.loop && !options.screenshot.isEmpty())
        return refuse(Text::tr("--screenshot comes after a replay, which with --loop never ends"));

    int first = 0;
    int second = 0;
    if (parser.isSet(known[Position])) {
        const QString text = parser.value(known[Position]);
        if (!parsePair(text, QLatin1Char(','), -LargestExtent, LargestExtent, first, second))
            return refuse(Text::tr("the position '%1' is not X,Y").arg(text));
        options.position = QPoint(first, second);
    }
    if (parser.isSet(known[Size])) {
        const QString text = parser.value(known[Size]);
        if (!parsePair(text, QLatin1Char('x'), 1, LargestExtent, first, second))
            return refuse(Text::tr("the size '%1' is not WxH").arg(text));
        options.size = QSize(first, second);
    }
    return true;
}

QString helpText()
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        Text::tr("A signature pad in a window. The simulated driver finds it when its host has\n"
                 "SCRIBERA_SIM_PAD=default or =PATH in the environment; either may be started first."));
    for (const QCommandLineOption& option : allOptions())
        parser.addOption(option);
    return parser.helpText() + QLatin1Char('\n') +
           Text::tr("Qt's own options are understood too, such as -platform and -style.\n"
                    "Exit code: 0 done, 1 failure, 2 wrong arguments.\n");
}

} // namespace virtualpad
