// Where the print goes: the host's rectangle, its own widget in another window, a canvas without a window.

#include <climits>
#include <cstring>
#include <sstream>
#include <thread>

#include <unistd.h>

#include <QApplication>
#include <QPointer>

#include "fingerprint_reference.h"

namespace scribera::test {
namespace {

const char* const printWidgetLabel = "CK421BFPWidget::";
const char* const badPlace =
    "leave with ARI_INVALID_PARAMETERS due to invalid nFPLeft, nFPTop, nFPWidth, nFPHeight !";

std::string numbers(const QRect& place)
{
    return "nFPLeft=" + std::to_string(place.left()) + ", nFPTop=" + std::to_string(place.top()) +
           ", nFPWidth=" + std::to_string(place.width()) + ", nFPHeight=" + std::to_string(place.height());
}

class FingerprintPlacement : public OpenFingerprintTest
{
protected:
    std::string label(const char* name) const { return printWidgetLabel + std::string(name) + "()"; }
    std::string placing() const { return method("SetDisplayedFPImageAt"); }

    void segment() { draw(stroke(model(), {{0.1, 0.1}, {0.12, 0.1}})); }
    QImage grabbed(QWidget* widget, const QSize& size)
    {
        return widget->grab()
            .toImage()
            .convertToFormat(QImage::Format_ARGB32)
            .copy(0, 0, size.width(), size.height());
    }
    QImage whiteHolder() const { return blank(holderSize().width(), holderSize().height()); }
};

// ---- both kinds

TEST_P(FingerprintPlacement, ClearWipesThePicturesOfThePrint)
{
    ASSERT_EQ(placeElsewhere(QRect(2, 3, 70, 20)), 0);
    take(ridges(1), 1);
    EXPECT_TRUE(same(printPicture(), m_copy->holder()));
    EXPECT_FALSE(same(printPicture(), whiteHolder()));
    clear();
    EXPECT_TRUE(same(printPicture(), whiteHolder()));
    if (padCase().isWidget()) {
        EXPECT_TRUE(same(grabbed(printWidget(), holderSize()), whiteHolder()));
    }
    segment();
    EXPECT_TRUE(same(printPicture(), whiteHolder()));
    take(ridges(2), 1);
    expectSame("after clear and a print");
}

TEST_P(FingerprintPlacement, FirstMergeAfterThePlacementShowsThePrint)
{
    take(ridges(1), 1);
    ASSERT_EQ(placeElsewhere(QRect(2, 3, 70, 20)), 0);
    EXPECT_TRUE(same(printPicture(), whiteHolder()));
    take(ridges(2), 2);
    expectSame("after the next print");
    segment();
    expectSame("after a segment");
}

TEST_P(FingerprintPlacement, SecondPlacementStartsWithAWhitePicture)
{
    ASSERT_EQ(placeElsewhere(QRect(2, 3, 70, 20)), 0);
    take(ridges(1), 1);
    ASSERT_EQ(placeElsewhere(QRect(30, 10, 20, 20)), 0);
    EXPECT_TRUE(same(printPicture(), whiteHolder()));
    segment();
    expectSame("after a segment");
}

TEST_P(FingerprintPlacement, UpdateWritesItsLinesWhereItsCallerDoes)
{
    ASSERT_EQ(placeElsewhere(QRect(2, 3, 70, 20)), 0);
    const std::string update = label("UpdateFPImage");
    Texts expected = {"-enter...",
                      "-rcTargetFP.left=2.000000, top=3.000000, width=70.000000, height=20.000000",
                      "-rcSourceFP.left=0.000000, top=0.000000, width=208.000000, height=288.000000"};
    if (padCase().isWidget())
        expected.push_back("-b4 call update()...");
    expected.push_back("-leave...");
    removeLogs();
    take(ridges(1), 1);
    EXPECT_EQ(afterTicks(inThreadLog(), update), expected);
    EXPECT_TRUE(textsOf(mainLog(), update).empty());
    EXPECT_EQ(afterTicks(inThreadLog(), method("MergeSignCanvasAndFPCanvas")), mergeTexts(QSize(400, 200)));
    logged([&] { segment(); });
    EXPECT_EQ(afterTicks(mainLog(), update), expected);
    EXPECT_TRUE(textsOf(inThreadLog(), update).empty());
}

TEST_P(FingerprintPlacement, WritesItsLines)
{
    const QRect rectangle(2, 3, 70, 20);
    const std::vector<LogLine> lines = logged([&] { EXPECT_EQ(placeElsewhere(rectangle), 0); });
    QWidget* parent = padCase().isWidget() ? &otherWindow() : nullptr;
    const std::string canvas = "nCanvasWidth=" + std::to_string(holderSize().width()) +
                               ", nCanvasHeight=" + std::to_string(holderSize().height());
    EXPECT_EQ(textsOf(lines, exported("SetDisplayedFPImageAt")),
              (Texts{"Enter, nDeviceType=7, pParentWidget=" + hex(parent) + ", " + canvas + ", " +
                         numbers(rectangle),
                     "leave with nResult=0 !"}));
    const Texts member = textsOf(lines, placing());
    ASSERT_FALSE(member.empty());
    EXPECT_EQ(member.front(), padCase().isWidget()
                                  ? "Enter, pParentWidget=" + hex(parent) + ", " + numbers(rectangle)
                                  : "Enter, " + canvas + ", " + numbers(rectangle));
    EXPECT_TRUE(member.back().starts_with("leave")) << member.back();
    EXPECT_EQ(textsOf(lines, label("CK421BFPWidget")), (Texts{"Enter...", "leave !"}));
    EXPECT_EQ(textsOf(lines, label("SetDisplayedFPImageAt")),
              (Texts{member.front(), "leave with ARI_SUCCESS..."}));
    EXPECT_TRUE(inThreadLog().empty() || textsOf(inThreadLog(), placing()).empty());

    logged([&] { EXPECT_EQ(pad().stop(), 0); });
    EXPECT_EQ(textsOf(mainLog(), label("Shutdown")), (Texts{"Enter...", "leave !"}));
}

TEST_P(FingerprintPlacement, ByWindowIdWritesItsLines)
{
    std::unique_ptr<QWidget> window;
    if (padCase().isWidget()) {
        window = std::make_unique<QWidget>();
        window->show();
    }
    const QRect rectangle(2, 3, 70, 20);
    logged([&] {
        EXPECT_EQ(api().SetDisplayedFPImageAtByWId(type(), window ? window->winId() : 0, 300, 260,
                                                   rectangle.left(), rectangle.top(), rectangle.width(),
                                                   rectangle.height()),
                  0);
    });
    EXPECT_EQ(textsOf(mainLog(), exported("SetDisplayedFPImageAtByWId")),
              (Texts{"Enter, nDeviceType=7, nCanvasWidth=300, nCanvasHeight=260, " + numbers(rectangle),
                     "leave with nResult=0 !"}));
    EXPECT_EQ(textsOf(mainLog(), placing()).size(), 2u);
    EXPECT_EQ(pad().stop(), 0);
}

SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintPlacement);

// ---- widget

class FingerprintWidgetPlacement : public FingerprintPlacement
{
};

struct PlaceAndResult
{
    QRect place;
    int result;
};

TEST_P(FingerprintWidgetPlacement, SameWindowLooksAtTheCornersOnly)
{
    const PlaceAndResult cases[] = {
        {QRect(0, 0, 400, 200), 0},    {QRect(1, 0, 400, 200), -2},  {QRect(0, 1, 400, 200), -2},
        {QRect(0, 0, 401, 200), -2},   {QRect(0, 0, 400, 201), -2},  {QRect(-1, 0, 10, 10), -2},
        {QRect(0, -1, 10, 10), -2},    {QRect(399, 199, 1, 1), 0},   {QRect(400, 199, 0, 1), -2},
        {QRect(0, 0, 0, 10), -2},      {QRect(0, 0, 10, 0), -2},     {QRect(1, 1, 0, 0), 0},
        {QRect(0, 0, 0, 0), -2},       {QRect(10, 10, -5, 10), 0},   {QRect(10, 10, -9, -9), 0},
        {QRect(10, 10, -10, 10), -2},  {QRect(10, 10, 10, -10), -2}, {QRect(399, 199, -398, -198), 0},
        {QRect(399, 199, -399, 1), -2}};
    for (const PlaceAndResult& one : cases) {
        SCOPED_TRACE(numbers(one.place));
        logged([&] { EXPECT_EQ(place(pad().parent(), QRect(), one.place), one.result); });
        EXPECT_EQ(textsOf(mainLog(), placing()),
                  (Texts{"Enter, pParentWidget=" + hex(pad().parent()) + ", " + numbers(one.place),
                         one.result == 0 ? "leave with ARI_SUCCESS..." : badPlace}));
        EXPECT_EQ(textsOf(mainLog(), exported("SetDisplayedFPImageAt")).back(),
                  "leave with nResult=" + std::to_string(one.result) + " !");
    }
    const std::vector<std::vector<int>> absurd = {{INT_MAX, INT_MAX, INT_MAX, INT_MAX},
                                                  {0, 0, INT_MAX, 10},
                                                  {0, 0, 10, INT_MIN},
                                                  {INT_MIN, 0, INT_MAX, 10},
                                                  {10, 10, INT_MIN, INT_MIN},
                                                  {399, 199, INT_MAX, 1}};
    for (const std::vector<int>& one : absurd) {
        EXPECT_EQ(api().SetDisplayedFPImageAt(type(), pad().parent(), 0, 0, one[0], one[1], one[2], one[3]),
                  -2)
            << testing::PrintToString(one);
        segment();
    }
    EXPECT_TRUE(printWidgets(pad().parent()).empty());
}

TEST_P(FingerprintWidgetPlacement, RefusedRectangleStaysStoredAndTheActionUnchanged)
{
    take(ridges(1), 1);
    EXPECT_EQ(placeSame(QRect(300, 10, 200, 150)), -2);
    m_copy->storePlace(QRect(300, 10, 200, 150));
    segment();
    expectSame("after a refused first placement"); // still in the middle
    ASSERT_EQ(placeSame(QRect(10, 10, 100, 150)), 0);
    segment();
    expectSame("after a placement");
    EXPECT_EQ(placeSame(QRect(300, 10, 200, 150)), -2);
    m_copy->storePlace(QRect(300, 10, 200, 150));
    expectSame("before the next segment");
    segment();
    expectSame("after a refused second placement"); // at the refused place
}

TEST_P(FingerprintWidgetPlacement, NoWindowIsRefused)
{
    logged([&] { EXPECT_EQ(place(nullptr, QRect(0, 0, 300, 300), QRect(1, 1, 10, 10)), -2); });
    EXPECT_EQ(textsOf(mainLog(), placing()),
              (Texts{"Enter, pParentWidget=0, nFPLeft=1, nFPTop=1, nFPWidth=10, nFPHeight=10",
                     "leave with ARI_INVALID_PARAMETERS due to pParentWidget == nullptr !"}));
    EXPECT_EQ(textsOf(mainLog(), exported("SetDisplayedFPImageAt")).back(), "leave with nResult=-2 !");
}

TEST_P(FingerprintWidgetPlacement, UnknownWindowIdIsMinusOne)
{
    for (const WindowId id : {WindowId(0), WindowId(0x7ffffff0), ~WindowId(0)}) {
        logged([&] { EXPECT_EQ(api().SetDisplayedFPImageAtByWId(type(), id, 300, 300, 1, 1, 10, 10), -1); });
        EXPECT_EQ(textsOf(mainLog(), exported("SetDisplayedFPImageAtByWId")).back(),
                  "leave with nResult=-1 !");
        EXPECT_TRUE(textsOf(mainLog(), placing()).empty());
    }
}

TEST_P(FingerprintWidgetPlacement, WindowIdLeadsToTheSamePlaces)
{
    take(ridges(1), 1);
    ASSERT_EQ(api().SetDisplayedFPImageAtByWId(type(), pad().parent()->winId(), 0, 0, 20, 30, 50, 60), 0);
    m_copy->placeSame(QRect(20, 30, 50, 60));
    segment();
    expectSame("in the sign widget's window");
    QWidget other;
    other.resize(200, 100);
    other.show();
    ASSERT_EQ(api().SetDisplayedFPImageAtByWId(type(), other.winId(), 0, 0, 5, 6, 50, 20), 0);
    m_copy->placeElsewhere(Placement::OtherWidget, QSize(100, 30), QRect(5, 6, 50, 20));
    ASSERT_EQ(printWidgets(&other).size(), 1u);
    segment();
    expectSame("in another window");
    EXPECT_EQ(pad().stop(), 0);
    processEvents();
}

TEST_P(FingerprintWidgetPlacement, OtherWindowIsCheckedAgainstTheNewChildsOwnSize)
{
    for (const PlaceAndResult& one : {PlaceAndResult{QRect(0, 0, 100, 30), 0},
                                      {QRect(1, 0, 100, 30), -2},
                                      {QRect(0, 1, 100, 30), -2},
                                      {QRect(99, 29, 1, 1), 0},
                                      {QRect(-1, 0, 5, 5), -2},
                                      {QRect(0, 0, 0, 5), -2},
                                      {QRect(50, 10, -20, 0), 0},
                                      {QRect(0, 0, 101, 30), -2}}) {
        SCOPED_TRACE(numbers(one.place));
        const std::vector<LogLine> lines = logged([&] { EXPECT_EQ(placeElsewhere(one.place), one.result); });
        if (one.result != 0) {
            EXPECT_EQ(textsOf(lines, label("SetDisplayedFPImageAt")).back(), badPlace);
            EXPECT_EQ(textsOf(lines, placing()).back(),
                      "leave due to m_pNewFPWidget->SetDisplayedFPImageAt() failed, nResult=-2");
        }
        EXPECT_EQ(textsOf(lines, exported("SetDisplayedFPImageAt")).back(),
                  "leave with nResult=" + std::to_string(one.result) + " !");
        ASSERT_EQ(printWidgets(&otherWindow()).size(), 1u);
        EXPECT_EQ(printWidget()->isVisible(), one.result == 0);
    }
}

TEST_P(FingerprintWidgetPlacement, PrintWidgetCoversItsWindowAndPaintsThePrint)
{
    ASSERT_EQ(placeElsewhere(QRect(4, 2, 90, 25)), 0);
    QWidget* const widget = printWidget();
    ASSERT_NE(widget, nullptr);
    EXPECT_STREQ(widget->metaObject()->className(), "CK421BFPWidget");
    EXPECT_EQ(widget->parentWidget(), &otherWindow());
    EXPECT_EQ(widget->geometry(), QRect(0, 0, 320, 240));
    EXPECT_TRUE(widget->isVisible());
    EXPECT_TRUE(same(grabbed(widget, QSize(100, 30)), blank(100, 30)));
    take(ridges(1), 1);
    EXPECT_TRUE(same(grabbed(widget, QSize(100, 30)), m_copy->holder()));
}

TEST_P(FingerprintWidgetPlacement, PrintWidgetIsRepaintedByItself)
{
    ASSERT_EQ(placeElsewhere(QRect(4, 2, 90, 25)), 0);
    processEvents();
    PaintCounter counter(printWidget());
    take(ridges(1), 1);
    EXPECT_TRUE(waitUntil([&] { return counter.paints > 0; }));
    counter.paints = 0;
    processEvents();
    clear();
    EXPECT_TRUE(waitUntil([&] { return counter.paints > 0; }));
}

// Such a rectangle passes the look at its corners, and what is drawn lies outside of it.
TEST_P(FingerprintWidgetPlacement, PrintOfATurnedRectangleIsRepaintedToo)
{
    const QRect turned(QPoint(50, 20), QSize(-10, -5));
    ASSERT_EQ(placeElsewhere(turned), 0);
    processEvents();
    // A print widget that was shown without a print.
    const QImage before = grabbed(printWidget(), holderSize());
    PaintCounter exposed(printWidget());
    take(ridges(1), 1);
    EXPECT_TRUE(same(printPicture(), m_copy->holder()));
    EXPECT_FALSE(same(printPicture(), before));
    EXPECT_TRUE(waitUntil([&] { return !exposed.region.isEmpty(); }));
    EXPECT_TRUE(exposed.region.contains(QRect(QPoint(0, 0), holderSize())));
}

TEST_P(FingerprintWidgetPlacement, HiddenPrintWidgetIsNotAskedToRepaint)
{
    QWidget hidden;
    ASSERT_EQ(place(&hidden, QRect(), QRect(4, 2, 90, 25)), 0);
    removeLogs();
    take(ridges(1), 1);
    EXPECT_EQ(textsOf(inThreadLog(), label("UpdateFPImage")).size(), 4u);
    m_copy->placeElsewhere(Placement::OtherWidget, QSize(100, 30), QRect(4, 2, 90, 25));
    m_copy->merge();
    expectSame("in a hidden window");
    EXPECT_EQ(pad().stop(), 0);
    processEvents();
}

TEST_P(FingerprintWidgetPlacement, PaintingThePrintWritesNoLine)
{
    ASSERT_EQ(placeElsewhere(QRect(4, 2, 90, 25)), 0);
    take(ridges(1), 1);
    processEvents();
    logged([&] {
        printWidget()->repaint();
        printWidget()->grab();
    });
    for (const std::vector<LogLine>& lines : {mainLog(), inThreadLog()}) {
        for (const LogLine& line : lines)
            EXPECT_EQ(line.label.find(printWidgetLabel), std::string::npos) << testing::PrintToString(line);
    }
}

TEST_P(FingerprintWidgetPlacement, FailedPlacementInAnotherWindowReplacesThePrintWidgetAllTheSame)
{
    ASSERT_EQ(placeElsewhere(QRect(4, 2, 90, 25)), 0);
    take(ridges(1), 1);
    const QImage first = m_copy->holder();
    QWidget* const firstWidget = printWidget();
    EXPECT_EQ(placeElsewhere(QRect(60, 10, 80, 15)), -2);
    m_copy->replaceHolder(QSize(100, 30), QRect(60, 10, 80, 15));
    EXPECT_TRUE(same(printPicture(), blank(100, 30)));
    segment();
    expectSame("after the next segment");
    EXPECT_TRUE(same(grabbed(firstWidget, QSize(100, 30)), first)) << "the first one is not used any more";
}

TEST_P(FingerprintWidgetPlacement, FailedFirstPlacementElsewhereLeavesThePrintInTheMiddle)
{
    EXPECT_EQ(placeElsewhere(QRect(60, 10, 80, 15)), -2);
    take(ridges(1), 1);
    expectSame("after the print");
}

TEST_P(FingerprintWidgetPlacement, ReplacedPrintWidgetsStayUntilTheEnd)
{
    std::vector<QPointer<QWidget>> widgets;
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(placeElsewhere(QRect(i, i, 20, 20)), 0);
        widgets.emplace_back(printWidget());
        take(ridges(static_cast<unsigned>(i)), i + 1);
        processEvents();
    }
    ASSERT_EQ(placeSame(QRect(0, 0, 10, 10)), 0);
    processEvents();
    for (const QPointer<QWidget>& widget : widgets)
        EXPECT_FALSE(widget.isNull());
    // Only the newest was fed by each print.
    EXPECT_TRUE(same(grabbed(widgets.back(), QSize(100, 30)), m_copy->holder()));
    EXPECT_EQ(pad().stopKeepingParent(), 0);
    processEvents();
    for (const QPointer<QWidget>& widget : widgets)
        EXPECT_TRUE(widget.isNull());
}

