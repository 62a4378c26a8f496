#include "krohost/host/line/callAddOn.h"

#include <fmt/format.h>

#include <exception>
#include <utility>

namespace krohost {

namespace {

thread_local CodeScope::Owner owner = CodeScope::Owner::host;

std::optional<KroBool> catchAll(Journal& journal, std::string_view name,
                                const std::function<std::optional<KroBool>()>& call) {
    try {
        const CodeScope scope{CodeScope::Owner::addOn};
        return call();
    } catch (const std::exception& exception) {
        journal.violation(fmt::format("an exception left {}: {}", name, exception.what()));
    } catch (...) {
        journal.violation(fmt::format("an exception of unknown type left {}", name));
    }
    return KroBool{0};
}

} // namespace

CodeScope::CodeScope(Owner newOwner) noexcept : outer_{std::exchange(owner, newOwner)} {}

CodeScope::~CodeScope() {
    owner = outer_;
}

CodeScope::Owner CodeScope::current() noexcept {
    return owner;
}

bool callAddOn(Journal& journal, std::string_view name, const std::function<std::string()>& describe,
               const std::function<std::optional<KroBool>()>& call) {
    if (journal.isOn())
        journal.add({.kind = Event::Kind::enter, .name = std::string{name}, .arguments = describe()});
    const std::optional<KroBool> result = catchAll(journal, name, call);
    if (journal.isOn())
        journal.add({.kind = Event::Kind::leave,
                     .name = std::string{name},
                     .result = result ? std::to_string(*result) : std::string{}});
    if (result && *result != 0 && *result != 1) {
        journal.violation(fmt::format("{} returned {}, not 0 or 1", name, *result));
        return false;
    }
    return result != KroBool{0};
}

} // namespace krohost
