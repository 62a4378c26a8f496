#include "loader/mesh/variables.h"

#include "loader/mesh/messages.h"

#include "loader/streams/dataArrayReader.h"

#include "loader/sdk/exceptions.h"

#include <array>
#include <set>
#include <stdexcept>

namespace veltra::vtkfile {

namespace {

constexpr std::array<const char*, 3> axes{"X", "Y", "Z"};

std::string componentName(const DataArray& array, std::uint16_t component) {
    if (array.numberOfComponents == 1)
        return *array.name;
    if (array.numberOfComponents <= axes.size())
        return *array.name + '_' + axes[component];
    return *array.name + '_' + std::to_string(component + 1);
}

/// Numbers of components are read before the arrays, and each would be a variable.
constexpr std::size_t variableLimit = 100000;

void checkComponentCounts(const Piece& piece) {
    std::size_t count = 0;
    for (const DataArray& array : piece.variables) {
        announcedValueCount(array);
        count += array.numberOfComponents;
    }
    if (count > variableLimit)
        throw IOException(tooManyVariables(variableLimit));
}

} // namespace

std::vector<VariableComponent> variableComponents(const Piece& piece) {
    std::vector<VariableComponent> components;
    for (std::uint16_t component = 0; component < piece.points.numberOfComponents; ++component)
        components.push_back({&piece.points, 0, component, {ValueLocation_Nodal, axes.at(component)}});
    for (std::size_t index = 0; index < piece.variables.size(); ++index) {
        const DataArray& array = piece.variables[index];
        for (std::uint16_t component = 0; component < array.numberOfComponents; ++component)
            components.push_back(
                {&array, index + 1, component, {array.valueLocation, componentName(array, component)}});
    }
    return components;
}

std::vector<VariableKey> collectVariables(const std::vector<Zone>& zones) {
    std::vector<VariableKey> incoming;
    std::set<VariableKey> known;
    for (const Zone& zone : zones) {
        checkComponentCounts(zone.pieces.front());
        std::set<VariableKey> ofZone;
        for (VariableComponent& variable : variableComponents(zone.pieces.front())) {
            if (!ofZone.insert(variable.key).second)
                throw IOException(duplicateVariable(variable.key.second));
            if (known.insert(variable.key).second)
                incoming.push_back(std::move(variable.key));
        }
        if (incoming.size() > variableLimit)
            throw IOException(tooManyVariables(variableLimit));
    }
    return incoming;
}

std::int32_t variableNumber(const VariableMap& variables, const VariableKey& key) {
    const auto found = variables.find(key);
    if (found == variables.end())
        throw std::out_of_range("invalid map<K, T> key");
    return found->second;
}

FieldDataType_e storageType(DataArrayType type) {
    switch (type) {
    case DataArrayType::Int8:
    case DataArrayType::UInt8:
        return FieldDataType_Byte;
    case DataArrayType::Int16:
    case DataArrayType::UInt16:
        return FieldDataType_Int16;
    case DataArrayType::Int32:
    case DataArrayType::UInt32:
    case DataArrayType::Int64:
    case DataArrayType::UInt64:
        return FieldDataType_Int32;
    case DataArrayType::Float32:
        return FieldDataType_Float;
    case DataArrayType::Float64:
        break;
    }
    return FieldDataType_Double;
}

} // namespace veltra::vtkfile