TEST_P(FingerprintWidgetPlacement, TwoPlacementsInOneWindowMakeTwoWidgets)
{
    QWidget window;
    window.show();
    ASSERT_EQ(place(&window, QRect(), QRect(1, 1, 20, 20)), 0);
    ASSERT_EQ(place(&window, QRect(), QRect(2, 2, 20, 20)), 0);
    processEvents();
    EXPECT_EQ(printWidgets(&window).size(), 2u);
    EXPECT_EQ(pad().stop(), 0);
    processEvents();
    EXPECT_TRUE(printWidgets(&window).empty());
}

TEST_P(FingerprintWidgetPlacement, WindowMayTakeItsPrintWidgetAlong)
{
    ASSERT_EQ(placeElsewhere(QRect(1, 1, 20, 20)), 0);
    take(ridges(1), 1);
    ASSERT_EQ(placeElsewhere(QRect(2, 2, 20, 20)), 0);
    m_otherWindows.erase(m_otherWindows.begin()); // a replaced one
    segment();
    expectSame("after the end of a replaced one");
    m_otherWindows.clear(); // the one in use
    processEvents();
    m_copy->clear(); // no placement to be seen; compare the strokes of a fresh signature
    EXPECT_EQ(api().Clear(type()), 0);
    segment();
    EXPECT_TRUE(same(canvas(), m_copy->strokes()));
    EXPECT_TRUE(printText(ImageBmp, false).isNull());
    EXPECT_TRUE(printText(ImagePng, true).isNull());
    send(ridges(2), 1);
    ASSERT_TRUE(waitUntil([&] { return sim().TransferCount() == 2; }));
    segment();
    EXPECT_TRUE(same(canvas(), m_copy->strokes()));
    ASSERT_EQ(placeElsewhere(QRect(3, 3, 20, 20)), 0);
    m_copy->takePrint(ridges(2));
    segment();
    expectSame("after a new placement");
}

