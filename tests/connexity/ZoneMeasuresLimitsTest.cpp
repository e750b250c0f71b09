// Zone measures of images beyond two gigabytes.
#include <morvane/connexity/ZoneMeasures.h>

#include "support/ImageLiterals.h"
#include "support/MeasureOracle.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace morvane::tests
{

namespace
{

constexpr int kSide = 23200;

/// Zone 1 over all rows but the last; there zone 2, and zone 3 at its last pixel.
cv::Mat ThreeZones(int type)
{
    cv::Mat labels(kSide, kSide, type, cv::Scalar(1));
    labels.row(kSide - 1).setTo(2);
    labels(cv::Rect(kSide - 1, kSide - 1, 1, 1)).setTo(3);
    return labels;
}

TEST(SlowZoneMeasureLimits, LabelsBeyondTwoGigabytes_AreMeasuredToTheirLastPixel)
{
    cv::Mat const labels = ThreeZones(CV_32SC1);
    ASSERT_GT(labels.total() * labels.elemSize(), std::size_t{1} << 31U);
    int const last = kSide - 1;
    ExpectEqualImages(connexity::ComputeArea(labels), Row<int>({0, kSide * last, last, 1}).t());
    ExpectEqualImages(connexity::ComputeRowMin(labels), Row<int>({kMinStart, 0, last, last}).t());
    ExpectEqualImages(connexity::ComputeColMax(labels), Row<int>({kMaxStart, last, last - 1, last}).t());
}

TEST(SlowZoneMeasureLimits, ValuesBeyondTwoGigabytes_AreMeasuredToTheirLastPixel)
{
    cv::Mat const labels = ThreeZones(CV_8UC1);
    cv::Mat values(kSide, kSide, CV_32FC1, cv::Scalar(0.5));
    ASSERT_GT(values.total() * values.elemSize(), std::size_t{1} << 31U);
    values.row(kSide - 2).setTo(1.5);
    values.row(kSide - 1).setTo(2.5);
    values.at<float>(kSide - 1, kSide - 1) = 3.5F;
    auto const start = static_cast<float>(kMaxStart);
    ExpectEqualImages(connexity::ComputeMax(labels, values), Row<float>({start, 1.5F, 2.5F, 3.5F}).t());
}

} // namespace

} // namespace morvane::tests
