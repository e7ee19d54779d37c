// Plain members that several threads read and write.
#pragma once

#include <atomic>

// The flags of a sign object keep their plain types, since a driver is given the address of one of them;
// every access from our side goes through these two.
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