TEST_P(FingerprintWidgetPlacement, WindowMayGoWhileThePrintArrives)
{
    int score = 0;
    for (int round = 0; round < 40; ++round) {
        ASSERT_EQ(placeElsewhere(QRect(1, 1, 80, 25)), 0);
        const Bytes print = ridges(static_cast<unsigned>(round));
        ASSERT_EQ(sim().SendFingerprint(print.data(), static_cast<int>(print.size()), ++score), 0);
        sim().queue(longSignature(model(), 20, static_cast<unsigned>(round)));
        m_otherWindows.clear();
        sim().waitIdle();
    }
    EXPECT_TRUE(printText(ImageBmp, false).isNull());
}

TEST_P(FingerprintWidgetPlacement, OffTheGuiThreadIsMinusOne)
{
    QWidget other;
    other.show();
    int result = 0;
    logged([&] { std::thread([&] { result = place(&other, QRect(), QRect(1, 1, 20, 20)); }).join(); });
    EXPECT_EQ(result, -1);
    EXPECT_EQ(textsOf(mainLog(), exported("SetDisplayedFPImageAt")).back(), "leave with nResult=-1 !");
    EXPECT_TRUE(printWidgets(&other).empty());
    take(ridges(1), 1);
    expectSame("after a refused placement"); // in the middle as before
}

SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintWidgetPlacement, Kind::Widget);

// ---- windowless

class FingerprintWindowlessPlacement : public FingerprintPlacement
{
};

TEST_P(FingerprintWindowlessPlacement, LooksAtTheCornersOfTheGivenCanvas)
{
    struct Case
    {
        QSize canvas;
        QRect place;
        int result;
    };
    for (const Case& one :
         {Case{QSize(100, 50), QRect(0, 0, 100, 50), 0}, Case{QSize(100, 50), QRect(1, 0, 100, 50), -2},
          Case{QSize(100, 50), QRect(0, 1, 100, 50), -2}, Case{QSize(100, 50), QRect(-1, 0, 5, 5), -2},
          Case{QSize(100, 50), QRect(0, 0, 0, 5), -2}, Case{QSize(100, 50), QRect(20, 20, 0, -5), 0},
          Case{QSize(1, 1), QRect(0, 0, 1, 1), 0}, Case{QSize(0, 0), QRect(0, 0, 1, 1), -2},
          Case{QSize(-5, 10), QRect(0, 0, 1, 1), -2},
          Case{QSize(2000, 1000), QRect(500, 500, 208, 288), 0}}) {
        SCOPED_TRACE(testing::Message()
                     << one.canvas.width() << " x " << one.canvas.height() << ", " << numbers(one.place));
        const std::vector<LogLine> lines = logged([&] {
            EXPECT_EQ(api().SetDisplayedFPImageAt(type(), nullptr, one.canvas.width(), one.canvas.height(),
                                                  one.place.left(), one.place.top(), one.place.width(),
                                                  one.place.height()),
                      one.result);
        });
        EXPECT_EQ(textsOf(lines, exported("SetDisplayedFPImageAt")).back(),
                  "leave with nResult=" + std::to_string(one.result) + " !");
        if (one.result != 0) {
            EXPECT_EQ(textsOf(lines, label("SetDisplayedFPImageAt")).back(), badPlace);
            EXPECT_EQ(textsOf(lines, placing()).back(),
                      "leave due to m_pNewFPWidget->SetDisplayedFPImageAt() failed, nResult=-2");
        } else {
            EXPECT_TRUE(same(printPicture(), blank(one.canvas.width(), one.canvas.height())));
        }
    }
}

