#pragma once

#include <string>

namespace krohost::cli {

/// A line on standard error that shows how far the work is, when that is a terminal; else nothing. One thread at a
/// time.
class ProgressBar {
public:
    ProgressBar();
    ~ProgressBar() { clear(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// `fraction` is from 0 to 1.
    void show(double fraction, const std::string& text);
    /// Takes the line away.
    void clear();

private:
    bool isTerminal_;
    std::string shown_;
};

} // namespace krohost::cli
