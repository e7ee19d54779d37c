// What is in content streams and fonts' tables. A file of some kilobytes can unpack to gigabytes there: of
// one document so much is read as people write, and no more.
#pragma once

#include "qpdf.h"

#include <cstddef>

namespace sign {

class Contents
{
public:
    // Of a stream, or of several in an array. Throws Refusal when it is too much, or damaged.
    void parse(const QPDFObjectHandle& streams, QPDFObjectHandle::ParserCallbacks& callbacks);
    // To be told of each operand, operator and entry of a table, which all take their time. Throws Refusal
    // when there are too many.
    void countObject();

private:
    std::size_t m_bytes = 0;
    std::size_t m_objects = 0;
};

} // namespace sign
