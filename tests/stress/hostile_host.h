#pragma once

// A host that calls every function of a family in random order with arguments of every kind, and holds each
// result against the ones that are documented for it.

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "harness.h"

namespace scribera::test {

// Where the calls come from. Inside a callback, and on a bystander's thread, the object may be on its way
// out, so that every call may also find none. A bystander neither opens nor closes.
enum class Caller
{
    HostThread,
    Callback,
    Bystander
};

class HostileHost
{
public:
    HostileHost(const PadCase& padCase, Caller caller, unsigned seed, QWidget* parent);

    // Every operation once, in a new order each time. Guard(call) makes the call.
    void round(const std::function<void(const std::function<void()>&)>& guard);
    void one(); // any of them

    std::size_t calls() const { return m_calls; }

    void setCallbacks(StatusCallback status, RealTimeCallback realTime);

private:
    struct Call
    {
        std::string name;
        std::function<void()> make;
    };

    void addLifecycle();
    void addPad();
    void addPen();
    void addPoints();
    void addFiles();
    void addTexts();
    void addFingerprint();
    void addAbout();
    // Called with a device type, mostly its own.
    void add(const char* name, const std::function<void(int)>& make)
    {
        m_operations.push_back({name, [this, make] { make(typeArgument()); }});
    }

    int below(int count);
    bool chance(int percent) { return below(100) < percent; }
    bool flag() { return below(2) == 0; }
    int number();       // small, large, negative and extreme ones
    int typeArgument(); // mostly the family's own device type
    int imageType();
    wchar_t* path();
    const char* encodedText();
    WindowId windowId();

    // The result of the last call, which had this device type.
    void expectOneOf(int deviceType, int result, const std::vector<int>& documented);
    void expectTruth(int deviceType, bool result, bool documented);
    void expectText(int deviceType, char* text, bool accepted, void (*giveBack)(int, char*));

    PadCase m_case;
    const Operations& m_api;
    Caller m_caller;
    std::mt19937 m_random;
    QWidget* m_parent;
    StatusCallback m_status = nullptr;
    RealTimeCallback m_realTime = nullptr;
    std::vector<Call> m_operations;
    const char* m_current = "";
    std::size_t m_calls = 0;
    int m_placements = 0;
    std::vector<std::wstring> m_paths;
    std::vector<std::string> m_texts;
};

} // namespace scribera::test
