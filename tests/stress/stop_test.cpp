// The end of a pad: what the driver, the callbacks and other threads of the host find until it is over.

#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>

#include <dlfcn.h>
#include <pthread.h>

#include "eager_test.h"
#include "hostile_host.h"
#include "qt_threads.h"

namespace scribera::test {
namespace {

using PenCall = void (*)(int, int, int, int);
using FingerprintCall = void (*)(unsigned char*, int, int);

// What SCRDAPI_UnInitial does, on the thread that stops the pad.
std::function<void(PenCall, FingerprintCall)> insideStop;

// What a host finds at one moment.
struct Found
{
    bool object = false;
    int points = 0;
    bool started = false;
    int stopped = 99;
    int padId = 99;
};

class Stop : public EagerTest
{
public: // for callbacks, which are plain functions
    using PadTest::model;
    using PadTest::pad;
    Found look();
    static void play(PenCall pen, const std::vector<ScrSimSample>& samples);
    PenCall m_pen = nullptr;

protected:
    void SetUp() override
    {
        EagerTest::SetUp();
        used = this;
        told = 0;
        onPoint = nullptr;
        insideStop = [](PenCall, FingerprintCall) {};
    }

    void TearDown() override
    {
        onPoint = nullptr; // what a test that failed has left refers to what is gone
        insideStop = [](PenCall, FingerprintCall) {};
        if (m_driver)
            dlclose(m_driver);
        EagerTest::TearDown();
    }

    // A pad whose driver is quiet. Its callback counts, and then does what the test says.
    bool open()
    {
        m_driver = dlopen(driverFile, RTLD_NOW | RTLD_LOCAL);
        auto* const keepQuiet = reinterpret_cast<void (*)(void (*)(PenCall, FingerprintCall))>(
            dlsym(m_driver, "Eager_KeepQuiet"));
        auto* const penCallback = reinterpret_cast<PenCall (*)()>(dlsym(m_driver, "Eager_PenCallback"));
        keepQuiet([](PenCall pen, FingerprintCall fingerprint) { insideStop(pen, fingerprint); });
        if (!api().InitialDevice(type(), pad().parent(), 0, 0, 400, 200))
            return false;
        processEvents();
        m_pen = penCallback();
        return api().RealTimeSignatureDataCallback(type(), [](unsigned long, long) {
            ++told;
            if (onPoint)
                onPoint();
        });
    }

    void key()
    {
        play(m_pen, {sampleAt(model(), {0.5, 0.5}, ConfirmKeyDown), sampleAt(model(), {0.5, 0.5}, PenUp)});
    }

    // Only the library holds the driver from here on.
    void letDriverGo()
    {
        dlclose(m_driver);
        m_driver = nullptr;
    }

    static inline Stop* used;
    static inline std::atomic<int> told; // points of which the host was told
    static inline std::function<void()> onPoint;

    void* m_driver = nullptr;
};

void Stop::play(PenCall pen, const std::vector<ScrSimSample>& samples)
{
    for (const ScrSimSample& sample : samples)
        pen(sample.x, sample.y, sample.pressure, sample.penStatus);
}

Found Stop::look()
{
    Found found;
    char text[32];
    found.object = std::atomic_ref(Library::instance().signWidget).load() != nullptr;
    found.points = api().GetTotalPacketsNumber(type());
    found.started = api().InitialDevice(type(), nullptr, 0, 0, 50, 50);
    found.stopped = api().UnInitialDevice(type());
    found.padId = api().GetHWPadID(type(), text, sizeof text);
    return found;
}

void expectLivePad(const Found& found, int points)
{
    EXPECT_TRUE(found.object);
    EXPECT_EQ(found.points, points);
    EXPECT_TRUE(found.started);
    EXPECT_EQ(found.stopped, -1);
    EXPECT_EQ(found.padId, -1) << "the driver is being stopped and cannot be asked";
}

TEST_P(Stop, SamplesInsideItAreTakenLikeAllOthers)
{
    for (const bool byWindow : {false, true}) {
        if (byWindow && !padCase().isWidget())
            continue;
        SCOPED_TRACE(byWindow ? "window closed" : "UnInitialDevice");
        ASSERT_TRUE(open());
        told = 0;
        removeLogs();
        Redraw redraw(model(), 400, 200);
        int inside = 0;
        onPoint = [&] { expectLivePad(look(), ++inside); };
        insideStop = [&](PenCall pen, FingerprintCall) {
            const std::vector<ScrSimSample> samples = wave(model(), 6);
            play(pen, samples); // on the thread that stops
            std::thread([&] { play(pen, samples); }).join();
            redraw.feed(samples);
            redraw.feed(samples);
            EXPECT_TRUE(holdsPoints(pad(), redraw));
            EXPECT_TRUE(holdsCanvas(pad(), redraw));
        };
        setLogging(true);
        if (byWindow)
            pad().closeParent();
        else
            EXPECT_EQ(api().UnInitialDevice(type()), 0);
        setLogging(false);
        EXPECT_EQ(told, 16);
        EXPECT_EQ(inside, 16);
        const std::vector<std::string> lines = textsOf(mainLog(), method(model().handler));
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "leave !"), 16);
        expectNothingLeft();
        onPoint = nullptr;
    }
}

