// The public header in a C++ host that has no Qt header at hand. Compiled only.
#include "scriberasdk.h"
#include "scriberasdk_ext.h"

#ifdef QT_VERSION
#error "the public header brings Qt headers along"
#endif

int headerAsCxx(QWidget* parent)
{
    const bool started = SCK210_InitialDevice(SCK210_DEVICE, parent, 0, 0, 10, 10);
    return started ? SCK210_UnInitialDevice(SCK210_DEVICE) : static_cast<int>(g_bEnableLog);
}
