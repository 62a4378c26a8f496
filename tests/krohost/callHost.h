/// Calls of the host as an add-on makes them.
#pragma once

#include "interface/kro.h"

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

using Codes = std::vector<std::int32_t>;
using Counts = std::vector<std::int64_t>;
using Value = std::variant<std::int64_t, double, const char*, void*, KroFunction, Codes, Counts>;
using Arguments = std::map<std::string, Value>;

struct Append {
    KroArgList* list;
    const char* name;

    void operator()(std::int64_t value) const { KroUtilArgListAppendInt(list, name, value); }
    void operator()(double value) const { KroUtilArgListAppendDouble(list, name, value); }
    void operator()(const char* value) const { KroUtilArgListAppendString(list, name, value); }
    void operator()(void* value) const { KroUtilArgListAppendArbParam(list, name, value); }
    void operator()(KroFunction value) const { KroUtilArgListAppendFunction(list, name, value); }
    void operator()(const Codes& values) const { array(KroArrayItem_Int32, values.size(), values.data()); }
    void operator()(const Counts& values) const { array(KroArrayItem_Int64, values.size(), values.data()); }
    void array(KroArrayItem_e type, std::size_t count, const void* items) const {
        KroUtilArgListAppendArray(list, name, type, static_cast<std::int64_t>(count), items);
    }
};

/// Calls a function that takes named arguments.
inline KroBool call(KroBool (*function)(const KroArgList*), const Arguments& arguments) {
    KroArgList* list = KroUtilArgListAlloc();
    for (const auto& [name, value] : arguments)
        std::visit(Append{list, name.c_str()}, value);
    const KroBool result = function(list);
    KroUtilArgListDealloc(&list);
    return result;
}

/// Registers an add-on with a loader "Box" of single files.
inline KroAddOn* registerLoader(KroLoaderSelectedCallback loadSelected, void* clientData) {
    const KroLoaderCallback load = [](const KroStringList*, void*) { return KroBool{0}; };
    KroUtilLockOn();
    KroAddOn* addOn = KroUtilAddOnRegister(Kro_AddOnApiLevel, "Box", "1.0", "Tests");
    call(KroUtilImportAddLoaderX, {{"LoaderName", "Box"},
                                   {"FileNameExtensions", "*.box"},
                                   {"LoaderCallbackVersion", Kro_LoaderCallbackVersion},
                                   {"LoaderCallback", reinterpret_cast<KroFunction>(load)},
                                   {"LoaderSelectedCallback", reinterpret_cast<KroFunction>(loadSelected)},
                                   {"ClientData", clientData},
                                   {"AllowMultiFileSelection", 0},
                                   {"LoaderAdvancedOptions", 0}});
    KroUtilLockOff();
    return addOn;
}
