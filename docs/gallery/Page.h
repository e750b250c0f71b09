/// @file
/// The page that a gallery is written on.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace gallery
{

/// The text with everything that HTML would take for markup made harmless.
[[nodiscard]] std::string Escape(std::string const & text);

/// A picture with the words under it.
struct Figure
{
    std::filesystem::path picture; ///< beside the page
    std::string caption;
};

/// A static page: a heading, sections with figures and steps. Nothing is loaded from elsewhere.
class Page
{
public:
    /// @param title of the whole page
    /// @param introduction a paragraph or two
    Page(std::string title, std::string introduction);

    /// Starts a section, which also goes into the table of contents.
    void BeginSection(std::string const & title, std::string const & text);

    /// Figures side by side.
    void AddFigures(std::vector<Figure> const & figures);

    /// A step: what is done and what to see, the command line, its figures, what it printed, how long it took.
    void AddStep(
        std::string const & title, std::string const & text, std::string const & command,
        std::vector<Figure> const & figures, std::string const & output, double seconds);

    /// Writes the page. @throws std::runtime_error when the file cannot be written
    void Write(std::filesystem::path const & file) const;

private:
    std::string m_title;
    std::string m_introduction;
    std::vector<std::string> m_contents;
    std::string m_body;
};

} // namespace gallery
