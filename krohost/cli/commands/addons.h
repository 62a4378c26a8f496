#pragma once

#include "krohost/cli/CommandLine.h"
#include "krohost/cli/terminal/Console.h"
#include "krohost/host/runtime/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <filesystem>
#include <string>

namespace CLI {
class App;
}

namespace krohost::cli {

void addAddOnsOptions(CLI::App& command, CommandLine& line);

/// The add-ons that the library at `path` has registered, and their loaders, for programs.
nlohmann::ordered_json addOnsDocument(const Host& host, const std::filesystem::path& path);

/// The same document for people.
std::string addOnsTable(const nlohmann::ordered_json& document, Style style);

} // namespace krohost::cli
