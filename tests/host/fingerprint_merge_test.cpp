// The merged picture, bit for bit, against a merge of our own; what a merge costs and what it writes.

#include <algorithm>
#include <atomic>
#include <ctime>
#include <functional>
#include <map>
#include <random>

#include "fingerprint_reference.h"

namespace scribera::test {
namespace {

const std::vector<QSize> canvasSizes = {QSize(400, 200), QSize(800, 400), QSize(1920, 960)};

std::vector<ScrSimSample> scribble(const PadModel& model, unsigned seed, int segments = 40)
{
    std::vector<ScrSimSample> samples = longSignature(model, segments, seed);
    ScrSimSample up = samples.back();
    up.penStatus = PenUp;
    samples.push_back(up);
    return samples;
}

class FingerprintMerge : public OpenFingerprintTest
{
protected:
    std::string merge() const { return method("MergeSignCanvasAndFPCanvas"); }

    // Strokes before and after the print, another print, a clear, and on a widget a resize.
    void runCourse(const QSize& size)
    {
        draw(scribble(model(), 1));
        expectSame("after strokes before any print");
        take(ridges(1), 1);
        expectSame("after the print");
        draw(scribble(model(), 2));
        expectSame("after strokes over the print");
        take(ridges(2), 2);
        expectSame("after a better print");
        draw(scribble(model(), 3));
        expectSame("after more strokes");
        clear();
        draw(scribble(model(), 4));
        expectSame("after clear and strokes");
        take(ridges(3), 1);
        expectSame("after clear and a print");
        if (padCase().isWidget()) {
            resize(size.width() + 37, size.height() - 15);
            expectSame("after resize");
            draw(scribble(model(), 5));
            expectSame("after resize and strokes");
            take(ridges(4), 2);
            expectSame("after resize and a print");
            resize(size.width() / 2, size.height() / 2);
            expectSame("after shrinking");
            take(ridges(5), 3);
            expectSame("after shrinking and a print");
        }
    }
};

TEST_P(FingerprintMerge, PrintWithoutPlacementStandsInTheMiddle)
{
    for (const QSize& size : canvasSizes) {
        SCOPED_TRACE(testing::Message() << size.width() << " x " << size.height());
        ASSERT_TRUE(start(size.width(), size.height()));
        runCourse(size);
    }
}

TEST_P(FingerprintMerge, SizesWithoutRoundNumbersAreMergedAlike)
{
    for (const QSize& size : {QSize(401, 203), QSize(99, 1), QSize(1, 77), QSize(333, 501)}) {
        SCOPED_TRACE(testing::Message() << size.width() << " x " << size.height());
        ASSERT_TRUE(start(size.width(), size.height()));
        draw(scribble(model(), 1));
        take(ridges(1), 1);
        expectSame("after the print");
        draw(scribble(model(), 2));
        expectSame("after strokes");
    }
}

TEST_P(FingerprintMerge, PrintOnAPictureOfItsOwnLeavesTheSignatureAlone)
{
    for (const QSize& size : canvasSizes) {
        SCOPED_TRACE(testing::Message() << size.width() << " x " << size.height());
        ASSERT_TRUE(start(size.width(), size.height()));
        ASSERT_EQ(placeElsewhere(QRect(7, 3, 81, 27)), 0);
        runCourse(size);
        EXPECT_TRUE(same(canvas(), m_copy->strokes())) << "the signature carries the print";
    }
}

TEST_P(FingerprintMerge, StrokesStayAsTheyAreBeforeAnyPrint)
{
    draw(scribble(model(), 1));
    EXPECT_TRUE(same(canvas(), m_copy->strokes()));
}

TEST_P(FingerprintMerge, EveryPixelIsOpaque)
{
    draw(scribble(model(), 1));
    take(ridges(1), 1);
    draw(scribble(model(), 2));
    const QImage seen = decoded(encodeEx(ImagePng, false));
    EXPECT_TRUE(same(seen, m_copy->canvas()));
    for (int y = 0; y < seen.height(); ++y) {
        for (int x = 0; x < seen.width(); ++x)
            ASSERT_EQ(qAlpha(seen.pixel(x, y)), 255) << x << ", " << y;
    }
}

TEST_P(FingerprintMerge, InkKeepsDarkAndWhiteTurnsRed)
{
    EXPECT_EQ(api().SetPenStyle(type(), false), 0);
    m_copy->setWithPressure(false);
    setPenWidth(10);
    Bytes dark = evenPrint(10);
    std::fill_n(dark.begin(), 10 * printWidth, 255); // the first rows lift the mean, so that all else is red
    take(dark, 1);
    draw(stroke(model(), {{0.0, 0.5}, {1.0, 0.5}}));
    setPenColor(QColor(0, 200, 100));
    draw(stroke(model(), {{0.0, 0.65}, {1.0, 0.65}}));
    const QImage seen = canvas();
    EXPECT_TRUE(same(seen, m_copy->canvas()));
    EXPECT_EQ(seen.pixel(200, 70), 0xffff0000u);
    EXPECT_EQ(seen.pixel(200, 100), 0xff000000u);
    EXPECT_EQ(seen.pixel(200, 130), 0xff000000u); // green and red have no bit in common
    EXPECT_EQ(seen.pixel(20, 130), 0xff00c864u);
    EXPECT_EQ(seen.pixel(20, 20), 0xffffffffu);
}

TEST_P(FingerprintMerge, RectangleInTheMiddleIsNotRounded)
{
    removeLogs();
    take(ridges(1), 1);
    EXPECT_EQ(
        afterTicks(inThreadLog(), merge()),
        (Texts{"-Enter...", "-m_nNewFPProcessActionID == NFPPA_NONE",
               "-dblTargetFPHeight=100.000000, dblTargetFPWidth=72.222222",
               "-dblTargetFPX=163.888889, dblTargetFPY=50.000000",
               "-rcTargetFP.left=163.888889, top=50.000000, width=72.222222, height=100.000000",
               "-rcSourceFP.left=0.000000, top=0.000000, width=208.000000, height=288.000000", "-leave !"}));
}

TEST_P(FingerprintMerge, EverySegmentWritesTheMergesLines)
{
    take(ridges(1), 1);
    for (const bool placed : {false, true}) {
        if (placed) {
            ASSERT_EQ(placeElsewhere(QRect(10, 5, 20, 20)), 0);
        }
        logged([&] { draw(stroke(model(), {{0.1, 0.1}, {0.1, 0.1, 0.0}, {0.12, 0.1}, {0.9, 0.9}})); });
        Texts expected;
        for (int segment = 0; segment < 3; ++segment) {
            const Texts one = mergeTexts(QSize(400, 200));
            expected.insert(expected.end(), one.begin(), one.end());
        }
        EXPECT_EQ(afterTicks(mainLog(), merge()), expected);
        EXPECT_TRUE(textsOf(inThreadLog(), merge()).empty());
        const std::string update = "CK421BFPWidget::UpdateFPImage()";
        EXPECT_TRUE(textsOf(inThreadLog(), update).empty());
        const Texts updates = textsOf(mainLog(), update);
        EXPECT_EQ(std::count(updates.begin(), updates.end(), "enter..."), placed ? 3 : 0);
    }
}

TEST_P(FingerprintMerge, LinesOfASegmentStandInTheirOrder)
{
    logged([&] { draw(stroke(model(), {{0.1, 0.1}, {0.12, 0.1}})); });
    Texts order;
    for (const LogLine& line : mainLog()) {
        if (line.label == method("StartSignOnCanvas"))
            order.push_back(line.text.starts_with("enter, dblX=") ? "segment" : line.text);
        else if (line.label == merge() && (line.text == "Enter..." || line.text == "leave !"))
            order.push_back("merge " + line.text);
    }
    Texts expected = {"segment", "merge Enter...", "merge leave !"};
    if (!padCase().isWidget())
        expected.push_back("leave !");
    EXPECT_EQ(order, expected);
}

// ---- placements in every order

TEST_P(FingerprintMerge, PlacementAloneChangesNoPicture)
{
    draw(scribble(model(), 1));
    take(ridges(1), 1);
    const QImage centred = canvas();
    ASSERT_EQ(placeElsewhere(QRect(10, 5, 60, 20)), 0);
    EXPECT_TRUE(same(canvas(), centred));
    EXPECT_TRUE(same(printPicture(), blank(holderSize().width(), holderSize().height())));
    draw(stroke(model(), {{0.1, 0.1}, {0.12, 0.1}}));
    expectSame("after the next segment");
    EXPECT_FALSE(same(canvas(), centred));
    EXPECT_FALSE(same(printPicture(), blank(holderSize().width(), holderSize().height())));

    if (padCase().isWidget()) {
        const QImage alone = canvas();
        ASSERT_EQ(placeSame(QRect(5, 6, 70, 90)), 0);
        EXPECT_TRUE(same(canvas(), alone));
        draw(stroke(model(), {{0.2, 0.1}, {0.22, 0.1}}));
        expectSame("after the next segment inside");
        ASSERT_EQ(placeSame(QRect(300, 6, 70, 90)), 0);
        const QImage left = m_copy->canvas();
        EXPECT_TRUE(same(canvas(), left));
        draw(stroke(model(), {{0.3, 0.1}, {0.32, 0.1}}));
        expectSame("after the next segment at another place");
    }
}

TEST_P(FingerprintMerge, AnyOrderOfEventsGivesTheSamePicture)
{
    for (unsigned seed = 1; seed <= 6; ++seed) {
        std::mt19937 random(seed);
        const auto within = [&](int least, int most) {
            return least + static_cast<int>(random() % static_cast<unsigned>(most - least + 1));
        };
        QSize size = seed % 3 == 0 ? QSize(800, 400) : QSize(400, 200);
        ASSERT_TRUE(start(size.width(), size.height()));
        draw(scribble(model(), seed, 5));
        int score = 0;
        bool ink = true;
        std::string history;
        for (int step = 0; step < 50 && !HasFailure(); ++step) {
            switch (within(0, 9)) {
            case 0:
            case 1:
                take(ridges(seed * 100 + static_cast<unsigned>(step)), ++score);
                history += " print";
                break;
            case 2:
                clear();
                score = 0;
                ink = false;
                history += " clear";
                break;
            case 3:
                if (padCase().isWidget()) {
                    const int left = within(0, size.width() - 1);
                    const int top = within(0, size.height() - 1);
                    const QRect place(left, top, within(0, size.width() - left),
                                      within(0, size.height() - top));
                    const bool inside = QRect(QPoint(0, 0), size).contains(place.bottomRight());
                    EXPECT_EQ(placeSame(place), inside ? 0 : -2);
                    if (!inside)
                        m_copy->storePlace(place);
                    history += " same";
                }
                break;
            case 4: {
                const int left = within(0, 90);
                const int top = within(0, 25);
                EXPECT_EQ(placeElsewhere(QRect(left, top, within(1, 100 - left), within(1, 30 - top))), 0);
                history += " elsewhere";
                break;
            }
            case 5:
                if (padCase().isWidget()) {
                    size = QSize(within(200, 700), within(100, 500));
                    resize(size.width(), size.height());
                    history += " resize";
                }
                break;
            case 6:
                setPenWidth(within(1, 10));
                setPenColor(QColor(within(0, 255), within(0, 255), within(0, 255)));
                history += " pen";
                break;
            default:
                draw(scribble(model(), static_cast<unsigned>(within(0, 100000)), within(1, 8)));
                ink = true;
                history += " strokes";
            }
            if (ink || score > 0)
                expectSame("after" + history);
        }
        EXPECT_EQ(pad().stop(), 0);
        m_otherWindows.clear();
        if (HasFailure())
            break;
    }
}

// ---- a long signature, compared while it grows

class FingerprintLongSignature : public FingerprintTest
{
protected:
    // Segment by segment; what else happens is spread over the signature.
    void sign(const QSize& size, int compareEvery)
    {
        ASSERT_TRUE(start(size.width(), size.height()));
        const std::vector<ScrSimSample> samples = longSignature(model(), 2000, 77);
        int score = 0;
        const auto print = [&](unsigned seed) { take(ridges(seed), ++score); };
        const QRect inside(size.width() / 3, 3, size.width() / 2, size.height() - 9);
        const std::map<std::size_t, std::function<void()>> events = {
            {1, [&] { setPenWidth(1); }}, // pressures up to 305 give less than a pixel
            {200, [&] { print(1); }},
            {600,
             [&] {
                 setPenWidth(3);
                 setPenColor(QColor(20, 60, 180));
             }},
            {700, [&] { print(2); }},
            {800,
             [&] {
                 EXPECT_EQ(padCase().isWidget() ? placeSame(inside) : placeElsewhere(QRect(30, 20, 150, 200)),
                           0);
             }},
            {1000,
             [&] {
                 setPenWidth(1);
                 setPenColor(Qt::black);
             }},
            {1200,
             [&] {
                 clear();
                 score = 0;
             }},
            {1250, [&] { print(3); }},
            {1400,
             [&] {
                 if (padCase().isWidget())
                     resize(size.width() - 51, size.height() + 40);
             }},
            {1500, [&] { print(4); }},
            {1700, [&] { setPenWidth(10); }}};
        for (std::size_t i = 0; i < samples.size() && !HasFailure(); ++i) {
            if (const auto event = events.find(i); event != events.end())
                event->second();
            draw({samples[i]});
            if (i > 0 && (i % static_cast<std::size_t>(compareEvery) == 0 || i + 1 == samples.size()))
                expectSame("after segment " + std::to_string(i));
        }
    }
};

TEST_P(FingerprintLongSignature, IsRightAtSmallSize)
{
    sign(QSize(400, 200), 10);
}

TEST_P(FingerprintLongSignature, IsRightAtMediumSize)
{
    sign(QSize(800, 400), 50);
}

TEST_P(FingerprintLongSignature, IsRightAtLargeSize)
{
    sign(QSize(1920, 960), 50);
}

// Processor time of the driver's thread, in nanoseconds, at the first and the last point of a row: what other
// processes do meanwhile does not count.
std::atomic<long long> firstPoint = 0;
std::atomic<long long> lastPoint = 0;

void noteDriverTime(unsigned long, long)
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    lastPoint = time.tv_sec * 1000000000LL + time.tv_nsec;
    if (firstPoint == 0)
        firstPoint = lastPoint.load();
}

TEST_P(FingerprintMerge, SegmentCostsNoMoreOnALargerCanvas)
{
    std::vector<double> best;
    for (const QSize& size : {QSize(400, 200), QSize(1920, 960)}) {
        ASSERT_TRUE(start(size.width(), size.height()));
        take(ridges(1), 1);
        // Short thin segments, the same number of pixels on either canvas.
        std::vector<ScrSimSample> samples;
        for (int i = 0; i < 2000; ++i) {
            samples.push_back({model().originX + model().areaWidth / 2 + (i % 2) * 21170 * 3 / size.width(),
                               model().originY + model().areaHeight / 2, 200, i == 0 ? PenDown : PenMove});
        }
        double least = 1e9;
        EXPECT_TRUE(api().RealTimeSignatureDataCallback(type(), noteDriverTime));
        for (int round = 0; round < 9; ++round) {
            firstPoint = 0;
            pad().draw(samples);
            least = std::min(least, static_cast<double>(lastPoint - firstPoint) / 1000 / 1999);
        }
        best.push_back(least);
        EXPECT_EQ(pad().stop(), 0);
    }
    // Merging the whole canvas would cost some twenty times as much on the larger one.
    EXPECT_LT(best[1], best[0] * 5) << best[0] << " and " << best[1] << " microseconds a segment";
}

SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintMerge);
SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintLongSignature);

