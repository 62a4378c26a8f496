/// What to tell a user who named something that does not exist.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace krohost {

/// The name with the fewest letters to change, when these are few.
std::optional<std::string> nearestName(const std::string& wanted, const std::vector<std::string>& names);

/// `There is no variable "q"; there is "X", "Y".`, with at most 40 names, the nearest one first.
std::string noSuch(const char* kind, const std::string& wanted, const std::vector<std::string>& names);

} // namespace krohost
