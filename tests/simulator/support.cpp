#include "support.h"

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <mutex>
#include <stdexcept>

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Inbox
{
    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<Event> events;
    std::function<void(std::size_t)> action;
};

Inbox& inbox()
{
    static Inbox instance;
    return instance;
}

void take(Event event)
{
    event.time = Clock::now();
    event.thread = std::this_thread::get_id();
    std::function<void(std::size_t)> action;
    std::size_t count = 0;
    {
        const std::lock_guard lock(inbox().mutex);
        inbox().events.push_back(std::move(event));
        count = inbox().events.size();
        action = inbox().action;
        inbox().arrived.notify_all();
    }
    if (action)
        action(count);
}

} // namespace

TemporaryDirectory::TemporaryDirectory()
{
    std::string name = (std::filesystem::temp_directory_path() / "scribera-simulator-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary directory: " + name);
    m_path = name;
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code code;
    std::filesystem::remove_all(m_path, code);
}

std::string TemporaryDirectory::write(const std::string& name, const std::string& content) const
{
    std::ofstream file(m_path / name, std::ios::binary);
    file << content;
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + path(name));
    return path(name);
}

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Outcome runProgram(const std::string& program, const std::vector<std::string>& arguments)
{
    const TemporaryDirectory directory;
    const std::string output = directory.write("out", "");
    const std::string error = directory.write("err", "");
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, error.c_str(), O_WRONLY, 0);
    pid_t child = 0;
    const int code = posix_spawn(&child, program.c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (code != 0)
        throw std::runtime_error("cannot start " + program);
    int status = 0;
    if (waitpid(child, &status, 0) != child)
        throw std::runtime_error("cannot wait for " + program);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(output), contentOf(error)};
}

void Received::clear()
{
    const std::lock_guard lock(inbox().mutex);
    inbox().events.clear();
    inbox().action = nullptr;
}

std::vector<Event> Received::all()
{
    const std::lock_guard lock(inbox().mutex);
    return inbox().events;
}

std::vector<ScrSimSample> Received::samples()
{
    std::vector<ScrSimSample> result;
    for (const Event& event : all()) {
        if (event.kind == Event::Pen)
            result.push_back(event.sample);
    }
    return result;
}

bool Received::waitFor(std::size_t count)
{
    std::unique_lock lock(inbox().mutex);
    return inbox().arrived.wait_for(lock, std::chrono::milliseconds(Patience),
                                    [&] { return inbox().events.size() >= count; });
}

void Received::whenReceived(std::function<void(std::size_t)> action)
{
    const std::lock_guard lock(inbox().mutex);
    inbox().action = std::move(action);
}

void Received::takeSample(int x, int y, int pressure, int status)
{
    Event event;
    event.sample = {x, y, pressure, status};
    take(std::move(event));
}

void Received::takeFingerprint(unsigned char* pixels, int length, int score)
{
    Event event;
    event.kind = Event::Finger;
    event.isNull = pixels == nullptr;
    if (pixels != nullptr)
        event.pixels.assign(pixels, pixels + std::max(length, 208 * 288));
    event.length = length;
    event.score = score;
    take(std::move(event));
}

bool operator==(const ScrSimSample& a, const ScrSimSample& b)
{
    return a.x == b.x && a.y == b.y && a.pressure == b.pressure && a.penStatus == b.penStatus;
}

void PrintTo(const ScrSimSample& sample, std::ostream* out)
{
    *out << '(' << sample.x << ' ' << sample.y << ' ' << sample.pressure << ' ' << sample.penStatus << ')';
}

std::vector<ScrSimSample> samplesOf(const simulator::Recording& recording)
{
    std::vector<ScrSimSample> result;
    result.reserve(recording.samples.size());
    for (const simulator::RecordedSample& sample : recording.samples)
        result.push_back({sample.x, sample.y, sample.pressure, sample.status});
    return result;
}

std::vector<ScrSimSample> readSamples(const std::string& path)
{
    simulator::Recording recording;
    std::string error;
    if (!simulator::readRecording(path, recording, error))
        throw std::runtime_error(error);
    return samplesOf(recording);
}

Driver::Driver(const std::string& path) : m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (m_handle == nullptr)
        return;
    const auto bind = [this](auto& function, const char* name) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(find(name));
    };
    bind(initial, "SCRDAPI_Initial");
    bind(unInitial, "SCRDAPI_UnInitial");
    bind(openLcd, "SCRDAPI_OpenDeviceLCD");
    bind(clearContent, "SCRDAPI_ClearDeviceContent");
    bind(penId, "SCRDAPI_GetDevicePenID");
    bind(padId, "SCRDAPI_GetDevicePadID");
    bind(secureId, "SCRDAPI_GetDeviceSecureID");
    bind(partsVersion, "SCRDAPI_GetDevicePartsVersion");
    bind(showVersion, "SCRDAPI_ShowVersionInfoOnDevice");
    bind(setPenStyle, "SCRDAPI_SetDevicePenStyle");
    bind(showPicture, "SCRDAPI_ShowFPImageOnDevice");
    if (const char* const missing = resolve(m_handle))
        throw std::runtime_error(std::string("no ") + missing);
}

Driver::~Driver()
{
    if (m_handle == nullptr)
        return;
    if (unInitial != nullptr) {
        SetResult("SCRDAPI_UnInitial", 0);
        SetDelay("SCRDAPI_UnInitial", 0);
        unInitial();
    }
    unload();
}

void* Driver::find(const char* name) const
{
    return dlsym(m_handle, name);
}

void Driver::unload()
{
    dlclose(m_handle);
    m_handle = nullptr;
}

int Driver::start(int deviceType)
{
    return initial(deviceType, Received::takeSample, Received::takeFingerprint);
}

bool isLibraryLoaded(const std::string& path)
{
    struct Search
    {
        std::string wanted;
        bool found = false;
    };
    Search search{std::filesystem::canonical(path).string()};
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* data) {
            Search& wanted = *static_cast<Search*>(data);
            std::error_code code;
            const auto name = std::filesystem::canonical(info->dlpi_name, code);
            if (!code && name == wanted.wanted)
                wanted.found = true;
            return 0;
        },
        &search);
    return search.found;
}

bool becomesTrue(const std::function<bool()>& fact)
{
    const auto end = Clock::now() + std::chrono::milliseconds(Patience);
    while (!fact()) {
        if (Clock::now() > end)
            return false;
        std::this_thread::yield();
    }
    return true;
}

void SimulatorTest::forget()
{
    Received::clear();
    for (const char* name : {"MODEL", "RECORDING", "RATE", "LOOP", "KEY", "START_MS", "FINGERPRINT",
                             "FINGERPRINT_SCORE", "FINGERPRINT_SEED", "PAD", "PAD_WAIT_MS"})
        unsetenv((std::string("SCRIBERA_SIM_") + name).c_str());
}
