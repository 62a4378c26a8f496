# Warnings and sanitizers, in one interface target that all our targets link.

set(KRO_SANITIZE "" CACHE STRING "Sanitizers to compile with, comma-separated (address,undefined or thread)")

add_library(kro_options INTERFACE)
target_compile_options(kro_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Woverloaded-virtual
  -Wimplicit-fallthrough -Werror)
# g++ 12 sees an overlap in every `"literal" + std::string()`.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(kro_options INTERFACE -Wno-restrict)
endif()
target_include_directories(kro_options INTERFACE ${PROJECT_SOURCE_DIR})

# These make a remaining fault harder to exploit by a hostile file. The C library's checks need optimised code, and
# sanitizers have checks of their own.
target_compile_options(kro_options INTERFACE -fstack-protector-strong)
target_compile_definitions(kro_options INTERFACE $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
target_link_options(kro_options INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)

if(KRO_SANITIZE)
  set(sanitizers ${KRO_SANITIZE})
  if(KRO_SANITIZE MATCHES undefined)
    string(APPEND sanitizers ",float-cast-overflow") # which "undefined" leaves out
  endif()
  target_compile_options(kro_options INTERFACE -fsanitize=${sanitizers} -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  target_link_options(kro_options INTERFACE -fsanitize=${sanitizers})
endif()

# kro_check_unsigned_overflow(target): with clang's check of undefined behaviour, unsigned numbers must not wrap either
# in the code of the target, which computes with sizes from files.
function(kro_check_unsigned_overflow target)
  if(KRO_SANITIZE MATCHES undefined AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(${target} PRIVATE -fsanitize=unsigned-integer-overflow
      -fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/unsignedOverflow.txt)
  endif()
endfunction()
