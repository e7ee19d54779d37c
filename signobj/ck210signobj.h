#pragma once

#include "signobj/signobj.h"

// Windowless sign object of the K210.
class CK210SignObj final : public CSignObj
{
public:
    CK210SignObj(int nWidth, int nHeight);
};
