// Thinning against plain passes over the image, and what must hold of it.
#include <morvane/features/Skeleton.h>

#include "support/ImageLiterals.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"
#include "support/SkeletonOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <array>

namespace morvane::features
{

namespace
{

using tests::Drawing;
using tests::EqualImages;
using tests::Random;

constexpr std::array kTypes{ThinningZhangSuen, ThinningGuoHall};

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

/// A random shape whose frame is sometimes full, sometimes empty.
cv::Mat1b ShapeWithFrame(Random & random, cv::Size size)
{
    cv::Mat1b shape = tests::RandomShape(random, size);
    int const kind = random.Below(3);
    if (kind < 2) cv::rectangle(shape, cv::Rect({}, size), cv::Scalar(kind * 255), 1 + random.Below(2));
    return shape;
}

TEST(ThinningRandom, MatchesTwoPassesForEachIteration)
{
    Random random(7301);
    for (int round = 0; round < 300; ++round)
    {
        cv::Size const size(1 + random.Below(40), 1 + random.Below(40));
        cv::Mat1b const shape = ShapeWithFrame(random, size);
        for (ThinningTypes const type : kTypes)
        {
            for (int const maxIterations : {0, 1, 2, 3})
            {
                ASSERT_TRUE(
                    EqualImages(Thinned(shape, type, maxIterations), tests::OracleThinning(shape, type, maxIterations)))
                    << "round " << round << ", type " << type << ", iterations " << maxIterations;
            }
        }
    }
}

TEST(ThinningRandom, MatchesTwoPassesForEachIterationOnPatternsAndLargeBlobs)
{
    for (cv::Size const size : {cv::Size(70, 41), cv::Size(3, 3), cv::Size(2, 9), cv::Size(9, 2), cv::Size(1, 1)})
    {
        for (tests::Pattern const & pattern : tests::AllPatterns(size))
        {
            for (ThinningTypes const type : kTypes)
            {
                cv::Mat const shape = pattern.mask * 255;
                ASSERT_TRUE(EqualImages(Thinned(shape, type), tests::OracleThinning(shape, type, 0))) << pattern.name;
            }
        }
    }
    Random random(7302);
    for (int round = 0; round < 6; ++round)
    {
        cv::Mat1b shape(160, 200, uchar{0});
        for (int blob = 0; blob < 5; ++blob)
        {
            cv::circle(shape, {random.Below(200), random.Below(160)}, 10 + random.Below(35), cv::Scalar(255), -1);
        }
        for (ThinningTypes const type : kTypes)
        {
            ASSERT_TRUE(EqualImages(Thinned(shape, type), tests::OracleThinning(shape, type, 0)));
        }
    }
}

/// All 512 images of 3 by 3, in a frame of nothing.
TEST(ThinningRandom, MatchesTwoPassesForEachIterationOnAllNeighbourhoods)
{
    for (unsigned code = 0; code < 512; ++code)
    {
        cv::Mat1b shape(5, 5, uchar{0});
        for (unsigned bit = 0; bit < 9; ++bit)
        {
            int const at = static_cast<int>(bit);
            shape(1 + at / 3, 1 + at % 3) = ((code >> bit) & 1U) != 0 ? 255 : 0;
        }
        for (ThinningTypes const type : kTypes)
        {
            for (int const maxIterations : {1, 0})
            {
                // Once with the nine pixels inside, once with eight of them in the frame.
                for (int const border : {0, 1})
                {
                    cv::Mat const image = shape(cv::Rect(border, border, 5 - 2 * border, 5 - 2 * border)).clone();
                    ASSERT_TRUE(EqualImages(
                        Thinned(image, type, maxIterations), tests::OracleThinning(image, type, maxIterations)))
                        << code;
                }
            }
        }
    }
}

TEST(ThinningProperties, FramePixelsAreNeverRemoved)
{
    Random random(7303);
    for (int round = 0; round < 60; ++round)
    {
        cv::Mat1b const shape = ShapeWithFrame(random, {1 + random.Below(30), 1 + random.Below(30)});
        for (ThinningTypes const type : kTypes)
        {
            cv::Mat frame = Thinned(shape, type) ^ shape;
            if (frame.rows > 2 && frame.cols > 2) frame(cv::Rect(1, 1, frame.cols - 2, frame.rows - 2)).setTo(0);
            ASSERT_EQ(cv::countNonZero(frame), 0);
        }
    }
}

TEST(ThinningProperties, IterationsCanBeMadeOneByOne_AndEndWhereNothingChanges)
{
    Random random(7304);
    for (int round = 0; round < 60; ++round)
    {
        cv::Mat1b const shape = ShapeWithFrame(random, {1 + random.Below(40), 1 + random.Below(40)});
        for (ThinningTypes const type : kTypes)
        {
            cv::Mat step = shape;
            for (int iterations = 1; iterations <= 6; ++iterations)
            {
                step = Thinned(step, type, 1);
                ASSERT_TRUE(EqualImages(Thinned(shape, type, iterations), step));
                ASSERT_EQ(cv::countNonZero(step & ~shape), 0) << "pixels were added";
            }
            cv::Mat const end = Thinned(shape, type);
            ASSERT_TRUE(EqualImages(Thinned(end, type), end));
        }
    }
}

/// The number of parts, 8-connected.
int PartsOf(cv::Mat const & shape)
{
    cv::Mat labels;
    return cv::connectedComponents(shape, labels, 8) - 1;
}

/// The number of holes, and of what is outside, 4-connected.
int HolesOf(cv::Mat const & shape)
{
    cv::Mat const background = ~shape;
    cv::Mat labels;
    return cv::connectedComponents(background, labels, 4) - 1;
}

TEST(ThinningProperties, ByGuoAndHall_PartsAndHolesStay)
{
    Random random(7305);
    for (int round = 0; round < 200; ++round)
    {
        cv::Mat1b const shape = ShapeWithFrame(random, {3 + random.Below(50), 3 + random.Below(50)});
        cv::Mat const skeleton = Thinned(shape, ThinningGuoHall);
        ASSERT_EQ(PartsOf(skeleton), PartsOf(shape)) << "round " << round;
        ASSERT_EQ(HolesOf(skeleton), HolesOf(shape)) << "round " << round;
    }
}

/// What is left of a part before the iteration in which it vanishes.
cv::Mat LastRemains(cv::Mat part)
{
    for (cv::Mat next = part; cv::countNonZero(next) > 0; next = Thinned(part, ThinningZhangSuen, 1))
    {
        part = next;
    }
    return part(cv::boundingRect(part)).clone();
}

TEST(ThinningProperties, ByZhangAndSuen_HolesStay_AndPartsDoOrVanishWhenTheyAreSquaresOfFour)
{
    Random random(7306);
    cv::Mat const square = Draw({"11", "11"});
    cv::Mat const disc = Draw({".11.", "1111", "1111", ".11."});
    int vanished = 0;
    for (int round = 0; round < 2500; ++round)
    {
        int const largest = round % 2 == 0 ? 50 : 7;
        cv::Mat1b const shape = ShapeWithFrame(random, {3 + random.Below(largest), 3 + random.Below(largest)});
        cv::Mat const skeleton = Thinned(shape, ThinningZhangSuen);
        ASSERT_EQ(HolesOf(skeleton), HolesOf(shape)) << "round " << round;
        cv::Mat1i parts;
        int const count = cv::connectedComponents(shape, parts, 8, CV_32S);
        for (int part = 1; part < count; ++part)
        {
            cv::Mat const left = skeleton & (parts == part);
            if (cv::countNonZero(left) > 0)
            {
                ASSERT_EQ(PartsOf(left), 1) << "round " << round;
                continue;
            }
            ++vanished;
            cv::Mat const remains = LastRemains(shape & (parts == part));
            bool const isSmall = EqualImages(remains, square) || EqualImages(remains, disc);
            ASSERT_TRUE(isSmall) << "round " << round << ":\n" << remains;
        }
    }
    EXPECT_GT(vanished, 5);
}

} // namespace

} // namespace morvane::features
