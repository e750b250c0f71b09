/// @file
/// Named conversions between numeric types, defined for every input.
#pragma once

#include <concepts>

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

} // namespace morvane::common
