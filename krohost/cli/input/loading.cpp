#include "krohost/cli/input/loading.h"

#include "krohost/cli/input/layout.h"
#include "krohost/cli/terminal/Failure.h"
#include "krohost/convert/WriteError.h"
#include "krohost/host/model/strandGroups.h"
#include "krohost/text/quoted.h"
#include "krohost/text/suggest.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace krohost::cli {

namespace {

constexpr const char* strandKeyword = "STRAND_ID";
constexpr const char* timesKeyword = "SOLUTION_TIMES";

/// Why a file cannot be read; empty when it can.
std::string openError(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        return std::strerror(EISDIR);
    if (std::filesystem::is_fifo(path, ignored)) // opened and closed, it would be broken for who writes to it
        return access(path.c_str(), R_OK) == 0 ? "" : std::strerror(errno);
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return std::strerror(errno);
    close(descriptor);
    return {};
}

void requireReadable(const std::vector<std::string>& files) {
    for (const std::string& file : files)
        if (const std::string reason = openError(file); !reason.empty())
            throw Failure(fmt::format("The file \"{}\" cannot be opened: {}", file, reason), Exit_FileNotOpened);
}

/// What the user says takes precedence over what a collection says; a file without a time among others has 0.
std::vector<double> times(const InputOptions& options, const std::vector<SeriesFile>& files) {
    const bool hasTimes =
        std::any_of(files.begin(), files.end(), [](const SeriesFile& file) { return file.time.has_value(); });
    if (!options.times.empty() || !options.timeSource.empty() || !hasTimes)
        return options.times;
    std::vector<double> result;
    for (const SeriesFile& file : files)
        result.push_back(file.time.value_or(0));
    return result;
}

/// The list that a loader's callback takes. Times are written so that they read back to the same values.
std::vector<std::string> instructions(const std::vector<std::string>& files, const std::string& timeSource,
                                      const std::vector<double>& times, std::optional<std::int64_t> strand) {
    std::vector<std::string> list{"STANDARDSYNTAX", "1.0"};
    const auto append = [&list](const auto&... items) { (list.push_back(items), ...); };
    if (!timeSource.empty())
        append("SOLUTIONTIMESOURCE", timeSource);
    if (strand)
        append(strandKeyword, std::to_string(*strand));
    if (files.size() == 1)
        append("FILENAME_FILE");
    else
        append("FILELIST_DATAFILES", std::to_string(files.size()));
    list.insert(list.end(), files.begin(), files.end());
    if (!times.empty())
        append(timesKeyword, std::to_string(times.size()));
    for (const double time : times)
        append(fmt::format("{}", time));
    return list;
}

/// The times in an instruction list.
std::vector<double> solutionTimes(const std::vector<std::string>& list) {
    auto entry = std::find_if(list.begin(), list.end(),
                              [](const std::string& text) { return strcasecmp(text.c_str(), timesKeyword) == 0; });
    std::vector<double> times;
    for (entry += std::min<std::ptrdiff_t>(2, list.end() - entry); entry != list.end(); ++entry)
        if (const std::optional<double> time = parseTime(*entry))
            times.push_back(*time);
        else
            break;
    return times;
}

/// A load with a strand appends; where it comes first, it appends to an empty dataset.
bool loadInstructions(Host& host, const Loader& loader, const std::vector<std::string>& list) {
    const bool hasStrand = std::any_of(
        list.begin(), list.end(), [](const std::string& item) { return strcasecmp(item.c_str(), strandKeyword) == 0; });
    if (hasStrand)
        host.startDataset(loader, list);
    return host.loadInstructions(loader, list);
}

bool loadFiles(Host& host, const Loader& loader, const InputOptions& options, const std::vector<SeriesFile>& files) {
    if (!options.times.empty() && options.times.size() != files.size())
        throw Failure(fmt::format("--times gives {} times for {} files.", options.times.size(), files.size()),
                      Exit_Usage);
    const std::vector<double> solutionTimes = times(options, files);
    std::optional<std::int64_t> strand;
    if (options.appendedFiles.empty() && options.strand)
        strand = *options.strand;
    if (solutionTimes.empty() && options.timeSource.empty() && !options.loader && !strand)
        return host.loadFiles(loader, paths(files));
    return loadInstructions(host, loader, instructions(paths(files), options.timeSource, solutionTimes, strand));
}

bool append(Host& host, const InputOptions& options, const std::vector<SeriesFile>& files) {
    InputOptions own = options;
    own.times.clear(); // they belong to the first load
    const Loader* loader = options.loader ? host.findLoader(*options.loader) : nullptr;
    const std::int64_t strand = options.strand ? *options.strand : highestStrand(host.dataset()) + 1;
    return host.loadInstructions(loader ? *loader : host.loaderForFile(files.front().path),
                                 instructions(paths(files), options.timeSource, times(own, files), strand));
}

/// What is named, also by collections and in a layout.
convert::Inputs inputs(const Plan& plan, const std::vector<std::string>& files,
                       const std::vector<std::string>& appendedFiles) {
    convert::Inputs inputs;
    for (const auto& names : {files, paths(plan.files), appendedFiles, paths(plan.appendedFiles),
                              plan.layout ? plan.layout->strings : std::vector<std::string>{}})
        for (const std::string& name : names)
            inputs.add(name);
    return inputs;
}

} // namespace