// ---- the widget only

class FingerprintWidgetMerge : public FingerprintMerge
{
};

TEST_P(FingerprintWidgetMerge, PrintStandsInTheHostsRectangle)
{
    for (const QSize& size : canvasSizes) {
        SCOPED_TRACE(testing::Message() << size.width() << " x " << size.height());
        ASSERT_TRUE(start(size.width(), size.height()));
        ASSERT_EQ(placeSame(QRect(11, 7, 93, 71)), 0);
        runCourse(size);
    }
}

TEST_P(FingerprintWidgetMerge, AnyRectangleInsideIsMerged)
{
    draw(scribble(model(), 1));
    take(ridges(1), 1);
    // Empty and turned ones too: only the corners are looked at.
    for (const QRect& place :
         {QRect(0, 0, 400, 200), QRect(0, 0, 1, 1), QRect(399, 199, 1, 1), QRect(10, 10, 208, 144),
          QRect(13, 17, 301, 3), QRect(50, 40, 0, 50), QRect(50, 40, 50, 0), QRect(50, 40, 0, 0),
          QRect(100, 40, -30, 50), QRect(100, 90, 50, -30), QRect(100, 90, -30, -30)}) {
        SCOPED_TRACE(testing::Message()
                     << place.x() << ", " << place.y() << ", " << place.width() << " x " << place.height());
        ASSERT_EQ(placeSame(place), 0);
        draw(scribble(model(), 2, 3));
        expectSame("after a segment");
    }
}

