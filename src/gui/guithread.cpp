#include "gui/guithread.h"

#include "sync/attempt.h"

#include <QApplication>
#include <QThread>
#include <QWidget>

#include <string_view>

#include <link.h>

namespace {

constexpr std::string_view kOwnPrefix = "libQt" QT_STRINGIFY(QT_VERSION_MAJOR);

// Whether the loaded file is the core library of a Qt that is not the library's own.
int IsCoreOfOtherQt(dl_phdr_info* pInfo, std::size_t /*nSize*/, void* /*pNothing*/)
{
    const std::string_view strPath = pInfo->dlpi_name;
    const std::string_view strName = strPath.substr(strPath.rfind('/') + 1);
    return strName.starts_with("libQt") && strName.find("Core.so") != std::string_view::npos &&
           !strName.starts_with(kOwnPrefix);
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

bool HasOtherQt()
{
    return dl_iterate_phdr(IsCoreOfOtherQt, nullptr) != 0;
}

bool MayMakeWidgetIn(const QWidget* pParentWidget)
{
    if (!IsGuiThread())
        return false;
    if (!pParentWidget || !HasOtherQt())
        return true;
    bool bKnown = false;
    Attempt([&] { bKnown = QApplication::allWidgets().contains(const_cast<QWidget*>(pParentWidget)); });
    return bKnown;
}

ENoWidget WhyNoWidget()
{
    const QCoreApplication* const pApplication = QCoreApplication::instance();
    if (!qobject_cast<const QApplication*>(pApplication))
        return !pApplication && HasOtherQt() ? ENoWidget::OtherQt : ENoWidget::NoApplication;
    if (!IsGuiThread())
        return ENoWidget::Elsewhere;
    return HasOtherQt() ? ENoWidget::OtherQt : ENoWidget::NotFound;
}

QWidget* FindWidget(unsigned long long ullWId)
{
    return IsGuiThread() ? QWidget::find(static_cast<WId>(ullWId)) : nullptr;
}
