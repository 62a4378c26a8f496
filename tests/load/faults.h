#pragma once

#include <cstdint>

namespace test {

/// What can go wrong below the add-on. A read gives half of what it should, nothing, an error
/// of the system, or way to a signal.
enum class Fault { allocation, shortRead, emptyRead, failedRead, interruptedRead };

/// Lets the n-th chance from now (from 1) that the add-on gives for a fault be taken, once. What the host
/// and Qt allocate and read is no chance. [one thread at a time]
void arm(Fault fault, std::int64_t number);
/// Whether the armed fault has happened. Disarms.
bool disarm();

} // namespace test
