#include "common/ValueInterval.h"

#include <algorithm>
#include <cmath>
#include <concepts>
#include <limits>

namespace morvane::common
{

namespace
{

/// No value at all. An interval of integers cannot be empty (see Answer), so that it is everything, seen from outside; one
/// of floating-point numbers is crossed, since NaN lies outside of everything as well.
template <Element T>
constexpr Interval<T> Nothing()
{
    constexpr T kLowest = std::numeric_limits<T>::lowest();
    constexpr T kHighest = std::numeric_limits<T>::max();
    if constexpr (std::floating_point<T>)
    {
        return {kHighest, kLowest, false};
    }
    else
    {
        return {kLowest, kHighest, true};
    }
}

/// The least value that is greater than the number, or, where @p orEqual, not less. False where there is none.
template <Element T>
bool LeastAbove(double number, bool orEqual, T & least)
{
    if constexpr (std::floating_point<T>)
    {
        constexpr T kInfinity = std::numeric_limits<T>::infinity();
        // Out of the range of float, the nearest is an infinity.
        T value = number > static_cast<double>(std::numeric_limits<T>::max())      ? kInfinity
                  : number < static_cast<double>(std::numeric_limits<T>::lowest()) ? -kInfinity
                                                                                   : static_cast<T>(number);
        auto const passes = [&](T candidate) {
            return orEqual ? static_cast<double>(candidate) >= number : static_cast<double>(candidate) > number;
        };
        if (!passes(value)) value = std::nextafter(value, kInfinity);
        if (!passes(value)) return false;
        least = value;
        return true;
    }
    else
    {
        double const whole = orEqual ? std::ceil(number) : std::floor(number) + 1.0;
        if (whole > static_cast<double>(std::numeric_limits<T>::max())) return false;
        auto const lowest = static_cast<double>(std::numeric_limits<T>::lowest());
        least = static_cast<T>(std::max(whole, lowest));
        return true;
    }
}

/// The greatest value that is less than the number, or, where @p orEqual, not greater. False where there is none.
template <Element T>
bool GreatestBelow(double number, bool orEqual, T & greatest)
{
    if constexpr (std::floating_point<T>)
    {
        T mirrored{};
        if (!LeastAbove<T>(-number, orEqual, mirrored)) return false;
        greatest = -mirrored;
        return true;
    }
    else
    {
        double const whole = orEqual ? std::floor(number) : std::ceil(number) - 1.0;
        if (whole < static_cast<double>(std::numeric_limits<T>::lowest())) return false;
        auto const highest = static_cast<double>(std::numeric_limits<T>::max());
        greatest = static_cast<T>(std::min(whole, highest));
        return true;
    }
}

template <Element T>
constexpr T Lowest()
{
    if constexpr (std::floating_point<T>)
    {
        return -std::numeric_limits<T>::infinity();
    }
    else
    {
        return std::numeric_limits<T>::lowest();
    }
}

template <Element T>
constexpr T Highest()
{
    if constexpr (std::floating_point<T>)
    {
        return std::numeric_limits<T>::infinity();
    }
    else
    {
        return std::numeric_limits<T>::max();
    }
}

template <Element T>
Interval<T> ValuesEqualTo(double number)
{
    T low{};
    T high{};
    if (!LeastAbove<T>(number, true, low) || !GreatestBelow<T>(number, true, high) || low > high) return Nothing<T>();
    return {low, high, false};
}

} // namespace

template <Element T>
Interval<T> IntervalOf(int comparison, double number)
{
    bool const isNaN = std::isnan(number);
    if (comparison == 5)
    {
        Interval<T> interval = isNaN ? Nothing<T>() : ValuesEqualTo<T>(number);
        interval.isOutside = !interval.isOutside;
        return interval;
    }
    T bound{};
    if (isNaN) return Nothing<T>();
    switch (comparison)
    {
    case 0:
        return ValuesEqualTo<T>(number);
    case 1:
    case 2:
        if (!LeastAbove<T>(number, comparison == 2, bound)) return Nothing<T>();
        return {bound, Highest<T>(), false};
    case 3:
    case 4:
        if (!GreatestBelow<T>(number, comparison == 4, bound)) return Nothing<T>();
        return {Lowest<T>(), bound, false};
    default:
        return Nothing<T>();
    }
}

template Interval<uchar> IntervalOf(int, double);
template Interval<ushort> IntervalOf(int, double);
template Interval<short> IntervalOf(int, double);
template Interval<int> IntervalOf(int, double);
template Interval<float> IntervalOf(int, double);
template Interval<double> IntervalOf(int, double);

} // namespace morvane::common
