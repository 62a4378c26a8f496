#pragma once

namespace krohost {

class Deferred;

/// What the host asks of a load-on-demand client.
enum class Phase { load, unload, cleanup };

/// Marks the current thread as being inside a load-on-demand callback, for as long as the object lives.
class CallbackScope {
public:
    CallbackScope(const Deferred& deferred, Phase phase);
    ~CallbackScope();
    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;

    /// The innermost scope of this thread; null outside any callback.
    static const CallbackScope* current();

    const Deferred& deferred() const { return deferred_; }
    Phase phase() const { return phase_; }

private:
    const Deferred& deferred_;
    Phase phase_;
    const CallbackScope* outer_;
};

} // namespace krohost
