/// @file
/// The sections of the gallery: one file each, registered by it.
#pragma once

#include "Page.h"
#include "Preview.h"

#include <opencv2/core.hpp>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace gallery
{

/// Writes an image for the steps to read. @throws std::runtime_error when that fails
void Save(std::string const & file, cv::Mat const & image);

/// Reads an image as it is in the file. @throws std::runtime_error when that fails
[[nodiscard]] cv::Mat Load(std::string const & file);

/// A number as the program takes it.
[[nodiscard]] std::string Number(double value);

/// Writes a preview of an image. @return the name of the picture, made from @p name
std::filesystem::path Show(std::string const & name, cv::Mat const & image, Look look);

/// What sections draw with. The working folder is the page's: files are named as they are in it.
class Studio
{
public:
    /// @param page that is drawn on
    /// @param program the `morvane` program
    Studio(Page & page, std::filesystem::path program);

    /// The page.
    [[nodiscard]] Page & ThePage() { return m_page; }

    /// 1, 2, 3...: for names of files.
    [[nodiscard]] int NextNumber() { return ++m_number; }

    /// Runs the program and puts the step on the page.
    ///
    /// @param title of the step
    /// @param text what is done, and what to see
    /// @param arguments of the program
    /// @param figures that exist once it has run
    /// @throws std::runtime_error when it fails
    void Step(
        std::string const & title, std::string const & text, std::vector<std::string> const & arguments,
        std::vector<Figure> const & figures);

    /// The same with figures that are made once the program has run.
    void Step(
        std::string const & title, std::string const & text, std::vector<std::string> const & arguments,
        std::function<std::vector<Figure>()> const & figures);

private:
    Page & m_page;
    std::filesystem::path m_program;
    int m_number = 0;
};

/// The user's own image, in place of the simulated scans.
struct UserImage
{
    std::filesystem::path file;
    cv::Mat image;
};

/// A section: how it is drawn on the simulated scans, and on an image of the user's.
struct Section
{
    int order; ///< sections stand in rising order
    std::function<void(Studio &)> draw;
    std::function<void(Studio &, UserImage const &)> drawUserImage;
};

/// Every registered section, in order.
[[nodiscard]] std::vector<Section> Sections();

/// Registers a section; one static object in the section's file.
struct RegisteredSection
{
    explicit RegisteredSection(Section section);
};

} // namespace gallery
