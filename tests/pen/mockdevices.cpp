#include "mockdevices.h"

#include "processes.h"
#include "pythonprogram.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include <umockdev.h>

#include <fcntl.h>
#include <unistd.h>

namespace scribera::test {

namespace fs = std::filesystem;

namespace {

constexpr char kPreload[] = "libumockdev-preload.so.0";

// The mocked files are seen through a library that has to be loaded before all others: this program starts
// itself once more with it.
__attribute__((constructor)) void preload(int, char** argv, char**)
{
    const char* const before = std::getenv("LD_PRELOAD");
    if (before && std::strstr(before, kPreload))
        return;
    setenv("LD_PRELOAD", kPreload, 1);
    const char* const options = std::getenv("ASAN_OPTIONS");
    // Which would like to come first itself.
    setenv("ASAN_OPTIONS", (std::string(options ? options : "") + ":verify_asan_link_order=0").c_str(), 1);
    execv(thisProgram().c_str(), argv);
    _exit(127);
}

std::string nodeOf(int number)
{
    return "/dev/input/event" + std::to_string(number);
}

std::string pathOf(int number)
{
    const std::string name = std::to_string(number);
    return "/sys/devices/pci0000:00/usb1/1-" + name + "/input/input" + name + "/event" + name;
}

std::string contentOf(const std::string& path)
{
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), {}};
}

void require(gboolean done, GError* error)
{
    if (!done)
        throw std::runtime_error(std::string("the mocked devices: ") + (error ? error->message : "refused"));
}

} // namespace

std::vector<Event> eventsOf(const std::string& recording)
{
    std::ifstream in(recording);
    if (!in)
        throw std::runtime_error("no recording " + recording);
    std::vector<Event> events;
    for (std::string line; std::getline(in, line);) {
        if (!line.starts_with("E:"))
            continue;
        std::istringstream words(line.substr(2));
        std::string time;
        unsigned type = 0;
        unsigned code = 0;
        std::int32_t value = 0;
        words >> time >> std::hex >> type >> code >> std::dec >> value;
        events.push_back({static_cast<std::uint16_t>(type), static_cast<std::uint16_t>(code), value});
    }
    return events;
}

std::vector<std::string> recordings()
{
    std::vector<std::string> found;
    const char* const others = std::getenv("SCRIBERA_TEST_PEN_RECORDINGS");
    for (const char* folder : {SCRIBERA_PEN_RECORDINGS, others}) {
        if (!folder)
            continue;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder))
            found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string recordingNamed(const std::string& name)
{
    return std::string(SCRIBERA_PEN_RECORDINGS) + "/" + name + ".evemu";
}

std::string silentNamed(const std::string& name)
{
    return std::string(SCRIBERA_PEN_RECORDINGS) + "-silent/" + name + ".evemu";
}

void MockDevices::Unref::operator()(_UMockdevTestbed* testbed) const
{
    g_object_unref(testbed);
}

MockDevices::MockDevices() : m_testbed(umockdev_testbed_new()) {}

MockDevices::~MockDevices() = default;

std::string MockDevices::root() const
{
    gchar* const path = umockdev_testbed_get_root_dir(m_testbed.get());
    const std::string result = path;
    g_free(path);
    return result;
}

MockKernel& MockDevices::plug(const std::string& recording, int number)
{
    const std::string node = nodeOf(number);
    runPython("recording.py", {recording, node});
    // The first news of it comes before its requests are served. Who opened it then would be ended by
    // umockdev.
    hide(node);
    GError* error = nullptr;
    require(umockdev_testbed_add_from_string(m_testbed.get(), contentOf("device.umockdev").c_str(), &error),
            error);
    require(umockdev_testbed_load_ioctl(m_testbed.get(), nullptr, "device.ioctl", &error), error);
    auto device = std::make_unique<MockKernel>(fs::read_symlink(root() + node),
                                               umockdev_testbed_get_dev_fd(m_testbed.get(), node.c_str()));
    m_devices[number] = std::move(device);
    show(node);
    umockdev_testbed_uevent(m_testbed.get(), pathOf(number).c_str(), "add");
    return *m_devices[number];
}

void MockDevices::unplug(int number, Unplugging how)
{
    std::unique_ptr<MockKernel>& device = m_devices.at(number);
    const std::string node = nodeOf(number);
    fs::remove(root() + node);
    if (how == Unplugging::Removal)
        umockdev_testbed_uevent(m_testbed.get(), pathOf(number).c_str(), "remove");
    umockdev_testbed_detach_ioctl(m_testbed.get(), node.c_str(), nullptr);
    if (how == Unplugging::Error)
        device->fail(ENODEV);
    if (how == Unplugging::HangUp) {
        // The number stays the mocked devices', who close it at the end.
        const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
        dup2(nothing, umockdev_testbed_get_dev_fd(m_testbed.get(), node.c_str()));
        close(nothing);
    }
    umockdev_testbed_remove_device(m_testbed.get(), pathOf(number).c_str());
    m_gone.push_back(std::move(device));
    m_devices.erase(number);
}

void MockDevices::forbid(int number)
{
    forbidOpening(nodeOf(number));
}

void MockDevices::replay(const std::string& recording, int number)
{
    std::istringstream lines(contentOf(recording));
    std::ofstream events("events.evemu");
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("E:"))
            events << line << '\n';
    }
    events.close();
    GError* error = nullptr;
    require(
        umockdev_testbed_load_evemu_events(m_testbed.get(), nodeOf(number).c_str(), "events.evemu", &error),
        error);
}

} // namespace scribera::test
