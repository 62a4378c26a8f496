#pragma once

#include "krohost/host/model/Deferred.h"

#include <utility>

namespace krohost {

struct Dataset;
class HostState;

/// Loads data, unless they are loaded, and holds them for as long as it lives, on one thread. Then they are unloaded,
/// unless they were loaded before or are to be kept. Ends before its dataset does. What goes wrong is a dialog or a
/// violation. One thread at a time per target. [any thread]
class Hold {
public:
    Hold(HostState& host, const Dataset& dataset, Target target, bool isKeeping = false);
    ~Hold();
    Hold(Hold&& other) noexcept : host_{other.host_}, data_{std::exchange(other.data_, nullptr)} {}
    Hold& operator=(Hold&&) = delete;

    /// Null when the load failed.
    const Deferred* data() const { return data_; }

private:
    HostState& host_;
    Deferred* data_;
};

} // namespace krohost
