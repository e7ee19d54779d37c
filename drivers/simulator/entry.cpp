#include "entry.h"

#include <array>
#include <cstring>

namespace simulator {
namespace {

constexpr std::array<const char*, EntryCount> EntryNames{
#define X(name) "SCRDAPI_" #name,
    SCRIBERA_ENTRIES(X)
#undef X
};

} // namespace

std::optional<Entry> entryByName(const char* name)
{
    if (name == nullptr)
        return std::nullopt;
    for (std::size_t index = 0; index < EntryNames.size(); ++index) {
        if (std::strcmp(name, EntryNames[index]) == 0)
            return static_cast<Entry>(index);
    }
    return std::nullopt;
}

const char* entryName(Entry entry)
{
    return EntryNames[static_cast<std::size_t>(entry)];
}

} // namespace simulator
