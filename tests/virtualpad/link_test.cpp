// The driver and the pad together: the driver as a host loads it, the pad without its window.
#include "files.h"
#include "model/padmodel.h"
#include "support.h"

#include <atomic>

using namespace virtualpad;
namespace padlink = simulator::padlink;

namespace {

constexpr int PenDown = 0;
constexpr int PenUp = 2;

class LinkTest : public testing::Test
{
protected:
    LinkTest() { enableLink(); }

    int start(int deviceType)
    {
        return meanwhile([&] { return m_driver.start(deviceType); });
    }
    // With the screen on, where there is one: ink shows.
    void startLit(int deviceType, VirtualPad& pad)
    {
        ASSERT_EQ(start(deviceType), 0);
        ASSERT_EQ(m_driver.openLcd(true), 0);
        ASSERT_TRUE(waitUntil([&] { return pad.state().isLit(); }));
    }
    int stop()
    {
        return meanwhile([&] { return m_driver.unInitial(); });
    }
    std::string model()
    {
        char text[65] = {};
        EXPECT_EQ(m_driver.partsVersion(text, 64), 0);
        return text;
    }
    static bool hasSamples(std::size_t count)
    {
        return waitUntil([=] { return Received::samples().size() >= count; });
    }

    Driver m_driver;
};

// What the pad sent and what the host received are the same strokes.
void expectStroke(const std::vector<ScrSimSample>& samples)
{
    ASSERT_GE(samples.size(), 3U);
    EXPECT_EQ(samples.front().penStatus, PenDown);
    EXPECT_EQ(samples.back().penStatus, PenUp);
    for (std::size_t index = 1; index + 1 < samples.size(); ++index)
        EXPECT_EQ(samples[index].penStatus, 1);
}

std::vector<ScrSimSample> samplesSince(std::size_t first)
{
    std::vector<ScrSimSample> samples = Received::samples();
    samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(first));
    return samples;
}

} // namespace

TEST_F(LinkTest, SamplesArriveWithThePadFirst)
{
    ListeningPad pad;
    startLit(2, *pad);
    EXPECT_EQ(pad->hostDeviceType(), 2);
    draw(*pad, 10);
    ASSERT_TRUE(hasSamples(static_cast<std::size_t>(pad->samplesSent())));
    const std::vector<ScrSimSample> samples = Received::samples();
    expectStroke(samples);
    EXPECT_EQ(samples.size(), static_cast<std::size_t>(pad->samplesSent()));
    const std::vector<InkPoint>& ink = pad->state().ink();
    ASSERT_EQ(ink.size() + 1, samples.size());
    for (std::size_t index = 0; index < ink.size(); ++index) {
        EXPECT_NEAR(static_cast<double>(ink[index].x), (samples[index].x - 160) / 2359.0, 1e-4);
        EXPECT_NEAR(static_cast<double>(ink[index].y), (samples[index].y - 220) / 1429.0, 1e-4);
        EXPECT_NEAR(static_cast<double>(ink[index].pressure), samples[index].pressure / 2048.0, 1e-4);
    }
    // On the pad's own thread, as all samples.
    for (const Event& event : Received::all())
        EXPECT_EQ(event.thread, Received::all().front().thread);
    EXPECT_EQ(stop(), 0);
    EXPECT_TRUE(waitUntil([&] { return !pad->hostDeviceType(); }));
}

