/// The two ways in which a call across the line between add-on and host goes wrong.
#pragma once

#include <stdexcept>

namespace krohost {

/// The caller broke the contract of the interface. The call fails, and the run counts as failed.
class ContractViolation : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The host cannot do what a sound call asks for. The call fails; the caller may go on.
class CallFailure : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace krohost
