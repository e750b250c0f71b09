#include <morvane/visual/ColorMaps.h>

#include "support/AllTypes.h"
#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/MapOracle.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace morvane::tests
{

namespace
{

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
cv::Vec3b const kBlack(0, 0, 0);
cv::Vec3b const kWhite(255, 255, 255);

/// An output that no map would write.
cv::Mat Unwritten(cv::Size size, int type)
{
    cv::Mat output(size, type);
    FillBytes(output, 0x5B);
    return output;
}

/// Checks one map with given limits, or over the whole range, on a plain and on a framed output.
void CheckMap(MapUnderTest const & map, cv::Mat const & image, MapLimits const * limits)
{
    SCOPED_TRACE(std::string(map.name) + " of " + cv::typeToString(image.type()));
    FramedImage framed(Unwritten(image.size(), map.outputType));
    FramedImage framedImage(image);
    cv::Mat whole = Unwritten(image.size(), map.outputType);
    cv::Mat expected = OracleMap(map, image, limits).image;
    cv::Mat1b const open = OracleMap(map, image, limits).open;
    auto const run = [&](cv::Mat const & input, cv::Mat & output) {
        return limits == nullptr ? map.whole(input, output)
                                 : map.limited(input, output, limits->minimum, limits->maximum, limits->clip);
    };
    ASSERT_TRUE(run(image, whole));
    ASSERT_TRUE(run(framedImage.View(), framed.View()));
    ASSERT_TRUE(EqualImages(framed.View(), whole));
    ASSERT_TRUE(framed.IsFrameUntouched());
    whole.copyTo(expected, open);
    ASSERT_TRUE(EqualImages(whole, expected));
}

/// Finite numbers of all sizes, some infinities.
double AnyNumber(Random & random)
{
    switch (random.Below(8))
    {
    case 0:
        return 0.0;
    case 1:
        return -0.0;
    case 2:
        return random.Chance(0.3) ? kInfinity : -1e-11;
    case 3:
        return random.Chance(0.3) ? -kInfinity : 1e-11;
    case 4:
        return (random.Unit() - 0.5) * std::ldexp(1.0, random.Below(200) - 100);
    case 5:
        return random.Below(20) - 6;
    default:
        return (random.Unit() - 0.2) * 100;
    }
}

/// Images with a range of their own: few small integers, all integers of the type, floating-point numbers.
cv::Mat MappableImage(Random & random, cv::Size size, int depth)
{
    cv::Mat image(size, depth);
    bool const floating = depth == CV_32F || depth == CV_64F;
    bool const wide = random.Chance(0.5);
    bool const isSigned = depth == CV_16S || depth == CV_32S;
    int const base = random.Below(100) - (isSigned ? 60 : 0);
    int const spread = 1 + random.Below(100);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            double value = random.Chance(0.2) ? 0 : base + random.Below(spread);
            if (floating && wide) value = AnyNumber(random);
            if (floating && !wide) value = value + random.Unit();
            if (!floating && wide) value = OracleLowBits(static_cast<std::int64_t>(random.Next()), depth);
            SetElement(image, y, x, 0, std::max(value, isSigned || floating ? value : 0.0));
        }
    }
    return image;
}

MapLimits RandomLimits(Random & random, cv::Mat const & image)
{
    auto const limit = [&] {
        double const pixel = ElementAt(image, random.Below(image.rows), random.Below(image.cols));
        if (random.Chance(0.5)) return pixel;
        return random.Chance(0.5) ? pixel + random.Unit() * 10 - 5 : random.Below(300) - 100.5;
    };
    return {limit(), limit(), random.Chance(0.8)};
}

TEST(ColorMaps, AgreeWithThePlainFormForAllDepths)
{
    Random random(81);
    for (MapUnderTest const & map : kMaps)
    {
        for (int const depth : kDepths)
        {
            for (int repeat = 0; repeat < 30; ++repeat)
            {
                cv::Size const size(1 + random.Below(75), 1 + random.Below(9));
                cv::Mat const image = MappableImage(random, repeat == 0 ? cv::Size(301, 233) : size, depth);
                CheckMap(map, image, nullptr);
                MapLimits const limits = RandomLimits(random, image);
                SCOPED_TRACE(testing::Message() << limits.minimum << " to " << limits.maximum << ' ' << limits.clip);
                CheckMap(map, image, &limits);
                if (HasFatalFailure()) return;
            }
        }
    }
}

/// Every number of `CV_16U` from 0 to @p last.
cv::Mat Counting(int last)
{
    cv::Mat image(1, last + 1, CV_16UC1);
    std::iota(image.ptr<ushort>(), image.ptr<ushort>() + image.cols, ushort{0});
    return image;
}