TEST_P(Stop, EntryPointsCountAsMissingInsideIt)
{
    ASSERT_TRUE(open());
    play(m_pen, wave(model(), 6));
    insideStop = [this](PenCall, FingerprintCall) {
        const auto ask = [this] {
            char text[32];
            EXPECT_EQ(api().GetHWPadID(type(), text, sizeof text), -1);
            EXPECT_EQ(api().GetHWVersionID(type(), text, sizeof text), -1);
            EXPECT_EQ(api().SetPenStyle(type(), false), -1);
            if (model().hasScreen) {
                EXPECT_EQ(api().GetHWPenID(type(), text, sizeof text), -1);
                EXPECT_EQ(api().DisplayHWVersion(type(), true), -1);
                EXPECT_EQ(api().OpenLCD(type(), false), -1);
            }
        };
        ask();
        std::thread(ask).join();
        EXPECT_EQ(pad().points(), 8);
        const QImage before = pad().canvas();
        EXPECT_EQ(api().Clear(type()), -1);
        EXPECT_EQ(pad().points(), -8);
        play(m_pen, stroke(model(), {{0.5, 0.5}}));
        EXPECT_EQ(pad().canvas(), before);
    };
    close();
}

TEST_P(Stop, CallbackUnderWayFindsItsPadUntilTheDriverHasStopped)
{
    ASSERT_TRUE(open());
    std::atomic<bool> entered = false;
    std::atomic<bool> stopping = false;
    onPoint = [&] {
        if (told > 1)
            return;
        entered = true;
        while (!stopping)
            std::this_thread::yield();
        expectLivePad(look(), 1);
    };
    std::thread driver([this] { play(m_pen, wave(model(), 4)); });
    ASSERT_TRUE(waitUntil([&] { return entered.load(); }));
    insideStop = [&](PenCall, FingerprintCall) {
        stopping = true;
        driver.join();
        EXPECT_EQ(pad().points(), 6);
    };
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    EXPECT_EQ(told, 6);
    expectNothingLeft();
}

TEST_P(Stop, StatusCallbackUnderWayFindsItsPad)
{
    ASSERT_TRUE(open());
    play(m_pen, wave(model(), 4));
    static std::atomic<bool> entered;
    static Found found;
    entered = false;
    ASSERT_EQ(api().SignatureStatusCallback(type(),
                                            [](int) {
                                                entered = true;
                                                std::this_thread::sleep_for(std::chrono::milliseconds(50));
                                                found = used->look();
                                            }),
              0);
    key();
    ASSERT_TRUE(waitUntil([] { return entered.load(); }));
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    found.padId = -1; // the driver had not been told yet
    expectLivePad(found, 6);
    expectNothingLeft();
}

// A callback of a driver that does not wait for it.
class LateCallback : public Stop
{
protected:
    // Stops a pad while a callback is inside. The callback goes on when the pad is closed.
    void stopWhile(const std::function<void()>& whileClosed)
    {
        std::atomic<bool> entered = false;
        onPoint = [&] {
            entered = true;
            while (pad().points() != -8)
                std::this_thread::yield();
            whileClosed();
        };
        std::thread driver([this] { play(m_pen, {sampleAt(model(), {0.5, 0.5}, PenDown)}); });
        ASSERT_TRUE(waitUntil([&] { return entered.load(); }));
        EXPECT_EQ(api().UnInitialDevice(type()), 0);
        released = true;
        driver.join();
        onPoint = nullptr;
    }

    std::atomic<bool> released = false;
};

