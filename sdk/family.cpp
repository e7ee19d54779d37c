#include "sdk/family.h"

#include "signobj/ck210signobj.h"
#include "signobj/ck420signobj.h"
#include "signobj/ck421bsignobj.h"
#include "signobj/ckm730signobj.h"
#include "signobj/ct580signobj.h"
#include "signwidget/ck210signwidget.h"
#include "signwidget/ck420signwidget.h"
#include "signwidget/ck421bsignwidget.h"
#include "signwidget/ckm730signwidget.h"
#include "signwidget/ct580signwidget.h"

namespace {

template <typename TWidget>
CSignWidget* MakeWidget(QWidget* pParentWidget)
{
    return new TWidget(pParentWidget);
}

template <typename TObj>
CSignObject* MakeObj(int nWidth, int nHeight)
{
    return new TObj(nWidth, nHeight);
}

} // namespace

const CFamily g_FamilyK210 = {g_PadK210, MakeWidget<CK210SignWidget>, MakeObj<CK210SignObj>};
const CFamily g_FamilyK420 = {g_PadK420, MakeWidget<CK420SignWidget>, MakeObj<CK420SignObj>};
const CFamily g_FamilyK421B = {g_PadK421B, MakeWidget<CK421BSignWidget>, MakeObj<CK421BSignObj>};
const CFamily g_FamilyKM730 = {g_PadKM730, MakeWidget<CKM730SignWidget>, MakeObj<CKM730SignObj>};
const CFamily g_FamilyT580 = {g_PadT580, MakeWidget<CT580SignWidget>, MakeObj<CT580SignObj>};
