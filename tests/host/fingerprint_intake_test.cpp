// Fingerprints on their way in: threshold, score, the pad's own screen, the display thread and its end.

#include <atomic>
#include <chrono>
#include <climits>
#include <thread>

#include "fingerprint_reference.h"

namespace scribera::test {
namespace {

class FingerprintIntake : public OpenFingerprintTest
{
protected:
    std::string intake() const { return method("RxK421BSignPadFPRawData"); }
    std::string shutdown() const { return method("Shutdown"); }
    std::string threadClass() const
    {
        return padCase().isWidget() ? "CK421BWidget_ShowFPImageOnDeviceThread"
                                    : "CK421BObj_ShowFPImageOnDeviceThread";
    }

    Bytes shownOnPad(int* width = nullptr, int* height = nullptr)
    {
        Bytes picture(100000);
        const int size = sim().LastPicture(picture.data(), static_cast<int>(picture.size()), width, height);
        picture.resize(static_cast<std::size_t>(std::max(size, 0)));
        return picture;
    }

    // What an export without the pen's ink shows of the print: the stored picture at its full size.
    void expectTaken(const Bytes& print, const std::string& what = "")
    {
        EXPECT_TRUE(same(canvas(), m_copy->canvas())) << what;
        EXPECT_EQ(shownOnPad(), devicePicture(print)) << what;
    }
};

TEST_P(FingerprintIntake, OnlyABetterScoreIsTaken)
{
    struct Step
    {
        int score;
        bool taken;
        bool clearFirst = false;
    };
    const Step steps[] = {{0, false},       {-1, false}, {INT_MIN, false}, {1, true},       {1, false},
                          {0, false},       {7, true},   {6, false},       {7, false},      {8, true},
                          {0, false, true}, {1, true},   {1, false},       {INT_MAX, true}, {INT_MAX, false}};
    int transfers = 0;
    unsigned seed = 1;
    for (const Step& step : steps) {
        SCOPED_TRACE("print " + std::to_string(seed));
        if (step.clearFirst)
            clear();
        removeLogs();
        setLogging(true);
        const Bytes print = ridges(seed++);
        if (step.taken) {
            take(print, step.score);
            expectTaken(print, "after a better score");
            ++transfers;
        } else {
            send(print, step.score);
        }
        setLogging(false);
        Texts texts = afterTicks(mainLog(), intake());
        ASSERT_EQ(texts.size(), step.taken ? 3u : 2u) << testing::PrintToString(texts);
        EXPECT_TRUE(texts.front().starts_with("-Enter, pucRawData=")) << texts.front();
        EXPECT_TRUE(texts.front().ends_with(", nDataLength=59904, nScore=" + std::to_string(step.score)))
            << texts.front();
        if (step.taken) {
            EXPECT_EQ(texts[1], "nThresholdValue = " + std::to_string(meanOf(print)));
        }
        EXPECT_EQ(texts.back(), "-leave !");
        EXPECT_EQ(sim().TransferCount(), transfers);
    }
}

TEST_P(FingerprintIntake, RefusedPrintLeavesPictureAndPadAlone)
{
    const Bytes first = ridges(1);
    take(first, 5);
    send(ridges(2), 5);
    expectTaken(first, "after a refused print");
    draw(stroke(model(), {{0.1, 0.1}, {0.9, 0.9}}));
    EXPECT_TRUE(same(canvas(), m_copy->canvas()));
    take(ridges(3), 6);
    EXPECT_EQ(sim().TransferCount(), 2);
}

TEST_P(FingerprintIntake, ThresholdIsTheMeanRoundedDown)
{
    Bytes justAbove = evenPrint(100); // mean 100 and a bit
    justAbove[5] = 101;
    Bytes justBelow = evenPrint(100); // mean below 100, so that no pixel lies under it
    justBelow[5] = 99;
    Bytes half = evenPrint(0);
    for (std::size_t i = half.size() / 2; i < half.size(); ++i)
        half[i] = 255;
    const std::vector<std::pair<Bytes, int>> prints = {{justAbove, 100},
                                                       {justBelow, 99},
                                                       {half, 127},
                                                       {evenPrint(0), 0},
                                                       {evenPrint(255), 255},
                                                       {evenPrint(77), 77},
                                                       {ridges(4), meanOf(ridges(4))}};
    int score = 1;
    for (const auto& [print, mean] : prints) {
        SCOPED_TRACE(score);
        ASSERT_EQ(meanOf(print), mean);
        removeLogs();
        take(print, score++);
        EXPECT_EQ(afterTicks(mainLog(), intake()).at(1), "nThresholdValue = " + std::to_string(mean));
        expectTaken(print, "mean " + std::to_string(mean));
    }
}

TEST_P(FingerprintIntake, EvenImageIsWhiteEverywhere)
{
    take(ridges(1), 1);
    for (const int value : {0, 1, 128, 255}) {
        take(evenPrint(static_cast<unsigned char>(value)), 2 + value);
        EXPECT_TRUE(same(canvas(), blank(400, 200))) << value;
        EXPECT_EQ(shownOnPad(), Bytes(devicePictureSize, 0xff)) << value;
    }
}

TEST_P(FingerprintIntake, PadGetsTheTopLeftPixelOfEveryBlock)
{
    // One pixel one below the mean, one that makes up for it: the mean stays 200.
    const auto dark = [](int x, int y) {
        Bytes print = evenPrint(200);
        print[static_cast<std::size_t>(y * printWidth + x)] = 199;
        print[static_cast<std::size_t>(101 * printWidth + 101)] = 201;
        return print;
    };
    Bytes expected(devicePictureSize, 0xff);
    expected[0] = 0xf8;
    expected[1] = 0x00;
    int score = 1;
    take(dark(0, 0), score++);
    EXPECT_EQ(shownOnPad(), expected);

    for (const auto& [x, y] :
         std::vector<std::pair<int, int>>{{1, 0}, {0, 1}, {1, 1}, {207, 287}, {206, 287}, {207, 286}}) {
        take(dark(x, y), score++);
        EXPECT_EQ(shownOnPad(), Bytes(devicePictureSize, 0xff)) << x << ", " << y;
        EXPECT_TRUE(same(canvas(), m_copy->canvas())) << x << ", " << y;
    }

    take(dark(206, 286), score++);
    expected.assign(devicePictureSize, 0xff);
    expected[devicePictureSize - 2] = 0xf8;
    expected[devicePictureSize - 1] = 0x00;
    EXPECT_EQ(shownOnPad(), expected);
}

TEST_P(FingerprintIntake, PadGetsTheWholePictureAndItsSize)
{
    const Bytes print = ridges(11);
    take(print, 3);
    int width = 0;
    int height = 0;
    const Bytes shown = shownOnPad(&width, &height);
    EXPECT_EQ(shown.size(), 29952u);
    EXPECT_EQ(shown, devicePicture(print));
    EXPECT_EQ(width, 104);
    EXPECT_EQ(height, 144);
    EXPECT_EQ(sim().LastArgument("SCRDAPI_ShowFPImageOnDevice"), 29952);
    EXPECT_EQ(sim().TransferCount(), 1);
    EXPECT_EQ(sim().AbortedTransferCount(), 0);
}

TEST_P(FingerprintIntake, LengthThatTheDriverTellsIsNotUsed)
{
    // The pad delivers white behind a short image, so the bytes that are read are known.
    Bytes part = ridges(5);
    part.resize(30000);
    Bytes whole = part;
    whole.resize(static_cast<std::size_t>(printWidth * printHeight), 255);
    Bytes longer = ridges(6);
    longer.resize(70000, 0);

    setLogging(true);
    int merges = mergesOnThread();
    ASSERT_EQ(sim().SendFingerprint(part.data(), static_cast<int>(part.size()), 1), 0);
    ASSERT_TRUE(waitUntil([&] { return mergesOnThread() > merges; }));
    takeInCopy(whole);
    expectTaken(whole, "short");

    merges = mergesOnThread();
    ASSERT_EQ(sim().SendFingerprint(longer.data(), static_cast<int>(longer.size()), 2), 0);
    ASSERT_TRUE(waitUntil([&] { return mergesOnThread() > merges; }));
    setLogging(false);
    takeInCopy(longer);
    expectTaken(longer, "long");
    const Texts texts = afterTicks(mainLog(), intake());
    EXPECT_TRUE(texts.at(texts.size() - 3).ends_with(", nDataLength=70000, nScore=2"))
        << texts.at(texts.size() - 3);
    EXPECT_EQ(texts.at(texts.size() - 2), "nThresholdValue = " + std::to_string(meanOf(longer)));
}

TEST_P(FingerprintIntake, NullImageIsIgnoredWithoutALine)
{
    removeLogs();
    setLogging(true);
    ASSERT_EQ(sim().SendFingerprint(nullptr, 59904, 90), 0);
    sim().waitIdle();
    EXPECT_TRUE(textsOf(mainLog(), intake()).empty());
    // The score was not kept either.
    take(ridges(1), 1);
    setLogging(false);
    EXPECT_EQ(sim().TransferCount(), 1);
}

TEST_P(FingerprintIntake, PrintBeforeTheConnectionCheckIsIgnoredWithoutALine)
{
    ASSERT_EQ(pad().stop(), 0);
    Simulator early;
    early.open();
    ASSERT_EQ(early.SetDelay("SCRDAPI_GetDevicePartsVersion", 2500), 0);
    std::atomic<bool> starting = true;
    bool delivered = false;
    const Bytes print = ridges(1);
    std::thread person([&] {
        while (starting && early.CallCount("SCRDAPI_GetDevicePartsVersion") < 1)
            std::this_thread::yield();
        delivered = early.SendFingerprint(print.data(), static_cast<int>(print.size()), 50) == 0 &&
                    early.WaitIdle(2000) == 0 && starting;
    });
    logged([&] { EXPECT_TRUE(start()); });
    starting = false;
    person.join();
    ASSERT_TRUE(delivered) << "the print came too late to show anything";
    EXPECT_TRUE(textsOf(mainLog(), intake()).empty());
    early.SetDelay("SCRDAPI_GetDevicePartsVersion", 0);
    early.close();
    take(ridges(2), 1); // the score of the early one was not kept
    EXPECT_EQ(sim().TransferCount(), 1);
    EXPECT_TRUE(same(canvas(), m_copy->canvas()));
}

TEST_P(FingerprintIntake, SwitchingThePadsScreenOffForgetsThePrint)
{
    take(ridges(1), 9);
    EXPECT_EQ(api().OpenLCD(type(), true), 0);
    EXPECT_TRUE(same(canvas(), m_copy->canvas()));
    EXPECT_EQ(api().OpenLCD(type(), false), 0);
    EXPECT_TRUE(canvas().isNull()); // neither ink nor print to save
    m_copy->clear();
    take(ridges(2), 1);
    EXPECT_TRUE(same(canvas(), m_copy->canvas()));
}

TEST_P(FingerprintIntake, ResultOfTheTransferIsNotUsed)
{
    ASSERT_EQ(sim().SetResult("SCRDAPI_ShowFPImageOnDevice", 5), 0);
    take(ridges(1), 1);
    EXPECT_TRUE(same(canvas(), m_copy->canvas()));
    EXPECT_EQ(sim().CallCount("SCRDAPI_ShowFPImageOnDevice"), 1);
}

// ---- display thread

TEST_P(FingerprintIntake, ThreadsWriteTheirLines)
{
    ASSERT_EQ(pad().stop(), 0);
    setLogging(true);
    ASSERT_TRUE(start());
    const std::string object = hex(Library::instance().signWidget);
    ASSERT_TRUE(
        waitUntil([&] { return textsOf(inThreadLog(), threadClass() + "::run()") == Texts{"enter"}; }));
    EXPECT_EQ(textsOf(inThreadLog(), threadClass() + "::" + threadClass() + "()"),
              Texts{(padCase().isWidget() ? "enter, m_pSignWidget=" : "enter, m_pSignObj=") + object});

    take(ridges(1), 1);
    const std::vector<LogLine> inThread = inThreadLog();
    EXPECT_EQ(afterTicks(inThread, method("MergeSignCanvasAndFPCanvas")), mergeTexts(QSize(400, 200)));
    EXPECT_EQ(textsOf(inThread, method("ProcessShowFPImgaeRawDataOnDevice")),
              padCase().isWidget() ? Texts{} : Texts{"b4 call MergeSignCanvasAndFPCanvas()..."});
    EXPECT_TRUE(textsOf(inThread, method("CheckIfAnyNewFPImageRawDataOnDeviceAvailable")).empty());
    EXPECT_TRUE(textsOf(inThread, method("AreWeGoingToShutDown")).empty());
    EXPECT_TRUE(textsOf(inThread, intake()).empty());
    const std::vector<LogLine> main = mainLog();
    for (const char* name : {"MergeSignCanvasAndFPCanvas", "ProcessShowFPImgaeRawDataOnDevice",
                             "CheckIfAnyNewFPImageRawDataOnDeviceAvailable", "AreWeGoingToShutDown"})
        EXPECT_TRUE(textsOf(main, method(name)).empty()) << name;

    EXPECT_EQ(pad().stop(), 0);
    setLogging(false);
    EXPECT_EQ(textsOf(inThreadLog(), threadClass() + "::run()"), (Texts{"enter", "Leave !"}));
    for (const LogLine& line : mainLog())
        EXPECT_EQ(line.label.find(threadClass()), std::string::npos) << line.label;
}

TEST_P(FingerprintIntake, AnnouncesTheMergeBeforeItBegins)
{
    removeLogs();
    take(ridges(1), 1);
    Texts order;
    for (const LogLine& line : inThreadLog()) {
        if (line.label == method("ProcessShowFPImgaeRawDataOnDevice"))
            order.push_back("announced");
        if (line.label == method("MergeSignCanvasAndFPCanvas") && line.text == "Enter...")
            order.push_back("merge");
    }
    EXPECT_EQ(order, padCase().isWidget() ? Texts{"merge"} : (Texts{"announced", "merge"}));
}

TEST_P(FingerprintIntake, ConstructorWritesItsSizeLine)
{
    ASSERT_NO_FATAL_FAILURE(logged([&] { ASSERT_TRUE(start()); }));
    const Texts texts = textsOf(mainLog(), method(padCase().className()));
    Texts sizes;
    for (const std::string& text : texts) {
        if (text.starts_with("width="))
            sizes.push_back(text);
    }
    ASSERT_EQ(sizes.size(), 1u) << testing::PrintToString(texts);
    if (padCase().isWidget()) {
        const std::string begin = "width=100, height=30, m_pShowFPImageOnDeviceThread=";
        ASSERT_TRUE(sizes[0].starts_with(begin)) << sizes[0];
        EXPECT_NE(sizes[0].substr(begin.size()), "0");
        EXPECT_EQ(sizes[0].substr(begin.size()).find_first_not_of("0123456789abcdef"), std::string::npos)
            << sizes[0];
    } else {
        EXPECT_EQ(sizes[0], "width=400, height=200");
    }
}

TEST_P(FingerprintIntake, SlowTransferDoesNotHoldUpTheIntake)
{
    ASSERT_EQ(sim().SetTransferTime(600000), 0);
    send(ridges(1), 1);
    ASSERT_TRUE(waitUntil([&] { return sim().TransferCount() == 1; }));
    for (int score = 2; score < 10; ++score)
        send(ridges(static_cast<unsigned>(score)), score); // each waits for its callback to return
    draw(stroke(model(), {{0.1, 0.5}, {0.5, 0.1}, {0.9, 0.9}}));
    EXPECT_EQ(pad().points(), 4);
    EXPECT_EQ(sim().TransferCount(), 1);
    EXPECT_TRUE(shownOnPad().empty());
    takeInCopy(ridges(9));
    EXPECT_TRUE(same(canvas(), m_copy->canvas())); // a segment merges the newest without waiting for the pad
}

TEST_P(FingerprintIntake, NewestOfThoseThatCameMeanwhileIsSentNext)
{
    removeLogs();
    setLogging(true);
    ASSERT_EQ(sim().SetTransferTime(2500), 0);
    send(ridges(1), 1);
    ASSERT_TRUE(waitUntil([&] { return sim().TransferCount() == 1; }));
    for (int score = 2; score <= 4; ++score)
        send(ridges(static_cast<unsigned>(score)), score);
    ASSERT_EQ(sim().SetTransferTime(0), 0); // for the next one
    ASSERT_EQ(sim().TransferCount(), 1) << "the machine was too slow for this test";
    ASSERT_TRUE(waitUntil([&] { return mergesOnThread() > 0; }));
    EXPECT_EQ(sim().TransferCount(), 2);
    EXPECT_EQ(shownOnPad(), devicePicture(ridges(4)));
    takeInCopy(ridges(4));
    EXPECT_TRUE(same(canvas(), m_copy->canvas()));
    EXPECT_EQ(pad().stop(), 0);
    setLogging(false);
    EXPECT_EQ(mergesOnThread(), 1);
}

TEST_P(FingerprintIntake, BurstIsSentOneAfterAnotherAndMergedOnceAtItsEnd)
{
    removeLogs();
    setLogging(true);
    // Long enough for the next print to come meanwhile, whatever else the machine does.
    ASSERT_EQ(sim().SetTransferTime(2500), 0);
    const int prints = 3;
    for (int i = 1; i <= prints; ++i) {
        if (i == prints)
            sim().SetTransferTime(0);
        send(ridges(static_cast<unsigned>(i)), i);
        ASSERT_TRUE(waitUntil([&] { return sim().TransferCount() == i; }));
        if (i < prints) {
            ASSERT_EQ(mergesOnThread(), 0) << "merged before the burst's end";
            EXPECT_EQ(shownOnPad(), i == 1 ? Bytes() : devicePicture(ridges(static_cast<unsigned>(i - 1))));
        }
    }
    ASSERT_TRUE(waitUntil([&] { return mergesOnThread() == 1; }));
    EXPECT_EQ(shownOnPad(), devicePicture(ridges(prints)));
    takeInCopy(ridges(prints));
    EXPECT_TRUE(same(canvas(), m_copy->canvas()));
    EXPECT_EQ(pad().stop(), 0);
    setLogging(false);
    EXPECT_EQ(mergesOnThread(), 1);
}

TEST_P(FingerprintIntake, ShutdownInTheMiddleOfATransferEndsAtTheNextLookAtTheFlag)
{
    removeLogs();
    setLogging(true);
    ASSERT_EQ(sim().SetTransferTime(600000), 0);
    send(ridges(1), 1);
    ASSERT_TRUE(waitUntil([&] { return sim().TransferCount() == 1; }));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(pad().stopKeepingParent(), 0);
    const auto duration = std::chrono::steady_clock::now() - begin;
    setLogging(false);
    EXPECT_LT(duration, std::chrono::seconds(3)) << "of a transfer of ten minutes";
    EXPECT_EQ(sim().TransferCount(), 1);
    EXPECT_EQ(sim().AbortedTransferCount(), 1);
    EXPECT_TRUE(shownOnPad().empty());
    EXPECT_EQ(mergesOnThread(), 0); // the pass ends the loop
    EXPECT_EQ(textsOf(inThreadLog(), threadClass() + "::run()").back(), "Leave !");
}

TEST_P(FingerprintIntake, ShutdownEndsThreadsThenDriverThenThePrintsWidget)
{
    take(ridges(1), 1);
    ASSERT_EQ(placeElsewhere(QRect(10, 5, 20, 20)), 0);
    const std::vector<LogLine> lines = logged([&] { EXPECT_EQ(pad().stopKeepingParent(), 0); });
    EXPECT_EQ(textsOf(lines, shutdown()),
              (Texts{"Enter...", "b4 call m_pShowFPImageOnDeviceThread->quit()...",
                     "b4 call m_pShowFPImageOnDeviceThread->wait()...",
                     "after call m_pShowFPImageOnDeviceThread = nullptr...",
                     "b4 call m_pDoConfirmOrCancelKeyActionThread->quit()...",
                     "b4 call m_pDoConfirmOrCancelKeyActionThread->wait()...",
                     "after call m_pDoConfirmOrCancelKeyActionThread = nullptr...", "leave !"}));
    Texts order;
    for (const LogLine& line : lines) {
        if (line.label == shutdown() &&
            line.text == "after call m_pDoConfirmOrCancelKeyActionThread = nullptr...")
            order.push_back("threads ended");
        else if (line.label == method("ShutdownScriberaDriver") && line.text == "Enter...")
            order.push_back("driver begins");
        else if (line.label == method("ShutdownScriberaDriver") && line.text == "leave !")
            order.push_back("driver ended");
        else if (line.label == shutdown() && line.text == "leave !")
            order.push_back("end");
        else if (line.label == "CK421BFPWidget::Shutdown()")
            order.push_back("widget " + line.text);
    }
    EXPECT_EQ(order, (Texts{"threads ended", "driver begins", "driver ended", "widget Enter...",
                            "widget leave !", "end"}));
    // Cleared by itself and once more by its own shutdown.
    EXPECT_EQ(textsOf(lines, "CK421BFPWidget::Clear()").size(), 4u);

    std::vector<std::string> calls = sim().callLog();
    ASSERT_GE(calls.size(), 2u);
    EXPECT_EQ(calls[calls.size() - 2], "SCRDAPI_OpenDeviceLCD");
    EXPECT_EQ(calls[calls.size() - 1], "SCRDAPI_UnInitial");
}

TEST_P(FingerprintIntake, NewObjectKnowsNothingOfThePrintBefore)
{
    take(ridges(1), 100);
    ASSERT_EQ(placeElsewhere(QRect(10, 5, 20, 20)), 0);
    EXPECT_EQ(pad().stop(), 0);
    ASSERT_TRUE(start());
    sim().Reset();
    EXPECT_TRUE(canvas().isNull());
    draw(stroke(model(), {{0.2, 0.2}, {0.8, 0.8}}));
    EXPECT_TRUE(same(canvas(), m_copy->canvas()));
    take(ridges(2), 1);
    EXPECT_TRUE(same(canvas(), m_copy->canvas())); // in the middle, as without any placement
}

SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintIntake);

} // namespace
} // namespace scribera::test
