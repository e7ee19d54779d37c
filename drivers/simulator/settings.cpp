// What tests set and ask: results, delays, texts, counts and the last picture.
#include "simulator.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <utility>

namespace simulator {
namespace {

bool isIdentity(Entry entry)
{
    return entry == Entry::GetDevicePenID || entry == Entry::GetDevicePadID ||
           entry == Entry::GetDeviceSecureID || entry == Entry::GetDevicePartsVersion;
}

} // namespace

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
