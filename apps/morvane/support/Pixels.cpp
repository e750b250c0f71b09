#include "morvane/support/Pixels.h"

#include "morvane/support/Images.h"
#include "morvane/support/ProgramError.h"

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace program
{

namespace
{

/// A whole number that is all of a text.
std::optional<int> WholeNumber(std::string_view text)
{
    int number = 0;
    char const * const end = text.data() + text.size();
    auto const [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

/// The pixel of an image that is written as X,Y. @throws ProgramError when it is none
cv::Point PixelAt(std::string const & text, cv::Mat const & image, std::filesystem::path const & file)
{
    std::string_view const both = text;
    auto const comma = both.find(',');
    auto const x = WholeNumber(both.substr(0, comma));
    auto const y = comma == std::string_view::npos ? std::nullopt : WholeNumber(both.substr(comma + 1));
    if (!x || !y) throw ProgramError("--seed " + text + " is no pixel; its column and its row are given as X,Y from 0");
    cv::Point const pixel(*x, *y);
    if (!cv::Rect(cv::Point(), image.size()).contains(pixel))
    {
        throw ProgramError(file, "has no pixel " + text + ": it is " + DescribeSize(image));
    }
    return pixel;
}

} // namespace

CLI::Option * DeclareSeeds(CLI::App & arguments, std::vector<std::string> & seeds, std::string const & remark)
{
    return arguments.add_option("--seed", seeds, "column and row of a seed, from 0; may be given again. " + remark)
        ->type_name("X,Y")
        ->allow_extra_args(false);
}

std::vector<cv::Point>
PixelsAt(std::vector<std::string> const & seeds, cv::Mat const & image, std::filesystem::path const & file)
{
    std::vector<cv::Point> pixels;
    pixels.reserve(seeds.size());
    for (std::string const & seed : seeds)
    {
        pixels.push_back(PixelAt(seed, image, file));
    }
    return pixels;
}

} // namespace program
