#include "gui/guithread.h"

#include "sync/attempt.h"

#include <QApplication>
#include <QThread>
#include <QWidget>

bool IsGuiThread()
{
    const auto* const pApplication = qobject_cast<QApplication*>(QCoreApplication::instance());
    bool bLivesHere = false;
    // Qt makes a record of each thread that asks; without memory for that, it is one that has no widgets.
    Attempt([&] { bLivesHere = pApplication && QThread::currentThread() == pApplication->thread(); });
    return bLivesHere;
}

QWidget* FindWidget(unsigned long long ullWId)
{
    return IsGuiThread() ? QWidget::find(static_cast<WId>(ullWId)) : nullptr;
}
