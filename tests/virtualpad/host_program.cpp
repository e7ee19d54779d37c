// A host without an application object, which does what its standard input says, a line at a time, and
// answers each with one line.
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <dlfcn.h>

#include "model/padmodel.h"

namespace {

std::atomic<int> g_lastStatus{-1};

void takeStatus(int status)
{
    g_lastStatus = status;
}

struct Packet
{
    std::int32_t index = 0;
    std::uint16_t x = 0;
    std::int16_t y = 0;
    std::int16_t pressure = 0;
    std::uint8_t status = 0;
};
static_assert(sizeof(Packet) == 12);

class Host
{
public:
    explicit Host(void* library) : m_library(library) {}

    std::string answer(const std::string& line)
    {
        std::istringstream words(line);
        std::string name;
        words >> name;
        if (name == "open") {
            words >> m_type;
            const bool opened = call<bool>("InitialDevice", static_cast<void*>(nullptr), 0, 0, 800, 480);
            if (opened)
                call<int>("SignatureStatusCallback", takeStatus);
            return opened ? "true" : "false";
        }
        if (name == "close")
            return std::to_string(call<int>("UnInitialDevice"));
        if (name == "points")
            return std::to_string(call<int>("GetTotalPacketsNumber"));
        if (name == "point") {
            Packet packet;
            words >> packet.index;
            if (call<int>("getPackets", &packet) != 0)
                return "none";
            return std::to_string(packet.x) + " " + std::to_string(packet.y) + " " +
                   std::to_string(packet.pressure) + " " + std::to_string(packet.status);
        }
        if (name == "save") {
            std::string path;
            words >> path;
            std::wstring wide(path.begin(), path.end());
            constexpr int Png = 3;
            return std::to_string(call<int>("SaveDrawingImage", Png, wide.data(), 1));
        }
        if (name == "status")
            return std::to_string(g_lastStatus.load());
        if (name == "model") {
            std::vector<char> text(65);
            call<int>("GetHWVersionID", text.data(), 64);
            return text.data();
        }
        if (name == "clear")
            return std::to_string(call<int>("Clear"));
        if (name == "screen" || name == "version" || name == "penstyle") {
            bool on = false;
            words >> on;
            const char* function = name == "screen"    ? "OpenLCD"
                                   : name == "version" ? "DisplayHWVersion"
                                                       : "SetPenStyle";
            return std::to_string(call<int>(function, on));
        }
        return "what?";
    }

private:
    template <typename Result, typename... Arguments>
    Result call(const std::string& name, Arguments... arguments)
    {
        std::string symbol;
        for (const CPadModel* pad : AllPads())
            if (pad->m_nDeviceType == m_type)
                symbol = pad->m_pszFamily + name;
        using Function = Result (*)(int, Arguments...);
        const auto function = reinterpret_cast<Function>(dlsym(m_library, symbol.c_str()));
        if (function == nullptr) {
            std::cerr << "host: no function " << name << "\n";
            return Result();
        }
        return function(m_type, arguments...);
    }

    void* m_library;
    int m_type = 2;
};

} // namespace

int main()
{
    void* const library = dlopen(SCRIBERA_SDK_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::cerr << dlerror() << "\n";
        return 1;
    }
    Host host(library);
    std::string line;
    while (std::getline(std::cin, line) && line != "quit")
        std::cout << host.answer(line) << std::endl;
    return 0;
}
