/// @file
/// Images as operators on whole numbers take them.
#pragma once

#include <morvane/common/Attributes.h>

#include <CLI/CLI.hpp>
#include <opencv2/core.hpp>

#include <filesystem>
#include <optional>

namespace program
{

/// Declares the option `--attribute NAME`, which is required.
void DeclareAttribute(CLI::App & arguments, morvane::common::eAttributeType & attribute);

/// Declares the option `--scale NUMBER` of LevelsOf().
void DeclareScale(CLI::App & arguments, std::optional<double> & scale);

/// The levels of an image, as attribute operators take them, from 0 on: itself where it holds integers, without a scale;
/// else its numbers times the scale, rounded to 32-bit integers.
///
/// @throws ProgramError when floats have no scale, for negative numbers, and for those that do not fit
[[nodiscard]] cv::Mat
LevelsOf(std::filesystem::path const & file, cv::Mat const & image, std::optional<double> const & scale);

/// LevelsOf() with negative ones. @throws ProgramError when floats have no scale, and for numbers that do not fit
[[nodiscard]] cv::Mat
SignedLevelsOf(std::filesystem::path const & file, cv::Mat const & image, std::optional<double> const & scale);

/// Levels as numbers of the image that they were made of.
///
/// @param levels made by LevelsOf(), or filtered
/// @param type of the image
[[nodiscard]] cv::Mat NumbersOf(cv::Mat const & levels, int type, std::optional<double> const & scale);

} // namespace program
