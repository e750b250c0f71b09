#include "Section.h"

#include <cmath>
#include <string>
#include <vector>

namespace gallery
{

namespace
{

/// Measures an image in windows and shows the four results.
void StatisticsStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    Figure const & shown)
{
    std::string const name = "statistics-" + std::to_string(studio.NextNumber());
    studio.Step(
        title, text,
        {"statistics", input, "--kernel", "8", "--entropy-picture", name + "-entropy.png", "--mean-picture",
         name + "-mean.png", "--deviation-picture", name + "-deviation.png", "--median-picture", name + "-median.png"},
        {shown,
         {name + "-entropy.png", "Entropy: how many different levels there are"},
         {name + "-mean.png", "Mean, with the empty pixels in the window"},
         {name + "-deviation.png", "Standard deviation: how far they differ"},
         {name + "-median.png", "Median, without the empty ones"}});
}

/// Tells whether there is a range that can be scaled to grey levels; NaN counts as 0.
bool HasRange(cv::Mat const & image)
{
    cv::Mat numbers;
    image.convertTo(numbers, CV_64F);
    cv::Mat isNaN;
    cv::compare(numbers, numbers, isNaN, cv::CMP_NE);
    numbers.setTo(0.0, isNaN);
    double least = 0.0;
    double greatest = 0.0;
    cv::minMaxIdx(numbers, &least, &greatest);
    return greatest > least && std::isfinite(greatest - least);
}

void DrawStatistics(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Statistics in a window",
        "What the grey levels around each pixel are like: LocalStatisticsNoZero slides a window over the image and "
        "measures nothing where nothing was measured. Blue is little, red is much.");
    StatisticsStep(
        studio, "Outlines and curved surfaces",
        "Windows of 8 by 8. The deviation draws the outlines, strongest where bright things stand before the dark. "
        "The entropy does not ask how far levels differ but how many there are: it is high where a surface is "
        "curved, on the crowns of the trees and on the mounds, and low on flat walls. At the rim of a crown the mean "
        "is drawn towards the empty sky, the median is not.",
        "yard_intensity.png", {"yard_intensity-preview.png", "Intensity in the yard"});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (own.image.channels() != 1 || !HasRange(own.image)) return;
    studio.ThePage().BeginSection(
        "Statistics in a window", "What the grey levels around each pixel are like. Blue is little, red is much.");
    StatisticsStep(
        studio, "Entropy, mean, deviation and median",
        "Windows of 8 by 8. Levels are the numbers times 256 over the range, modulo 256: where the least number is not "
        "0, they start in the middle of the scale and go round once.",
        own.file.string(), {"own-grey-preview.png", "The image"});
}

RegisteredSection const registered({90, DrawStatistics, DrawUserImage});

} // namespace

} // namespace gallery
