#include "signobj/signobj.h"

CSignObj::CSignObj(int nWidth, int nHeight, const CPadModel& Model, PfnMakeThread pfnKeyAction,
                   PfnMakeThread pfnShowFPImage)
    : CSignObject(Model, EObjectKind::Windowless)
{
    SCR_LOG(Identity().ConstructorLabel(), "<%ld>-Enter, nWidth=%d, nHeight=%d", nWidth, nHeight);
    FitMapping(nWidth, nHeight);
    Canvas().clearCanvas(nWidth, nHeight);
    StartThreads(this, nWidth, nHeight, pfnKeyAction, pfnShowFPImage);
}
