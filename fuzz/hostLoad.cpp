#include "fuzz/hostLoad.h"

#include "fuzz/fuzz.h"

#include <utility>

namespace fuzz {

namespace {

/// What a load shows: the outcome in words, and everything that must be the same the next time.
struct Shown {
    std::string outcome;
    std::string content;
};

std::string describe(const krohost::Dataset& dataset, bool hasAuxiliaryData = true) {
    std::string text;
    for (const std::string& variable : dataset.variables)
        text += variable + '\n';
    for (const krohost::Zone& zone : dataset.zones) {
        text += zone.name + ' ' + std::to_string(zone.type) + ' ' + std::to_string(zone.nodeCount) + ' ' +
                std::to_string(zone.elementCount) + ' ' + std::to_string(zone.solutionTime) + '\n';
        for (const krohost::Section& section : zone.sections)
            text += std::to_string(section.shape) + ' ' + std::to_string(section.gridOrder) + ' ' +
                    std::to_string(section.elementCount) + '\n';
        if (hasAuxiliaryData)
            for (const auto& [name, value] : zone.auxiliaryData)
                text += name + '=' + value + '\n';
    }
    return text;
}

/// Adds the checksums of everything, and gives how many demands have failed.
std::size_t addChecksums(krohost::Host& host, std::string& content) {
    std::size_t failureCount = 0;
    for (const krohost::DemandResult& result : host.demandAll()) {
        failureCount += result.isLoaded ? 0 : 1;
        for (const krohost::StorageSummary& part : result.parts)
            content += std::to_string(part.count) + ' ' + std::to_string(part.crc32) + '\n';
    }
    return failureCount;
}

Shown demandAll(krohost::Host& host) {
    Shown shown{"loaded", describe(host.dataset())};
    const std::size_t failureCount = addChecksums(host, shown.content);
    require(host.dialogs().size() == failureCount, "each demand that fails shows one dialog");
    if (failureCount > 0)
        shown.outcome += ", but " + sentence(host.dialogs().front().text);
    return shown;
}

krohost::HostOptions hostOptions(int nodeBitCount) {
    krohost::HostOptions options;
    options.nodeBitCount = nodeBitCount;
    options.storageByteLimit = 1 << 24;
    return options;
}

Shown load(const std::filesystem::path& path, int nodeBitCount, const std::function<void(krohost::Host&)>& look) {
    krohost::Host host(hostOptions(nodeBitCount));
    host.loadAddOn(ADD_ON);
    const bool isLoaded = host.loadFiles({path});
    require(host.dialogs().size() == (isLoaded ? 0 : 1), "a load that fails, and no other, shows one dialog");
    Shown shown;
    if (isLoaded)
        shown = demandAll(host);
    else
        shown.outcome = sentence(host.dialogs().front().text);
    if (isLoaded && look)
        look(host);
    for (const krohost::Dialog& dialog : host.dialogs())
        shown.content += dialog.text + '\n';
    host.shutDown();
    require(host.violations().empty(),
            host.violations().empty() ? "" : "no rule of the interface is broken: " + host.violations().front());
    return shown;
}

} // namespace

std::string loadInHost(const std::filesystem::path& path, int nodeBitCount,
                       const std::function<void(krohost::Host&)>& look) {
    const Shown first = load(path, nodeBitCount, look);
    const Shown second = load(path, nodeBitCount, {});
    require(first.content == second.content, "a file gives the same each time it is loaded");
    return first.outcome;
}

std::optional<std::string> loadedContent(const std::filesystem::path& path) {
    krohost::Host host(hostOptions(0));
    host.loadAddOn(ADD_ON);
    if (!host.loadFiles({path}))
        return std::nullopt;
    std::string content = describe(host.dataset(), false);
    if (addChecksums(host, content) > 0)
        return std::nullopt;
    return content;
}

} // namespace fuzz
