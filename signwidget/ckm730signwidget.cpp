#include "signwidget/ckm730signwidget.h"

#include "threads/ckm730widget_doconfirmorcancelkeyactionthread.h"

CKM730SignWidget::CKM730SignWidget(QWidget* parent)
    : CSignWidget(parent, g_PadKM730, MakeThread<CKM730Widget_DoConfirmOrCancelKeyActionThread>)
{
}
