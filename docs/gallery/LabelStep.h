/// @file
/// The step that most sections begin with.
#pragma once

#include "Section.h"

#include <string>
#include <vector>

namespace gallery
{

/// Labels an image and shows it beside its zones.
///
/// @param studio that it is drawn in
/// @param title of the step
/// @param text what is done, and what to see
/// @param input the image file
/// @param shown the picture of the input
/// @param switches of `morvane label`, the neighbourhood among them
/// @return the file with the labels
std::string LabelStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    Figure const & shown, std::vector<std::string> const & switches);

} // namespace gallery
