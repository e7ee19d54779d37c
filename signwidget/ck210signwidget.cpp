#include "signwidget/ck210signwidget.h"

#include "threads/ck210widget_doconfirmorcancelkeyactionthread.h"

CK210SignWidget::CK210SignWidget(QWidget* parent)
    : CSignWidget(parent, g_PadK210, MakeThread<CK210Widget_DoConfirmOrCancelKeyActionThread>)
{
}
