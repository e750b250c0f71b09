// Maps at the edges of their ranges and of their methods: rounding, exchanged limits, tables of all values, an image mapped
// onto itself.
#include "support/AllTypes.h"
#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/MapOracle.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane::tests
{

namespace
{

cv::Vec3b const kBlack(0, 0, 0);
cv::Vec3b const kGreen(0, 255, 0);
cv::Vec3b const kRed(0, 0, 255);
cv::Vec3b const kWhite(255, 255, 255);

cv::Mat Unwritten(cv::Size size, int type)
{
    cv::Mat output(size, type);
    FillBytes(output, 0x5B);
    return output;
}

cv::Mat Mapped(MapUnderTest const & map, cv::Mat const & image)
{
    cv::Mat output = Unwritten(image.size(), map.outputType);
    EXPECT_TRUE(map.whole(image, output)) << map.name;
    return output;
}

cv::Mat Mapped(MapUnderTest const & map, cv::Mat const & image, MapLimits const & limits)
{
    cv::Mat output = Unwritten(image.size(), map.outputType);
    EXPECT_TRUE(map.limited(image, output, limits.minimum, limits.maximum, limits.clip)) << map.name;
    return output;
}

/// Any numbers of the type.
cv::Mat AnyIntegers(Random & random, cv::Size size, int depth)
{
    cv::Mat image(size, depth);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            SetElement(image, y, x, 0, OracleLowBits(static_cast<std::int64_t>(random.Next()), depth));
        }
    }
    return image;
}

TEST(ColorMap, EndsInRedWhereTheProductOfTheGreatestRoundsToJustLessThanTheScale)
{
    ASSERT_LT(23 * (511.0 / 23), 511.0);
    ASSERT_GE(24 * (511.0 / 24), 511.0);
    for (int const depth : kDepths)
    {
        cv::Mat const rounding = Draw({".n"}, depth);
        ExpectEqualImages(Mapped(kMaps[2], rounding), Row<cv::Vec3b>({kGreen, kRed}));
        cv::Mat const exact = Draw({".o"}, depth);
        ExpectEqualImages(Mapped(kMaps[2], exact), Row<cv::Vec3b>({kGreen, kWhite}));
        // Also where each value of a narrow type is mapped once.
        cv::Mat many(2, 33000, depth, cv::Scalar(0));
        many.col(1).setTo(23);
        cv::Mat expected(many.size(), CV_8UC3, cv::Scalar(0, 255, 0));
        expected.col(1).setTo(cv::Scalar(0, 0, 255));
        ExpectEqualImages(Mapped(kMaps[2], many), expected);
    }
}

TEST(ColorMapNoZero, EndsInItsLastRedWhereTheProductRoundsToJustLessThanTheScale)
{
    ASSERT_LT(145 * (1275.0 / 145), 1275.0);
    cv::Mat const image = Row<ushort>({0, 100, 245});
    ExpectEqualImages(Mapped(kMaps[3], image), Row<cv::Vec3b>({kBlack, kBlack, {0, 1, 255}}));
}

TEST(ColorMaps, RunBackwardsBetweenExchangedLimits)
{
    // The range runs from 20 down to 10, so that its steps are negative.
    MapLimits const exchanged{20, 10, true};
    for (int const depth : kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat const image = Draw({"5afkp"}, depth);
        cv::Mat const grey = Row<uchar>({255, 255, 127, 0, 0});
        ExpectEqualImages(Mapped(kMaps[0], image, exchanged), grey);
        ExpectEqualImages(Mapped(kMaps[1], image, exchanged), grey);
        cv::Mat const colours = Row<cv::Vec3b>({kWhite, kWhite, {0, 255, 255}, kGreen, kBlack});
        ExpectEqualImages(Mapped(kMaps[2], image, exchanged), colours);
        // A zero lies beyond the end.
        ExpectEqualImages(Mapped(kMaps[3], Draw({".kp"}, depth), exchanged), Row<cv::Vec3b>({kWhite, kBlack, kBlack}));
        cv::Mat many;
        cv::repeat(image, 300, 50, many);
        cv::Mat manyGreys;
        cv::repeat(grey, 300, 50, manyGreys);
        ExpectEqualImages(Mapped(kMaps[0], many, exchanged), manyGreys);
    }
}

TEST(ColorMaps, RunBackwardsWhereOneLimitLiesBeyondTheImage)
{
    cv::Mat const image = Row<float>({1, 2, 3});
    // From 5, above all pixels, down to their greatest, 3: all but that lie beyond the end, and 3 is the end.
    ExpectEqualImages(Mapped(kMaps[0], image, {5, 10, true}), Row<uchar>({255, 255, 255}));
    // From their least, 1, down to -1: all lie before the start or are it.
    ExpectEqualImages(Mapped(kMaps[0], image, {-5, -1, true}), Row<uchar>({0, 0, 0}));
    ExpectEqualImages(Mapped(kMaps[2], image, {-5, -1, true}), Row<cv::Vec3b>({kGreen, kBlack, kBlack}));
}

TEST(ColorMaps, AgreeWithThePlainFormOnBothSidesOfTheSizeFromWhichATableOfAllValuesPays)
{
    Random random(83);
    for (int const depth : {CV_8U, CV_16U, CV_16S})
    {
        int const values = depth == CV_8U ? 256 : 65536;
        for (int const pixels : {values - 1, values, values + 1})
        {
            cv::Mat const image = AnyIntegers(random, {pixels, 1}, depth);
            MapLimits const limits{20.5, depth == CV_8U ? 200.25 : 12345.5, true};
            for (MapUnderTest const & map : kMaps)
            {
                SCOPED_TRACE(std::string(map.name) + " of " + Case(depth, image.size(), 0));
                MapResult const whole = OracleMap(map, image, nullptr);
                ASSERT_EQ(cv::countNonZero(whole.open), 0);
                EXPECT_TRUE(EqualImages(Mapped(map, image), whole.image));
                EXPECT_TRUE(EqualImages(Mapped(map, image, limits), OracleMap(map, image, &limits).image));
            }
        }
    }
}

TEST(GrayMap, MapsAnImageOntoItself)
{
    Random random(84);
    for (cv::Size const size : {cv::Size(7, 1), cv::Size(255, 1), cv::Size(16, 16), cv::Size(70, 9)})
    {
        for (MapUnderTest const & map : {kMaps[0], kMaps[1]})
        {
            SCOPED_TRACE(std::string(map.name) + " of " + Case(CV_8U, size, 0));
            // Up to 99, so that a map is no identity.
            cv::Mat image(size, CV_8UC1);
            for (int number = 0; number < size.area(); ++number)
            {
                SetElement(image, number / size.width, number % size.width, 0, random.Below(100));
            }
            cv::Mat const expected = OracleMap(map, image, nullptr).image;
            cv::Mat whole = CopyOf(image);
            ASSERT_TRUE(map.whole(whole, whole));
            ExpectEqualImages(whole, expected);
            FramedImage framed(image);
            cv::Mat sharing = framed.View();
            ASSERT_TRUE(map.whole(framed.View(), sharing));
            ExpectEqualImages(framed.View(), expected);
            EXPECT_TRUE(framed.IsFrameUntouched());
            MapLimits const limits{10, 60, true};
            cv::Mat limited = CopyOf(image);
            ASSERT_TRUE(map.limited(limited, limited, limits.minimum, limits.maximum, limits.clip));
            ExpectEqualImages(limited, OracleMap(map, image, &limits).image);
        }
    }
}

} // namespace

} // namespace morvane::tests
