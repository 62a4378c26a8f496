/// What every function of the C interface does around its own work.
#pragma once

#include "krohost/host/line/callAddOn.h"
#include "krohost/host/line/contract.h"
#include "krohost/host/line/entries.h"
#include "krohost/host/runtime/HostState.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace krohost {

/// The result of a function without result.
struct Nothing {};

/// Results as they are in the journal, without addresses.
std::string resultText(Nothing);
std::string resultText(std::int64_t number);
std::string resultText(const char* text);
std::string resultText(const void* pointer);
std::string resultText(const KroStringList* list);
std::string resultText(const KroArgList* list);
std::string resultText(const KroAddOn* addOn);

/// Writes `name(arguments) = result`, when the journal is to hold this call.
bool writesCall(const HostState& host, std::size_t entryIndex, bool hasFailed);
void writeCall(HostState& host, std::size_t entryIndex, const std::string& arguments, const std::string& result);

/// Serves one call: checks it, lets a refused one fail, runs `body(host)`, keeps every exception on this side of the
/// line (giving `failure`) and writes the call to the journal with what `describe()` says about its arguments.
template <std::size_t entryIndex, class Result, class Describe, class Body>
Result guarded(Result failure, const Describe& describe, const Body& body) noexcept {
    const CodeScope scope{CodeScope::Owner::host};
    HostState* host = HostState::current();
    if (!host)
        return failure;
    try {
        Result result = failure;
        bool hasFailed = false;
        try {
            host->admit(entryIndex);
            result = body(*host);
        } catch (...) {
            hasFailed = true;
            host->recordFailure(entryIndex);
        }
        if (writesCall(*host, entryIndex, hasFailed))
            writeCall(*host, entryIndex, describe(), resultText(result));
        return result;
    } catch (...) {
        return failure; // not even the memory to say why
    }
}

/// The same for a function without result.
template <std::size_t entryIndex, class Describe, class Body>
void guardedVoid(const Describe& describe, const Body& body) noexcept {
    guarded<entryIndex>(Nothing{}, describe, [&](HostState& host) {
        body(host);
        return Nothing{};
    });
}

/// Describes a call without arguments.
inline std::string noArguments() {
    return {};
}

/// The pointer; throws ContractViolation, which calls it `what`, for null.
template <class Thing>
Thing* requireNotNull(Thing* pointer, const char* what) {
    if (!pointer)
        throw ContractViolation(std::string{what} + " is null");
    return pointer;
}

} // namespace krohost
