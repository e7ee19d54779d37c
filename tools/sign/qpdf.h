// qpdf's headers that know all kinds of objects.
#pragma once

#ifdef __clang__
// clang 14 takes a constexpr destructor apart where it is declared, and asks for more of qpdf's JSON than is
// known there. It gets that destructor a little later, as the standard library has it.
#include <memory>
#include <vector>

class JSON;
template <>
constexpr std::vector<JSON>::vector::~vector() noexcept;

#include <qpdf/JSON.hh>

template <>
constexpr std::vector<JSON>::vector::~vector() noexcept
{
    std::destroy(begin(), end());
}
#endif

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
