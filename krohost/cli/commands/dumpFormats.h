/// How `krohost dump` writes values.
#pragma once

#include "krohost/cli/input/selection.h"
#include "krohost/cli/terminal/OutputStream.h"
#include "krohost/host/model/Deferred.h"

#include <vector>

namespace krohost::cli {

enum class DumpFormat { text, csv, npy, raw, json };

/// A part of a selection and where it is in memory.
struct LoadedPart : Part {
    const Deferred* data; ///< null when it could not be loaded, which only JSON can say

    const Storage& storage() const { return data->parts()[partIndex]; }
};

/// What is selected of a dataset, part by part.
struct LoadedSelection {
    const Dataset& dataset;
    const Selection& selection;
    std::vector<LoadedPart> parts;
};

/// Writes all of them; of a JSON document, all but the end. Ends early at an interrupt. Throws Failure for output that
/// cannot be written.
void writeDump(OutputStream& output, DumpFormat format, const LoadedSelection& values);

} // namespace krohost::cli
