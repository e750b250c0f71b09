/// @file
/// The elements of OpenCV's morphology by name.
#pragma once

#include <CLI/CLI.hpp>

namespace program
{

/// Declares the option `--shape NAME`.
///
/// @param arguments of the command
/// @param shape a code of `cv::getStructuringElement`, left as it is where the option is not given
/// @return the option, for what it excludes and needs
CLI::Option * DeclareShape(CLI::App & arguments, int & shape);

} // namespace program
