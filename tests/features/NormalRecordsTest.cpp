// The records of a classification by direction: initial values, copies, new starts.
#include <morvane/features/Normals.h>

#include "support/ImageLiterals.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cstdint>
#include <type_traits>

namespace morvane::features
{

namespace
{

using tests::Draw;
using tests::EqualImages;
using tests::ExpectDrawn;

/// A record in which nothing has its initial value.
StatisticsOutput FullRecord()
{
    StatisticsOutput record;
    record.labels = Draw<int>({"12", "34"});
    record.classes = Draw<int>({"56", "78"});
    record.values = Draw<float>({"91", "23"});
    record.index = 1;
    record.mean = 2.0F;
    record.deviation = 3.0F;
    record.least = 4.0F;
    record.greatest = 5.0F;
    record.median = 6.0F;
    record.zones = 7;
    record.accepted = 8;
    record.rejected = 9;
    record.pixels = 10;
    record.sum = 11;
    record.squares = 12;
    record.products = 13;
    record.state = 14;
    record.total = 15;
    return record;
}

void ExpectEqualScalars(StatisticsOutput const & actual, StatisticsOutput const & expected)
{
    EXPECT_EQ(actual.index, expected.index);
    EXPECT_EQ(actual.mean, expected.mean);
    EXPECT_EQ(actual.deviation, expected.deviation);
    EXPECT_EQ(actual.least, expected.least);
    EXPECT_EQ(actual.greatest, expected.greatest);
    EXPECT_EQ(actual.median, expected.median);
    EXPECT_EQ(actual.zones, expected.zones);
    EXPECT_EQ(actual.accepted, expected.accepted);
    EXPECT_EQ(actual.rejected, expected.rejected);
    EXPECT_EQ(actual.pixels, expected.pixels);
    EXPECT_EQ(actual.sum, expected.sum);
    EXPECT_EQ(actual.squares, expected.squares);
    EXPECT_EQ(actual.products, expected.products);
    EXPECT_EQ(actual.state, expected.state);
    EXPECT_EQ(actual.total, expected.total);
}

/// Equal images that share no pixels.
void ExpectDeepCopy(StatisticsOutput const & actual, StatisticsOutput const & expected)
{
    ExpectEqualScalars(actual, expected);
    EXPECT_TRUE(EqualImages(actual.labels, expected.labels));
    EXPECT_TRUE(EqualImages(actual.classes, expected.classes));
    EXPECT_TRUE(EqualImages(actual.values, expected.values));
    EXPECT_NE(actual.labels.data, expected.labels.data);
    EXPECT_NE(actual.classes.data, expected.classes.data);
    EXPECT_NE(actual.values.data, expected.values.data);
}

/// Expects the figures of a new start; the last measure is left.
void ExpectStarted(StatisticsOutput const & record, float median)
{
    StatisticsOutput expected;
    expected.index = 0;
    expected.mean = 0.0F;
    expected.deviation = 0.0F;
    expected.least = 0.0F;
    expected.greatest = 0.0F;
    expected.median = median;
    ExpectEqualScalars(record, expected);
}

TEST(StatisticsOutput, IsEmptyAtFirst)
{
    StatisticsOutput const record;
    EXPECT_TRUE(EqualImages(record.labels, cv::Mat::zeros(0, 0, CV_32S)));
    EXPECT_TRUE(EqualImages(record.classes, cv::Mat::zeros(0, 0, CV_32S)));
    EXPECT_TRUE(EqualImages(record.values, cv::Mat::zeros(0, 0, CV_32F)));
    EXPECT_EQ(record.index, -1);
    for (float const measure : {record.mean, record.deviation, record.least, record.greatest, record.median})
    {
        EXPECT_EQ(measure, -1.0F);
    }
    for (std::uint64_t const figure :
         {std::uint64_t{record.zones}, std::uint64_t{record.accepted}, std::uint64_t{record.rejected}, record.pixels,
          record.sum, record.squares, record.products, std::uint64_t{record.state}, record.total})
    {
        EXPECT_EQ(figure, 0U);
    }
}

TEST(StatisticsOutput, CopiesItsImages)
{
    StatisticsOutput const record = FullRecord();
    StatisticsOutput const copy(record);
    ExpectDeepCopy(copy, record);
    StatisticsOutput assigned;
    assigned = record;
    ExpectDeepCopy(assigned, record);
    assigned.labels.setTo(0);
    ExpectDrawn(record.labels, {"12", "34"});
    StatisticsOutput const empty;
    assigned = empty;
    ExpectEqualScalars(assigned, empty);
    EXPECT_TRUE(assigned.labels.empty());
    EXPECT_EQ(assigned.values.type(), CV_32FC1);
}

TEST(StatisticsOutput, AssignedToItself_StaysAsItIs)
{
    StatisticsOutput record = FullRecord();
    StatisticsOutput const & same = record;
    record = same;
    ExpectEqualScalars(record, FullRecord());
    ExpectDrawn(record.labels, {"12", "34"});
    ExpectDrawn(record.values, {"91", "23"});
}

TEST(StatisticsOutput, Init_MakesImagesOfZerosAtFirst)
{
    StatisticsOutput record = FullRecord();
    record.index = -1;
    uchar const * const before = record.labels.data;
    cv::Mat const kept = record.labels;
    record.Init({4, 3});
    EXPECT_TRUE(EqualImages(record.labels, cv::Mat::zeros(3, 4, CV_32S)));
    EXPECT_TRUE(EqualImages(record.classes, cv::Mat::zeros(3, 4, CV_32S)));
    EXPECT_TRUE(EqualImages(record.values, cv::Mat::zeros(3, 4, CV_32F)));
    EXPECT_NE(record.labels.data, before);
    ExpectDrawn(kept, {"12", "34"});
    ExpectStarted(record, 6.0F);
}

TEST(StatisticsOutput, Init_ClearsTheImagesThatAreThere)
{
    StatisticsOutput record = FullRecord();
    uchar const * const before = record.values.data;
    record.Init({4, 3});
    EXPECT_TRUE(EqualImages(record.labels, cv::Mat::zeros(2, 2, CV_32S)));
    EXPECT_TRUE(EqualImages(record.classes, cv::Mat::zeros(2, 2, CV_32S)));
    EXPECT_TRUE(EqualImages(record.values, cv::Mat(2, 2, CV_32F, cv::Scalar(-1.0))));
    EXPECT_EQ(record.values.data, before);
    ExpectStarted(record, 6.0F);
}

TEST(DirectionClassInfos, IsEmptyAtFirst)
{
    DirectionClassInfos const infos;
    EXPECT_EQ(infos.direction, -1);
    EXPECT_EQ(infos.first, 0U);
    EXPECT_EQ(infos.last, 0U);
    EXPECT_EQ(infos.pixels, 0U);
    EXPECT_EQ(infos.parent, -1);
    ExpectEqualScalars(infos.statistics, StatisticsOutput());
}

TEST(DirectionClassInfos, CopiesItsRecord)
{
    DirectionClassInfos infos;
    infos.direction = 1;
    infos.first = 2;
    infos.last = 3;
    infos.pixels = 4;
    infos.parent = 5;
    infos.statistics = FullRecord();
    DirectionClassInfos const copy(infos);
    DirectionClassInfos assigned;
    assigned = infos;
    for (DirectionClassInfos const * const other : {&copy, static_cast<DirectionClassInfos const *>(&assigned)})
    {
        EXPECT_EQ(other->direction, 1);
        EXPECT_EQ(other->first, 2U);
        EXPECT_EQ(other->last, 3U);
        EXPECT_EQ(other->pixels, 4U);
        EXPECT_EQ(other->parent, 5);
        ExpectDeepCopy(other->statistics, infos.statistics);
    }
}

static_assert(std::is_same_v<decltype(StatisticsOutput::pixels), std::uint64_t>);
static_assert(std::is_same_v<decltype(StatisticsOutput::state), std::uint32_t>);
static_assert(std::is_same_v<decltype(DirectionClassInfos::first), std::uint64_t>);

} // namespace

} // namespace morvane::features
