// The alternating filters against plain loops, on random images.
#include <morvane/filters/AlternatingSequentialFilters.h>

#include "support/GeodesicOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace morvane::filters
{

namespace
{

using tests::EqualImages;
using tests::FramedImage;
using tests::Random;

struct Operator
{
    char const * name;
    bool (*filter)(cv::Mat const & src, cv::Mat & dst, int maxSize, int shape);
    bool closesFirst;
};

constexpr Operator kClose{"close", ASF_Close, true};
constexpr Operator kOpen{"open", ASF_Open, false};
constexpr std::array kOperators{kClose, kOpen};

/// The least or the greatest element under a structuring element; outside the image lies the opposite end of the type.
cv::Mat Extremes(cv::Mat const & image, cv::Mat const & element, bool greatest)
{
    cv::Mat result(image.size(), image.type());
    int const radius = element.rows / 2;
    cv::Rect const inside({}, image.size());
    for (int index = 0; index < image.rows * image.cols * image.channels(); ++index)
    {
        int const channel = index % image.channels();
        cv::Point const pixel(index / image.channels() % image.cols, index / image.channels() / image.cols);
        bool isOutside = false;
        std::vector<double> values;
        for (int y = 0; y < element.rows; ++y)
        {
            for (int x = 0; x < element.cols; ++x)
            {
                if (element.at<uchar>(y, x) == 0) continue;
                cv::Point const at = pixel + cv::Point(x - radius, y - radius);
                isOutside |= !inside.contains(at);
                if (inside.contains(at)) values.push_back(tests::ElementAt(image, at.y, at.x, channel));
            }
        }
        // Only infinities lie beyond the ends of the type.
        int const depth = image.depth();
        if (isOutside) values.push_back(greatest ? tests::LowestOf(depth) : tests::HighestOf(depth));
        auto const [least, most] = std::minmax_element(values.begin(), values.end());
        tests::SetElement(result, pixel.y, pixel.x, channel, greatest ? *most : *least);
    }
    return result;
}

cv::Mat OracleFilter(cv::Mat const & image, bool closesFirst, int maxSize, int shape)
{
    cv::Mat result = image.clone();
    for (int size = 3; size <= maxSize; size += 2)
    {
        cv::Mat const element = cv::getStructuringElement(shape, {size, size});
        for (bool const closes : {closesFirst, !closesFirst})
        {
            result = Extremes(Extremes(result, element, closes), element, !closes);
        }
    }
    return result;
}

cv::Mat Filtered(Operator const & op, cv::Mat const & image, int maxSize, int shape)
{
    cv::Mat dst;
    EXPECT_TRUE(op.filter(image, dst, maxSize, shape)) << op.name;
    return dst;
}

/// Filters an image, a view and an image in place.
void ExpectFiltered(Operator const & op, cv::Mat const & image, int maxSize, int shape)
{
    SCOPED_TRACE(tests::StepCase(image, shape) + ", " + op.name + ", up to " + std::to_string(maxSize));
    cv::Mat const expected = OracleFilter(image, op.closesFirst, maxSize, shape);
    EXPECT_TRUE(EqualImages(Filtered(op, image, maxSize, shape), expected));
    FramedImage src(image);
    FramedImage dst(image);
    ASSERT_TRUE(op.filter(src.View(), dst.View(), maxSize, shape));
    EXPECT_TRUE(EqualImages(dst.View(), expected)) << "in views";
    EXPECT_TRUE(dst.IsFrameUntouched());
    EXPECT_TRUE(EqualImages(src.View(), image));
    ASSERT_TRUE(op.filter(src.View(), src.View(), maxSize, shape));
    EXPECT_TRUE(EqualImages(src.View(), expected)) << "in place";
    EXPECT_TRUE(src.IsFrameUntouched());
}

TEST(AlternatingSequentialFiltersRandom, MatchPlainLoops)
{
    Random random(640);
    for (int const depth : tests::kDilatedDepths)
    {
        for (int round = 0; round < 36; ++round)
        {
            int const maxSize = 3 + random.Below(5);
            cv::Size const size(maxSize + random.Below(9), maxSize + random.Below(9));
            int const channels = round % 3 == 0 ? 1 + random.Below(4) : 1;
            cv::Mat const image = tests::FiniteImage(random, size, CV_MAKETYPE(depth, channels));
            ExpectFiltered(kOperators[static_cast<std::size_t>(round % 2)], image, maxSize, round / 2 % 3);
            if (HasFailure()) return;
        }
    }
}

TEST(AlternatingSequentialFiltersRandom, TakeInfinitiesAsBeyondWhatLiesOutside)
{
    Random random(641);
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (int const depth : {CV_32F, CV_64F})
    {
        for (int round = 0; round < 24; ++round)
        {
            cv::Mat image = tests::FiniteImage(random, {5 + random.Below(7), 5 + random.Below(7)}, depth);
            image.setTo(infinity, tests::RandomMask(random, image.size(), 0.5));
            image.setTo(-infinity, tests::RandomMask(random, image.size(), 0.3));
            ExpectFiltered(kOperators[static_cast<std::size_t>(round % 2)], image, 3 + random.Below(3), round / 2 % 3);
            if (HasFailure()) return;
        }
    }
}

TEST(AlternatingSequentialFiltersRandom, KeepANaNAmongItsNeighbours)
{
    // Up to five, two openings and two closings reach 4 + 8 pixels.
    constexpr int reach = 12;
    Random random(642);
    cv::Mat const image = tests::FiniteImage(random, {35, 9}, CV_32F);
    cv::Mat withNaN = image.clone();
    withNaN.at<float>(4, 2) = std::numeric_limits<float>::quiet_NaN();
    for (Operator const & op : kOperators)
    {
        for (int const shape : tests::kElementShapes)
        {
            cv::Range const far(2 + reach + 1, image.cols);
            cv::Mat const expected = Filtered(op, image, 5, shape).colRange(far);
            EXPECT_TRUE(EqualImages(Filtered(op, withNaN, 5, shape).colRange(far), expected));
        }
    }
}

TEST(AlternatingSequentialFiltersRandom, TakeFiveChannels)
{
    Random random(644);
    ExpectFiltered(kClose, tests::FiniteImage(random, {9, 8}, CV_8UC(5)), 5, cv::MORPH_RECT);
    ExpectFiltered(kOpen, tests::FiniteImage(random, {9, 8}, CV_32FC(5)), 5, cv::MORPH_CROSS);
}

TEST(AlternatingSequentialFiltersRandom, AreDual)
{
    Random random(643);
    for (int round = 0; round < 12; ++round)
    {
        cv::Mat const image = tests::FiniteImage(random, {7 + random.Below(20), 7 + random.Below(20)}, CV_8UC1);
        int const shape = round % 3;
        EXPECT_TRUE(EqualImages(Filtered(kOpen, ~image, 7, shape), ~Filtered(kClose, image, 7, shape)));
    }
}

} // namespace

} // namespace morvane::filters
