#pragma once

#include "krohost/host/line/contract.h"

#include <mutex>
#include <string>
#include <type_traits>
#include <unordered_set>

namespace krohost {

/// Base of what the add-on holds by pointer: tells the pointer to an object that exists from any other. [any thread]
template <class Object>
class Tracked {
public:
    Tracked() {
        const std::lock_guard lock{mutex()};
        living().insert(this);
    }
    ~Tracked() {
        const std::lock_guard lock{mutex()};
        living().erase(this);
    }
    Tracked(const Tracked&) = delete;
    Tracked& operator=(const Tracked&) = delete;

    /// "null" or "freed" when there is no such object, otherwise null.
    static const char* absence(const Object* object) {
        const std::lock_guard lock{mutex()};
        return !object ? "null" : living().contains(object) ? nullptr : "freed";
    }

private:
    static std::mutex& mutex() {
        static std::mutex instance;
        return instance;
    }
    static std::unordered_set<const Tracked*>& living() {
        static std::unordered_set<const Tracked*> instance;
        return instance;
    }
};

/// The pointer; throws ContractViolation, which calls it `what`, when its object does not exist.
template <class Object>
Object* requireLiving(Object* object, const char* what) {
    if (const char* absence = std::remove_const_t<Object>::absence(object))
        throw ContractViolation(std::string{what} + " is " + absence);
    return object;
}

} // namespace krohost
