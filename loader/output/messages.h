/// The sentences that a user reads when a dataset cannot be built or its arrays cannot be loaded.
#pragma once

#include "loader/mesh/sections.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace veltra::vtkfile {

std::string valueCountNotAllotted(const DataArray& array, std::uint64_t valueCount, std::uint64_t roomCount);
std::string missingComponent(const DataArray& array, std::uint16_t component);
std::string nodesNotAllotted(std::size_t sectionIndex, std::uint64_t roomCount);
std::string cellsWithoutPoints(const std::string& zoneName);
std::string valuesOfOtherVertices(const std::string& zoneName, std::uint64_t cellCount, std::uint64_t pointCount);

inline constexpr const char* noFileProvidedData = "None of the VTK files provided any data";
inline constexpr const char* cellsChanged =
    "The cells of the file are not those that it had when it was opened; load the file again";
inline constexpr const char* insufficientStreamMemory =
    "Insufficient memory resources available to read data from the input stream.\nReason: ";
inline constexpr const char* badAsciiNumber =
    "An error occurred while parsing an ASCII number from a data array.\nReason: ";
// Only node maps spell it so; users' scripts match the whole text.
inline constexpr const char* badAsciiNodeNumber =
    "An error occurred while parsing an ASCII number from a data array.\nReaons: ";
inline constexpr const char* asciiNumberOutOfRange = "A number parsed from an ASCII data array cannot be converted to "
                                                     "the data type specified in the array.\nReason: ";
inline constexpr const char* inputFileError = "An error occurred while reading data from the input file.\nReason: ";
inline constexpr const char* unknownReadError = "An unknown error occurred while reading data from the VTK file";

} // namespace veltra::vtkfile
