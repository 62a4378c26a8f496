#include "krohost/write/Loaded.h"

#include "krohost/write/WriteError.h"

#include <fmt/format.h>

namespace krohost::write {

Loaded::Loaded(Host& host, Target target)
    : host_{host}, deferred_{*host.dataset().find(target)}, wasLoaded_{deferred_.isLoaded()} {
    const bool isLoaded = host.load(target);
    if (Host::isInterrupted())
        throw Interrupted();
    if (!isLoaded)
        throw WriteError(fmt::format("Nothing was written, because {} cannot be loaded.", host.dataset().name(target)));
}

Loaded::~Loaded() {
    if (!wasLoaded_)
        host_.unload(deferred_.target());
}

SectionNodes::SectionNodes(const Loaded& nodeMap, std::size_t sectionIndex) {
    if (nodeMap.itemByteCount() == sizeof(std::int64_t))
        wide_ = nodeMap.items<std::int64_t>(sectionIndex);
    else
        narrow_ = nodeMap.items<std::int32_t>(sectionIndex);
}

} // namespace krohost::write
