// The placements that come back from a registration: their defaults, and how they compare.
#include <morvane/algorithm/TemplateMatchingData.h>

#include "support/ImageLiterals.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <limits>
#include <queue>

namespace morvane::algorithm
{

namespace
{

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Field = double TemplateMatchingInfo::*;

constexpr std::array<Field, 9> kCompared{
    &TemplateMatchingInfo::score,        &TemplateMatchingInfo::angle,     &TemplateMatchingInfo::translationX,
    &TemplateMatchingInfo::translationY, &TemplateMatchingInfo::positionX, &TemplateMatchingInfo::positionY,
    &TemplateMatchingInfo::ratio,        &TemplateMatchingInfo::reserved1, &TemplateMatchingInfo::reserved2};
constexpr std::array<Field, 2> kIgnored{&TemplateMatchingInfo::peakX, &TemplateMatchingInfo::peakY};

TEST(TemplateMatchingInfo, StartsWithTheLowestNumbers)
{
    TemplateMatchingInfo const info;
    for (Field const field : kCompared)
    {
        EXPECT_EQ(info.*field, field == &TemplateMatchingInfo::ratio ? 1.0 : -1.7976931348623157e308);
    }
    for (Field const field : kIgnored)
    {
        EXPECT_EQ(info.*field, -1.7976931348623157e308);
    }
    EXPECT_TRUE(info.image.empty());
    EXPECT_EQ(Distance().value, 1.7976931348623157e308);
}

TEST(TemplateMatchingInfo, Defaults_AreEqualAndNeitherIsLess)
{
    TemplateMatchingInfo const a;
    TemplateMatchingInfo const b;
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
    EXPECT_FALSE(a < b);
    EXPECT_FALSE(b < a);
}

TEST(TemplateMatchingInfo, IsEqualByItsFirstNineNumbers)
{
    TemplateMatchingInfo const reference;
    for (Field const field : kCompared)
    {
        TemplateMatchingInfo other;
        other.*field = 1.0 + 1e-15;
        EXPECT_FALSE(reference == other);
        EXPECT_FALSE(other == reference);
        other.*field = kNaN;
        EXPECT_FALSE(other == TemplateMatchingInfo(other));
    }
    TemplateMatchingInfo other;
    for (Field const field : kIgnored)
    {
        other.*field = kNaN;
    }
    other.image = cv::Mat::ones(2, 2, CV_8UC1);
    EXPECT_TRUE(reference == other);
    // Exactly, but 0 has no sign.
    TemplateMatchingInfo positive;
    TemplateMatchingInfo negative;
    positive.angle = 0.0;
    negative.angle = -0.0;
    EXPECT_TRUE(positive == negative);
}

TEST(TemplateMatchingInfo, IsLessByItsScoreAlone)
{
    TemplateMatchingInfo low;
    TemplateMatchingInfo high;
    low.score = 1.0;
    high.score = 2.0;
    for (Field const field : kCompared)
    {
        if (field == &TemplateMatchingInfo::score) continue;
        low.*field = 100.0;
        high.*field = -100.0;
    }
    EXPECT_TRUE(low < high);
    EXPECT_FALSE(high < low);
    high.score = 1.0;
    EXPECT_FALSE(low < high);
    EXPECT_FALSE(high < low);
    high.score = kNaN;
    EXPECT_FALSE(low < high);
    EXPECT_FALSE(high < low);
}

TEST(TemplateMatchingInfo, TheHighestScoreIsOnTopOfAPriorityQueue)
{
    std::priority_queue<TemplateMatchingInfo> queue;
    for (double const score : {3.0, 9.0, -4.0})
    {
        TemplateMatchingInfo info;
        info.score = score;
        queue.push(info);
    }
    EXPECT_EQ(queue.top().score, 9.0);
}

TEST(TemplateMatchingInfo, CopiesShareTheImage)
{
    TemplateMatchingInfo info;
    info.peakX = 3.0;
    info.peakY = 4.0;
    info.angle = 5.0;
    info.image = tests::Draw<uchar>({"12", "34"});
    TemplateMatchingInfo const constructed = info;
    TemplateMatchingInfo assigned;
    assigned = info;
    for (TemplateMatchingInfo const * copy : {&constructed, static_cast<TemplateMatchingInfo const *>(&assigned)})
    {
        EXPECT_TRUE(*copy == info);
        EXPECT_EQ(copy->peakX, 3.0);
        EXPECT_EQ(copy->peakY, 4.0);
        EXPECT_EQ(copy->image.data, info.image.data);
    }
}

} // namespace

} // namespace morvane::algorithm
