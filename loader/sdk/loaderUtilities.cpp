#include "loader/sdk/loaderUtilities.h"

#include <algorithm>

namespace veltra::kroutildataio_utils {

std::string composeErrorMessage(const std::vector<std::string>& strings) {
    std::string text;
    for (const std::string& string : strings)
        text += (&string == strings.data() ? "" : ": ") + string;
    return text;
}

bool retrieveVarIndexesInDataSet(VariableMap& variables) {
    const std::int32_t variableCount = KroUtilDataSetGetNumVars();
    for (std::int32_t variable = 1; variable <= variableCount; ++variable) {
        const char* name = KroUtilVarGetName(variable);
        if (!name)
            return false;
        const ValueLocation_e location = KroUtilVarGetValueLocation(variable);
        variables.emplace(VariableKey(location == ValueLocation_None ? ValueLocation_Nodal : location, name), variable);
    }
    return true;
}

bool updateDataSetWithIncomingVariables(VariableMap& variables, const std::vector<VariableKey>& incoming) {
    return std::all_of(incoming.begin(), incoming.end(), [&](const VariableKey& key) {
        if (variables.contains(key))
            return true;
        const std::int32_t variable = KroUtilDataSetAddVar(key.second.c_str());
        return variable > 0 && variables.emplace(key, variable).second;
    });
}

bool addV3LoaderSelectedOptions(toolbox::ArgList& options, bool resetStyle, bool showInitialPlot,
                                bool promptForOptions) {
    return options.appendInt("ResetStyle", resetStyle ? 1 : 0) &&
           options.appendInt("ShowInitialPlot", showInitialPlot ? 1 : 0) &&
           options.appendInt("PromptForOptions", promptForOptions ? 1 : 0);
}

void AuxDataAssigner::assign(std::size_t zoneIndex, std::int32_t zoneNumber) const {
    if (zoneIndex >= pairsByZone_.size())
        return;
    for (const auto& [name, value] : pairsByZone_[zoneIndex])
        KroUtilZoneSetAuxData(zoneNumber, name.c_str(), value.c_str());
}

} // namespace veltra::kroutildataio_utils
