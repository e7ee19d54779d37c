// How threads meet without a lock, each step as the sources have it, run by a checker in every interleaving
// and with every value that the memory model of C++ lets a thread see: more than any machine does. Each
// protocol holds as it is, and breaks where its orders are weakened or its steps swapped; so the checker
// would notice.
#include <relacy/relacy.hpp>

#include <cstdio>
#include <cstring>
#include <ostream>
#include <streambuf>

namespace {

struct Strict // as atomic members are accessed unless they say otherwise
{
    static constexpr rl::memory_order load = rl::mo_seq_cst;
    static constexpr rl::memory_order store = rl::mo_seq_cst;
    static constexpr rl::memory_order change = rl::mo_seq_cst;
};

struct AcquireRelease
{
    static constexpr rl::memory_order load = rl::mo_acquire;
    static constexpr rl::memory_order store = rl::mo_release;
    static constexpr rl::memory_order change = rl::mo_acq_rel;
};

struct Relaxed
{
    static constexpr rl::memory_order load = rl::mo_relaxed;
    static constexpr rl::memory_order store = rl::mo_relaxed;
    static constexpr rl::memory_order change = rl::mo_relaxed;
};

constexpr unsigned closed = 1U << 31;

// CLiveObject: an object is published, used by two threads, closed and destroyed. A use of one that is not
// made yet or is gone is a data race.
template <typename Order>
struct Door : rl::test_suite<Door<Order>, 3>
{
    rl::atomic<unsigned> door;
    rl::atomic<rl::var<int>*> published;
    rl::var<int> object;

    void before()
    {
        door(RL_INFO).store(closed, rl::mo_relaxed);
        published(RL_INFO).store(nullptr, rl::mo_relaxed);
        object(RL_INFO) = 0;
    }

    void thread(unsigned index)
    {
        if (index == 0)
            live();
        else
            use();
    }

    void live()
    {
        object(RL_INFO) = 1;
        published(RL_INFO).store(&object, Order::store);
        door(RL_INFO).fetch_and(~closed, Order::change);

        unsigned uses = door(RL_INFO).fetch_or(closed, Order::change) | closed;
        while (uses & ~closed) {
            rl::yield(1, RL_INFO);
            uses = door(RL_INFO).load(Order::load);
        }
        object(RL_INFO) = 0;
    }

    void use()
    {
        unsigned uses = door(RL_INFO).load(Order::load);
        while (!(uses & closed)) {
            if (!door(RL_INFO).compare_exchange_weak(uses, uses + 1, Order::change))
                continue;
            rl::var<int>* const found = published(RL_INFO).load(Order::load);
            RL_ASSERT((*found)(RL_INFO) == 1);
            door(RL_INFO).fetch_sub(1, Order::change);
            return;
        }
    }
};

// CLiveObject::CloseForExit and Enter: one thread closes the gate and then looks for uses, the other counts
// its use and then looks at the gate. Both must not find nothing: here no order but the strictest will do.
template <typename Order>
struct Exit : rl::test_suite<Exit<Order>, 2>
{
    rl::atomic<unsigned> door;
    rl::atomic<bool> exiting;
    rl::var<int> application;

    void before()
    {
        door(RL_INFO).store(0, rl::mo_relaxed);
        exiting(RL_INFO).store(false, rl::mo_relaxed);
        application(RL_INFO) = 1;
    }

    void thread(unsigned index)
    {
        if (index == 0) {
            exiting(RL_INFO).store(true, Order::store);
            while (door(RL_INFO).load(Order::load))
                rl::yield(1, RL_INFO);
            application(RL_INFO) = 0;
            return;
        }
        unsigned uses = door(RL_INFO).load(Order::load);
        while (!door(RL_INFO).compare_exchange_weak(uses, uses + 1, Order::change)) {
        }
        if (!exiting(RL_INFO).load(Order::load))
            RL_ASSERT(application(RL_INFO) == 1);
        door(RL_INFO).fetch_sub(1, Order::change);
    }
};

// The wait of an atomic member: it sleeps while the value stands, and the look and the falling asleep are
// one.
class Futex
{
public:
    void wait(rl::atomic<unsigned>& value, unsigned old)
    {
        m_mutex.lock(RL_INFO);
        while (value(RL_INFO).load(rl::mo_relaxed) == old)
            m_woken.wait(m_mutex, RL_INFO);
        m_mutex.unlock(RL_INFO);
    }

    void wake()
    {
        m_mutex.lock(RL_INFO);
        m_woken.notify_all(RL_INFO);
        m_mutex.unlock(RL_INFO);
    }

private:
    rl::mutex m_mutex;
    rl::condition_variable_any m_woken;
};

// CWorkBell: the worker reads the number of rings first and looks for work then. The other way round it may
// sleep for ever beside work that waits.
template <bool RingsFirst>
struct Bell : rl::test_suite<Bell<RingsFirst>, 2>
{
    rl::atomic<unsigned> rings;
    rl::atomic<int> work;
    Futex futex;

