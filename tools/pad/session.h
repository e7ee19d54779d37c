// The one place that talks to the SDK.
#pragma once

#include "driver.h"
#include "model/padmodel.h"

#include <QByteArray>
#include <QColor>
#include <QSize>

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

class QWidget;
struct PadFamily;

// What happened at the pad.
struct PadEvent
{
    enum class What
    {
        Down,
        Move,
        Up,
        KeyTouched, // at most a look at the pad late
        KeyUsed     // what the key stands for shall be done
    };

    What what = What::Down;
    std::int64_t nanoseconds = 0; // of a clock that only goes forward
    int x = 0;                    // in pad units, as are the others; of points alone
    int y = 0;
    int pressure = 0;
    bool isConfirm = false; // of keys alone
    int clears = 0;         // how often the pad was cleared before that
};

// An open pad. Made and ended on one thread, which asks; events come from the library's threads.
class Session
{
public:
    // In the parent, or off screen without one. onConfirm runs on a thread of the library's when the confirm
    // key is used, while no pen comes down. Throws Failure, which tells why there is no pad.
    Session(const CPadModel& model, const Driver& driver, QWidget* parent, const QSize& canvas,
            std::function<void()> onConfirm = {});
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // The clock of the events.
    static std::int64_t now();

    // Readable when there are events.
    int descriptor() const { return m_wakeUp; }
    // Those since the last call, with a look at the pad's keys.
    std::vector<PadEvent> takeEvents();

    const CPadModel& model() const { return m_model; }
    QString padId() const; // empty when the pad does not tell
    QString penId() const;
    QString version() const;
    // An answer of getDeviceInfo that is a number.
    int number(int index, int which) const;
    QString text(int index) const;
    // False when a pad that has told its id does not tell it any more.
    bool isAnswering();

    int points() const;
    bool setPen(int width, const QColor& color) const;
    bool setPenWidth(int width) const;
    bool setPenColor(const QColor& color) const;
    bool setPenStyle(bool byPressure) const;
    // Points are counted from 0 again.
    bool clear();
    // The part around the ink with these margins in pixels; all without any.
    bool save(int type, const std::string& path, int dotsPerInch, const QSize& clipMargins) const;
    QByteArray ink() const; // empty without points
    // Lets the pad's reader, where it has one, fill a picture of its own of this size. White until then.
    bool placeFingerprint(const QSize& size) const;
    QByteArray fingerprint(int type) const; // in Base64; empty where there is none

private:
    static void onKey(int status) noexcept;
    static void onPoint(unsigned long position, long pen) noexcept;
    void lookAtKeys(); // with m_lock held
    void put(const PadEvent& event);
    void putPoints();

    const CPadModel& m_model;
    const PadFamily& m_family;
    const std::function<void()> m_onConfirm;
    int m_wakeUp = -1;
    bool m_hasAnswered = false;
    std::mutex m_lock;              // of what follows, which the library's threads change too
    std::vector<PadEvent> m_events; // in their order
    bool m_isPenDown = false;
    bool m_isClearing = false; // points that come now may be gone at once
    int m_pointsTaken = 0;
    int m_clears = 0;
};

// Version of the library that is loaded, its file, and why it could not open a pad.
QString libraryVersion();
QString libraryFile();
QString whyNotOpened(const Driver& driver, const CPadModel& model);
