#include "krohost/host/runtime/Injection.h"

#include "krohost/host/runtime/HostState.h"
#include "krohost/host/runtime/Interrupt.h"

namespace krohost {

void Injection::refuse(std::string_view functionName, std::int64_t callNumber) {
    state_.gate.refuse(functionName, callNumber);
}

void Injection::interruptAtPoll(std::int64_t pollNumber) {
    interrupt.requestAtPoll(pollNumber);
}

void Injection::interruptAtProgressUpdate(std::int64_t updateNumber) {
    interrupt.requestAtProgressUpdate(updateNumber);
}

std::int64_t Injection::callCount(std::string_view functionName) const {
    return state_.gate.callCount(functionName);
}

std::int64_t Injection::pollCount() const {
    return interrupt.pollCount();
}

void Injection::clearJournal() {
    state_.journal.clearEvents();
}

} // namespace krohost
