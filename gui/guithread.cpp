#include "gui/guithread.h"

#include <QApplication>
#include <QThread>

bool IsGuiThread()
{
    const auto* const pApplication = qobject_cast<QApplication*>(QCoreApplication::instance());
    return pApplication && QThread::currentThread() == pApplication->thread();
}
