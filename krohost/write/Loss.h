#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace krohost::write {

/// Something of the files that were read which is not in what is written.
struct Loss {
    std::string what;          ///< a word for programs: "dropped"
    std::string message;       ///< a sentence
    std::string array = {};    ///< name; empty where it is no single array
    std::string location = {}; ///< "cells" or "field"
    std::string file = {};     ///< that it is in
    std::uint64_t fileCount = 1;
    std::uint64_t count = 1; ///< of cells or arrays
};

class Losses {
public:
    void add(Loss loss) { list_.push_back(std::move(loss)); }
    const std::vector<Loss>& list() const { return list_; }
    bool empty() const { return list_.empty(); }

private:
    std::vector<Loss> list_;
};

} // namespace krohost::write
