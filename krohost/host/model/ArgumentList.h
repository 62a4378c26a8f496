/// String and argument lists as they cross the line, and the strict reader of argument lists.
#pragma once

#include "krohost/host/line/Tracked.h"

#include "interface/kro.h"

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// `number` tells lists apart in the journal: the first that the host made is 1, a list of the host itself has 0.
struct KroStringList : krohost::Tracked<KroStringList> {
    std::int64_t number = 0;
    std::vector<std::string> strings;
};

namespace krohost {

struct IntegerArray {
    KroArrayItem_e itemType;
    std::vector<std::int64_t> items;
};

struct Argument {
    std::string name;
    std::variant<std::string, std::int64_t, double, KroFunction, void*, IntegerArray> value;
};

} // namespace krohost

struct KroArgList : krohost::Tracked<KroArgList> {
    std::int64_t number = 0;
    std::vector<krohost::Argument> arguments;
};

namespace krohost {

/// The strings in quotation marks.
std::string describe(const KroStringList* list);

/// `"Name"="wing", "IMax"=10`; functions and pointers are written without their addresses.
std::string describe(const KroArgList* list);

/// Takes arguments out of a list by name. Everything that the reader's user does not expect throws ContractViolation:
/// a null or freed list, a missing argument, a value of another kind or out of range, and, in `finish`, arguments that
/// nobody asked for.
class ArgumentReader {
public:
    explicit ArgumentReader(const KroArgList* list);

    const std::string& string(const char* name);
    std::int64_t integer(const char* name, std::int64_t least = std::numeric_limits<std::int64_t>::min(),
                         std::int64_t greatest = std::numeric_limits<std::int64_t>::max());
    bool flag(const char* name) { return integer(name, 0, 1) == 1; }
    /// False when the argument is missing.
    bool optionalFlag(const char* name) { return find(name) && flag(name); }
    double number(const char* name);
    /// Not null.
    KroFunction function(const char* name);
    void* pointer(const char* name);
    /// `itemCount` items, each one of the codes.
    std::vector<std::int64_t> codes(const char* name, std::size_t itemCount, std::initializer_list<int> allowed);
    std::vector<std::int64_t> array(const char* name, KroArrayItem_e itemType, std::size_t itemCount);

    void finish() const;

private:
    const Argument* find(std::string_view name) const;
    template <class Value>
    const Value& take(const char* name, const char* kind);

    const std::vector<Argument>& arguments_;
    std::vector<std::string_view> taken_;
};

/// Throws ContractViolation unless the value is one of those allowed.
void requireCode(std::string_view name, std::int64_t value, std::initializer_list<int> allowed);

} // namespace krohost