TEST_F(LinkTest, SamplesArriveWithTheHostFirst)
{
    ASSERT_EQ(m_driver.start(5), 0) << "no pad to answer";
    EXPECT_EQ(model(), "SCK420");
    ASSERT_EQ(m_driver.openLcd(true), 0);
    ASSERT_EQ(m_driver.setPenStyle(false), 0);
    ASSERT_EQ(m_driver.showVersion(true), 0);
    ListeningPad pad;
    ASSERT_TRUE(waitUntil([&] { return pad->state().isVersionShown(); }));
    EXPECT_EQ(pad->hostDeviceType(), 5);
    EXPECT_EQ(pad->state().pad().model, "SCK420") << "it was an SCK210";
    EXPECT_TRUE(pad->state().isLit()) << "what the host said before the pad came";
    EXPECT_FALSE(pad->state().isWithPressure());
    EXPECT_EQ(pad->state().versionText(), "SCK420");
    draw(*pad, 5);
    ASSERT_TRUE(hasSamples(static_cast<std::size_t>(pad->samplesSent())));
    expectStroke(Received::samples());
}

TEST_F(LinkTest, AHostEndsAndANewOneStarts)
{
    ListeningPad pad;
    for (int round = 0; round < 4; ++round) {
        startLit(round % 2 == 0 ? 2 : 7, *pad);
        ASSERT_EQ(pad->hostDeviceType(), round % 2 == 0 ? 2 : 7);
        const std::size_t before = Received::samples().size();
        draw(*pad, 3);
        ASSERT_TRUE(hasSamples(before + static_cast<std::size_t>(pad->samplesSent())));
        expectStroke(samplesSince(before));
        ASSERT_EQ(stop(), 0);
    }
}

TEST(LinkUnloading, TheDriverUnloadsForGoodBehindAPad)
{
    enableLink();
    ListeningPad pad;
    Driver driver;
    ASSERT_EQ(meanwhile([&] { return driver.start(2); }), 0);
    ASSERT_EQ(pad->hostDeviceType(), 2);
    ASSERT_EQ(meanwhile([&] { return driver.unInitial(); }), 0);
    driver.unload();
    EXPECT_FALSE(isLibraryLoaded(SCRIBERA_DRIVER_LIBRARY));
}

TEST_F(LinkTest, AKilledPadLiftsThePenAndTheNextOneIsFound)
{
    // Ten seconds with the pen down.
    simulator::Recording recording{"SCK210", {160, 220, 2360, 1430}, 2048, {}, true};
    for (int index = 0; index < 2000; ++index)
        recording.samples.push_back({index * 5, 200 + index, 500, 700, index == 0 ? PenDown : 1});
    std::string error;
    ASSERT_TRUE(simulator::writeRecording(recording, "long.rec", error)) << error;
    const QStringList replay{QStringLiteral("--replay"), QStringLiteral("long.rec")};

    PadProcess first(replay);
    ASSERT_TRUE(waitUntil([] { return std::filesystem::exists(SocketName); }));
    ASSERT_EQ(start(2), 0);
    ASSERT_EQ(m_driver.openLcd(true), 0);
    ASSERT_TRUE(hasSamples(30));
    first.kill();
    ASSERT_TRUE(waitUntil([] { return Received::samples().back().penStatus == PenUp; }));
    const std::vector<ScrSimSample> samples = Received::samples();
    expectStroke(samples);
    EXPECT_EQ(samples.back().x, samples[samples.size() - 2].x);
    EXPECT_EQ(samples.back().y, samples[samples.size() - 2].y);
    EXPECT_EQ(samples.back().pressure, 0);

    // A host that asks is told.
    char id[64] = {};
    const auto padId = [&] { return m_driver.padId(id, sizeof id); };
    ASSERT_TRUE(waitUntil([&] { return padId() == -1; }));
    EXPECT_EQ(m_driver.clearContent(), -1);
    PadProcess second(replay);
    ASSERT_TRUE(hasSamples(samples.size() + 30));
    EXPECT_EQ(padId(), 0);
    EXPECT_EQ(m_driver.clearContent(), 0);
    EXPECT_EQ(model(), "SCK210");
    EXPECT_EQ(samplesSince(samples.size()).front().penStatus, PenDown);
    EXPECT_EQ(stop(), 0);
}