TEST_P(LateCallback, IsWaitedForBeforeTheDriverGoes)
{
    ASSERT_TRUE(open());
    letDriverGo();
    Found found;
    bool mapped = false;
    stopWhile([&] {
        found = look();
        mapped = ProcessState::now().maps("libeager_driver.so");
    });
    EXPECT_TRUE(mapped);
    EXPECT_TRUE(found.object);
    EXPECT_EQ(found.points, -8);
    EXPECT_FALSE(found.started);
    EXPECT_EQ(found.stopped, -1);
    EXPECT_EQ(found.padId, -1);
    EXPECT_FALSE(ProcessState::now().maps("libeager_driver.so"));
    expectNothingLeft();
}

TEST_P(LateCallback, KeepsOtherThreadsFromStartingAndStopping)
{
    ASSERT_TRUE(open());
    std::atomic<int> asking = 0;
    std::atomic<bool> ended = false;
    std::atomic<bool> closed = false;
    bool stoppedTooEarly = false;
    bool startedTooEarly = false;
    int stopped = 99;
    bool started = false;
    std::thread stopper([&] {
        while (!closed)
            std::this_thread::yield();
        ++asking;
        stopped = api().UnInitialDevice(type());
        stoppedTooEarly = !ended;
    });
    std::thread starter([&] {
        while (!closed)
            std::this_thread::yield();
        ++asking;
        started = api().InitialDevice(type(), nullptr, 0, 0, 50, 50);
        startedTooEarly = !ended;
    });
    stopWhile([&] {
        closed = true;
        while (asking < 2)
            std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // they have every chance to be wrong
        ended = true;
    });
    starter.join();
    stopper.join();
    EXPECT_TRUE(started);
    EXPECT_FALSE(startedTooEarly);
    EXPECT_EQ(stopped, 0);
    EXPECT_FALSE(stoppedTooEarly);
    EXPECT_NE(Library::instance().signWidget, nullptr);
    EXPECT_EQ(Library::instance().useSignObj, 1);
    close();
}

SCRIBERA_INSTANTIATE_ALL(LateCallback);

TEST_P(Stop, OnTwoThreadsAtOnceStopsOnce)
{
    for (int round = 0; round < 20; ++round) {
        int stops = 0;
        ASSERT_TRUE(open());
        insideStop = [&](PenCall, FingerprintCall) { ++stops; };
        std::atomic<int> ready = 0;
        const auto stop = [&] {
            ++ready;
            while (ready < 2)
                std::this_thread::yield();
            EXPECT_EQ(api().UnInitialDevice(type()), 0);
            EXPECT_EQ(std::atomic_ref(Library::instance().signWidget).load(), nullptr);
        };
        std::thread other(stop);
        stop();
        other.join();
        EXPECT_EQ(stops, 1);
        expectNothingLeft();
    }
}

TEST_P(Stop, StartsOnTwoThreadsAtOnceMakeOnePad)
{
    ASSERT_TRUE(open()); // makes the driver quiet
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    processEvents();
    for (int round = 0; round < 20; ++round) {
        std::atomic<int> ready = 0;
        const auto start = [&] {
            ++ready;
            while (ready < 2)
                std::this_thread::yield();
            EXPECT_TRUE(api().InitialDevice(type(), nullptr, 0, 0, 50, 50));
        };
        std::thread other(start);
        start();
        other.join();
        int stops = 0;
        insideStop = [&](PenCall, FingerprintCall) { ++stops; };
        EXPECT_EQ(api().UnInitialDevice(type()), 0);
        EXPECT_EQ(stops, 1);
        expectNothingLeft();
    }
}

TEST_P(Stop, ComesToItsEndThoughEverybodyKeepsAsking)
{
    ASSERT_TRUE(open());
    play(m_pen, wave(model(), 30));
    std::atomic<bool> going = true;
    std::atomic<int> rounds = 0;
    std::vector<std::thread> hosts;
    for (unsigned i = 0; i < 16; ++i) {
        hosts.emplace_back([&, i] {
            HostileHost host(padCase(), Caller::Bystander, i, nullptr);
            host.round([](const std::function<void()>& call) { call(); });
            ++rounds;
            while (going) {
                if (i % 8 == 0)
                    host.round([](const std::function<void()>& call) { call(); });
                else
                    api().GetTotalPacketsNumber(type()); // the shortest: many at a time
            }
        });
    }
    EXPECT_TRUE(waitUntil([&] { return rounds == 16; }));
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    going = false;
    for (std::thread& host : hosts)
        host.join();
    endQtsOwnThreads();
    expectNothingLeft();
}

