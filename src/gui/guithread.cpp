#include "gui/guithread.h"

#include "sync/attempt.h"

#include <QApplication>
#include <QThread>
#include <QWidget>

#include <cstring>

#include <link.h>

namespace {

// Whether the loaded file is the core library of a Qt that is not the library's own.
int IsCoreOfOtherQt(dl_phdr_info* pInfo, std::size_t /*nSize*/, void* /*pNothing*/)
{
    const char* const pszSlash = std::strrchr(pInfo->dlpi_name, '/');
    const char* const pszName = pszSlash ? pszSlash + 1 : pInfo->dlpi_name;
    return std::strncmp(pszName, "libQt", 5) == 0 && std::strncmp(pszName, "libQt5", 6) != 0 &&
           std::strstr(pszName, "Core.so") != nullptr;
}

} // namespace

bool IsGuiThread()
{
    const auto* const pApplication = qobject_cast<QApplication*>(QCoreApplication::instance());
    bool bLivesHere = false;
    // Qt makes a record of each thread that asks; without memory for that, it is one that has no widgets.
    Attempt([&] { bLivesHere = pApplication && QThread::currentThread() == pApplication->thread(); });
    return bLivesHere;
}

ENoGuiThread WhyNoGuiThread()
{
    const QCoreApplication* const pApplication = QCoreApplication::instance();
    if (qobject_cast<const QApplication*>(pApplication))
        return ENoGuiThread::Elsewhere;
    return !pApplication && dl_iterate_phdr(IsCoreOfOtherQt, nullptr) != 0 ? ENoGuiThread::OtherQt
                                                                           : ENoGuiThread::NoApplication;
}

QWidget* FindWidget(unsigned long long ullWId)
{
    return IsGuiThread() ? QWidget::find(static_cast<WId>(ullWId)) : nullptr;
}
