// The mean shift between two images.
#include <morvane/algorithm/MatchingScores.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/ScoreOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Random;
using tests::Row;
using utils::ComputeMeanShift;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// The shift of two images, 99 where none was found.
double ShiftOf(cv::Mat const & a, cv::Mat const & b, double offsetA = 0.0, double offsetB = 0.0)
{
    double shift = 77.0;
    bool const isFound = ComputeMeanShift(a, b, offsetA, offsetB, shift);
    if (!isFound)
    {
        EXPECT_EQ(shift, 0.0);
        return 99.0;
    }
    return shift;
}

TEST(ComputeMeanShift, IsTheMeanWhereNeitherIs0)
{
    // 4 - 1 and 6 - 2; three pairs have a 0.
    EXPECT_EQ(ShiftOf(Draw<float>({"4.5", "6.."}), Draw<float>({"11.", "2.."})), 3.5);
    EXPECT_EQ(ShiftOf(Draw<float>({"4.5", "6.."}), Draw<float>({"11.", "2.."}), 10.0, 2.0), 11.5);
    EXPECT_EQ(ShiftOf(Row<float>({-2, 1}), Row<float>({5, -0.0F})), -7.0);
}

TEST(ComputeMeanShift, AllButExactZerosCount)
{
    float const tiny = std::numeric_limits<float>::denorm_min();
    EXPECT_EQ(ShiftOf(Row<float>({tiny, 3}), Row<float>({2, 3})), (double{tiny} - 2.0) / 2.0);
    EXPECT_TRUE(std::isnan(ShiftOf(Row<float>({kNaN, 3}), Row<float>({2, 3}))));
    EXPECT_TRUE(std::isnan(ShiftOf(Row<float>({1, 3}), Row<float>({kNaN, 3}))));
    // NaN beside a 0 does not.
    EXPECT_EQ(ShiftOf(Row<float>({kNaN, 3}), Row<float>({0, 2})), 1.0);
    // The offsets make no zeros.
    EXPECT_EQ(ShiftOf(Row<float>({1}), Row<float>({2}), -1.0, -2.0), 0.0);
}

TEST(ComputeMeanShift, SumsDownTheColumnsInDoublePrecision)
{
    float const large = std::ldexp(1.0F, 53);
    cv::Mat const tiny = cv::Mat::ones(2, 2, CV_32FC1) * 1e-30F;
    // Down the columns 1 and 1 come first and stay; along the rows each would be lost beside 2^53.
    EXPECT_EQ(ShiftOf((cv::Mat_<float>(2, 2) << 1, large, 1, -large), tiny), 0.5);
    // And the other way round.
    EXPECT_EQ(ShiftOf((cv::Mat_<float>(2, 2) << 1, 1, large, -large), tiny), 0.0);
    // Single precision would lose the 1.
    EXPECT_EQ(ShiftOf(Row<float>({16777216.0F, 1.0F}), Row<float>({1e-30F, 1e-30F})), 8388608.5);
}

TEST(ComputeMeanShift, OfOtherShapes_PairsInRasterOrder)
{
    EXPECT_EQ(ShiftOf(Draw<float>({"123", "456"}), Draw<float>({"12", "34", "56"})), 0.0);
    EXPECT_EQ(ShiftOf(Draw<float>({"123", "456"}), Draw<float>({"123456"})), 0.0);
    EXPECT_EQ(ShiftOf(Draw<float>({"123", "457"}), Draw<float>({"1", "2", "3", "4", "5", "1"})), 1.0);
}

TEST(ComputeMeanShift, WithoutAPair_IsFalseAnd0)
{
    EXPECT_EQ(ShiftOf(Draw<float>({"1.", ".1"}), Draw<float>({".1", "1."})), 99.0);
    for (cv::Mat const & a : {cv::Mat(), cv::Mat(0, 5, CV_32FC1), cv::Mat(5, 0, CV_32FC1), cv::Mat(0, 0, CV_32FC1)})
    {
        for (cv::Mat const & b : {cv::Mat(), cv::Mat(0, 5, CV_32FC1), cv::Mat(7, 0, CV_32FC1)})
        {
            EXPECT_EQ(ShiftOf(a, b), 99.0);
        }
    }
}

TEST(ComputeMeanShiftRefusal, GivesFalseAnd0)
{
    cv::Mat const image = Draw<float>({"123", "456"});
    for (cv::Mat const & other :
         {Draw<float>({"12", "34"}), Draw<float>({"1234567"}), cv::Mat(), Draw<uchar>({"123", "456"}),
          Draw<short>({"123", "456"}), cv::Mat(2, 3, CV_8UC(5)),
          cv::Mat(std::vector<int>{2, 3, 1}, CV_32FC1, cv::Scalar(1))})
    {
        EXPECT_EQ(ShiftOf(image, other), 99.0);
        EXPECT_EQ(ShiftOf(other, image), 99.0);
    }
}

TEST(ComputeMeanShift, OfWiderElements_ReadsTheFirstWordsOfEachRow)
{
    // 2.0 and 4.0 as doubles are the words 0 and those of 2.0F and 2.25F; the third column of words is not read.
    cv::Mat const wide = Row<double>({2.0, 4.0, 4.0});
    ASSERT_EQ(std::bit_cast<std::uint64_t>(2.0), std::uint64_t{std::bit_cast<std::uint32_t>(2.0F)} << 32U);
    EXPECT_EQ(ShiftOf(wide, Row<float>({9, 1, 9})), 1.0);
}

TEST(ComputeMeanShiftRandom, HasTheBitsOfThePlainForm)
{
    Random random(81005);
    int found = 0;
    for (int repeat = 0; repeat < 200; ++repeat)
    {
        cv::Size const size = tests::RandomSize(random);
        SCOPED_TRACE(tests::Case(CV_32F, size, repeat));
        double const specialShare = repeat % 4 == 0 ? 0.1 : 0.0;
        cv::Mat a = tests::RandomImage(random, size, CV_32FC1, {0.3, specialShare, 60});
        cv::Mat b = tests::RandomImage(random, size, CV_32FC1, {0.3, specialShare, 60});
        // Of many digits, so that the order of the sum shows.
        a *= 0.1 * random.Unit();
        b *= 1e5 * random.Unit();
        double const offsetA = random.Unit() * 100.0 - 50.0;
        double const offsetB = random.Unit() * 1e6;
        tests::OracleShift const expected = tests::OracleMeanShift(a, b, offsetA, offsetB);
        found += expected.isFound && size.width > 1 && size.height > 1 ? 1 : 0;
        tests::FramedImage framedA(a);
        tests::FramedImage framedB(b);
        cv::Mat const row = size.empty() ? b : b.reshape(1, 1);
        for (cv::Mat const & other : {b, framedB.View(), row})
        {
            double shift = 77.0;
            ASSERT_EQ(ComputeMeanShift(framedA.View(), other, offsetA, offsetB, shift), expected.isFound);
            ASSERT_EQ(std::isnan(shift), std::isnan(expected.shift));
            if (!std::isnan(shift))
            {
                ASSERT_EQ(shift, expected.shift);
            }
        }
    }
    EXPECT_GT(found, 100);
}

} // namespace

} // namespace morvane::algorithm
