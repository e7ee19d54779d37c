// The harness of the host tests: it uses the library as a host does, by path and symbol name. Nothing here
// includes a header of the library but the model table, which a test of its own holds against the numbers
// that the pads are known by, so that a mistake there cannot repeat itself here.
#pragma once

#include "driver.h"
#include "library.h"
#include "logs.h"
#include "models.h"
#include "pad.h"
#include "processes.h"
#include "samples.h"
