// The on-screen sign objects: one class a model, since its name shows in the log and in className().
#include "signwidget/signwidget.h"

#define SIGN_WIDGET_CLASS(Model)                                                                             \
    class C##Model##SignWidget final : public CSignWidget                                                    \
    {                                                                                                        \
        Q_OBJECT                                                                                             \
                                                                                                             \
    public:                                                                                                  \
        explicit C##Model##SignWidget(QWidget* pParent) : CSignWidget(pParent, g_Pad##Model) {}              \
    };

SCRIBERA_FAMILIES(SIGN_WIDGET_CLASS)

std::unique_ptr<CSignWidget> MakeSignWidget(const CPadModel& Model, QWidget* pParent)
{
#define MAKE_SIGN_WIDGET(Name)                                                                               \
    if (&Model == &g_Pad##Name)                                                                              \
        return std::make_unique<C##Name##SignWidget>(pParent);
    SCRIBERA_FAMILIES(MAKE_SIGN_WIDGET)
    return nullptr;
}

#include "signwidgets.moc"
