// The driver's end of the connection to the virtual pad.
#pragma once

#include "padlink.h"
#include "padsocket.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace simulator {

// What the virtual pad does; called on the link thread. False when the driver cannot take it, which ends the
// connection.
class PadListener
{
public:
    virtual bool takePadModel(const std::string& model) = 0;
    virtual bool takePadSamples(const std::vector<ScrSimSample>& samples) = 0;
    virtual bool takePadFingerprint(const padlink::FingerprintScan& scan) = 0;
    // The pad is gone while its pen touched; this sample ends the stroke, and is always taken.
    virtual void takeLiftedPen(const ScrSimSample& sample) = 0;

protected:
    ~PadListener() = default;
};

// Keeps looking for the pad as long as it runs, on a thread of its own. What the host asks of the pad is kept
// and told to a pad that comes later. All functions but stop() return without waiting for the pad; without
// start() they do nothing.
class DriverLink
{
public:
    explicit DriverLink(PadListener& listener) : m_listener(listener) {}
    DriverLink(const DriverLink&) = delete;
    DriverLink& operator=(const DriverLink&) = delete;
    ~DriverLink() { stop(); }

    // False when there is no thread or descriptor to be had.
    bool start(std::string path, int deviceType);
    // Waits until the pad has told its model or it is clear that none is there. At most that long.
    void waitForAnswer(std::chrono::milliseconds limit);
    // Whether there was a pad, and there is none now.
    bool hasLostPad();
    // Joins the thread; not to be called on it. What is on its way to the pad is given a moment to get there.
    void stop();

    void showScreen(bool on);
    void clear();
    void showVersion(bool shown, const std::string& text);
    void setPenStyle(bool withPressure);
    void showPicture(const unsigned char* pixels, int width, int height);

private:
    // What a pad has to know that comes when the host has said it already.
    struct Wishes
    {
        bool cleared = false;
        std::optional<padlink::Screen> screen;
        std::optional<padlink::VersionInfo> version;
        std::optional<padlink::PenStyle> penStyle;
    };

    void run();
    void serve(const Descriptor& socket);
    bool receive(const Descriptor& socket, padlink::Parser& parser);
    bool send(const Descriptor& socket);
    bool take(padlink::Message&& message);
    void liftPen();
    void flush(const Descriptor& socket);
    void answered();
    void complain(const std::string& reason);
    void post(const padlink::Message& message);
    bool isStopping();
    void wake();
    // False when stopping.
    bool pause();

    PadListener& m_listener;
    std::thread m_thread;
    Descriptor m_wake; // readable when m_outgoing or m_stopping has changed
    std::string m_path;
    int m_deviceType = 0;

    // Guards what follows. Never held while something is sent or the listener is called.
    std::mutex m_mutex;
    std::condition_variable m_answer;
    bool m_running = false;
    bool m_stopping = false;
    bool m_answered = false;
    bool m_introduced = false; // the pad knows what is in m_wishes
    bool m_overrun = false;    // the pad does not read
    bool m_hadPad = false;     // since start()
    Wishes m_wishes;
    std::string m_outgoing;

    // The link thread's own.
    std::string m_sending;
    bool m_hasWelcome = false;
    std::string m_complaint;                // the last one
    std::optional<ScrSimSample> m_touching; // the last sample, while the pen touches
};

} // namespace simulator
