// The person at the pad: what tests, recordings and the virtual pad do to it.
#include "simulator.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace simulator {
namespace {

using Clock = Playback::Clock;
using std::chrono::milliseconds;

// A hand that has signed takes its time to reach the key, and holds it for a moment.
constexpr int KeyPause = 250;
constexpr int KeyHold = 90;

// How far a host may lag behind the virtual pad: eight minutes of writing.
constexpr std::size_t MostPendingSamples = 100'000;
constexpr std::size_t MostPendingFingerprints = 32;

bool isSpeed(double speed)
{
    return std::isfinite(speed) && speed >= 0;
}

} // namespace

int Simulator::fail(std::string reason)
{
    m_settings.lastError = std::move(reason);
    return -1;
}

int Simulator::refuse(std::string reason)
{
    const std::lock_guard lock(m_mutex);
    return fail(std::move(reason));
}

int Simulator::sendSamples(const ScrSimSample* samples, int count)
{
    const std::lock_guard lock(m_mutex);
    if (samples == nullptr || count < 0)
        return fail("no samples, or a negative count");
    if (m_state != State::Started)
        return fail("the pad is not started");
    try {
        m_pending.samples.insert(m_pending.samples.end(), samples, samples + count);
    } catch (const std::bad_alloc&) {
        return fail("out of memory");
    }
    requestAttention();
    m_wake.notify_all();
    return 0;
}

int Simulator::sendFingerprint(const unsigned char* pixels, int length, int score)
{
    if (length < 0 || length > LargestPicture)
        return refuse("fingerprint length out of range");
    Fingerprint print;
    print.isNull = pixels == nullptr;
    print.length = length;
    print.score = score;
    if (pixels != nullptr) {
        const std::size_t count = static_cast<std::size_t>(length);
        print.pixels.reserve(std::max(count, FingerprintSize));
        print.pixels.assign(pixels, pixels + count);
        print.pixels.resize(std::max(count, FingerprintSize), 255);
    }
    const std::lock_guard lock(m_mutex);
    if (m_state != State::Started)
        return fail("the pad is not started");
    print.position = m_pending.samples.size();
    m_pending.fingerprints.push_back(std::move(print));
    requestAttention();
    m_wake.notify_all();
    return 0;
}

bool Simulator::takePadModel(const std::string& model)
{
    const std::lock_guard lock(m_mutex);
    m_model = model;
    return true;
}

bool Simulator::takePadSamples(const std::vector<ScrSimSample>& samples)
{
    const std::lock_guard lock(m_mutex);
    if (!isTaking())
        return true;
    if (m_pending.samples.size() + samples.size() > MostPendingSamples)
        return false;
    m_pending.samples.insert(m_pending.samples.end(), samples.begin(), samples.end());
    requestAttention();
    m_wake.notify_all();
    return true;
}

void Simulator::takeLiftedPen(const ScrSimSample& sample)
{
    const std::lock_guard lock(m_mutex);
    if (!isTaking())
        return;
    m_pending.samples.push_back(sample);
    requestAttention();
    m_wake.notify_all();
}

bool Simulator::takePadFingerprint(const padlink::FingerprintScan& scan)
{
    Fingerprint print;
    print.length = static_cast<int>(scan.pixels.size());
    print.score = scan.score;
    print.pixels = scan.pixels;
    const std::lock_guard lock(m_mutex);
    // The pad may have come after its host began, and be of another kind than the host's.
    if (!isTaking() || m_deviceType != DeviceWithSensor)
        return true;
    if (m_pending.fingerprints.size() >= MostPendingFingerprints)
        return false;
    print.position = m_pending.samples.size();
    m_pending.fingerprints.push_back(std::move(print));
    requestAttention();
    m_wake.notify_all();
    return true;
}

int Simulator::sendSyntheticFingerprint(const char* pattern, unsigned seed, int score)
{
    const std::optional<RidgePattern> ridges = ridgePatternByName(pattern == nullptr ? "" : pattern);
    if (!ridges)
        return refuse("the pattern is none of \"loop\", \"whorl\" and \"arch\"");
    const std::vector<unsigned char> pixels = syntheticFingerprint(*ridges, seed);
    return sendFingerprint(pixels.data(), static_cast<int>(pixels.size()), score);
}

