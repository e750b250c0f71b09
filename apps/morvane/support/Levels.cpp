#include "morvane/support/Levels.h"

#include "morvane/support/Choices.h"
#include "morvane/support/ProgramError.h"

#include <limits>
#include <map>
#include <string>

namespace program
{

namespace fs = std::filesystem;

void DeclareAttribute(CLI::App & arguments, morvane::common::eAttributeType & attribute)
{
    using namespace morvane::common;
    std::map<std::string, eAttributeType> const names{{"height", eAttributeHeight}, {"width", eAttributeWidth},
                                                      {"strain", eAttributeStrain}, {"min-hw", eAttributeMinHW},
                                                      {"area", eAttributeArea},     {"sqrt-area", eAttributeSqrtArea}};
    auto const take = [&attribute, names](std::string const & wanted) {
        auto const found = names.find(wanted);
        if (found == names.end())
        {
            throw CLI::ValidationError(
                "--attribute", wanted + " is none of area, height, min-hw, sqrt-area, strain, width");
        }
        attribute = found->second;
    };
    arguments
        .add_option_function<std::string>(
            "--attribute", take,
            "what is measured of a component: area, sqrt-area, height, width, strain (the larger of both), min-hw (the "
            "smaller)")
        ->type_name("NAME")
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
    double greatest = 0.0;
    cv::minMaxIdx(image, &least, &greatest);
    if (least < 0.0) throw ProgramError(file, "holds negative numbers, which are no levels");
    bool const isWhole = image.depth() != CV_32F && image.depth() != CV_64F;
    if (!scale && !isWhole) throw ProgramError(file, "holds floats; --scale says how many levels make 1");
    if (!scale) return image;
    if (greatest * *scale > std::numeric_limits<int>::max())
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
