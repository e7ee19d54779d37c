// What commands share that wait at a pad.
#pragma once

#include "session.h"

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QSize>

#include <optional>

// --driver and --model, which every command has that opens a pad.
void addDriverAndModel(QCommandLineParser& parser);

// Whole seconds; nothing without the option. Throws UsageError.
std::optional<int> secondsOption(const QCommandLineParser& parser, const char* option);

// A canvas of this height in the proportions of the pad.
QSize canvasFor(const CPadModel& model, int height);

class Deadline
{
public:
    explicit Deadline(std::optional<int> seconds) : m_seconds(seconds) { m_clock.start(); }

    bool isOver() const { return m_seconds && m_clock.hasExpired(qint64{1000} * *m_seconds); }
    // Milliseconds to wait, not beyond the end.
    int wait(int atMost) const;
    double seconds() const { return static_cast<double>(m_clock.elapsed()) / 1000; }

private:
    std::optional<int> m_seconds;
    QElapsedTimer m_clock;
};

// Tells when the pad goes away and comes back, which the library does not notice.
class Presence
{
public:
    // Asks the pad, too: one that goes away at once is one that was there.
    explicit Presence(Session& session) : m_session(session), m_isThere(session.isAnswering())
    {
        m_clock.start();
    }

    bool isThere() const { return m_isThere; }
    // True when that has changed.
    bool look();

private:
    Session& m_session;
    QElapsedTimer m_clock;
    bool m_isThere;
};
