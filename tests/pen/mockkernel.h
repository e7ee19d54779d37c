// What the kernel does for the readers of an input device, and the mocked one does not: whole events only,
// the state of keys, axes and contacts at any moment, exclusive use, and an error once the device is gone.
#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <linux/input.h>

namespace scribera::test {

struct Event
{
    std::uint16_t type;
    std::uint16_t code;
    std::int32_t value;

    bool operator==(const Event&) const = default;
};

// One device, known by the terminal behind its node. This process's calls of read, ioctl and poll pass
// through it: a test program that links this has them in front of the system's. Any thread; everything is
// under the lock.
class MockKernel
{
public:
    MockKernel(std::string terminal,
               int writer); // the file behind the node, and where its events are written
    ~MockKernel();
    MockKernel(const MockKernel&) = delete;
    MockKernel& operator=(const MockKernel&) = delete;

    // Events as the device makes them. Those from SYN_DROPPED to the end of its report change the state only.
    void send(const std::vector<Event>& events);
    // Waits until a reader has taken all that was sent and waits for more. False after a while.
    bool waitUntilTaken();
    // From now on reading and asking give this error; 0: no longer. Wakes the reader.
    void fail(int error);

    void refuseGrabs(bool refuse);
    int grabs() const; // how often it was taken for one reader alone

    // What the calls become.
    long read(int descriptor, char* buffer, std::size_t size);
    bool control(unsigned long request, void* argument, int& result); // whether it is answered here
    void correct(unsigned long request, void* argument);              // an answer that somebody else gave
    void beginWait();

    static MockKernel* of(int descriptor); // null for anything else

private:
    void note(const Event& event);
    void write(const std::vector<Event>& events);

    const std::string m_terminal;
    const int m_writer;
    mutable std::mutex m_lock;
    std::condition_variable m_isTaken;
    std::array<unsigned char, KEY_CNT / 8> m_keys{};
    std::map<unsigned, std::int32_t> m_axes;
    std::map<unsigned, std::map<int, std::int32_t>> m_contacts; // by code and slot
    std::string m_rest;                                         // of an event that is not whole yet
    std::size_t m_written = 0;                                  // bytes
    std::size_t m_taken = 0;
    bool m_isWaiting = false; // the reader, since it took the last byte
    int m_error = 0;
    int m_grabs = 0;
    bool m_refusesGrabs = false;
};

// This file is not there for whoever opens it, until it is shown.
void hide(const std::string& path);
void show(const std::string& path);

// Opening this file is refused from now on, as it is to those who have no permission.
void forbidOpening(const std::string& path);

} // namespace scribera::test
