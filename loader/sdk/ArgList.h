#pragma once

#include "interface/kro.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace veltra::toolbox {

/// An argument list for the host operations that take named arguments. Owns the host's list; movable, not copied.
///
/// Every append returns false when the host refuses the argument. One thread per list. [any thread]
class ArgList {
public:
    /// Throws std::bad_alloc when the host cannot make a list.
    ArgList();

    /// What is not UTF-8 in the value is replaced.
    [[nodiscard]] bool appendString(const char* name, const std::string& value);
    [[nodiscard]] bool appendInt(const char* name, std::int64_t value);
    [[nodiscard]] bool appendDouble(const char* name, double value);
    [[nodiscard]] bool appendPointer(const char* name, void* value);
    [[nodiscard]] bool appendArray(const char* name, std::span<const std::int32_t> values);
    [[nodiscard]] bool appendArray(const char* name, std::span<const std::int64_t> values);
    template <class Result, class... Arguments>
    [[nodiscard]] bool appendFunction(const char* name, Result (*value)(Arguments...)) {
        return appendAnyFunction(name, reinterpret_cast<KroFunction>(value));
    }

    /// The list for host operations that take it or append to it; it stays this object's.
    KroArgList* get() const { return list_.get(); }

private:
    struct Deleter {
        void operator()(KroArgList* list) const { KroUtilArgListDealloc(&list); }
    };

    bool appendAnyFunction(const char* name, KroFunction value);

    std::unique_ptr<KroArgList, Deleter> list_;
};

} // namespace veltra::toolbox
