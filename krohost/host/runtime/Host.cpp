#include "krohost/host/runtime/Host.h"

#include "krohost/host/runtime/HostState.h"
#include "krohost/host/runtime/Interrupt.h"
#include "krohost/text/quoted.h"

#include <fmt/format.h>

#include <dlfcn.h>

#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

namespace krohost {

namespace {

using EntryPoint = void (*)();

/// The library stays loaded until the process ends: its code may be on a stack or in an exit handler, and a report of
/// leaked memory needs its symbols.
EntryPoint openAddOn(const std::filesystem::path& path) {
    void* library = dlopen(std::filesystem::absolute(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        throw AddOnError(fmt::format("The add-on \"{}\" cannot be loaded: {}", path.string(), dlerror()));
    void* symbol = dlsym(library, "InitKroAddOn113");
    if (!symbol)
        throw AddOnError(fmt::format("The add-on \"{}\" has no entry point: {}", path.string(), dlerror()));
    return reinterpret_cast<EntryPoint>(symbol);
}

} // namespace

Host::Host(HostOptions options) : state_{std::make_unique<HostState>(std::move(options))} {}

Host::~Host() {
    try {
        shutDown();
    } catch (const std::bad_alloc&) {
        // Who wants to know has called it before.
    }
}

void Host::loadAddOn(const std::filesystem::path& path) {
    const EntryPoint entryPoint = openAddOn(path);
    state_->call("InitKroAddOn113", "", [&]() -> std::optional<KroBool> {
        entryPoint();
        return std::nullopt;
    });
}

const std::deque<KroAddOn>& Host::addOns() const {
    return state_->addOns;
}

const std::vector<Loader>& Host::loaders() const {
    return state_->loaders;
}

const Loader* Host::findLoader(const std::string& name) const {
    return state_->findLoader(name);
}

const Loader& Host::loaderForFile(const std::string& fileName) const {
    if (loaders().empty())
        throw AddOnError("The add-on has registered no loader.");
    const auto found = std::find_if(loaders().begin(), loaders().end(),
                                    [&](const Loader& loader) { return loader.matches(fileName); });
    return found == loaders().end() ? loaders().front() : *found;
}

bool Host::loadFiles(const std::vector<std::string>& fileNames) {
    return loadFiles(loaderForFile(fileNames.at(0)), fileNames);
}

bool Host::loadFiles(const Loader& loader, const std::vector<std::string>& fileNames) {
    if (fileNames.size() > 1 && !loader.takesSeveralFiles) {
        state_->taskText.clear();
        state_->journal.dialog({fmt::format("{} takes one file at a time.", loader.name)});
        return false;
    }
    const KroStringList list{{}, 0, fileNames};
    return state_->runLoad("LoaderSelectedCallback", quoted(fileNames),
                           [&] { return loader.loadSelected(&list, nullptr, loader.clientData); });
}

bool Host::loadInstructions(const Loader& loader, const std::vector<std::string>& instructions) {
    const KroStringList list{{}, 0, instructions};
    return state_->runLoad("LoaderCallback", quoted(instructions),
                           [&] { return loader.load(&list, loader.clientData); });
}

void Host::startDataset(const Loader& loader, const std::vector<std::string>& instructions) {
    state_->dropDataset();
    Dataset& dataset = state_->dataset.emplace();
    dataset.loaderName = loader.name;
    dataset.title = "Untitled";
    dataset.instructions = Instructions{loader.name, instructions};
}

std::optional<std::string> Host::stoppedAt() const {
    return state_->taskText.empty() ? std::nullopt : std::optional{state_->taskText};
}

const Dataset& Host::dataset() const {
    static const Dataset none;
    return state_->dataset ? *state_->dataset : none;
}

const Dataset& Host::keepDataset() {
    Dataset& kept = state_->earlierDatasets.emplace_back();
    if (state_->dataset)
        std::swap(kept, *state_->dataset);
    state_->dataset.reset();
    return kept;
}

Deferred& Host::require(Target target) {
    Deferred* deferred = dataset().find(target);
    if (!deferred)
        throw std::out_of_range(fmt::format("nothing is registered for {}", describe(target)));
    return *deferred;
}

bool Host::load(Target target) {
    require(target);
    return Hold{*state_, dataset(), target, true}.data() != nullptr;
}

bool Host::unload(Target target) {
    return state_->budget.unload(require(target), state_->journal);
}

Hold Host::hold(const Dataset& owner, Target target) {
    return {*state_, owner, target};
}

template <class Copy>
auto Host::demandCopy(Target target, const Copy& copy) {
    require(target);
    const Hold hold{*state_, dataset(), target};
    return hold.data() ? std::optional{copy(*hold.data())} : std::nullopt;
}

std::optional<std::vector<double>> Host::demandValues(std::int32_t zone, std::int32_t variable) {
    return demandCopy({zone, variable},
                      [](const Deferred& loaded) { return values(static_cast<const KroFieldData&>(loaded)); });
}

std::optional<std::vector<std::vector<std::int64_t>>> Host::demandNodeMap(std::int32_t zone) {
    return demandCopy({zone, 0},
                      [](const Deferred& loaded) { return nodeNumbers(static_cast<const KroNodeMap&>(loaded)); });
}

std::vector<DemandResult> Host::demandAll(const DemandOptions& options) {
    return krohost::demand(*state_, dataset().targets(), options);
}

std::vector<DemandResult> Host::demand(std::span<const Target> targets, const DemandOptions& options) {
    for (const Target target : targets)
        require(target);
    return krohost::demand(*state_, targets, options);
}

const Journal& Host::journal() const {
    return state_->journal;
}
void Host::requestInterrupt() noexcept {
    interrupt.request();
}
bool Host::isInterrupted() noexcept {
    return interrupt.isRequested();
}

void Host::clearInterrupt() {
    interrupt.reset();
    if (journal().isOn())
        interrupt.countPolls();
}

void Host::shutDown() {
    state_->shutDown();
}

} // namespace krohost