TEST_P(FingerprintWindowlessPlacement, AbsurdSizesNeitherCrashNorDraw)
{
    take(ridges(1), 1);
    EXPECT_EQ(
        api().SetDisplayedFPImageAt(type(), nullptr, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX),
        -2);
    segment();
    EXPECT_EQ(api().SetDisplayedFPImageAt(type(), nullptr, 100, 100, 10, 10, INT_MIN, INT_MIN), -2);
    segment();
    EXPECT_EQ(api().SetDisplayedFPImageAt(type(), nullptr, INT_MIN, INT_MIN, 0, 0, 1, 1), -2);
    segment();
    EXPECT_EQ(api().SetDisplayedFPImageAt(type(), nullptr, INT_MAX, INT_MAX, 5, 5, 20, 20), 0);
    segment();
    api().FreeFPImageBase64Data(type(), api().GetFPImageBase64Data(type(), ImagePng, false));
    ASSERT_EQ(placeElsewhere(QRect(0, 0, 50, 60)), 0);
    segment();
    expectSame("after a sensible placement");
}

long long residentBytes()
{
    long long pages = 0;
    long long resident = 0;
    std::istringstream(fileContent("/proc/self/statm")) >> pages >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

TEST_P(FingerprintWindowlessPlacement, ManyPlacementsHoldOnePicture)
{
    constexpr long long picture = 1920LL * 1080 * 4;
    const auto place = [&](int width) {
        return api().SetDisplayedFPImageAt(type(), nullptr, 1920, 1080, 100, 50, width, 600);
    };
    ASSERT_EQ(place(400), 0);
    const long long before = residentBytes();
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(place(i % 2 == 0 ? 400 + i : 4000), i % 2 == 0 ? 0 : -2);
    // A sanitizer holds freed memory back, though not as much as 200 pictures.
    EXPECT_LT(residentBytes() - before, 50 * picture);
    ASSERT_EQ(place(500), 0);
    m_copy->placeElsewhere(Placement::OffScreen, QSize(1920, 1080), QRect(100, 50, 500, 600));
    take(ridges(1), 1);
    expectSame("after many placements");
}

TEST_P(FingerprintWindowlessPlacement, WindowIdAndWindowAreNotUsed)
{
    take(ridges(1), 1);
    for (const WindowId id : {WindowId(0), ~WindowId(0)}) {
        ASSERT_EQ(api().SetDisplayedFPImageAtByWId(type(), id, 120, 90, 10, 10, 50, 60), 0);
        m_copy->placeElsewhere(Placement::OffScreen, QSize(120, 90), QRect(10, 10, 50, 60));
        segment();
        expectSame("by window id");
    }
}

TEST_P(FingerprintWindowlessPlacement, FailedPlacementReplacesThePictureByAnUnsizedOne)
{
    EXPECT_EQ(placeElsewhere(QRect(-1, 0, 5, 5)), -2);
    take(ridges(1), 1);
    expectSame("after a refused first placement"); // in the middle
    EXPECT_TRUE(printText(ImageBmp, false).isNull());
    ASSERT_EQ(placeElsewhere(QRect(10, 10, 50, 60)), 0);
    segment();
    EXPECT_EQ(placeElsewhere(QRect(600, 30, 90, 60)), -2);
    m_copy->replaceHolder(QSize(640, 480), QRect(600, 30, 90, 60)); // the size of a new widget without parent
    segment();
    expectSame("after a refused second placement");
}

SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintWindowlessPlacement, Kind::Windowless);

