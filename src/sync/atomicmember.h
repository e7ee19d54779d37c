// Plain data that several threads read and write.
#pragma once

#include <atomic>

// For the exported variables and for the flag whose address a driver is given, which cannot be std::atomic.
// Every access from our side goes through these two.
template <typename T>
T LoadShared(const T& Member)
{
    return std::atomic_ref<T>(const_cast<T&>(Member)).load(std::memory_order_acquire);
}

template <typename T>
void StoreShared(T& Member, T Value)
{
    std::atomic_ref<T>(Member).store(Value, std::memory_order_release);
}
