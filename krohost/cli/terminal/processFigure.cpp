#include "krohost/cli/terminal/processFigure.h"

#include <fstream>

namespace krohost::cli {

std::int64_t processFigure(const char* file, const std::string& key) {
    std::ifstream stream{std::string("/proc/self/") + file};
    for (std::string word; stream >> word;)
        if (std::int64_t figure = 0; word == key && stream >> figure)
            return figure;
    return 0;
}

} // namespace krohost::cli
