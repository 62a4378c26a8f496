#include "loader/sdk/TaskProgress.h"

#include "interface/kro.h"
#include "loader/sdk/exceptions.h"
#include "loader/sdk/utf8.h"

#include <algorithm>
#include <utility>

namespace veltra::kroutilutil {

namespace {

using ui::TaskProgress;

/// What the host shows, and what it has been told of late. Fractions that nobody could tell apart are kept from it: a
/// load may have many thousands of steps, a display but a few hundred points.
class Display {
public:
    Display() { KroUtilProgressStart(text_.c_str()); }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;
    ~Display() { KroUtilProgressFinish(); }

    void throwIfInterrupted() {
        isInterrupted_ = isInterrupted_ || KroUtilInterruptIsSet() != 0;
        if (isInterrupted_)
            throw InterruptedException();
    }

    void show(double fraction) {
        constexpr double smallestGrowth = 0.001;
        if (fraction < fraction_ + smallestGrowth)
            return;
        fraction_ = std::min(fraction, 1.0); // the sum of all parts may exceed the whole by a rounding error
        isInterrupted_ = KroUtilProgressUpdate(fraction_) == 0;
        if (isInterrupted_)
            throw InterruptedException();
    }

    void show(const std::string& text) {
        if (text == text_)
            return;
        text_ = text;
        KroUtilProgressText(validUtf8(text_).c_str());
    }

private:
    double fraction_ = 0;
    std::string text_ = "Working...";
    bool isInterrupted_ = false;
};

/// A task whose steps share the part of the display from `begin`, `width` wide.
class Task : public TaskProgress {
public:
    Task(Display& display, double begin, double width, std::uint64_t stepCount, Task* parent, std::string title)
        : display_(display), begin_(begin), width_(width), stepCount_(atLeastOne(stepCount)), parent_(parent),
          title_(std::move(title)) {}
    ~Task() override {
        // Shown with the next step: the host may ask to stop, which cannot be passed on from here.
        if (parent_)
            parent_->markDone(1);
    }

    std::unique_ptr<TaskProgress> openSubTask(const std::string& title) override {
        display_.throwIfInterrupted();
        display_.show(fraction());
        return std::make_unique<Task>(display_, fraction(), width_ / static_cast<double>(stepCount_), 1, this,
                                      title.empty() ? title_ : title);
    }

    void setStepCount(std::uint64_t stepCount) override {
        display_.throwIfInterrupted();
        const double end = begin_ + width_;
        begin_ = fraction();
        width_ = end - begin_;
        doneCount_ = 0;
        stepCount_ = atLeastOne(stepCount);
    }

    void advance(std::uint64_t stepCount) override {
        display_.throwIfInterrupted();
        markDone(stepCount);
        display_.show(fraction());
    }

    void setText(const std::string& text) override {
        display_.throwIfInterrupted();
        display_.show(title_.empty() ? text : title_ + ": " + text);
    }

private:
    static std::uint64_t atLeastOne(std::uint64_t stepCount) { return std::max<std::uint64_t>(stepCount, 1); }
    double fraction() const {
        return begin_ + width_ * static_cast<double>(doneCount_) / static_cast<double>(stepCount_);
    }
    void markDone(std::uint64_t stepCount) { doneCount_ += std::min(stepCount, stepCount_ - doneCount_); }

    Display& display_;
    double begin_;
    double width_;
    std::uint64_t stepCount_;
    Task* parent_;
    std::string title_;
    std::uint64_t doneCount_ = 0;
};

/// The whole display with the task that fills it.
class ProgressBar final : private Display, public Task {
public:
    explicit ProgressBar(std::uint64_t stepCount) : Task(*this, 0, 1, stepCount, nullptr, {}) {}
};

class NoProgress final : public TaskProgress {
public:
    std::unique_ptr<TaskProgress> openSubTask(const std::string&) override { return std::make_unique<NoProgress>(); }
    void setStepCount(std::uint64_t) override {}
    void advance(std::uint64_t) override {}
    void setText(const std::string&) override {}
};

} // namespace

std::unique_ptr<TaskProgress> createTaskProgressBar(std::uint64_t stepCount) {
    return std::make_unique<ProgressBar>(stepCount);
}

std::unique_ptr<TaskProgress> createNoopTaskProgressBar() {
    return std::make_unique<NoProgress>();
}

} // namespace veltra::kroutilutil
