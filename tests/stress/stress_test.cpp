// Everything at once: pen, keys and fingerprints at full speed, a host that calls at random, callbacks that
// call back, painting, resizing, and the pad closed and opened again and again. Afterwards it is an ordinary
// pad, and nothing is left behind.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <random>
#include <thread>

#include "hostile_host.h"
#include "pen.h"
#include "qt_threads.h"

namespace scribera::test {
namespace {

unsigned testSeed()
{
    const char* const seed = std::getenv("SCRIBERA_TEST_SEED");
    return seed ? static_cast<unsigned>(std::strtoul(seed, nullptr, 10)) : std::random_device()();
}

std::string threadNames()
{
    std::string names;
    for (const std::string& thread : ProcessState::now().threads)
        names += fileContent("/proc/self/task/" + thread + "/comm");
    return names;
}

// The driver's side. Its samples lie anywhere, also outside the pad, and their statuses are not all known.
class Person
{
public:
    Person(const PadModel& model, Simulator& sim, unsigned seed) : m_model(model), m_sim(sim), m_random(seed)
    {
        writeRecording(model, "stress.txt", 400);
        m_print.resize(208 * 288);
        for (unsigned char& pixel : m_print)
            pixel = static_cast<unsigned char>(m_random());
    }

    void run(const std::atomic<bool>& going)
    {
        while (going) {
            scribble();
            if (m_model.hasFingerprint)
                touchSensor();
            switch (below(6)) {
            case 0:
                m_sim.PressKey(below(2));
                break;
            case 1: // fails while the pad is closed
                m_sim.Play("stress.txt", 0, 1, below(3) - 1);
                std::this_thread::sleep_for(std::chrono::milliseconds(below(20)));
                m_sim.StopPlaying();
                break;
            default:
                break;
            }
            m_sim.WaitIdle(60000); // what is queued stays short
        }
        m_sim.StopPlaying();
        m_sim.WaitIdle(60000);
    }

private:
    int below(int count) { return static_cast<int>(m_random() % static_cast<unsigned>(count)); }
    int anywhere(int origin, int size)
    {
        return below(20) == 0 ? static_cast<int>(m_random()) : origin - 50 + below(size + 100);
    }

    void scribble()
    {
        std::vector<ScrSimSample> samples;
        for (int i = 0; i < 200; ++i) {
            static constexpr int statuses[] = {PenDown, PenDown,       PenDown,        PenDown, PenUp,
                                               PenUp,   CancelKeyDown, ConfirmKeyDown, 5,       -1};
            const int status =
                below(20) == 0 ? statuses[below(static_cast<int>(std::size(statuses)))] : PenMove;
            samples.push_back({anywhere(m_model.originX, m_model.areaWidth),
                               anywhere(m_model.originY, m_model.areaHeight),
                               anywhere(0, m_model.maxPressure), status});
        }
        m_sim.SendSamples(samples.data(), static_cast<int>(samples.size()));
    }

    void touchSensor()
    {
        for (int i = 0; i < 5; ++i) {
            const int score = below(10) == 0 ? static_cast<int>(m_random()) : ++m_score % 1000;
            const bool null = below(10) == 0;
            m_sim.SendFingerprint(null ? nullptr : m_print.data(), static_cast<int>(m_print.size()), score);
        }
    }

    const PadModel& m_model;
    Simulator& m_sim;
    std::mt19937 m_random;
    std::vector<unsigned char> m_print;
    int m_score = 0;
};

// The callbacks of the one pad of this process. Each thread of the library has a host of its own, since they
// run at the same time.
struct Callbacks
{
    std::unique_ptr<HostileHost> status;
    std::unique_ptr<HostileHost> realTime;
    std::atomic<int> statusCount = 0;
    std::atomic<int> pointCount = 0;
};
Callbacks callbacks;

void onStatus(int status)
{
    EXPECT_TRUE(status == 0 || status == 1) << status;
    ++callbacks.statusCount;
    callbacks.status->one();
}

void onPoint(unsigned long position, long pen)
{
    EXPECT_EQ(position >> 32, 0u);
    EXPECT_TRUE((pen >> 16) == 0 || (pen >> 16) == 1) << pen;
    if (++callbacks.pointCount % 64 == 0)
        callbacks.realTime->one();
}

class Stress : public PadTest
{
protected:
    bool open()
    {
        return api().InitialDevice(type(), pad().parent(), 0, 0, Width, Height) &&
               api().SignatureStatusCallback(type(), onStatus) == 0 &&
               api().RealTimeSignatureDataCallback(type(), onPoint);
    }

    void close()
    {
        EXPECT_EQ(api().UnInitialDevice(type()), 0);
        processEvents();
        expectNoObject();
    }

    // One ordinary session, which opens what the process keeps open from then on.
    void warmUp()
    {
        if (padCase().isWidget()) {
            pad().makeParent(true);
            m_other = std::make_unique<QWidget>();
        }
        ASSERT_TRUE(open());
        sim().open();
        sim().send(wave(model(), 10));
        for (const int imageType : {ImageBmp, ImageJpeg, ImagePng, ImagePdf, ImageSvg})
            pad().save(imageType, "warm-up.png");
        close();
        endQtsOwnThreads();
    }

