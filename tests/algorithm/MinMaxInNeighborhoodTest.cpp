// The range of values around a pixel.
#include <morvane/algorithm/ImageUtilities.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <limits>
#include <ostream>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using connexity::Connexity;
using connexity::eConnexityType;
using tests::Draw;
using tests::Random;

constexpr double kBefore = -77.5;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Interval
{
    double minimum = kBefore;
    double maximum = kBefore;

    /// NaN equals NaN.
    friend bool operator==(Interval const & one, Interval const & other)
    {
        auto const same = [](double a, double b) {
            return a == b || (std::isnan(a) && std::isnan(b));
        };
        return same(one.minimum, other.minimum) && same(one.maximum, other.maximum);
    }
};

void PrintTo(Interval const & interval, std::ostream * out)
{
    *out << interval.minimum << " to " << interval.maximum;
}

Interval Around(cv::Mat const & image, cv::Point point, Connexity const & connexity, cv::Mat const & mask = cv::Mat())
{
    Interval interval;
    EXPECT_TRUE(MinMaxInNeighborhood(image, point, connexity, interval.minimum, interval.maximum, mask));
    return interval;
}

void ExpectRefused(cv::Mat const & image, cv::Point point, cv::Mat const & mask = cv::Mat())
{
    Interval interval;
    EXPECT_FALSE(MinMaxInNeighborhood(image, point, connexity::eConnexity8, interval.minimum, interval.maximum, mask));
    EXPECT_EQ(interval, Interval());
}

TEST(MinMaxInNeighborhood, LooksAtThePixelAndItsNeighbours)
{
    cv::Mat const image = Draw<float>(
        {"z.z.z", //
         "1738a", //
         "z5469", //
         "z29cz", //
         "z.z.z"});
    EXPECT_EQ(Around(image, {2, 2}, connexity::eConnexity4), (Interval{3, 9}));
    EXPECT_EQ(Around(image, {2, 2}, connexity::eConnexity8), (Interval{2, 12}));
    EXPECT_EQ(Around(image, {2, 2}, connexity::eConnexity12), (Interval{2, 35}));
    EXPECT_EQ(Around(image, {2, 2}, connexity::eConnexity20), (Interval{0, 35}));
    EXPECT_EQ(Around(image, {3, 2}, connexity::eConnexity4), (Interval{4, 12}));
    // The pixel itself is the lowest, and the highest.
    EXPECT_EQ(Around(image, {1, 3}, connexity::eConnexity8AxesFirst), (Interval{0, 35}));
    EXPECT_EQ(Around(Draw<float>({"999", "919", "999"}), {1, 1}, connexity::eConnexity8), (Interval{1, 9}));
    EXPECT_EQ(Around(Draw<float>({"222", "272", "222"}), {1, 1}, connexity::eConnexity8), (Interval{2, 7}));
}

TEST(MinMaxInNeighborhood, AtACorner_PassesOverWhatIsOutside)
{
    cv::Mat const image = Draw<float>({"53.1", "47.2", "...z", "6..8"});
    EXPECT_EQ(Around(image, {0, 0}, connexity::eConnexity8), (Interval{3, 7}));
    EXPECT_EQ(Around(image, {0, 0}, connexity::eConnexity4), (Interval{3, 5}));
    EXPECT_EQ(Around(image, {3, 3}, connexity::eConnexity8), (Interval{0, 35}));
    EXPECT_EQ(Around(image, {0, 3}, connexity::eConnexity8), (Interval{0, 6}));
    EXPECT_EQ(Around(image, {3, 0}, connexity::eConnexity4), (Interval{0, 2}));
    for (int shape = 0; shape < tests::kConnexityCount; ++shape)
    {
        EXPECT_EQ(Around(Draw<float>({"7"}), {0, 0}, tests::Shape(shape)), (Interval{7, 7}));
    }
}

