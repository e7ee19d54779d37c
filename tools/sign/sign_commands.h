// The commands of scribera-sign, each in a file of its own. They throw UsageError, Failure and sign::Refusal.
#pragma once

#include "secret.h"

#include <QCommandLineParser>
#include <QString>

#include <string>

// For every command that opens a document.
void addDocumentPasswordOption(QCommandLineParser& parser);
// qpdf keeps copies of it.
std::string documentPassword(const QCommandLineParser& parser);

// The first line of the file that the option names; empty without the option. Throws Failure.
sign::Secret passwordOption(const QCommandLineParser& parser, const char* option);

void addSigningOptions(QCommandLineParser& parser);
int signDocument(const QCommandLineParser& parser, const QString& document);

void addFieldOptions(QCommandLineParser& parser);
int listFields(const QCommandLineParser& parser, const QString& document);

void addVerifyOptions(QCommandLineParser& parser);
int verifyDocument(const QCommandLineParser& parser, const QString& document);

void addUnsealOptions(QCommandLineParser& parser);
int unsealInkOf(const QCommandLineParser& parser, const QString& document);
