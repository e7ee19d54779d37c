// Announcements to ThreadSanitizer. Qt's own libraries are not instrumented, so the sanitizer sees neither
// the inside of QMutex nor that of QThread; the wrappers in this folder tell it what those order.
#pragma once

#if defined(__SANITIZE_THREAD__)
#define SCRIBERA_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define SCRIBERA_TSAN 1
#endif
#endif

#if defined(SCRIBERA_TSAN)
extern "C" void __tsan_acquire(void* pAddress);
extern "C" void __tsan_release(void* pAddress);
inline void TsanAcquire(void* pAddress)
{
    __tsan_acquire(pAddress);
}
inline void TsanRelease(void* pAddress)
{
    __tsan_release(pAddress);
}
#else
inline void TsanAcquire(void* /*pAddress*/) {}
inline void TsanRelease(void* /*pAddress*/) {}
#endif