TEST_P(FingerprintWidgetMerge, ResizeKeepsThePictureUntilTheNextMerge)
{
    take(ridges(1), 5);
    draw(scribble(model(), 1));
    const QImage before = m_copy->canvas();
    resize(500, 260);
    EXPECT_TRUE(same(canvas().copy(0, 0, 400, 200), before));
    expectSame("after resize");
    // The strokes and the print are gone with the next segment, the score is not.
    draw(stroke(model(), {{0.1, 0.1}, {0.15, 0.1}}));
    expectSame("after a segment");
    EXPECT_EQ(canvas().pixel(250, 130), 0xffffffffu);
    logged([&] { send(ridges(2), 5); });
    EXPECT_EQ(textsOf(mainLog(), method("RxK421BSignPadFPRawData")).size(), 2u); // refused
    take(ridges(2), 6);
    expectSame("after a better print");
}

TEST_P(FingerprintWidgetMerge, PrintIsPaintedWithoutAnyCall)
{
    processEvents();
    PaintCounter counter(pad().signWidget());
    take(ridges(1), 1);
    EXPECT_TRUE(waitUntil([&] { return counter.paints > 0; }));
    EXPECT_TRUE(
        same(pad().signWidget()->grab().toImage().convertToFormat(QImage::Format_ARGB32), m_copy->canvas()));
}

SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintWidgetMerge, Kind::Widget);

} // namespace
} // namespace scribera::test
