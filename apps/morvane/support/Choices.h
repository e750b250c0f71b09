/// @file
/// What the options of a command have to be, beyond what they are by themselves.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace program
{

/// An option that may have been given.
struct Choice
{
    std::string name;
    bool isGiven = false;
};

/// Checks that one of several options was given, and only one. @throws ProgramError that names them all
void CheckExactlyOne(std::vector<Choice> const & choices);

/// Accepts numbers above a bound, but neither infinity nor NaN.
[[nodiscard]] CLI::Validator IsNumberAbove(double bound);

} // namespace program
