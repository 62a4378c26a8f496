#pragma once

#include <map>
#include <string>

/// Inputs of fuzz_inflate by their names: blocks, sound and damaged, and a stream for each branch of the inflater of
/// several at once.
std::map<std::string, std::string> inflateSeeds();
