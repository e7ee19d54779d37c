// Where widgets may be made and found.
#pragma once

class QWidget;

// Whether the current thread may make and show widgets: there is a QApplication, and it lives here.
bool IsGuiThread();

// Whether the process has loaded another Qt than the library's. A widget of that one looks like any other to
// whoever gets its address, and must not be touched.
bool HasOtherQt();

// Whether a widget may be made in this parent, null for none, on the current thread. Where there is another
// Qt, the parent has to be known as one of this Qt's.
bool MayMakeWidgetIn(const QWidget* pParentWidget);

// Why no widget may be made.
enum class ENoWidget
{
    Elsewhere,     // it is another thread
    NoApplication, // there is no QApplication
    OtherQt,       // the process has loaded another Qt, and the application or the parent is none of this Qt
    NotFound       // nothing forbids it, but the window id is no widget's
};
ENoWidget WhyNoWidget();

// This Qt's widget with the native window id; null when there is none, or off the GUI thread.
QWidget* FindWidget(unsigned long long ullWId);
