#pragma once

#include "krohost/convert/Loss.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>

namespace krohost::convert {

/// Names as a group of a file can have them: of some bytes at most, without slashes and control characters, neither "."
/// nor "..", each once. What has to be changed is a loss.
class Names {
public:
    /// `format` is how the sentence calls the file: "CGNS". `reserved` names are the file's own. Where blanks at the
    /// beginning and end of a name are not kept, they are left out.
    Names(std::size_t byteLimit, std::string format, Losses& losses, bool areBlanksKept,
          std::set<std::string> reserved = {})
        : byteLimit_{byteLimit}, format_{std::move(format)}, losses_{losses},
          areBlanksKept_{areBlanksKept}, taken_{std::move(reserved)} {}

    std::string claim(const std::string& wanted);

private:
    std::size_t byteLimit_;
    std::string format_;
    Losses& losses_;
    bool areBlanksKept_;
    std::set<std::string> taken_;
    std::map<std::string, std::size_t> lastNumbers_; // by the name that had to get one
};

} // namespace krohost::convert
