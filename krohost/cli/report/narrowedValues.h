#pragma once

#include "krohost/convert/zoneFiles.h"
#include "krohost/host/model/Dataset.h"
#include "krohost/reader/narrowing.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace krohost::cli {

/// Values that a host holds otherwise than their file, in the order of their places.
using NarrowedValues = std::vector<reader::NarrowedValue>;

/// The files that the zones of a dataset come from, and what in them the host holds otherwise. Keeps the tags of one
/// file in memory. [main thread]
class OriginalFiles {
public:
    OriginalFiles() = default;
    /// Throws convert::Interrupted, as what is below does.
    OriginalFiles(const Dataset& dataset, const std::vector<std::filesystem::path>& files);

    /// Of one variable of a zone. Nothing when they are more than a million, or when it is not known which array of
    /// which file the variable comes from.
    std::optional<NarrowedValues> ofVariable(const Zone& zone, ValueLocation_e location, const std::string& name);
    /// Of the zone's node numbers, in the order of the file.
    std::optional<NarrowedValues> ofNodes(const Zone& zone);

private:
    /// False when the zone's file is not known or cannot be read to its end.
    bool read(const Zone& zone);
    std::optional<NarrowedValues> collect(const reader::PiecewiseArray& array, std::uint64_t component) const;

    using VariableKey = std::pair<ValueLocation_e, std::string>;
    struct Component {
        std::size_t arrayIndex;
        std::uint64_t number;
    };

    convert::ZoneFiles files_;
    std::size_t readIndex_ = SIZE_MAX;
    reader::Document document_;
    std::vector<reader::PiecewiseArray> arrays_;
    std::map<VariableKey, Component> components_;
};

} // namespace krohost::cli
