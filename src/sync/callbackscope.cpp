#include "sync/callbackscope.h"

thread_local int CCallbackScope::s_nDepth = 0;
