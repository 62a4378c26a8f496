#pragma once

#include "krohost/host/runtime/Host.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace krohost::convert {

/// One variable or node map of the host's dataset, held for as long as the object lives.
class Loaded {
public:
    /// Throws WriteError when it cannot be loaded, for the reason that the last dialog gives, and Interrupted.
    Loaded(Host& host, Target target);

    std::size_t itemByteCount() const { return hold_.data()->itemByteCount(); }
    std::span<const std::byte> bytes(std::size_t partIndex = 0) const { return part(partIndex).bytes(); }
    template <class Item>
    std::span<const Item> items(std::size_t partIndex = 0) const {
        return part(partIndex).items<Item>();
    }

private:
    const Storage& part(std::size_t index) const { return hold_.data()->parts()[index]; }

    Hold hold_;
};

/// The node numbers of one section, whatever the width they are stored in.
class SectionNodes {
public:
    SectionNodes(const Loaded& nodeMap, std::size_t sectionIndex);

    std::int64_t operator[](std::size_t index) const { return wide_.empty() ? narrow_[index] : wide_[index]; }
    std::size_t size() const { return narrow_.size() + wide_.size(); }

private:
    std::span<const std::int32_t> narrow_;
    std::span<const std::int64_t> wide_;
};

} // namespace krohost::convert
