#include "morvane/support/Levels.h"

#include "morvane/support/Choices.h"
#include "morvane/support/ProgramError.h"

#include <limits>

namespace program
{

namespace fs = std::filesystem;

void DeclareAttribute(CLI::App & arguments, morvane::common::eAttributeType & attribute)
{
    using namespace morvane::common;
    DeclareNamed<eAttributeType>(
        arguments, "--attribute", attribute,
        {{"area", eAttributeArea},
         {"height", eAttributeHeight},
         {"min-hw", eAttributeMinHW},
         {"sqrt-area", eAttributeSqrtArea},
         {"strain", eAttributeStrain},
         {"width", eAttributeWidth}},
        "what is measured of a component: area, sqrt-area, height, width, strain (the larger of both), min-hw (the "
        "smaller)")
        ->required();
}

void DeclareScale(CLI::App & arguments, std::optional<double> & scale)
{
    arguments
        .add_option(
            "--scale", scale,
            "how many levels make 1 in the image, 1000 for millimetres in an image of metres; images of floats need it")
        ->check(IsNumberAbove(0.0));
}

cv::Mat LevelsOf(fs::path const & file, cv::Mat const & image, std::optional<double> const & scale)
{
    double least = 0.0;
    cv::minMaxIdx(image, &least, nullptr);
    if (least < 0.0) throw ProgramError(file, "holds negative numbers, which are no levels");
    return SignedLevelsOf(file, image, scale);
}

cv::Mat SignedLevelsOf(fs::path const & file, cv::Mat const & image, std::optional<double> const & scale)
{
    bool const isWhole = image.depth() != CV_32F && image.depth() != CV_64F;
    if (!scale && !isWhole) throw ProgramError(file, "holds floats; --scale says how many levels make 1");
    if (!scale) return image;
    double least = 0.0;
    double greatest = 0.0;
    cv::minMaxIdx(image, &least, &greatest);
    using Limits = std::numeric_limits<int>;
    if (greatest * *scale > Limits::max() || least * *scale < Limits::min())
    {
        throw ProgramError(file, "holds numbers that are too large for --scale");
    }
    cv::Mat levels;
    image.convertTo(levels, CV_32S, *scale);
    return levels;
}

cv::Mat NumbersOf(cv::Mat const & levels, int type, std::optional<double> const & scale)
{
    if (!scale) return levels;
    cv::Mat numbers;
    levels.convertTo(numbers, CV_MAT_DEPTH(type), 1.0 / *scale);
    return numbers;
}

} // namespace program