std::vector<std::string> paths(const std::vector<SeriesFile>& files) {
    std::vector<std::string> result;
    for (const SeriesFile& file : files)
        result.push_back(file.path);
    return result;
}

Plan makePlan(const InputOptions& options, bool isForced) {
    Plan plan;
    const std::vector<std::string> files = options.isReplay ? options.files : expandPatterns(options.files);
    const std::vector<std::string> appendedFiles = expandPatterns(options.appendedFiles);
    requireReadable(files);
    requireReadable(appendedFiles);
    if (options.isReplay)
        plan.layout = readLayout(files.front());
    else
        plan.files = expandCollections(files);
    plan.appendedFiles = expandCollections(appendedFiles);
    plan.permission = {isForced, inputs(plan, files, appendedFiles)};
    return plan;
}

void requireFreeOutputs(const std::vector<PlannedOutput>& outputs, Plan& plan) {
    try {
        for (const PlannedOutput& output : outputs)
            if (!output.path.empty() && !(output.mayBeStream && convert::isStream(output.path)))
                plan.permission.require(output.path);
    } catch (const convert::NotReplaceable& error) {
        throw Failure(error.what(), Exit_Usage);
    }
}

std::vector<double> changedTimes(const InputOptions& options, const Plan& plan, const Instructions& recorded) {
    const std::vector<double> given = plan.layout ? solutionTimes(plan.layout->strings) : times(options, plan.files);
    const std::vector<double> kept = solutionTimes(recorded.strings);
    std::vector<double> changed;
    for (std::size_t index = 0; index < given.size(); ++index)
        if (index >= kept.size() || kept[index] != given[index])
            changed.push_back(given[index]);
    return changed;
}

std::string loaderName(const Host& host, const InputOptions& options, const Plan& plan) {
    if (!plan.layout && !options.loader)
        return host.loaderForFile(plan.files.front().path).name;
    const std::string name = plan.layout ? plan.layout->loaderName : *options.loader;
    if (host.findLoader(name))
        return name;
    std::vector<std::string> names;
    for (const Loader& loader : host.loaders())
        names.push_back(loader.name);
    throw Failure(noSuch("loader", name, names), plan.layout ? Exit_Failed : Exit_Usage);
}

void announce(const Host& host, const InputOptions& options, const Plan& plan, const Console& console) {
    if (plan.layout || options.loader)
        return;
    console.note(fmt::format("files to load: {}", plan.files.size()));
    const std::string& first = plan.files.front().path;
    const Loader& loader = host.loaderForFile(first);
    if (!loader.matches(first))
        console.warning(fmt::format("no loader is for files such as {}; taking {} (or name one with --loader)",
                                    krohost::quoted(first), krohost::quoted(loader.name)));
}

bool load(Host& host, const std::string& loaderName, const InputOptions& options, const Plan& plan) {
    const Loader& loader = *host.findLoader(loaderName);
    const bool isLoaded = plan.layout ? loadInstructions(host, loader, plan.layout->strings)
                                      : loadFiles(host, loader, options, plan.files);
    return isLoaded && (plan.appendedFiles.empty() || append(host, options, plan.appendedFiles));
}

} // namespace krohost::cli
