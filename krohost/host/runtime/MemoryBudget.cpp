#include "krohost/host/runtime/MemoryBudget.h"

#include "krohost/host/model/Deferred.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace krohost {

namespace {
thread_local int useCountOfThread = 0;
}

MemoryBudget::Answer MemoryBudget::begin(Deferred& data, std::uint64_t byteCount, bool isKept, Journal& journal) {
    std::unique_lock lock{mutex_};
    const bool isLoaded = data.room.isTaken;
    if (!isLoaded) {
        if (!makeRoom(byteCount, lock, journal))
            return Answer::refused;
        take(data, byteCount);
    }
    if (data.room.useCount++ == 0)
        used_.splice(used_.end(), idle_, data.room.place);
    data.room.isKept |= isKept;
    ++useCountOfThread;
    return isLoaded ? Answer::loaded : Answer::granted;
}

// Allocates nothing but lines of the journal, since uses end in destructors. Data whose unloading fails for want of
// such a line stay loaded, as those do whose client does not agree.
void MemoryBudget::end(Deferred& data, Journal& journal) noexcept {
    std::unique_lock lock{mutex_};
    if (data.room.useCount == 1 && !data.room.isKept) {
        lock.unlock(); // giving back large storage takes a while
        try {
            data.unload(journal);
        } catch (const std::bad_alloc&) {
            journal.noteLoss();
        }
        lock.lock();
    }
    --useCountOfThread;
    if (--data.room.useCount > 0)
        return;
    if (data.isLoaded())
        idle_.splice(idle_.end(), used_, data.room.place);
    else
        giveBack(data, used_);
    roomChanged_.notify_all();
}

bool MemoryBudget::unload(Deferred& data, Journal& journal) {
    const std::lock_guard lock{mutex_};
    if (!data.room.isTaken)
        return true;
    if (data.room.useCount > 0 || !data.unload(journal))
        return false;
    giveBack(data, idle_);
    return true;
}

void MemoryBudget::cleanup(Deferred& data, Journal& journal) noexcept {
    const std::lock_guard lock{mutex_};
    data.cleanup(journal);
    if (data.room.isTaken)
        giveBack(data, idle_);
}

bool MemoryBudget::makeRoom(std::uint64_t byteCount, std::unique_lock<std::mutex>& lock, Journal& journal) {
    while (byteCount > freeByteCount_) {
        const auto unloaded =
            std::find_if(idle_.begin(), idle_.end(), [&](Deferred* data) { return data->unload(journal); });
        if (unloaded != idle_.end())
            giveBack(**unloaded, idle_);
        else if (used_.empty() || useCountOfThread > 0)
            return false;
        else
            roomChanged_.wait(lock);
    }
    return true;
}

void MemoryBudget::take(Deferred& data, std::uint64_t byteCount) {
    idle_.push_back(&data);
    data.room = {true, false, 0, byteCount, std::prev(idle_.end())};
    freeByteCount_ -= byteCount;
}

void MemoryBudget::giveBack(Deferred& data, List& list) {
    freeByteCount_ += data.room.byteCount;
    list.erase(data.room.place);
    data.room = {};
}

} // namespace krohost
