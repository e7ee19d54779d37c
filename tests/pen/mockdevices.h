// Input devices that do not exist, for this process.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "mockkernel.h"

struct _UMockdevTestbed;

namespace scribera::test {

// The events of a recording in evemu's format.
std::vector<Event> eventsOf(const std::string& recording);

// The recordings that the tests made; SCRIBERA_TEST_PEN_RECORDINGS may name a folder of others.
std::vector<std::string> recordings();
std::string recordingNamed(const std::string& name);
std::string silentNamed(const std::string& name); // a device on which nothing happens

enum class Unplugging
{
    Error,   // reading gives an error
    HangUp,  // the descriptor hangs up
    Removal, // only udev tells
};

// The machine's devices: none but these. One for a process.
class MockDevices
{
public:
    MockDevices();
    ~MockDevices();
    MockDevices(const MockDevices&) = delete;
    MockDevices& operator=(const MockDevices&) = delete;

    // /dev/input/event<number>, like the recorded one.
    MockKernel& plug(const std::string& recording, int number = 5);
    void unplug(int number, Unplugging how);
    void forbid(int number);                                   // nobody may open it
    void replay(const std::string& recording, int number = 5); // at the recorded speed, without losses
    std::string root() const;

private:
    struct Unref
    {
        void operator()(_UMockdevTestbed* testbed) const;
    };
    std::unique_ptr<_UMockdevTestbed, Unref> m_testbed;
    std::map<int, std::unique_ptr<MockKernel>> m_devices;
    std::vector<std::unique_ptr<MockKernel>> m_gone; // which a reader may still hold
};

} // namespace scribera::test
