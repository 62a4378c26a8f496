#include "krohost/convert/requireLoads.h"

#include "krohost/convert/WriteError.h"

#include <algorithm>

namespace krohost::convert {

void requireLoads(Host& host, const std::filesystem::path& path) {
    bool isLoaded = host.loadFiles({path.string()});
    if (isLoaded) {
        const std::vector<DemandResult> demands = host.demandAll();
        isLoaded =
            std::all_of(demands.begin(), demands.end(), [](const DemandResult& demand) { return demand.isLoaded; });
    }
    if (Host::isInterrupted())
        throw Interrupted();
    if (!isLoaded)
        throw WriteError("Nothing was written, because the repaired file would not load either.");
}

} // namespace krohost::convert
