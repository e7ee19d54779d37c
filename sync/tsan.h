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

// Stands for an image in the eyes of ThreadSanitizer, which cannot see Qt's own painting: note every access
// to the image here, and a missing lock shows. Costs nothing in other builds.
class CImageWitness
{
public:
#if defined(SCRIBERA_TSAN)
    void NoteRead() const
    {
        static_cast<void>(*static_cast<const volatile int*>(&m_nAccess));
    }
    void NoteWrite()
    {
        *static_cast<volatile int*>(&m_nAccess) = 1;
    }

private:
    int m_nAccess = 0;
#else
    void NoteRead() const {}
    void NoteWrite() {}
#endif
};
