#pragma once

enum Kind { memory, opening, writing, closing, renaming, syncing, folder, reading, signalled, kindCount };

/// The fault that is to happen, shared by the processes of a sweep.
struct State {
    Kind kind = kindCount;
    long left = 0; ///< chances until the fault
    bool hasBegun = false;
    bool hasHappened = false;
};

/// Null before the sweep.
extern State* state;
