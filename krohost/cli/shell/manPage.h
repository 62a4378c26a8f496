#pragma once

namespace CLI {
class App;
}

namespace krohost::cli {

/// Adds the option, which the help does not show, that prints the manual page, made of the descriptions and footers
/// that `app` and its commands have when it is run.
void addManPageOption(CLI::App& app);

} // namespace krohost::cli
