/// What data loaders have in common: messages, auxiliary data, and matching of variables with a dataset's.
#pragma once

#include "interface/kro.h"
#include "loader/sdk/ArgList.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace veltra::kroutildataio_utils {

/// The text of a dialog: the strings in order, joined by ": ". [any thread]
std::string composeErrorMessage(const std::vector<std::string>& strings);

/// A variable is known by where its values live and its name.
using VariableKey = std::pair<ValueLocation_e, std::string>;

/// From a variable to its number in the dataset.
using VariableMap = std::map<VariableKey, std::int32_t>;

/// Enters the current dataset's variables into the map, each at the location at which its zones supply it (a variable
/// that no zone supplies is nodal); of variables with one key the first counts. False when the host does not give a
/// variable's name. [main thread, host locked]
bool retrieveVarIndexesInDataSet(VariableMap& variables);

/// Adds those of `incoming` that the map lacks to the dataset, in their order, and enters their numbers. False when the
/// host refuses one. [main thread, host locked]
bool updateDataSetWithIncomingVariables(VariableMap& variables, const std::vector<VariableKey>& incoming);

/// Appends the options of a finished load of files that the user picked. [main thread, host locked]
bool addV3LoaderSelectedOptions(toolbox::ArgList& options, bool resetStyle, bool showInitialPlot,
                                bool promptForOptions);

/// Attaches auxiliary data to the zones of a load.
class AuxDataAssigner {
public:
    using NameValuePairs = std::vector<std::pair<std::string, std::string>>;

    /// One list of (name, value) pairs per zone of the load, in the order of the zones.
    explicit AuxDataAssigner(std::vector<NameValuePairs> pairsByZone) : pairsByZone_(std::move(pairsByZone)) {}

    /// Gives the load's zone `zoneIndex` (from 0), which the dataset holds as `zoneNumber`, its data, as far as the
    /// host takes them: a zone is no worse for a remark that it goes without. [main thread, host locked]
    void assign(std::size_t zoneIndex, std::int32_t zoneNumber) const;

private:
    std::vector<NameValuePairs> pairsByZone_;
};

} // namespace veltra::kroutildataio_utils
