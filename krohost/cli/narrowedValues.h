#pragma once

#include "krohost/Dataset.h"
#include "krohost/vtu/narrowing.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace krohost::cli {

/// Values that a host holds otherwise than their file, in the order of their places.
using NarrowedValues = std::vector<vtu::NarrowedValue>;

/// The files that the zones of a dataset come from, and what in them the host holds otherwise. Keeps the tags of one
/// file in memory. [main thread]
class OriginalFiles {
public:
    OriginalFiles() = default;
    OriginalFiles(const Dataset& dataset, std::vector<std::filesystem::path> files);

    /// Of one variable of a zone. Nothing when they are more than a million, or when it is not known which file the
    /// zone comes from and there are such values.
    std::optional<NarrowedValues> ofVariable(const Zone& zone, ValueLocation_e location, const std::string& name);
    /// Of the zone's node numbers, in the order of the file.
    std::optional<NarrowedValues> ofNodes(const Zone& zone);

private:
    template <class IsWanted>
    std::optional<NarrowedValues> collect(const Zone& zone, const IsWanted& isWanted);
    void read(std::size_t fileIndex);

    std::vector<std::filesystem::path> files_;
    bool isOnePerZone_ = false;
    std::size_t readIndex_ = SIZE_MAX;
    vtu::Document document_;
    std::vector<vtu::PiecewiseArray> arrays_;
};

} // namespace krohost::cli
