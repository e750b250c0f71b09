/// @file
/// Neighbourhoods by name.
#pragma once

#include <morvane/connexity/Connexity.h>

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace program
{

/// Declares the required option `--connexity NAME`.
void DeclareConnexity(CLI::App & arguments, morvane::connexity::eConnexityType & connexity);

/// Declares the option `--connexity NAME` of commands that can do without.
///
/// @param arguments of the command
/// @param connexity what was given, if anything
/// @param use what it is for, the first words of the help
/// @return the option, for what it excludes and needs
CLI::Option * DeclareConnexity(
    CLI::App & arguments, std::optional<morvane::connexity::eConnexityType> & connexity, std::string const & use);

} // namespace program
