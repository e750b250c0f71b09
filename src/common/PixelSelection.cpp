#include "common/PixelSelection.h"

#include <morvane/common/Conversions.h>

#include <algorithm>
#include <array>
#include <concepts>
#include <cstdint>
#include <cstring>

namespace morvane::common
{

namespace
{

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
        {
            return constant;
        }
        else
        {
            return pixels[x];
        }
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
        {
            leaf(first, Reader<P, true>(whenFalse));
        }
        else
        {
            leaf(first, Reader<P, false>(whenFalse));
        }
    };
    if (whenTrue.isConstant)
    {
        withTrue(Reader<P, true>(whenTrue));
    }
    else
    {
        withTrue(Reader<P, false>(whenTrue));
    }
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

template <class E>
E Load(uchar const * bytes)
{
    E value;
    std::memcpy(&value, bytes, sizeof(E));
    return value;
}

/// Selects pixels of N elements, each as wide as the integer E.
template <class E, int N>
void SelectBlock(
    Answers const & answers, int start, int count, Source const & whenTrue, Source const & whenFalse, uchar * output)
{
    constexpr std::ptrdiff_t kSize = N * sizeof(E);
    // A constant source stands still while the other moves on.
    auto const startOf = [&](Source const & source) {
        return source.pixels + (source.isConstant ? 0 : start * kSize);
    };
    auto const select = [&](auto const trueStep, auto const falseStep) {
        uchar const * one = startOf(whenTrue);
        uchar const * other = startOf(whenFalse);
        uchar * pixel = output + start * kSize;
        for (int x = 0; x < count; ++x)
        {
            // No branch, as answers cannot be predicted: single elements are blended, of others the address is chosen.
            auto const answer = static_cast<std::size_t>(answers[static_cast<std::size_t>(x)] & 1U);
            if constexpr (N == 1)
            {
                auto const mask = WrapTo<E>(std::size_t{0} - answer);
                E const whenFalseValue = Load<E>(other);
                auto const value = static_cast<E>(whenFalseValue ^ ((Load<E>(one) ^ whenFalseValue) & mask));
                std::memcpy(pixel, &value, sizeof(E));
            }
            else
            {
                std::array<uchar const *, 2> const pixels{other, one};
                std::memcpy(pixel, pixels[answer], kSize);
            }
            one += trueStep;
            other += falseStep;
            pixel += kSize;
        }
    };
    std::integral_constant<std::ptrdiff_t, 0> const still;
    std::integral_constant<std::ptrdiff_t, kSize> const moving;
    if (whenTrue.isConstant && whenFalse.isConstant)
    {
        select(still, still);
    }
    else if (whenTrue.isConstant)
    {
        select(still, moving);
    }
    else if (whenFalse.isConstant)
    {
        select(moving, still);
    }
    else
    {
        select(moving, moving);
    }
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
void RowSelection<T>::SelectValues(
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
void RowSelection<T>::SelectPixels(
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

template struct RowSelection<uchar>;
template struct RowSelection<ushort>;
template struct RowSelection<short>;
template struct RowSelection<int>;
template struct RowSelection<float>;
template struct RowSelection<double>;

} // namespace morvane::common
