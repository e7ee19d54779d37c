#include "simulator.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <system_error>
#include <utility>

#include <dlfcn.h>
#include <pthread.h>

namespace simulator {
namespace {

using Clock = Playback::Clock;
using std::chrono::milliseconds;

constexpr std::array<const char*, EntryCount> EntryNames{
    "SCRDAPI_Initial",
    "SCRDAPI_UnInitial",
    "SCRDAPI_OpenDeviceLCD",
    "SCRDAPI_ClearDeviceContent",
    "SCRDAPI_GetDevicePenID",
    "SCRDAPI_GetDevicePadID",
    "SCRDAPI_GetDeviceSecureID",
    "SCRDAPI_GetDevicePartsVersion",
    "SCRDAPI_ShowVersionInfoOnDevice",
    "SCRDAPI_SetDevicePenStyle",
    "SCRDAPI_ShowFPImageOnDevice",
};

// A hand that has signed takes its time to reach the key, and holds it for a moment.
constexpr int KeyPause = 250;
constexpr int KeyHold = 90;
constexpr int LoopPause = 5;
// Before the key's pause is over: the key ends what the finger is part of.
constexpr int FingerprintPause = 120;

constexpr int LargestPicture = 16 << 20;

// How far a host may lag behind the virtual pad: eight minutes of writing.
constexpr std::size_t MostPendingSamples = 100'000;
constexpr std::size_t MostPendingFingerprints = 32;

bool isIdentity(Entry entry)
{
    return entry == Entry::GetDevicePenID || entry == Entry::GetDevicePadID ||
           entry == Entry::GetDeviceSecureID || entry == Entry::GetDevicePartsVersion;
}

bool isSpeed(double speed)
{
    return std::isfinite(speed) && speed >= 0;
}

// A handle on this very library. The loader then keeps the code until the handle is closed, so a host that
// unloads a started driver does not pull the code away under the sample thread.
void* openOwnLibrary()
{
    Dl_info info = {};
    if (dladdr(reinterpret_cast<const void*>(&openOwnLibrary), &info) == 0 || info.dli_fname == nullptr)
        return nullptr;
    return dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
}

} // namespace

std::optional<Entry> entryByName(const char* name)
{
    if (name == nullptr)
        return std::nullopt;
    for (std::size_t index = 0; index < EntryNames.size(); ++index) {
        if (std::strcmp(name, EntryNames[index]) == 0)
            return static_cast<Entry>(index);
    }
    return std::nullopt;
}

const char* entryName(Entry entry)
{
    return EntryNames[static_cast<std::size_t>(entry)];
}

// Not for speed 0.
Clock::duration Playback::scaled(std::int64_t recordedMilliseconds) const
{
    // Ten years at most: a tiny speed must not overflow the clock.
    constexpr double Longest = 3.0e17;
    const double nanoseconds = static_cast<double>(recordedMilliseconds) * 1.0e6 / speed;
    return std::chrono::nanoseconds(static_cast<std::int64_t>(std::min(nanoseconds, Longest)));
}

Clock::time_point Playback::dueTime() const
{
    if (speed == 0)
        return start;
    if (!isFingerprintNext())
        return start + scaled(samples[next].milliseconds);
    const std::int64_t end = next == 0 ? 0 : samples[next - 1].milliseconds;
    return start + scaled(end + FingerprintPause);
}

void Playback::fingerprintDelivered()
{
    // A key's pause has room for the finger; without one the next pass begins later.
    if (next == samples.size() && speed > 0)
        start += scaled(FingerprintPause);
    fingerprint.reset();
}

bool Playback::rewind()
{
    if (!loop || samples.empty())
        return false;
    if (speed > 0)
        start += scaled(samples.back().milliseconds + LoopPause);
    next = 0;
    return true;
}

void Simulator::Queue::clear()
{
    samples.clear();
    fingerprints.clear();
}

// --- Entry points
// ---------------------------------------------------------------------------------------------

int Simulator::enter(Entry entry, std::optional<int> argument)
{
    int delay = 0;
    int result = ResultOk;
    {
        const std::lock_guard lock(m_mutex);
        EntryState& state = entryState(entry);
        ++state.calls;
        if (argument)
            state.argument = argument;
        m_settings.callLog.push_back(entry);
        delay = state.delay;
        result = state.result;
    }
    if (delay > 0)
        std::this_thread::sleep_for(milliseconds(delay));
    return result;
}

int Simulator::initial(int deviceType, PenCallback penCallback, FingerprintCallback fingerprintCallback)
{
    if (padForDevice(deviceType, {}) == nullptr || penCallback == nullptr)
        return ResultBadArgument;
    Configuration configuration;
    std::string error;
    if (!readConfiguration(deviceType, configuration, error))
        return complain(error);
    {
        const std::lock_guard lock(m_mutex);
        if (m_state != State::Stopped)
            return ResultFailed;
        m_state = State::Starting;
        m_deviceType = deviceType;
        m_model = configuration.model;
        m_penCallback = penCallback;
        m_fingerprintCallback = fingerprintCallback;
    }
    void* const ownLibrary = openOwnLibrary();
    if (!startLink(configuration))
        error = configuration.padSocket + ": no thread for the connection to the virtual pad";
    std::unique_ptr<Playback> playback;
    try {
        playback = makePlayback(std::move(configuration));
    } catch (const std::bad_alloc&) {
        error = "out of memory";
    }

    std::unique_lock lock(m_mutex);
    m_stop.store(false);
    m_playChanged = playback != nullptr;
    m_nextPlayback = std::move(playback);
    m_ownLibrary = ownLibrary;
    if (error.empty() && startThread()) {
        m_state = State::Started;
        return ResultOk;
    }
    m_state = State::Stopping;
    lock.unlock();
    m_link.stop();
    lock.lock();
    m_pending.clear();
    m_nextPlayback.reset();
    m_playChanged = false;
    m_ownLibrary = nullptr;
    m_state = State::Stopped;
    lock.unlock();
    if (ownLibrary != nullptr)
        dlclose(ownLibrary);
    return complain(error.empty() ? "no thread for the samples" : error);
}

bool Simulator::startLink(const Configuration& configuration)
{
    if (configuration.padSocket.empty())
        return true;
    if (!m_link.start(configuration.padSocket, m_deviceType))
        return false;
    m_link.waitForAnswer(configuration.padWait);
    return true;
}

int Simulator::complain(const std::string& reason)
{
    std::fprintf(stderr, "scribera simulator: %s\n", reason.c_str());
    return refuse(reason);
}

bool Simulator::startThread()
{
    // The host's signal handlers belong on the host's threads.
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    bool started = true;
    try {
        m_thread = std::thread([this] { run(); });
        m_threadId = m_thread.get_id();
    } catch (const std::exception&) {
        started = false;
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    if (started)
        pthread_setname_np(m_thread.native_handle(), "scribera-sim");
    return started;
}

int Simulator::unInitial()
{
    {
        const std::lock_guard lock(m_mutex);
        // A callback cannot wait for its own end.
        if (m_state != State::Started || isSampleThread())
            return ResultFailed;
        m_state = State::Stopping;
        m_stop.store(true);
        requestAttention();
        m_wake.notify_all();
    }
    m_link.stop();
    m_thread.join();
    void* ownLibrary = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        m_threadId = std::thread::id();
        m_pending.clear();
        m_taken.clear();
        m_playback.reset();
        m_nextPlayback.reset();
        m_playChanged = false;
        m_penCallback = nullptr;
        m_fingerprintCallback = nullptr;
        ownLibrary = std::exchange(m_ownLibrary, nullptr);
        m_state = State::Stopped;
        m_idle.notify_all();
    }
    // The host still holds a handle of its own, or it could not have called this.
    if (ownLibrary != nullptr)
        dlclose(ownLibrary);
    return ResultOk;
}

std::string Simulator::modelText()
{
    const std::optional<Text>& text = entryState(Entry::GetDevicePartsVersion).text;
    if (text)
        return text->bytes.substr(0, text->bytes.find('\0'));
    return m_model.empty() ? std::string(canonicalModel(m_deviceType)) : m_model;
}

const Pad& Simulator::startedPad()
{
    return *padForDevice(m_deviceType, modelText());
}

int Simulator::readText(Entry entry, char* buffer, int maxCount)
{
    if (buffer == nullptr || maxCount <= 0)
        return ResultBadArgument;
    if (m_link.hasLostPad())
        return ResultFailed;
    const std::lock_guard lock(m_mutex);
    Text text;
    if (entryState(entry).text)
        text = *entryState(entry).text;
    else if (entry == Entry::GetDevicePadID)
        text.bytes = "SIMPAD0001";
    else if (entry == Entry::GetDevicePenID)
        text.bytes = "SIMPEN0001";
    else if (entry == Entry::GetDeviceSecureID)
        text.bytes = "SIMSEC0001";
    else
        text.bytes = modelText();

    const std::size_t room = static_cast<std::size_t>(maxCount);
    const std::size_t count = std::min(text.bytes.size(), room);
    std::memcpy(buffer, text.bytes.data(), count);
    if (text.terminate && count < room)
        buffer[count] = '\0';
    return ResultOk;
}

int Simulator::showScreen(bool on)
{
    m_link.showScreen(on);
    return ResultOk;
}

int Simulator::clearScreen()
{
    m_link.clear();
    return m_link.hasLostPad() ? ResultFailed : ResultOk;
}

int Simulator::showVersion(bool shown)
{
    std::string text;
    {
        const std::lock_guard lock(m_mutex);
        text = modelText();
    }
    m_link.showVersion(shown, text);
    return ResultOk;
}

int Simulator::setPenStyle(bool withPressure)
{
    m_link.setPenStyle(withPressure);
    return ResultOk;
}

int Simulator::showPicture(const unsigned char* picture, int length, int width, int height, const bool* abort)
{
    // Two bytes a pixel: other numbers do not describe a picture, and reading on would leave the host's
    // buffer.
    if (picture == nullptr || width <= 0 || height <= 0 || length > LargestPicture ||
        static_cast<std::int64_t>(width) * height * 2 != length)
        return ResultBadArgument;
    const auto isAborted = [abort] {
        const auto* flag = reinterpret_cast<const unsigned char*>(abort);
        return flag != nullptr && __atomic_load_n(flag, __ATOMIC_ACQUIRE) != 0;
    };
    int transferTime = 0;
    {
        const std::lock_guard lock(m_mutex);
        ++m_settings.transfers;
        transferTime = m_settings.transferTime;
    }
    const auto end = Clock::now() + milliseconds(transferTime);
    bool aborted = isAborted();
    while (!aborted && Clock::now() < end) {
        std::this_thread::sleep_for(std::min<Clock::duration>(milliseconds(1), end - Clock::now()));
        aborted = isAborted();
    }
    std::vector<unsigned char> copy;
    if (!aborted)
        copy.assign(picture, picture + length);
    {
        const std::lock_guard lock(m_mutex);
        if (aborted) {
            ++m_settings.abortedTransfers;
            return ResultFailed;
        }
        m_settings.picture.swap(copy);
        m_settings.pictureWidth = width;
        m_settings.pictureHeight = height;
    }
    m_link.showPicture(picture, width, height);
    return ResultOk;
}

// --- The sample thread
// ----------------------------------------------------------------------------------------

void Simulator::run()
{
    std::unique_lock lock(m_mutex);
    while (!m_stop.load()) {
        m_attention.store(false, std::memory_order_relaxed);
        if (m_playChanged) {
            m_playback = std::move(m_nextPlayback);
            m_playChanged = false;
            m_delivered.store(0);
        }
        if (!m_pending.isEmpty()) {
            std::swap(m_pending, m_taken);
            m_delivering = true;
            lock.unlock();
            deliverQueue();
            lock.lock();
            m_delivering = false;
            continue;
        }
        if (m_playback == nullptr) {
            m_idle.notify_all();
            m_wake.wait(lock, [this] { return m_attention.load(std::memory_order_relaxed); });
            continue;
        }
        if (m_playback->isAtEnd() && !m_playback->rewind()) {
            m_playback.reset();
            continue;
        }
        const Clock::time_point due = m_playback->dueTime();
        if (Clock::now() < due) {
            m_wake.wait_until(lock, due, [this] { return m_attention.load(std::memory_order_relaxed); });
            continue;
        }
        m_delivering = true;
        lock.unlock();
        deliverDueSamples();
        lock.lock();
        m_delivering = false;
    }
}

void Simulator::deliver(Fingerprint& print)
{
    if (m_fingerprintCallback != nullptr)
        m_fingerprintCallback(print.isNull ? nullptr : print.pixels.data(), print.length, print.score);
}

void Simulator::deliverQueue()
{
    std::size_t fingerprint = 0;
    const auto deliverFingerprintsAt = [&](std::size_t position) {
        for (; fingerprint < m_taken.fingerprints.size(); ++fingerprint) {
            Fingerprint& print = m_taken.fingerprints[fingerprint];
            if (print.position != position || m_stop.load(std::memory_order_acquire))
                return;
            deliver(print);
        }
    };
    for (std::size_t index = 0; index < m_taken.samples.size(); ++index) {
        deliverFingerprintsAt(index);
        if (m_stop.load(std::memory_order_acquire))
            break;
        const ScrSimSample& sample = m_taken.samples[index];
        m_penCallback(sample.x, sample.y, sample.pressure, sample.penStatus);
    }
    deliverFingerprintsAt(m_taken.samples.size());
    m_taken.clear();
}

void Simulator::deliverDueSamples()
{
    Playback& playback = *m_playback;
    while (!m_attention.load(std::memory_order_acquire)) {
        if (playback.isFingerprintNext()) {
            deliver(*playback.fingerprint);
            playback.fingerprintDelivered();
        } else {
            const RecordedSample& sample = playback.samples[playback.next];
            m_penCallback(sample.x, sample.y, sample.pressure, sample.status);
            ++playback.next;
            m_delivered.store(std::min(playback.next, playback.recordedCount), std::memory_order_relaxed);
        }
        if (playback.isAtEnd())
            return;
        if (playback.speed > 0 && Clock::now() < playback.dueTime())
            return;
    }
}

// --- The person at the pad
// ------------------------------------------------------------------------------------

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

// --- Settings
// -------------------------------------------------------------------------------------------------

Simulator::EntryState* Simulator::entryState(const char* name)
{
    const std::optional<Entry> entry = entryByName(name);
    return entry ? &entryState(*entry) : nullptr;
}

std::size_t Simulator::copyLastError(char* out, std::size_t size)
{
    const std::lock_guard lock(m_mutex);
    const std::size_t count = std::min(m_settings.lastError.size(), size - 1);
    std::memcpy(out, m_settings.lastError.data(), count);
    out[count] = '\0';
    return count;
}

int Simulator::setResult(const char* entryPoint, int result)
{
    const std::lock_guard lock(m_mutex);
    EntryState* state = entryState(entryPoint);
    if (state == nullptr)
        return fail("no such entry point");
    state->result = result;
    return 0;
}

int Simulator::setDelay(const char* entryPoint, int delay)
{
    const std::lock_guard lock(m_mutex);
    EntryState* state = entryState(entryPoint);
    if (state == nullptr || delay < 0)
        return fail("no such entry point, or a negative delay");
    state->delay = delay;
    return 0;
}

int Simulator::setText(const char* entryPoint, const char* bytes, int count, bool terminate)
{
    const std::lock_guard lock(m_mutex);
    const std::optional<Entry> entry = entryByName(entryPoint);
    if (!entry || !isIdentity(*entry))
        return fail("not an entry point that writes a text");
    if (count < 0 || (bytes == nullptr && count > 0))
        return fail("no bytes, or a negative count");
    Text text;
    if (count > 0)
        text.bytes.assign(bytes, static_cast<std::size_t>(count));
    text.terminate = terminate;
    entryState(*entry).text = std::move(text);
    return 0;
}

int Simulator::callCount(const char* entryPoint)
{
    const std::lock_guard lock(m_mutex);
    const EntryState* state = entryState(entryPoint);
    return state == nullptr ? fail("no such entry point") : state->calls;
}

int Simulator::lastArgument(const char* entryPoint)
{
    const std::lock_guard lock(m_mutex);
    const EntryState* state = entryState(entryPoint);
    return state == nullptr ? INT_MIN : state->argument.value_or(INT_MIN);
}

int Simulator::callLog(char* out, int size)
{
    const std::lock_guard lock(m_mutex);
    std::string text;
    for (Entry entry : m_settings.callLog) {
        if (!text.empty())
            text += ' ';
        text += entryName(entry);
    }
    if (out != nullptr && size > 0) {
        const std::size_t count = std::min(text.size(), static_cast<std::size_t>(size) - 1);
        std::memcpy(out, text.data(), count);
        out[count] = '\0';
    }
    return static_cast<int>(std::min<std::size_t>(text.size(), INT_MAX));
}

int Simulator::setTransferTime(int time)
{
    const std::lock_guard lock(m_mutex);
    if (time < 0)
        return fail("a negative transfer time");
    m_settings.transferTime = time;
    return 0;
}

int Simulator::lastPicture(unsigned char* out, int size, int* width, int* height)
{
    const std::lock_guard lock(m_mutex);
    if (out != nullptr && size > 0) {
        const std::size_t count = std::min(m_settings.picture.size(), static_cast<std::size_t>(size));
        std::copy_n(m_settings.picture.data(), count, out);
    }
    if (width != nullptr)
        *width = m_settings.pictureWidth;
    if (height != nullptr)
        *height = m_settings.pictureHeight;
    return static_cast<int>(m_settings.picture.size());
}

int Simulator::transferCount()
{
    const std::lock_guard lock(m_mutex);
    return m_settings.transfers;
}

int Simulator::abortedTransferCount()
{
    const std::lock_guard lock(m_mutex);
    return m_settings.abortedTransfers;
}

void Simulator::reset()
{
    Settings fresh;
    const std::lock_guard lock(m_mutex);
    std::swap(m_settings, fresh);
}

bool Simulator::isStopped()
{
    // A process forked while another thread held the lock must still be able to exit.
    const std::unique_lock lock(m_mutex, std::try_to_lock);
    return lock.owns_lock() && m_state == State::Stopped;
}

} // namespace simulator
