// The simulated pad behind the driver's entry points and its control interface.
#pragma once

#include "configuration.h"
#include "driverlink.h"
#include "entry.h"
#include "fingerprint.h"
#include "playback.h"
#include "scriberasim.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace simulator {

using PenCallback = void (*)(int, int, int, int);
using FingerprintCallback = void (*)(unsigned char*, int, int);

// Results of the entry points where the host is at fault; SetResult overrides any of them.
constexpr int ResultOk = 0;
constexpr int ResultFailed = -1;
constexpr int ResultBadArgument = -2;

// Of a fingerprint or a picture, in bytes.
constexpr int LargestPicture = 16 << 20;

class Simulator final : private PadListener
{
public:
    Simulator() = default;
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    // What every entry point does first: counts the call, waits the set delay and tells the result that was
    // set for it. The argument is kept when the entry point has one.
    int enter(Entry entry, std::optional<int> argument = std::nullopt);

    int initial(int deviceType, PenCallback penCallback, FingerprintCallback fingerprintCallback);
    int unInitial();
    int readText(Entry entry, char* buffer, int maxCount);
    int showScreen(bool on);
    int clearScreen();
    int showVersion(bool shown);
    int setPenStyle(bool withPressure);
    int showPicture(const unsigned char* picture, int length, int width, int height, const bool* abort);

    int sendSamples(const ScrSimSample* samples, int count);
    int sendFingerprint(const unsigned char* pixels, int length, int score);
    int sendSyntheticFingerprint(const char* pattern, unsigned seed, int score);
    int sendFingerprintFile(const char* path, int score);
    int waitIdle(int timeoutMs);
    int play(const char* path, double speed, bool loop, int keyAtEnd);
    int stopPlaying();
    // Keeps the reason for ScrSim_LastError; -1.
    int refuse(std::string reason);
    int progress();
    std::size_t copyLastError(char* out, std::size_t size);

    int setResult(const char* entryPoint, int result);
    int setDelay(const char* entryPoint, int milliseconds);
    int setText(const char* entryPoint, const char* bytes, int count, bool terminate);
    int callCount(const char* entryPoint);
    int lastArgument(const char* entryPoint);
    int callLog(char* out, int size);
    int setTransferTime(int milliseconds);
    int lastPicture(unsigned char* out, int size, int* width, int* height);
    int transferCount();
    int abortedTransferCount();
    void reset();

    bool isStopped();

private:
    enum class State
    {
        Stopped,
        Starting,
        Started,
        Stopping,
    };

    struct Text
    {
        std::string bytes;
        bool terminate = true;
    };

    struct EntryState
    {
        int calls = 0;
        std::optional<int> argument;
        int result = ResultOk;
        int delay = 0;
        std::optional<Text> text;
    };

    // What the person at the pad did and the sample thread has not taken yet. Two of them take turns, so that
    // the steady state allocates nothing.
    struct Queue
    {
        std::vector<ScrSimSample> samples;
        std::vector<Fingerprint> fingerprints;

        bool isEmpty() const { return samples.empty() && fingerprints.empty(); }
        void clear();
    };

    // Settings that tests change and ScrSim_Reset takes back.
    struct Settings
    {
        std::array<EntryState, EntryCount> entries;
        std::vector<Entry> callLog;
        std::string lastError;
        int transferTime = 0;
        int transfers = 0;
        int abortedTransfers = 0;
        std::vector<unsigned char> picture;
        int pictureWidth = 0;
        int pictureHeight = 0;
    };

    EntryState& entryState(Entry entry) { return m_settings.entries[static_cast<std::size_t>(entry)]; }
    EntryState* entryState(const char* name);
    int fail(std::string reason);
    std::string modelText();
    const Pad& startedPad();

    std::unique_ptr<Playback> makePlayback(Recording recording, double speed, bool loop, int keyAtEnd);
    // Null when there is nothing to play.
    std::unique_ptr<Playback> makePlayback(Configuration&& configuration);
    bool takePadModel(const std::string& model) override;
    bool takePadSamples(const std::vector<ScrSimSample>& samples) override;
    bool takePadFingerprint(const padlink::FingerprintScan& scan) override;
    void takeLiftedPen(const ScrSimSample& sample) override;
    // As configured: starts looking for the virtual pad, and gives it a moment to answer. False when it
    // cannot.
    bool startLink(const Configuration& configuration);
    // Tells the person who set the pad up, and the host by the result.
    int complain(const std::string& reason);
    bool isTaking() const { return m_state == State::Starting || m_state == State::Started; }

    bool startThread();
    bool isSampleThread() const { return m_threadId == std::this_thread::get_id(); }

    void run();
    void deliver(Fingerprint& print);
    void deliverQueue();
    void deliverDueSamples();
    void requestAttention() { m_attention.store(true, std::memory_order_release); }

    // Guards everything that is not atomic or said to belong to the sample thread.
    std::mutex m_mutex;
    std::condition_variable m_wake; // the sample thread waits here
    std::condition_variable m_idle; // ScrSim_WaitIdle waits here

    Settings m_settings;
    std::string m_model; // the virtual pad's, else as configured by the environment, else empty
    int m_deviceType = 2;

    State m_state = State::Stopped;
    PenCallback m_penCallback = nullptr;
    FingerprintCallback m_fingerprintCallback = nullptr;
    std::thread m_thread;
    std::thread::id m_threadId;   // of the running sample thread
    void* m_ownLibrary = nullptr; // keeps the code loaded while the thread runs in it

    Queue m_pending;
    bool m_delivering = false;
    bool m_playChanged = false;               // m_nextPlayback (null: none) replaces m_playback
    std::unique_ptr<Playback> m_nextPlayback; // handed to the sample thread
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_attention{false}; // something new under m_mutex
    std::atomic<std::size_t> m_delivered{0};

    Queue m_taken;                        // the sample thread's own
    std::unique_ptr<Playback> m_playback; // pointer changed under m_mutex, content the sample thread's own

    DriverLink m_link{*this}; // has a lock of its own; never called with m_mutex held
};

} // namespace simulator