TEST(MinMaxInNeighborhood, WithAWrappedShape_GoesOneImageWidthAway)
{
    cv::Mat const image = Draw<float>({"5554z", "5556.", "55578"});
    EXPECT_EQ(Around(image, {0, 1}, connexity::eConnexity4), (Interval{5, 5}));
    EXPECT_EQ(Around(image, {0, 1}, connexity::eConnexity4Wrapped), (Interval{0, 5}));
    EXPECT_EQ(Around(image, {0, 1}, connexity::eConnexity8Wrapped), (Interval{0, 35}));
    EXPECT_EQ(Around(image, {0, 0}, connexity::eConnexity8Wrapped), (Interval{0, 35}));
    EXPECT_EQ(Around(image, {0, 2}, connexity::eConnexity8Wrapped), (Interval{0, 8}));
    // Two to the left of the first column is the last but one.
    EXPECT_EQ(Around(Draw<float>({"5559.55"}), {1, 0}, connexity::eConnexity12InterleavedWrapped), (Interval{5, 9}));
    EXPECT_EQ(Around(Draw<float>({"555595"}), {0, 0}, connexity::eConnexity12InterleavedWrapped), (Interval{5, 9}));
    EXPECT_EQ(Around(Draw<float>({"595555"}), {5, 0}, connexity::eConnexity12InterleavedWrapped), (Interval{5, 9}));
}

TEST(MinMaxInNeighborhood, WithAWrappedShape_PassesOverWhatIsOutsideAfterThat)
{
    // Of one column, two to the side is outside: all others are seen.
    cv::Mat const column = Draw<float>({"3", "5", "4"});
    EXPECT_EQ(Around(column, {0, 1}, connexity::eConnexity12InterleavedWrapped), (Interval{3, 5}));
    Connexity aside(connexity::eConnexity4Wrapped);
    aside[0] = {-2, 1};
    aside[1] = {2, -1};
    aside[2] = {-1, 1};
    aside[3] = {0, 0};
    EXPECT_EQ(Around(column, {0, 1}, aside), (Interval{4, 5}));
}

TEST(MinMaxInNeighborhood, UnderAMask_SeesThePixelItselfInAnyCase)
{
    cv::Mat const image = Draw<float>({"123", "4z6", "789"});
    EXPECT_EQ(Around(image, {1, 1}, connexity::eConnexity8, Draw<uchar>({"...", "...", "..."})), (Interval{35, 35}));
    EXPECT_EQ(Around(image, {1, 1}, connexity::eConnexity8, Draw<uchar>({"..1", "...", "z.."})), (Interval{3, 35}));
    EXPECT_EQ(Around(image, {1, 1}, connexity::eConnexity4, Draw<uchar>({"111", "1.2", "1.1"})), (Interval{2, 35}));
    cv::Mat const full(3, 3, CV_8UC1, cv::Scalar(255));
    EXPECT_EQ(Around(image, {1, 1}, connexity::eConnexity8, full), (Interval{1, 35}));
    // At the pixel that is reached through the wrap.
    EXPECT_EQ(
        Around(image, {0, 1}, connexity::eConnexity4Wrapped, Draw<uchar>({"...", "..1", "..."})), (Interval{4, 6}));
    EXPECT_EQ(
        Around(image, {0, 1}, connexity::eConnexity4Wrapped, Draw<uchar>({"111", "11.", "111"})), (Interval{1, 35}));
}

TEST(MinMaxInNeighborhood, WithANumberOutsideTheTableOfShapes_SeesThePixelAlone)
{
    for (int const shape : tests::kStrangeConnexities)
    {
        EXPECT_EQ(Around(Draw<float>({"123", "456"}), {1, 1}, tests::Shape(shape)), (Interval{5, 5}));
    }
}

TEST(MinMaxInNeighborhood, TakesAShapeOfTheCaller)
{
    cv::Mat const image = Draw<float>({"12345", "6789a", "bcdef"});
    Connexity knight(connexity::eConnexity4);
    knight[0] = {2, 1};
    knight[1] = {-2, -1};
    knight[2] = {1, 2};
    knight[3] = {-1, 2};
    EXPECT_EQ(Around(image, {2, 1}, knight), (Interval{1, 15}));
    EXPECT_EQ(Around(image, {1, 0}, knight), (Interval{2, 13}));
}

TEST(MinMaxInNeighborhood, OfOffsetsFarBeyondTheImage_SeesNothingThere)
{
    cv::Mat const image = Draw<float>({"123", "456"});
    for (eConnexityType const shape : {connexity::eConnexity4, connexity::eConnexity4Wrapped})
    {
        Connexity far(shape);
        far[0] = {std::numeric_limits<int>::max(), 0};
        far[1] = {std::numeric_limits<int>::min(), 0};
        far[2] = {0, std::numeric_limits<int>::max()};
        far[3] = {0, std::numeric_limits<int>::min()};
        EXPECT_EQ(Around(image, {1, 1}, far), (Interval{5, 5}));
    }
}

