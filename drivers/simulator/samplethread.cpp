// The thread that brings samples and fingerprints to the host.
#include "simulator.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <utility>

#include <pthread.h>

namespace simulator {

using Clock = Playback::Clock;

void Simulator::Queue::clear()
{
    samples.clear();
    fingerprints.clear();
}

bool Simulator::startThread()
{
    // The host's signal handlers belong on the host's threads.
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    bool started = true;
    try {
        m_thread = std::thread([this] { run(); });
        m_threadId = m_thread.get_id();
    } catch (const std::exception&) {
        started = false;
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    if (started)
        pthread_setname_np(m_thread.native_handle(), "scribera-sim");
    return started;
}

void Simulator::run()
{
    std::unique_lock lock(m_mutex);
    while (!m_stop.load()) {
        m_attention.store(false, std::memory_order_relaxed);
        if (m_playChanged) {
            m_playback = std::move(m_nextPlayback);
            m_playChanged = false;
            m_delivered.store(0);
        }
        if (!m_pending.isEmpty()) {
            std::swap(m_pending, m_taken);
            m_delivering = true;
            lock.unlock();
            deliverQueue();
            lock.lock();
            m_delivering = false;
            continue;
        }
        if (m_playback == nullptr) {
            m_idle.notify_all();
            m_wake.wait(lock, [this] { return m_attention.load(std::memory_order_relaxed); });
            continue;
        }
        if (m_playback->isAtEnd() && !m_playback->rewind()) {
            m_playback.reset();
            continue;
        }
        const Clock::time_point due = m_playback->dueTime();
        if (Clock::now() < due) {
            m_wake.wait_until(lock, due, [this] { return m_attention.load(std::memory_order_relaxed); });
            continue;
        }
        m_delivering = true;
        lock.unlock();
        deliverDueSamples();
        lock.lock();
        m_delivering = false;
    }
}

void Simulator::deliver(Fingerprint& print)
{
    if (m_fingerprintCallback != nullptr)
        m_fingerprintCallback(print.isNull ? nullptr : print.pixels.data(), print.length, print.score);
}

void Simulator::deliverQueue()
{
    std::size_t fingerprint = 0;
    const auto deliverFingerprintsAt = [&](std::size_t position) {
        for (; fingerprint < m_taken.fingerprints.size(); ++fingerprint) {
            Fingerprint& print = m_taken.fingerprints[fingerprint];
            if (print.position != position || m_stop.load(std::memory_order_acquire))
                return;
            deliver(print);
        }
    };
    for (std::size_t index = 0; index < m_taken.samples.size(); ++index) {
        deliverFingerprintsAt(index);
        if (m_stop.load(std::memory_order_acquire))
            break;
        const ScrSimSample& sample = m_taken.samples[index];
        m_penCallback(sample.x, sample.y, sample.pressure, sample.penStatus);
    }
    deliverFingerprintsAt(m_taken.samples.size());
    m_taken.clear();
}

void Simulator::deliverDueSamples()
{
    Playback& playback = *m_playback;
    while (!m_attention.load(std::memory_order_acquire)) {
        if (playback.isFingerprintNext()) {
            deliver(*playback.fingerprint);
            playback.fingerprintDelivered();
        } else {
            const RecordedSample& sample = playback.samples[playback.next];
            m_penCallback(sample.x, sample.y, sample.pressure, sample.status);
            ++playback.next;
            m_delivered.store(std::min(playback.next, playback.recordedCount), std::memory_order_relaxed);
        }
        if (playback.isAtEnd())
            return;
        if (playback.speed > 0 && Clock::now() < playback.dueTime())
            return;
    }
}

} // namespace simulator
