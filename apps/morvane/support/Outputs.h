/// @file
/// Writing images so that either all of them are there in the end, or none.
#pragma once

#include <opencv2/core.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace program
{

/// The files that a command is going to write.
///
/// Declared and checked before the work starts, written under temporary names beside their places, and moved there
/// together by Commit(). Without it nothing is left behind, and files that were there before stay as they were.
class Outputs
{
public:
    Outputs() = default;
    ~Outputs();
    Outputs(Outputs const &) = delete;
    Outputs & operator=(Outputs const &) = delete;

    /// Checks a place for an image.
    ///
    /// @param file where it shall go; an empty path is no output and passes
    /// @param extensions the accepted ones, lower case with the dot; none for whatever OpenCV can write
    /// @param inputs files that must not be overwritten; empty paths are none
    /// @throws ProgramError when the extension, the folder or the place is not fit, or it is another output or an input
    void Declare(
        std::filesystem::path const & file, std::vector<std::string> const & extensions,
        std::vector<std::filesystem::path> const & inputs);

    /// Checks a place for a text, whatever its extension. @throws ProgramError as Declare() does
    void DeclareText(std::filesystem::path const & file, std::vector<std::filesystem::path> const & inputs);

    /// Writes an image under a temporary name. @throws ProgramError when that fails
    void Write(std::filesystem::path const & file, cv::Mat const & image);

    /// Writes a text under a temporary name. @throws ProgramError when that fails
    void WriteText(std::filesystem::path const & file, std::string const & text);

    /// Moves everything that was written to its place. @throws ProgramError when that fails
    void Commit();

private:
    struct Pending
    {
        std::filesystem::path temporary;
        std::filesystem::path file;
    };

    std::vector<std::filesystem::path> m_declared;
    std::vector<Pending> m_pending;
};

} // namespace program
