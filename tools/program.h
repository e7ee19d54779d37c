// What programs with commands have in common: how the command is found, what is said to people, how a program
// ends.
#pragma once

#include "failures.h"
#include "text.h"

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

enum ExitCode
{
    Done = 0,
    Failed = 1,
    WrongUsage = 2,
};

void print(std::FILE* file, const QString& text);

// To standard output, which counts as written only when it was flushed. Throws Failure.
int printHelp(const QString& text);

// Runs the program and tells on standard error why it failed, with its name before that.
int exitCodeOf(const char* program, int (*run)(const QStringList& arguments), const QStringList& arguments);

// The first argument when it may be a command's name. Throws UsageError.
QString commandName(const QStringList& arguments);

// What all parsers know: the command's summary, which is looked up, and --help.
void startParser(QCommandLineParser& parser, const char* summary);

// Reads the arguments; false when there is nothing to do but to print the help. Throws UsageError.
bool parse(QCommandLineParser& parser, const QStringList& arguments);

// The row of that name in a table of commands. Throws UsageError.
template <typename Command, std::size_t Count>
const Command& commandNamed(const Command (&commands)[Count], const QString& name)
{
    for (const Command& command : commands)
        if (name == QLatin1String(command.name))
            return command;
    throw UsageError{Text::tr("there is no command '%1'").arg(name)};
}

// The commands as --help lists them.
template <typename Command, std::size_t Count>
QString listOf(const Command (&commands)[Count])
{
    int longest = 13;
    for (const Command& command : commands)
        longest = std::max(longest, static_cast<int>(std::strlen(command.name)));
    QString text = Text::tr("Commands:") + QLatin1Char('\n');
    for (const Command& command : commands)
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command.name), -longest)
                    .arg(Text::tr(command.summary));
    return text;
}
