#include "krohost/cli/terminal/ProgressBar.h"

#include "krohost/cli/terminal/byteText.h"
#include "krohost/cli/terminal/processFigure.h"
#include "krohost/text/printable.h"

#include <fmt/format.h>

#include <sys/ioctl.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>

namespace krohost::cli {

namespace {

int columnCount() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 100;
}

/// "  1:05 left", once there is something to go by.
std::string timeLeft(double seconds, double fraction) {
    if (seconds < 0.5 || fraction < 0.01)
        return {};
    const auto left = static_cast<long long>(std::ceil(seconds / fraction * (1 - fraction)));
    return left < 3600 ? fmt::format("  {}:{:02} left", left / 60, left % 60)
                       : fmt::format("  {}:{:02}:{:02} left", left / 3600, left / 60 % 60, left % 60);
}

} // namespace

// Work that is done at once shows no bar.
ProgressBar::ProgressBar(const OutputOptions& options)
    : isShown_{!options.isQuiet && applies(options.progress, STDERR_FILENO)},
      pause_{options.progress == When::always ? 0 : 0.3}, earlierByteCount_{isShown_ ? readByteCount() : 0} {}

void ProgressBar::setFiles(std::vector<std::string> files) {
    files_ = std::move(files);
    fileNumber_ = 0;
}

std::string ProgressBar::fileText(const std::string& text) {
    // Mostly it is the file named last or one after it; with another pass over the files it begins anew.
    const std::size_t last = fileNumber_ == 0 ? 0 : fileNumber_ - 1;
    for (std::size_t step = 0; step < files_.size(); ++step)
        if (const std::size_t index = (last + step) % files_.size(); text.find(files_[index]) != text.npos) {
            fileNumber_ = index + 1;
            break;
        }
    return fileNumber_ == 0 ? std::string{} : fmt::format("  file {} of {}", fileNumber_, files_.size());
}

void ProgressBar::show(double fraction, const std::string& text) {
    if (!isShown_)
        return;
    if (fraction < fraction_)
        work_ = {};
    fraction_ = fraction;
    if (sinceDraw_.seconds() < pause_)
        return;
    constexpr int width = 24;
    const int filled = static_cast<int>(fraction * width);
    const std::string line = fmt::format("[{:#<{}}{:<{}}] {:3.0f} %{}  {} read{}  {}", "", filled, "", width - filled,
                                         fraction * 100, fileText(text), byteText(readByteCount() - earlierByteCount_),
                                         timeLeft(work_.seconds(), fraction), printableLine(text));
    draw(fmt::format("{:.{}}", line, columnCount() - 1));
}

std::function<void(std::size_t, std::size_t)> ProgressBar::onDemand() {
    setFiles({});
    return [this](std::size_t doneCount, std::size_t count) {
        show(static_cast<double>(doneCount) / static_cast<double>(count),
             fmt::format("{} of {} arrays on demand", doneCount, count));
    };
}

void ProgressBar::draw(const std::string& line) {
    sinceDraw_ = {};
    pause_ = 0.1;
    if (line == shown_)
        return;
    shown_ = line;
    std::fputs(("\r\x1b[K" + shown_).c_str(), stderr);
}

void ProgressBar::clear() {
    if (shown_.empty())
        return;
    std::fputs("\r\x1b[K", stderr);
    shown_.clear();
}

} // namespace krohost::cli
