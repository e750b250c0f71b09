#include "geodesy/ActiveTiles.h"

#include "support/ImageLiterals.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"
#include "support/ReconstructionOracle.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace morvane::tests
{

namespace
{

using geodesy::reconstruction_internals::ActiveTiles;
using geodesy::reconstruction_internals::Tiles;

/// A pass that lets the value 1 step one pixel to the right in each row, and notes the areas that it was asked for.
struct StepRight
{
    std::vector<cv::Rect> * areas;

    void operator()(cv::Rect const & area, cv::Mat const & current, cv::Mat & next) const
    {
        areas->push_back(area);
        current.copyTo(next);
        for (int y = 0; y < next.rows; ++y)
        {
            for (int x = next.cols - 1; x > 0; --x)
            {
                if (current.at<uchar>(y, x - 1) != 0) next.at<uchar>(y, x) = 1;
            }
        }
    }
};

TEST(Tiles, AreMarkedWithinReachOfThoseThatAre)
{
    Tiles marked({640, 320});
    marked.ForEach([](uchar & mark, cv::Rect const & tile) { mark = tile.contains({300, 100}) ? 1 : 0; });
    ASSERT_EQ(marked.Count(), 50U);
    ASSERT_EQ(marked.Marked(), 1U);
    Tiles around({640, 320});
    around.MarkAround(marked, {1, 0});
    EXPECT_EQ(around.Marked(), 3U);
    around.MarkAround(marked, {65, 1});
    EXPECT_EQ(around.Marked(), 15U);
}

TEST(Tiles, CoverTheImageAndNoMore)
{
    Tiles tiles({130, 65});
    cv::Mat1i covered(65, 130, 0);
    tiles.ForEach([&](uchar, cv::Rect const & tile) { covered(tile) += 1; });
    EXPECT_EQ(tiles.Count(), 6U);
    EXPECT_EQ(cv::countNonZero(covered != 1), 0);
}

TEST(ActiveTiles, PassOverThePlacesThatChangeAlone)
{
    cv::Mat1b image(1000, 1000, uchar{0});
    image(500, 100) = 1;
    std::vector<cv::Rect> areas;
    ActiveTiles(image.size(), {1, 0}, StepRight{&areas}).Run(image, image.total());
    cv::Mat1b expected(1000, 1000, uchar{0});
    expected.row(500).colRange(100, 1000).setTo(1);
    EXPECT_TRUE(EqualImages(image, expected));
    // The first pass, over all; then 899 steps to the border and one that finds nothing, in three tiles each or less.
    ASSERT_FALSE(areas.empty());
    EXPECT_EQ(areas.front(), cv::Rect(0, 0, 1000, 1000));
    EXPECT_GT(areas.size(), 900U);
    for (std::size_t index = 1; index < areas.size(); ++index)
    {
        EXPECT_LE(areas[index].area(), 66 * 66);
    }
}

TEST(ActiveTiles, StopAfterSoManyPasses)
{
    cv::Mat1b image(1000, 1000, uchar{0});
    image(500, 100) = 1;
    std::vector<cv::Rect> areas;
    ActiveTiles(image.size(), {1, 0}, StepRight{&areas}).Run(image, 10);
    EXPECT_EQ(cv::countNonZero(image), 11);
}

TEST(ActiveTiles, PassOverAllWhereMuchChanges)
{
    cv::Mat1b image(256, 256, uchar{0});
    image.col(0).setTo(1);
    std::vector<cv::Rect> areas;
    ActiveTiles(image.size(), {1, 0}, StepRight{&areas}).Run(image, image.total());
    EXPECT_EQ(cv::countNonZero(image), 256 * 256);
    EXPECT_EQ(areas.size(), 256U);
    for (cv::Rect const & area : areas)
    {
        EXPECT_EQ(area, cv::Rect(0, 0, 256, 256));
    }
}

/// A corridor five pixels wide that leads to and fro in a long image of 25 tiles.
cv::Mat Corridor(int depth)
{
    cv::Mat corridor;
    cv::resize(Spiral({320, 3}), corridor, {1600, 15}, 0, 0, cv::INTER_NEAREST);
    corridor.convertTo(corridor, depth, 200.0 / 255.0);
    return corridor;
}

TEST(ActiveTiles, ViscousReconstructionsFollowACorridorAsPassesOverAllDo)
{
    Random random(28);
    for (int const depth : {CV_8U, CV_32F})
    {
        cv::Mat mask = Corridor(depth);
        // Bumps and dents, so that values change on the way.
        for (int count = 0; count < 60; ++count)
        {
            SetElement(mask, random.Below(mask.rows), random.Below(mask.cols), 0, random.Below(250));
        }
        cv::Mat marker = cv::Mat::zeros(mask.size(), depth);
        marker(cv::Rect(0, 0, 4, 4)).setTo(180);
        for (Repeated const repeated : {Repeated::ViscousDilation, Repeated::ViscousErosion})
        {
            bool const rises = repeated == Repeated::ViscousDilation;
            cv::Mat const bounds = rises ? mask : cv::Mat(250 - mask);
            cv::Mat const start = rises ? marker : cv::Mat(250 - marker);
            for (Elements const & elements : {Elements{0, {3, 3}, {3, 3}}, Elements{2, {3, 5}, {2, 4}}})
            {
                cv::Mat out;
                ASSERT_TRUE(Reconstruct(repeated, start, bounds, elements, out));
                cv::Mat expected(mask.size(), depth);
                OracleReconstruct(repeated, start, bounds, elements, expected);
                ASSERT_TRUE(EqualImages(out, expected)) << depth << " " << static_cast<int>(repeated);
                // It did flow: a good part of the corridor is reached.
                EXPECT_GT(cv::countNonZero(out != start), 2000);
            }
        }
    }
}

} // namespace

} // namespace morvane::tests
