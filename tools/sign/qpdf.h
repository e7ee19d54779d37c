// qpdf's headers that know all kinds of objects.
#pragma once

#ifdef __clang__
// clang 14 cannot compile qpdf's JSON as C++20. Nothing here needs it: its header counts as included.
#define JSON_HH
class JSON;
#endif

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