TEST(GrayMap, StretchesTheRangeToAllGreys)
{
    cv::Mat output = Unwritten({256, 1}, CV_8UC1);
    ASSERT_TRUE(visual::GrayMap(Counting(255), output));
    for (int value = 0; value < 256; ++value)
    {
        EXPECT_EQ(output.at<uchar>(value), value);
    }
    cv::Mat const image = Row<float>({-1.0F, 0.0F, 1.0F});
    cv::Mat greys = Unwritten(image.size(), CV_8UC1);
    ASSERT_TRUE(visual::GrayMap(image, greys));
    ExpectEqualImages(greys, Row<uchar>({0, 127, 255}));
}

TEST(ColorMap, RunsFromGreenOverYellowToRed)
{
    cv::Mat output = Unwritten({512, 1}, CV_8UC3);
    ASSERT_TRUE(visual::ColorMap(Counting(511), output));
    EXPECT_EQ(output.at<cv::Vec3b>(0), cv::Vec3b(0, 255, 0));
    EXPECT_EQ(output.at<cv::Vec3b>(1), cv::Vec3b(0, 255, 1));
    EXPECT_EQ(output.at<cv::Vec3b>(254), cv::Vec3b(0, 255, 254));
    EXPECT_EQ(output.at<cv::Vec3b>(255), cv::Vec3b(0, 255, 255));
    EXPECT_EQ(output.at<cv::Vec3b>(256), cv::Vec3b(0, 254, 255));
    EXPECT_EQ(output.at<cv::Vec3b>(510), cv::Vec3b(0, 0, 255));
    EXPECT_EQ(output.at<cv::Vec3b>(511), kWhite);
    CheckMap(kMaps[2], Counting(511), nullptr);
}

TEST(ColorMapNoZero, RunsFromBlackOverBlueCyanGreenAndYellowToRed)
{
    // The range starts at 1: the value i + 1 takes the entry i.
    cv::Mat output = Unwritten({1277, 1}, CV_8UC3);
    ASSERT_TRUE(visual::ColorMapNoZero(Counting(1276), output));
    EXPECT_EQ(output.at<cv::Vec3b>(0), kBlack);
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 0), kBlack);
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 1), cv::Vec3b(1, 0, 0));
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 254), cv::Vec3b(254, 0, 0));
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 255), cv::Vec3b(255, 0, 0));
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 256), cv::Vec3b(255, 1, 0));
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 509), cv::Vec3b(255, 254, 0));
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 510), cv::Vec3b(255, 255, 0));
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 764), cv::Vec3b(1, 255, 0));
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 765), cv::Vec3b(0, 255, 0));
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 1019), cv::Vec3b(0, 255, 254));
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 1020), cv::Vec3b(0, 255, 255));
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 1274), cv::Vec3b(0, 1, 255));
    EXPECT_EQ(output.at<cv::Vec3b>(1 + 1275), kWhite);
    CheckMap(kMaps[3], Counting(1276), nullptr);
}

TEST(ColorMapNoZero, PaintsZeroAndTheLeastMeasuredValueBlack)
{
    cv::Mat output = Unwritten({3, 1}, CV_8UC3);
    ASSERT_TRUE(visual::ColorMapNoZero(Row<uchar>({0, 1, 2}), output));
    ExpectEqualImages(output, Row<cv::Vec3b>({kBlack, kBlack, kWhite}));
}

TEST(GrayMap, CutsTheRangeAtTheLimits)
{
    cv::Mat const image = Row<uchar>({5, 10, 15, 20, 30});
    cv::Mat output = Unwritten(image.size(), CV_8UC1);
    ASSERT_TRUE(visual::GrayMap(image, output, 10, 20, true));
    ExpectEqualImages(output, Row<uchar>({0, 0, 127, 255, 255}));
    // The maximum too goes through the product, and 25 times 255 / 25 rounds to just less than 255.
    ASSERT_TRUE(visual::GrayMap(image, output, 10, 20, false));
    ExpectEqualImages(output, Row<uchar>({0, 51, 102, 153, 254}));
    // Limits outside the range of the image do not widen it.
    ASSERT_TRUE(visual::GrayMap(image, output, -100, 1000, true));
    ExpectEqualImages(output, Row<uchar>({0, 51, 102, 153, 254}));
}

TEST(ColorMap, MarksWhatTheLimitsCutOffInBlackAndWhite)
{
    cv::Mat const image = Row<short>({-1, 0, 510, 511, 512});
    cv::Mat output = Unwritten(image.size(), CV_8UC3);
    ASSERT_TRUE(visual::ColorMap(image, output, 0, 511, true));
    ExpectEqualImages(output, Row<cv::Vec3b>({kBlack, {0, 255, 0}, {0, 0, 255}, kWhite, kWhite}));
}

