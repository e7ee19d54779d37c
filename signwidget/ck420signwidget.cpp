#include "signwidget/ck420signwidget.h"

#include "threads/ck420widget_doconfirmorcancelkeyactionthread.h"

CK420SignWidget::CK420SignWidget(QWidget* parent)
    : CSignWidget(parent, g_PadK420, MakeThread<CK420Widget_DoConfirmOrCancelKeyActionThread>)
{
}
