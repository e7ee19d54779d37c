// The entry points of a driver library, by number and by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace simulator {

// X(name) for SCRDAPI_name
#define SCRIBERA_ENTRIES(X)                                                                                  \
    X(Initial)                                                                                               \
    X(UnInitial)                                                                                             \
    X(OpenDeviceLCD)                                                                                         \
    X(ClearDeviceContent)                                                                                    \
    X(GetDevicePenID)                                                                                        \
    X(GetDevicePadID)                                                                                        \
    X(GetDeviceSecureID)                                                                                     \
    X(GetDevicePartsVersion)                                                                                 \
    X(ShowVersionInfoOnDevice)                                                                               \
    X(SetDevicePenStyle)                                                                                     \
    X(ShowFPImageOnDevice)

enum class Entry : std::uint8_t
{
#define X(name) name,
    SCRIBERA_ENTRIES(X)
#undef X
};
#define X(name) +1
constexpr std::size_t EntryCount = SCRIBERA_ENTRIES(X);
#undef X

std::optional<Entry> entryByName(const char* name);
const char* entryName(Entry entry);

} // namespace simulator
