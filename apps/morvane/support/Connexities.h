/// @file
/// Neighbourhoods by name.
#pragma once

#include <morvane/connexity/Connexity.h>

#include <CLI/CLI.hpp>

namespace program
{

/// Declares the required option `--connexity NAME`.
void DeclareConnexity(CLI::App & arguments, morvane::connexity::eConnexityType & connexity);

} // namespace program
