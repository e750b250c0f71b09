// Thinning by Zhang and Suen, and by Guo and Hall.
#include <morvane/features/Skeleton.h>

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/SkeletonOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <array>
#include <vector>

namespace morvane::features
{

namespace
{

using tests::Drawing;
using tests::EqualImages;
using tests::Random;

constexpr std::array kTypes{ThinningZhangSuen, ThinningGuoHall};
/// A type that is none.
constexpr auto kNone = static_cast<ThinningTypes>(7);

/// A shape of 255 where something is drawn.
cv::Mat Draw(Drawing const & drawing)
{
    return tests::Draw<uchar>(drawing) * 255;
}

cv::Mat Thinned(cv::Mat const & shape, ThinningTypes type, int maxIterations = 0)
{
    cv::Mat out;
    thinning(shape, out, type, maxIterations);
    return out;
}

TEST(Thinning, OfASquare_LeavesItsCentre)
{
    cv::Mat const shape = Draw({".....", ".111.", ".111.", ".111.", "....."});
    tests::ExpectEqualImages(Thinned(shape, ThinningZhangSuen), Draw({".....", ".....", "..1..", ".....", "....."}));
    tests::ExpectEqualImages(Thinned(shape, ThinningZhangSuen, 1), Thinned(shape, ThinningZhangSuen));
}

TEST(Thinning, OfASquareOfFour_LeavesNothingOrOnePixel)
{
    cv::Mat const shape = Draw({"....", ".11.", ".11.", "...."});
    // Each of the four may go, and all go at once.
    tests::ExpectEqualImages(Thinned(shape, ThinningZhangSuen), Draw({"....", "....", "....", "...."}));
    // The upper right one has a neighbour on the left and one below, which is not the side of this half.
    tests::ExpectEqualImages(Thinned(shape, ThinningGuoHall), Draw({"....", "..1.", "....", "...."}));
}

TEST(Thinning, ByZhangAndSuen_OfASmallDisc_LeavesNothing)
{
    // The first half takes its edge from all sides, the second the square of four that is left.
    cv::Mat const disc = Draw({"......", "..11..", ".1111.", ".1111.", "..11..", "......"});
    tests::ExpectEqualImages(Thinned(disc, ThinningZhangSuen, 1), cv::Mat(6, 6, CV_8UC1, cv::Scalar(0)));
}

TEST(Thinning, ByZhangAndSuen_ShrinksDiagonalLinesOfTwoPixelsToTheirMiddle)
{
    // They are removed from their ends, as nothing in them tells that these are ends.
    cv::Mat const odd = Draw({
        "........",
        ".11.....",
        "..11....",
        "...11...",
        "....11..",
        ".....11.",
        "........",
    });
    tests::ExpectEqualImages(
        Thinned(odd, ThinningZhangSuen, 1), Draw({
                                                "........",
                                                "........",
                                                "..11....",
                                                "...11...",
                                                "....11..",
                                                "........",
                                                "........",
                                            }));
    tests::ExpectEqualImages(
        Thinned(odd, ThinningZhangSuen), Draw({
                                             "........",
                                             "........",
                                             "........",
                                             "...11...",
                                             "........",
                                             "........",
                                             "........",
                                         }));
    tests::ExpectEqualImages(
        Thinned(Draw({".....", ".11..", "..11.", "....."}), ThinningZhangSuen),
        Draw({".....", "..1..", "..1..", "....."}));
}

TEST(Thinning, StopsAfterTheIterationsThatAreAllowed)
{
    cv::Mat const shape = Draw({".......", ".11111.", ".11111.", ".11111.", ".11111.", ".11111.", "......."});
    // The first half takes corners, the right and the lower side, the second the upper and the left side.
    cv::Mat const once = Draw({".......", ".......", "..111..", "..111..", "..11...", ".......", "......."});
    cv::Mat const twice = Draw({".......", ".......", ".......", "...1...", ".......", ".......", "......."});
    tests::ExpectEqualImages(Thinned(shape, ThinningZhangSuen, 1), once);
    for (int const maxIterations : {2, 3, 100, 0, -1, -100})
    {
        tests::ExpectEqualImages(Thinned(shape, ThinningZhangSuen, maxIterations), twice);
    }
}

TEST(Thinning, LeavesThinLinesAlone)
{
    Drawing const lines[]{
        {".......", ".11111.", "......."},
        {"...", ".1.", ".1.", ".1.", "..."},
        {".....", ".1...", "..1..", "...1.", "....."},
        {".....", "...1.", "..1..", ".1...", "....."},
        {".......", ".1...1.", "..1.1..", "...1...", "...1...", "...1...", "......."},
        {".......", "..111..", ".1...1.", ".1...1.", ".1...1.", "..111..", "......."},
        {"...", ".1.", "..."},
        {"....", ".11.", "...."},
    };
    for (Drawing const & line : lines)
    {
        for (ThinningTypes const type : kTypes)
        {
            tests::ExpectEqualImages(Thinned(Draw(line), type), Draw(line));
        }
    }
}

TEST(Thinning, TakesPixelsFrom128On)
{
    for (int const value : {0, 1, 127, 128, 129, 254, 255})
    {
        cv::Mat1b image(3, 4, uchar{0});
        image(1, 1) = static_cast<uchar>(value);
        image(0, 3) = static_cast<uchar>(value);
        cv::Mat1b expected(3, 4, uchar{0});
        expected.setTo(value >= 128 ? 255 : 0, image);
        for (ThinningTypes const type : {ThinningZhangSuen, ThinningGuoHall, kNone})
        {
            tests::ExpectEqualImages(Thinned(image, type), expected);
        }
    }
}

TEST(Thinning, ByNoType_RemovesNothing)
{
    Random random(7300);
    for (int round = 0; round < 20; ++round)
    {
        cv::Mat1b image(1 + random.Below(30), 1 + random.Below(30));
        for (uchar & pixel : image)
        {
            pixel = static_cast<uchar>(random.Below(256));
        }
        cv::Mat1b expected(image.size(), uchar{0});
        expected.setTo(255, image >= 128);
        for (int const type : {7, 2, -1, 256})
        {
            for (int const maxIterations : {0, 1, 5})
            {
                ASSERT_TRUE(EqualImages(Thinned(image, static_cast<ThinningTypes>(type), maxIterations), expected));
            }
        }
    }
}

TEST(ThinningOutputs, MayBeTheImageItself)
{
    Random random(7307);
    cv::Mat1b const shape = tests::RandomShape(random, {40, 30});
    cv::Mat both = shape.clone();
    thinning(both, both, ThinningZhangSuen, 0);
    tests::ExpectEqualImages(both, Thinned(shape, ThinningZhangSuen));
}

TEST(ThinningOutputs, OfViews_AreThoseOfTheirPixelsAlone)
{
    Random random(7308);
    for (int round = 0; round < 20; ++round)
    {
        cv::Mat1b const parent = tests::RandomShape(random, {50, 40});
        cv::Mat const view = parent(cv::Rect(5, 6, 30, 20));
        tests::Snapshot const before(parent);
        for (ThinningTypes const type : kTypes)
        {
            tests::FramedImage out(cv::Mat(view.size(), CV_8UC1, cv::Scalar(9)));
            thinning(view, out.View(), type, 0);
            ASSERT_TRUE(EqualImages(out.View(), tests::OracleThinning(view.clone(), type, 0)));
            ASSERT_TRUE(out.IsFrameUntouched());
        }
        ASSERT_TRUE(before.IsUntouched());
    }
}

TEST(ThinningOutputs, OfAnyTypeAreReplaced)
{
    cv::Mat const shape = Draw({".....", ".111.", ".111.", ".111.", "....."});
    for (cv::Mat const & before : {cv::Mat(), cv::Mat(5, 5, CV_32FC3), cv::Mat(2, 2, CV_8UC1)})
    {
        cv::Mat out = before;
        thinning(shape, out, ThinningZhangSuen, 0);
        tests::ExpectEqualImages(out, Thinned(shape, ThinningZhangSuen));
    }
    cv::UMat out;
    thinning(shape.getUMat(cv::ACCESS_READ), out, ThinningZhangSuen, 0);
    tests::ExpectEqualImages(out.getMat(cv::ACCESS_READ), Thinned(shape, ThinningZhangSuen));
}

TEST(ThinningOutputs, OfAnEmptyImage_AreEmpty)
{
    cv::Mat out(3, 3, CV_8UC1, cv::Scalar(1));
    thinning(cv::Mat(), out, ThinningZhangSuen, 0);
    EXPECT_TRUE(out.empty());
}

TEST(ThinningOutputs, OfOtherTypes_AreExceptionsWithTheOutputUntouched)
{
    std::array const sides{3, 3, 3};
    std::vector<cv::Mat> images;
    for (int const type : {CV_8SC1, CV_16UC1, CV_16SC1, CV_32SC1, CV_32FC1, CV_64FC1, CV_16FC1, CV_8UC2, CV_8UC3})
    {
        images.emplace_back(5, 5, type);
        tests::FillBytes(images.back(), 1);
    }
    images.emplace_back(3, sides.data(), CV_8UC1, cv::Scalar(1));
    for (cv::Mat const & image : images)
    {
        cv::Mat out(5, 5, CV_8UC1, cv::Scalar(9));
        tests::Snapshot const before(out);
        EXPECT_THROW(thinning(image, out, ThinningZhangSuen, 0), cv::Exception) << cv::typeToString(image.type());
        EXPECT_TRUE(before.IsUntouched());
    }
}

} // namespace

} // namespace morvane::features
