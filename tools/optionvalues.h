// Options that programs have in common. What reads one throws UsageError for a value that cannot be used.
#pragma once

#include "model/padmodel.h"

#include <QColor>
#include <QCommandLineParser>
#include <QSize>

QString wrongValue(const QCommandLineParser& parser, const char* option, const QString& expected);

// As what is expected.
QString oneOf(const QStringList& names);

// A whole number of digits alone, from 1 to the largest; otherwise 0.
int positiveNumber(const QString& text, int largest);

// The pad that --model names.
const CPadModel& modelOption(const QCommandLineParser& parser);

// WxH, each side at most this long.
QSize sizeOption(const QCommandLineParser& parser, int longestSide);

// The option's name is given, since programs differ in it.
int penWidthOption(const QCommandLineParser& parser, const char* option);
QColor colorOption(const QCommandLineParser& parser, const char* option);

int dpiOption(const QCommandLineParser& parser);
