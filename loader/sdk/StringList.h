#pragma once

#include "interface/kro.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace veltra::toolbox {

/// A list of strings of the host. Owns the host's list; movable, not copied. One thread per list. [any thread]
class StringList {
public:
    /// Throws std::bad_alloc when the host cannot make a list.
    StringList();

    /// Throws std::bad_alloc when the host has no room.
    void append(const std::string& string);
    void clear() { KroUtilStringListClear(list_.get()); }

    /// The list for host operations; it stays this object's.
    KroStringList* get() const { return list_.get(); }

private:
    struct Deleter {
        void operator()(KroStringList* list) const { KroUtilStringListDealloc(&list); }
    };

    std::unique_ptr<KroStringList, Deleter> list_;
};

/// The strings of a list that belongs to somebody else; empty ones in place of those that the host does not give.
std::vector<std::string> items(const KroStringList* list);

} // namespace veltra::toolbox
