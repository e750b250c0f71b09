// The number of threads must not be seen in the measures.
#include <morvane/connexity/GeodesicMeasures.h>

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/SkeletonOracle.h"
#include "support/ThreadCounts.h"

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

cv::Mat Measure(Call call, cv::Mat const & image, int threads)
{
    tests::ThreadCount const count(threads);
    cv::Mat out;
    EXPECT_TRUE(call(image, out));
    return out;
}

void ExpectSameOnAnyThreads(cv::Mat const & image)
{
    for (Call const call : kCalls)
    {
        cv::Mat const expected = Measure(call, image, 1);
        for (int const threads : tests::kThreadCounts)
        {
            ASSERT_TRUE(tests::EqualImages(Measure(call, image, threads), expected)) << threads << " threads";
        }
    }
}

TEST(GeodesicMeasuresThreads, GiveTheBytesOfOneThread)
{
    tests::Random random(2130);
    for (cv::Size const size : {cv::Size(1, 1), cv::Size(3, 2), cv::Size(41, 19), cv::Size(67, 37), cv::Size(150, 131)})
    {
        // Zones of few pixels, which lie among those of other threads, and shapes.
        ExpectSameOnAnyThreads(tests::RandomImage(random, size, CV_8UC1, {0.3, 0.0, 3}));
        ExpectSameOnAnyThreads(tests::RandomImage(random, size, CV_32FC3, {0.1, 0.1, 1}));
        ExpectSameOnAnyThreads(tests::RandomShape(random, size));
        if (HasFailure()) return;
    }
}

} // namespace

} // namespace morvane::connexity
