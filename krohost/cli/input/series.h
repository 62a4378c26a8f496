/// From the names that a user gives to the files of a load.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace krohost::cli {

/// A file to load and, where a collection tells it, its solution time.
struct SeriesFile {
    std::string path;
    std::optional<double> time;
};

/// Puts the files that fit a pattern ("step*.vtu") in its place, step2 before step10. What is a file itself, or fits
/// none, stays.
std::vector<std::string> expandPatterns(const std::vector<std::string>& names);

/// Puts the members of a collection over time (.pvd, .series) in its place, in the order of their times; those of one
/// time in the order of their parts. Members are found from the collection's folder. Throws Failure.
std::vector<SeriesFile> expandCollections(const std::vector<std::string>& files);

/// The whole text as a number other than NaN and the infinities; blanks around it do not count.
std::optional<double> parseTime(const std::string& text);

} // namespace krohost::cli
