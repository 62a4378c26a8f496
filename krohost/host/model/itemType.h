#pragma once

#include "krohost/host/model/Deferred.h"

#include <cstdint>

namespace krohost {

/// Names a type to a generic function object.
template <class Item>
struct ItemTag {};

/// Calls `use` with the tag of the type in which the storage of a variable of this type holds its items.
template <class Use>
auto withItemType(FieldDataType_e type, const Use& use) {
    switch (type) {
    case FieldDataType_Float:
        return use(ItemTag<float>{});
    case FieldDataType_Double:
        return use(ItemTag<double>{});
    case FieldDataType_Int32:
        return use(ItemTag<std::int32_t>{});
    case FieldDataType_Int16:
        return use(ItemTag<std::int16_t>{});
    default:
        return use(ItemTag<std::uint8_t>{});
    }
}

template <class Use>
auto withItemType(const Deferred& data, const Use& use) {
    if (const auto* fieldData = dynamic_cast<const KroFieldData*>(&data))
        return withItemType(fieldData->type, use);
    return data.itemByteCount() == 8 ? use(ItemTag<std::int64_t>{}) : use(ItemTag<std::int32_t>{});
}

} // namespace krohost