TEST_F(LinkTest, APadThatIsUnpluggedWhileAKeyIsHeldReleasesIt)
{
    ListeningPad pad;
    ASSERT_EQ(start(2), 0);
    pad->touchKey(Key::Confirm);
    ASSERT_TRUE(hasSamples(1));
    EXPECT_EQ(Received::samples().front().penStatus, 4);
    pad->setModel(*simulator::padForModel("SCT12"));
    ASSERT_TRUE(hasSamples(2));
    EXPECT_EQ(Received::samples().back().penStatus, PenUp);
    // And it comes back as what it is now.
    ASSERT_TRUE(waitUntil([&] { return pad->hostDeviceType().has_value(); }));
    EXPECT_TRUE(waitUntil([&] { return model() == "SCT12"; }));
    EXPECT_EQ(Received::samples().size(), 2U);
}

TEST_F(LinkTest, KeysTellTouchAndRelease)
{
    ListeningPad pad;
    ASSERT_EQ(start(3), 0);
    pad->touchKey(Key::Confirm);
    pad->releaseKey();
    pad->releaseKey();
    pad->touchKey(Key::Cancel);
    pad->releaseKey();
    ASSERT_TRUE(hasSamples(4));
    std::vector<int> status;
    for (const ScrSimSample& sample : Received::samples())
        status.push_back(sample.penStatus);
    EXPECT_EQ(status, (std::vector<int>{4, 2, 3, 2}));
}

TEST_F(LinkTest, AKeyInTheMiddleOfAStrokeLiftsThePenFirst)
{
    ListeningPad pad;
    ASSERT_EQ(start(2), 0);
    pad->penDown({0.5, 0.5});
    ASSERT_TRUE(hasSamples(1));
    pad->touchKey(Key::Cancel);
    ASSERT_TRUE(waitUntil([] { return Received::samples().back().penStatus == 3; }));
    const std::vector<ScrSimSample> samples = Received::samples();
    EXPECT_EQ(samples[samples.size() - 2].penStatus, PenUp);
}

TEST_F(LinkTest, TheStreamIsSteadyAtTheReportRate)
{
    ListeningPad pad;
    ASSERT_EQ(start(2), 0);
    const Clock::time_point begin = Clock::now();
    pad->penDown({0.2, 0.2});
    ASSERT_TRUE(hasSamples(101));
    // Never ahead of the hand: sample n comes n periods of 5 ms after the touch or later.
    const std::vector<Event> events = Received::all();
    for (std::size_t index = 0; index < events.size(); ++index)
        EXPECT_GE(events[index].time - begin, std::chrono::milliseconds(5) * index);
    // And none is left out: a pen that rests is reported too.
    const auto passed = std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
    EXPECT_TRUE(hasSamples(static_cast<std::size_t>((passed - PenSampler::Lag) / ReportInterval)));
    pad->penUp();
    EXPECT_TRUE(waitUntil([] { return Received::samples().back().penStatus == PenUp; }));
}

TEST_F(LinkTest, AFingerReachesTheHostOfAPadWithASensor)
{
    ListeningPad pad("SCK421B");
    std::string error;
    EXPECT_FALSE(pad->putFinger("whorl", 91, error));
    EXPECT_EQ(error, "no host takes the fingerprint");
    ASSERT_EQ(start(7), 0);
    std::vector<unsigned char> pixels;
    for (const char* source : {"whorl", "loop", "arch"}) {
        ASSERT_TRUE(pad->putFinger(source, 91, error)) << error;
        ASSERT_TRUE(waitUntil([] { return !Received::all().empty(); }));
        const Event event = Received::all().front();
        EXPECT_EQ(event.kind, Event::Finger);
        EXPECT_EQ(event.score, 91);
        EXPECT_EQ(event.length, 208 * 288);
        ASSERT_TRUE(VirtualPad::readFinger(source, pixels, error));
        EXPECT_EQ(event.pixels, pixels) << source;
        Received::clear();
    }
    ASSERT_TRUE(simulator::writeFile("P5 2 1 255\n" + std::string("\x10\x20"), "small.pgm", error));
    ASSERT_TRUE(pad->putFinger("small.pgm", -5, error)) << error;
    ASSERT_TRUE(waitUntil([] { return !Received::all().empty(); }));
    EXPECT_EQ(Received::all().front().score, -5);
    ASSERT_TRUE(simulator::readGreyMap("small.pgm", pixels, error));
    EXPECT_EQ(Received::all().front().pixels, pixels);
    EXPECT_FALSE(pad->putFinger("missing.pgm", 1, error));
    EXPECT_NE(error.find("missing.pgm: cannot be opened"), std::string::npos) << error;
}

