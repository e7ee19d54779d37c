// The functions that the driver calls, one set per sign-object class.
#pragma once

#include "driver/scriberadriver.h"
#include "model/objectidentity.h"

// The callbacks of the class. They run on the driver's thread and forward to the live object; a call that
// finds none, or one of another class, is dropped.
CDriverCallbacks DriverCallbacksOf(const CObjectIdentity& Identity);
