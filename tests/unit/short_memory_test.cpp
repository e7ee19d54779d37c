// Allocations refused one at a time, at the canvas itself and in the list of points: no exception comes out,
// no point is lost, and everything works again afterwards.
#include "fingerprint_reference.h"

#include "canvas/drawing.h"
#include "canvas/signcanvas.h"
#include "fingerprint/fppicture.h"
#include "ink/inkpoints.h"
#include "print_layer.h"
#include "scriberasdk.h"

#include <cstdlib>
#include <new>

namespace {

// Of the test's only thread: the allocation to refuse, counted down; 0 none.
thread_local int refusalAt = 0;
thread_local bool wasRefused = false;

bool isRefused()
{
    if (refusalAt == 0 || --refusalAt != 0)
        return false;
    wasRefused = true;
    return true;
}

} // namespace

// Takes the place of the C++ library's one in the whole program, Qt included.
void* operator new(std::size_t size)
{
    void* const memory = isRefused() ? nullptr : std::malloc(size > 0 ? size : 1);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace scribera::test {
namespace {

// Does the work with that allocation refused. Whether it came so far.
template <class Work>
bool refuse(int at, Work work)
{
    wasRefused = false;
    refusalAt = at;
    EXPECT_NO_THROW(work());
    refusalAt = 0;
    return wasRefused;
}

// Does the work with its first allocation refused, then with its second one, until none is left to refuse.
template <class Work>
int refuseEach(Work work)
{
    for (int at = 1; at < 10000; ++at) {
        if (!refuse(at, work))
            return at - 1;
    }
    ADD_FAILURE() << "no end of allocations";
    return 0;
}

class ShortMemory : public testing::TestWithParam<const CPadModel*>
{
protected:
    void SetUp() override
    {
        WarmUpDrawing(); // as the library does before its first object: what Qt keeps for ever is not refused
        m_canvas.clearCanvas(120, 80);
    }

    void segment(double x)
    {
        m_canvas.StartAt(x, 10);
        m_canvas.StartSignOnCanvas(x + 5, 60, 2.5, CStrokeStyle{2.5, Qt::black});
    }

    void takePrint(unsigned seed) { m_layer.take(twoColours(ridges(seed)), m_layer.score() + 1); }

    // A canvas that never knew shortage, with the same done to it.
    void expectFresh()
    {
        m_canvas.ClearSignCanvas();
        CSignCanvas other{m_identity};
        const PrintLayer layer{m_identity, other};
        other.clearCanvas(m_canvas.Snapshot().Image().width(), m_canvas.Snapshot().Image().height());
        for (CSignCanvas* canvas : {&m_canvas, &other}) {
            canvas->StartAt(20, 20);
            canvas->StartSignOnCanvas(60, 40, 0.5, CStrokeStyle{0.5, Qt::black});
            canvas->StartSignOnCanvas(90, 10, 3, CStrokeStyle{3, Qt::black});
        }
        EXPECT_TRUE(same(m_canvas.Snapshot().Image(), other.Snapshot().Image()));
        EXPECT_FALSE(inkBox(other.Snapshot().Image(), 0, 0).isEmpty());
    }

    const CObjectIdentity m_identity{*GetParam(), EObjectKind::Widget};
    CSignCanvas m_canvas{m_identity};
    PrintLayer m_layer{m_identity, m_canvas};
};

TEST_P(ShortMemory, LosesASegmentAtMost)
{
    double x = 0;
    EXPECT_GT(refuseEach([&] { segment(x += 5); }), 0);
    segment(100);
    EXPECT_EQ(m_canvas.Snapshot().Image().pixel(102, 35) & 0xFFFFFF, 0u);
    expectFresh();
}

TEST_P(ShortMemory, LosesASegmentAtMostBesideAnExport)
{
    double x = 0;
    refuseEach([&] {
        const CSharedImage shared = m_canvas.Snapshot();
        segment(x += 5);
    });
    expectFresh();
}

TEST_P(ShortMemory, GivesTheCanvasItsSizeLater)
{
    segment(50);
    int width = 120;
    EXPECT_GT(refuseEach([&] { m_canvas.Resize(++width, 90); }), 0);
    int at = 1;
    for (; refuse(at, [&] { m_canvas.Resize(200, 100); }); ++at) {
        if (!GetParam()->m_bHasFingerprint) {
            EXPECT_EQ(m_canvas.Snapshot().Image().pixel(52, 35) & 0xFFFFFF, 0u) << "ink stays";
        }
        segment(170);
        EXPECT_EQ(m_canvas.Snapshot().Image().size(), QSize(200, 100));
        m_canvas.Resize(120, 80);
    }
    EXPECT_GT(at, 1);
    expectFresh();
}

TEST_P(ShortMemory, ClearsAllTheSame)
{
    int at = 0;
    do {
        segment(50);
        const CSharedImage shared = m_canvas.Snapshot(); // so that white pixels have to be allocated
        refuse(++at, [&] { m_canvas.ClearSignCanvas(); });
        EXPECT_TRUE(m_canvas.Snapshot().InkArea().isEmpty());
        const QImage seen = m_canvas.Snapshot().Image();
        EXPECT_TRUE(seen.isNull() || same(seen, blank(120, 80)));
        segment(50);
        EXPECT_EQ(m_canvas.Snapshot().Image().size(), QSize(120, 80));
        EXPECT_EQ(m_canvas.Snapshot().Image().pixel(52, 35) & 0xFFFFFF, 0u);
    } while (wasRefused);
    EXPECT_GT(at, 1);
    expectFresh();
}

TEST_P(ShortMemory, MergesTheFingerprintLater)
{
    if (!GetParam()->m_bHasFingerprint)
        return;
    CSignCanvas other{m_identity};
    PrintLayer layer{m_identity, other};
    other.clearCanvas(120, 80);
    layer.take(twoColours(ridges(3)), 1);
    ASSERT_TRUE(other.MergeLayer());
    int failures = 0;
    for (int at = 1;; ++at) {
        m_canvas.ClearSignCanvas();
        takePrint(3);
        bool merged = false;
        if (!refuse(at, [&] { merged = m_canvas.MergeLayer(); }))
            break;
        if (!merged) {
            ++failures;
            EXPECT_TRUE(m_canvas.MergeLayer());
        }
        EXPECT_TRUE(same(m_canvas.Snapshot().Image(), other.Snapshot().Image())) << at;
    }
    EXPECT_GT(failures, 0);
    expectFresh();
}

TEST_P(ShortMemory, DrawsTheSeparatePictureLater)
{
    if (!GetParam()->m_bHasFingerprint)
        return;
    const auto picture = std::make_shared<CFPPicture>(100, 30);
    const auto other = std::make_shared<CFPPicture>(100, 30);
    const QImage print = twoColours(ridges(5));
    for (const auto& one : {picture, other})
        ASSERT_EQ(one->SetDisplayedFPImageAt(100, 30, {3, 4, 60, 20}), 0);
    ASSERT_TRUE(other->UpdateFPImage(print, ELogFile::Main));
    int failures = 0;
    for (int at = 1;; ++at) {
        picture->Clear();
        bool drawn = false;
        if (!refuse(at, [&] { drawn = picture->UpdateFPImage(print, ELogFile::Main); }))
            break;
        if (!drawn) {
            ++failures;
            EXPECT_TRUE(picture->UpdateFPImage(print, ELogFile::Main));
        }
        EXPECT_TRUE(same(picture->CopyOf(QRect(0, 0, 100, 30)), other->CopyOf(QRect(0, 0, 100, 30)))) << at;
    }
    EXPECT_GT(failures, 0);
}

INSTANTIATE_TEST_SUITE_P(, ShortMemory, testing::Values(&g_PadK210, &g_PadK421B),
                         [](const auto& info) { return std::string(info.param->m_pszReportedName); });

TEST(InkPointList, OneRefusalLosesNoPoint)
{
    for (int at = 1;; ++at) {
        CInkPointList list;
        _POINTDATA point{};
        const int count = static_cast<int>(5 * CInkChunk::kSize);
        const bool refused = refuse(at, [&] {
            for (int i = 0; i < count; ++i) {
                point.llTick = i;
                list.Append(point);
            }
        });
        ASSERT_EQ(list.Count(), count) << "refusal " << at;
        ASSERT_TRUE(list.At(count - 1, point));
        ASSERT_EQ(point.llTick, count - 1);
        if (!refused)
            return;
    }
}

} // namespace
} // namespace scribera::test
