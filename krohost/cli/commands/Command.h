/// What all commands have in common. Each has a file of its own and a row in the table.
#pragma once

#include "krohost/cli/input/InputOptions.h"
#include "krohost/cli/input/loading.h"
#include "krohost/cli/report/Report.h"
#include "krohost/cli/terminal/Console.h"
#include "krohost/cli/terminal/ProgressBar.h"
#include "krohost/host/runtime/Host.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace krohost::cli {

/// What a command works with. The host has loaded the add-on.
struct Session {
    Host& host;
    const Console& console;
    ProgressBar& progress;
    Plan& plan; ///< of a command without files an empty one
    std::filesystem::path addOn;
};

/// What went wrong in a run, as far as it is known when the host has been shut down.
struct Ending {
    std::string error; ///< the first thing; empty: nothing
    std::vector<std::string> dialogs;
    std::vector<std::string> violations;
};

/// What came of a command. Its losses are printed, and with what went wrong they decide on the exit code.
struct Outcome {
    Report report = {};
    bool isSound = true;      ///< false: the exit code is 1, whatever the report says
    bool isDifferent = false; ///< the exit code of a sound run is 5
    std::string error = {};   ///< what went wrong, as far as no dialog says it; printed
    std::string reason = {};  ///< the error for programs, where nothing else went wrong
    std::string text = {};    ///< for people
    /// For programs, without its end. Made only for these: what holds it may end the process where memory runs out.
    nlohmann::ordered_json document = nlohmann::ordered_json::object();
    /// What is known of the host only after its end is added by this; null: nothing.
    std::function<void(const Host& host, Outcome& outcome)> complete = nullptr;
    /// Writes the result, where it is not printed.
    std::function<void(const Ending& ending)> write = nullptr;
};

/// A command with the options that it was given.
class Command {
public:
    virtual ~Command() = default;

    virtual Outcome run(Session& session) = 0;

    /// Whether it takes files, of which it makes a plan.
    virtual bool hasFiles() const { return true; }
    virtual std::vector<PlannedOutput> outputs() const { return {}; }
    virtual JournalDetail journalDetail() const { return JournalDetail::off; }
    /// Whether files are loaded by the loader that is for them.
    virtual bool usesLoaders() const { return hasFiles(); }
    /// What it prints for programs where it does not come to a result.
    virtual nlohmann::ordered_json emptyDocument() const { return nlohmann::ordered_json::object(); }
    /// Whether its document is on one line.
    virtual bool isOnOneLine() const { return false; }

    InputOptions input;
    HostSettings host;
    WriteOptions writing;
    OutputOptions output;
};

/// Makes a command, which adds its options.
template <class Kind>
std::unique_ptr<Command> makeCommand(CLI::App& app) {
    return std::make_unique<Kind>(app);
}

/// A row of the table of commands.
struct CommandEntry {
    const char* name;
    const char* summary;
    const char* examples; ///< command lines that work, each with what it does
    std::unique_ptr<Command> (*make)(CLI::App& app);
};

/// The finished document as text, for a command whose form is not that for people.
std::string documentText(const Command& command, nlohmann::ordered_json document, const Ending& ending);
/// What a command prints as a result when it did not come to one: nothing but for programs.
std::string failureText(const Command& command, const std::string& message);

/// Loads what the plan says; tells the report. True when everything was loaded.
bool load(Session& session, const InputOptions& input, Report& report);

} // namespace krohost::cli
