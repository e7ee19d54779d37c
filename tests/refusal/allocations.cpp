#include "allocations.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include <dlfcn.h>
#include <execinfo.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace scribera::test {
namespace {

// Any thread reads them while it allocates; only the thread that watches writes them.
std::atomic<Refusal*> watching{nullptr};
std::atomic<long> counted{0};
std::atomic<long> chosen{0};
std::atomic<bool (*)(const char*)> leftOut{nullptr};

thread_local bool describing = false;

void describe(Refusal& report)
{
    void* frames[40];
    const int depth = backtrace(frames, 40);
    std::size_t used = 0;
    for (int i = 2; i < depth && used + 1 < sizeof report.place; ++i) {
        Dl_info info{};
        if (!dladdr(frames[i], &info) || !info.dli_fname)
            continue;
        const char* const slash = std::strrchr(info.dli_fname, '/');
        const char* const base = static_cast<const char*>(info.dli_saddr ? info.dli_saddr : info.dli_fbase);
        const int written =
            std::snprintf(report.place + used, sizeof report.place - used, "%s(%s+0x%tx)\n",
                          slash ? slash + 1 : info.dli_fname, info.dli_sname ? info.dli_sname : "",
                          static_cast<const char*>(frames[i]) - base);
        used += static_cast<std::size_t>(std::max(written, 0));
    }
}

bool isRefused()
{
    Refusal* const report = watching;
    if (!report || describing)
        return false;
    const long number = ++counted;
    report->count = number;
    if (number != chosen)
        return false;
    describing = true;
    describe(*report);
    report->leftOut = leftOut.load()(report->place);
    describing = false;
    if (report->leftOut)
        return false;
    errno = ENOMEM;
    return true;
}

} // namespace

void watchAllocations(Refusal* report, long which, bool (*isLeftOut)(const char*))
{
    void* frame = nullptr;
    backtrace(&frame, 1); // loads what it needs
    counted = 0;
    chosen = which;
    leftOut = isLeftOut;
    watching = report;
}

void unwatchAllocations()
{
    watching = nullptr;
}

} // namespace scribera::test

using scribera::test::isRefused;

extern "C" {

void* malloc(std::size_t size)
{
    return isRefused() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size)
{
    return isRefused() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size)
{
    return isRefused() ? nullptr : __libc_realloc(block, size);
}

void* memalign(std::size_t alignment, std::size_t size)
{
    return isRefused() ? nullptr : __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size)
{
    void* const made = memalign(alignment, size);
    if (!made)
        return ENOMEM;
    *block = made;
    return 0;
}
}
