/// Tables of nodes of cells; loader/cells/nodeOrder.h says which holds for which.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace veltra::vtkcells {

/// A table that has every node once; another one does not compile.
template <std::size_t Count>
constexpr std::array<std::uint64_t, Count> permutation(const std::array<std::uint64_t, Count>& nodes) {
    for (std::uint64_t node = 0; node < Count; ++node)
        if (std::count(nodes.begin(), nodes.end(), node) != 1)
            throw std::logic_error("no permutation");
    return nodes;
}

// clang-format off
inline constexpr auto pixelNodes = permutation<4>({
    0, 1, 3, 2});

inline constexpr auto voxelNodes = permutation<8>({
    0, 1, 3, 2, 4, 5, 7, 6});

inline constexpr auto quadrilateral16 = permutation<16>({
    0, 1, 2, 3, 4, 5, 6, 7, 9, 8,
    11, 10, 12, 13, 15, 14});

inline constexpr auto quadrilateral25 = permutation<25>({
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9,
    12, 11, 10, 15, 14, 13, 16, 17, 18, 21,
    24, 23, 22, 19, 20});

inline constexpr auto tetrahedron20 = permutation<20>({
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9,
    10, 11, 12, 13, 14, 15, 19, 16, 17, 18});

inline constexpr auto tetrahedron35 = permutation<35>({
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9,
    10, 11, 12, 13, 14, 15, 16, 17, 18, 19,
    20, 21, 31, 32, 33, 22, 23, 24, 25, 26,
    27, 28, 29, 30, 34});

inline constexpr auto wedge18 = permutation<18>({
    0, 1, 2, 3, 4, 5, 6, 7, 8, 12,
    13, 14, 9, 10, 11, 15, 16, 17});

inline constexpr auto wedge40 = permutation<40>({
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9,
    10, 11, 18, 19, 20, 21, 22, 23, 12, 13,
    14, 15, 16, 17, 24, 26, 27, 29, 28, 30,
    31, 33, 32, 34, 35, 37, 36, 25, 38, 39});

inline constexpr auto wedge75 = permutation<75>({
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9,
    10, 11, 12, 13, 14, 24, 25, 26, 27, 28,
    29, 30, 31, 32, 15, 16, 17, 18, 19, 20,
    21, 22, 23, 33, 34, 35, 39, 40, 41, 44,
    47, 46, 45, 42, 43, 48, 49, 50, 53, 56,
    55, 54, 51, 52, 57, 58, 59, 62, 65, 64,
    63, 60, 61, 36, 37, 38, 66, 67, 68, 69,
    70, 71, 72, 73, 74});

inline constexpr auto hexahedron27 = permutation<27>({
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9,
    10, 11, 16, 17, 18, 19, 12, 13, 14, 15,
    24, 22, 21, 23, 20, 25, 26});

inline constexpr auto hexahedron64 = permutation<64>({
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9,
    10, 11, 13, 12, 15, 14, 24, 25, 26, 27,
    28, 29, 30, 31, 16, 17, 18, 19, 21, 20,
    23, 22, 48, 49, 51, 50, 40, 41, 43, 42,
    36, 37, 39, 38, 45, 44, 46, 47, 33, 32,
    34, 35, 52, 53, 55, 54, 56, 57, 59, 58,
    60, 61, 63, 62});

inline constexpr auto hexahedron125 = permutation<125>({
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9,
    10, 11, 12, 13, 16, 15, 14, 19, 18, 17,
    32, 33, 34, 35, 36, 37, 38, 39, 40, 41,
    42, 43, 20, 21, 22, 23, 24, 25, 28, 27,
    26, 31, 30, 29, 80, 81, 82, 85, 88, 87,
    86, 83, 84, 62, 63, 64, 67, 70, 69, 68,
    65, 66, 53, 54, 55, 58, 61, 60, 59, 56,
    57, 73, 72, 71, 74, 77, 78, 79, 76, 75,
    46, 45, 44, 47, 50, 51, 52, 49, 48, 89,
    90, 91, 94, 97, 96, 95, 92, 93, 98, 99,
    100, 103, 106, 105, 104, 101, 102, 107, 108, 109,
    112, 115, 114, 113, 110, 111, 116, 117, 118, 121,
    124, 123, 122, 119, 120});

// clang-format on

} // namespace veltra::vtkcells
