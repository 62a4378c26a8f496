#include "krohost/cli/ProgressBar.h"

#include <fmt/format.h>

#include <unistd.h>

#include <cstdio>

namespace krohost::cli {

ProgressBar::ProgressBar() : isTerminal_{isatty(STDERR_FILENO) == 1} {}

void ProgressBar::show(double fraction, const std::string& text) {
    if (!isTerminal_)
        return;
    constexpr int width = 30;
    const int filled = static_cast<int>(fraction * width);
    std::string line =
        fmt::format("[{:#<{}}{:<{}}] {:3.0f} % {:.40}", "", filled, "", width - filled, fraction * 100, text);
    if (line == shown_)
        return;
    shown_ = std::move(line);
    fmt::print(stderr, "\r\x1b[K{}", shown_);
    std::fflush(stderr);
}

void ProgressBar::clear() {
    if (shown_.empty())
        return;
    fmt::print(stderr, "\r\x1b[K");
    shown_.clear();
}

} // namespace krohost::cli
