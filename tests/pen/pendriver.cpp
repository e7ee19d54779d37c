#include "pendriver.h"

#include <filesystem>
#include <stdexcept>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include "processes.h"

namespace scribera::test {
namespace {

constexpr char kDriver[] = "./libscriberadrv.so";
constexpr char kErrors[] = "standard-error.txt";

struct Kept
{
    std::mutex lock;
    std::vector<PadSample> samples; // lock
} kept;

void keep(int x, int y, int pressure, int status)
{
    const std::lock_guard guard(kept.lock);
    kept.samples.push_back({x, y, pressure, status});
}

} // namespace

void PrintTo(const PadSample& sample, std::ostream* out)
{
    *out << '{' << sample.x << ' ' << sample.y << ' ' << sample.pressure << ' ' << sample.status << '}';
}

void installPenDriver()
{
    std::filesystem::remove(kDriver);
    std::filesystem::create_symlink(SCRIBERA_PEN_DRIVER, kDriver);
}

PenDriver::PenDriver() : m_handle(dlopen(kDriver, RTLD_NOW | RTLD_LOCAL))
{
    if (!m_handle)
        throw std::runtime_error(dlerror());
    const auto resolve = [this]<typename Function>(Function*& function, const char* name) {
        function = reinterpret_cast<Function*>(dlsym(m_handle, name));
        if (!function)
            throw std::runtime_error(dlerror());
    };
#define RESOLVE(name) resolve(name, "SCRDAPI_" #name)
    RESOLVE(Initial);
    RESOLVE(UnInitial);
    RESOLVE(OpenDeviceLCD);
    RESOLVE(ClearDeviceContent);
    RESOLVE(GetDevicePenID);
    RESOLVE(GetDevicePadID);
    RESOLVE(GetDeviceSecureID);
    RESOLVE(GetDevicePartsVersion);
    RESOLVE(ShowVersionInfoOnDevice);
    RESOLVE(SetDevicePenStyle);
    RESOLVE(ShowFPImageOnDevice);
#undef RESOLVE
}

PenDriver::~PenDriver()
{
    if (!m_handle)
        return;
    UnInitial();
    dlclose(m_handle);
}

int PenDriver::start(int deviceType)
{
    return Initial(deviceType, keep, nullptr);
}

std::vector<PadSample> PenDriver::samples() const
{
    const std::lock_guard guard(kept.lock);
    return kept.samples;
}

bool PenDriver::unload()
{
    dlclose(m_handle);
    m_handle = nullptr;
    void* const still = dlopen(kDriver, RTLD_NOW | RTLD_NOLOAD);
    if (still)
        dlclose(still);
    return !still;
}

ErrorOutput::ErrorOutput() : m_before(dup(STDERR_FILENO))
{
    const int file = open(kErrors, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
    dup2(file, STDERR_FILENO);
    close(file);
}

ErrorOutput::~ErrorOutput()
{
    dup2(m_before, STDERR_FILENO);
    close(m_before);
}

std::string ErrorOutput::text() const
{
    return fileContent(kErrors);
}

} // namespace scribera::test
