// The library as a host loads it: by path and symbol name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "models.h"

class QWidget;

namespace scribera::test {

struct Packet // the record of getPackets
{
    std::int32_t index;
    std::uint16_t x;
    std::int16_t y;
    std::int16_t pressure;
    std::uint8_t status;
};
static_assert(sizeof(Packet) == 12 && offsetof(Packet, x) == 4 && offsetof(Packet, status) == 10);

using WindowId = unsigned long long;
using StatusCallback = void (*)(int);
using RealTimeCallback = void (*)(unsigned long, long);

// X(name, families, result, arguments)
#define SCRIBERA_OPERATIONS(X)                                                                               \
    X(InitialDevice, All, bool, (int, QWidget*, int, int, int, int))                                         \
    X(InitialDeviceByWId, All, bool, (int, scribera::test::WindowId, int, int, int, int))                    \
    X(UnInitialDevice, All, int, (int))                                                                      \
    X(OpenLCD, WithScreen, int, (int, bool))                                                                 \
    X(Clear, All, int, (int))                                                                                \
    X(GetHWPenID, WithScreen, int, (int, char*, int))                                                        \
    X(GetHWPadID, All, int, (int, char*, int))                                                               \
    X(GetHWVersionID, All, int, (int, char*, int))                                                           \
    X(DisplayHWVersion, WithScreen, int, (int, bool))                                                        \
    X(SetPenStyle, All, int, (int, bool))                                                                    \
    X(SetPenWidth, All, int, (int, int))                                                                     \
    X(SetPenColor, All, int, (int, int, int, int))                                                           \
    X(SignatureStatusCallback, All, int, (int, scribera::test::StatusCallback))                              \
    X(RealTimeSignatureDataCallback, All, bool, (int, scribera::test::RealTimeCallback))                     \
    X(GetTotalPacketsNumber, All, int, (int))                                                                \
    X(getPackets, All, int, (int, scribera::test::Packet*))                                                  \
    X(GetInkPointTime, All, char*, (int, int))                                                               \
    X(FreeInkPointTime, All, void, (int, char*))                                                             \
    X(GetDeviceConfirmOrCancelKeyStatus, All, int, (int))                                                    \
    X(SaveDrawingImage, All, int, (int, int, wchar_t*, int))                                                 \
    X(SetSaveCenterImageClip, All, int, (int, bool, int, int))                                               \
    X(getDeviceInfo, All, int, (int, int, void*))                                                            \
    X(PacketsBase64Encode, All, char*, (int, int))                                                           \
    X(PacketsBase64EncodeFree, All, void, (int, char*))                                                      \
    X(PacketsBase64EncodeEx, All, char*, (int, int, bool))                                                   \
    X(PacketsBase64EncodeExFree, All, void, (int, char*))                                                    \
    X(Base64Decode, All, int, (int, int, const char*, wchar_t*))                                             \
    X(GetTotalDecodePacketsNumber, All, int, (int))                                                          \
    X(GetDecodePacketsData, All, int, (int, int, int))                                                       \
    X(GetSVGImageBase64Data, All, char*, (int))                                                              \
    X(FreeSVGImageBase64Data, All, void, (int, char*))                                                       \
    X(SetDisplayedFPImageAt, WithFingerprint, int, (int, QWidget*, int, int, int, int, int, int))            \
    X(SetDisplayedFPImageAtByWId, WithFingerprint, int,                                                      \
      (int, scribera::test::WindowId, int, int, int, int, int, int))                                         \
    X(GetFPImageBase64Data, WithFingerprint, char*, (int, int, bool))                                        \
    X(FreeFPImageBase64Data, WithFingerprint, void, (int, char*))                                            \
    X(AboutBox, All, void, (QWidget*))                                                                       \
    X(AboutBoxByWId, All, void, (scribera::test::WindowId))                                                  \
    X(GetAboutInfo, All, void, (int, char*))

// One family's functions; those that the family does not have are null.
struct Operations
{
#define X(name, families, result, arguments) result(*name) arguments = nullptr;
    SCRIBERA_OPERATIONS(X)
#undef X
};

// The functions that belong to no family. X(name, result, arguments)
#define SCRIBERA_EXTENSIONS(X)                                                                               \
    X(Version, int, ())                                                                                      \
    X(LastStartFailure, int, (char*, int))                                                                   \
    X(SetWorkers, int, (int))

struct Extensions
{
#define X(name, result, arguments) result(*name) arguments = nullptr;
    SCRIBERA_EXTENSIONS(X)
#undef X
};

enum StartFailure
{
    StartOk = 0,
    StartDriverMissing = 1,
    StartDriverNotLoaded = 2,
    StartDriverIncomplete = 3,
    StartDriverRefused = 4,
    StartModelUnknown = 5,
    StartNoMemory = 6,
    StartNoThread = 7,
    StartWrongThread = 8,
    StartWrongQt = 9,
    StartNoApplication = 10,
    StartNoWindow = 11,
    StartInCallback = 12,
    StartWrongDeviceType = 13
};

enum Workers
{
    WorkersPoll = 0,
    WorkersWait = 1
};

enum class Families
{
    All,
    WithScreen,
    WithFingerprint
};

bool belongsTo(Families families, const PadModel& model);
std::vector<std::string> operationNames(const PadModel& model); // without the prefix
std::vector<std::string> extensionNames();                      // with their prefix

class Library
{
public:
    static Library& instance(); // opened at the first call

    const Operations& family(const PadModel& model) const;
    const Extensions& extensions() const { return m_extensions; }
    void* symbol(const std::string& name) const; // null when there is none
    void* handle() const { return m_handle; }

    unsigned char& enableLog;
    unsigned char& useSignObj;
    void*& signWidget;

private:
    explicit Library(void* handle);

    void* m_handle;
    std::vector<Operations> m_families;
    Extensions m_extensions;
};

// Safe on any thread, as the library's own look at the switch is.
void setLogging(bool on, unsigned char value = 1);
bool loggingIsOn();

} // namespace scribera::test