TEST_F(LinkTest, APadWithoutASensorTakesNoFinger)
{
    ListeningPad pad("SCK420");
    ASSERT_EQ(start(5), 0);
    std::string error;
    EXPECT_FALSE(pad->putFinger("loop", 1, error));
    EXPECT_EQ(error, "SCK420 has no fingerprint sensor");
}

TEST_F(LinkTest, AFingerOnAPadOfAnotherKindThanTheHostsIsNotTold)
{
    ListeningPad pad("SCK421B");
    pad->setPinned(true);
    startLit(2, *pad);
    std::string error;
    ASSERT_TRUE(pad->putFinger("loop", 1, error)) << error;
    draw(*pad, 2);
    ASSERT_TRUE(hasSamples(static_cast<std::size_t>(pad->samplesSent())));
    EXPECT_EQ(Received::all().size(), Received::samples().size());
}

TEST_F(LinkTest, ThePadShowsWhatTheHostAsksFor)
{
    ListeningPad pad("SCK421B");
    ASSERT_EQ(start(7), 0);
    EXPECT_FALSE(pad->state().isLit());
    ASSERT_EQ(m_driver.openLcd(true), 0);
    EXPECT_TRUE(waitUntil([&] { return pad->state().isLit(); }));
    ASSERT_EQ(m_driver.showVersion(true), 0);
    EXPECT_TRUE(waitUntil([&] { return pad->state().isVersionShown(); }));
    EXPECT_EQ(pad->state().versionText(), "SCK421B");
    ASSERT_EQ(m_driver.showVersion(false), 0);
    EXPECT_TRUE(waitUntil([&] { return !pad->state().isVersionShown(); }));
    ASSERT_EQ(m_driver.setPenStyle(false), 0);
    EXPECT_TRUE(waitUntil([&] { return !pad->state().isWithPressure(); }));

    std::vector<unsigned char> picture(std::size_t{104} * 144 * 2);
    for (std::size_t index = 0; index < picture.size(); ++index)
        picture[index] = static_cast<unsigned char>(index * 13);
    bool abort = false;
    ASSERT_EQ(m_driver.showPicture(picture.data(), 29952, 104, 144, &abort), 0);
    ASSERT_TRUE(waitUntil([&] { return pad->state().picture().has_value(); }));
    EXPECT_EQ(pad->state().picture()->width, 104);
    EXPECT_EQ(pad->state().picture()->height, 144);
    EXPECT_EQ(pad->state().picture()->pixels, picture);

    draw(*pad, 2);
    EXPECT_FALSE(pad->state().ink().empty());
    ASSERT_EQ(m_driver.clearContent(), 0);
    EXPECT_TRUE(waitUntil([&] { return pad->state().ink().empty() && !pad->state().picture(); }));
    ASSERT_EQ(m_driver.openLcd(false), 0);
    EXPECT_TRUE(waitUntil([&] { return !pad->state().isLit(); }));
}

TEST_F(LinkTest, ATransferThatWasAbortedShowsNothing)
{
    ListeningPad pad("SCK421B");
    ASSERT_EQ(start(7), 0);
    unsigned char pixels[4] = {1, 2, 3, 4};
    bool abort = true;
    EXPECT_EQ(m_driver.showPicture(pixels, 4, 2, 1, &abort), -1);
    ASSERT_EQ(m_driver.openLcd(true), 0); // behind it
    ASSERT_TRUE(waitUntil([&] { return pad->state().isLit(); }));
    EXPECT_FALSE(pad->state().picture());
}