int Simulator::sendFingerprintFile(const char* path, int score)
{
    if (path == nullptr || *path == '\0')
        return refuse("no fingerprint file named");
    std::vector<unsigned char> pixels;
    std::string error;
    if (!readGreyMap(path, pixels, error))
        return refuse(std::move(error));
    return sendFingerprint(pixels.data(), static_cast<int>(pixels.size()), score);
}

int Simulator::waitIdle(int timeoutMs)
{
    const auto deadline = Clock::now() + milliseconds(std::max(timeoutMs, 0));
    std::unique_lock lock(m_mutex);
    // Inside a callback the last one has not returned, and never will while it waits for itself.
    if (isSampleThread())
        return fail("a callback cannot wait until the pad is idle");
    const auto isIdle = [this] {
        if (m_state == State::Stopped || m_state == State::Starting)
            return true;
        return m_state == State::Started && !m_delivering && m_pending.isEmpty() && !m_playChanged &&
               m_playback == nullptr;
    };
    return m_idle.wait_until(lock, deadline, isIdle) ? 0 : -1;
}

std::unique_ptr<Playback> Simulator::makePlayback(Recording recording, double speed, bool loop, int keyAtEnd)
{
    if (!recording.samples.empty()) {
        const std::lock_guard lock(m_mutex);
        const Pad& pad = startedPad();
        scaleRecording(recording, pad.area, pad.maxPressure);
    }
    auto playback = std::make_unique<Playback>();
    playback->samples = std::move(recording.samples);
    playback->recordedCount = playback->samples.size();
    playback->speed = speed;
    playback->loop = loop;
    if (keyAtEnd != NoKey) {
        const std::int64_t end = playback->samples.empty() ? 0 : playback->samples.back().milliseconds;
        playback->samples.push_back({end + KeyPause, 0, 0, 0, keyAtEnd == 1 ? ConfirmKey : CancelKey});
        playback->samples.push_back({end + KeyPause + KeyHold, 0, 0, 0, PenUp});
    }
    return playback;
}

std::unique_ptr<Playback> Simulator::makePlayback(Configuration&& configuration)
{
    if (!configuration.playsAnything())
        return nullptr;
    std::unique_ptr<Playback> playback =
        makePlayback(std::move(configuration.recording).value_or(Recording()), configuration.speed,
                     configuration.loop, configuration.keyAtEnd);
    if (configuration.finger) {
        Fingerprint print;
        print.position = playback->recordedCount;
        print.pixels = std::move(configuration.finger->pixels);
        print.length = static_cast<int>(print.pixels.size());
        print.score = configuration.finger->score;
        playback->fingerprint = std::move(print);
    }
    playback->start = Clock::now() + configuration.startPause;
    return playback;
}

int Simulator::play(const char* path, double speed, bool loop, int keyAtEnd)
{
    {
        const std::lock_guard lock(m_mutex);
        if (path == nullptr || *path == '\0')
            return fail("no recording named");
        if (!isSpeed(speed))
            return fail("the speed is not a number from 0 up");
        if (keyAtEnd < NoKey || keyAtEnd > 1)
            return fail("the key at the end is none of -1, 0 and 1");
        if (m_state != State::Started)
            return fail("the pad is not started");
    }
    std::unique_ptr<Playback> playback;
    try {
        Recording recording;
        std::string error;
        if (!readRecording(path, recording, error))
            return refuse(std::move(error));
        playback = makePlayback(std::move(recording), speed, loop, keyAtEnd);
    } catch (const std::bad_alloc&) {
        return refuse("out of memory");
    }
    const std::lock_guard lock(m_mutex);
    if (m_state != State::Started)
        return fail("the pad is not started");
    playback->start = Clock::now();
    m_nextPlayback = std::move(playback);
    m_playChanged = true;
    requestAttention();
    m_wake.notify_all();
    return 0;
}

int Simulator::stopPlaying()
{
    const std::lock_guard lock(m_mutex);
    if (m_state != State::Started)
        return fail("the pad is not started");
    m_nextPlayback.reset();
    m_playChanged = true;
    requestAttention();
    m_wake.notify_all();
    return 0;
}

int Simulator::progress()
{
    const std::lock_guard lock(m_mutex);
    if (m_playChanged)
        return m_nextPlayback == nullptr ? 1000 : 0;
    if (m_playback == nullptr || m_playback->recordedCount == 0)
        return 1000;
    return static_cast<int>(m_delivered.load() * 1000 / m_playback->recordedCount);
}

} // namespace simulator
