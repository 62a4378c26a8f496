#include "loader/sdk/StringList.h"

#include <new>

namespace veltra::toolbox {

StringList::StringList() : list_(KroUtilStringListAlloc()) {
    if (!list_)
        throw std::bad_alloc();
}

void StringList::append(const std::string& string) {
    if (KroUtilStringListAppendString(get(), string.c_str()) != 1)
        throw std::bad_alloc();
}

std::vector<std::string> items(const KroStringList* list) {
    std::vector<std::string> strings;
    const std::int64_t count = KroUtilStringListGetCount(list);
    for (std::int64_t number = 1; number <= count; ++number) {
        const char* string = KroUtilStringListGetRawStringPtr(list, number);
        strings.emplace_back(string ? string : "");
    }
    return strings;
}

} // namespace veltra::toolbox
