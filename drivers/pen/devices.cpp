#include "devices.h"

#include "texts.h"

#include <libevdev/libevdev.h>
#include <libudev.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <strings.h>

#include <fcntl.h>
#include <unistd.h>

namespace pen {

const char* const kHowToGetPermission = TR_LATER(
    "PenDriver", "install the udev rule 70-scribera-pen.rules and plug the device in again, or sign in at "
                 "the machine itself");

namespace {

template <typename T, T* (*unref)(T*)>
struct UnrefWith
{
    void operator()(T* object) const { unref(object); }
};
using UdevEnumerate = std::unique_ptr<udev_enumerate, UnrefWith<udev_enumerate, udev_enumerate_unref>>;
using UdevDevice = std::unique_ptr<udev_device, UnrefWith<udev_device, udev_device_unref>>;

Axis axisOf(const InputDevice& device, unsigned code)
{
    const input_absinfo* info = libevdev_get_abs_info(device.handle(), code);
    return {info->minimum, info->maximum, std::max(info->resolution, 0)};
}

std::optional<Axis> pressureOf(const InputDevice& device, unsigned code)
{
    if (!device.has(EV_ABS, code) || !axisOf(device, code).isUsable())
        return std::nullopt;
    return axisOf(device, code);
}

bool hasPenButtons(const InputDevice& device)
{
    const unsigned codes[] = {BTN_TOOL_PEN,      BTN_TOOL_RUBBER, BTN_TOOL_BRUSH, BTN_TOOL_PENCIL,
                              BTN_TOOL_AIRBRUSH, BTN_STYLUS,      BTN_STYLUS2};
    return std::any_of(std::begin(codes), std::end(codes),
                       [&](unsigned code) { return device.has(EV_KEY, code); });
}

// A device's text for a line of a log: a device may tell anything.
std::string printable(const char* text)
{
    std::string result = text ? text : "";
    std::replace_if(
        result.begin(), result.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; }, '?');
    return result;
}

int numberOf(const std::string& node)
{
    const std::size_t digits = node.find_last_not_of("0123456789") + 1;
    return std::atoi(node.c_str() + digits);
}

// Where the device could not be opened, its description in the system may still have a name.
std::string nameFromSystem(udev_device* device)
{
    udev_device* const parent = udev_device_get_parent(device); // owned by the device
    const char* const name = parent ? udev_device_get_sysattr_value(parent, "name") : nullptr;
    return printable(name);
}

Found look(const std::string& node, bool saysTouchScreen)
{
    Found found;
    found.node = node;
    found.saysTouchScreen = saysTouchScreen;
    try {
        const InputDevice device(node);
        found.isOpened = true;
        found.name = device.name();
        found.identity = device.identity();
        for (std::size_t code = 0; code < found.buttons.size(); ++code)
            found.buttons[code] = device.has(EV_KEY, static_cast<unsigned>(code));
        found.judgement = judge(device, saysTouchScreen);
    } catch (const Refusal& refusal) {
        found.judgement.reason = refusal.what();
    }
    return found;
}

// Where a path leads through links; the path itself when it leads nowhere, or is a node's own.
std::string targetOf(const std::string& path)
{
    if (path.starts_with("/dev/input/event"))
        return path;
    std::error_code error;
    const std::filesystem::path target = std::filesystem::canonical(path, error);
    return error ? path : target.string();
}

std::string description(const Found& device)
{
    return device.name.empty() ? device.node : device.node + " (" + device.name + ")";
}

} // namespace

void InputDevice::Close::operator()(libevdev* handle) const
{
    const int descriptor = libevdev_get_fd(handle);
    libevdev_free(handle);
    close(descriptor);
}