TEST_F(LinkTest, AnEntryPointThatFailsDoesNothingOnThePad)
{
    ListeningPad pad;
    ASSERT_EQ(start(2), 0);
    ASSERT_EQ(m_driver.SetResult("SCRDAPI_OpenDeviceLCD", -7), 0);
    EXPECT_EQ(m_driver.openLcd(true), -7);
    ASSERT_EQ(m_driver.setPenStyle(false), 0);
    ASSERT_TRUE(waitUntil([&] { return !pad->state().isWithPressure(); }));
    EXPECT_FALSE(pad->state().isLit());
}

TEST_F(LinkTest, ThePadBecomesWhatTheHostAsksForUnlessItIsPinned)
{
    for (const CPadModel* row : AllPads()) {
        const int type = row->m_nDeviceType;
        ListeningPad pad(type == 2 ? "SCT580" : "SCT470");
        ASSERT_EQ(start(type), 0);
        EXPECT_EQ(pad->state().pad().model, std::string("SC") + row->m_pszName);
        EXPECT_EQ(model(), pad->state().pad().model);
        EXPECT_FALSE(pad->isMismatch());
        ASSERT_EQ(stop(), 0);
    }
    ListeningPad pad("SCT580");
    pad->setPinned(true);
    ASSERT_EQ(start(2), 0);
    EXPECT_EQ(pad->state().pad().model, "SCT580");
    EXPECT_EQ(model(), "SCT580");
    EXPECT_TRUE(pad->isMismatch());
}

TEST_F(LinkTest, AModelOfTheHostsKindStays)
{
    ListeningPad pad("SCT480R1");
    setenv("SCRIBERA_SIM_MODEL", "SCK190", 1);
    ASSERT_EQ(start(2), 0);
    EXPECT_EQ(model(), "SCT480R1") << "the pad knows better than the environment";
    EXPECT_EQ(m_driver.SetText("SCRDAPI_GetDevicePartsVersion", "own", 3, 1), 0);
    EXPECT_EQ(model(), "own") << "a test knows best";
}

TEST_F(LinkTest, AStartWithoutTheVirtualPadMissesNone)
{
    {
        ListeningPad pad("SCT480R1");
        ASSERT_EQ(start(2), 0);
        EXPECT_EQ(model(), "SCT480R1");
        ASSERT_EQ(stop(), 0);
    }
    unsetenv("SCRIBERA_SIM_PAD");
    ASSERT_EQ(m_driver.start(2), 0);
    EXPECT_EQ(model(), "SCK210");
    EXPECT_EQ(m_driver.clearContent(), 0);
}

TEST_F(LinkTest, ASecondHostIsRefusedAndFoundByThePadWhenTheFirstHasEnded)
{
    ListeningPad pad;
    ASSERT_EQ(start(2), 0);
    RawPeer second = RawPeer::connected();
    ASSERT_TRUE(second.send(padlink::encode(padlink::Hello{padlink::ProtocolVersion, 2})));
    const std::vector<padlink::Message> answer = second.messages(padlink::Parser::Peer::Pad, 1);
    ASSERT_EQ(answer.size(), 1U);
    EXPECT_TRUE(answer[0] == padlink::Message(padlink::Refusal{"it has another host"}));
    EXPECT_TRUE(second.isClosed());
    EXPECT_EQ(pad->hostDeviceType(), 2);

    ASSERT_EQ(stop(), 0);
    RawPeer third = RawPeer::connected();
    ASSERT_TRUE(third.send(padlink::encode(padlink::Hello{padlink::ProtocolVersion, 5})));
    EXPECT_EQ(third.messages(padlink::Parser::Peer::Pad, 1).size(), 1U);
    EXPECT_TRUE(waitUntil([&] { return pad->hostDeviceType() == 5; }));
}