TEST(MinMaxInNeighborhood, HoldsNaNForNeitherLowerNorHigher)
{
    cv::Mat image = Draw<float>({"123", "456", "789"});
    image.at<float>(0, 0) = static_cast<float>(kNaN);
    image.at<float>(2, 2) = -static_cast<float>(kNaN);
    EXPECT_EQ(Around(image, {1, 1}, connexity::eConnexity8), (Interval{2, 8}));
    EXPECT_EQ(Around(image, {0, 0}, connexity::eConnexity8), (Interval{kNaN, kNaN}));
    image.at<float>(0, 0) = std::numeric_limits<float>::infinity();
    image.at<float>(2, 2) = -std::numeric_limits<float>::infinity();
    EXPECT_EQ(Around(image, {1, 1}, connexity::eConnexity8), (Interval{-HUGE_VAL, HUGE_VAL}));
}

TEST(MinMaxInNeighborhoodRefusal, TypesPointsAndMasks)
{
    for (int depth = CV_8U; depth <= CV_16F; ++depth)
    {
        if (depth == CV_32F) continue;
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat image(3, 3, depth);
        tests::FillBytes(image, 0);
        ExpectRefused(image, {1, 1});
    }
    for (int const channels : {2, 3, 4, 5})
    {
        ExpectRefused(Draw({"111", "111", "111"}, CV_32FC(channels)), {1, 1});
    }
    cv::Mat const image = Draw<float>({"1234", "5678", "9abc"});
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    for (cv::Point const point :
         {cv::Point(-1, 1), cv::Point(4, 1), cv::Point(1, -1), cv::Point(1, 3), cv::Point(most, 0), cv::Point(0, most),
          cv::Point(least, 0), cv::Point(0, least)})
    {
        SCOPED_TRACE(point);
        ExpectRefused(image, point);
    }
    for (cv::Mat const & mask :
         {Draw<uchar>({"111", "111", "111", "111"}), Draw<uchar>({"1111", "1111"}), Draw<uchar>({"111", "111", "111"})})
    {
        ExpectRefused(image, {1, 1}, mask);
    }
    ExpectRefused(cv::Mat(), {0, 0});
    ExpectRefused(cv::Mat(0, 4, CV_32FC1), {0, 0});
    ExpectRefused(cv::Mat(std::vector<int>{3, 3, 3}, CV_32FC1, cv::Scalar(1)), {0, 0});
}

Interval OracleRange(cv::Mat const & image, cv::Point point, int shape, cv::Mat const & mask)
{
    float lowest = image.at<float>(point);
    float highest = lowest;
    for (cv::Point const & offset : tests::OracleOffsets(shape))
    {
        cv::Point neighbour = point + offset;
        if (tests::OracleWraps(shape) && neighbour.x < 0)
        {
            neighbour.x += image.cols;
        }
        else if (tests::OracleWraps(shape) && neighbour.x >= image.cols)
        {
            neighbour.x -= image.cols;
        }
        if (!cv::Rect({}, image.size()).contains(neighbour)) continue;
        if (!mask.empty() && mask.at<uchar>(neighbour) == 0) continue;
        float const value = image.at<float>(neighbour);
        if (value < lowest) lowest = value;
        if (value > highest) highest = value;
    }
    return {lowest, highest};
}

TEST(MinMaxInNeighborhoodRandom, AgreesWithThePlainForm)
{
    Random random(8461);
    for (int shape = 0; shape < tests::kConnexityCount; ++shape)
    {
        for (int repeat = 0; repeat < 120; ++repeat)
        {
            int const largest = repeat % 2 == 0 ? 5 : 20;
            cv::Size const size(1 + random.Below(largest), 1 + random.Below(largest));
            cv::Mat const image = tests::RandomImage(random, size, CV_32FC1, {0.1, 0.2, 50});
            cv::Mat const mask = random.Chance(0.4) ? cv::Mat() : cv::Mat(tests::RandomMask(random, size, 0.5));
            cv::Point const point(random.Below(size.width), random.Below(size.height));
            SCOPED_TRACE(tests::Case(CV_32FC1, size, shape));
            tests::FramedImage framed(image);
            tests::FramedImage framedMask(mask.empty() ? cv::Mat(0, 0, CV_8UC1) : mask);
            ASSERT_EQ(
                Around(framed.View(), point, tests::Shape(shape), framedMask.View()),
                OracleRange(image, point, shape, mask));
        }
    }
}

} // namespace

} // namespace morvane::algorithm
