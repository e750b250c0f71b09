/// @file
/// The comparisons of ImageCompare() by name.
#pragma once

namespace morvane::common
{

constexpr int kEqual = 0;
constexpr int kGreater = 1;

} // namespace morvane::common
