// The driver's entry points, over one pad.
#include "message.h"
#include "penpad.h"
#include "settings.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>

#include <dlfcn.h>
#include <unistd.h>

#define SCRIBERA_PEN_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using pen::PenPad;

using PenCallback = void (*)(int x, int y, int pressure, int penStatus);
using FingerprintCallback = void (*)(unsigned char* pixels, int length, int score);

enum Result : int
{
    Ok = 0,
    Failed = -1, // not started, started already, unplugged, or called where it cannot be done
    Invalid = -2,
};

struct CloseLibrary
{
    void operator()(void* library) const { dlclose(library); }
};
using LibraryHandle = std::unique_ptr<void, CloseLibrary>;

// A handle on this very library: a host that unloads it with an open pad does not pull the code away under
// the pad's thread.
LibraryHandle openOwnLibrary()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&openOwnLibrary), &info) == 0 || !info.dli_fname)
        return nullptr;
    return LibraryHandle(dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD));
}

// The pad between start and stop. The lock is held for a look at it, never while the host is called or the
// pad's thread is waited for.
struct Started
{
    std::mutex lock;
    LibraryHandle ownLibrary;         // lock; while there is a pad
    std::unique_ptr<PenPad> pad;      // lock
    const CPadModel* model = nullptr; // lock; what the host takes the pad for
    pid_t process = 0;                // lock; that started it
};

// Made at load and freed at unload by plain functions: a static object would be destroyed at exit under a
// thread that still reads. A started pad keeps the library loaded, so it meets the second one only at exit.
Started* g_started = nullptr;

__attribute__((constructor)) void onLoad()
{
    g_started = new Started;
}

__attribute__((destructor)) void onUnload()
{
    const bool isStopped = [] {
        const std::lock_guard guard(g_started->lock);
        return g_started->pad == nullptr;
    }();
    if (!isStopped)
        return;
    delete g_started;
    g_started = nullptr;
}

const CPadModel* modelOf(int deviceType)
{
    for (const CPadModel* model : AllPads()) {
        if (model->m_nDeviceType == deviceType)
            return model;
    }
    return nullptr;
}

// The first accepted text with the model's own pressures: what the host asks for is what it gets.
const char* modelText(const CPadModel& model)
{
    const auto own =
        std::find_if(model.m_Accepted.begin(), model.m_Accepted.end(), [&](const CAcceptedModel& row) {
            return std::strcmp(row.m_pszModel + 2, model.m_pszName) == 0;
        });
    return own == model.m_Accepted.end() ? model.m_Accepted.front().m_pszModel : own->m_pszModel;
}

// What a plugged pad answers; a pad that is gone, or not started, fails.
template <typename Function>
int ask(Function&& function)
{
    try {
        const std::lock_guard guard(g_started->lock);
        return g_started->pad && g_started->pad->isPlugged() ? function(*g_started->pad) : Failed;
    } catch (const std::exception&) {
        return Failed;
    }
}

// The part of the text that has room, and a zero byte behind it.
int copyText(const std::string& text, char* buffer, int size)
{
    if (!buffer || size <= 0)
        return Invalid;
    std::snprintf(buffer, static_cast<std::size_t>(size), "%s", text.c_str());
    return Ok;
}

// A pad without a screen of its own is cleared, switched and written on by doing nothing.
int accept()
{
    return ask([](const PenPad&) { return Ok; });
}

int initial(const CPadModel& model, PenCallback callback)
{
    const std::lock_guard guard(g_started->lock);
    if (g_started->pad)
        return Failed;
    auto pad = std::make_unique<PenPad>(pen::readSettings(), model, [callback](const pen::Sample& sample) {
        callback(sample.x, sample.y, sample.pressure, sample.status);
    });
    LibraryHandle ownLibrary = openOwnLibrary();
    pad->start();
    g_started->ownLibrary = std::move(ownLibrary);
    g_started->pad = std::move(pad);
    g_started->model = &model;
    g_started->process = getpid();
    return Ok;
}

} // namespace

SCRIBERA_PEN_EXPORT int SCRDAPI_Initial(int nDeviceType, PenCallback penCallback, FingerprintCallback)
{
    const CPadModel* const model = modelOf(nDeviceType);
    if (!model || !penCallback)
        return Invalid;
    try {
        return initial(*model, penCallback);
    } catch (const std::exception& error) {
        pen::say(error.what());
        return Failed;
    }
}

SCRIBERA_PEN_EXPORT int SCRDAPI_UnInitial()
{
    LibraryHandle ownLibrary; // closed after the pad
    std::unique_ptr<PenPad> pad;
    {
        const std::lock_guard guard(g_started->lock);
        if (!g_started->pad || g_started->pad->isOwnThread())
            return Failed;
        if (g_started->process != getpid())
            g_started->pad->abandon();
        pad = std::move(g_started->pad);
        ownLibrary = std::move(g_started->ownLibrary);
    }
    return Ok;
}

SCRIBERA_PEN_EXPORT int SCRDAPI_OpenDeviceLCD(bool)
{
    return accept();
}

SCRIBERA_PEN_EXPORT int SCRDAPI_ClearDeviceContent()
{
    return accept();
}

SCRIBERA_PEN_EXPORT int SCRDAPI_GetDevicePenID(char* buffer, int nMaxCount)
{
    return ask([&](const PenPad& pad) { return copyText(pad.identity(), buffer, nMaxCount); });
}

SCRIBERA_PEN_EXPORT int SCRDAPI_GetDevicePadID(char* buffer, int nMaxCount)
{
    return ask([&](const PenPad& pad) { return copyText(pad.name(), buffer, nMaxCount); });
}

SCRIBERA_PEN_EXPORT int SCRDAPI_GetDeviceSecureID(char* buffer, int nMaxCount)
{
    return ask([&](const PenPad& pad) { return copyText(pad.identity(), buffer, nMaxCount); });
}

SCRIBERA_PEN_EXPORT int SCRDAPI_GetDevicePartsVersion(char* buffer, int nMaxCount)
{
    return ask([&](const PenPad&) {
        return copyText(std::string(modelText(*g_started->model)) + " pen " SCRIBERA_VERSION, buffer,
                        nMaxCount);
    });
}

SCRIBERA_PEN_EXPORT int SCRDAPI_ShowVersionInfoOnDevice(bool)
{
    return accept();
}

SCRIBERA_PEN_EXPORT int SCRDAPI_SetDevicePenStyle(bool)
{
    return accept();
}

SCRIBERA_PEN_EXPORT int SCRDAPI_ShowFPImageOnDevice(unsigned char*, int, int, int, bool*)
{
    return accept();
}