// ---- callbacks that leave in another way than by returning

class EndedThread : public Stop
{
protected:
    // The pen is taken as ever, whatever became of the keys.
    void expectThePenGoesOn()
    {
        EXPECT_EQ(api().Clear(type()), 0);
        EXPECT_TRUE(waitUntil([&] {
            play(m_pen, wave(model(), 4));
            return pad().points() > 0;
        })) << "a key action waits for ever";
        EXPECT_EQ(api().Clear(type()), 0);
        play(m_pen, wave(model(), 4));
        EXPECT_EQ(pad().points(), 6);
    }

    void expectThreeCalls()
    {
        for (int i = 1; i <= 3; ++i) {
            key();
            EXPECT_TRUE(waitUntil([i] { return calls == i; }));
            expectThePenGoesOn();
        }
    }

    static inline std::atomic<int> calls;
};

TEST_P(EndedThread, StatusCallbackMayEndItsThread)
{
    for (const bool byCancellation : {false, true}) {
        SCOPED_TRACE(byCancellation);
        ASSERT_TRUE(open());
        calls = 0;
        setLogging(true);
        ASSERT_EQ(api().SignatureStatusCallback(type(),
                                                byCancellation ? [](int) {
                                                    ++calls;
                                                    pthread_cancel(pthread_self());
                                                    pthread_testcancel();
                                                }
                                                               : [](int) {
                                                    ++calls;
                                                    pthread_exit(nullptr);
                                                }),
                  0);
        key();
        ASSERT_TRUE(waitUntil([] { return calls == 1; }));
        expectThePenGoesOn();
        key(); // nobody is left to act on it
        expectThePenGoesOn();
        EXPECT_EQ(calls, 1);
        setLogging(false);
        close();
    }
}

TEST_P(EndedThread, CancellationThatComesInALogLineWaits)
{
    ASSERT_TRUE(open());
    calls = 0;
    ASSERT_EQ(api().SignatureStatusCallback(type(),
                                            [](int) {
                                                if (++calls == 1)
                                                    pthread_cancel(pthread_self());
                                            }),
              0);
    setLogging(true);
    expectThreeCalls();
    setLogging(false);
    close();
}

TEST_P(EndedThread, StatusCallbackThatThrowsIsCalledAgain)
{
    ASSERT_TRUE(open());
    calls = 0;
    ASSERT_EQ(api().SignatureStatusCallback(type(),
                                            [](int) {
                                                ++calls;
                                                throw std::runtime_error("not allowed");
                                            }),
              0);
    expectThreeCalls();
    close();
}

TEST_P(EndedThread, RealTimeCallbackMayEndTheDriversThread)
{
    ASSERT_TRUE(open());
    for (const int at : {1, 3, 6}) { // pen-down, move, up
        SCOPED_TRACE(at);
        told = 0;
        onPoint = [at] {
            if (told == at)
                pthread_exit(nullptr);
        };
        pthread_t driver;
        ASSERT_EQ(pthread_create(
                      &driver, nullptr,
                      [](void*) -> void* {
                          play(used->m_pen, wave(used->model(), 4));
                          return nullptr;
                      },
                      nullptr),
                  0);
        ASSERT_EQ(pthread_join(driver, nullptr), 0);
        EXPECT_EQ(told, at);
        onPoint = nullptr;
        expectThePenGoesOn();
    }
    close();
}

TEST_P(EndedThread, CancelledHostThreadLeavesBetweenItsCalls)
{
    ASSERT_TRUE(open());
    play(m_pen, wave(model(), 4));
    calls = 0;
    setLogging(true);
    pthread_t host;
    ASSERT_EQ(pthread_create(
                  &host, nullptr,
                  [](void*) -> void* {
                      for (;;) {
                          for (const FileType& file : fileTypes)
                              EXPECT_EQ(used->pad().save(file.id, std::string("cancelled.") + file.suffix),
                                        0);
                          ++calls;
                          pthread_testcancel();
                      }
                  },
                  nullptr),
              0);
    EXPECT_TRUE(waitUntil([] { return calls > 2; }));
    ASSERT_EQ(pthread_cancel(host), 0);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(host, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    setLogging(false);
    expectThePenGoesOn();
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    endQtsOwnThreads();
    expectNothingLeft();
}

SCRIBERA_INSTANTIATE_ALL(Stop);
SCRIBERA_INSTANTIATE_ALL(EndedThread);

} // namespace
} // namespace scribera::test
