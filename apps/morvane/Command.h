/// @file
/// The commands of the program: one class each, registered by its own file.
#pragma once

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace program
{

/// A command: its arguments, and what it does once they are known.
class Command
{
public:
    virtual ~Command() = default;

    /// The word that calls it.
    [[nodiscard]] virtual std::string Name() const = 0;

    /// One line for the help.
    [[nodiscard]] virtual std::string Summary() const = 0;

    /// Declares its arguments.
    virtual void Declare(CLI::App & arguments) = 0;

    /// Does the work. @throws ProgramError for what the user can mend
    virtual void Run() = 0;
};

/// Every registered command, by name.
std::vector<std::unique_ptr<Command>> & Commands();

/// Registers a command; one static object in the command's file.
template <class C>
struct Registered
{
    Registered() { Commands().push_back(std::make_unique<C>()); }
};

} // namespace program
