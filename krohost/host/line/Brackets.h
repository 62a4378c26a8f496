#pragma once

#include "interface/kro.h"

#include <string>
#include <vector>

namespace krohost {

/// The pairs of calls that an add-on has open: the host's lock, the data load and the progress display. None of them
/// nests in itself. An operation throws ContractViolation where the pairing is broken. [main thread]
class Brackets {
public:
    /// `addOn` is null for the global lock of the entry point.
    void lock(const KroAddOn* addOn);
    void unlock(const KroAddOn* addOn);
    bool isLocked() const { return isLocked_; }

    void startDataLoad();
    void finishDataLoad();
    bool isLoadingData() const { return isLoadingData_; }

    void startProgress();
    void requireProgress() const;
    void finishProgress();

    /// Closes what is still open and says what it was.
    std::vector<std::string> closeAll();

private:
    bool isLocked_ = false;
    const KroAddOn* lockOwner_ = nullptr;
    bool isLoadingData_ = false;
    bool isShowingProgress_ = false;
};

} // namespace krohost
