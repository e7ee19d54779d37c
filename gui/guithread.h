// Where widgets may be made.
#pragma once

// Whether the current thread may make and show widgets: there is a QApplication, and it lives here.
bool IsGuiThread();
