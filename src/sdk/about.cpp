#include "sdk/about.h"

#include "gui/guithread.h"
#include "sdk/otherqt.h"

#include <QMessageBox>
#include <QString>

#include <cstring>
#include <string>

namespace {

constexpr char kProductLine[] = "Scribera SDK on Linux OS";
constexpr char kVersionLine[] = "Version : 3.0.0.0";
constexpr char kNoticeLine[] = "Copyright 2024 Corvenna";

void ShowAboutBox(const CLogLabel& Label, QWidget* pParentWidget)
{
    if (!MayMakeWidgetIn(pParentWidget)) {
        LogOtherQt(Label);
        return;
    }
    const QString strText =
        QStringLiteral("<p align='center'>%1<br>%2<br>%3</p>")
            .arg(QLatin1String(kProductLine), QLatin1String(kVersionLine), QLatin1String(kNoticeLine));
    QMessageBox::about(pParentWidget, QStringLiteral("About"), strText);
}

} // namespace

void CAbout::AboutBox(QWidget* pParentWidget) const
{
    const CLogLabel L = Label("AboutBox()");
    SCR_LOG(L, "<%ld>-Enter...");
    ShowAboutBox(L, pParentWidget);
    SCR_LOG(L, "<%ld>-leave !");
}

void CAbout::AboutBoxByWId(unsigned long long ullWId) const
{
    const CLogLabel L = Label("AboutBoxByWId()");
    SCR_LOG(L, "<%ld>-Enter...");
    if (QWidget* const pParentWidget = FindWidget(ullWId))
        ShowAboutBox(L, pParentWidget);
    else
        LogOtherQt(L);
    SCR_LOG(L, "<%ld>-leave !");
}

void CAbout::GetAboutInfo(int nDeviceType, char* pBuffer) const
{
    const CLogLabel L = Label("GetAboutInfo()");
    SCR_LOG(L, "<%ld>-Enter...");
    if (!AcceptsDevice(L, nDeviceType, kLeaveNothing))
        return;
    if (pBuffer) {
        const std::string strText =
            std::string("About\n\n") + kProductLine + "\n" + kVersionLine + "\n" + kNoticeLine;
        std::memcpy(pBuffer, strText.c_str(), strText.size() + 1);
    }
    SCR_LOG(L, "<%ld>-leave !");
}
