#pragma once

#include "loader/mesh/Zone.h"

#include "interface/kro.h"
#include "loader/sdk/loaderUtilities.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace veltra::vtkfile {

using kroutildataio_utils::VariableKey;
using kroutildataio_utils::VariableMap;

/// One component of an array, which is one variable of the host.
struct VariableComponent {
    const DataArray* array;
    std::size_t arrayIndex;  ///< 0 for the points, from 1 for the piece's variables
    std::uint16_t component; ///< from 0
    VariableKey key;
};

/// The variables of a piece: the grid variables X, Y and Z first, then the components of its arrays in file order.
std::vector<VariableComponent> variableComponents(const Piece& piece);

/// The variables of all zones, each once, in order of first appearance. Throws IOException when two arrays of a zone
/// would give one variable, or when there are more variables than any host shows.
std::vector<VariableKey> collectVariables(const std::vector<Zone>& zones);

/// The number in the dataset of a variable that the map holds; throws std::out_of_range for any other.
std::int32_t variableNumber(const VariableMap& variables, const VariableKey& key);

/// How the host stores values of an element type. Integers of more than 32 bits, signed or not, are narrowed to 32.
FieldDataType_e storageType(DataArrayType type);

} // namespace veltra::vtkfile
