#include "krohost/host/model/ArgumentList.h"

#include "krohost/host/line/Journal.h"
#include "krohost/host/line/contract.h"
#include "krohost/text/quoted.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace krohost {

namespace {

struct ValueText {
    std::string operator()(const std::string& value) const { return quoted(value); }
    std::string operator()(std::int64_t value) const { return fmt::format("{}", value); }
    std::string operator()(double value) const { return fmt::format("{}", value); }
    std::string operator()(KroFunction value) const { return value ? "function" : "null"; }
    std::string operator()(void* value) const { return value ? "pointer" : "null"; }
    std::string operator()(const IntegerArray& value) const { return abbreviated(value.items); }
};

} // namespace

std::string describe(const KroStringList* list) {
    const char* absence = KroStringList::absence(list);
    return absence ? absence : quoted(list->strings);
}
std::string describe(const KroArgList* list) {
    if (const char* absence = KroArgList::absence(list))
        return absence;
    std::vector<std::string> items;
    for (const Argument& argument : list->arguments)
        items.push_back(quoted(argument.name) + '=' + std::visit(ValueText{}, argument.value));
    return fmt::format("{}", fmt::join(items, ", "));
}

ArgumentReader::ArgumentReader(const KroArgList* list)
    : arguments_{requireLiving(list, "the argument list")->arguments} {}

const Argument* ArgumentReader::find(std::string_view name) const {
    const auto found = std::find_if(arguments_.begin(), arguments_.end(),
                                    [&](const Argument& argument) { return argument.name == name; });
    return found == arguments_.end() ? nullptr : &*found;
}

template <class Value>
const Value& ArgumentReader::take(const char* name, const char* kind) {
    const Argument* argument = find(name);
    if (!argument)
        throw ContractViolation(fmt::format("the argument \"{}\" is missing", name));
    const Value* value = std::get_if<Value>(&argument->value);
    if (!value)
        throw ContractViolation(fmt::format("the argument \"{}\" must be {}", name, kind));
    taken_.push_back(argument->name);
    return *value;
}

const std::string& ArgumentReader::string(const char* name) {
    return take<std::string>(name, "a string");
}

std::int64_t ArgumentReader::integer(const char* name, std::int64_t least, std::int64_t greatest) {
    const auto value = take<std::int64_t>(name, "an integer");
    if (value < least || value > greatest)
        throw ContractViolation(
            fmt::format("the argument \"{}\" is {}, not from {} to {}", name, value, least, greatest));
    return value;
}

double ArgumentReader::number(const char* name) {
    return take<double>(name, "a double");
}

KroFunction ArgumentReader::function(const char* name) {
    const KroFunction value = take<KroFunction>(name, "a function");
    if (!value)
        throw ContractViolation(fmt::format("the argument \"{}\" is null", name));
    return value;
}

void* ArgumentReader::pointer(const char* name) {
    return take<void*>(name, "a pointer");
}

std::vector<std::int64_t> ArgumentReader::array(const char* name, KroArrayItem_e itemType, std::size_t itemCount) {
    const bool isWide = itemType == KroArrayItem_Int64;
    const char* kind = isWide ? "an array of 64-bit integers" : "an array of 32-bit integers";
    const auto& value = take<IntegerArray>(name, kind);
    if (value.itemType != itemType)
        throw ContractViolation(fmt::format("the argument \"{}\" must be {}", name, kind));
    if (value.items.size() != itemCount)
        throw ContractViolation(
            fmt::format("the argument \"{}\" has {} items, not {}", name, value.items.size(), itemCount));
    return value.items;
}

std::vector<std::int64_t> ArgumentReader::codes(const char* name, std::size_t itemCount,
                                                std::initializer_list<int> allowed) {
    auto items = array(name, KroArrayItem_Int32, itemCount);
    for (const std::int64_t item : items)
        requireCode(name, item, allowed);
    return items;
}

void ArgumentReader::finish() const {
    for (const Argument& argument : arguments_)
        if (std::find(taken_.begin(), taken_.end(), argument.name) == taken_.end())
            throw ContractViolation(fmt::format("there is no argument \"{}\" here", argument.name));
}

void requireCode(std::string_view name, std::int64_t value, std::initializer_list<int> allowed) {
    if (std::find(allowed.begin(), allowed.end(), value) == allowed.end())
        throw ContractViolation(
            fmt::format("the argument \"{}\" has {}, not one of {}", name, value, fmt::join(allowed, ", ")));
}

} // namespace krohost
