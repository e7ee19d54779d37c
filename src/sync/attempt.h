// Work that may fail for want of memory.
#pragma once

#include <cxxabi.h>

// Catches the unwinding of a thread that ends by pthread_exit() or by a cancellation. There is no object for
// the caught reference to be bound to, which would look like a fault to the sanitizer.
#if defined(__SANITIZE_ADDRESS__)
#define SCRIBERA_CATCHES_UNWINDING __attribute__((no_sanitize("null"), noinline))
#else
#define SCRIBERA_CATCHES_UNWINDING
#endif

// Does the work; false when it threw, as it does when memory is short. The unwinding of a thread that ends by
// pthread_exit() or by a cancellation passes.
template <typename TWork>
SCRIBERA_CATCHES_UNWINDING bool Attempt(TWork Work)
{
    try {
        Work();
        return true;
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        return false;
    }
}
