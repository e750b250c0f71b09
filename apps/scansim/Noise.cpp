#include "scansim/Noise.h"

#include <cmath>
#include <numbers>

namespace scansim
{

namespace
{

/// The mixing step of SplitMix64.
std::uint64_t Mix(std::uint64_t z)
{
    z += 0x9E3779B97F4A7C15U;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31);
}

std::uint64_t Bits(std::uint64_t seed, int row, int column, Purpose purpose, std::uint64_t draw)
{
    auto const place =
        (static_cast<std::uint64_t>(static_cast<std::uint32_t>(row)) << 32) | static_cast<std::uint32_t>(column);
    return Mix(Mix(Mix(seed) ^ place) ^ (static_cast<std::uint64_t>(purpose) << 8 | draw));
}

double ToUnit(std::uint64_t bits)
{
    return static_cast<double>(bits >> 11) * 0x1.0p-53;
}

} // namespace

double Uniform(std::uint64_t seed, int row, int column, Purpose purpose)
{
    return ToUnit(Bits(seed, row, column, purpose, 0));
}

double Gaussian(std::uint64_t seed, int row, int column, Purpose purpose)
{
    // Box and Muller; the first number is kept off 0.
    double const radius = std::sqrt(-2.0 * std::log(1.0 - ToUnit(Bits(seed, row, column, purpose, 0))));
    double const angle = 2.0 * std::numbers::pi * ToUnit(Bits(seed, row, column, purpose, 1));
    return radius * std::cos(angle);
}

} // namespace scansim
