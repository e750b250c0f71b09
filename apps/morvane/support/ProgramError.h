/// @file
/// What went wrong, in words for the user.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace program
{

/// Something that the user can mend: the program says it in one line and ends with status 2.
class ProgramError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;

    ProgramError(std::filesystem::path const & file, std::string const & reason)
        : std::runtime_error(file.string() + ": " + reason)
    {}
};

} // namespace program
