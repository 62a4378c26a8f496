/// The sentences that a user reads when a load fails as a whole or its instructions are malformed.
#pragma once

#include <cstddef>
#include <string>

namespace veltra::vtk {

std::string badPreamble();
std::string missingFileName();
std::string missingValue(const std::string& keyword);
std::string unknownTimeSource(const std::string& value);
std::string strandNotAnInteger(const std::string& value);
std::string unknownKeyword(const std::string& keyword);
std::string missingCount(const std::string& keyword);
std::string badCount(const std::string& keyword);
std::string missingEntries(const std::string& keyword);
/// `reason` says which entry is no time.
std::string timesLeft(const std::string& reason, std::size_t timeCount, std::size_t fileCount);
std::string invalidValue(const std::string& reason);

} // namespace veltra::vtk

namespace veltra::vtkfile {

inline constexpr const char* registrationRefused = "Failed to register the loader";
inline constexpr const char* registrationOutOfMemory = "Insufficient memory to initialize the loader";
// Without the full stop that the sentence has when the load itself runs out of memory; both are matched by scripts.
inline constexpr const char* callbackOutOfMemory = "Insufficient memory to load the VTK file";
inline constexpr const char* callbackFailed = "Failed to load the VTK file\nReason: ";

inline constexpr const char* loadOutOfMemory = "Insufficient memory to load the VTK file.\nReason: ";
inline constexpr const char* badValues = "An error occurred while parsing values in the VTK file.\nReason: ";
inline constexpr const char* fileError = "An error occurred while reading data from the VTK file.\nReason: ";
inline constexpr const char* unknownError = "An unknown error occurred while reading data from the VTK file";

inline constexpr const char* noPieces = "VTK unstructured file doesn't appear to contain any Piece data";
inline constexpr const char* nestedCollections = "Parallel and Multi-block files cannot be nested";

} // namespace veltra::vtkfile
