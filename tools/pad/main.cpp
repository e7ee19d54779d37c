// scribera-pad: for people with a pad, a pen or a touch screen in hand.
#include "commands.h"
#include "display.h"
#include "ending.h"
#include "failures.h"
#include "interrupts.h"
#include "program.h"
#include "text.h"

#include <QApplication>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace {

constexpr char programName[] = "scribera-pad";

constexpr Command commands[] = {
    {"list",
     QT_TRANSLATE_NOOP("Tools", "Input devices and drivers that are there, and whether they can be used."),
     nullptr, addNoOptions, listDevices},
    {"info",
     QT_TRANSLATE_NOOP("Tools",
                       "What the pad is: identity, versions, ranges, keys, used part of the device."),
     nullptr, addPadOptions, tellOfPad},
    {"watch",
     QT_TRANSLATE_NOOP("Tools", "What comes from the pad, as it comes: samples, keys, report rate, gaps."),
     nullptr, addWatchOptions, watchPad},
    {"record",
     QT_TRANSLATE_NOOP("Tools", "Write what the pen does as a recording, which the simulated pad plays."),
     QT_TRANSLATE_NOOP("Tools", "FILE"), addRecordOptions, recordPad},
    {"sign", QT_TRANSLATE_NOOP("Tools", "Take one signature and save it as files."), nullptr, addSignOptions,
     signOnPad},
    {"doctor",
     QT_TRANSLATE_NOOP("Tools", "Look through everything that a signature needs, and say what to do."),
     nullptr, addPadOptions, examine},
};

QString generalHelp()
{
    return Text::tr("Usage: scribera-pad COMMAND [options] [FILE]\n"
                    "Tells of signature pads, pens and touch screens, and takes signatures on them.\n\n") +
           listOf(commands) + QLatin1Char('\n') +
           Text::tr("'scribera-pad COMMAND --help' tells the options; --version the version.\n"
                    "Exit code: 0 done, 1 failure, 2 wrong usage, 3 cancelled, 4 nobody confirmed in time, 5 "
                    "nothing "
                    "to write. Ctrl-C drops what was begun and ends by the signal; it is the regular end of "
                    "'watch'.\n");
}

int runCommand(const Command& command, const QStringList& arguments)
{
    QCommandLineParser parser;
    startParser(parser, command.summary);
    command.addOptions(parser);
    const QString name = QLatin1String(command.name);
    parser.addPositionalArgument(name, Text::tr(command.summary), name);
    if (command.file)
        parser.addPositionalArgument(Text::tr("file"), Text::tr("File to write; - is standard output."),
                                     Text::tr(command.file));
    if (!parse(parser, arguments))
        return printHelp(parser.helpText());
    const QStringList files = parser.positionalArguments().mid(1);
    const int wanted = command.file ? 1 : 0;
    if (files.size() < wanted)
        throw UsageError{Text::tr("no file named")};
    if (files.size() > wanted)
        throw UsageError{Text::tr("unexpected: %1").arg(files.last())};
    return command.run(parser, files.value(0));
}

int run(const QStringList& arguments)
{
    const QString first = arguments.value(1);
    if (first == QLatin1String("--help") || first == QLatin1String("-h"))
        return printHelp(generalHelp());
    if (first == QLatin1String("--version") || first == QLatin1String("-v"))
        return printHelp(QStringLiteral("scribera-pad " SCRIBERA_VERSION "\n"));
    try {
        return runCommand(commandNamed(commands, commandName(arguments)), arguments);
    } catch (const Ending& ending) {
        print(stderr, QStringLiteral("scribera-pad: %1\n").arg(ending.sentence));
        return ending.code;
    }
}

// Only a window needs a display, and an application that ends the process without one.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv)
{
    const auto has = [&](std::string_view word) {
        return std::find(argv + 1, argv + argc, word) != argv + argc;
    };
    const bool wantsWindow = argc > 1 && argv[1] == std::string_view("sign") && has("--window");
    const bool asksForDisplay = wantsWindow || (argc > 1 && argv[1] == std::string_view("doctor"));
    if (has("--help") || has("-h") || !asksForDisplay || !display().fault.isEmpty() || !wantsWindow)
        return std::make_unique<QCoreApplication>(argc, argv);
    return std::make_unique<QApplication>(argc, argv);
}

} // namespace

void addNoOptions(QCommandLineParser&) {}

int main(int argc, char** argv)
{
    // An idle pad shall cost no processor time. Whoever wants to measure the other way may.
    setenv("SCRIBERA_WORKERS", "wait", 0);
    catchInterrupts();
    try {
        const std::unique_ptr<QCoreApplication> application = makeApplication(argc, argv);
        QCoreApplication::setApplicationName(QLatin1String(programName));
        loadCatalogues();
        return exitCodeOf(programName, run, QCoreApplication::arguments());
    } catch (const Interrupted& interrupted) {
        return endBy(interrupted);
    } catch (const Failure& failure) { // before there is an application
        print(stderr, QStringLiteral("scribera-pad: %1\n").arg(failure.reason));
        return Failed;
    }
}
