#include "signwidget/ct580signwidget.h"

#include "threads/ct580widget_doconfirmorcancelkeyactionthread.h"

CT580SignWidget::CT580SignWidget(QWidget* parent)
    : CSignWidget(parent, g_PadT580, MakeThread<CT580Widget_DoConfirmOrCancelKeyActionThread>)
{
}
