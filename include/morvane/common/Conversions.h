/// @file
/// Named conversions between numeric types, defined for every input.
#pragma once

#include <concepts>
#include <limits>
#include <type_traits>

namespace morvane::common
{

/// Keeps the low bits of an integer that may not fit: the wrap-around is the purpose, not an accident.
///
/// @param value any integer
/// @return the number of type @p To that is congruent to @p value modulo two to the number of bits of @p To
template <std::integral To, std::integral From>
[[nodiscard]] constexpr To WrapTo(From value)
{
    return static_cast<To>(value);
}

/// Cuts a number towards zero to a 32-bit integer and keeps the low bits of the element type, without saturation.
///
/// 300.7 is 44 in `uchar`, -1.0 is 255. What no 32-bit integer can hold, NaN and the infinities included, counts as the
/// smallest `int`, as in the processors' own conversion: 0 in 8 and 16 bits. Floating-point types take the plain
/// conversion.
template <class To>
requires std::is_arithmetic_v<To>
[[nodiscard]] constexpr To TruncateTo(double value)
{
    if constexpr (std::is_floating_point_v<To>)
    {
        return static_cast<To>(value);
    }
    else
    {
        constexpr double kLimit = 2147483648.0;
        bool const fits = value > -kLimit - 1.0 && value < kLimit;
        return WrapTo<To>(fits ? static_cast<int>(value) : std::numeric_limits<int>::min());
    }
}

} // namespace morvane::common
