#include "host/StringList.h"

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

} // namespace veltra::toolbox
