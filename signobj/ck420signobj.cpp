#include "signobj/ck420signobj.h"

#include "threads/ck420obj_doconfirmorcancelkeyactionthread.h"

CK420SignObj::CK420SignObj(int nWidth, int nHeight)
    : CSignObj(nWidth, nHeight, g_PadK420, MakeThread<CK420Obj_DoConfirmOrCancelKeyActionThread>)
{
}
