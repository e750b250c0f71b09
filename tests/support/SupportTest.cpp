// The helpers that other tests lean on are worth a few tests of their own.
#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

cv::Mat LabelsByOracle(Drawing const & drawing, int connexity)
{
    cv::Mat const image = Draw<uchar>(drawing);
    return OracleLabels(OracleZones(OracleTakesPart(image), connexity), image.size(), CV_32SC1);
}

TEST(Draw, GivesTheDrawnValues)
{
    cv::Mat const image = Draw<short>({".09", "azZ"});
    ASSERT_EQ(image.type(), CV_16SC1);
    cv::Mat const expected = (cv::Mat_<short>(2, 3) << 0, 0, 9, 10, 35, 61);
    EXPECT_EQ(cv::norm(image, expected, cv::NORM_INF), 0.0);
    EXPECT_EQ((Draw<cv::Vec3f>({"7"}).at<cv::Vec3f>(0, 0)), cv::Vec3f(7, 7, 7));
    EXPECT_THROW((void)DrawLabels({"11", "1"}), std::invalid_argument);
    EXPECT_THROW((void)DrawLabels({"#"}), std::invalid_argument);
}

TEST(EqualImages, SeesSizeTypeAndEveryByte)
{
    cv::Mat const image = Draw<float>({"12", "3."});
    EXPECT_TRUE(EqualImages(image, image.clone()));
    EXPECT_FALSE(EqualImages(image, Draw<float>({"12", "31"})));
    EXPECT_FALSE(EqualImages(image, Draw<double>({"12", "3."})));
    EXPECT_FALSE(EqualImages(image, Draw<float>({"12"})));
    cv::Mat negativeZero = image.clone();
    negativeZero.at<float>(1, 1) = -0.0F;
    EXPECT_FALSE(EqualImages(image, negativeZero));
}

TEST(SamePartition, IgnoresNamesAndSeesSplitsAndMerges)
{
    EXPECT_TRUE(SamePartition(DrawLabels({"11.2"}), DrawLabels({"55.1"})));
    EXPECT_FALSE(SamePartition(DrawLabels({"11.1"}), DrawLabels({"11.2"})));
    EXPECT_FALSE(SamePartition(DrawLabels({"11.2"}), DrawLabels({"11.1"})));
    EXPECT_FALSE(SamePartition(DrawLabels({"11.2"}), DrawLabels({"1132"})));
}

TEST(FramedImage, IsAViewWithAGapAndReportsWritesAroundIt)
{
    FramedImage framed(Draw<ushort>({"12", "34"}));
    ExpectDrawn(framed.View(), {"12", "34"});
    EXPECT_FALSE(framed.View().isContinuous());
    framed.View().setTo(9);
    EXPECT_TRUE(framed.IsFrameUntouched());
    framed.View().ptr<ushort>(1)[2] = 0;
    EXPECT_FALSE(framed.IsFrameUntouched());
}

TEST(Random, GivesTheSameNumbersEverywhere)
{
    // The published first outputs of splitmix64 for the state 1234567.
    Random random(1234567);
    EXPECT_EQ(random.Next(), 6457827717110365317U);
    EXPECT_EQ(random.Next(), 3203168211198807973U);
    EXPECT_EQ(random.Next(), 9817491932198370423U);
}

TEST(PaintMask, FillsExactlyTheMaskInEveryType)
{
    Random random(7);
    for (int const depth : kDepths)
    {
        for (int const channels : kChannelCounts)
        {
            SCOPED_TRACE(cv::typeToString(CV_MAKETYPE(depth, channels)));
            cv::Mat1b const mask = RandomMask(random, {40, 40}, 0.5);
            ExpectEqualImages(OracleTakesPart(PaintMask(random, mask, CV_MAKETYPE(depth, channels))), mask);
        }
    }
}

TEST(OracleTakesPart, FollowsTheLimitOfEmptiness)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat const image = (cv::Mat_<float>(1, 6) << 0.0F, 1e-11F, 1e-10F, 2e-10F, -1.0F, nan);
    ExpectDrawn(OracleTakesPart(image), {"...11."});
    cv::Mat const pairs =
        (cv::Mat_<cv::Vec2f>(1, 3) << cv::Vec2f(1e-11F, 0.0F), cv::Vec2f(1e-10F, 1e-10F), cv::Vec2f(1.0F, nan));
    ExpectDrawn(OracleTakesPart(pairs), {".1."});
    ExpectDrawn(OracleTakesPart(Draw<cv::Vec4b>({".1."})), {".1."});
}

TEST(OracleZones, LabelsDrawnImages)
{
    ExpectDrawn(LabelsByOracle({"1.1", ".1.", "1.1"}, 0), {"1.2", ".3.", "4.5"});
    ExpectDrawn(LabelsByOracle({"1.1", ".1.", "1.1"}, 2), {"1.1", ".1.", "1.1"});
    ExpectDrawn(LabelsByOracle({"1..1", "...."}, 1), {"1..1", "...."});
    ExpectDrawn(LabelsByOracle({"1.1..1"}, 5), {"1.1..2"});
    ExpectDrawn(LabelsByOracle({"111"}, 13), {"123"});
}

TEST(OracleLabels, ReduceNumbersToTheRangeOfTheType)
{
    std::vector<std::vector<cv::Point>> zones(300);
    for (int index = 0; index < 300; ++index)
    {
        zones[static_cast<std::size_t>(index)] = {{index, 0}};
    }
    cv::Mat const labels = OracleLabels(zones, {300, 1}, CV_8UC1);
    EXPECT_EQ(labels.at<uchar>(0, 254), 255);
    EXPECT_EQ(labels.at<uchar>(0, 255), 0);
    EXPECT_EQ(labels.at<uchar>(0, 299), 44);
}

TEST(AllPatterns, ExistInEverySizeAndDiffer)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 5), cv::Size(5, 0), cv::Size(1, 9), cv::Size(200, 7)})
    {
        for (Pattern const & pattern : AllPatterns(size))
        {
            EXPECT_EQ(pattern.mask.rows, size.height) << pattern.name;
            EXPECT_EQ(pattern.mask.cols, size.width) << pattern.name;
        }
    }
    std::set<std::string> distinct;
    auto const patterns = AllPatterns({130, 9});
    for (Pattern const & pattern : patterns)
    {
        distinct.insert(std::string(pattern.mask.begin(), pattern.mask.end()));
    }
    EXPECT_EQ(distinct.size(), patterns.size());
}

TEST(Spiral, IsOneLongLine)
{
    ExpectDrawn(Spiral({7, 5}), {"1111111", "......1", "11111.1", "1.....1", "1111111"});
}

} // namespace

} // namespace morvane::tests
