#include "interrupts.h"

#include "leftovers.h"
#include "terminal.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

std::atomic<int> firstSignal{0}; // the handler writes, on any thread
int wakeUp = -1;                 // made before the handler is set

void onSignal(int signal)
{
    const int error = errno;
    int none = 0;
    if (firstSignal.compare_exchange_strong(none, signal)) {
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = write(wakeUp, &one, sizeof one);
    } else {
        removeLeftovers();
        restoreTerminal();
        std::signal(signal, SIG_DFL);
        raise(signal); // comes when this handler returns
    }
    errno = error;
}

} // namespace

void catchInterrupts()
{
    wakeUp = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    std::signal(SIGPIPE, SIG_IGN); // a reader that is gone shows as an output that cannot be written
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    sigfillset(&action.sa_mask);
    for (const int signal : endingSignals) {
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) // as nohup has it
            sigaction(signal, &action, nullptr);
    }
}

void throwIfInterrupted()
{
    if (firstSignal != 0)
        throw Interrupted{firstSignal};
}

int interruptDescriptor()
{
    return wakeUp;
}

void waitFor(const std::vector<int>& descriptors, int milliseconds)
{
    std::vector<pollfd> polled = {{wakeUp, POLLIN, 0}};
    for (const int descriptor : descriptors)
        polled.push_back({descriptor, POLLIN, 0}); // one below 0 is left out by the system
    poll(polled.data(), polled.size(), milliseconds);
    throwIfInterrupted();
}

int endBy(const Interrupted& interrupted)
{
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, interrupted.signal);
    std::signal(interrupted.signal, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
    raise(interrupted.signal);
    return 128 + interrupted.signal;
}
