// A driver that is in trouble, as TROUBLED_DRIVER in the environment says: "crash at load", "crash" or "hang"
// at its start, "hang later" when it is asked for the pad's id a second time. Without that it starts, says
// so, and brings nothing.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

#define DRIVER_FUNCTION extern "C" __attribute__((visibility("default"))) int

namespace {

bool isIn(const char* trouble)
{
    const char* const named = std::getenv("TROUBLED_DRIVER");
    return named && std::strcmp(named, trouble) == 0;
}

void say(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
}

[[noreturn]] void hang()
{
    say("hanging");
    for (;;)
        pause();
}

int writeText(char* buffer, int size, const char* text)
{
    std::snprintf(buffer, static_cast<std::size_t>(size), "%s", text);
    return 0;
}

__attribute__((constructor)) void onLoad()
{
    if (isIn("crash at load"))
        std::abort();
}

} // namespace

DRIVER_FUNCTION SCRDAPI_Initial(int, void (*)(int, int, int, int), void (*)(unsigned char*, int, int))
{
    if (isIn("crash"))
        std::abort();
    if (isIn("hang"))
        hang();
    say("started");
    return 0;
}

DRIVER_FUNCTION SCRDAPI_UnInitial()
{
    return 0;
}

DRIVER_FUNCTION SCRDAPI_OpenDeviceLCD(bool)
{
    return 0;
}

DRIVER_FUNCTION SCRDAPI_ClearDeviceContent()
{
    return 0;
}

DRIVER_FUNCTION SCRDAPI_GetDevicePenID(char* buffer, int size)
{
    return writeText(buffer, size, "pen");
}

DRIVER_FUNCTION SCRDAPI_GetDevicePadID(char* buffer, int size)
{
    static int asked = 0;
    if (isIn("hang later") && ++asked > 1)
        hang();
    return writeText(buffer, size, "pad");
}

DRIVER_FUNCTION SCRDAPI_GetDeviceSecureID(char* buffer, int size)
{
    return writeText(buffer, size, "id");
}

DRIVER_FUNCTION SCRDAPI_GetDevicePartsVersion(char* buffer, int size)
{
    return writeText(buffer, size, "SCK210");
}

DRIVER_FUNCTION SCRDAPI_ShowVersionInfoOnDevice(bool)
{
    return 0;
}

DRIVER_FUNCTION SCRDAPI_SetDevicePenStyle(bool)
{
    return 0;
}

DRIVER_FUNCTION SCRDAPI_ShowFPImageOnDevice(unsigned char*, int, int, int, bool*)
{
    return 0;
}
