#include "krohost/host/runtime/Hold.h"

#include "krohost/host/model/Dataset.h"
#include "krohost/host/runtime/HostState.h"

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
