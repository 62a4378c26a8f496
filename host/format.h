#pragma once

#include <boost/format.hpp>

#include <locale>

namespace veltra {

/// A format whose numbers read the same whatever the host process makes of its locale.
inline boost::format format(const char* text) {
    return boost::format(text, std::locale::classic());
}

} // namespace veltra
