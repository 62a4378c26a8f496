#include "krohost/convert/Loaded.h"

#include "krohost/convert/WriteError.h"

#include <fmt/format.h>

namespace krohost::convert {

Loaded::Loaded(Host& host, Target target) : hold_{host.hold(host.dataset(), target)} {
    if (Host::isInterrupted())
        throw Interrupted();
    if (!hold_.data())
        throw WriteError(fmt::format("Nothing was written, because {} cannot be loaded.", host.dataset().name(target)));
}

SectionNodes::SectionNodes(const Loaded& nodeMap, std::size_t sectionIndex) {
    if (nodeMap.itemByteCount() == sizeof(std::int64_t))
        wide_ = nodeMap.items<std::int64_t>(sectionIndex);
    else
        narrow_ = nodeMap.items<std::int32_t>(sectionIndex);
}

} // namespace krohost::convert
