#pragma once

#include <cstdint>
#include <string_view>

namespace krohost {

class HostState;

/// What tests do to a host that no user does: faults at chosen moments, counts of what happened, a journal begun anew.
/// For the thread that made the host, while the host lives.
class Injection {
public:
    explicit Injection(HostState& state) : state_{state} {}

    /// Lets the n-th call from now (from 1) of a function fail the way its contract allows. Throws
    /// std::invalid_argument when that cannot be and std::out_of_range for an unknown function.
    void refuse(std::string_view functionName, std::int64_t callNumber = 1);
    /// Requests an interrupt at the n-th poll or progress update since the start or the last Host::clearInterrupt
    /// (from 1).
    void interruptAtPoll(std::int64_t pollNumber);
    void interruptAtProgressUpdate(std::int64_t updateNumber);

    std::int64_t callCount(std::string_view functionName) const;
    /// Polls counted; they are when the journal is on or a poll is armed.
    std::int64_t pollCount() const;
    /// Forgets the events so far.
    void clearJournal();

private:
    HostState& state_;
};

} // namespace krohost
