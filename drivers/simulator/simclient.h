// The simulated pad's control functions in a driver library that was loaded while the program runs.
#pragma once

#include "scriberasim.h"

#include <dlfcn.h>

namespace simulator {

struct Client
{
#define X(name) decltype(&::ScrSim_##name) name = nullptr;
    SCRSIM_FUNCTIONS(X)
#undef X

    // Finds the functions in the library that dlopen() gave. Returns the first name that is missing there,
    // whose function is null like those of all missing ones; null when all are found.
    [[nodiscard]] const char* resolve(void* library)
    {
        const char* missing = nullptr;
#define X(name)                                                                                              \
    name = reinterpret_cast<decltype(name)>(dlsym(library, "ScrSim_" #name));                                \
    if (!name && !missing)                                                                                   \
        missing = "ScrSim_" #name;
        SCRSIM_FUNCTIONS(X)
#undef X
        return missing;
    }
};

} // namespace simulator
