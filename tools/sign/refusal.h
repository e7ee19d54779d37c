// The one way in which the parts of scribera-sign refuse what they are asked for.
#pragma once

#include <string>

namespace sign {

struct Refusal
{
    std::string reason; // for people, in one sentence without a full stop
};

} // namespace sign
