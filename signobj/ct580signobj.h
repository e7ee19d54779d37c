#pragma once

#include "signobj/signobj.h"

// Windowless sign object of the T580.
class CT580SignObj final : public CSignObj
{
public:
    CT580SignObj(int nWidth, int nHeight);
};
