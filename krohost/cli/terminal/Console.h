#pragma once

#include "krohost/cli/terminal/OutputOptions.h"
#include "krohost/cli/terminal/Style.h"

#include <string>

namespace krohost::cli {

/// The standard streams, used as the user wants. Results go to standard output, all else to standard error.
class Console {
public:
    explicit Console(const OutputOptions& options);

    Style outputStyle() const { return outputStyle_; }

    /// Each a line on standard error, whatever names are in it: what went wrong; what may be wrong, unless the user
    /// wants quiet; what is being done, if the user wants to know. A dialog of an add-on and a hint of krohost's own,
    /// about what to do, may have several.
    void error(const std::string& text) const;
    void dialog(const std::string& text) const;
    void hint(const std::string& text) const;
    void warning(const std::string& text) const;
    void note(const std::string& text) const;

    /// Writes a result and gives the exit code: a full disk must not look like success. Where nobody reads any more,
    /// nobody is told.
    int print(const std::string& text, int exitCode) const;

private:
    bool isQuiet_;
    bool isVerbose_;
    Style outputStyle_;
    Style errorStyle_;
};

} // namespace krohost::cli
