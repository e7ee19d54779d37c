// SVG documents against what one generator writes for the same lines.
#include "export/svgdrawing.h"

#include "model/padmodel.h"

#include "processes.h"
#include "stroke_hint.h"

#include <QBuffer>
#include <QSvgGenerator>

#include <cstdlib>
#include <random>

namespace {

constexpr int dpi = 150;
const QSize size(400, 200);

struct Signature
{
    explicit Signature(const CPadModel& padModel) : model(padModel), pen(padModel)
    {
        pen.FitCanvas(size.width(), size.height(), model.m_nInitialMaxPressure);
    }

    void add(int x, int y, int pressure, bool endsStroke = false)
    {
        _POINTDATA point{};
        point.usX = static_cast<std::uint16_t>(x);
        point.sY = static_cast<std::int16_t>(y);
        point.sPressure = static_cast<std::int16_t>(pressure);
        point.ucStatus = endsStroke ? kStatusStrokeEnd : kStatusOnStroke;
        points.Append(point);
    }
    // Strokes of any length; one line in three has the pressure of the line before.
    void addRandom(std::size_t count, unsigned seed)
    {
        std::mt19937 random(seed);
        int pressure = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (random() % 3 != 0)
                pressure = static_cast<int>(random() % static_cast<unsigned>(model.m_nInitialMaxPressure));
            add(static_cast<int>(random() % 3000), static_cast<int>(random() % 2000), pressure,
                random() % 200 == 0);
        }
    }
    CSvgContent content() const
    {
        return {size, QPoint(3, 7), points.Snapshot(), pen.Read(), identity, fingerprint};
    }

    const CPadModel& model;
    const CObjectIdentity identity{model, EObjectKind::Windowless};
    CPenSetup pen;
    CInkPointList points;
    QImage fingerprint;
};

QByteArray byOneGenerator(const CSvgContent& content)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(content.m_Size);
    generator.setViewBox(QRect(QPoint(0, 0), content.m_Size));
    generator.setResolution(dpi);
    QPainter painter(&generator);
    if (!content.m_Fingerprint.isNull()) {
        QImage print = content.m_Fingerprint.convertToFormat(QImage::Format_RGB32);
        print.setDotsPerMeterX(5905);
        print.setDotsPerMeterY(5905);
        painter.drawImage((content.m_Size.width() - print.width()) / 2,
                          (content.m_Size.height() - print.height()) / 2, print);
    }
    bool isOpen = false;
    QPointF previous;
    for (std::size_t i = 0; i < content.m_Points.Count(); ++i) {
        const _POINTDATA& point = content.m_Points.At(i);
        if (point.ucStatus != 0) {
            isOpen = false;
            continue;
        }
        const CCanvasSample sample = content.m_Pen.m_Mapping.ConvertSignRawDataToSignWndData(
            content.m_Identity.m_Model, point.usX, point.sY, point.sPressure);
        const QPointF place(sample.m_dblX - content.m_Origin.x(), sample.m_dblY - content.m_Origin.y());
        if (isOpen) {
            painter.setRenderHint(strokeHint);
            const double width =
                content.m_Pen.m_bWithPressureValue ? sample.m_dblPressure : content.m_Pen.m_nPenWidth;
            QPen pen(QBrush(Qt::black), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
            pen.setColor(content.m_Pen.m_PenColor);
            painter.setPen(pen);
            painter.drawLine(previous, place);
        }
        previous = place;
        isOpen = true;
    }
    painter.end();
    return buffer.data();
}

void expectAsByOneGenerator(const Signature& signature)
{
    const CSvgContent content = signature.content();
    QByteArray document;
    int pieces = 0;
    ASSERT_TRUE(HandOverSvg(
        content, dpi,
        [&](const char* bytes, std::size_t count) {
            document.append(bytes, static_cast<int>(count));
            ++pieces;
            return true;
        },
        false));
    const QByteArray expected = byOneGenerator(content);
    ASSERT_TRUE(document == expected) << signature.points.Count() << " points, " << document.size() << " and "
                                      << expected.size() << " bytes in " << pieces << " pieces";
}

