// A pad that is an input device of this machine.
#pragma once

#include "devices.h"
#include "model/padmodel.h"

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include <poll.h>

struct udev_monitor;

namespace pen {

// Opened by the constructor, read from start() on by a thread of its own, which sleeps until there is
// something to read; ended by the destructor, on any other thread. What is not said to be otherwise belongs
// to that thread once it runs.
class PenPad
{
public:
    // Throws Refusal when there is nothing to sign on.
    PenPad(const Settings& settings, const CPadModel& model, Reports::Send send);
    ~PenPad();
    PenPad(const PenPad&) = delete;
    PenPad& operator=(const PenPad&) = delete;

    // Throws std::system_error when there is no thread.
    void start();

    // Any thread.
    bool isPlugged() const { return m_isPlugged.load(); }
    bool isOwnThread() const { return std::this_thread::get_id() == m_thread.get_id(); }
    const std::string& name() const { return m_name; }
    const std::string& identity() const { return m_identity; }

    // For the child of a process that was forked: closes its descriptors and forgets the thread, which it
    // does not have.
    void abandon();

private:
    class Descriptor
    {
    public:
        explicit Descriptor(int number) : m_number(number) {}
        ~Descriptor();
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        int number() const { return m_number; }

    private:
        const int m_number;
    };
    struct StopListening
    {
        void operator()(udev_monitor* monitor) const;
    };
    struct Codes
    {
        unsigned confirm = 0; // 0: none
        unsigned cancel = 0;
    };
    // Another device, with buttons that are keys of the pad.
    struct KeyDevice
    {
        InputDevice device;
        Codes codes;
        bool isSyncing = false; // events were lost, and the device's state is being read
    };
    // The device that is signed on.
    struct Signing
    {
        InputDevice device;
        Reports reports;
        bool isSyncing = false;
    };

    void run();
    void waitForEvents();
    void open(const Found& found);
    void lookAgain();
    void findButtons(const std::vector<Found>& devices);
    bool readSigning();
    bool readKeys(KeyDevice& keys);
    void readMonitor();
    void unplug();
    bool isHungUp(const InputDevice& device) const;

    const Settings m_settings;
    const CPadModel& m_model;
    const Reports::Send m_send;
    const Udev m_udev;
    const std::unique_ptr<udev_monitor, StopListening> m_monitor; // null where udev does not tell of changes
    const Descriptor m_stop;                                      // readable once the thread shall end
    std::string m_name;               // of the device that was opened first; unchanged since
    std::string m_identity;           // as well
    std::optional<Signing> m_signing; // empty while the device is unplugged
    std::vector<KeyDevice> m_keys;
    std::vector<pollfd> m_polled;
    std::atomic<bool> m_isPlugged{false}; // the thread writes, any thread reads
    std::thread m_thread;
};

} // namespace pen
