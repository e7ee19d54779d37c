#include "signobj/ckm730signobj.h"

#include "threads/ckm730obj_doconfirmorcancelkeyactionthread.h"

CKM730SignObj::CKM730SignObj(int nWidth, int nHeight)
    : CSignObj(nWidth, nHeight, g_PadKM730, MakeThread<CKM730Obj_DoConfirmOrCancelKeyActionThread>)
{
}
