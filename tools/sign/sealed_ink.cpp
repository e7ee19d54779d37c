#include "sealed_ink.h"

#include "refusal.h"

namespace sign {

std::string sealInk(std::string_view, std::string_view, std::string_view)
{
    throw Refusal{"ink is not sealed yet"};
}

std::string unsealInk(std::string_view, std::string_view, std::string_view, const std::string&)
{
    throw Refusal{"ink is not unsealed yet"};
}

} // namespace sign
