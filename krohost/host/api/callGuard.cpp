#include "krohost/host/api/callGuard.h"

#include "krohost/text/quoted.h"

#include <fmt/format.h>

namespace krohost {

namespace {

bool isListCall(std::size_t entryIndex) {
    const std::string_view name = entries[entryIndex].name;
    return name.starts_with("KroUtilStringList") || name.starts_with("KroUtilArgList");
}

template <class List>
std::string listText(const char* kind, const List* list) {
    const char* absence = List::absence(list);
    return absence ? absence : fmt::format("{} {}", kind, list->number);
}

} // namespace

std::string resultText(Nothing) {
    return {};
}
std::string resultText(std::int64_t number) {
    return std::to_string(number);
}
std::string resultText(const char* text) {
    return quoted(text);
}
std::string resultText(const void* pointer) {
    return pointer ? "pointer" : "null";
}
std::string resultText(const KroStringList* list) {
    return listText("strings", list);
}
std::string resultText(const KroArgList* list) {
    return listText("arguments", list);
}
std::string resultText(const KroAddOn* addOn) {
    return addOn ? fmt::format("add-on {}", addOn->number) : "null";
}

bool writesCall(const HostState& host, std::size_t entryIndex, bool hasFailed) {
    const JournalDetail detail = host.journal.detail();
    return detail == JournalDetail::all || (detail == JournalDetail::calls && (hasFailed || !isListCall(entryIndex)));
}

void writeCall(HostState& host, std::size_t entryIndex, const std::string& arguments, const std::string& result) {
    host.journal.add({.kind = Event::Kind::call,
                      .name = std::string{entries[entryIndex].name},
                      .arguments = arguments,
                      .result = result});
}

} // namespace krohost
