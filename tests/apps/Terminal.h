/// @file
/// Programs at a terminal, for what they show there alone.
#pragma once

#include <string>
#include <vector>

namespace morvane::tests
{

/// What a program did whose standard error is a terminal.
struct TerminalOutcome
{
    int status = 0;
    std::string shown; ///< all that was sent to the terminal
};

/// Runs a program with its standard error at a terminal, and its standard output nowhere.
///
/// @param program to run
/// @param arguments of it
/// @param interruptAt once this was sent to the terminal, the program is interrupted as by Ctrl-C; not at all if empty
/// @throws std::runtime_error when that cannot be had
[[nodiscard]] TerminalOutcome RunAtTerminal(
    std::string const & program, std::vector<std::string> const & arguments, std::string const & interruptAt = "");

/// The lines that a terminal has in the end, trailing blanks left out: a carriage return leads back to the start of the
/// line, and what follows overwrites it.
[[nodiscard]] std::vector<std::string> LinesLeft(std::string const & shown);

} // namespace morvane::tests
