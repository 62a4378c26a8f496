#include "loader/sdk/ArgList.h"

#include "loader/sdk/utf8.h"

#include <new>

namespace veltra::toolbox {

namespace {

bool appendItems(KroArgList* list, const char* name, KroArrayItem_e itemType, std::size_t itemCount,
                 const void* items) {
    return KroUtilArgListAppendArray(list, name, itemType, static_cast<std::int64_t>(itemCount), items) == 1;
}

} // namespace

ArgList::ArgList() : list_(KroUtilArgListAlloc()) {
    if (!list_)
        throw std::bad_alloc();
}

bool ArgList::appendString(const char* name, const std::string& value) {
    return KroUtilArgListAppendString(get(), name, validUtf8(value).c_str()) == 1;
}

bool ArgList::appendInt(const char* name, std::int64_t value) {
    return KroUtilArgListAppendInt(get(), name, value) == 1;
}

bool ArgList::appendDouble(const char* name, double value) {
    return KroUtilArgListAppendDouble(get(), name, value) == 1;
}

bool ArgList::appendPointer(const char* name, void* value) {
    return KroUtilArgListAppendArbParam(get(), name, value) == 1;
}

bool ArgList::appendArray(const char* name, std::span<const std::int32_t> values) {
    return appendItems(get(), name, KroArrayItem_Int32, values.size(), values.data());
}

bool ArgList::appendArray(const char* name, std::span<const std::int64_t> values) {
    return appendItems(get(), name, KroArrayItem_Int64, values.size(), values.data());
}

bool ArgList::appendAnyFunction(const char* name, KroFunction value) {
    return KroUtilArgListAppendFunction(get(), name, value) == 1;
}

} // namespace veltra::toolbox
