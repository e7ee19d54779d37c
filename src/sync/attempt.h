// Work that may fail for want of memory.
#pragma once

#include <cxxabi.h>

// Does the work; false when it threw, as it does when memory is short. The unwinding of a thread that ends by
// pthread_exit() or by a cancellation passes.
template <typename TWork>
bool Attempt(TWork Work)
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
