// Intake of fingerprints, and their way to the pad's own display.
#pragma once

#include "canvas/signcanvas.h"
#include "driver/scriberadriver.h"
#include "fingerprint/fingerprintmerge.h"
#include "model/objectidentity.h"
#include "sync/mutex.h"
#include "sync/workbell.h"

#include <array>
#include <atomic>
#include <cstddef>

// The intake of one sign object. The driver's thread takes fingerprints in; the display thread
// sends the reduced picture back and then has the canvases merged.
class CFingerprintIntake
{
public:
    // GoingToShutDown is the object's shut-down flag: the driver polls it during a transfer.
    CFingerprintIntake(const CObjectIdentity& Identity, CSignCanvas& Canvas, CFingerprintMerge& Merge,
                       const CScriberaDriver& Driver, bool& bGoingToShutDown)
        : m_Identity(Identity), m_Canvas(Canvas), m_Merge(Merge), m_Driver(Driver),
          m_bGoingToShutDown(bGoingToShutDown)
    {
    }

    // Takes a raw image of 208 x 288 grey bytes, row by row, if it scores better than the one that is there.
    void RxSignPadFPRawData(const unsigned char* pucRawData, int nDataLength, int nScore);

    // Rung when a picture for the pad waits.
    CWorkBell& Bell() { return m_Bell; }

    // The two steps of the display thread's loop.
    void CheckIfAnyNewFPImageRawDataOnDeviceAvailable();
    bool HasWork() const { return m_bShowFPDeviceImage || m_bFPDeviceImageShown; }
    void ProcessShowFPImgaeRawDataOnDevice();

private:
    // The pad's display: 104 x 144 pixels of 16 bits, high byte first.
    static constexpr int kDeviceWidth = 104;
    static constexpr int kDeviceHeight = 144;
    using DeviceImage = std::array<unsigned char, std::size_t{kDeviceWidth} * kDeviceHeight * 2>;

    static DeviceImage MakeDeviceImage(const unsigned char* pucRawData, int nThresholdValue);

    const CObjectIdentity& m_Identity;
    CSignCanvas& m_Canvas;
    CFingerprintMerge& m_Merge; // protected by the canvas lock
    const CScriberaDriver& m_Driver;
    bool& m_bGoingToShutDown;

    // Neither picture is kept longer than it is needed: what shows a finger is wiped once it is handed on.

    // Handed from the driver's to the display thread; m_FPDeviceImageMutex protects the picture. The flag
    // changes under the mutex too, but is looked at without it while the display thread polls.
    CMutex m_FPDeviceImageMutex;
    CWorkBell m_Bell;
    DeviceImage m_FPDeviceImage{};
    std::atomic<bool> m_bNewFPDeviceImage{false};

    // The display thread's own.
    DeviceImage m_FPDeviceImageToShow{};
    bool m_bShowFPDeviceImage = false;
    bool m_bFPDeviceImageShown = false;
    int m_nMergeAttempts = 0;
};
