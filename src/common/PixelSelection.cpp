#include "common/PixelSelection.h"

#include <morvane/common/Conversions.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <cstring>
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
        double const lowest = static_cast<double>(std::numeric_limits<T>::lowest());
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
        double const highest = static_cast<double>(std::numeric_limits<T>::max());
        greatest = static_cast<T>(std::min(whole, highest));
        return true;
    }
}

template <Element T>
constexpr T Lowest()
{
    if constexpr (std::floating_point<T>)
        return -std::numeric_limits<T>::infinity();
    else
        return std::numeric_limits<T>::lowest();
}

template <Element T>
constexpr T Highest()
{
    if constexpr (std::floating_point<T>)
        return std::numeric_limits<T>::infinity();
    else
        return std::numeric_limits<T>::max();
}

template <Element T>
Interval<T> ValuesEqualTo(double number)
{
    T low{};
    T high{};
    if (!LeastAbove<T>(number, true, low) || !GreatestBelow<T>(number, true, high) || low > high) return Nothing<T>();
    return {low, high, false};
}

/// The answers of a comparison, one after the other.
template <Relation R, Element T>
bool Answer(Comparison<T> const & row, int x)
{
    if constexpr (R == Relation::Inside && std::integral<T>)
    {
        // One comparison for both ends: below the low one, the difference wraps.
        using Unsigned = std::make_unsigned_t<T>;
        auto const low = static_cast<Unsigned>(row.interval.low);
        auto const width = static_cast<Unsigned>(static_cast<Unsigned>(row.interval.high) - low);
        return static_cast<Unsigned>(static_cast<Unsigned>(row.values[x]) - low) <= width;
    }
    if constexpr (R == Relation::Inside)
    {
        // Both ends are looked at, so that no branch comes between them.
        auto const isFromLow = static_cast<unsigned>(row.values[x] >= row.interval.low);
        auto const isToHigh = static_cast<unsigned>(row.values[x] <= row.interval.high);
        return (isFromLow & isToHigh) != 0;
    }
    if constexpr (R == Relation::Equal) return row.values[x] == row.others[x];
    if constexpr (R == Relation::Greater) return row.values[x] > row.others[x];
    return row.values[x] >= row.others[x];
}

/// A source of values, constant or not, known when compiled.
template <class P, bool IsConstant>
struct Reader
{
    explicit Reader(Source const & source)
        : pixels(reinterpret_cast<P const *>(source.pixels))
        , constant(*pixels)
    {}

    P operator()(int x) const
    {
        if constexpr (IsConstant)
            return constant;
        else
            return pixels[x];
    }

    P const * pixels;
    P constant;
};

/// Calls @p leaf with the kinds of both sources.
template <class P, class Leaf>
void VisitSources(Source const & whenTrue, Source const & whenFalse, Leaf && leaf)
{
    auto const withTrue = [&](auto const & first) {
        if (whenFalse.isConstant)
            leaf(first, Reader<P, true>(whenFalse));
        else
            leaf(first, Reader<P, false>(whenFalse));
    };
    if (whenTrue.isConstant)
        withTrue(Reader<P, true>(whenTrue));
    else
        withTrue(Reader<P, false>(whenTrue));
}

template <Relation R, Element T>
void SelectValuesBy(
    Comparison<T> const & row, Source const & whenTrue, Source const & whenFalse, uchar * output, int cols)
{
    VisitSources<T>(whenTrue, whenFalse, [&, local = row](auto const & first, auto const & second) {
        auto * const values = reinterpret_cast<T *>(output);
        for (int x = 0; x < cols; ++x)
        {
            // Both are read, so that the choice compiles to a blend.
            T const one = first(x);
            T const other = second(x);
            values[x] = Answer<R>(local, x) ? one : other;
        }
    });
}

constexpr int kBlock = 512;
using Answers = std::array<uchar, kBlock>;

template <Relation R, Element T>
void CompareBlock(Comparison<T> const & row, int start, int count, Answers & answers)
{
    Comparison<T> const local = row;
    for (int x = 0; x < count; ++x)
    {
        answers[static_cast<std::size_t>(x)] = Answer<R>(local, start + x) ? 255 : 0;
    }
}

template <Element T>
void CompareBlock(Comparison<T> const & row, int start, int count, Answers & answers)
{
    switch (row.relation)
    {
    case Relation::Inside:
        return CompareBlock<Relation::Inside>(row, start, count, answers);
    case Relation::Equal:
        return CompareBlock<Relation::Equal>(row, start, count, answers);
    case Relation::Greater:
        return CompareBlock<Relation::Greater>(row, start, count, answers);
    case Relation::GreaterOrEqual:
        return CompareBlock<Relation::GreaterOrEqual>(row, start, count, answers);
    }
}

