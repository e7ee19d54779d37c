// Texts of Qt's that our programs show. Qt has catalogues of its own, but many machines lack them: so ours
// have these texts, too. Nothing includes this file; lupdate reads it.
#pragma once

// "RTL" makes windows run from right to left, "LTR" is the rule.
QT_TRANSLATE_NOOP("QGuiApplication", "QT_LAYOUT_DIRECTION")

// Command lines.
QT_TRANSLATE_NOOP("QCommandLineParser", "Usage: %1")
QT_TRANSLATE_NOOP("QCommandLineParser", "[options]")
QT_TRANSLATE_NOOP("QCommandLineParser", "Options:")
QT_TRANSLATE_NOOP("QCommandLineParser", "Arguments:")
QT_TRANSLATE_NOOP("QCommandLineParser", "Unknown option '%1'.")
QT_TRANSLATE_NOOP("QCommandLineParser", "Unknown options: %1.")
QT_TRANSLATE_NOOP("QCommandLineParser", "Missing value after '%1'.")
QT_TRANSLATE_NOOP("QCommandLineParser", "Unexpected value after '%1'.")

// Buttons of dialogs.
QT_TRANSLATE_NOOP("QPlatformTheme", "OK")
QT_TRANSLATE_NOOP("QPlatformTheme", "Save")
QT_TRANSLATE_NOOP("QPlatformTheme", "Open")
QT_TRANSLATE_NOOP("QPlatformTheme", "Cancel")
QT_TRANSLATE_NOOP("QPlatformTheme", "Close")
QT_TRANSLATE_NOOP("QPlatformTheme", "Discard")
QT_TRANSLATE_NOOP("QPlatformTheme", "&Yes")
QT_TRANSLATE_NOOP("QPlatformTheme", "&No")
