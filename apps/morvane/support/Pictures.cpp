#include "morvane/support/Pictures.h"

#include "morvane/support/Planes.h"
#include "morvane/support/ProgramError.h"

#include <morvane/visual/ColorMaps.h>

#include <opencv2/imgproc.hpp>

#include <cstdint>

namespace program
{

cv::Mat GreyPicture(cv::Mat const & image, PictureRange const & range)
{
    using namespace morvane::visual;
    cv::Mat picture(image.size(), CV_8UC1);
    bool const done = range.isOfMeasured ? GrayMapNoZero(image, picture, range.low, range.high, true)
                                         : GrayMap(image, picture, range.low, range.high, true);
    if (!done) throw ProgramError("the grey picture cannot be made");
    return picture;
}

cv::Mat FalseColourPicture(cv::Mat const & image, PictureRange const & range)
{
    using namespace morvane::visual;
    cv::Mat picture(image.size(), CV_8UC3);
    bool const done = range.isOfMeasured ? ColorMapNoZero(image, picture, range.low, range.high, true)
                                         : ColorMap(image, picture, range.low, range.high, true);
    if (!done) throw ProgramError("the false-colour picture cannot be made");
    return picture;
}

cv::Vec3b ColourOfZone(int label)
{
    constexpr std::uint64_t kLevels = 192;
    constexpr std::uint64_t kDarkest = 64;
    // Digits to the base 192 in the ratios that spread points evenly in a cube, so that successive labels look different;
    // coprime to 192^3 = 2^18 * 3^3, so that no colour comes twice.
    constexpr std::uint64_t kStride = (157 * kLevels + 129) * kLevels + 107;
    static_assert(kStride % 2 != 0 && kStride % 3 != 0);

    std::uint64_t const index = static_cast<std::uint64_t>(label) * kStride % kDistinctColours;
    auto const channel = [](std::uint64_t level) {
        return static_cast<uchar>(kDarkest + level % kLevels);
    };
    return {channel(index), channel(index / kLevels), channel(index / kLevels / kLevels)};
}

cv::Mat PictureOfZones(cv::Mat const & labels)
{
    cv::Mat picture = cv::Mat::zeros(labels.size(), CV_8UC3);
    for (int y = 0; y < labels.rows; ++y)
    {
        int const * const row = labels.ptr<int>(y);
        auto * const colours = picture.ptr<cv::Vec3b>(y);
        for (int x = 0; x < labels.cols; ++x)
        {
            if (row[x] > 0) colours[x] = ColourOfZone(row[x]);
        }
    }
    return picture;
}

cv::Mat PictureOfNormals(cv::Mat const & normals)
{
    constexpr double kHalf = 127.5;
    cv::Mat picture;
    normals.convertTo(picture, CV_8U, kHalf, kHalf);
    cv::cvtColor(picture, picture, cv::COLOR_RGB2BGR);
    picture.setTo(cv::Scalar::all(0), ~IsAnyChannelSet(normals));
    return picture;
}

} // namespace program
