#include "penpad.h"

#include "message.h"

#include <libevdev/libevdev.h>
#include <libudev.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <system_error>

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace pen {
namespace {

// How often a lost device is looked for where nobody tells that it is back.
constexpr int kLookAgainMs = 1000;

udev_monitor* listen(udev* context)
{
    udev_monitor* const monitor = udev_monitor_new_from_netlink(context, "udev");
    if (!monitor)
        return nullptr;
    udev_monitor_filter_add_match_subsystem_devtype(monitor, "input", nullptr);
    if (udev_monitor_enable_receiving(monitor) < 0)
        return udev_monitor_unref(monitor);
    return monitor;
}

WritingArea areaOf(const CPadModel& model)
{
    return {model.m_nPadOriginX, model.m_nPadOriginY, model.m_nAreaWidth, model.m_nAreaHeight};
}

// Tells the reports what the device's state is before its first event.
void takeState(libevdev* device, const Surface& surface, Reports& reports)
{
    if (surface.touch == Touch::Contacts) {
        for (int slot = 0; slot < surface.slots; ++slot) {
            reports.take(EV_ABS, ABS_MT_SLOT, slot);
            for (const unsigned code : {ABS_MT_POSITION_X, ABS_MT_POSITION_Y, ABS_MT_PRESSURE,
                                        ABS_MT_TOOL_TYPE, ABS_MT_TRACKING_ID}) {
                if (libevdev_has_event_code(device, EV_ABS, code))
                    reports.take(EV_ABS, code,
                                 libevdev_get_slot_value(device, static_cast<unsigned>(slot), code));
            }
        }
        reports.take(EV_ABS, ABS_MT_SLOT, libevdev_get_current_slot(device));
        return;
    }
    for (const unsigned code : {ABS_X, ABS_Y, ABS_PRESSURE}) {
        if (libevdev_has_event_code(device, EV_ABS, code))
            reports.take(EV_ABS, code, libevdev_get_event_value(device, EV_ABS, code));
    }
    for (unsigned code = BTN_TOOL_PEN; code <= BTN_TOUCH; ++code) {
        if (libevdev_has_event_code(device, EV_KEY, code))
            reports.take(EV_KEY, code, libevdev_get_event_value(device, EV_KEY, code));
    }
}

enum class Read
{
    Event,
    Nothing,
    Gone
};

// The next event of a device; lost() is called where the system dropped some.
template <typename Lost>
Read nextEvent(libevdev* device, bool& syncing, input_event& event, Lost&& lost)
{
    while (true) {
        const int status = libevdev_next_event(
            device, syncing ? LIBEVDEV_READ_FLAG_SYNC : LIBEVDEV_READ_FLAG_NORMAL, &event);
        if (status == LIBEVDEV_READ_STATUS_SUCCESS || (status == LIBEVDEV_READ_STATUS_SYNC && syncing))
            return Read::Event;
        if (status == LIBEVDEV_READ_STATUS_SYNC) {
            syncing = true;
            lost();
        } else if (status == -EAGAIN && syncing) {
            syncing = false;
        } else if (status != -EINTR) {
            return status == -EAGAIN ? Read::Nothing : Read::Gone;
        }
    }
}

} // namespace

PenPad::Descriptor::~Descriptor()
{
    close(m_number);
}

void PenPad::StopListening::operator()(udev_monitor* monitor) const
{
    udev_monitor_unref(monitor);
}

PenPad::PenPad(const Settings& settings, const CPadModel& model, Reports::Send send)
    : m_settings(settings), m_model(model), m_send(std::move(send)), m_monitor(listen(m_udev.handle())),
      m_stop(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (m_stop.number() < 0)
        throw Refusal(std::string("no descriptor is left: ") + std::strerror(errno));
    const std::vector<Found> devices = m_udev.devices(m_settings.device);
    open(choose(devices, m_settings.device));
    m_name = m_signing->device.name();
    m_identity = m_signing->device.identity();
    findButtons(devices);
}

PenPad::~PenPad()
{
    if (!m_thread.joinable())
        return;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written =
        write(m_stop.number(), &one, sizeof one); // room for 2^64 of them
    m_thread.join();
}

void PenPad::start()
{
    // The host's signals are the host's threads' business.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        m_thread = std::thread([this] { run(); });
    } catch (...) {
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        throw;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    pthread_setname_np(m_thread.native_handle(), "scribera-pen");
}

void PenPad::abandon()
{
    if (m_thread.joinable())
        m_thread.detach();
}

void PenPad::open(const Found& found)
{
    InputDevice device(found.node);
    const Judgement judgement = judge(device, found.saysTouchScreen);
    if (judgement.kind == Kind::None)
        throw Refusal(found.node + " " + judgement.reason);
    const Surface& surface = judgement.surface;
    const Mapping mapping(surface.x, surface.y, areaOf(m_model), m_settings);
    Reports reports(surface, mapping, m_model.PressureLimit(m_model.m_nInitialMaxPressure), m_send);
    takeState(device.handle(), surface, reports);
    if (m_settings.grab && !device.grab())
        say(device.name() + " stays everybody's: the system does not give it to this process alone");
    m_signing.emplace(Signing{std::move(device), std::move(reports)});
    m_isPlugged.store(true);
}

// A button belongs to the device that its setting names; otherwise to the one that is signed on, if it has
// such a button, or to the other parts of the same tablet, or to whoever has it.
void PenPad::findButtons(const std::vector<Found>& devices)
{
    std::map<std::string, Codes> others;
    const auto codeOn = [&](const std::optional<Button>& button, unsigned Codes::*member) -> unsigned {
        if (!button)
            return 0;
        if (m_signing->device.has(EV_KEY, button->code) &&
            (button->device.empty() ||
             isMeant(m_signing->device.node(), m_signing->device.name(), button->device)))
            return button->code;
        if (button->isUsual)
            return 0;
        std::vector<const Found*> holders;
        for (const Found& found : devices) {
            if (found.node != m_signing->device.node() && found.buttons[button->code] &&
                (button->device.empty() || isMeant(found.node, found.name, button->device)))
                holders.push_back(&found);
        }
        const auto isPart = [this](const Found* found) {
            return found->identity == m_signing->device.identity();
        };
        if (std::any_of(holders.begin(), holders.end(), isPart))
            std::erase_if(holders, std::not_fn(isPart));
        for (const Found* found : holders)
            others[found->node].*member = button->code;
        return 0;
    };
    const unsigned confirm = codeOn(m_settings.confirm, &Codes::confirm);
    m_signing->reports.setKeyCodes(confirm, codeOn(m_settings.cancel, &Codes::cancel));
    m_signing->reports.forgetKey();
    m_keys.clear();
    for (const auto& [node, codes] : others) {
        try {
            m_keys.push_back({InputDevice(node), codes});
        } catch (const Refusal&) {
            continue; // gone meanwhile
        }
    }
}

void PenPad::run()
{
    // Also when the host ends this thread in a callback.
    struct Unplug
    {
        std::atomic<bool>& isPlugged;
        ~Unplug() { isPlugged.store(false); }
    } const atTheEnd{m_isPlugged};
    try {
        while (true) {
            waitForEvents();
            if (m_polled[0].revents != 0)
                break;
            // What was still delivered comes before the news that the device is gone.
            if (m_signing && (!readSigning() || isHungUp(m_signing->device)))
                unplug();
            std::erase_if(m_keys,
                          [this](KeyDevice& keys) { return !readKeys(keys) || isHungUp(keys.device); });
            readMonitor();
        }
    } catch (const std::exception& error) {
        say(std::string("the pen is no longer read: ") + error.what());
    }
    if (m_signing)
        m_signing->reports.end();
}

void PenPad::waitForEvents()
{
    m_polled.clear();
    m_polled.push_back({m_stop.number(), POLLIN, 0});
    if (m_monitor)
        m_polled.push_back({udev_monitor_get_fd(m_monitor.get()), POLLIN, 0});
    if (m_signing)
        m_polled.push_back({m_signing->device.descriptor(), POLLIN, 0});
    for (const KeyDevice& keys : m_keys)
        m_polled.push_back({keys.device.descriptor(), POLLIN, 0});
    const int count = poll(m_polled.data(), m_polled.size(), m_signing ? -1 : kLookAgainMs);
    if (count == 0)
        lookAgain();
    else if (count < 0 && errno != EINTR)
        throw std::system_error(errno, std::generic_category());
}

bool PenPad::isHungUp(const InputDevice& device) const
{
    return std::any_of(m_polled.begin(), m_polled.end(), [&](const pollfd& polled) {
        return polled.fd == device.descriptor() && (polled.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
    });
}

bool PenPad::readSigning()
{
    libevdev* const device = m_signing->device.handle();
    Reports& reports = m_signing->reports;
    input_event event{};
    Read result;
    while ((result = nextEvent(device, m_signing->isSyncing, event, [&] { reports.lose(); })) == Read::Event)
        reports.take(event.type, event.code, event.value);
    return result == Read::Nothing;
}

bool PenPad::readKeys(KeyDevice& keys)
{
    constexpr int kRepeat = 2;
    input_event event{};
    Read result;
    while ((result = nextEvent(keys.device.handle(), keys.isSyncing, event, [] {})) == Read::Event) {
        if (event.type != EV_KEY || event.value == kRepeat || !m_signing)
            continue;
        if (event.code == keys.codes.confirm)
            m_signing->reports.key(ConfirmKey, event.value != 0);
        if (event.code == keys.codes.cancel)
            m_signing->reports.key(CancelKey, event.value != 0);
    }
    return result == Read::Nothing;
}

void PenPad::readMonitor()
{
    if (!m_monitor)
        return;
    bool isNew = false;
    // Until there is nothing more: one wait may stand for several changes.
    while (udev_device* const device = udev_monitor_receive_device(m_monitor.get())) {
        const char* const action = udev_device_get_action(device);
        const char* const node = udev_device_get_devnode(device);
        if (action && node) {
            if (std::strcmp(action, "remove") == 0) {
                if (m_signing && m_signing->device.node() == node)
                    unplug();
                std::erase_if(m_keys, [&](const KeyDevice& keys) { return keys.device.node() == node; });
            } else if (std::strcmp(action, "add") == 0) {
                isNew = true;
            }
        }
        udev_device_unref(device);
    }
    if (isNew)
        lookAgain();
}

void PenPad::unplug()
{
    m_isPlugged.store(false);
    m_signing->reports.end();
    m_signing.reset();
    say(m_name + " is gone; waiting for it to come back");
}

// The device that was lost, and no other one, as soon as it is there.
void PenPad::lookAgain()
{
    const std::vector<Found> devices = m_udev.devices(m_settings.device);
    if (!m_signing) {
        const auto back = std::find_if(devices.begin(), devices.end(), [this](const Found& found) {
            return found.judgement.kind != Kind::None && found.name == m_name && found.identity == m_identity;
        });
        if (back == devices.end())
            return;
        try {
            open(*back);
        } catch (const Refusal&) {
            return; // gone again
        }
        say(m_name + " is back");
    }
    findButtons(devices);
}

} // namespace pen
