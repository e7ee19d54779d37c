// The tool beside the library: what it makes of a stream is what the library makes of the same points.

#include "scriberasdk.h"
#include "simclient.h"
#include "support.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include <ostream>

#include <dlfcn.h>

namespace {

struct Family
{
    const char* model;
    int deviceType;
    decltype(&SCK210_InitialDevice) initialDevice;
    decltype(&SCK210_UnInitialDevice) unInitialDevice;
    decltype(&SCK210_SetPenWidth) setPenWidth;
    decltype(&SCK210_SetPenColor) setPenColor;
    decltype(&SCK210_Clear) clear;
    decltype(&SCK210_GetTotalPacketsNumber) count;
    decltype(&SCK210_getPackets) packet;
    decltype(&SCK210_SaveDrawingImage) save;
    decltype(&SCK210_PacketsBase64Encode) encode;
    decltype(&SCK210_PacketsBase64EncodeFree) free;
};

void PrintTo(const Family& family, std::ostream* out)
{
    *out << family.model;
}

#define FAMILY(Model)                                                                                        \
    {#Model,                                                                                                 \
     SC##Model##_DEVICE,                                                                                     \
     SC##Model##_InitialDevice,                                                                              \
     SC##Model##_UnInitialDevice,                                                                            \
     SC##Model##_SetPenWidth,                                                                                \
     SC##Model##_SetPenColor,                                                                                \
     SC##Model##_Clear,                                                                                      \
     SC##Model##_GetTotalPacketsNumber,                                                                      \
     SC##Model##_getPackets,                                                                                 \
     SC##Model##_SaveDrawingImage,                                                                           \
     SC##Model##_PacketsBase64Encode,                                                                        \
     SC##Model##_PacketsBase64EncodeFree},

const Family Families[] = {SCRIBERA_FAMILIES(FAMILY)};

constexpr int Patience = 120'000;
constexpr int Width = 640;
constexpr int Height = 300;

// A live windowless object and the simulated pad behind it.
class InkExportTest : public InkToolTest, public testing::WithParamInterface<Family>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QFile::link(QStringLiteral(SCRIBERA_DRIVER_LIBRARY), path("libscriberadrv.so")));
        m_before = QDir::currentPath();
        ASSERT_TRUE(QDir::setCurrent(path("")));
        ASSERT_TRUE(m_family.initialDevice(m_family.deviceType, nullptr, 0, 0, Width, Height));
        m_driver = dlopen("./libscriberadrv.so", RTLD_NOW | RTLD_NOLOAD);
        ASSERT_NE(m_driver, nullptr);
        ASSERT_EQ(m_control.resolve(m_driver), nullptr);
    }

    void TearDown() override
    {
        m_family.unInitialDevice(m_family.deviceType);
        if (m_driver)
            dlclose(m_driver);
        QDir::setCurrent(m_before);
    }

    // On the pad, as fast as the library takes the samples, after what was signed before is gone.
    void sign(const QString& file)
    {
        ASSERT_EQ(m_family.clear(m_family.deviceType), ARI_SUCCESS);
        ASSERT_EQ(m_control.Play(file.toLocal8Bit().constData(), 0, 0, -1), 0) << m_control.LastError();
        ASSERT_EQ(m_control.WaitIdle(Patience), 0);
        ASSERT_GT(m_family.count(m_family.deviceType), 100);
    }

    QByteArray exportedStream() const
    {
        char* const text = m_family.encode(m_family.deviceType, EBITI_INK);
        const QByteArray copy(text);
        m_family.free(m_family.deviceType, text);
        return copy;
    }

    QByteArray exportedSvg(int dpiLevel) const
    {
        const QString file = path("library.svg");
        std::wstring wide = file.toStdWString();
        EXPECT_EQ(m_family.save(m_family.deviceType, EBITI_SVG, wide.data(), dpiLevel), ARI_SUCCESS);
        return contentOf(file);
    }

    std::vector<_PACKETS> exportedPoints() const
    {
        std::vector<_PACKETS> points;
        for (int index = 0; index < m_family.count(m_family.deviceType); ++index) {
            _PACKETS packet{};
            packet.nIndex = index;
            EXPECT_EQ(m_family.packet(m_family.deviceType, &packet), ARI_SUCCESS);
            points.push_back(packet);
        }
        return points;
    }

    const Family& m_family = GetParam();

private:
    void* m_driver = nullptr;
    simulator::Client m_control;
    QString m_before;
};

const QString Signature = QStringLiteral(SCRIBERA_RECORDINGS "/initials.rec");

QStringList drawing(const Family& family, const QStringList& further)
{
    return QStringList{"to-svg", "--model", family.model, "--size",
                       QStringLiteral("%1x%2").arg(Width).arg(Height)} +
           further;
}

} // namespace

