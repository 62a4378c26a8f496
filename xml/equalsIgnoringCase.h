#pragma once

#include <boost/algorithm/string/predicate.hpp>

#include <locale>
#include <string_view>

namespace veltra::vtkfile {

/// Compares texts without regard to the case of their ASCII letters.
inline bool equalsIgnoringCase(std::string_view left, std::string_view right) {
    return boost::algorithm::iequals(left, right, std::locale::classic());
}

} // namespace veltra::vtkfile
