/// @file
/// Shapes in an image of the user's.
#pragma once

#include "Section.h"

namespace gallery
{

/// The file of the bright parts.
inline constexpr char const * kBrightParts = "own-bright.png";

/// Writes which pixels of the user's image lie above the middle of its range, without what is narrower than 3 pixels.
///
/// @return false, with nothing written, for images of several channels, without a range, and with parts too many to be
///         measured
bool SaveBrightParts(UserImage const & own);

} // namespace gallery
