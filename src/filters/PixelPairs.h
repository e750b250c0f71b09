/// @file
/// Two neighbouring pixels, loaded and stored as one word.
///
/// Loops over every second element compile to shuffles, or to no vectors at all. As words, pairs of 8 and 16 bits are
/// taken apart by shifts in every lane. Which of the two lies in the low bits does not matter, as long as nobody cares
/// which of them comes first.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace morvane::filters::sampling_internals
{

/// Two neighbours.
template <class T>
struct Pair
{
    T one;
    T other;
};

/// Types of which two make a word with lanes of their own.
template <class T>
concept Narrow = std::integral<T> && sizeof(T) <= 2;

template <Narrow T>
using WordOf = std::conditional_t<sizeof(T) == 1, std::uint16_t, std::uint32_t>;

template <class T>
[[nodiscard]] inline Pair<T> LoadPair(T const * pixels)
{
    return {pixels[0], pixels[1]};
}

template <Narrow T>
[[nodiscard]] inline Pair<T> LoadPair(T const * pixels)
{
    WordOf<T> word;
    std::memcpy(&word, pixels, sizeof(word));
    return {static_cast<T>(word), static_cast<T>(word >> (8 * sizeof(T)))};
}

template <class T>
inline void StorePair(T * pixels, Pair<T> pair)
{
    pixels[0] = pair.one;
    pixels[1] = pair.other;
}

template <Narrow T>
inline void StorePair(T * pixels, Pair<T> pair)
{
    using Bits = std::make_unsigned_t<T>;
    auto const word = static_cast<WordOf<T>>(
        static_cast<WordOf<T>>(static_cast<Bits>(pair.one)) |
        static_cast<WordOf<T>>(static_cast<WordOf<T>>(static_cast<Bits>(pair.other)) << (8 * sizeof(T))));
    std::memcpy(pixels, &word, sizeof(word));
}

} // namespace morvane::filters::sampling_internals
