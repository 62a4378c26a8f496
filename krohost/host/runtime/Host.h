#pragma once

#include "krohost/host/line/Journal.h"
#include "krohost/host/model/Dataset.h"
#include "krohost/host/runtime/AddOn.h"
#include "krohost/host/runtime/Demand.h"
#include "krohost/host/runtime/Hold.h"
#include "krohost/host/runtime/HostOptions.h"
#include "krohost/host/runtime/Injection.h"
#include "krohost/host/runtime/Loader.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace krohost {

class HostState;

/// An add-on could not be loaded, or registered nothing to load files with.
class AddOnError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A host in this process: loads add-ons, has them load files, and serves demands for what they registered.
///
/// A process has one host at a time; another may be made once the first is gone. Everything is for the thread that made
/// the host, except where said. Operations of the add-on that break the interface's contract do not throw here; they
/// are listed in violations().
class Host {
public:
    /// Throws std::logic_error while the process has another host.
    explicit Host(HostOptions options = {});
    /// Shuts down.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Loads a shared library and calls its entry point. Throws AddOnError, whose text names the path and the reason.
    void loadAddOn(const std::filesystem::path& path);

    /// Those that have registered themselves.
    const std::deque<KroAddOn>& addOns() const;
    const std::vector<Loader>& loaders() const;
    /// Null when none has the name.
    const Loader* findLoader(const std::string& name) const;
    /// The first loader whose patterns fit the name, else the first of all. Throws AddOnError when there is none.
    const Loader& loaderForFile(const std::string& fileName) const;

    /// Has the loader for the first file load them all, as files that the user picked. True when it did. There must be
    /// at least one.
    bool loadFiles(const std::vector<std::string>& fileNames);
    bool loadFiles(const Loader& loader, const std::vector<std::string>& fileNames);
    /// Has a loader load what the instructions say, as in a replay or, with a strand, to append to the current dataset.
    /// True when it did.
    bool loadInstructions(const Loader& loader, const std::vector<std::string>& instructions);

    /// Replaces the current dataset by an empty one that the loader can append to, with the instructions that make it
    /// again. A load into a new dataset needs none.
    void startDataset(const Loader& loader, const std::vector<std::string>& instructions);

    /// What the last load had said it was doing when it failed; nothing when it did not, or had said nothing.
    std::optional<std::string> stoppedAt() const;

    /// The current dataset; an empty one while there is none.
    const Dataset& dataset() const;

    /// Keeps the current dataset beside those to come, as long as the host lives; there is no current one afterwards.
    const Dataset& keepDataset();

    /// Loads and keeps, as long as the budget of memory allows; true when the data are there. The target must exist,
    /// here and below (std::out_of_range).
    bool load(Target target);
    /// Drops what is loaded; true when the client agreed.
    bool unload(Target target);
    /// Data of the current or a kept dataset, in which the target must exist.
    Hold hold(const Dataset& owner, Target target);
    /// Loads, copies and, unless they were loaded before, unloads. Nothing when the load fails.
    std::optional<std::vector<double>> demandValues(std::int32_t zone, std::int32_t variable);
    std::optional<std::vector<std::vector<std::int64_t>>> demandNodeMap(std::int32_t zone);
    /// Serves everything that the dataset has, from several threads; see krohost::demand.
    std::vector<DemandResult> demandAll(const DemandOptions& options = {});
    /// The same for these targets; every one must exist (std::out_of_range) and be there once.
    std::vector<DemandResult> demand(std::span<const Target> targets, const DemandOptions& options);

    const Journal& journal() const;
    const std::vector<Dialog>& dialogs() const { return journal().dialogs(); }
    const std::vector<std::string>& violations() const { return journal().violations(); }

    /// Asks the current operation to stop, until clearInterrupt. [any thread, signal handler]
    static void requestInterrupt() noexcept;
    static bool isInterrupted() noexcept;
    /// Forgets the request, what was armed and what was counted.
    void clearInterrupt();
    /// Faults and counts for tests.
    Injection injection() { return Injection{*state_}; }

    /// Tells add-ons of the end and cleans up everything, so that violations() is complete; dataset() is empty then.
    /// Only the first call does anything, and no load or demand may follow. Throws std::bad_alloc when there was no
    /// memory for all that the journal should hold.
    void shutDown();

private:
    Deferred& require(Target target);
    template <class Copy>
    auto demandCopy(Target target, const Copy& copy);

    std::unique_ptr<HostState> state_;
};

} // namespace krohost
