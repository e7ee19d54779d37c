// What the log says of a process with two Qts.
#pragma once

#include "gui/guithread.h"
#include "log/logfileutil.h"

#include <QtGlobal>

// For a call that makes no widget: one line when that is because of the other Qt.
inline void LogOtherQt(const CLogLabel& Label)
{
    if (WhyNoWidget() == ENoWidget::OtherQt)
        SCR_LOG(Label, "<%ld>-no widget of Qt %d, and this process has another Qt !", QT_VERSION_MAJOR);
}
