#pragma once

#include "signobj/signobj.h"

// Windowless sign object of the K420.
class CK420SignObj final : public CSignObj
{
public:
    CK420SignObj(int nWidth, int nHeight);
};
