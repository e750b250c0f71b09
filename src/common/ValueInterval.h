/// @file
/// A comparison with a number, brought into the type of the values.
#pragma once

#include <morvane/common/PixelTypes.h>

namespace morvane::common
{

/// The values that compare true with a number: all from `low` to `high`, or, where `isOutside`, all others with NaN.
template <Element T>
struct Interval
{
    T low;
    T high;
    bool isOutside = false;
};

/// The interval of the values v for which `v (comparison) number` holds in double arithmetic.
///
/// @param comparison 0 to 5; any other number gives an interval without a value
template <Element T>
[[nodiscard]] Interval<T> IntervalOf(int comparison, double number);

} // namespace morvane::common
