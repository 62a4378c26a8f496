#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace veltra::ui {

/// The progress of a task that is divided into equal steps; a step may be a task of its own.
///
/// Every operation but the destructor throws InterruptedException once the user has asked to stop.
/// [main thread, host locked]
class TaskProgress {
public:
    TaskProgress() = default;
    TaskProgress(const TaskProgress&) = delete;
    TaskProgress& operator=(const TaskProgress&) = delete;
    virtual ~TaskProgress() = default;

    /// Opens the next step as a task of one step, with a title that is before its texts; without one, this task's
    /// does. The step is done when the returned object is destroyed, which must happen before this object's end and
    /// before another step is opened.
    virtual std::unique_ptr<TaskProgress> openSubTask(const std::string& title = {}) = 0;

    /// Divides what is left of the task into `stepCount` steps.
    virtual void setStepCount(std::uint64_t stepCount) = 0;

    /// Marks `stepCount` further steps as done; more than there are count as all.
    virtual void advance(std::uint64_t stepCount) = 0;

    /// Says what is being done.
    virtual void setText(const std::string& text) = 0;
};

} // namespace veltra::ui

namespace veltra::kroutilutil {

/// A progress display of the host with `stepCount` steps, shown until the returned object is destroyed.
std::unique_ptr<ui::TaskProgress> createTaskProgressBar(std::uint64_t stepCount);

/// Shows nothing and never interrupts.
std::unique_ptr<ui::TaskProgress> createNoopTaskProgressBar();

} // namespace veltra::kroutilutil
