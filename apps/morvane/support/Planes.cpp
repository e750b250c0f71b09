#include "morvane/support/Planes.h"

#include "morvane/support/Choices.h"

#include <iostream>
#include <limits>
#include <vector>

namespace program
{

void DeclareLengthScale(CLI::App & arguments, double & scale, std::string const & lengths)
{
    arguments
        .add_option(
            "--scale", scale,
            lengths + " are multiplied by this number, 1 unless it is given. Points that fit a plane too well have no "
                      "normal: the smallest eigenvalue of their covariance must be 0.0001 square units or more, so "
                      "metres with a noise of millimetres need 1000")
        ->check(IsNumberAbove(0.0));
}

cv::Mat ScaledLengths(cv::Mat const & image, int depth, double scale)
{
    cv::Mat numbers;
    image.convertTo(numbers, depth, scale);
    double const greatest =
        depth == CV_32F ? static_cast<double>(std::numeric_limits<float>::max()) : std::numeric_limits<double>::max();
    // Comparisons with NaN are false.
    cv::Mat const isFinite = (numbers >= -greatest) & (numbers <= greatest);
    cv::Mat lengths = cv::Mat::zeros(numbers.size(), numbers.type());
    numbers.copyTo(lengths, isFinite);
    return lengths;
}

cv::Mat1b IsAnyChannelSet(cv::Mat const & image)
{
    std::vector<cv::Mat> channels;
    cv::split(image, channels);
    cv::Mat1b isSet(image.size(), uchar{0});
    for (cv::Mat const & channel : channels)
    {
        isSet |= channel != 0.0;
    }
    return isSet;
}

void PrintAdviceOnScale()
{
    std::cout << "note  no window has a plane with a smallest eigenvalue of 0.0001 square units or more; --scale 1000, "
                 "from metres to millimetres, may help\n";
}

} // namespace program
