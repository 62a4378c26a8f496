#pragma once

#include "krohost/reader/narrowing.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace krohost::convert {

/// Something of the files that were read which is not, or is otherwise, in what is shown or written.
struct Loss {
    std::string what;       ///< a word for programs: "narrowed", "split", "joined", "dropped", "renamed", "changed" or
                            ///< "damaged"
    std::string message;    ///< a sentence
    std::string array = {}; ///< name; empty where it is no single array
    std::string location = {}; ///< of the array: "points", "cells", "nodal", "cell" or "field"
    std::string file = {};     ///< that it is in, the first of several; empty where it is not known
    std::uint64_t fileCount = 1;
    std::uint64_t count = 1; ///< of values, for what is narrowed and dropped
    std::optional<reader::NarrowedValue> first = {};
    std::string kind = {}; ///< tells losses of one array apart whose sentences are about different things
};

/// Losses, those alike in many files as one.
class Losses {
public:
    /// Adds a loss, or its counts to an equal one of the same array, of this file or another.
    void add(Loss loss);
    void add(const Losses& others);
    const std::vector<Loss>& list() const { return list_; }
    bool empty() const { return list_.empty(); }

private:
    std::vector<Loss> list_;
    struct Place {
        std::size_t index;
        std::string file; // the last one that has been added
    };
    std::map<std::tuple<std::string, std::string, std::string, std::string>, Place> places_; // of those of arrays
};

/// The sentence, with the number of files where there are several.
std::string sentence(const Loss& loss);

/// What of the arrays is used.
struct UsedArrays {
    std::function<bool(const reader::Array&)> isVariable;      ///< whether some component of it is
    bool areNodes = false;                                     ///< whether node numbers are, in 32 bits
    std::function<bool(const reader::Array&)> isVerified = {}; ///< whether damage of it is looked for; empty: of none
};

/// The values of these files, and of those that they name, that the host holds otherwise, and damage. A file is read
/// once. Throws Interrupted.
Losses narrowingLosses(const std::vector<std::filesystem::path>& files, const UsedArrays& used);

/// Throws Interrupted when the user wants it.
void pollInterrupt();

/// "points", "cells", "nodal", "cell" or "field".
std::string locationWord(reader::Association association);

} // namespace krohost::convert
