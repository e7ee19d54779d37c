// The fingerprint pad's canvas compared with a whole merge after each one of 2,000 segments. Reading every
// state back as an image text would take minutes at these sizes, so this looks at the canvas itself.

#include "fingerprint_reference.h"

#include "canvas/signcanvas.h"
#include "pen/pensetup.h"
#include "print_layer.h"
#include "scriberasdk.h"

#include <functional>
#include <map>

namespace scribera::test {
namespace {

class Canvas
{
public:
    Canvas(EObjectKind kind, const QSize& size)
        : m_identity{g_PadK421B, kind}, m_canvas(m_identity), m_layer(m_identity, m_canvas),
          m_setup(g_PadK421B), m_copy(size.width(), size.height())
    {
        m_canvas.clearCanvas(size.width(), size.height());
        m_setup.FitCanvas(size.width(), size.height(), 2048);
    }

    void draw(const ScrSimSample& sample)
    {
        const CPenState pen = m_setup.Read();
        const CCanvasSample place =
            pen.m_Mapping.ConvertSignRawDataToSignWndData(g_PadK421B, sample.x, sample.y, sample.pressure);
        if (sample.penStatus == PenDown)
            m_canvas.StartAt(place.m_dblX, place.m_dblY);
        else
            m_canvas.StartSignOnCanvas(place.m_dblX, place.m_dblY, place.m_dblPressure,
                                       pen.StyleOf(place.m_dblPressure));
        m_copy.sample(sample);
    }

    void take(unsigned seed)
    {
        const Bytes print = ridges(seed);
        m_layer.take(twoColours(print), m_layer.score() + 1);
        m_copy.takePrint(print);
    }

    void mergeAfterTransfer()
    {
        m_canvas.MergeLayer();
        m_copy.merge();
    }

    void placeSame(const QRect& place)
    {
        m_layer.place(NFPPA_SIGN_FP_SAME_WIDGET, place);
        m_copy.placeSame(place);
    }

    void clear()
    {
        m_canvas.ClearSignCanvas();
        m_copy.clear();
    }

    void resize(int width, int height)
    {
        m_canvas.Resize(width, height);
        m_setup.FitCanvas(width, height, 2048);
        m_copy.resize(width, height);
    }

    void setPen(int width, const QColor& color, bool withPressure)
    {
        m_setup.SetWidth(width, 2048);
        m_setup.SetColor(color);
        m_setup.SetPressureMode(withPressure);
        m_copy.setPenWidth(width);
        m_copy.setPenColor(color);
        m_copy.setWithPressure(withPressure);
    }

    testing::AssertionResult isRight() { return same(m_canvas.Snapshot().Image(), m_copy.canvas()); }

private:
    CObjectIdentity m_identity;
    CSignCanvas m_canvas;
    PrintLayer m_layer;
    CPenSetup m_setup;
    PadPictures m_copy;
};

class LongMerge : public testing::TestWithParam<QSize>
{
};

TEST_P(LongMerge, IsRightAfterEverySegment)
{
    const QSize size = GetParam();
    Canvas canvas(EObjectKind::Widget, size);
    const std::vector<ScrSimSample> samples = longSignature(padModel("K421B"), 2000, 4711);
    ASSERT_EQ(samples.size(), 2001u);
    const auto merge = [&](unsigned seed) {
        canvas.take(seed);
        canvas.mergeAfterTransfer();
    };
    const std::map<std::size_t, std::function<void()>> events = {
        {1, [&] { canvas.setPen(1, Qt::black, true); }}, // pressures up to 305 give less than a pixel
        {150, [&] { canvas.take(1); }},                  // shown with the next segment
        {300, [&] { merge(2); }},
        {500, [&] { canvas.setPen(3, QColor(20, 60, 180), true); }},
        {700, [&] { canvas.placeSame(QRect(size.width() / 3, 3, size.width() / 2, size.height() - 9)); }},
        {900, [&] { canvas.setPen(1, QColor(0, 128, 0), false); }},
        {1100, [&] { canvas.clear(); }},
        {1150, [&] { merge(3); }},
        {1300, [&] { canvas.resize(size.width() - 51, size.height() + 40); }},
        {1400, [&] { merge(4); }},
        {1600, [&] { canvas.setPen(10, Qt::red, true); }},
        {1800, [&] { canvas.placeSame(QRect(0, 0, 7, 5)); }}};
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (const auto event = events.find(i); event != events.end())
            event->second();
        canvas.draw(samples[i]);
        ASSERT_TRUE(canvas.isRight()) << "after segment " << i;
    }
}

TEST_P(LongMerge, OrdersThatOweAWholeMergeGetIt)
{
    const QSize size = GetParam();
    Canvas canvas(EObjectKind::Widget, size);
    const std::vector<ScrSimSample> samples = longSignature(padModel("K421B"), 60, 99);
    std::size_t next = 0;
    const auto segment = [&](const char* what) {
        canvas.draw(samples.at(next++));
        ASSERT_TRUE(canvas.isRight()) << what;
    };
    segment("first point");
    segment("strokes before any print");
    canvas.take(1);
    segment("a print that was not transferred yet");
    canvas.take(2);
    canvas.placeSame(QRect(5, 6, size.width() / 2, size.height() / 2));
    segment("another print and a place");
    canvas.clear();
    canvas.take(3);
    segment("a print after a clear");
    canvas.resize(size.width() + 30, size.height() / 2);
    ASSERT_TRUE(canvas.isRight()) << "resize alone";
    segment("a resize");
    canvas.take(4);
    canvas.resize(size.width() / 2, size.height());
    segment("a print and a resize");
    canvas.take(5);
    canvas.clear();
    segment("a print and a clear");
    canvas.clear();
    canvas.resize(size.width(), size.height());
    canvas.placeSame(QRect(1, 1, 90, 80));
    canvas.take(6);
    canvas.mergeAfterTransfer();
    ASSERT_TRUE(canvas.isRight()) << "everything, merged after the transfer";
    segment("a segment after that");
}

INSTANTIATE_TEST_SUITE_P(, LongMerge, testing::Values(QSize(400, 200), QSize(800, 400), QSize(1920, 960)),
                         [](const testing::TestParamInfo<QSize>& info) {
                             return std::to_string(info.param.width()) + "x" +
                                    std::to_string(info.param.height());
                         });

} // namespace
} // namespace scribera::test
