// The signing canvas as a widget: its size, what it paints and when.

#include <algorithm>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

#include <QCoreApplication>
#include <QMouseEvent>

#include "pen.h"

namespace scribera::test {
namespace {

class SignWidget : public OpenInkTest
{
protected:
    QWidget& widget()
    {
        QWidget* found = pad().signWidget();
        if (!found)
            throw std::runtime_error("no sign widget");
        return *found;
    }
    static void settle() // until nothing is left to paint
    {
        for (int i = 0; i < 10; ++i) {
            processEvents();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    QImage grabbed() { return widget().grab().toImage(); }
    void resize(const QSize& size)
    {
        widget().resize(size);
        processEvents();
        redraw().resize(size.width(), size.height());
    }
    // Of the sizing in a window; two of these lines have no hyphen behind their tick.
    Texts sizingLines() const
    {
        Texts messages;
        for (const LogLine& line : withLabel(mainLog(), method("ResizeUnderInvisibleParentWidget")))
            messages.push_back(line.message.substr(line.message.find('>') + 1));
        return messages;
    }
};

TEST_P(SignWidget, ShowsTheCanvas)
{
    settle();
    EXPECT_TRUE(isWhite(grabbed()));
    for (int i = 0; i < 3; ++i) {
        draw(stroke(model(), {{0.1, 0.2 * i + 0.1}, {0.5, 0.2 * i + 0.2}, {0.9, 0.2 * i + 0.1}}));
        EXPECT_TRUE(sameColors(grabbed(), canvas()));
    }
    expectSameInk();
    ASSERT_EQ(api().Clear(type()), 0);
    EXPECT_TRUE(isWhite(grabbed()));
}

TEST_P(SignWidget, RepaintsWhatThePenChangedWhenEventsRun)
{
    // The first segment may bring up to date what a resize has left.
    pad().draw(stroke(model(), {{0.1, 0.9, 0.1}, {0.2, 0.8, 0.1}}));
    settle();
    PaintCounter counter(&widget());
    pad().draw(stroke(model(), {{0.1, 0.1, 0.1}, {0.2, 0.2, 0.1}}));
    EXPECT_EQ(counter.paints, 0) << "painting is for the thread of the window";
    ASSERT_TRUE(waitUntil([&] { return counter.paints > 0; }));
    settle();
    EXPECT_TRUE(counter.region.intersects(QRect(40, 20, 40, 20)));
    EXPECT_FALSE(counter.region.contains(QPoint(390, 190))) << "only what changed";

    settle();
    counter.paints = 0;
    pad().draw(wave(model(), 200));
    settle();
    EXPECT_GT(counter.paints, 0);
    EXPECT_LT(counter.paints, 20) << "one repaint for many segments";

    counter.paints = 0;
    ASSERT_EQ(api().Clear(type()), 0);
    EXPECT_TRUE(waitUntil([&] { return counter.paints > 0; }));
}

// Takes away, once, what the library posts to its widget.
class EventThief : public QObject
{
public:
    explicit EventThief(QWidget& widget) : m_widget(widget)
    {
        QCoreApplication::instance()->installEventFilter(this);
    }
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (object != &m_widget || event->type() < QEvent::User || taken > 0)
            return false;
        ++taken;
        return true;
    }
    int taken = 0;

private:
    QWidget& m_widget;
};

TEST_P(SignWidget, LiveInkComesBackAfterALostRepaint)
{
    settle();
    PaintCounter counter(&widget());
    const auto line = [&](double y) { pad().draw(stroke(model(), {{0.1, y, 0.1}, {0.3, y, 0.1}})); };
    const auto isPainted = [&](int y) {
        return waitUntil([&] { return counter.region.contains(QPoint(80, y)); }, std::chrono::seconds(5));
    };
    {
        EventThief thief(widget());
        line(0.1);
        ASSERT_TRUE(waitUntil([&] { return thief.taken == 1; }));
        settle();
        EXPECT_FALSE(counter.region.contains(QPoint(80, 20)));
    }
    line(0.3);
    EXPECT_TRUE(isPainted(60)) << "the next sample";
    EXPECT_TRUE(isPainted(20)) << "and what was lost";

    counter.region = QRegion();
    line(0.5);
    QCoreApplication::removePostedEvents(&widget());
    settle();
    EXPECT_FALSE(counter.region.contains(QPoint(80, 100)));
    widget().update();
    EXPECT_TRUE(isPainted(100)) << "the host's own update";
    counter.region = QRegion();
    line(0.7);
    EXPECT_TRUE(isPainted(140)) << "and samples after it";

    line(0.9);
    QCoreApplication::removePostedEvents(&widget());
    ASSERT_EQ(api().Clear(type()), 0);
    settle();
    counter.region = QRegion();
    line(0.2);
    EXPECT_TRUE(isPainted(40)) << "samples after a clear";
}

TEST_P(SignWidget, TapAndIgnoredSamplesRepaintNothing)
{
    settle();
    PaintCounter counter(&widget());
    pad().draw(stroke(model(), {{0.5, 0.5}}));
    pad().draw({sampleAt(model(), {0.9, 0.9}, PenMove), sampleAt(model(), {0.9, 0.9}, 7)});
    settle();
    EXPECT_EQ(counter.paints, 0);
}

// Sends samples while the widget is being made, before it learns its size.
class EarlyPen : public QObject
{
public:
    EarlyPen(const PadModel& model, Simulator& sim, std::vector<ScrSimSample> samples)
        : m_model(model), m_sim(sim), m_samples(std::move(samples))
    {
        QCoreApplication::instance()->installEventFilter(this);
    }
    bool eventFilter(QObject* object, QEvent* event) override
    {
        const bool isWidget =
            std::strcmp(object->metaObject()->className(), m_model.widgetClass.c_str()) == 0;
        if (isWidget && event->type() == QEvent::Resize)
            hasSize = true;
        if (isWidget && event->type() == QEvent::Polish && !hasSize && !isSent) {
            m_sim.open();
            m_sim.send(m_samples);
            isSent = true;
        }
        return false;
    }
    bool hasSize = false;
    bool isSent = false;

private:
    const PadModel& m_model;
    Simulator& m_sim;
    const std::vector<ScrSimSample> m_samples;
};

TEST_P(SignWidget, SamplesBeforeItHasASizeLeaveNoInkAndTheirStrokeGoesOnFromTheLast)
{
    const std::vector<ScrSimSample> samples =
        stroke(model(), {{0.2, 0.3}, {0.4, 0.7}, {0.3, 0.5}, {0.6, 0.2}, {0.8, 0.8}});
    for (const std::size_t early : {std::size_t{1}, std::size_t{3}, samples.size()}) {
        const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(early);
        EarlyPen pen(model(), sim(), {samples.begin(), middle});
        ASSERT_NO_FATAL_FAILURE(logged([&] { ASSERT_TRUE(pad().start()); }));
        ASSERT_TRUE(pen.isSent);
        settle();
        EXPECT_TRUE(isWhite(pad().canvas())) << early;

        Redraw points(model(), 400, 200);
        points.feed(samples);
        Redraw drawn(model(), 400, 200);
        if (middle != samples.end()) {
            pad().draw({middle, samples.end()});
            ScrSimSample last = *(middle - 1);
            last.penStatus = PenDown;
            drawn.feed(last);
            drawn.feed({middle, samples.end()});
        }
        EXPECT_TRUE(holdsPoints(pad(), points));
        EXPECT_TRUE(holdsCanvas(pad(), drawn)) << early;

        // The lines are those of any sample, and each names the corner.
        const std::string corner =
            ", dblSignWndX=0.000000, dblSignWndY=0.000000, dblSignWndPressure=0.000000";
        const std::size_t moves = std::min<std::size_t>(early, samples.size() - 1) - 1;
        Texts expected = {"Pen_Down" + corner};
        expected.insert(expected.end(), moves, "Pen_Move" + corner);
        if (early == samples.size())
            expected.push_back("Pen_Up" + corner);
        Texts seen;
        for (const std::string& text : textsOf(mainLog(), method(model().handler))) {
            if (text.starts_with("Pen_"))
                seen.push_back(text);
        }
        EXPECT_EQ(seen, expected);
        EXPECT_EQ(textsOf(mainLog(), method("StartSignOnCanvas")),
                  Texts(moves, "enter, dblX=0.000000, dblY=0.000000, dblPressure=0.000000"));
    }
}

TEST_P(SignWidget, GrowingKeepsTheInkAtTheTopLeft)
{
    draw(wave(model(), 20));
    for (const QSize size :
         {QSize(600, 400), QSize(300, 100), QSize(500, 100), QSize(500, 300), QSize(1, 1), QSize(410, 205)}) {
        resize(size);
        expectSameInk(printed("%d x %d", size.width(), size.height()));
        EXPECT_TRUE(sameColors(grabbed(), canvas()));
    }
}

TEST_P(SignWidget, MappingFollowsAResize)
{
    draw(wave(model(), 20));
    for (const QSize size : {QSize(600, 400), QSize(250, 120)}) {
        resize(size);
        draw(stroke(model(), {{0.0, 1.0}, {0.5, 0.1}, {1.0, 0.8}}));
        expectSameInk(printed("%d x %d", size.width(), size.height()));
    }
}

TEST_P(SignWidget, ResizeWritesOneLine)
{
    settle();
    const std::vector<LogLine> lines = logged([&] { widget().resize(321, 123); });
    EXPECT_EQ(textsOf(lines, method("resizeEvent")), Texts{"Enter, width=321, height=123"});
}

TEST_P(SignWidget, PaintingWritesToTheInThreadFile)
{
    settle();
    logged([&] { widget().repaint(); });
    EXPECT_EQ(textsOf(inThreadLog(), method("paintEvent")), (Texts{"enter...", "leave !"}));
    EXPECT_TRUE(textsOf(mainLog(), method("paintEvent")).empty());
}

TEST_P(SignWidget, MouseRepaintsWithItsLeftButtonAndNeverDraws)
{
    settle();
    PaintCounter counter(&widget());
    const auto move = [&](Qt::MouseButtons buttons) {
        counter.paints = 0;
        QMouseEvent event(QEvent::MouseMove, QPointF(50, 50), QPointF(50, 50), Qt::NoButton, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&widget(), &event);
        return counter.paints;
    };
    setLogging(true);
    EXPECT_EQ(move(Qt::LeftButton), 1) << "at once";
    EXPECT_EQ(move(Qt::NoButton), 0);
    EXPECT_EQ(move(Qt::RightButton), 0);
    EXPECT_EQ(move(Qt::LeftButton | Qt::RightButton), 1);
    setLogging(false);
    EXPECT_TRUE(textsOf(mainLog(), method("mouseMoveEvent")).empty());
    EXPECT_TRUE(isWhite(grabbed()));
    EXPECT_EQ(pad().points(), -8);
}

TEST_P(SignWidget, HiddenWindowGivesABlankCanvasOfTheAskedSize)
{
    ASSERT_NO_FATAL_FAILURE(
        logged([&] { ASSERT_TRUE(start({.width = 333, .height = 111, .parentShown = false})); }));
    EXPECT_FALSE(pad().parent()->isVisible());
    EXPECT_EQ(widget().size(), QSize(333, 111));
    EXPECT_EQ(sizingLines(),
              (Texts{"Enter, width=333, height=111, parentWidget()->isVisible()=0",
                     "nSignCanvasWidth=333, nSignCanvasHeight=111",
                     "resize(nSignCanvasWidth, nSignCanvasHeight)...", "width=333, height=111", "-leave !"}));
    draw(wave(model(), 20));
    expectSameInk();

    // Shown at last, with the ink it already has.
    pad().parent()->show();
    settle();
    expectSameInk();
    EXPECT_TRUE(sameColors(grabbed(), canvas()));
}

TEST_P(SignWidget, ShownWindowLeavesTheSizeToTheResizeEvent)
{
    ASSERT_NO_FATAL_FAILURE(logged([&] { ASSERT_TRUE(start({.width = 333, .height = 111})); }));
    EXPECT_EQ(sizingLines(), (Texts{"Enter, width=333, height=111, parentWidget()->isVisible()=1",
                                    "nSignCanvasWidth=333, nSignCanvasHeight=111", "-leave !"}));
    settle();
    draw(wave(model(), 20));
    expectSameInk();
}

TEST_P(SignWidget, CanvasHasItsSizeBeforeAnyEventRan)
{
    for (const bool shown : {true, false}) {
        EXPECT_EQ(pad().stop(), 0);
        pad().makeParent(shown);
        ASSERT_TRUE(api().InitialDevice(type(), pad().parent(), 3, 4, 240, 120));
        sim().open();
        Redraw redraw(model(), 240, 120);
        pad().draw(wave(model(), 20));
        redraw.feed(wave(model(), 20));
        EXPECT_TRUE(holdsCanvas(pad(), redraw)) << shown;
    }
}

TEST_P(SignWidget, ConstructorWritesItsLines)
{
    ASSERT_NO_FATAL_FAILURE(logged([&] { ASSERT_TRUE(pad().start()); }));
    const Texts texts = textsOf(mainLog(), method(model().widgetClass));
    ASSERT_GE(texts.size(), 4u);
    EXPECT_EQ(texts[0], "Enter...");
    EXPECT_TRUE(texts[1].find("width=") != std::string::npos) << texts[1];
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(), [](const std::string& text) {
        return text.starts_with("m_pDoConfirmOrCancelKeyActionThread=");
    }));
    EXPECT_EQ(texts.back(), "leave !");
}

TEST_P(SignWidget, ResizedWhileThePenSignsStaysWhole)
{
    std::vector<ScrSimSample> samples;
    for (int i = 0; i < 100; ++i) {
        const auto more = wave(model(), 100);
        samples.insert(samples.end(), more.begin(), more.end());
    }
    sim().queue(samples);
    int step = 0;
    while (pad().points() < 100 * 102) {
        ++step;
        widget().resize(200 + step % 7 * 60, 100 + step % 5 * 40);
        processEvents();
        EXPECT_EQ(grabbed().size(), widget().size());
    }
    sim().waitIdle();
    widget().resize(400, 200);
    processEvents();
    ASSERT_EQ(api().Clear(type()), 0);
    draw(wave(model(), 20));
    expectSameInk();
}

SCRIBERA_INSTANTIATE(SignWidget, Kind::Widget);

} // namespace
} // namespace scribera::test
