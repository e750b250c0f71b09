/// @file
/// Noise that depends on where it is asked, not on when: the same scan on any number of threads.
#pragma once

#include <cstdint>

namespace scansim
{

/// What a random number of a ray is for; different purposes give independent numbers.
enum class Purpose : std::uint64_t
{
    Range = 1,
    Dropout = 2,
    Glass = 3,
    Texture = 4,
};

/// Uniform in [0, 1), a function of its arguments alone.
[[nodiscard]] double Uniform(std::uint64_t seed, int row, int column, Purpose purpose);

/// Normally distributed with mean 0 and deviation 1, a function of its arguments alone.
[[nodiscard]] double Gaussian(std::uint64_t seed, int row, int column, Purpose purpose);

} // namespace scansim
