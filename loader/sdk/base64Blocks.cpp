#include "loader/sdk/base64Blocks.h"

#if defined(__x86_64__)

#include <immintrin.h>

namespace veltra::dataio {

namespace {

constexpr std::size_t blockLength = 32;

/// The same 16 bytes in both halves, which is how byte look-ups work.
[[gnu::target("avx2")]] __m256i table(char b0, char b1, char b2, char b3, char b4, char b5, char b6, char b7, char b8,
                                      char b9, char bA, char bB, char bC, char bD, char bE, char bF) {
    return _mm256_broadcastsi128_si256(_mm_setr_epi8(b0, b1, b2, b3, b4, b5, b6, b7, b8, b9, bA, bB, bC, bD, bE, bF));
}

[[gnu::target("avx2")]] std::size_t decodeWithAvx2(std::span<const std::uint8_t> text, std::span<std::uint8_t> dst) {
    // A character of the alphabet shows a class by its upper half and may be in it by its lower half:
    // 1 for + and /, 2 for digits, 4 for A to O and a to o, 8 for P to Z and p to z.
    const __m256i classes = table(0, 0, 1, 2, 4, 8, 4, 8, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m256i members = table(10, 14, 14, 14, 14, 14, 14, 14, 14, 14, 12, 5, 4, 4, 4, 5);
    // What turns a character into its six bits, by its upper half; / is three less than that.
    const __m256i shifts = table(0, 0, 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0);
    // The three bytes of each number of 24 bits, most significant first.
    const __m256i byteOrder = table(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    const __m256i halves = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7);
    const __m256i lowerHalf = _mm256_set1_epi8(15);

    const std::uint8_t* from = text.data();
    std::uint8_t* to = dst.data();
    const std::uint8_t* end = from + text.size() / blockLength * blockLength;
    std::size_t room = dst.size();
    for (; from != end && room >= blockLength; from += blockLength, to += 24, room -= 24) {
        const __m256i characters = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
        const __m256i upper = _mm256_and_si256(_mm256_srli_epi32(characters, 4), lowerHalf);
        const __m256i lower = _mm256_and_si256(characters, lowerHalf);
        const __m256i isMember =
            _mm256_and_si256(_mm256_shuffle_epi8(classes, upper), _mm256_shuffle_epi8(members, lower));
        if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(isMember, _mm256_setzero_si256())) != 0)
            break;
        const __m256i isSlash = _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('/'));
        const __m256i shift =
            _mm256_sub_epi8(_mm256_shuffle_epi8(shifts, upper), _mm256_and_si256(isSlash, _mm256_set1_epi8(3)));
        const __m256i sixes = _mm256_add_epi8(characters, shift);
        const __m256i twelves = _mm256_maddubs_epi16(sixes, _mm256_set1_epi16(0x0140));    // first * 64 + second
        const __m256i numbers = _mm256_madd_epi16(twelves, _mm256_set1_epi32(0x00011000)); // first * 4096 + second
        const __m256i bytes = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(numbers, byteOrder), halves);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes);
    }
    return static_cast<std::size_t>(from - text.data());
}

} // namespace

std::size_t decodeBase64Blocks(std::span<const std::uint8_t> text, std::span<std::uint8_t> dst) noexcept {
    static const bool hasAvx2 = __builtin_cpu_supports("avx2");
    return hasAvx2 ? decodeWithAvx2(text, dst) : 0;
}

} // namespace veltra::dataio

#else

namespace veltra::dataio {

std::size_t decodeBase64Blocks(std::span<const std::uint8_t>, std::span<std::uint8_t>) noexcept {
    return 0;
}

} // namespace veltra::dataio

#endif
