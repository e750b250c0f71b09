// The interpolated floor of images small enough to see.
#include <morvane/filters/Statistics.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <utility>

namespace morvane::filters
{

namespace
{

using tests::Draw;
using tests::ExpectDrawn;
using tests::ExpectEqualImages;

/// The depths that can be interpolated.
constexpr std::array kFloorDepths{CV_8U, CV_16U, CV_16S, CV_32F, CV_64F};

cv::Mat LocalMin(cv::Mat const & src, unsigned cellSize)
{
    cv::Mat dst;
    EXPECT_TRUE(InterpolatedRobustLocalMinNoZero(src, cellSize, dst));
    return dst;
}

cv::Mat Enlarged(cv::Mat const & coarse, cv::Size size)
{
    cv::Mat dst;
    cv::resize(coarse, dst, size, 0.0, 0.0, cv::INTER_LINEAR);
    return dst;
}

/// Expects the floor of a cell of 40 pixels, of which the lowest six and the others are given.
template <class T>
void ExpectFloorOfCell(std::array<T, 6> const & lowest, T other, T floor)
{
    // One cell of four, of 10 by 4 pixels; the others are empty. The highest of the six comes first.
    cv::Mat src = cv::Mat::zeros(8, 20, cv::DataType<T>::depth);
    for (int number = 0; number < 40; ++number)
    {
        std::size_t const rank = 29 - std::min<std::size_t>(static_cast<std::size_t>(number), 29);
        src.at<T>(number / 10, number % 10) = rank < 6 && number < 30 ? lowest.at(rank) : other;
    }
    cv::Mat coarse = cv::Mat::zeros(2, 2, src.type());
    coarse.at<T>(0, 0) = floor;
    ExpectEqualImages(LocalMin(src, 20), Enlarged(coarse, src.size()));
}

TEST(RobustLocalMin, IsTheLowestValueOfSmallCells_InterpolatedInBetween)
{
    // The floors are 0 and 16 above 16 and 32.
    for (int const depth : kFloorDepths)
    {
        cv::Mat const src = Draw({"..gz", "..ZZ", "g.xZ", "zzzw"}, depth);
        for (unsigned const cellSize : {2U, 3U, 4U, 5U, 1000U, std::numeric_limits<unsigned>::max()})
        {
            SCOPED_TRACE(cellSize);
            ExpectDrawn(LocalMin(src, cellSize), {".4cg", "48gk", "cgos", "gksw"});
        }
    }
}

TEST(RobustLocalMin, OfEmptyImagesIsEmpty)
{
    for (int const depth : kFloorDepths)
    {
        for (unsigned const cellSize : {1U, 2U, 3U, 100U})
        {
            ExpectDrawn(LocalMin(Draw({".....", ".....", "....."}, depth), cellSize), {".....", ".....", "....."});
        }
    }
}

TEST(RobustLocalMin, LeavesOutNegativeValues)
{
    for (int const depth : {CV_16S, CV_32F, CV_64F})
    {
        cv::Mat const src = Draw({"8888", "8888"}, depth) - Draw({"99.9", "999."}, depth);
        ExpectDrawn(LocalMin(src, 2), {".268", ".268"});
    }
}

TEST(RobustLocalMin, GridHasAColumnForEachWholeCellAndRowsInProportion)
{
    using Grid = cv::Size;
    struct GridCase
    {
        cv::Size size;
        unsigned cellSize;
        Grid grid;
    };
    // Rows are the columns times the ratio of the sides, rounded down, two at least.
    for (GridCase const & test :
         {GridCase{{30, 60}, 10, {3, 6}}, GridCase{{60, 30}, 10, {6, 3}}, GridCase{{60, 8}, 10, {6, 2}},
          GridCase{{60, 29}, 10, {6, 2}}, GridCase{{35, 35}, 10, {3, 3}}, GridCase{{35, 39}, 10, {3, 3}},
          GridCase{{35, 47}, 10, {3, 4}}, GridCase{{39, 20}, 20, {2, 2}}, GridCase{{39, 60}, 20, {2, 3}},
          GridCase{{20, 50}, 1000, {2, 5}}, GridCase{{12, 12}, 1, {12, 12}}, GridCase{{7, 5}, 2, {3, 2}}})
    {
        // Each cell holds a value of its own, and the remainder a lower one.
        cv::Mat src(test.size, CV_16UC1, cv::Scalar(1));
        cv::Mat coarse(test.grid, CV_16UC1);
        int const cellWidth = test.size.width / test.grid.width;
        int const cellHeight = test.size.height / test.grid.height;
        for (int number = 0; number < test.grid.area(); ++number)
        {
            cv::Point const cell(number % test.grid.width, number / test.grid.width);
            coarse.at<ushort>(cell) = static_cast<ushort>(100 + number * 37 % 50);
            src(cv::Rect(cell.x * cellWidth, cell.y * cellHeight, cellWidth, cellHeight)) = coarse.at<ushort>(cell);
        }
        // Cells of at most 13 pixels take their lowest value, others a mean of equal ones that does not wrap.
        EXPECT_TRUE(tests::EqualImages(LocalMin(src, test.cellSize), Enlarged(coarse, test.size))) << test.size;
    }
}

TEST(RobustLocalMin, RowsAreRoundedDownAfterAProductOfDoubles)
{
    // 11 * (15 / 11.0) is just less than 15: of 14 rows of cells none holds the last row.
    cv::Mat src(15, 11, CV_32FC1, cv::Scalar(5));
    src.row(14) = 1;
    ExpectEqualImages(LocalMin(src, 1), cv::Mat(src.size(), CV_32FC1, cv::Scalar(5)));
    // 11 * (14 / 11.0) is 14.
    cv::Mat const whole = src.rowRange(1, 15);
    ExpectEqualImages(LocalMin(whole, 1), whole);
}

TEST(RobustLocalMin, RemainderBelongsToNoCell)
{
    // Cells of 3 by 2 pixels.
    for (int const depth : kFloorDepths)
    {
        cv::Mat const src = Draw({"5555551", "5555551", "5555551", "5555551", "1111111"}, depth);
        ExpectEqualImages(LocalMin(src, 7), Enlarged(Draw({"55", "55"}, depth), src.size()));
    }
}

TEST(RobustLocalMin, OneRowOrColumnHoldsNoCell)
{
    for (int const depth : kFloorDepths)
    {
        for (unsigned const cellSize : {1U, 2U, 100U})
        {
            ExpectDrawn(LocalMin(Draw({"12345"}, depth), cellSize), {"....."});
            ExpectDrawn(LocalMin(Draw({"1", "2", "3", "4"}, depth), cellSize), {".", ".", ".", "."});
            ExpectDrawn(LocalMin(Draw({"7"}, depth), cellSize), {"."});
        }
    }
}

TEST(RobustLocalMin, MeanIsThatOfTheLowest15PercentAndOfOneAtLeast)
{
    // One cell of n by 1 pixels: 13 values give one, 14 two, 20 three.
    using Floor = std::pair<int, double>;
    for (auto const & [count, floor] :
         {Floor{1, 10}, Floor{6, 10}, Floor{7, 10}, Floor{13, 10}, Floor{14, 10.5}, Floor{19, 10.5}, Floor{20, 11},
          Floor{26, 11}, Floor{27, 11.5}, Floor{40, 12.5}, Floor{100, 17}})
    {
        cv::Mat src = cv::Mat::zeros(2, 2 * count, CV_64FC1);
        for (int x = 0; x < count; ++x)
        {
            src.at<double>(0, x) = 9 + count - x;
        }
        EXPECT_EQ(LocalMin(src, 1000).at<double>(0, 0), floor) << count;
    }
}

TEST(RobustLocalMin, SumsOfIntegersWrapAroundInTheirType)
{
    // 1200 modulo 256 is 176; a sixth of that is 29.3.
    ExpectFloorOfCell<uchar>({200, 200, 200, 200, 200, 200}, 250, 29);
    // 6 * 60000 modulo 65536 is 32320; a sixth of that is 5386.7.
    ExpectFloorOfCell<ushort>({60000, 60000, 60000, 60000, 60000, 60000}, 60001, 5386);
    // 6 * 20000 is -11072 in 16 bits with a sign; a sixth of that is -1845.3, cut towards zero.
    ExpectFloorOfCell<short>({20000, 20000, 20000, 20000, 20000, 20000}, 20001, -1845);
    // No wrap: 6 * 10 + 15, a sixth of that is 12.5.
    ExpectFloorOfCell<uchar>({10, 11, 12, 13, 14, 15}, 16, 12);
    ExpectFloorOfCell<short>({10, 11, 12, 13, 14, 15}, 16, 12);
}

TEST(RobustLocalMin, FloatsAreSummedOneByOneFromTheLowest)
{
    // 5 + 2^24 has no float: the tie goes down to 2^24 + 4. From the highest, each 1 would be lost.
    ExpectFloorOfCell<float>({1, 1, 1, 1, 1, 16777216}, 2e7F, static_cast<float>(16777220.0 / 6.0));
    ExpectFloorOfCell<double>({1, 1, 1, 1, 1, 16777216}, 2e7, 16777221.0 / 6.0);
    // The division is one of doubles, rounded once.
    float const sum = 0.1F + 0.1F + 0.1F + 0.1F + 0.1F + 0.2F;
    ExpectFloorOfCell<float>(
        {0.1F, 0.1F, 0.1F, 0.1F, 0.1F, 0.2F}, 1.0F, static_cast<float>(static_cast<double>(sum) / 6.0));
}

TEST(RobustLocalMin, FloorThatIsTheGreatestNumberOfTheTypeStays0)
{
    ExpectEqualImages(LocalMin(Draw<uchar>({"11", "11"}) * 255, 1), cv::Mat::zeros(2, 2, CV_8UC1));
    tests::ForEachElement([]<class T> {
        T const most = std::numeric_limits<T>::max();
        cv::Mat src(2, 2, cv::DataType<T>::depth, cv::Scalar(7));
        src.at<T>(0, 1) = most;
        src.at<T>(1, 1) = T(0);
        cv::Mat expected = src.clone();
        expected.at<T>(0, 1) = T(0);
        // The grid is as large as the image, and nothing is interpolated.
        ExpectEqualImages(LocalMin(src, 1), expected);
    });
    // Higher values do not help a cell of 40 pixels: 6 * 255 modulo 256 is 250, a sixth of that is 41.7.
    ExpectFloorOfCell<uchar>({255, 255, 255, 255, 255, 255}, 255, 41);
    constexpr float kMost = std::numeric_limits<float>::max();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    ExpectFloorOfCell<float>({1, 1, 1, 1, kMost, kMost}, kMost, kInfinity);
}

template <class T>
void ExpectSpecials()
{
    T const nan = std::numeric_limits<T>::quiet_NaN();
    T const infinity = std::numeric_limits<T>::infinity();
    T const least = std::numeric_limits<T>::denorm_min();
    cv::Mat src(2, 2, cv::DataType<T>::depth);
    src.at<T>(0, 0) = nan;
    src.at<T>(0, 1) = infinity;
    src.at<T>(1, 0) = -infinity;
    src.at<T>(1, 1) = least;
    cv::Mat expected = cv::Mat::zeros(2, 2, src.type());
    expected.at<T>(0, 1) = infinity;
    expected.at<T>(1, 1) = least;
    ExpectEqualImages(LocalMin(src, 1), expected);
    ExpectFloorOfCell<T>({1, 2, 3, 4, 5, infinity}, nan, 1);
    ExpectFloorOfCell<T>({1, 2, 3, 4, 5, 9}, infinity, T(4));
}

TEST(RobustLocalMin, LeavesOutNaNAndKeepsInfinitiesAndTinyNumbers)
{
    ExpectSpecials<float>();
    ExpectSpecials<double>();
}

TEST(RobustLocalMin, OfIntegersOf32Bits_PassesOnTheExceptionOfTheInterpolation)
{
    cv::Mat dst;
    EXPECT_THROW(static_cast<void>(InterpolatedRobustLocalMinNoZero(Draw<int>({"123", "456"}), 2, dst)), cv::Exception);
    EXPECT_THROW(
        static_cast<void>(InterpolatedRobustLocalMinNoZero(Draw<int>({"123", "456", "789"}), 9, dst)), cv::Exception);
    // A grid as large as the image is copied.
    ExpectDrawn(LocalMin(Draw<int>({"123", "4.6", "789"}), 1), {"123", "4.6", "789"});
}

TEST(RobustLocalMin, OutputIsReplacedAndMayBeTheSource)
{
    for (int const depth : kFloorDepths)
    {
        cv::Mat const src = Draw({"..gz", "..ZZ", "g.xZ", "zzzw"}, depth);
        for (cv::Mat dst : {Draw<double>({"77"}), Draw<schar>({"7777", "7777", "7777", "7777"}), src.clone()})
        {
            ASSERT_TRUE(InterpolatedRobustLocalMinNoZero(src, 2, dst));
            EXPECT_EQ(dst.type(), src.type());
            ExpectDrawn(dst, {".4cg", "48gk", "cgos", "gksw"});
        }
        cv::Mat image = src.clone();
        ASSERT_TRUE(InterpolatedRobustLocalMinNoZero(image, 2, image));
        ExpectDrawn(image, {".4cg", "48gk", "cgos", "gksw"});
        image = src.clone();
        cv::Mat shared = image;
        ASSERT_TRUE(InterpolatedRobustLocalMinNoZero(image, 2, shared));
        ExpectDrawn(shared, {".4cg", "48gk", "cgos", "gksw"});
    }
}

} // namespace

} // namespace morvane::filters
