#pragma once

#include "krohost/convert/Encoding.h"
#include "krohost/convert/Loss.h"
#include "krohost/convert/Outputs.h"
#include "krohost/convert/WriteError.h"
#include "krohost/host/runtime/Host.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace krohost::convert {

enum class FileFormat { vtu, vtm, pvd, vtkhdf, cgns, csv };

/// The format of this name or, with its dot, of this extension, in any letter case.
std::optional<FileFormat> fileFormat(std::string_view nameOrExtension);
std::string_view formatName(FileFormat format);

struct Request {
    std::filesystem::path path;
    FileFormat format = FileFormat::vtu;
    Encoding encoding; ///< of VTK XML files; of VTKHDF whether it is compressed
    Permission permission;
    bool isStrict = false; ///< nothing is written that has losses
};

struct Conversion {
    std::vector<Outputs::Published> files; ///< the one that was asked for comes first
    std::size_t zoneCount = 0;
    Losses losses;             ///< also when nothing was written because of them
    bool isIncomplete = false; ///< cells of the mesh are among the losses, or damaged values
};

/// Nothing is written, because there are losses and none are allowed; the first one says which.
class LossesNotAllowed : public WriteError {
public:
    explicit LossesNotAllowed(Losses losses);
    const Losses& losses() const { return losses_; }

private:
    Losses losses_;
};

/// Throws LossesNotAllowed where that is so.
void requireAllowed(const Losses& losses, bool isStrict);

/// Writes what the host has loaded, from the files named. Throws WriteError and Interrupted, and nothing is left
/// after.
Conversion convertZones(Host& host, const std::vector<std::filesystem::path>& inputs, const Request& request);

/// Writes a VTK XML unstructured grid, read without the add-on, as one that it loads: its arrays decompressed and
/// compressed anew as asked for, its pieces as one, only cells of the highest dimension and of types that are loaded
/// (and vertices, which go with any). Values are not changed. The result is loaded in the host, with everything in it,
/// before it gets its name. Throws WriteError, also where no cell would be left or the result does not load, and
/// Interrupted.
Conversion repairFile(Host& host, const std::filesystem::path& input, const Request& request);

} // namespace krohost::convert
