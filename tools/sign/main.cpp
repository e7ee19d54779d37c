// scribera-sign: puts a signature into a PDF document and seals it.
#include "ending.h"
#include "failures.h"
#include "interrupts.h"
#include "program.h"
#include "quoted.h"
#include "refusal.h"
#include "sign_commands.h"
#include "text.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iterator>

#include <sys/resource.h>

namespace {

constexpr char programName[] = "scribera-sign";

struct SignCommand
{
    const char* name; // empty: what is done where none is named
    const char* summary;
    void (*addOptions)(QCommandLineParser& parser);
    int (*run)(const QCommandLineParser& parser, const QString& document);
};

constexpr SignCommand signing = {"", QT_TRANSLATE_NOOP("Tools", "Put a signature into a PDF document."),
                                 addSigningOptions, signDocument};

constexpr SignCommand commands[] = {
    {"fields",
     QT_TRANSLATE_NOOP("Tools", "The document's signature fields: pages, places, whether they are signed."),
     addFieldOptions, listFields},
    {"verify",
     QT_TRANSLATE_NOOP("Tools", "What each signature covers, who made it, and whether it is valid."),
     addVerifyOptions, verifyDocument},
    {"unseal", QT_TRANSLATE_NOOP("Tools", "Write the ink that was sealed for the holder of a key."),
     addUnsealOptions, unsealInkOf},
};

QString generalHelp(const QString& options)
{
    return Text::tr("Usage: scribera-sign DOCUMENT -o FILE [options]\n"
                    "       scribera-sign COMMAND [options] DOCUMENT\n"
                    "Puts a handwritten signature into a PDF document and seals it with a "
                    "certificate.\n\n") +
           listOf(commands) + QLatin1Char('\n') + options + QLatin1Char('\n') +
           Text::tr("'scribera-sign COMMAND --help' tells its options; --version the version.\n"
                    "Exit code: 0 done, 1 failure, 2 wrong usage, 3 cancelled, 4 nobody confirmed in time, 5 "
                    "nothing written on the pad. Ctrl-C drops what was begun and ends by the signal.\n");
}

// Without the usage, which the parser does not know.
QString optionsOf(const QCommandLineParser& parser)
{
    const QString text = parser.helpText();
    const int start = text.indexOf(QCoreApplication::translate("QCommandLineParser", "Options:"));
    const int end =
        text.indexOf(QLatin1Char('\n') + QCoreApplication::translate("QCommandLineParser", "Arguments:"));
    return text.mid(start, end - start);
}

// What a document says of itself may be quoted there, at any length.
Failure failureOf(const QString& document, const QString& reason)
{
    constexpr int longest = 250;
    const bool isLong = reason.size() > longest;
    return {document + QStringLiteral(": ") +
            quoted(isLong ? reason.left(longest) + QStringLiteral("...") : reason)};
}

// A few kilobytes of a hostile document may stand for gigabytes. They end as "not enough memory", not with
// the machine's other programs.
void limitMemory(const QString& document)
{
#if !defined(SCRIBERA_SANITIZED) // whose own memory is counted, too
    constexpr rlim_t anyDocument = rlim_t{1} << 30;
    constexpr rlim_t timesItsSize = 8;
    rlimit limit = {};
    if (getrlimit(RLIMIT_DATA, &limit) != 0)
        return;
    const rlim_t wanted = anyDocument + timesItsSize * static_cast<rlim_t>(QFileInfo(document).size());
    limit.rlim_cur = std::min(limit.rlim_cur, wanted);
    setrlimit(RLIMIT_DATA, &limit);
#else
    static_cast<void>(document);
#endif
}

int runCommand(const SignCommand& command, const QStringList& arguments)
{
    QCommandLineParser parser;
    startParser(parser, command.summary);
    command.addOptions(parser);
    const QString name = QLatin1String(command.name);
    if (!name.isEmpty())
        parser.addPositionalArgument(name, Text::tr(command.summary), name);
    parser.addPositionalArgument(Text::tr("document"), Text::tr("PDF document."), Text::tr("DOCUMENT"));
    if (!parse(parser, arguments))
        return printHelp(name.isEmpty() ? generalHelp(optionsOf(parser)) : parser.helpText());
    const QStringList files = parser.positionalArguments().mid(name.isEmpty() ? 0 : 1);
    if (files.isEmpty())
        throw UsageError{Text::tr("no document named")};
    if (files.size() > 1)
        throw UsageError{Text::tr("unexpected: %1").arg(files.last())};
    limitMemory(files.first());
    try {
        return command.run(parser, files.first());
    } catch (const sign::Refusal& refusal) {
        throw failureOf(files.first(), QString::fromStdString(refusal.reason));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) { // of what reads the document
        throw failureOf(files.first(), Text::tr("cannot be used: %1").arg(QString::fromUtf8(error.what())));
    }
}

int run(const QStringList& arguments)
{
    const QString first = arguments.value(1);
    if (first == QLatin1String("--version") || first == QLatin1String("-v"))
        return printHelp(QStringLiteral("scribera-sign " SCRIBERA_VERSION "\n"));
    const auto* const command =
        std::find_if(std::begin(commands), std::end(commands),
                     [&first](const SignCommand& row) { return first == QLatin1String(row.name); });
    try {
        return runCommand(command == std::end(commands) ? signing : *command, arguments);
    } catch (const Ending& ending) {
        print(stderr, QStringLiteral("scribera-sign: %1\n").arg(ending.sentence));
        return ending.code;
    }
}

} // namespace

int main(int argc, char** argv)
{
    // An idle pad shall cost no processor time.
    setenv("SCRIBERA_WORKERS", "wait", 0);
    catchInterrupts();
    std::signal(SIGXFSZ, SIG_IGN); // a limit to files shows as an output that cannot be written
    const rlimit none = {};
    setrlimit(RLIMIT_CORE, &none); // keys and passwords are in memory alone
    try {
        const QCoreApplication application(argc, argv);
        QCoreApplication::setApplicationName(QLatin1String(programName));
        // A report for programs has reasons in it, which are then in English wherever it is made.
        if (!QCoreApplication::arguments().contains(QStringLiteral("--json")))
            loadCatalogues();
        return exitCodeOf(programName, run, QCoreApplication::arguments());
    } catch (const Interrupted& interrupted) {
        return endBy(interrupted);
    }
}
