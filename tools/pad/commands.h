// The commands of scribera-pad, each in a file of its own.
#pragma once

#include <QCommandLineParser>

// Beside those of every program.
enum PadExitCode
{
    Cancelled = 3,
    TimedOut = 4,
    NothingWritten = 5, // confirmed without ink, or ended without a sample
};

struct Command
{
    const char* name;
    const char* summary;
    const char* file; // what is named behind the options; null for nothing
    void (*addOptions)(QCommandLineParser& parser);
    int (*run)(const QCommandLineParser& parser, const QString& file);
};

void addNoOptions(QCommandLineParser& parser);

int listDevices(const QCommandLineParser& parser, const QString& file);

void addPadOptions(QCommandLineParser& parser);
int tellOfPad(const QCommandLineParser& parser, const QString& file);

void addWatchOptions(QCommandLineParser& parser);
int watchPad(const QCommandLineParser& parser, const QString& file);

void addRecordOptions(QCommandLineParser& parser);
int recordPad(const QCommandLineParser& parser, const QString& file);

void addSignOptions(QCommandLineParser& parser);
int signOnPad(const QCommandLineParser& parser, const QString& file);

int examine(const QCommandLineParser& parser, const QString& file);
