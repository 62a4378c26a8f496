#pragma once

#include <cstdint>
#include <string>

namespace veltra::vtkfile {

/// Told how far the parsing of a file has come.
class ParseProgress {
public:
    virtual ~ParseProgress() = default;

    /// `byteCount` is what was consumed since the last report. Returns false when parsing is to end.
    virtual bool report(const std::string& message, std::uint64_t byteCount) = 0;
};

} // namespace veltra::vtkfile
