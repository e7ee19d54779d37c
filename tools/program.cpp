#include "program.h"

#include "output.h"
#include "text.h"

#include <new>

namespace {

constexpr char helpOption[] = "help";

} // namespace

void print(std::FILE* file, const QString& text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), file);
}

int printHelp(const QString& text)
{
    writeOutput(text.toLocal8Bit(), QStringLiteral("-"));
    return Done;
}

int exitCodeOf(const char* program, int (*run)(const QStringList& arguments), const QStringList& arguments)
{
    const auto refuse = [program](const QString& reason, ExitCode code) {
        print(stderr, QStringLiteral("%1: %2\n").arg(QLatin1String(program), reason));
        return code;
    };
    try {
        return run(arguments);
    } catch (const UsageError& error) {
        return refuse(error.reason + QLatin1Char('\n') +
                          Text::tr("Try '%1 --help'.").arg(QLatin1String(program)),
                      WrongUsage);
    } catch (const Failure& failure) {
        return refuse(failure.reason, Failed);
    } catch (const std::bad_alloc&) {
        return refuse(Text::tr("not enough memory"), Failed);
    }
}

void startParser(QCommandLineParser& parser, const char* summary)
{
    parser.setApplicationDescription(Text::tr(summary));
    parser.addOption({{QStringLiteral("h"), QLatin1String(helpOption)}, Text::tr("This text.")});
}

bool parse(QCommandLineParser& parser, const QStringList& arguments)
{
    if (!parser.parse(arguments))
        throw UsageError{parser.errorText()};
    return !parser.isSet(QLatin1String(helpOption));
}

QString commandName(const QStringList& arguments)
{
    QString first = arguments.value(1);
    if (first.isEmpty() || first.startsWith(QLatin1Char('-')))
        throw UsageError{first.isEmpty() ? Text::tr("no command named")
                                         : Text::tr("a command comes first, not '%1'").arg(first)};
    return first;
}
