#include "sync/callbackscope.h"

constinit thread_local int CCallbackScope::s_nDepth = 0;