InputDevice::InputDevice(const std::string& node) : m_node(node)
{
    const int descriptor = open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        if (errno == EACCES || errno == EPERM)
            throw Refusal(filled(trText("PenDriver", "no permission to read it: %1"),
                                 {trText("PenDriver", kHowToGetPermission)}));
        throw Refusal(filled(trText("PenDriver", "cannot be opened: %1"), {std::strerror(errno)}));
    }
    libevdev* handle = nullptr;
    if (const int error = libevdev_new_from_fd(descriptor, &handle); error < 0) {
        close(descriptor);
        throw Refusal(filled(trText("PenDriver", "no input device: %1"), {std::strerror(-error)}));
    }
    m_handle.reset(handle);
}

std::string InputDevice::name() const
{
    return printable(libevdev_get_name(handle()));
}

int InputDevice::descriptor() const
{
    return libevdev_get_fd(handle());
}

bool InputDevice::has(unsigned type, unsigned code) const
{
    return libevdev_has_event_code(handle(), type, code) != 0;
}

std::string InputDevice::identity() const
{
    char ids[32];
    std::snprintf(ids, sizeof ids, "%04x:%04x:%04x", libevdev_get_id_bustype(handle()) & 0xffff,
                  libevdev_get_id_vendor(handle()) & 0xffff, libevdev_get_id_product(handle()) & 0xffff);
    const char* const serial = libevdev_get_uniq(handle());
    return std::string(ids) + (serial && *serial ? std::string(":") + serial : "");
}

bool InputDevice::grab()
{
    return libevdev_grab(handle(), LIBEVDEV_GRAB) == 0;
}

std::string nameOf(Kind kind)
{
    switch (kind) {
    case Kind::Pen:
        return trText("PenDriver", "pen");
    case Kind::TouchScreen:
        return trText("PenDriver", "touch screen");
    case Kind::Touchpad:
        return trText("PenDriver", "touchpad");
    case Kind::None:
        break;
    }
    return trText("PenDriver", "nothing to sign on");
}

Judgement judge(const InputDevice& device, bool udevSaysTouchScreen)
{
    Judgement result;
    const bool hasPosition = device.has(EV_ABS, ABS_X) && device.has(EV_ABS, ABS_Y);
    const int slots = libevdev_get_num_slots(device.handle());
    const bool hasContacts = slots > 0 && device.has(EV_ABS, ABS_MT_POSITION_X) &&
                             device.has(EV_ABS, ABS_MT_POSITION_Y) && device.has(EV_ABS, ABS_MT_TRACKING_ID);
    if (!hasPosition && !hasContacts) {
        result.reason = trText("PenDriver", "tells no position");
        return result;
    }
    const bool isPen = hasPosition && hasPenButtons(device);
    Surface& surface = result.surface;
    const bool usesContacts = hasContacts && !isPen;
    surface.x = axisOf(device, usesContacts ? ABS_MT_POSITION_X : ABS_X);
    surface.y = axisOf(device, usesContacts ? ABS_MT_POSITION_Y : ABS_Y);
    surface.pressure = pressureOf(device, usesContacts ? ABS_MT_PRESSURE : ABS_PRESSURE);
    surface.slots = usesContacts ? slots : 0;
    surface.fingersWrite = !isPen;
    if (usesContacts)
        surface.touch = Touch::Contacts;
    else if (device.has(EV_KEY, BTN_TOUCH))
        surface.touch = Touch::Button;
    else if (isPen && surface.pressure)
        surface.touch = Touch::Pressure;
    else {
        result.reason = isPen
                            ? trText("PenDriver", "has a pen's buttons, but never tells that the tip touches")
                            : trText("PenDriver", "is not touched");
        return result;
    }
    if (!surface.x.isUsable() || !surface.y.isUsable()) {
        result.reason =
            filled(trText("PenDriver", "has no range on its %1 axis"), {surface.x.isUsable() ? "y" : "x"});
        return result;
    }
    const bool isDirect = libevdev_has_property(device.handle(), INPUT_PROP_DIRECT) != 0;
    const bool isPointer = libevdev_has_property(device.handle(), INPUT_PROP_POINTER) != 0;
    const bool isFingers = device.has(EV_KEY, BTN_TOOL_FINGER) && !isDirect && !udevSaysTouchScreen;
    if (isPen)
        result.kind = Kind::Pen;
    else
        result.kind = isPointer || isFingers ? Kind::Touchpad : Kind::TouchScreen;
    return result;
}

