// What the example hosts share: a family of functions, and a person at the pad.
#pragma once

#include "scriberasdk.h"
#include "scriberasdk_ext.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLibrary>
#include <QString>
#include <QStringList>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <unistd.h>

struct Model
{
    const char* name;
    int deviceType;
    int canvasWidth; // with which the canvas has the proportions of the pad's writing area
};

inline constexpr int kCanvasHeight = 400;
#define MODEL(name)                                                                                          \
    {#name, SC##name##_DEVICE,                                                                               \
     (kCanvasHeight * SCRIBERA_AREA_WIDTH_##name + SCRIBERA_AREA_HEIGHT_##name / 2) /                        \
         SCRIBERA_AREA_HEIGHT_##name},
inline constexpr Model kModels[] = {SCRIBERA_FAMILIES(MODEL)};
#undef MODEL

// Ends the program with one line.
template <typename... Words>
[[noreturn]] void quit(int exitCode, const char* format, Words... words)
{
    std::fprintf(exitCode == 0 ? stdout : stderr, format, words...);
    std::exit(exitCode);
}

// The arguments, when they are as many as the usage line says.
inline QStringList argumentsOf(const char* usage, int least, int most)
{
    QStringList arguments = QCoreApplication::arguments();
    if (arguments.contains(QStringLiteral("--version")))
        quit(0, "%s", "Scribera SDK " SCRIBERA_VERSION "\n");
    if (arguments.contains(QStringLiteral("--help")))
        quit(0, "usage: %s\n", usage);
    if (arguments.size() - 1 < least || arguments.size() - 1 > most)
        quit(2, "usage: %s\n", usage);
    return arguments;
}

// The library's threads sleep while a person signs. Libraries before 3.1 cannot do that.
inline void load(QLibrary& library)
{
    if (!library.load())
        quit(1, "%s\n", qPrintable(library.errorString()));
    const auto setWorkers = reinterpret_cast<decltype(&SCRX_SetWorkers)>(library.resolve("SCRX_SetWorkers"));
    if (setWorkers)
        setWorkers(SCRX_WORKERS_WAIT);
}

inline std::atomic<int> pressedKey{-1}; // written on the library's key-action thread

// One family of functions: the model's prefix in front of the operation's name.
class Pad
{
public:
    Pad(QLibrary& library, const Model& model) : m_library(library), m_model(model) {}

    // The result of the operation; a function that the library lacks ends the program.
    template <typename Result = int, typename... Arguments>
    Result call(const char* operation, Arguments... arguments) const
    {
        const QByteArray name = QByteArray("SC") + m_model.name + "_" + operation;
        const auto function =
            reinterpret_cast<Result (*)(int, Arguments...)>(m_library.resolve(name.constData()));
        if (!function)
            qFatal("%s: no such function", name.constData());
        return function(m_model.deviceType, arguments...);
    }

    // A text that the library made, copied and given back through its Free function.
    template <typename... Arguments>
    QByteArray text(const char* operation, const char* freeOperation, Arguments... arguments) const
    {
        char* const text = call<char*>(operation, arguments...);
        QByteArray copy(text);
        call<void>(freeOperation, text);
        return copy;
    }

    // A canvas in the parent, or off screen without one. Says why there is none.
    bool open(QWidget* parent) const
    {
        if (call<bool>("InitialDevice", parent, 0, 0, m_model.canvasWidth, kCanvasHeight))
            return true;
        char reason[1024] = "";
        const auto lastFailure =
            reinterpret_cast<decltype(&SCRX_LastStartFailure)>(m_library.resolve("SCRX_LastStartFailure"));
        if (lastFailure)
            lastFailure(reason, sizeof reason);
        std::fprintf(stderr, "%s: no pad: %s\n", m_model.name, reason);
        return false;
    }

    int points() const { return qMax(0, call("GetTotalPacketsNumber")); }

    bool save(int type, const QString& path) const
    {
        std::vector<wchar_t> widePath(static_cast<std::size_t>(path.size()) + 1, L'\0');
        path.toWCharArray(widePath.data());
        return call("SaveDrawingImage", type, widePath.data(), 1) == ARI_SUCCESS;
    }

    // Lets the person sign until a key is pressed, and returns the seconds. A terminal shows the time and the
    // points meanwhile, in one place; a file gets one line in the end.
    double waitForKey(const char* title) const
    {
        pressedKey = -1;
        call(
            "SignatureStatusCallback", +[](int status) { pressedKey = status; });
        const bool isTerminal = isatty(STDERR_FILENO) == 1;
        QElapsedTimer clock;
        const auto show = [&](const char* before, const char* after) {
            std::fprintf(stderr, "%s%-22s %5.1f s, %d points%s", before, title, clock.elapsed() / 1000.0,
                         points(), after);
        };
        for (clock.start(); pressedKey < 0 && clock.elapsed() < 60000; QThread::msleep(20)) {
            QApplication::processEvents();
            if (isTerminal)
                show("\r", " ");
        }
        if (isTerminal)
            std::fprintf(stderr, "\r%60s\r", "");
        else
            show("", "\n");
        return clock.elapsed() / 1000.0;
    }

private:
    QLibrary& m_library;
    const Model& m_model;
};
