// The demo: works a simulated scan, or the user's image, through the program, and writes a page of what came out.

#include "Page.h"
#include "Section.h"

#include <CLI/CLI.hpp>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/imgcodecs.hpp>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>

namespace
{

namespace fs = std::filesystem;

constexpr char const * kIntroduction =
    "A library of image-analysis operators for images made from laser scans: intensity, colour, depth, elevation. A "
    "zero pixel means that nothing was measured there, and the operators know it. Each step below is one command of "
    "the program that comes with the library.";

void Draw(fs::path const & program, gallery::UserImage const & own)
{
    gallery::Page page("morvane", kIntroduction);
    gallery::Studio studio(page, program);
    for (gallery::Section const & section : gallery::Sections())
    {
        if (own.image.empty())
        {
            section.draw(studio);
        }
        else
        {
            section.drawUserImage(studio, own);
        }
    }
    page.Write("index.html");
}

int ParseAndDraw(int argc, char ** argv)
{
    fs::path program;
    fs::path folder;
    fs::path file;
    CLI::App arguments("Writes the gallery of morvane.");
    arguments.add_option("--program", program, "the morvane program")->required();
    arguments.add_option("--output", folder, "the folder for the page, made if it is missing")->required();
    arguments.add_option("file", file, "an image of your own, in place of the simulated scans");
    CLI11_PARSE(arguments, argc, argv);

    gallery::UserImage own;
    if (!file.empty())
    {
        own = {fs::absolute(file), cv::imread(file.string(), cv::IMREAD_UNCHANGED)};
        if (own.image.empty())
        {
            std::cerr << "morvane_gallery: " << file.string() << ": is no image that can be read\n";
            return 2;
        }
    }
    program = fs::absolute(program);
    fs::create_directories(folder);
    fs::current_path(folder);
    Draw(program, own);
    return 0;
}

} // namespace

int main(int argc, char ** argv)
{
    try
    {
        cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
        return ParseAndDraw(argc, argv);
    }
    catch (std::exception const & error)
    {
        std::fprintf(stderr, "morvane_gallery: %s\n", error.what());
        return 1;
    }
}
