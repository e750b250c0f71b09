/// @file
/// Pixels that are named on the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <opencv2/core.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace program
{

/// Declares the option `--seed X,Y`, which may be given again.
///
/// @param arguments of the command
/// @param seeds what was given
/// @param remark the last sentence of the help
/// @return the option, for what it excludes and needs
CLI::Option * DeclareSeeds(CLI::App & arguments, std::vector<std::string> & seeds, std::string const & remark);

/// The pixels of an image that are written as X,Y. @throws ProgramError when one is none
[[nodiscard]] std::vector<cv::Point>
PixelsAt(std::vector<std::string> const & seeds, cv::Mat const & image, std::filesystem::path const & file);

} // namespace program
