/* A driver for the K210 that passes everything on to the simulated pad, "./simulated.so", as long as it is
 * plugged in. While the file "unplugged" lies in the current directory nothing reaches the pad: starting and
 * asking for its id fail. Only while the file "person" lies there does the pad play what
 * SCRIBERA_SIM_RECORDING names. */
#define _POSIX_C_SOURCE 200809L
#include <dlfcn.h>
#include <stdbool.h>
#include <stdlib.h>
#include <unistd.h>

#define EXPORT __attribute__((visibility("default")))

enum
{
    notReached = -1
};

typedef void (*PenCallback)(int x, int y, int pressure, int penStatus);
typedef void (*FingerprintCallback)(unsigned char* pixels, int length, int score);

static void* pad;

static bool exists(const char* name)
{
    return access(name, F_OK) == 0;
}

/* ISO C has no conversion from what dlsym() returns to a function. */
#define ENTRY(Type, name)                                                                                    \
    (((union {                                                                                               \
         void* object;                                                                                       \
         Type entry;                                                                                         \
     }){pad ? dlsym(pad, name) : NULL})                                                                      \
         .entry)

typedef int (*StartEntry)(int, PenCallback, FingerprintCallback);
typedef int (*PlainEntry)(void);
typedef int (*SwitchEntry)(bool);
typedef int (*TextEntry)(char*, int);

EXPORT int SCRDAPI_Initial(int deviceType, PenCallback onPen, FingerprintCallback onFingerprint)
{
    if (exists("unplugged"))
        return notReached;
    if (!exists("person"))
        unsetenv("SCRIBERA_SIM_RECORDING");
    else if (getenv("PERSON_RECORDING"))
        setenv("SCRIBERA_SIM_RECORDING", getenv("PERSON_RECORDING"), 1);
    pad = dlopen("./simulated.so", RTLD_NOW);
    const StartEntry start = ENTRY(StartEntry, "SCRDAPI_Initial");
    return start ? start(deviceType, onPen, onFingerprint) : notReached;
}

EXPORT int SCRDAPI_UnInitial(void)
{
    const PlainEntry stop = ENTRY(PlainEntry, "SCRDAPI_UnInitial");
    const int result = stop ? stop() : notReached;
    if (pad)
        dlclose(pad);
    pad = NULL;
    return result;
}

#define PASS_SWITCH(name)                                                                                    \
    EXPORT int name(bool on)                                                                                 \
    {                                                                                                        \
        const SwitchEntry entry = ENTRY(SwitchEntry, #name);                                                 \
        return entry ? entry(on) : notReached;                                                               \
    }
#define PASS_TEXT(name)                                                                                      \
    EXPORT int name(char* text, int size)                                                                    \
    {                                                                                                        \
        const TextEntry entry = ENTRY(TextEntry, #name);                                                     \
        return entry && !exists("unplugged") ? entry(text, size) : notReached;                               \
    }

PASS_SWITCH(SCRDAPI_OpenDeviceLCD)
PASS_SWITCH(SCRDAPI_ShowVersionInfoOnDevice)
PASS_SWITCH(SCRDAPI_SetDevicePenStyle)
PASS_TEXT(SCRDAPI_GetDevicePenID)
PASS_TEXT(SCRDAPI_GetDevicePadID)
PASS_TEXT(SCRDAPI_GetDeviceSecureID)
PASS_TEXT(SCRDAPI_GetDevicePartsVersion)

EXPORT int SCRDAPI_ClearDeviceContent(void)
{
    const PlainEntry clear = ENTRY(PlainEntry, "SCRDAPI_ClearDeviceContent");
    return clear ? clear() : notReached;
}
