// What the tests of the simulated pad share: the loaded driver, what arrived from it, files and processes.
#pragma once

#include "entry.h"
#include "recording.h"
#include "simclient.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

using Clock = std::chrono::steady_clock;

// Long enough for the slowest machine; a test that runs into it fails.
constexpr int Patience = 120'000;

constexpr const char* EntryPoints[] = {
#define X(name) "SCRDAPI_" #name,
    SCRIBERA_ENTRIES(X)
#undef X
};

class TemporaryDirectory
{
public:
    TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory();

    std::string path(const std::string& name) const { return (m_path / name).string(); }
    // Writes the file and returns its path.
    std::string write(const std::string& name, const std::string& content) const;

private:
    std::filesystem::path m_path;
};

std::string contentOf(const std::string& path);

struct Outcome
{
    int exitCode = -1;
    std::string output;
    std::string error;
};

// Runs the program, whose output goes through files in a directory of its own.
Outcome runProgram(const std::string& program, const std::vector<std::string>& arguments);

// One callback of the pad.
struct Event
{
    enum Kind
    {
        Pen,
        Finger,
    };

    Kind kind = Pen;
    ScrSimSample sample{};
    bool isNull = false;
    std::vector<unsigned char> pixels; // all that the sensor is known to deliver
    int length = 0;
    int score = 0;
    Clock::time_point time;
    std::thread::id thread;
};

// The host's side of the callbacks. They carry no context, so there is one, emptied for every test.
class Received
{
public:
    static void clear();
    static std::vector<Event> all();
    static std::vector<ScrSimSample> samples();
    // False when fewer have arrived within Patience.
    static bool waitFor(std::size_t count);
    // Called at the end of every callback, on the pad's thread, with the number of callbacks so far.
    static void whenReceived(std::function<void(std::size_t)> action);

    static void takeSample(int x, int y, int pressure, int status);
    static void takeFingerprint(unsigned char* pixels, int length, int score);
};

bool operator==(const ScrSimSample& a, const ScrSimSample& b);
void PrintTo(const ScrSimSample& sample, std::ostream* out);

std::vector<ScrSimSample> samplesOf(const simulator::Recording& recording);
std::vector<ScrSimSample> readSamples(const std::string& path);

// A driver library, loaded and with its functions found; a missing one is null.
class Driver : public simulator::Client
{
public:
    explicit Driver(const std::string& path = SCRIBERA_DRIVER_LIBRARY);
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;
    // Stops the pad and unloads the library.
    ~Driver();

    bool isLoaded() const { return m_handle != nullptr; }
    void* find(const char* name) const;
    void unload();
    // Starts the pad with the callbacks of Received.
    int start(int deviceType);

    int (*initial)(int, void (*)(int, int, int, int), void (*)(unsigned char*, int, int)) = nullptr;
    int (*unInitial)() = nullptr;
    int (*openLcd)(bool) = nullptr;
    int (*clearContent)() = nullptr;
    int (*penId)(char*, int) = nullptr;
    int (*padId)(char*, int) = nullptr;
    int (*secureId)(char*, int) = nullptr;
    int (*partsVersion)(char*, int) = nullptr;
    int (*showVersion)(bool) = nullptr;
    int (*setPenStyle)(bool) = nullptr;
    int (*showPicture)(unsigned char*, int, int, int, bool*) = nullptr;

private:
    void* m_handle = nullptr;
};

// Is a file of this name mapped into the process as a library?
bool isLibraryLoaded(const std::string& path);

// Waits until a fact about the process that nothing announces has become true; false after Patience.
bool becomesTrue(const std::function<bool()>& fact);

// Begins with nothing received and none of the simulator's variables set, and ends so.
class SimulatorTest : public testing::Test
{
protected:
    SimulatorTest() { forget(); }
    ~SimulatorTest() override { forget(); }

    TemporaryDirectory m_directory;

private:
    static void forget();
};
