#pragma once

#include "signobj/signobj.h"

// Windowless sign object of the KM730.
class CKM730SignObj final : public CSignObj
{
public:
    CKM730SignObj(int nWidth, int nHeight);
};
