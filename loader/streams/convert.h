#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

namespace veltra::vtkfile {

/// Truncates toward zero; what does not fit, and NaN, give the smallest number, as the processor's own conversion does.
template <class Src>
std::int32_t truncateToInt32(Src value) {
    constexpr Src limit = 2147483648.0;
    return value >= -limit && value < limit ? static_cast<std::int32_t>(value)
                                            : std::numeric_limits<std::int32_t>::min();
}

/// The nearest float; infinity where that would be beyond the largest one. The language has no such conversion for
/// numbers beyond it, although processors do.
inline float roundToFloat(double value) {
    constexpr double largest = std::numeric_limits<float>::max();
    constexpr double nearerToInfinity = 0x1.ffffffp127; // half a step further
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double high = value >= nearerToInfinity ? infinity : largest;
    const double low = value <= -nearerToInfinity ? -infinity : -largest;
    const double atMost = value > largest ? high : value; // not a number passes
    return static_cast<float>(atMost < -largest ? low : atMost);
}

template <class T>
constexpr auto storedType() {
    if constexpr (std::is_enum_v<T>)
        return std::type_identity<std::underlying_type_t<T>>();
    else
        return std::type_identity<T>();
}

/// Whether convertValue leaves every bit as it is.
template <class Dst, class Src>
inline constexpr bool isStoredAsRead = std::is_same_v<decltype(storedType<Dst>()), std::type_identity<Src>>;

/// The plain conversion from a file's type to a stored type: no check. Floating point goes to an integer type through
/// 32 bits, without rounding; a narrower integer keeps the low-order bits; an enumeration takes the integer as its
/// value.
template <class Dst, class Src>
Dst convertValue(Src value) {
    if constexpr (std::is_enum_v<Dst>)
        return static_cast<Dst>(convertValue<std::underlying_type_t<Dst>>(value));
    else if constexpr (std::is_floating_point_v<Src> && std::is_integral_v<Dst>)
        return static_cast<Dst>(truncateToInt32(value));
    else if constexpr (std::is_same_v<Src, double> && std::is_same_v<Dst, float>)
        return roundToFloat(value);
    else
        return static_cast<Dst>(value);
}

} // namespace veltra::vtkfile
