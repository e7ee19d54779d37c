// What lies where the library looks for its driver, and the simulated pad behind it.
#pragma once

#include <string>
#include <vector>

#include "simclient.h"

namespace scribera::test {

// What lies in the working directory as ./libscriberadrv.so.
void removeDriver();
void installDriver(const std::string& library = SCRIBERA_DRIVER_LIBRARY); // the simulated pad, whole
void installDriverWithout(const std::string& missing);                    // entry point without its prefix

extern const char* const driverFile; // "./libscriberadrv.so"

// The simulated pad's control interface, in the same instance that the library loads. While one of these is
// open the driver stays mapped.
class Simulator : public simulator::Client
{
public:
    Simulator() = default;
    ~Simulator() { close(); }
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    void open();
    void close();
    bool isOpen() const { return m_handle != nullptr; }

    void send(const std::vector<ScrSimSample>& samples); // and waits until all were delivered
    void queue(const std::vector<ScrSimSample>& samples);
    void pressKey(int key); // and waits
    void waitIdle();
    std::vector<std::string> callLog();
    void setText(const std::string& entryPoint, const std::string& text, bool terminate = true);

private:
    void* m_handle = nullptr;
};

} // namespace scribera::test
