// The windowless sign objects: one class a model.
#include "signobj/signobj.h"

#define SIGN_OBJ_CLASS(Model)                                                                                \
    class C##Model##SignObj final : public CSignObj                                                          \
    {                                                                                                        \
    public:                                                                                                  \
        C##Model##SignObj(int nWidth, int nHeight) : CSignObj(nWidth, nHeight, g_Pad##Model) {}              \
    };

SCRIBERA_FAMILIES(SIGN_OBJ_CLASS)

std::unique_ptr<CSignObj> MakeSignObj(const CPadModel& Model, int nWidth, int nHeight)
{
#define MAKE_SIGN_OBJ(Name)                                                                                  \
    if (&Model == &g_Pad##Name)                                                                              \
        return std::make_unique<C##Name##SignObj>(nWidth, nHeight);
    SCRIBERA_FAMILIES(MAKE_SIGN_OBJ)
    return nullptr;
}
