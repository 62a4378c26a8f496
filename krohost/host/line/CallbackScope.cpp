#include "krohost/host/line/CallbackScope.h"

namespace krohost {

namespace {
thread_local const CallbackScope* innermost = nullptr;
}

CallbackScope::CallbackScope(const Deferred& deferred, Phase phase)
    : deferred_{deferred}, phase_{phase}, outer_{innermost} {
    innermost = this;
}

CallbackScope::~CallbackScope() {
    innermost = outer_;
}

const CallbackScope* CallbackScope::current() {
    return innermost;
}

} // namespace krohost
