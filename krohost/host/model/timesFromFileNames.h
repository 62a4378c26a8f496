#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace krohost {

/// The last number of a file name's stem (no folder, no last extension), with the fraction or exponent that it has:
/// 0.25 for "run2/flow_0.25.vtu". A sign before the number counts as a separator. Nothing when there is no number, or
/// none that a double can hold. [any thread]
std::optional<double> timeFromFileName(std::string_view fileName);

/// One time for each name; nothing when there are no names or one of them has no time. [any thread]
std::optional<std::vector<double>> timesFromFileNames(const std::vector<std::string>& fileNames);

} // namespace krohost
