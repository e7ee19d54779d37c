#include "mockkernel.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstring>
#include <set>
#include <stdexcept>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace scribera::test {
namespace {

struct Devices
{
    std::mutex lock;
    std::map<std::string, MockKernel*> byTerminal; // lock
    std::set<std::string> forbidden;               // lock
    std::set<std::string> hidden;                  // lock
};

Devices& devices()
{
    static Devices* const all = new Devices; // for threads that outlive main()
    return *all;
}

bool isHidden(const char* path)
{
    const std::lock_guard guard(devices().lock);
    return devices().hidden.contains(path);
}

bool isForbidden(const char* path)
{
    const std::lock_guard guard(devices().lock);
    return devices().forbidden.contains(path);
}

template <typename Function>
Function* systems(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

MockKernel::MockKernel(std::string terminal, int writer) : m_terminal(std::move(terminal)), m_writer(writer)
{
    const std::lock_guard guard(devices().lock);
    devices().byTerminal[m_terminal] = this;
}

MockKernel::~MockKernel()
{
    const std::lock_guard guard(devices().lock);
    devices().byTerminal.erase(m_terminal);
}

MockKernel* MockKernel::of(int descriptor)
{
    const std::lock_guard guard(devices().lock);
    if (devices().byTerminal.empty())
        return nullptr;
    char target[64];
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = readlink(link.c_str(), target, sizeof target);
    if (length <= 0)
        return nullptr;
    const auto found = devices().byTerminal.find(std::string(target, static_cast<std::size_t>(length)));
    return found == devices().byTerminal.end() ? nullptr : found->second;
}

void MockKernel::send(const std::vector<Event>& events)
{
    std::vector<Event> told;
    const auto tell = [&] {
        write(told);
        waitUntilTaken();
        told.clear();
    };
    bool isLost = false;
    for (const Event& event : events) {
        const bool ends = event.type == EV_SYN && event.code == SYN_REPORT;
        if (event.type == EV_SYN && event.code == SYN_DROPPED) {
            tell(); // what is on its way: a reader may throw it away when it hears of a loss
            isLost = true;
        }
        note(event);
        if (!isLost || event.type == EV_SYN)
            told.push_back(event);
        if (isLost && ends) {
            tell(); // before the state is another one
            isLost = false;
        }
    }
    write(told);
}

void MockKernel::write(const std::vector<Event>& events)
{
    std::vector<input_event> raw(events.size());
    for (std::size_t i = 0; i < events.size(); ++i) {
        raw[i].type = events[i].type;
        raw[i].code = events[i].code;
        raw[i].value = events[i].value;
    }
    const char* at = reinterpret_cast<const char*>(raw.data());
    std::size_t rest = raw.size() * sizeof(input_event);
    {
        const std::lock_guard guard(m_lock);
        m_written += rest;
        m_isWaiting = m_isWaiting && rest == 0;
    }
    while (rest > 0) {
        const ssize_t count = ::write(m_writer, at, rest);
        if (count < 0 && errno != EINTR && errno != EAGAIN)
            throw std::runtime_error(std::string("the mocked device: ") + std::strerror(errno));
        if (count < 0)
            continue;
        at += count;
        rest -= static_cast<std::size_t>(count);
    }
}

void MockKernel::note(const Event& event)
{
    const std::lock_guard guard(m_lock);
    if (event.type == EV_KEY && event.code < KEY_CNT) {
        const auto bit = static_cast<unsigned char>(1u << event.code % 8);
        unsigned char& byte = m_keys[event.code / 8];
        byte = static_cast<unsigned char>(event.value != 0 ? byte | bit : byte & ~bit);
    } else if (event.type == EV_ABS && event.code > ABS_MT_SLOT && event.code < ABS_CNT) {
        m_contacts[event.code][m_axes[ABS_MT_SLOT]] = event.value;
    } else if (event.type == EV_ABS && event.code < ABS_CNT) {
        m_axes[event.code] = event.value;
    }
}

bool MockKernel::waitUntilTaken()
{
    std::unique_lock guard(m_lock);
    return m_isTaken.wait_for(guard, std::chrono::seconds(20), [this] { return m_isWaiting; });
}

void MockKernel::fail(int error)
{
    {
        const std::lock_guard guard(m_lock);
        m_error = error;
    }
    if (error != 0)
        write({{EV_SYN, SYN_REPORT, 0}});
}

void MockKernel::refuseGrabs(bool refuse)
{
    const std::lock_guard guard(m_lock);
    m_refusesGrabs = refuse;
}

int MockKernel::grabs() const
{
    const std::lock_guard guard(m_lock);
    return m_grabs;
}

long MockKernel::read(int descriptor, char* buffer, std::size_t size)
{
    static auto* const systemRead = systems<ssize_t(int, void*, std::size_t)>("read");
    const std::lock_guard guard(m_lock);
    if (m_error != 0) {
        errno = m_error;
        return -1;
    }
    const std::size_t before = m_rest.copy(buffer, size);
    const ssize_t count = systemRead(descriptor, buffer + before, size - before);
    if (count < 0)
        return count;
    const std::size_t all = before + static_cast<std::size_t>(count);
    const std::size_t whole = all - all % sizeof(input_event);
    m_rest.assign(buffer + whole, all - whole);
    m_taken += whole;
    if (whole > 0)
        return static_cast<long>(whole);
    errno = EAGAIN;
    return -1;
}

bool MockKernel::control(unsigned long request, void* argument, int& result)
{
    const std::lock_guard guard(m_lock);
    const std::size_t size = _IOC_SIZE(request);
    result = 0;
    if (m_error != 0 || (request == EVIOCGRAB && argument && m_refusesGrabs)) {
        errno = m_error != 0 ? m_error : EBUSY;
        result = -1;
        return true;
    }
    if (request == EVIOCGRAB) {
        m_grabs += argument ? 1 : 0;
        return true;
    }
    if (_IOC_NR(request) == _IOC_NR(EVIOCGKEY(0))) {
        const std::size_t count = std::min(size, m_keys.size());
        std::memcpy(argument, m_keys.data(), count);
        result = static_cast<int>(count);
        return true;
    }
    if (_IOC_NR(request) == _IOC_NR(EVIOCGMTSLOTS(0))) {
        auto* const values = static_cast<std::int32_t*>(argument);
        const auto code = static_cast<unsigned>(values[0]);
        for (std::size_t slot = 1; slot < size / sizeof *values; ++slot) {
            const std::map<int, std::int32_t>& contacts = m_contacts[code];
            const auto contact = contacts.find(static_cast<int>(slot - 1));
            values[slot] = contact != contacts.end() ? contact->second : code == ABS_MT_TRACKING_ID ? -1 : 0;
        }
        return true;
    }
    return false;
}

void MockKernel::correct(unsigned long request, void* argument)
{
    const unsigned number = _IOC_NR(request);
    const unsigned first = _IOC_NR(EVIOCGABS(0));
    if (number < first || number >= first + ABS_CNT)
        return;
    const std::lock_guard guard(m_lock);
    auto* const info = static_cast<input_absinfo*>(argument);
    info->value = m_axes[number - first];
    if (number - first == ABS_MT_SLOT) // which a kernel does not let out of its range
        info->value = std::clamp(info->value, 0, info->maximum);
}

void MockKernel::beginWait()
{
    const std::lock_guard guard(m_lock);
    m_isWaiting = m_taken == m_written;
    if (m_isWaiting)
        m_isTaken.notify_all();
}

void hide(const std::string& path)
{
    const std::lock_guard guard(devices().lock);
    devices().hidden.insert(path);
}

void show(const std::string& path)
{
    const std::lock_guard guard(devices().lock);
    devices().hidden.erase(path);
}

void forbidOpening(const std::string& path)
{
    const std::lock_guard guard(devices().lock);
    devices().forbidden.insert(path);
}

} // namespace scribera::test

// ------------------------------------------------------------------------------------------ the system's
// calls

using scribera::test::MockKernel;

#define SCRIBERA_IN_FRONT extern "C" __attribute__((visibility("default")))

SCRIBERA_IN_FRONT int open(const char* path, int flags, ...)
{
    static auto* const next = scribera::test::systems<int(const char*, int, mode_t)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (scribera::test::isHidden(path)) {
        errno = ENOENT;
        return -1;
    }
    if (scribera::test::isForbidden(path)) {
        errno = EACCES;
        return -1;
    }
    return next(path, flags, mode);
}

SCRIBERA_IN_FRONT ssize_t read(int descriptor, void* buffer, std::size_t size)
{
    static auto* const next = scribera::test::systems<ssize_t(int, void*, std::size_t)>("read");
    MockKernel* const device = size >= sizeof(input_event) ? MockKernel::of(descriptor) : nullptr;
    return device ? device->read(descriptor, static_cast<char*>(buffer), size)
                  : next(descriptor, buffer, size);
}

SCRIBERA_IN_FRONT int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    static auto* const next = scribera::test::systems<int(int, unsigned long, void*)>("ioctl");
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    int result = 0;
    MockKernel* const device = _IOC_TYPE(request) == 'E' ? MockKernel::of(descriptor) : nullptr;
    if (device && device->control(request, argument, result))
        return result;
    result = next(descriptor, request, argument);
    if (device && result >= 0)
        device->correct(request, argument);
    return result;
}

SCRIBERA_IN_FRONT int poll(pollfd* descriptors, nfds_t count, int timeout)
{
    static auto* const next = scribera::test::systems<int(pollfd*, nfds_t, int)>("poll");
    for (nfds_t i = 0; i < count; ++i) {
        if (MockKernel* const device = MockKernel::of(descriptors[i].fd))
            device->beginWait();
    }
    return next(descriptors, count, timeout);
}
