#include "signobj/ck210signobj.h"

#include "threads/ck210obj_doconfirmorcancelkeyactionthread.h"

CK210SignObj::CK210SignObj(int nWidth, int nHeight)
    : CSignObj(nWidth, nHeight, g_PadK210, MakeThread<CK210Obj_DoConfirmOrCancelKeyActionThread>)
{
}