// ---- windowless in a process that has an application

class FingerprintWindowlessBesideAnApplication : public FingerprintPlacement
{
protected:
    void SetUp() override
    {
        ensureApplication();
        FingerprintPlacement::SetUp();
    }

    void TearDown() override
    {
        closePad();
        m_otherWindows.clear();
    }

    static std::vector<QWidget*> parentless()
    {
        std::vector<QWidget*> found;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (std::strcmp(widget->metaObject()->className(), "CK421BFPWidget") == 0)
                found.push_back(widget);
        }
        return found;
    }
};

TEST_P(FingerprintWindowlessBesideAnApplication, PlacementMakesAWidgetAndTheNextOneOrTheEndFreesItAtOnce)
{
    ASSERT_EQ(placeElsewhere(QRect(10, 20, 150, 200)), 0);
    ASSERT_EQ(parentless().size(), 1u);
    QPointer<QWidget> first = parentless().front();
    EXPECT_FALSE(first->isVisible());
    take(ridges(1), 1);
    expectSame("after the print");
    ASSERT_EQ(placeElsewhere(QRect(30, 20, 100, 200)), 0);
    EXPECT_TRUE(first.isNull()); // without any event loop
    ASSERT_EQ(parentless().size(), 1u);
    QPointer<QWidget> second = parentless().front();
    segment();
    expectSame("after a second placement");
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    EXPECT_TRUE(second.isNull());
    EXPECT_TRUE(parentless().empty());
}

