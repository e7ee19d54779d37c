#include "fingerprint/fpintake.h"

#include "canvas/drawing.h"
#include "fingerprint/fppicture.h"

#include <QImage>

#include <numeric>
#include <utility>

namespace {

constexpr int kRawSize = kFPWidth * kFPHeight;

// How often a merge is tried while memory is short. After that it waits for the next segment.
constexpr int kMergeAttempts = 100;

// Null when memory is short.
QImage TwoColourPicture(const unsigned char* pucRawData, int nThresholdValue)
{
    QImage Picture = BlankCanvas(kFPWidth, kFPHeight);
    for (int nY = 0; nY < Picture.height(); ++nY) {
        auto* const pRow = reinterpret_cast<QRgb*>(Picture.scanLine(nY));
        for (int nX = 0; nX < kFPWidth; ++nX)
            pRow[nX] =
                pucRawData[nY * kFPWidth + nX] < nThresholdValue ? qRgb(255, 0, 0) : qRgb(255, 255, 255);
    }
    return Picture;
}

} // namespace

void CFingerprintIntake::RxSignPadFPRawData(const unsigned char* pucRawData, int nDataLength, int nScore)
{
    const CLogLabel Label = m_Identity.Label(m_Identity.m_Model.m_pszFPRawDataFunction);
    SCR_LOG(Label, "<%ld>-Enter, pucRawData=%lx, nDataLength=%d, nScore=%d", AsHex(pucRawData), nDataLength,
            nScore);
    int nClears = 0;
    bool bBetter = false;
    {
        const CLocker Lock(m_Canvas.CanvasMutex());
        nClears = m_Merge.Clears();
        bBetter = nScore > m_Merge.Score();
    }
    if (!bBetter) {
        SCR_LOG(Label, "<%ld>-leave !");
        return;
    }
    const int nThresholdValue = std::accumulate(pucRawData, pucRawData + kRawSize, 0) / kRawSize;
    SCR_LOG(Label, "<%ld>nThresholdValue = %d", nThresholdValue);
    QImage Picture = TwoColourPicture(pucRawData, nThresholdValue);
    if (Picture.isNull()) {
        // Not taken, so that the next one may be.
        SCR_LOG(Label, "<%ld>-leave due to (out of memory) !");
        return;
    }
    {
        const CLocker Lock(m_Canvas.CanvasMutex());
        m_Merge.SetFingerprint(std::move(Picture), nScore, nClears);
    }
    const CLocker Lock(m_FPDeviceImageMutex);
    m_FPDeviceImage = MakeDeviceImage(pucRawData, nThresholdValue);
    m_bNewFPDeviceImage = true;
    m_Bell.Ring();
    SCR_LOG(Label, "<%ld>-leave !");
}

CFingerprintIntake::DeviceImage CFingerprintIntake::MakeDeviceImage(const unsigned char* pucRawData,
                                                                    int nThresholdValue)
{
    DeviceImage Image;
    auto* pNext = Image.data();
    for (int nY = 0; nY < kDeviceHeight; ++nY) {
        for (int nX = 0; nX < kDeviceWidth; ++nX) {
            // The top-left pixel of each 2 x 2 block, as red or white.
            const bool bRidge = pucRawData[2 * nY * kFPWidth + 2 * nX] < nThresholdValue;
            *pNext++ = bRidge ? 0xF8 : 0xFF;
            *pNext++ = bRidge ? 0x00 : 0xFF;
        }
    }
    return Image;
}

void CFingerprintIntake::CheckIfAnyNewFPImageRawDataOnDeviceAvailable()
{
    if (m_bShowFPDeviceImage)
        m_FPDeviceImageToShow.fill(0);
    m_bShowFPDeviceImage = false;
    if (!m_bNewFPDeviceImage)
        return;
    const CLocker Lock(m_FPDeviceImageMutex);
    m_FPDeviceImageToShow = m_FPDeviceImage;
    m_FPDeviceImage.fill(0);
    m_bNewFPDeviceImage = false;
    m_bShowFPDeviceImage = true;
}

void CFingerprintIntake::ProcessShowFPImgaeRawDataOnDevice()
{
    const auto pfnShow = m_Driver.Calls().m_pfn_SCRDAPI_ShowFPImageOnDevice;
    if (m_bShowFPDeviceImage && pfnShow) {
        // The result does not matter: a picture that did not arrive is as good as one that nobody looks at.
        pfnShow(m_FPDeviceImageToShow.data(), static_cast<int>(m_FPDeviceImageToShow.size()), kDeviceWidth,
                kDeviceHeight, &m_bGoingToShutDown);
        m_bFPDeviceImageShown = true;
        m_nMergeAttempts = 0;
    } else if (m_bFPDeviceImageShown) {
        if (!m_Identity.IsWidget())
            SCR_LOG_INTHREAD(m_Identity.Label("ProcessShowFPImgaeRawDataOnDevice()"),
                             "<%ld>-b4 call MergeSignCanvasAndFPCanvas()...");
        m_bFPDeviceImageShown = !m_Canvas.MergeLayer() && ++m_nMergeAttempts < kMergeAttempts;
    }
}