/// The first address where @p answer is 1, the second where it is 0.
template <class E>
E const * Chosen(std::uint64_t answer, E const * one, E const * other)
{
    auto const whenTrue = reinterpret_cast<std::uintptr_t>(one);
    auto const whenFalse = reinterpret_cast<std::uintptr_t>(other);
    std::uintptr_t const mask = WrapTo<std::uintptr_t>(0U - answer);
    return reinterpret_cast<E const *>(whenFalse ^ ((whenTrue ^ whenFalse) & mask));
}

/// Selects pixels of N elements, each as wide as the integer E.
template <class E, int N>
void SelectBlock(
    Answers const & answers, int start, int count, Source const & whenTrue, Source const & whenFalse, uchar * output)
{
    // A constant source stands still while the other moves on.
    auto const stepOf = [](Source const & source) {
        return source.isConstant ? 0 : N;
    };
    auto const startOf = [&](Source const & source) {
        return reinterpret_cast<E const *>(source.pixels) + static_cast<std::ptrdiff_t>(start) * stepOf(source);
    };
    auto const select = [&](auto const trueStep, auto const falseStep) {
        E const * one = startOf(whenTrue);
        E const * other = startOf(whenFalse);
        E * pixel = reinterpret_cast<E *>(output) + static_cast<std::ptrdiff_t>(start) * N;
        for (int x = 0; x < count; ++x)
        {
            // No branch, as answers cannot be predicted: single elements are blended, of others the address is.
            std::uint64_t const answer = answers[static_cast<std::size_t>(x)] & 1U;
            if constexpr (N == 1)
            {
                auto const mask = WrapTo<E>(0U - answer);
                *pixel = static_cast<E>(*other ^ ((*one ^ *other) & mask));
            }
            else
            {
                std::memcpy(pixel, Chosen(answer, one, other), N * sizeof(E));
            }
            one += trueStep;
            other += falseStep;
            pixel += N;
        }
    };
    std::integral_constant<int, 0> const still;
    std::integral_constant<int, N> const moving;
    if (whenTrue.isConstant && whenFalse.isConstant)
        select(still, still);
    else if (whenTrue.isConstant)
        select(still, moving);
    else if (whenFalse.isConstant)
        select(moving, still);
    else
        select(moving, moving);
}

using BlockSelector = void (*)(Answers const &, int, int, Source const &, Source const &, uchar *);

BlockSelector SelectorFor(std::size_t pixelSize)
{
    switch (pixelSize)
    {
    case 1:
        return SelectBlock<std::uint8_t, 1>;
    case 2:
        return SelectBlock<std::uint16_t, 1>;
    case 3:
        return SelectBlock<std::uint8_t, 3>;
    case 4:
        return SelectBlock<std::uint32_t, 1>;
    case 6:
        return SelectBlock<std::uint16_t, 3>;
    case 8:
        return SelectBlock<std::uint64_t, 1>;
    case 12:
        return SelectBlock<std::uint32_t, 3>;
    case 16:
        return SelectBlock<std::uint64_t, 2>;
    case 24:
        return SelectBlock<std::uint64_t, 3>;
    default:
        return SelectBlock<std::uint64_t, 4>;
    }
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

template <Element T>
void SelectValues(
    Comparison<T> const & row, Source const & whenTrue, Source const & whenFalse, uchar * output, int cols)
{
    switch (row.relation)
    {
    case Relation::Inside:
        return SelectValuesBy<Relation::Inside>(row, whenTrue, whenFalse, output, cols);
    case Relation::Equal:
        return SelectValuesBy<Relation::Equal>(row, whenTrue, whenFalse, output, cols);
    case Relation::Greater:
        return SelectValuesBy<Relation::Greater>(row, whenTrue, whenFalse, output, cols);
    case Relation::GreaterOrEqual:
        return SelectValuesBy<Relation::GreaterOrEqual>(row, whenTrue, whenFalse, output, cols);
    }
}

template <Element T>
void SelectPixels(
    Comparison<T> const & row, Source const & whenTrue, Source const & whenFalse, uchar * output, int cols,
    std::size_t pixelSize)
{
    BlockSelector const select = SelectorFor(pixelSize);
    Answers answers;
    for (int start = 0; start < cols; start += kBlock)
    {
        int const count = std::min(kBlock, cols - start);
        CompareBlock(row, start, count, answers);
        select(answers, start, count, whenTrue, whenFalse, output);
    }
}

#define INSTANTIATE(T)                                                                                                 \
    template Interval<T> IntervalOf<T>(int, double);                                                                   \
    template void SelectValues<T>(Comparison<T> const &, Source const &, Source const &, uchar *, int);                \
    template void SelectPixels<T>(Comparison<T> const &, Source const &, Source const &, uchar *, int, std::size_t);
INSTANTIATE(uchar)
INSTANTIATE(ushort)
INSTANTIATE(short)
INSTANTIATE(int)
INSTANTIATE(float)
INSTANTIATE(double)
#undef INSTANTIATE

} // namespace morvane::common
