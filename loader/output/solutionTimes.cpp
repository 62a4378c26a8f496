#include "loader/output/solutionTimes.h"

#include "interface/kro.h"
#include "loader/sdk/StringList.h"
#include "loader/sdk/lexical_cast.h"
#include "loader/xml/equalsIgnoringCase.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace veltra::vtkfile {

namespace {

std::optional<double> timeOf(const LoadedFile& file) {
    const auto found = std::find_if(file.fieldData.begin(), file.fieldData.end(),
                                    [](const NameValuePair& pair) { return isTimeName(pair.first); });
    if (found == file.fieldData.end())
        return std::nullopt;
    const auto time = lexical_cast<double>(found->second);
    return std::isfinite(time) ? std::optional(time) : std::nullopt;
}

/// Empty when no file has a time.
std::vector<double> timesFromFieldData(const std::vector<LoadedFile>& files) {
    std::vector<double> times;
    bool found = false;
    for (const LoadedFile& file : files) {
        const std::optional<double> time = timeOf(file);
        found = found || time;
        times.push_back(time.value_or(0.0));
    }
    return found ? times : std::vector<double>();
}

/// Empty unless the host finds a time in every name.
std::vector<double> timesFromFileNames(const std::vector<LoadedFile>& files) {
    toolbox::StringList names;
    for (const LoadedFile& file : files)
        names.append(file.path->string());
    std::vector<double> times(files.size());
    return KroUtilExtractTimesFromFileNames(names.get(), times.data()) == 1 ? times : std::vector<double>();
}

} // namespace

bool isTimeName(const std::string& name) {
    return equalsIgnoringCase(name, "time") || equalsIgnoringCase(name, "timevalue");
}

std::vector<double> solutionTimes(const std::vector<LoadedFile>& files, vtk::SolutionTimeSource source) {
    using enum vtk::SolutionTimeSource;
    std::vector<double> times;
    if (source == FromFieldData || source == Auto)
        times = timesFromFieldData(files);
    if (source == FromFileName || (source == Auto && times.empty()))
        times = timesFromFileNames(files);
    times.resize(files.size(), 0.0);
    return times;
}

} // namespace veltra::vtkfile
