// The part of the canvas that the library looks for ink in, against a look at every pixel.
#include "fingerprint_reference.h"

#include "canvas/signcanvas.h"
#include "export/boundingbox.h"
#include "print_layer.h"
#include "scriberasdk.h"

#include <iterator>
#include <random>

namespace scribera::test {
namespace {

const QRect boxOfNoInk{QPoint(99999, 99999), QPoint(-1, -1)};

class InkArea : public testing::TestWithParam<const CPadModel*>
{
protected:
    void expectSameBox()
    {
        const CSharedImage shared = m_canvas.Snapshot();
        const QImage& image = shared.Image();
        ASSERT_TRUE(shared.InkArea().isEmpty() || image.rect().contains(shared.InkArea()));
        const QRect box = CheckSignImageBoundingBox(image, shared.InkArea(), {}, {"", "", ""});
        const QRect expected = inkOf(image);
        ASSERT_EQ(box, expected.isEmpty() ? boxOfNoInk : expected);
        ASSERT_EQ(CheckSignImageBoundingBox(image, image.rect(), {}, {"", "", ""}), box);
    }

    int below(std::size_t limit) { return below(static_cast<int>(limit)); }
    int below(int limit) { return std::uniform_int_distribution(0, limit - 1)(m_random); }

    void drawSomewhere(int width, int height)
    {
        // White leaves no ink where it goes, and takes some away.
        const QColor color = below(4) == 0 ? Qt::white : Qt::darkBlue;
        const double reach = below(20) == 0 ? 100 : 1; // far outside now and then
        const auto place = [this, reach](int size) { return (below(size * 14) / 10.0 - size * 0.2) * reach; };
        constexpr double oddWidths[] = {0, -1, 0.01, 1e3, 1e7};
        m_canvas.StartAt(place(width), place(height));
        for (int segment = below(3); segment >= 0; --segment) {
            // Pens of up to one pixel are drawn in a way of their own.
            const double penWidth = below(10) == 0  ? oddWidths[below(std::size(oddWidths))]
                                    : below(3) == 0 ? below(11) / 10.0
                                                    : below(160) / 10.0;
            m_canvas.StartSignOnCanvas(place(width), place(height), penWidth, CStrokeStyle{penWidth, color});
        }
    }

    void takeFingerprint()
    {
        const int action = below(2) == 0 ? NFPPA_NONE : NFPPA_SIGN_FP_SAME_WIDGET;
        m_layer.place(action, QRect(below(100), below(60), 1 + below(80), 1 + below(80)));
        m_layer.take(twoColours(ridges(static_cast<unsigned>(below(100)))), m_layer.score() + 1);
        if (below(2) == 0)
            m_canvas.MergeLayer();
    }

    const CObjectIdentity m_identity{*GetParam(), EObjectKind::Windowless};
    CSignCanvas m_canvas{m_identity};
    PrintLayer m_layer{m_identity, m_canvas};
    std::mt19937 m_random{7}; // the same numbers every time
};

TEST_P(InkArea, HoldsAllInkWhateverHappensToTheCanvas)
{
    int width = 131; // no multiple of what is looked at together
    int height = 67;
    m_canvas.clearCanvas(width, height);
    for (int step = 0; step < 600; ++step) {
        switch (below(12)) {
        case 0:
            m_canvas.ClearSignCanvas();
            break;
        case 1:
            width = 1 + below(150);
            height = 1 + below(90);
            m_canvas.Resize(width, height);
            break;
        case 2:
            m_canvas.clearCanvas(width, height);
            break;
        case 3:
            if (GetParam()->m_bHasFingerprint)
                takeFingerprint();
            break;
        default:
            drawSomewhere(width, height);
            break;
        }
        ASSERT_NO_FATAL_FAILURE(expectSameBox()) << "after step " << step;
    }
}

TEST_P(InkArea, IsOfNoUseOnACanvasThatIsNotThere)
{
    for (const QSize& size : {QSize(0, 0), QSize(-1, 50), QSize(50, 0)}) {
        m_canvas.clearCanvas(size.width(), size.height());
        drawSomewhere(20, 20);
        if (GetParam()->m_bHasFingerprint)
            takeFingerprint();
        drawSomewhere(20, 20);
        expectSameBox();
        m_canvas.Resize(30, 20);
        expectSameBox();
    }
    // An area from a canvas that has gone since.
    EXPECT_EQ(CheckSignImageBoundingBox(QImage(), QRect(0, 0, 50, 50), {}, {"", "", ""}), boxOfNoInk);
}

TEST_P(InkArea, IsNoLargerThanWhatTheStrokesTouched)
{
    m_canvas.clearCanvas(400, 200);
    m_canvas.StartAt(100, 50);
    m_canvas.StartSignOnCanvas(120, 60, 4, CStrokeStyle{4, Qt::black});
    const QRect area = m_canvas.Snapshot().InkArea();
    EXPECT_TRUE(area.contains(QRect(QPoint(98, 48), QPoint(122, 62))));
    EXPECT_TRUE(QRect(QPoint(94, 44), QPoint(126, 66)).contains(area));
}

TEST_P(InkArea, IsEmptyOnABlankCanvas)
{
    m_canvas.clearCanvas(100, 50);
    EXPECT_TRUE(m_canvas.Snapshot().InkArea().isEmpty());
    drawSomewhere(100, 50);
    m_canvas.ClearSignCanvas();
    EXPECT_TRUE(m_canvas.Snapshot().InkArea().isEmpty());
    expectSameBox();
}

INSTANTIATE_TEST_SUITE_P(, InkArea, testing::Values(&g_PadK210, &g_PadK421B),
                         [](const auto& info) { return std::string(info.param->m_pszReportedName); });

} // namespace
} // namespace scribera::test
