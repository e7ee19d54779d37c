// The stored points, their times, and the notice of each one as it is stored.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <mutex>
#include <regex>
#include <thread>
#include <utility>

#include "pen.h"

namespace scribera::test {
namespace {

long long tickNow()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

class Points : public OpenInkTest
{
protected:
    std::vector<StreamRecord> records() { return recordsOf(takeImage(pad(), ImageInk).bytes()); }

    // Asking for it is refused, and the record is left as it was.
    void expectNoPoint(int index)
    {
        Packet packet;
        std::memset(&packet, 0x77, sizeof packet);
        packet.index = index;
        const Packet untouched = packet;
        EXPECT_EQ(api().getPackets(type(), &packet), -1) << index;
        EXPECT_EQ(std::memcmp(&packet, &untouched, sizeof packet), 0) << index;
        EXPECT_EQ(api().GetInkPointTime(type(), index), nullptr) << index;
    }
};

TEST_P(Points, NoneBeforeTheFirstTouch)
{
    EXPECT_EQ(pad().points(), -8);
    expectNoPoint(0);
}

TEST_P(Points, StrokeEndsWithACopyOfItsLastPoint)
{
    const int x = model().originX;
    const int y = model().originY;
    pad().draw({{x + 1, y + 2, 3, PenDown},
                {x + 4, y + 5, 6, PenMove},
                {x + 7, y + 8, 9, PenMove},
                {x + 100, y + 100, 100, PenUp}});
    const auto point = [&](int dx, int dy, int p, int status) {
        return Ink{static_cast<std::uint16_t>(x + dx), static_cast<std::int16_t>(y + dy),
                   static_cast<std::int16_t>(p), static_cast<std::uint8_t>(status)};
    };
    EXPECT_EQ(storedPoints(pad()),
              (std::vector<Ink>{point(1, 2, 3, 0), point(4, 5, 6, 0), point(7, 8, 9, 0), point(7, 8, 9, 1)}));
    EXPECT_EQ(pad().points(), 4);
}

TEST_P(Points, TapStoresTwo)
{
    pad().draw({{700, 800, 90, PenDown}, {1, 2, 3, PenUp}});
    EXPECT_EQ(storedPoints(pad()), (std::vector<Ink>{{700, 800, 90, 0}, {700, 800, 90, 1}}));
}

TEST_P(Points, IndexOutsideIsRefusedAndTheRecordUntouched)
{
    pad().draw(wave(model(), 5));
    for (const int index : {7, 8, -1, 1000000, INT32_MIN, INT32_MAX})
        expectNoPoint(index);
    Packet last{};
    last.index = 6;
    EXPECT_EQ(api().getPackets(type(), &last), 0);
    EXPECT_EQ(last.index, 6);
    EXPECT_EQ(last.status, 1);
}

TEST_P(Points, LowHalvesOfTheSampleAreStored)
{
    const std::vector<ScrSimSample> samples = {{70000, 40000, 100000, PenDown},
                                               {-1, -2, -3, PenMove},
                                               {INT32_MAX, INT32_MIN, INT32_MIN, PenMove},
                                               {65535, 32768, 0, PenMove},
                                               {0, 0, 0, PenUp}};
    pad().draw(samples);
    EXPECT_EQ(storedPoints(pad()), (std::vector<Ink>{{4464, -25536, -31072, 0},
                                                     {65535, -2, -3, 0},
                                                     {65535, 0, 0, 0},
                                                     {65535, -32768, 0, 0},
                                                     {65535, -32768, 0, 1}}));
}

TEST_P(Points, TimesAreThoseOfStoring)
{
    long long lastTick = 0;
    for (int i = 0; i < 3; ++i) {
        const long long tickBefore = tickNow();
        const time_t before = time(nullptr);
        pad().draw(stroke(model(), {{0.2, 0.2}, {0.3, 0.3}}));
        const time_t after = time(nullptr);
        const long long tickAfter = tickNow();
        const std::vector<StreamRecord> all = records();
        ASSERT_EQ(all.size(), 3u * (static_cast<std::size_t>(i) + 1));
        for (std::size_t k = all.size() - 3; k < all.size(); ++k) {
            EXPECT_GE(all[k].tick, std::max(tickBefore, lastTick));
            EXPECT_LE(all[k].tick, tickAfter);
            EXPECT_GE(all[k].seconds, before);
            EXPECT_LE(all[k].seconds, after);
            lastTick = all[k].tick;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(15));
    }
}

TEST_P(Points, EndOfAStrokeHasItsOwnTime)
{
    pad().draw({sampleAt(model(), {0.2, 0.2}, PenDown)});
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    pad().draw({sampleAt(model(), {0.2, 0.2}, PenUp)});
    const std::vector<StreamRecord> all = records();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_GE(all[1].tick - all[0].tick, 29);
}

TEST_P(Points, TimeTextIsLocalTimeWithTheMillisecondsOfTheTick)
{
    for (int i = 0; i < 4; ++i) {
        pad().draw({sampleAt(model(), {0.2, 0.2}, PenDown)});
        std::this_thread::sleep_for(std::chrono::milliseconds(7));
    }
    const std::vector<StreamRecord> all = records();
    for (const auto& [zone, offset] : {std::pair("UTC0", 0), std::pair("ABC-5:30", 19800),
                                       std::pair("XYZ+11", -39600), std::pair("UTC0", 0)}) {
        setenv("TZ", zone, 1);
        for (std::size_t i = 0; i < all.size(); ++i) {
            const time_t shifted = all[i].seconds + offset;
            tm parts{};
            gmtime_r(&shifted, &parts);
            const std::string expected = printed("%04d-%02d-%02d %02d:%02d:%02d.%03d", parts.tm_year + 1900,
                                                 parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min,
                                                 parts.tm_sec, static_cast<int>(all[i].tick % 1000));
            EXPECT_EQ(takeTime(pad(), static_cast<int>(i)), expected) << zone;
            EXPECT_EQ(expected.size(), 23u);
        }
    }
}

TEST_P(Points, TimeTextLiesInAHundredClearedBytes)
{
    pad().draw({sampleAt(model(), {0.2, 0.2}, PenDown)});
    char* text = api().GetInkPointTime(type(), 0);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(std::strlen(text), 23u);
    for (int i = 23; i < 100; ++i)
        EXPECT_EQ(text[i], 0) << i;
    char* other = api().GetInkPointTime(type(), 0);
    EXPECT_NE(other, text) << "each text is the host's own";
    api().FreeInkPointTime(type(), text);
    api().FreeInkPointTime(type(), other);
    api().FreeInkPointTime(type(), nullptr);
}

TEST_P(Points, ManySamplesWhileTheHostReadsAndClearsAreNeverTorn)
{
    ASSERT_TRUE(pad().start({.width = 12, .height = 6}));
    constexpr int total = 100000;
    // y and pressure follow from x, so that a point of two samples shows.
    const auto yOf = [](int x) { return (x * 7 + 3) & 0x7fff; };
    const auto pressureOf = [](int x) { return (x * 5 + 1) & 0x3ff; };
    std::vector<ScrSimSample> samples;
    samples.reserve(total);
    for (int i = 0; i < total; ++i) {
        const int x = (i * 11) % 65536;
        samples.push_back({x, yOf(x), pressureOf(x),
                           i % 1000 == 0     ? PenDown
                           : i % 1000 == 999 ? PenUp
                                             : PenMove});
    }
    std::atomic<bool> done{false};
    std::atomic<long long> reads = 0;
    std::atomic<int> clears = 0;
    std::thread waiter([&] {
        // A busy machine may give the host no turn while the pen writes.
        do {
            sim().queue(samples);
            sim().WaitIdle(120000);
        } while (reads <= 1000 || clears <= 3);
        done = true;
    });
    const std::regex timeForm(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})");
    int torn = 0;
    while (!done) {
        for (int i = 0; i < 200 && !done; ++i) {
            const int count = pad().points();
            ASSERT_TRUE(count == -8 || count > 0) << count;
            if (count < 0)
                continue;
            for (const int index : {0, count / 2, count - 1}) {
                Packet packet{};
                packet.index = index;
                ASSERT_EQ(api().getPackets(type(), &packet), 0) << "only this thread clears";
                ++reads;
                if (packet.y != yOf(packet.x) || packet.pressure != pressureOf(packet.x) || packet.status > 1)
                    ++torn;
            }
            if (i % 50 == 0) {
                EXPECT_TRUE(std::regex_match(takeTime(pad(), count - 1), timeForm));
            }
        }
        ASSERT_EQ(api().Clear(type()), 0);
        ++clears;
    }
    waiter.join();
    EXPECT_EQ(torn, 0) << "of " << reads;
}

TEST_P(Points, ReadIndicesStayValidWhileTheListGrows)
{
    ASSERT_TRUE(start({.width = 12, .height = 6}));
    draw(wave(model(), 10));
    const std::vector<Ink> first = storedPoints(pad());
    std::vector<ScrSimSample> samples;
    for (int i = 0; i < 20; ++i) {
        const auto more = wave(model(), 1000);
        samples.insert(samples.end(), more.begin(), more.end());
    }
    sim().queue(samples);
    int last = 0;
    while (last < 12 + 20 * 1002) {
        const int count = pad().points();
        ASSERT_GE(count, last);
        last = count;
        for (std::size_t i = 0; i < first.size(); ++i) {
            Packet packet{};
            packet.index = static_cast<int>(i);
            ASSERT_EQ(api().getPackets(type(), &packet), 0);
            ASSERT_EQ((Ink{packet.x, packet.y, packet.pressure, packet.status}), first[i]);
        }
    }
    sim().waitIdle();
    redraw().feed(samples);
    EXPECT_TRUE(holdsPoints(pad(), redraw()));
}

SCRIBERA_INSTANTIATE_ALL(Points);

// ---------------------------------------------------------------------------------------------- real time

using Call = std::pair<unsigned long, long>;
std::mutex callMutex;
std::vector<Call> calls;
std::atomic<bool> calledOnThisThread{false};
std::thread::id hostThread;

void receive(unsigned long place, long pen)
{
    const std::lock_guard lock(callMutex);
    if (std::this_thread::get_id() == hostThread)
        calledOnThisThread = true;
    calls.emplace_back(place, pen);
}

void receiveNothing(unsigned long, long) {}

std::vector<Call> takeCalls()
{
    const std::lock_guard lock(callMutex);
    return std::exchange(calls, {});
}

Call packed(long long xn, long long yn, int pressure, int flag)
{
    return {
        static_cast<unsigned long>((yn << 16) | xn),
        static_cast<long>((static_cast<unsigned>(flag) << 16) | (static_cast<unsigned>(pressure) & 0xffffu))};
}

class RealTime : public OpenPadTest
{
protected:
    void SetUp() override
    {
        OpenPadTest::SetUp();
        hostThread = std::this_thread::get_id();
    }
    long long normal(long long value, int origin, int range) const
    {
        return std::clamp<long long>(value - origin, 0, range - 1) * 65535 / range;
    }
    Call expected(long long x, long long y, int pressure, int flag) const
    {
        return packed(normal(x, model().originX, model().areaWidth),
                      normal(y, model().originY, model().areaHeight), pressure, flag);
    }
};

TEST_P(RealTime, EveryStoredPointIsSentPacked)
{
    EXPECT_TRUE(api().RealTimeSignatureDataCallback(type(), receive));
    const std::vector<ScrSimSample> samples = wave(model(), 30);
    pad().draw(samples);
    std::vector<Call> wanted;
    for (const ScrSimSample& s : samples) {
        if (s.penStatus != PenUp)
            wanted.push_back(expected(s.x, s.y, s.pressure, 1));
    }
    const ScrSimSample& last = samples[samples.size() - 2];
    wanted.push_back(expected(last.x, last.y, last.pressure, 0));
    EXPECT_EQ(takeCalls(), wanted);
    EXPECT_FALSE(calledOnThisThread) << "the pad's thread calls";
}

TEST_P(RealTime, EndsOfTheAreaGiveTheDocumentedNumbers)
{
    ASSERT_TRUE(api().RealTimeSignatureDataCallback(type(), receive));
    const int right = model().originX + model().areaWidth - 1;
    const int bottom = model().originY + model().areaHeight - 1;
    static const std::map<std::string, Call> documented = {{"K210", packed(65507, 65489, 1, 1)},
                                                           {"K420", packed(65506, 65484, 1, 1)},
                                                           {"K421B", packed(65531, 65529, 1, 1)},
                                                           {"KM730", packed(65532, 65531, 1, 1)},
                                                           {"T580", packed(65532, 65531, 1, 1)}};
    const auto numbers = documented.find(model().name);
    const Call largest = numbers != documented.end() ? numbers->second : expected(right, bottom, 1, 1);
    pad().draw(
        {{0, 0, 512, PenDown},
         {right, bottom, 1, PenMove},
         {right + 1, bottom + 1, 1, PenMove},
         {INT32_MAX, INT32_MAX, 1, PenMove},
         {INT32_MIN, INT32_MIN, 0, PenMove},
         {model().originX, model().originY, 2, PenMove},
         {model().originX + model().areaWidth / 2, model().originY + model().areaHeight / 2, 3, PenMove}});
    EXPECT_EQ(takeCalls(), (std::vector<Call>{{0ul, 0x10200l},
                                              largest,
                                              largest,
                                              largest,
                                              {0ul, 0x10000l},
                                              {0ul, 0x10002l},
                                              {0x7fff7ffful, 0x10003l}}));
}

TEST_P(RealTime, PressureIsItsLowHalf)
{
    ASSERT_TRUE(api().RealTimeSignatureDataCallback(type(), receive));
    pad().draw({{0, 0, 0x12345, PenDown},
                {0, 0, -1, PenMove},
                {0, 0, INT32_MIN, PenMove},
                {0, 0, -2, PenMove},
                {9, 9, 9, PenUp}});
    EXPECT_EQ(takeCalls(),
              (std::vector<Call>{
                  {0ul, 0x12345l}, {0ul, 0x1ffffl}, {0ul, 0x10000l}, {0ul, 0x1fffel}, {0ul, 0x0fffel}}));
}

TEST_P(RealTime, PenUpUsesTheStoredValues)
{
    ASSERT_TRUE(api().RealTimeSignatureDataCallback(type(), receive));
    pad().draw({{70000, 40000, 10, PenDown}, {5, 5, 5, PenUp}});
    EXPECT_EQ(takeCalls(), (std::vector<Call>{expected(70000, 40000, 10, 1),
                                              expected(70000 - 65536, 40000 - 65536, 10, 0)}));
    pad().draw({{-1, 300, 10, PenDown}, {5, 5, 5, PenUp}});
    EXPECT_EQ(takeCalls(), (std::vector<Call>{expected(-1, 300, 10, 1), expected(65535, 300, 10, 0)}));
}

TEST_P(RealTime, NothingIsSentForWhatIsNotStored)
{
    ASSERT_TRUE(api().RealTimeSignatureDataCallback(type(), receive));
    pad().draw({{500, 500, 5, PenMove}, {500, 500, 5, PenUp}, {500, 500, 5, 9}, {500, 500, 5, PenDown}});
    EXPECT_EQ(takeCalls().size(), 1u);
    pad().draw({{600, 600, model().maxPressure + 1, PenMove}});
    EXPECT_TRUE(takeCalls().empty());
    ASSERT_EQ(api().Clear(type()), 0);
    pad().draw({{600, 600, 5, PenUp}});
    EXPECT_TRUE(takeCalls().empty());
    sim().pressKey(1);
    EXPECT_TRUE(takeCalls().empty());
}

TEST_P(RealTime, NullIsRefusedAndTheEarlierOneStays)
{
    EXPECT_FALSE(api().RealTimeSignatureDataCallback(type(), nullptr));
    ASSERT_TRUE(api().RealTimeSignatureDataCallback(type(), receive));
    logged([&] { EXPECT_FALSE(api().RealTimeSignatureDataCallback(type(), nullptr)); });
    const Texts texts = textsOf(mainLog(), exported("RealTimeSignatureDataCallback"));
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_EQ(texts[1], std::string("leave false due to (nDeviceType != ") + model().deviceName +
                            ") || (pfnRealTimeSignDataCallback == nullptr) !");
    EXPECT_TRUE(textsOf(mainLog(), method("SetRealTimeSignDataCallback")).empty());
    pad().draw({{600, 600, 5, PenDown}});
    EXPECT_EQ(takeCalls().size(), 1u);
    EXPECT_TRUE(api().RealTimeSignatureDataCallback(type(), receiveNothing));
    pad().draw({{600, 600, 5, PenMove}});
    EXPECT_TRUE(takeCalls().empty());
}

TEST_P(RealTime, RegisteringWritesItsLines)
{
    logged([&] { EXPECT_TRUE(api().RealTimeSignatureDataCallback(type(), receive)); });
    EXPECT_EQ(textsOf(mainLog(), method("SetRealTimeSignDataCallback")),
              (Texts{"Enter...", "leave with bRet = 1..."}));
    EXPECT_EQ(textsOf(mainLog(), exported("RealTimeSignatureDataCallback")).back(), "leave with bRet = 1...");
}

TEST_P(RealTime, NewObjectCallsNobody)
{
    ASSERT_TRUE(api().RealTimeSignatureDataCallback(type(), receive));
    EXPECT_EQ(pad().stop(), 0);
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 5));
    EXPECT_TRUE(takeCalls().empty());
}

SCRIBERA_INSTANTIATE_ALL(RealTime);

} // namespace
} // namespace scribera::test