    void before()
    {
        rings(RL_INFO).store(0, rl::mo_relaxed);
        work(RL_INFO).store(0, rl::mo_relaxed);
    }

    void thread(unsigned index)
    {
        if (index == 0) {
            work(RL_INFO).store(1, rl::mo_seq_cst);
            rings(RL_INFO).fetch_add(1, rl::mo_seq_cst);
            futex.wake();
            return;
        }
        for (;;) {
            unsigned seen = RingsFirst ? rings(RL_INFO).load(rl::mo_seq_cst) : 0;
            if (work(RL_INFO).load(rl::mo_seq_cst))
                return;
            if (!RingsFirst)
                seen = rings(RL_INFO).load(rl::mo_seq_cst);
            futex.wait(rings, seen);
        }
    }
};

// The shut-down flag, which is no strict one: StoreShared, then a ring; LoadShared by a worker that has read
// the rings. What the thread that ends the object wrote before is seen by the worker, too.
template <typename Order>
struct Shutdown : rl::test_suite<Shutdown<Order>, 2>
{
    rl::atomic<unsigned> rings;
    rl::atomic<bool> goingToShutDown;
    rl::var<int> written;
    Futex futex;

    void before()
    {
        rings(RL_INFO).store(0, rl::mo_relaxed);
        goingToShutDown(RL_INFO).store(false, rl::mo_relaxed);
        written(RL_INFO) = 0;
    }

    void thread(unsigned index)
    {
        if (index == 0) {
            written(RL_INFO) = 1;
            goingToShutDown(RL_INFO).store(true, Order::store);
            rings(RL_INFO).fetch_add(1, Order::change);
            futex.wake();
            return;
        }
        for (;;) {
            const unsigned seen = rings(RL_INFO).load(Order::load);
            if (goingToShutDown(RL_INFO).load(Order::load)) {
                RL_ASSERT(written(RL_INFO) == 1);
                return;
            }
            futex.wait(rings, seen);
        }
    }
};

// The simulated pad's sample thread plays without its lock until its attention is asked for, under the lock.
template <bool UnderLock>
struct Attention : rl::test_suite<Attention<UnderLock>, 2>
{
    rl::mutex mutex;
    rl::atomic<bool> attention;
    rl::var<int> pending;

    void before()
    {
        attention(RL_INFO).store(false, rl::mo_relaxed);
        pending(RL_INFO) = 0;
    }

    void thread(unsigned index)
    {
        if (index == 0) {
            mutex.lock(RL_INFO);
            pending(RL_INFO) = 1;
            attention(RL_INFO).store(true, rl::mo_release);
            mutex.unlock(RL_INFO);
            return;
        }
        for (;;) {
            if (UnderLock)
                mutex.lock(RL_INFO);
            attention(RL_INFO).store(false, rl::mo_relaxed);
            const bool isPending = pending(RL_INFO) == 1;
            if (UnderLock)
                mutex.unlock(RL_INFO);
            if (isPending)
                return;
            while (!attention(RL_INFO).load(rl::mo_acquire))
                rl::yield(1, RL_INFO);
        }
    }
};

template <typename Protocol>
rl::test_result_e resultOf()
{
    struct Silence : std::streambuf
    {
        int overflow(int character) override { return character; }
    } silence;
    std::ostream nowhere(&silence);
    rl::test_params parameters;
    parameters.output_stream = &nowhere;
    parameters.progress_stream = &nowhere;
    parameters.search_type = rl::fair_full_search_scheduler_type;
    rl::simulate<Protocol>(parameters);
    std::printf("%s after %lu histories\n", rl::test_result_str(parameters.test_result),
                static_cast<unsigned long>(parameters.stop_iteration));
    return parameters.test_result;
}

// Breaks how it must, and not because the checker gave up on it.
template <rl::test_result_e Break, typename AsItIs, typename... Weakened>
bool holdsAndNothingLess()
{
    return resultOf<AsItIs>() == rl::test_result_success && ((resultOf<Weakened>() == Break) && ...);
}

bool check(const char* protocol)
{
    if (std::strcmp(protocol, "door") == 0)
        return holdsAndNothingLess<rl::test_result_data_race, Door<Strict>, Door<Relaxed>>();
    if (std::strcmp(protocol, "exit") == 0)
        return holdsAndNothingLess<rl::test_result_data_race, Exit<Strict>, Exit<AcquireRelease>,
                                   Exit<Relaxed>>();
    if (std::strcmp(protocol, "bell") == 0)
        return holdsAndNothingLess<rl::test_result_deadlock, Bell<true>, Bell<false>>();
    if (std::strcmp(protocol, "shutdown") == 0)
        return holdsAndNothingLess<rl::test_result_data_race, Shutdown<AcquireRelease>, Shutdown<Relaxed>>();
    if (std::strcmp(protocol, "attention") == 0)
        return holdsAndNothingLess<rl::test_result_data_race, Attention<true>, Attention<false>>();
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    return argc == 2 && check(argv[1]) ? 0 : 1;
}
