#pragma once

#include "krohost/cli/commands/Command.h"

namespace krohost::cli {

/// A command that loads once and may append, record and demand.
class LoadCommand : public Command {
public:
    std::vector<PlannedOutput> outputs() const override { return {{recordFile_, true}}; }

protected:
    /// --append, --record, --force, --demand and --jobs.
    void addLoadOptions(CLI::App& app);

    /// Loads, records how, and demands everything if that is wanted. Throws Failure.
    Report loadAndDemand(Session& session) const;

private:
    void record(const Session& session, Report& report) const;

    std::string recordFile_; // empty: nothing is recorded
    bool isDemanding_ = false;
    unsigned threadCount_ = 1;
};

} // namespace krohost::cli
