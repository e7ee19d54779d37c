// Texts for people, for code without Qt: in their language where the program has loaded a catalogue, in
// English elsewhere. So it is in a driver, which is a guest in another's process.
#pragma once

#include <initializer_list>
#include <string>

// What the program calls this text in the person's language. UTF-8. The context is that of the catalogue.
std::string trText(const char* context, const char* english);

// A text with %1 to %9 replaced by these values, in whatever order its language has them.
std::string filled(const std::string& text, std::initializer_list<std::string> values);

// A text for catalogues that is looked up later, by trText() with the same context.
#define TR_LATER(context, english) english

// Set once, before there are other threads.
using TextLookup = std::string (*)(const char* context, const char* english);
void setTextLookup(TextLookup lookup);
