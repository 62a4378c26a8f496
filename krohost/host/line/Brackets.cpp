#include "krohost/host/line/Brackets.h"

#include "krohost/host/line/contract.h"

#include <utility>

namespace krohost {

namespace {

void require(bool condition, const char* message) {
    if (!condition)
        throw ContractViolation(message);
}

} // namespace

void Brackets::lock(const KroAddOn* addOn) {
    require(!isLocked_, "the host is locked already");
    isLocked_ = true;
    lockOwner_ = addOn;
}

void Brackets::unlock(const KroAddOn* addOn) {
    require(isLocked_, "the host is not locked");
    require(lockOwner_ == addOn, "the host's lock was taken by another call");
    isLocked_ = false;
}

void Brackets::startDataLoad() {
    require(!isLoadingData_, "a data load is open already");
    isLoadingData_ = true;
}

void Brackets::finishDataLoad() {
    require(isLoadingData_, "no data load is open");
    isLoadingData_ = false;
}

void Brackets::startProgress() {
    require(!isShowingProgress_, "a progress display is open already");
    isShowingProgress_ = true;
}

void Brackets::requireProgress() const {
    require(isShowingProgress_, "no progress display is open");
}

void Brackets::finishProgress() {
    requireProgress();
    isShowingProgress_ = false;
}

std::vector<std::string> Brackets::closeAll() {
    std::vector<std::string> open;
    if (std::exchange(isShowingProgress_, false))
        open.emplace_back("a progress display open");
    if (std::exchange(isLoadingData_, false))
        open.emplace_back("a data load open");
    if (std::exchange(isLocked_, false))
        open.emplace_back("the host locked");
    return open;
}

} // namespace krohost