TEST(ColorMaps, DoNotLookAtTheLimitsWithoutClip)
{
    cv::Mat const image = Row<float>({-3, 0, 1, 2, 7});
    for (MapUnderTest const & map : kMaps)
    {
        SCOPED_TRACE(map.name);
        cv::Mat expected = Unwritten(image.size(), map.outputType);
        ASSERT_TRUE(map.whole(image, expected));
        cv::Mat output = Unwritten(image.size(), map.outputType);
        ASSERT_TRUE(map.limited(image, output, kNaN, kNaN, false));
        ExpectEqualImages(output, expected);
        ASSERT_TRUE(map.limited(image, output, 1, 1, false));
        ExpectEqualImages(output, expected);
    }
}

TEST(ColorMaps, AreZeroWhereTheRangeIsASingleValue)
{
    for (MapUnderTest const & map : kMaps)
    {
        for (int const depth : kDepths)
        {
            SCOPED_TRACE(std::string(map.name) + cv::depthToString(depth));
            cv::Mat const zeros = cv::Mat::zeros(2, 3, map.outputType);
            cv::Mat constant = Unwritten(zeros.size(), map.outputType);
            ASSERT_TRUE(map.whole(Draw({"777", "777"}, depth), constant));
            ExpectEqualImages(constant, zeros);
            cv::Mat empty = Unwritten(zeros.size(), map.outputType);
            ASSERT_TRUE(map.whole(Draw({"...", "..."}, depth), empty));
            ExpectEqualImages(empty, zeros);
            cv::Mat closed = Unwritten(zeros.size(), map.outputType);
            ASSERT_TRUE(map.limited(Draw({"123", "456"}, depth), closed, 4, 4, true));
            ExpectEqualImages(closed, zeros);
        }
    }
}

TEST(ColorMaps, NoZeroFindsTheRangeWithoutExactZerosAndMapsZerosLikeOthers)
{
    // A tiny number is no zero here, and negative zero is one.
    cv::Mat const image = Row<float>({0.0F, -0.0F, 1e-11F, 2.0F});
    cv::Mat greys = Unwritten(image.size(), CV_8UC1);
    ASSERT_TRUE(visual::GrayMapNoZero(image, greys));
    ExpectEqualImages(greys, Row<uchar>({0, 0, 0, 255}));
    cv::Mat const high = Row<ushort>({0, 100, 151, 202});
    ASSERT_TRUE(visual::GrayMapNoZero(high, greys));
    ExpectEqualImages(greys, Row<uchar>({0, 0, 127, 255}));
    cv::Mat const negative = Row<int>({-2, 0, -1, 2});
    ASSERT_TRUE(visual::GrayMapNoZero(negative, greys));
    ExpectEqualImages(greys, Row<uchar>({0, 127, 63, 255}));
    ASSERT_TRUE(visual::GrayMapNoZero(Row<int>({-2, 0, -1, -2}), greys));
    ExpectEqualImages(greys, Row<uchar>({0, 255, 255, 0}));
}

TEST(ColorMaps, NoZeroPaintsImagesWithoutARangeBlackWhateverTheLimits)
{
    cv::Mat const image = Draw<int>({"..."});
    for (MapUnderTest const & map : {kMaps[1], kMaps[3]})
    {
        cv::Mat output = Unwritten(image.size(), map.outputType);
        ASSERT_TRUE(map.limited(image, output, 10, 20, true));
        ExpectEqualImages(output, cv::Mat::zeros(image.size(), map.outputType));
        ASSERT_TRUE(map.limited(image, output, 0, 0, false));
        ExpectEqualImages(output, cv::Mat::zeros(image.size(), map.outputType));
    }
}

template <class T>
void ExpectNaNHasNoEffectOnTheRange()
{
    T const nan = std::numeric_limits<T>::quiet_NaN();
    cv::Mat const image = Row<T>({nan, T(1), nan, T(3), T(2), T(0), nan});
    for (MapUnderTest const & map : {kMaps[1], kMaps[3]})
    {
        CheckMap(map, image, nullptr);
    }
    // What a NaN pixel gets is open in all maps; the frame of the output and the sanitizers watch.
    for (MapUnderTest const & map : kMaps)
    {
        for (cv::Mat const & some : {image, Row<T>({nan, nan, nan})})
        {
            FramedImage framed(Unwritten(some.size(), map.outputType));
            EXPECT_TRUE(map.whole(some, framed.View()));
            EXPECT_TRUE(map.limited(some, framed.View(), 1, 2, true));
            EXPECT_TRUE(framed.IsFrameUntouched());
        }
    }
}

TEST(ColorMaps, NaNHasNoEffectOnTheRangeWithoutZeros)
{
    ExpectNaNHasNoEffectOnTheRange<float>();
    ExpectNaNHasNoEffectOnTheRange<double>();
}

} // namespace

} // namespace morvane::tests
