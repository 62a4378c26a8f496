#pragma once

#include <initializer_list>

namespace test {

/// Whether the allocation that this code asks for is to fail. The program that links the replacements defines it.
bool allocationFails(const void* caller);

/// Whether the code is that of a library whose path holds one of the names.
bool isInLibrary(const void* code, std::initializer_list<const char*> names);

} // namespace test