TEST_P(InkExportTest, SvgEqualsTheLibrarysByteForByte)
{
    sign(Signature);
    const QByteArray stream = exportedStream();
    const QByteArray svg = exportedSvg(0);
    EXPECT_TRUE(svg.contains("<polyline"));
    EXPECT_EQ(outputOf(drawing(m_family, {}), stream).toStdString(), svg.toStdString());
    EXPECT_EQ(outputOf(drawing(m_family, {"--dpi", "300"}), stream).toStdString(),
              exportedSvg(1).toStdString());
}

TEST_P(InkExportTest, SvgFollowsThePen)
{
    sign(Signature);
    const QByteArray stream = exportedStream();
    ASSERT_EQ(m_family.setPenWidth(m_family.deviceType, 7), ARI_SUCCESS);
    ASSERT_EQ(m_family.setPenColor(m_family.deviceType, 0x20, 0x40, 0xC0), ARI_SUCCESS);
    const QByteArray svg = exportedSvg(0);
    EXPECT_EQ(outputOf(drawing(m_family, {"--pen-width", "7", "--color", "#2040c0"}), stream).toStdString(),
              svg.toStdString());
    EXPECT_NE(outputOf(drawing(m_family, {}), stream), svg);
}

TEST_P(InkExportTest, ThePictureIsTheLibrarysPixelByPixel)
{
    sign(Signature);
    ASSERT_EQ(m_family.setPenWidth(m_family.deviceType, 5), ARI_SUCCESS);
    ASSERT_EQ(m_family.setPenColor(m_family.deviceType, 0x20, 0x40, 0xC0), ARI_SUCCESS);
    sign(Signature);
    const QByteArray png =
        outputOf({"to-png", "--model", m_family.model, "--size",
                  QStringLiteral("%1x%2").arg(Width).arg(Height), "--pen-width", "5", "--color", "#2040c0"},
                 exportedStream());
    const QString file = path("library.bmp");
    std::wstring wide = file.toStdWString();
    ASSERT_EQ(m_family.save(m_family.deviceType, EBITI_BITMAP, wide.data(), 0), ARI_SUCCESS);
    const QImage drawn = QImage::fromData(png).convertToFormat(QImage::Format_RGB32);
    const QImage saved = QImage(file).convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(drawn.size(), QSize(Width, Height));
    EXPECT_EQ(drawn, saved);
    EXPECT_EQ(drawn.dotsPerMeterX(), saved.dotsPerMeterX());
}

TEST_P(InkExportTest, ARecordingBecomesTheStreamThatThePadMakesOfIt)
{
    sign(Signature);
    const QString recording =
        write("again.rec", outputOf({"to-recording", "--model", m_family.model}, exportedStream()));
    sign(recording);
    const std::vector<_PACKETS> stored = exportedPoints();
    const QList<QByteArray> lines =
        outputOf({"to-csv"}, outputOf({"from-recording", recording}, {})).split('\n');
    ASSERT_EQ(static_cast<std::size_t>(lines.size()), stored.size() + 2);
    for (std::size_t index = 0; index < stored.size(); ++index) {
        const _PACKETS& point = stored[index];
        const QList<QByteArray> fields = lines[static_cast<int>(index) + 1].split(',');
        ASSERT_EQ(fields[3].toInt(), point.ucStatus) << index;
        if (point.ucStatus == 1)
            continue; // the library repeats the point before it, whatever the lifted pen tells
        ASSERT_EQ(fields[0].toInt(), point.usX) << index;
        ASSERT_EQ(fields[1].toInt(), point.sY) << index;
        ASSERT_EQ(fields[2].toInt(), point.sPressure) << index;
    }
}

TEST_P(InkExportTest, TheRecordingPlaysTheSamePointsAgain)
{
    sign(Signature);
    const std::vector<_PACKETS> signedPoints = exportedPoints();
    const QString recording =
        write("again.rec", outputOf({"to-recording", "--model", m_family.model}, exportedStream()));
    sign(recording);
    const std::vector<_PACKETS> replayed = exportedPoints();
    ASSERT_EQ(replayed.size(), signedPoints.size());
    for (std::size_t index = 0; index < replayed.size(); ++index) {
        SCOPED_TRACE(index);
        EXPECT_EQ(replayed[index].usX, signedPoints[index].usX);
        EXPECT_EQ(replayed[index].sY, signedPoints[index].sY);
        EXPECT_EQ(replayed[index].sPressure, signedPoints[index].sPressure);
        EXPECT_EQ(replayed[index].ucStatus, signedPoints[index].ucStatus);
    }
}

INSTANTIATE_TEST_SUITE_P(AllModels, InkExportTest, testing::ValuesIn(Families),
                         [](const testing::TestParamInfo<Family>& family) {
                             return std::string(family.param.model);
                         });