TEST_F(LinkTest, ASecondPadIsRefusedAndAStaleSocketReplaced)
{
    std::string error;
    {
        ListeningPad pad;
        VirtualPad second(*simulator::padForModel("SCK210"));
        EXPECT_FALSE(second.listen(SocketName, error));
        EXPECT_EQ(error, "pad: another virtual pad is listening there");
        EXPECT_EQ(start(2), 0) << "the first one goes on";
        EXPECT_EQ(pad->hostDeviceType(), 2);
        ASSERT_EQ(stop(), 0);
    }
    EXPECT_FALSE(std::filesystem::exists(SocketName));
    {
        const FakePad killed; // leaves its socket behind
    }
    ASSERT_TRUE(std::filesystem::exists(SocketName));
    ListeningPad pad;
    ASSERT_EQ(start(2), 0);
    EXPECT_EQ(pad->hostDeviceType(), 2);
}

TEST_F(LinkTest, WhatIsNoStaleSocketIsLeftAlone)
{
    std::string error;
    {
        FakePad other;
        VirtualPad pad(*simulator::padForModel("SCK210"));
        EXPECT_FALSE(pad.listen(SocketName, error));
        EXPECT_EQ(error, "pad: somebody else is listening there");
    }
    std::filesystem::remove(SocketName);
    ASSERT_TRUE(simulator::writeFile("mine", SocketName, error));
    VirtualPad pad(*simulator::padForModel("SCK210"));
    EXPECT_FALSE(pad.listen(SocketName, error));
    EXPECT_EQ(error, "pad: is there already, and no socket");
    EXPECT_EQ(contentOf(SocketName), "mine");
    EXPECT_FALSE(pad.listen("missing/pad", error));
    EXPECT_NE(error.find("No such file"), std::string::npos) << error;
}

