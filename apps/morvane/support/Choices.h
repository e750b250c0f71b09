/// @file
/// What the options of a command have to be, beyond what they are by themselves.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <utility>
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

/// Declares an option that takes one of several names.
///
/// @param arguments of the command
/// @param option its name, with the dashes
/// @param value what the name stands for, left as it is where the option is not given
/// @param names with what they stand for, in the order in which they are told
/// @param help for the option
/// @return the option, for what it excludes and needs
template <class T>
CLI::Option * DeclareNamed(
    CLI::App & arguments, std::string const & option, T & value, std::vector<std::pair<std::string, T>> const & names,
    std::string const & help)
{
    auto const take = [&value, option, names](std::string const & wanted) {
        std::string all;
        for (auto const & [name, meaning] : names)
        {
            if (name == wanted)
            {
                value = meaning;
                return;
            }
            all += (all.empty() ? "" : ", ") + name;
        }
        throw CLI::ValidationError(option, wanted + " is none of " + all);
    };
    return arguments.add_option_function<std::string>(option, take, help)->type_name("NAME");
}

} // namespace program
