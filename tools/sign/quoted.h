// What a document says of itself, for people to read.
#pragma once

#include <QString>

#include <string>

// Anybody may have written it: nothing in it shall steer a terminal, turn the line around or make up another
// one.
QString quoted(const QString& text);
QString quoted(const std::string& utf8);