TEST_F(LinkTest, TheSocketIsTheUsersOwn)
{
    ListeningPad pad;
    EXPECT_EQ(std::filesystem::status(SocketName).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

// --- Peers that misbehave

TEST_F(LinkTest, GarbageAtThePadEndsThatConnectionOnly)
{
    ListeningPad pad;
    const std::string hello = padlink::encode(padlink::Hello{padlink::ProtocolVersion, 2});
    std::string endless;
    for (int index = 0; index < 400'000; ++index)
        endless += "x";
    const std::string garbage[] = {"GET / HTTP/1.1\r\n\r\n",
                                   std::string(100'000, '\0'),
                                   endless,
                                   hello + hello,
                                   hello + "\x06\xff\xff\xff" + endless,
                                   padlink::encode(padlink::Hello{99, 2})};
    for (const std::string& bytes : garbage) {
        RawPeer peer = RawPeer::connected();
        ASSERT_TRUE(peer.isOpen());
        peer.send(bytes); // the pad may hang up before the end
        EXPECT_TRUE(peer.isClosed());
    }
    EXPECT_TRUE(waitUntil([&] { return !pad->hostDeviceType(); }));
    startLit(2, *pad);
    draw(*pad, 2);
    EXPECT_TRUE(hasSamples(static_cast<std::size_t>(pad->samplesSent())));
}

TEST_F(LinkTest, HalfAMessageAndSilenceDoNotKeepThePadFromItsHost)
{
    ListeningPad pad;
    RawPeer silent = RawPeer::connected();
    RawPeer half = RawPeer::connected();
    ASSERT_TRUE(half.send(padlink::encode(padlink::Hello{padlink::ProtocolVersion, 2}).substr(0, 11)));
    ASSERT_EQ(start(2), 0);
    EXPECT_EQ(pad->hostDeviceType(), 2);
    // Sooner or later it has enough of them.
    EXPECT_TRUE(silent.isClosed());
    EXPECT_TRUE(half.isClosed());
    EXPECT_EQ(pad->hostDeviceType(), 2);
}

TEST_F(LinkTest, AHostThatEndsInTheMiddleOfAMessageIsGone)
{
    ListeningPad pad;
    RawPeer host = RawPeer::connected();
    ASSERT_TRUE(host.send(padlink::encode(padlink::Hello{padlink::ProtocolVersion, 7}) + "\x06\x04"));
    ASSERT_TRUE(waitUntil([&] { return pad->hostDeviceType() == 7; }));
    host.close();
    EXPECT_TRUE(waitUntil([&] { return !pad->hostDeviceType(); }));
}

TEST_F(LinkTest, AHostThatDoesNotReadIsDropped)
{
    ListeningPad pad("SCK421B");
    RawPeer host = RawPeer::connected();
    ASSERT_TRUE(host.send(padlink::encode(padlink::Hello{padlink::ProtocolVersion, 7})));
    ASSERT_TRUE(waitUntil([&] { return pad->hostDeviceType() == 7; }));
    std::string error;
    int scans = 0;
    while (pad->hostDeviceType() && scans < 1000 && pad->putFinger("loop", 1, error))
        ++scans;
    EXPECT_FALSE(pad->hostDeviceType());
    EXPECT_LT(scans, 100);
}

TEST_F(LinkTest, GarbageAtTheDriverDoesNotHarmTheHost)
{
    FakePad fake;
    const std::string welcome = padlink::encode(padlink::Welcome{padlink::ProtocolVersion, "SCT470"});
    const std::string garbage[] = {"SSH-2.0-nothing\r\n", std::string(100'000, '\xff'),
                                   padlink::encode(padlink::Welcome{99, "SCT470"}),
                                   welcome + std::string(100'000, 'x'), welcome + welcome};
    auto started = std::async(std::launch::async, [&] { return m_driver.start(2); });
    for (const std::string& bytes : garbage) {
        RawPeer peer = fake.accept(); // the driver comes back each time
        peer.send(bytes);
        EXPECT_TRUE(peer.isClosed());
    }
    EXPECT_TRUE(
        waitUntil([&] { return started.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    EXPECT_EQ(started.get(), 0);
    RawPeer peer = fake.accept();
    ASSERT_TRUE(peer.send(welcome + padlink::encode(padlink::Samples{{{500, 600, 7, 0}, {501, 600, 7, 1}}})));
    ASSERT_TRUE(hasSamples(2));
    EXPECT_EQ(model(), "SCT470");
    ASSERT_TRUE(peer.send("\x43\x10")); // half a message, and gone
    peer.close();
    ASSERT_TRUE(hasSamples(3));
    EXPECT_EQ(Received::samples().back(), (ScrSimSample{501, 600, 0, 2}));
    EXPECT_EQ(stop(), 0);
}

TEST_F(LinkTest, ASilentPadHoldsUpTheHostForTheSetTimeOnly)
{
    setenv("SCRIBERA_SIM_PAD_WAIT_MS", "100", 1);
    FakePad fake;
    const auto begin = Clock::now();
    ASSERT_EQ(m_driver.start(2), 0);
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(100));
    EXPECT_EQ(model(), "SCK210");
    EXPECT_EQ(m_driver.openLcd(true), 0);
    RawPeer peer = fake.accept();
    const std::vector<padlink::Message> messages = peer.messages(padlink::Parser::Peer::Driver, 2);
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_TRUE(messages[0] == padlink::Message(padlink::Hello{padlink::ProtocolVersion, 2}));
    EXPECT_TRUE(messages[1] == padlink::Message(padlink::Screen{true}));
    EXPECT_EQ(m_driver.unInitial(), 0);
    EXPECT_TRUE(peer.isClosed());
}

TEST_F(LinkTest, APadThatDoesNotReadHoldsUpNothing)
{
    FakePad fake;
    auto started = std::async(std::launch::async, [&] { return m_driver.start(7); });
    RawPeer peer = fake.accept();
    ASSERT_TRUE(peer.send(padlink::encode(padlink::Welcome{padlink::ProtocolVersion, "SCK421B"})));
    ASSERT_EQ(started.get(), 0);
    std::vector<unsigned char> picture(std::size_t{104} * 144 * 2);
    for (int count = 0; count < 25; ++count) // more than a socket takes
        EXPECT_EQ(m_driver.showPicture(picture.data(), 29952, 104, 144, nullptr), 0);
    const auto begin = Clock::now();
    EXPECT_EQ(m_driver.unInitial(), 0);
    EXPECT_LT(Clock::now() - begin, std::chrono::milliseconds(500))
        << "a twentieth of that where nothing else runs";
}

TEST_F(LinkTest, APadThatIsFarBehindIsGivenUp)
{
    FakePad fake;
    auto started = std::async(std::launch::async, [&] { return m_driver.start(7); });
    RawPeer peer = fake.accept();
    ASSERT_TRUE(peer.send(padlink::encode(padlink::Welcome{padlink::ProtocolVersion, "SCK421B"})));
    ASSERT_EQ(started.get(), 0);
    std::vector<unsigned char> picture(std::size_t{512} * 512 * 2);
    for (int count = 0; count < 12; ++count)
        EXPECT_EQ(m_driver.showPicture(picture.data(), 512 * 512 * 2, 512, 512, nullptr), 0);
    RawPeer again = fake.accept();
    EXPECT_TRUE(again.isOpen()) << "it was given up and looked for anew";
}

TEST_F(LinkTest, APadThatFloodsAHostThatIsBusyIsGivenUp)
{
    FakePad fake;
    auto started = std::async(std::launch::async, [&] { return m_driver.start(2); });
    RawPeer peer = fake.accept();
    ASSERT_TRUE(peer.send(padlink::encode(padlink::Welcome{padlink::ProtocolVersion, "SCK210"})));
    ASSERT_EQ(started.get(), 0);
    std::promise<void> goOn;
    std::shared_future<void> mayGoOn = goOn.get_future().share();
    Received::whenReceived([mayGoOn](std::size_t count) {
        if (count == 1)
            mayGoOn.wait();
    });
    padlink::Samples many;
    many.samples.assign(padlink::MostSamples, {500, 600, 7, 1});
    const std::string bytes = padlink::encode(many);
    bool open = true;
    for (int count = 0; open && count < 2000; ++count)
        open = peer.send(bytes);
    EXPECT_FALSE(open) << "half a million samples were taken";
    goOn.set_value();
    ASSERT_TRUE(waitUntil([] { return Received::samples().back().penStatus == PenUp; }));
    EXPECT_LT(Received::samples().size(), 200'000U);
}

TEST_F(LinkTest, OneThreadMoreAndNoneAfterwards)
{
    const auto threads = [] {
        const std::filesystem::directory_iterator tasks("/proc/self/task");
        return std::distance(begin(tasks), end(tasks));
    };
    ASSERT_EQ(m_driver.start(2), 0); // a sanitizer's own thread comes with the first
    ASSERT_EQ(m_driver.unInitial(), 0);
    std::ptrdiff_t before = 0;
    ASSERT_TRUE(waitUntil([&] {
        const std::ptrdiff_t last = std::exchange(before, threads());
        return last == before;
    }));
    ASSERT_EQ(m_driver.start(2), 0);
    EXPECT_EQ(threads(), before + 2) << "the samples' and the link's";
    ASSERT_EQ(m_driver.unInitial(), 0);
    EXPECT_TRUE(waitUntil([&] { return threads() == before; }));
    unsetenv("SCRIBERA_SIM_PAD");
    ASSERT_EQ(m_driver.start(2), 0);
    EXPECT_EQ(threads(), before + 1);
}
