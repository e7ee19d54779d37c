#pragma once

#include "signobj/signobj.h"

// Windowless sign object of the K421B.
class CK421BSignObj final : public CSignObj
{
public:
    CK421BSignObj(int nWidth, int nHeight);

    // Places the fingerprint on a canvas of its own, of the host's size.
    int SetDisplayedFPImageAt(int nCanvasWidth, int nCanvasHeight, int nFPLeft, int nFPTop, int nFPWidth,
                              int nFPHeight);
};
