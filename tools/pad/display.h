// Whether windows can be shown.
#pragma once

#include <QString>

// The platform by which Qt shows windows, or why it cannot.
struct WindowPlatform
{
    bool isNamed; // by the environment; without that nobody expects a window
    QString platform;
    QString fault; // empty when windows can be shown
};

// Tried in a process of its own, since Qt ends one without a display, and before there is an application
// here. The first call tries; all tell the same.
const WindowPlatform& display();
