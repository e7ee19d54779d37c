// Without libevdev and libudev there is nothing to ask input devices with.
#include "failures.h"
#include "pens.h"
#include "text.h"

namespace {

Failure noPens()
{
    return {Text::tr("this program was built without libevdev, and cannot ask input devices")};
}

} // namespace

QList<InputDeviceLine> inputDevices()
{
    throw noPens();
}

QString deviceOf(const CPadModel&)
{
    throw noPens();
}

QString chosenDevice()
{
    throw noPens();
}
