#include <morvane/algorithm/RegionGrowing.h>

#include <opencv2/imgproc.hpp>

namespace morvane::algorithm
{

namespace
{

/// What flood fill wants: the mask is a pixel larger than the image on each side.
cv::Mat EmptyMaskOver(cv::Mat const & image)
{
    return cv::Mat::zeros(image.rows + 2, image.cols + 2, CV_8UC1);
}

/// Fills the region of a seed in the mask with a value, 8-connected, with a floating range; paints the image, too.
void FloodRegion(cv::Mat & image, cv::Mat & mask, cv::Point seed, int paint, int maskValue, cv::Scalar const & delta)
{
    constexpr int kEightConnected = 8;
    constexpr int kMaskValueShift = 8;
    cv::Rect bounds;
    cv::floodFill(
        image, mask, seed, cv::Scalar(paint, 0.0, 0.0, 0.0), &bounds, delta, delta,
        kEightConnected | (maskValue << kMaskValueShift));
}

constexpr int kReached = 255;
constexpr int kReachedAgain = 128;

} // namespace

// The masks leave with their frame: it is part of what callers get. Arguments by value are so in the interface.
// NOLINTBEGIN(performance-unnecessary-value-param)

void MagicWand(cv::Mat const & image, cv::Scalar delta, cv::Point seed, cv::Mat & out)
{
    image.copyTo(out);
    cv::Mat mask = EmptyMaskOver(out);
    FloodRegion(out, mask, seed, kReached, kReached, delta);
    cv::compare(mask, static_cast<double>(kReached), out, cv::CMP_EQ);
}

void MagicWand(
    cv::Mat const & image1, cv::Mat const & image2, cv::Scalar delta1, cv::Scalar delta2, cv::Point seed, cv::Mat & out)
{
    cv::Mat painted = image1.clone();
    // Of the size that was handed in, which flood fill compares with that of the image.
    cv::Mat mask = EmptyMaskOver(out);
    FloodRegion(painted, mask, seed, kReached, kReached, delta1);
    // What was not reached bars the second pass, and what was reached is free.
    cv::compare(mask, 0.0, mask, cv::CMP_EQ);
    image2.copyTo(out);
    FloodRegion(out, mask, seed, kReachedAgain, kReachedAgain, delta2);
    cv::compare(mask, static_cast<double>(kReachedAgain), out, cv::CMP_EQ);
}

// NOLINTEND(performance-unnecessary-value-param)

} // namespace morvane::algorithm
