/// @file
/// A matrix of three by three numbers.
#pragma once

#include <array>
#include <cstddef>

namespace tarnel
{

/// Row after row.
template <class T>
struct Mat3
{
    std::array<T, 9> values{};

    [[nodiscard]] T operator()(std::size_t row, std::size_t column) const { return values[3 * row + column]; }
    [[nodiscard]] T & operator()(std::size_t row, std::size_t column) { return values[3 * row + column]; }
};

} // namespace tarnel
