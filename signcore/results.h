// Results that several operations share.
#pragma once

constexpr int kNotDone = -8; // nothing there, or not done