void Udev::Unref::operator()(udev* handle) const
{
    udev_unref(handle);
}

Udev::Udev() : m_handle(udev_new())
{
    if (!m_handle)
        throw Refusal(trText("PenDriver", "udev cannot be reached"));
}

std::vector<Found> Udev::devices(const std::string& wanted) const
{
    const UdevEnumerate list(udev_enumerate_new(handle()));
    if (!list)
        throw std::bad_alloc();
    std::vector<Found> found;
    udev_enumerate_add_match_subsystem(list.get(), "input");
    udev_enumerate_add_match_sysname(list.get(), "event*");
    udev_enumerate_scan_devices(list.get());
    for (udev_list_entry* entry = udev_enumerate_get_list_entry(list.get()); entry;
         entry = udev_list_entry_get_next(entry)) {
        const UdevDevice device(udev_device_new_from_syspath(handle(), udev_list_entry_get_name(entry)));
        const char* const node = device ? udev_device_get_devnode(device.get()) : nullptr;
        if (!node)
            continue; // gone meanwhile
        const char* const hint = udev_device_get_property_value(device.get(), "ID_INPUT_TOUCHSCREEN");
        found.push_back(look(node, hint && std::strcmp(hint, "1") == 0));
        if (found.back().name.empty())
            found.back().name = nameFromSystem(device.get());
    }
    std::stable_sort(found.begin(), found.end(), [](const Found& one, const Found& other) {
        return numberOf(one.node) < numberOf(other.node);
    });
    const auto meant = [&](const Found& device) { return isMeant(device.node, device.name, wanted); };
    if (wanted.starts_with('/') && std::none_of(found.begin(), found.end(), meant)) {
        found.push_back(look(wanted, false));
        found.back().node = targetOf(wanted);
    }
    return found;
}

bool isMeant(const std::string& node, const std::string& name, const std::string& wanted)
{
    if (wanted.empty())
        return false;
    if (wanted.front() == '/')
        return node == wanted || node == targetOf(wanted);
    return strcasestr(name.c_str(), wanted.c_str()) != nullptr;
}

const Found& choose(const std::vector<Found>& devices, const std::string& wanted)
{
    const auto first = [&](auto&& is) -> const Found* {
        const auto at = std::find_if(devices.begin(), devices.end(), is);
        return at == devices.end() ? nullptr : &*at;
    };
    const auto firstOf = [&](Kind kind) {
        return first([&](const Found& device) { return device.judgement.kind == kind; });
    };
    const Found* chosen = nullptr;
    if (!wanted.empty())
        chosen = first([&](const Found& device) {
            return isMeant(device.node, device.name, wanted) && device.judgement.kind != Kind::None;
        });
    else if (!(chosen = firstOf(Kind::Pen)))
        chosen = firstOf(Kind::TouchScreen);
    if (chosen)
        return *chosen;

    std::string looked;
    for (const Found& device : devices) {
        std::string reason = device.judgement.reason;
        if (!wanted.empty() && !isMeant(device.node, device.name, wanted))
            reason = trText("PenDriver", "is not meant");
        else if (reason.empty())
            reason = filled(trText("PenDriver", "is a %1, which SCRIBERA_PEN_DEVICE has to name"),
                            {nameOf(device.judgement.kind)});
        looked += (looked.empty() ? "" : "; ") + description(device) + " " + reason;
    }
    if (looked.empty())
        looked = trText("PenDriver", "there are no input devices");
    throw Refusal((wanted.empty() ? trText("PenDriver", "no pen and no touch screen")
                                  : filled(trText("PenDriver", "no device to sign on is \"%1\""), {wanted})) +
                  ": " + looked);
}

} // namespace pen
