// What the host reaches through the entry points.
#include "simulator.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include <dlfcn.h>

namespace simulator {
namespace {

using Clock = Playback::Clock;
using std::chrono::milliseconds;

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

} // namespace simulator
