// From a raw pen sample to stroke, key, stored point and notification.
#pragma once

#include "canvas/signcanvas.h"
#include "ink/inkpoints.h"
#include "pen/keyactions.h"
#include "pen/pensetup.h"
#include "pen/realtimedata.h"

#include <optional>

// The state machine behind the driver's pen callback. Runs on the driver's thread, which alone touches its
// own members; what it works on is protected where it lives.
//
//                    pen down: point, host told
//     no stroke ------------------------------------------> stroke --.  move: segment, point, host told
//         ^                                                  |  ^    |  pen down: starts anew
//         |                                                  |  '----'
//         '--------------------------------------------------'
//                    pen up: closing point, host told
//                    key down: no closing point
//
//                    key down, on models whose keys act at the release
//     no key ---------------------------------------------> on a key --.  key down: on that one
//         ^                                                  |  ^      |
//         |                                                  |  '------'
//         '--------------------------------------------------'
//                    pen up without a stroke: key action armed
//
// While a key action is pending, pen down and key down are dropped. A key down ends the stroke, a pen down
// does not forget the key. Where keys act at the touch, key down arms the action and the pen is never on a
// key.
class CPenPipeline
{
public:
    CPenPipeline(const CObjectIdentity& Identity, const CPenSetup& PenSetup, CSignCanvas& Canvas,
                 CInkPointList& Points, CKeyActions& KeyActions, const CRealTimeData& RealTimeData)
        : m_Identity(Identity), m_PenSetup(PenSetup), m_Canvas(Canvas), m_Points(Points),
          m_KeyActions(KeyActions), m_RealTimeData(RealTimeData)
    {
    }

    // Takes one sample. Moves above nPressureLimit are refused.
    void RxSignPadRawData(int nX, int nY, int nP, int nPenStatus, int nPressureLimit);

private:
    void PenDown(int nX, int nY, int nP);
    void PenMove(int nX, int nY, int nP, int nPressureLimit);
    void PenUp(int nX, int nY, int nP);
    void KeyRelease();
    void KeyDown(int nKey, const char* pszDownLine, const char* pszSkipLine);

    void RememberUnmapped(const CPenState& Pen, int nX, int nY);
    void StoreAndNotify(int nX, int nY, int nP) const;
    CLogLabel SampleLabel() const { return m_Identity.Label(m_Identity.m_Model.m_pszRawDataFunction); }
    CLogLabel KeyLabel() const { return m_Identity.Label(m_Identity.m_Model.m_pszKeyLineFunction); }

    const CObjectIdentity& m_Identity;
    const CPenSetup& m_PenSetup;
    CSignCanvas& m_Canvas;
    CInkPointList& m_Points;
    CKeyActions& m_KeyActions;
    const CRealTimeData& m_RealTimeData;

    bool m_bPenDown = false;      // a stroke is in progress
    int m_nPenDownKeyID = kNoKey; // the key that the pen is on

    // The stroke's last raw point, while the canvas does not know it because there was no mapping.
    struct CRawPoint
    {
        int m_nX;
        int m_nY;
    };
    std::optional<CRawPoint> m_Unmapped;
};
