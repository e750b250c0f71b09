/// @file
/// Running a program and waiting for it: for the gallery and the tests.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace process
{

/// What became of a program that was run.
struct Outcome
{
    int status = 0;       ///< its exit status, 128 when a signal ended it
    std::string output;   ///< all that it printed on the standard output
    std::string errors;   ///< all that it printed on the standard error
    double seconds = 0.0; ///< wall time from start to end
};

/// Runs a program with arguments as they are, without a shell. @throws std::runtime_error when it cannot be started
[[nodiscard]] Outcome Run(std::filesystem::path const & program, std::vector<std::string> const & arguments);

} // namespace process
