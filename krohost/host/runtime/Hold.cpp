#include "krohost/Hold.h"

#include "krohost/Dataset.h"
#include "krohost/HostState.h"

namespace krohost {

Hold::Hold(HostState& host, const Dataset& dataset, Target target, bool isKeeping)
    : host_{host}, data_{dataset.find(target)} {
    if (!host.load(dataset, *data_, isKeeping))
        data_ = nullptr;
}

Hold::~Hold() {
    if (data_)
        host_.budget.end(*data_, host_.journal);
}

} // namespace krohost
