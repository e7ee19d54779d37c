#include "gui/guithread.h"

#include <QApplication>
#include <QThread>
#include <QWidget>

bool IsGuiThread()
{
    const auto* const pApplication = qobject_cast<QApplication*>(QCoreApplication::instance());
    return pApplication && QThread::currentThread() == pApplication->thread();
}

QWidget* FindWidget(unsigned long long ullWId)
{
    return IsGuiThread() ? QWidget::find(static_cast<WId>(ullWId)) : nullptr;
}