    void paint(int round)
    {
        if (!padCase().isWidget())
            return;
        QWidget* const widget = pad().signWidget();
        if (!widget)
            return;
        switch (round % 4) {
        case 0:
            widget->resize(Width - round % 100, Height - round % 50);
            break;
        case 1:
            widget->repaint();
            break;
        case 2:
            if (model().hasFingerprint && round % 40 == 2)
                api().SetDisplayedFPImageAt(type(), pad().parent(), 0, 0, round % 60, 5, 60, 80);
            break;
        default:
            if (model().hasFingerprint && round % 40 == 3)
                api().SetDisplayedFPImageAt(type(), m_other.get(), 0, 0, 2, 2, 50, 20);
            break;
        }
    }

    // Takes taps as long as a key action is still pending, which keeps the pen off.
    void settle()
    {
        ASSERT_EQ(api().SignatureStatusCallback(type(), nullptr), 0);
        ASSERT_TRUE(api().RealTimeSignatureDataCallback(type(), [](unsigned long, long) {}));
        sim().waitIdle();
        ASSERT_EQ(api().Clear(type()), 0);
        ASSERT_TRUE(waitUntil([&] {
            sim().send(stroke(model(), {{0.5, 0.5}}));
            return pad().points() > 0;
        }));
        ASSERT_EQ(api().Clear(type()), 0);
        ASSERT_EQ(api().SetPenWidth(type(), 3), 0);
        ASSERT_EQ(api().SetPenColor(type(), 0, 0, 0), 0);
        ASSERT_EQ(api().SetPenStyle(type(), true), 0);
        ASSERT_EQ(api().SetSaveCenterImageClip(type(), false, 0, 0), 0);
        if (padCase().isWidget() && pad().signWidget())
            pad().signWidget()->resize(Width, Height);
        processEvents();
    }

    static constexpr int Width = 300;
    static constexpr int Height = 150;
    std::unique_ptr<QWidget> m_other; // the print's own window
};

TEST_P(Stress, EverythingAtOnceLeavesAnOrdinaryPad)
{
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString&) {}); // about every argument
    const unsigned seed = testSeed();
    SCOPED_TRACE("SCRIBERA_TEST_SEED=" + std::to_string(seed));
    const std::set<std::string> threads = idleThreads();
    ASSERT_NO_FATAL_FAILURE(warmUp());
    const ProcessState before = ProcessState::now();

    QWidget* const parent = pad().parent();
    HostileHost host(padCase(), Caller::HostThread, seed, parent);
    callbacks.status = std::make_unique<HostileHost>(padCase(), Caller::Callback, seed + 1, parent);
    callbacks.realTime = std::make_unique<HostileHost>(padCase(), Caller::Callback, seed + 2, parent);
    for (HostileHost* each : {&host, callbacks.status.get(), callbacks.realTime.get()})
        each->setCallbacks(onStatus, onPoint);

    ASSERT_TRUE(open());
    std::atomic<bool> going = true;
    std::atomic<int> rounds = 0;
    std::mutex cycle; // opening and closing overlap with no other call of the host
    Person person(model(), sim(), seed + 3);
    std::thread driver([&] { person.run(going); });
    std::thread caller([&] {
        while (going) {
            // A few lines of log now and then, from all threads.
            host.round([&](const std::function<void()>& call) {
                const std::lock_guard lock(cycle);
                const bool logged = host.calls() % 400 == 0;
                setLogging(logged);
                call();
                setLogging(false);
            });
            ++rounds;
        }
    });

    const auto end = std::chrono::steady_clock::now() + testDuration();
    int cycles = 0;
    for (int round = 1; std::chrono::steady_clock::now() < end || rounds < 2 || cycles < 3; ++round) {
        paint(round);
        processEvents();
        if (round % 50 == 0) {
            const std::lock_guard lock(cycle);
            close();
            ASSERT_TRUE(open());
            ++cycles;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    going = false;
    driver.join();
    caller.join();
    EXPECT_GT(callbacks.pointCount, 0);
    EXPECT_GT(callbacks.statusCount, 0);

    // The pad is an ordinary one again.
    ASSERT_NO_FATAL_FAILURE(settle());
    Redraw redraw(model(), Width, Height);
    sim().send(wave(model(), 40));
    redraw.feed(wave(model(), 40));
    EXPECT_TRUE(holdsPoints(pad(), redraw));
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    close();
    // Only now does nobody call any more.
    RecordProperty("calls", static_cast<int>(host.calls()));
    RecordProperty("cycles", cycles);
    std::printf("%zu calls of the host, %zu of the callbacks, %d points, %d keys, opened %d times\n",
                host.calls(), callbacks.status->calls() + callbacks.realTime->calls(),
                callbacks.pointCount.load(), callbacks.statusCount.load(), cycles + 1);

    endQtsOwnThreads();
    EXPECT_TRUE(threadsAre(threads)) << threadNames();
    EXPECT_EQ(ProcessState::now().files, before.files);
    mainLog(); // every line is whole
    inThreadLog();
}

SCRIBERA_INSTANTIATE_ALL(Stress);

} // namespace
} // namespace scribera::test