TEST_P(FingerprintWindowlessBesideAnApplication, AnotherThreadHoldsTheSamePictureWithoutAWidget)
{
    take(ridges(1), 1);
    int result = -99;
    std::thread([&] { result = placeElsewhere(QRect(10, 20, 150, 200)); }).join();
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(parentless().empty());
    segment();
    expectSame("after a placement on another thread");
}

TEST_P(FingerprintWindowlessBesideAnApplication, EndOnAnotherThreadLeavesNoWidget)
{
    ASSERT_EQ(placeElsewhere(QRect(10, 20, 150, 200)), 0);
    take(ridges(1), 1);
    int result = -99;
    std::thread([&] { result = api().UnInitialDevice(type()); }).join();
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(waitUntil([&] { return parentless().empty(); }));
}

TEST_P(FingerprintWindowlessBesideAnApplication, FailedPlacementReplacesThePictureByAnUnsizedOne)
{
    ASSERT_EQ(placeElsewhere(QRect(10, 10, 50, 60)), 0);
    take(ridges(1), 1);
    EXPECT_EQ(placeElsewhere(QRect(600, 30, 90, 60)), -2);
    m_copy->replaceHolder(QSize(640, 480), QRect(600, 30, 90, 60));
    segment();
    expectSame("after a refused second placement");
}

SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintWindowlessBesideAnApplication, Kind::Windowless);

} // namespace
} // namespace scribera::test
