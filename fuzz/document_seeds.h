// PDF documents from which a fuzzer starts: plain, signed, encrypted and wrong ones.
#pragma once

#include <map>
#include <string>

// By name. Signed with a key of the moment, so that they differ each time.
std::map<std::string, std::string> documentSeeds();
