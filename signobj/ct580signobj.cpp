#include "signobj/ct580signobj.h"

#include "threads/ct580obj_doconfirmorcancelkeyactionthread.h"

CT580SignObj::CT580SignObj(int nWidth, int nHeight)
    : CSignObj(nWidth, nHeight, g_PadT580, MakeThread<CT580Obj_DoConfirmOrCancelKeyActionThread>)
{
}
