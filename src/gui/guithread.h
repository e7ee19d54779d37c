// Where widgets may be made and found.
#pragma once

class QWidget;

// Whether the current thread may make and show widgets: there is a QApplication, and it lives here.
bool IsGuiThread();

// Why IsGuiThread() is false.
enum class ENoGuiThread
{
    Elsewhere,     // it is another thread
    NoApplication, // there is no QApplication
    OtherQt        // nor any other application of this Qt, and the process has loaded another Qt
};
ENoGuiThread WhyNoGuiThread();

// The widget of this process with the native window id; null when there is none, or off the GUI thread.
QWidget* FindWidget(unsigned long long ullWId);
