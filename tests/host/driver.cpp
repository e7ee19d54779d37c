#include "driver.h"

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include <dlfcn.h>

#include <gtest/gtest.h>

namespace scribera::test {

namespace fs = std::filesystem;

const char* const driverFile = "./libscriberadrv.so";

void removeDriver()
{
    fs::remove_all(driverFile);
}

void installDriver(const std::string& library)
{
    removeDriver();
    fs::create_symlink(library, driverFile);
}

void installDriverWithout(const std::string& missing)
{
    const fs::path variant = fs::path(SCRIBERA_DRIVER_VARIANTS) / missing / "libscriberadrv.so";
    if (!fs::exists(variant))
        throw std::runtime_error("no driver variant " + variant.string());
    installDriver(variant);
}

void Simulator::open()
{
    if (m_handle)
        return;
    m_handle = dlopen(driverFile, RTLD_NOW | RTLD_LOCAL);
    if (!m_handle)
        throw std::runtime_error(dlerror());
    if (const char* const missing = resolve(m_handle))
        throw std::runtime_error(std::string("no ") + missing);
}

void Simulator::close()
{
    if (m_handle)
        dlclose(m_handle);
    m_handle = nullptr;
}

void Simulator::queue(const std::vector<ScrSimSample>& samples)
{
    open();
    ASSERT_EQ(SendSamples(samples.data(), static_cast<int>(samples.size())), 0) << LastError();
}

void Simulator::send(const std::vector<ScrSimSample>& samples)
{
    queue(samples);
    waitIdle();
}

void Simulator::pressKey(int key)
{
    open();
    ASSERT_EQ(PressKey(key), 0) << LastError();
    waitIdle();
}

void Simulator::waitIdle()
{
    open();
    ASSERT_EQ(WaitIdle(60000), 0) << "the pad's samples were not taken in time";
}

std::vector<std::string> Simulator::callLog()
{
    open();
    std::string text(static_cast<std::size_t>(CallLog(nullptr, 0)) + 1, '\0');
    CallLog(text.data(), static_cast<int>(text.size()));
    std::istringstream words(text.c_str());
    return {std::istream_iterator<std::string>(words), {}};
}

void Simulator::setText(const std::string& entryPoint, const std::string& text, bool terminate)
{
    open();
    ASSERT_EQ(SetText(entryPoint.c_str(), text.data(), static_cast<int>(text.size()), terminate ? 1 : 0), 0)
        << LastError();
}

} // namespace scribera::test
