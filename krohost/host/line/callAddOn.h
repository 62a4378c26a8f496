#pragma once

#include "interface/kro.h"
#include "krohost/host/line/Journal.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace krohost {

/// Calls into the add-on and writes the call and its result to the journal. `call` gives nothing for a callback without
/// result. True unless the result is 0; an exception that leaves the callback, or a result that is neither 0 nor 1, is
/// a violation and gives false. `describe` puts the arguments into words when the journal wants them; without it and
/// without a violation nothing is allocated. [any thread]
bool callAddOn(Journal& journal, std::string_view name, const std::function<std::string()>& describe,
               const std::function<std::optional<KroBool>()>& call);

/// Marks whose code the current thread runs for as long as the object lives: the add-on's or, below it again, the
/// host's.
class CodeScope {
public:
    enum class Owner { host, addOn };
    explicit CodeScope(Owner owner) noexcept;
    ~CodeScope();
    CodeScope(const CodeScope&) = delete;
    CodeScope& operator=(const CodeScope&) = delete;

    static Owner current() noexcept;

private:
    Owner outer_;
};

} // namespace krohost