TEST(SvgDrawing, IsWhatOneGeneratorWrites)
{
    for (const CPadModel* model : {&g_PadK210, &g_PadKM730}) {
        for (const std::size_t count : {0, 1, 2, 3, 1023, 1024, 1025, 1026, 2047, 2049, 2050, 20000}) {
            Signature signature(*model);
            signature.addRandom(count, static_cast<unsigned>(count));
            expectAsByOneGenerator(signature);
        }
    }
}

// No line changes the pen, so there is one group for all of them.
TEST(SvgDrawing, PenOfOneWidthIsWrittenOnce)
{
    Signature signature(g_PadK210);
    signature.pen.SetPressureMode(false);
    signature.pen.SetColor(QColor(10, 20, 200));
    signature.addRandom(5000, 1);
    expectAsByOneGenerator(signature);
}

TEST(SvgDrawing, SheetsEndAnywhereInAStroke)
{
    for (const int lines : {1023, 1024, 1025, 2047, 2048, 2049, 3072}) {
        for (const bool goesOn : {false, true}) {
            Signature signature(g_PadK210);
            for (int i = 0; i <= lines; ++i)
                signature.add(i, i % 700, i % 5 * 100, !goesOn && i == lines);
            signature.add(5, 5, 100);
            signature.add(6, 6, 100);
            expectAsByOneGenerator(signature);
        }
    }
}

TEST(SvgDrawing, FingerprintStandsOnceBeforeAllLines)
{
    for (const std::size_t count : {0, 10, 3000}) {
        Signature signature(g_PadK421B);
        signature.fingerprint = QImage(208, 288, QImage::Format_ARGB32);
        signature.fingerprint.fill(Qt::red);
        signature.addRandom(count, 2);
        expectAsByOneGenerator(signature);
    }
}

TEST(SvgDrawing, NothingIsHandedOverAfterARefusal)
{
    Signature signature(g_PadK210);
    signature.addRandom(5000, 3);
    const auto handOver = [&](int refused) { // how often it asked
        int asked = 0;
        EXPECT_EQ(HandOverSvg(
                      signature.content(), dpi, [&](const char*, std::size_t) { return ++asked != refused; },
                      false),
                  refused == 0);
        return asked;
    };
    const int all = handOver(0);
    ASSERT_GT(all, 3);
    for (int refused = 1; refused <= all; ++refused)
        EXPECT_EQ(handOver(refused), refused);
}

// The address is one that nothing may read from.
TEST(SvgDrawing, OfMoreBytesThanAnArrayHoldsIsNone)
{
    const auto hands = [](std::size_t first, std::size_t second) {
        return [=](const FnTakeBytes& take) {
            static const char few[100] = {};
            return take(few, first) && take(nullptr, second);
        };
    };
    constexpr std::size_t gigabytes = std::size_t{2} << 30;
    EXPECT_EQ(SvgBytes(hands(100, gigabytes)), std::nullopt);
    EXPECT_EQ(SvgBytes(hands(100, std::numeric_limits<std::size_t>::max())), std::nullopt);
    EXPECT_EQ(SvgBytes(hands(100, 0)), QByteArray(100, '\0'));
}

// Ten million of them when there is time.
TEST(SvgDrawing, MemoryDoesNotGrowWithTheLines)
{
    const std::size_t count = std::getenv("SCRIBERA_TEST_LONG") ? 10'000'000 : 100'000;
    Signature signature(g_PadK210);
    signature.addRandom(count, 4);
    const auto takeAll = [](const char*, std::size_t) { return true; };
    {
        Signature few(g_PadK210);
        few.addRandom(5000, 4);
        ASSERT_TRUE(HandOverSvg(few.content(), dpi, takeAll, false));
    }
    [[maybe_unused]] const long before = scribera::test::residentKilobytesAtMost();
    std::size_t bytes = 0;
    ASSERT_TRUE(HandOverSvg(
        signature.content(), dpi,
        [&](const char*, std::size_t piece) {
            bytes += piece;
            return true;
        },
        false));
    EXPECT_GT(bytes, count * 200);
#if !defined(SCRIBERA_SANITIZED_MEMORY) // the sanitizer keeps what is freed
    EXPECT_LT(scribera::test::residentKilobytesAtMost() - before, 8000);
#endif
}

} // namespace
