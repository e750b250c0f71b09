/// @file
/// What becomes of a block of 2 by 2 pixels: its value, and what each pixel adds to it.
///
/// A reduction from pixels of type T to details of type H has the type `Value` it reckons in, and four functions:
/// `Read` takes a pixel in, `Merge` brings two values together, `Finish` makes the block's value of what was merged,
/// `ToLow` and `ToHigh` give the value and the detail out. The order of merging is part of the result where sums round.
#pragma once

#include <morvane/common/Conversions.h>

#include <opencv2/core/hal/interface.h>

#include <concepts>
#include <type_traits>

namespace morvane::filters::sampling_internals
{

using common::TruncateTo;
using common::WrapTo;

/// The difference of two pixels modulo the width of an integer type, or cut to it; rounded to a floating-point one.
template <class High, class Value>
[[nodiscard]] constexpr High DifferenceTo(Value pixel, Value value)
{
    if constexpr (std::integral<Value>)
    {
        // Unsigned: it may wrap around.
        return WrapTo<High>(static_cast<unsigned>(pixel) - static_cast<unsigned>(value));
    }
    else
    {
        return TruncateTo<High>(pixel - value);
    }
}

/// The mean with halves rounded upwards, in 32-bit integers that may wrap around. For pixels and details of 8 bits, 16
/// are enough, and twice as many of them fit a register.
template <class T, class High>
struct Mean
{
    using Value = std::conditional_t<std::is_same_v<T, uchar> && sizeof(High) == 1, short, int>;

    static Value Read(T pixel)
    {
        if constexpr (std::integral<T>)
        {
            return pixel;
        }
        else
        {
            return TruncateTo<High>(pixel);
        }
    }
    static Value Merge(Value one, Value other)
    {
        return WrapTo<Value>(static_cast<unsigned>(one) + static_cast<unsigned>(other));
    }
    static Value Finish(Value sum) { return WrapTo<Value>(Merge(sum, 2) >> 2); }
    static T ToLow(Value value) { return static_cast<T>(value); }
    static High ToHigh(Value pixel, Value value) { return DifferenceTo<High>(pixel, value); }
};

/// The mean in floating point, for floating-point details.
template <class T, std::floating_point High>
struct Mean<T, High>
{
    using Value = std::common_type_t<T, High>;

    static Value Read(T pixel) { return static_cast<Value>(pixel); }
    static Value Merge(Value one, Value other) { return one + other; }
    static Value Finish(Value sum) { return sum * Value{0.25}; }
    static T ToLow(Value value) { return TruncateTo<T>(value); }
    static High ToHigh(Value pixel, Value value) { return static_cast<High>(pixel - value); }
};

/// The bitwise or, with the exclusive or as detail.
template <std::integral T, std::integral High>
struct LogicalOr
{
    using Value = T;

    static Value Read(T pixel) { return pixel; }
    static Value Merge(Value one, Value other) { return static_cast<Value>(one | other); }
    static Value Finish(Value value) { return value; }
    static T ToLow(Value value) { return value; }
    static High ToHigh(Value pixel, Value value) { return WrapTo<High>(value ^ pixel); }
};

/// One of the pixels; the differences from it are taken in the wider type.
template <class T, class High>
struct Extreme
{
    using Value = T;

    static Value Read(T pixel) { return pixel; }
    static Value Finish(Value value) { return value; }
    static T ToLow(Value value) { return value; }
    static High ToHigh(Value pixel, Value value)
    {
        using Wider = std::conditional_t<std::integral<T> && std::integral<High>, int, std::common_type_t<T, High>>;
        return DifferenceTo<High>(static_cast<Wider>(pixel), static_cast<Wider>(value));
    }
};

template <class T, class High>
struct Maximum : Extreme<T, High>
{
    static T Merge(T one, T other) { return one < other ? other : one; }
};

template <class T, class High>
struct Minimum : Extreme<T, High>
{
    static T Merge(T one, T other) { return other < one ? other : one; }
};

} // namespace morvane::filters::sampling_internals
