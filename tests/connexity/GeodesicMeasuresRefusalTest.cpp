// What the geodesic measures refuse.
#include <morvane/connexity/GeodesicMeasures.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <vector>

namespace morvane::connexity
{

namespace
{

using Call = bool (*)(cv::Mat const & image, cv::Mat & out);

constexpr std::array<Call, 6> kCalls{
    GeodesicExtremitiesOnFlatZonesNoZero,       GeodesicExtremityOnFlatZonesNoZero,
    LabelFlatZonesNoZeroWithGeodesicDiameter,   LabelFlatZonesNoZeroWithGeodesicElongation,
    LabelFlatZonesNoZeroWithGeodesicTortuosity, LabelFlatZonesNoZeroWithStandardElongation};

/// Expects a refusal by all operators, with an output as it was, whether it would do or not.
void ExpectRefused(cv::Mat const & image)
{
    SCOPED_TRACE(cv::typeToString(image.type()));
    for (std::size_t index = 0; index < kCalls.size(); ++index)
    {
        SCOPED_TRACE(index);
        for (int const type : {CV_8UC1, CV_64FC1, CV_16SC2})
        {
            cv::Mat out(3, 4, type, cv::Scalar::all(7));
            tests::Snapshot const before(out);
            EXPECT_FALSE(kCalls[index](image, out));
            EXPECT_TRUE(before.IsUntouched());
        }
        cv::Mat none;
        EXPECT_FALSE(kCalls[index](image, none));
        EXPECT_EQ(none.data, nullptr);
    }
}

TEST(GeodesicMeasureRefusals, EmptyImages)
{
    for (int const depth : tests::kDepths)
    {
        ExpectRefused(cv::Mat(0, 0, depth));
        ExpectRefused(cv::Mat(0, 4, depth));
        ExpectRefused(cv::Mat(3, 0, depth));
    }
}

TEST(GeodesicMeasureRefusals, RefusedDepths)
{
    for (int const depth : tests::kRefusedDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            cv::Mat image(3, 4, CV_MAKETYPE(depth, channels));
            tests::FillBytes(image, 1);
            ExpectRefused(image);
        }
    }
}

TEST(GeodesicMeasureRefusals, MoreThanFourChannels)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat image(3, 4, CV_MAKETYPE(depth, 5));
        tests::FillBytes(image, 1);
        ExpectRefused(image);
    }
}

TEST(GeodesicMeasureRefusals, MoreThanTwoDimensions)
{
    std::array const sides{2, 3, 4};
    ExpectRefused(cv::Mat(3, sides.data(), CV_8UC1, cv::Scalar(1)));
}

TEST(GeodesicMeasureRefusals, OutputsOfAnyTypeAndSizeAreReplaced)
{
    std::array const sides{2, 3, 4};
    std::vector<cv::Mat> const outputs{
        cv::Mat(), cv::Mat(9, 9, CV_8SC1), cv::Mat(3, 4, CV_64FC4), cv::Mat(3, sides.data(), CV_8UC1)};
    cv::Mat const image = tests::Draw<short>({"11..", "..2.", "3.22"});
    for (std::size_t index = 0; index < kCalls.size(); ++index)
    {
        for (cv::Mat const & before : outputs)
        {
            cv::Mat out = before;
            ASSERT_TRUE(kCalls[index](image, out));
            EXPECT_EQ(out.size(), image.size());
            EXPECT_EQ(out.type(), index < 2 ? CV_8UC1 : CV_64FC1);
        }
    }
}

} // namespace

} // namespace morvane::connexity
