/// @file
/// The step that makes an image of an image.
#pragma once

#include "Section.h"

#include <string>
#include <vector>

namespace gallery
{

/// What stands beside the pictures of a step.
struct ImageStepWords
{
    std::string title;
    std::string text;    ///< what is done, and what to see
    std::string caption; ///< of the result
};

/// Runs a command that makes an image of an image, and shows both.
///
/// @param studio that it is drawn in
/// @param words that go with it
/// @param arguments the command, the input, the switches but for `-o`
/// @param shown the picture of the input
/// @param look of the result
void ImageStep(
    Studio & studio, ImageStepWords const & words, std::vector<std::string> arguments, Figure const & shown, Look look);

} // namespace gallery
