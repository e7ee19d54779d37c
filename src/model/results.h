// Results that have no name in the interface.
#pragma once

constexpr int kNoObject = -1; // no live sign object
constexpr int kNotDone = -8;  // nothing there, or not done
