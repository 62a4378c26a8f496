#include "krohost/host/runtime/Interrupt.h"

namespace krohost {

constinit Interrupt interrupt;

void Interrupt::reset() noexcept {
    isRequested_ = false;
    isCounting_ = false;
    pollCount_ = 0;
    pollNumber_ = 0;
    updateCount_ = 0;
    updateNumber_ = 0;
}

void Interrupt::requestAtPoll(std::int64_t pollNumber) noexcept {
    pollNumber_ = pollNumber;
    countPolls();
}

void Interrupt::countPoll() noexcept {
    if (pollCount_.fetch_add(1) + 1 == pollNumber_)
        request();
}

bool Interrupt::pollAtProgressUpdate() noexcept {
    if (updateCount_.fetch_add(1) + 1 == updateNumber_)
        request();
    return isRequested();
}

} // namespace krohost
