#pragma once

#include "krohost/cli/terminal/OutputOptions.h"
#include "krohost/cli/terminal/Stopwatch.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace krohost::cli {

/// A line on standard error that shows how far the work is, what was read and how long it will take; drawn ten times a
/// second at most, on a terminal or when the user wants it in any case. One thread at a time.
class ProgressBar {
public:
    explicit ProgressBar(const OutputOptions& options);
    ~ProgressBar() { clear(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// The files of the load that begins. The bar counts them as texts name them.
    void setFiles(std::vector<std::string> files);
    /// `fraction` is from 0 to 1; one that is smaller than the last begins new work.
    void show(double fraction, const std::string& text);
    /// What is told how many demands are served; only as long as the bar exists.
    std::function<void(std::size_t doneCount, std::size_t count)> onDemand();
    /// Takes the line away.
    void clear();

private:
    void draw(const std::string& line);
    std::string fileText(const std::string& text);

    bool isShown_;
    std::vector<std::string> files_;
    std::size_t fileNumber_ = 0; // of the file named last, from 1
    double fraction_ = 0;
    Stopwatch work_;      // since this work began
    Stopwatch sinceDraw_; // or since the bar was made
    double pause_;        // seconds before the next drawing
    std::int64_t earlierByteCount_;
    std::string shown_;
};

} // namespace krohost::cli
