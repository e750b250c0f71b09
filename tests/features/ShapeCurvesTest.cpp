// Fractal dimension, granulometries and corners.
#include <morvane/features/ShapeDescriptors.h>

#include "support/AllTypes.h"
#include "support/GeodesicOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/ShapeOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace morvane::features
{

namespace
{

using tests::Draw;
using tests::Random;
using Curve = std::vector<double>;

Curve const kBefore{7.0, 8.0};

/// A curve-maker, and the steps it stands for.
struct Operator
{
    char const * name;
    bool (*call)(cv::Mat const & src, Curve & curve, int shape);
    std::function<Curve(cv::Mat const & src, int shape)> oracle;
};

std::vector<Operator> const kOperators{
    {"fractal dimension", MorphologicalFractalDimension, tests::OracleFractalDimension},
    {"openings", GranulometryByOpening,
     [](cv::Mat const & src, int shape) {
         return tests::OracleGranulometry(src, shape, cv::MORPH_OPEN);
     }},
    {"closings", GranulometryByClosing,
     [](cv::Mat const & src, int shape) {
         return tests::OracleGranulometry(src, shape, cv::MORPH_CLOSE);
     }},
};

constexpr std::array kShapes{cv::MORPH_RECT, cv::MORPH_CROSS, cv::MORPH_ELLIPSE};

/// Equal numbers, or NaN in both.
testing::AssertionResult SameCurves(Curve const & actual, Curve const & expected)
{
    if (actual.size() != expected.size())
    {
        return testing::AssertionFailure() << actual.size() << " entries in place of " << expected.size();
    }
    for (std::size_t index = 0; index < expected.size(); ++index)
    {
        bool const isSame =
            actual[index] == expected[index] || (std::isnan(actual[index]) && std::isnan(expected[index]));
        if (isSame) continue;
        return testing::AssertionFailure()
               << "entry " << index << " is " << actual[index] << ", not " << expected[index];
    }
    return testing::AssertionSuccess();
}

Curve CurveOf(Operator const & op, cv::Mat const & src, int shape)
{
    Curve curve = kBefore;
    EXPECT_TRUE(op.call(src, curve, shape));
    return curve;
}

/// Expects the steps of all three operators. @return the longest curve
std::size_t ExpectSteps(cv::Mat const & src, int shape)
{
    std::size_t longest = 0;
    for (Operator const & op : kOperators)
    {
        SCOPED_TRACE(std::string(op.name) + ", " + tests::StepCase(src, shape));
        Curve const curve = CurveOf(op, src, shape);
        EXPECT_TRUE(SameCurves(curve, op.oracle(src, shape)));
        longest = std::max(longest, curve.size());
    }
    return longest;
}

TEST(MorphologicalFractalDimension, IsTheAreaBetweenTheFilters)
{
    cv::Mat const image = Draw<uchar>({"...", ".9.", "..."});
    // All pixels of the dilation, and none of the erosion; by a cross, five of them.
    EXPECT_EQ(CurveOf(kOperators[0], image, cv::MORPH_RECT), Curve{81.0 / 3});
    EXPECT_EQ(CurveOf(kOperators[0], image, cv::MORPH_CROSS), Curve{45.0 / 3});
}

TEST(MorphologicalFractalDimension, EndsWhenTheElementHasMadeTheImageFlat)
{
    // By column: dilations 5599, 5999, 9999 less erosions 0055, 0005, 0000.
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32FC1, CV_64FC1})
    {
        cv::Mat const image = Draw({".559", ".559", ".559"}, type);
        EXPECT_EQ(CurveOf(kOperators[0], image, cv::MORPH_RECT), (Curve{3.0 * 18 / 3, 3.0 * 27 / 5, 3.0 * 36 / 7}));
        // Where all but one erosion is as dark as can be, it ends.
        EXPECT_EQ(CurveOf(kOperators[0], Draw({".5..", "....", "...5"}, type), cv::MORPH_RECT).size(), 1U);
    }
}

TEST(MorphologicalFractalDimension, WithoutFlatteningEndsBeforeTheLongerSide)
{
    // The least in one corner, the greatest in the other: flat for elements that hold both, of which there is none.
    cv::Mat image(3, 20, CV_8UC1, cv::Scalar(5));
    image.at<uchar>(0, 0) = 0;
    image.at<uchar>(2, 19) = 9;
    EXPECT_EQ(CurveOf(kOperators[0], image, cv::MORPH_RECT).size(), 19U);
    EXPECT_EQ(CurveOf(kOperators[0], image.t(), cv::MORPH_RECT).size(), 19U);
}

TEST(MorphologicalFractalDimension, OfAFlatImage_IsOneZero)
{
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32FC1, CV_64FC1})
    {
        for (int const shape : kShapes)
        {
            EXPECT_EQ(CurveOf(kOperators[0], cv::Mat(5, 9, type, cv::Scalar(0)), shape), Curve{0.0});
            EXPECT_EQ(CurveOf(kOperators[0], cv::Mat(5, 9, type, cv::Scalar(7)), shape), Curve{0.0});
        }
    }
}

TEST(Granulometry, ByOpenings_LosesWhatIsNarrow)
{
    // Widths of 1, 2 and 3 pixels, in all rows.
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32FC1, CV_64FC1})
    {
        cv::Mat const image = Draw({".9.77..555.", ".9.77..555.", ".9.77..555."}, type);
        EXPECT_EQ(CurveOf(kOperators[1], image, cv::MORPH_RECT), (Curve{1.0, 45.0 / 114, 0.0}));
        EXPECT_EQ(CurveOf(kOperators[1], image.t(), cv::MORPH_RECT), (Curve{1.0, 45.0 / 114, 0.0}));
    }
}

TEST(Granulometry, ByClosings_FillsWhatIsNarrow)
{
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32FC1, CV_64FC1})
    {
        cv::Mat const image = Draw({"9.95593339", "9.95593339", "9.95593339"}, type);
        EXPECT_EQ(CurveOf(kOperators[2], image, cv::MORPH_RECT), (Curve{1.0, 216.0 / 165, 270.0 / 165}));
        EXPECT_EQ(CurveOf(kOperators[2], image.t(), cv::MORPH_RECT), (Curve{1.0, 216.0 / 165, 270.0 / 165}));
    }
}

TEST(Granulometry, OfAFlatImage_IsOne)
{
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32FC1, CV_64FC1})
    {
        for (int const shape : kShapes)
        {
            EXPECT_EQ(CurveOf(kOperators[1], cv::Mat(5, 9, type, cv::Scalar(7)), shape), Curve{1.0});
            EXPECT_EQ(CurveOf(kOperators[2], cv::Mat(5, 9, type, cv::Scalar(7)), shape), Curve{1.0});
        }
    }
}

TEST(Granulometry, OfATotalOfZero_BeginsWithNaN)
{
    for (Operator const & op : {kOperators[1], kOperators[2]})
    {
        double const nan = std::numeric_limits<double>::quiet_NaN();
        EXPECT_TRUE(SameCurves(CurveOf(op, cv::Mat(3, 4, CV_8UC1, cv::Scalar(0)), cv::MORPH_RECT), {nan}));
    }
    // Where numbers cancel out, it goes on: what is lost is infinitely more than what was there.
    cv::Mat1s image(3, 9, short{0});
    image.col(2) = 5;
    image.col(6) = -5;
    double const infinity = std::numeric_limits<double>::infinity();
    Curve const opened = CurveOf(kOperators[1], image, cv::MORPH_RECT);
    ASSERT_GE(opened.size(), 2U);
    EXPECT_TRUE(std::isnan(opened[0]));
    EXPECT_EQ(opened[1], -infinity);
    EXPECT_EQ(CurveOf(kOperators[2], image, cv::MORPH_RECT)[1], infinity);
}

/// Bars of growing width, of random heights, which are lost one by one, along the columns.
cv::Mat Bars(Random & random, cv::Size size, int type)
{
    cv::Mat image(size, type, cv::Scalar(random.Below(3)));
    for (int left = random.Below(3), width = 1; left < size.width; left += width + 1, width += 1 + random.Below(3))
    {
        int const right = std::min(left + width, size.width);
        image.colRange(left, right).setTo(5 + random.Below(200));
    }
    for (int count = random.Below(6); count > 0; --count)
    {
        tests::SetElement(image, random.Below(size.height), random.Below(size.width), 0, random.Below(256));
    }
    return image;
}

TEST(ShapeCurvesRandom, OfIntegersAndFloats_AreThoseOfFiltersOfTheWholeSize)
{
    Random random(7410);
    for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32F, CV_64F})
    {
        for (int round = 0; round < 24; ++round)
        {
            cv::Size const size(3 + random.Below(22), 3 + random.Below(22));
            ExpectSteps(tests::FiniteImage(random, size, depth), kShapes[static_cast<std::size_t>(round % 3)]);
            if (HasFailure()) return;
        }
    }
}

TEST(ShapeCurvesRandom, OfSizesAroundTheSquares_AreThoseOfFiltersOfTheWholeSize)
{
    // Blocks of the squares' size meet each end of the image: before it, on it, after it.
    Random random(7411);
    for (int const depth : {CV_8U, CV_16U, CV_16S})
    {
        for (int side = 3; side <= 34; ++side)
        {
            for (cv::Size const size : {cv::Size(3, side), cv::Size(side, 3), cv::Size(side, 40 - side)})
            {
                if (size.height < 3) continue;
                ExpectSteps(Bars(random, size, depth), cv::MORPH_RECT);
                ExpectSteps(Bars(random, {size.height, size.width}, depth).t(), cv::MORPH_RECT);
                if (HasFailure()) return;
            }
        }
    }
}

TEST(ShapeCurvesRandom, OfBarsOfManyWidths_GoOnToTheLast)
{
    Random random(7412);
    for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32F})
    {
        // Each opening loses a bar, each closing the gap beside it: up to squares far larger than the short side.
        cv::Mat image(3, 150, depth, cv::Scalar(0));
        for (int left = 0, width = 1; left < image.cols; left += width + width, width += 2)
        {
            image.colRange(left, std::min(left + width, image.cols)).setTo(1 + random.Below(200));
        }
        EXPECT_GE(ExpectSteps(image, cv::MORPH_RECT), 8U);
        EXPECT_GE(ExpectSteps(image.t(), cv::MORPH_RECT), 8U);
        EXPECT_GE(ExpectSteps(Bars(random, {151, 57}, depth), cv::MORPH_RECT), 5U);
    }
}

TEST(ShapeCurvesRandom, OfExtremesOfTheType_AreThoseOfFiltersOfTheWholeSize)
{
    Random random(7413);
    for (int const depth : {CV_8U, CV_16U, CV_16S})
    {
        for (int round = 0; round < 20; ++round)
        {
            cv::Mat image(3 + random.Below(20), 3 + random.Below(20), depth);
            for (int y = 0; y < image.rows; ++y)
            {
                for (int x = 0; x < image.cols; ++x)
                {
                    // The difference of the extremes is more than 16 bits with a sign hold.
                    double const extreme = random.Chance(0.5) ? tests::LowestOf(depth) : tests::HighestOf(depth);
                    tests::SetElement(image, y, x, 0, random.Chance(0.1) ? 1 : extreme);
                }
            }
            ExpectSteps(image, kShapes[static_cast<std::size_t>(round % 3)]);
            if (HasFailure()) return;
        }
    }
}

TEST(ShapeCurvesRandom, OfViews_DoNotSeeWhatLiesAround)
{
    Random random(7414);
    for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32F, CV_64F})
    {
        for (int const shape : kShapes)
        {
            cv::Mat const parent = tests::FiniteImage(random, {30, 29}, depth);
            cv::Mat const view = parent(cv::Rect(4, 5, 17, 13));
            for (Operator const & op : kOperators)
            {
                EXPECT_TRUE(SameCurves(CurveOf(op, view, shape), op.oracle(view.clone(), shape))) << op.name;
            }
            EXPECT_TRUE(tests::EqualImages(view, view.clone()));
        }
    }
}

TEST(ShapeCurveRefusals, SeveralChannelsAndFewPixels_LeaveTheCurve)
{
    std::array const sides{3, 3, 4};
    std::vector<cv::Mat> images{cv::Mat(), cv::Mat(0, 5, CV_8UC1), cv::Mat(2, 10, CV_8UC1), cv::Mat(10, 2, CV_32FC1)};
    images.emplace_back(3, sides.data(), CV_8UC1, cv::Scalar(1));
    for (int const channels : {2, 3, 4, 5})
    {
        images.emplace_back(5, 6, CV_MAKETYPE(CV_8U, channels));
        images.emplace_back(5, 6, CV_MAKETYPE(CV_64F, channels));
    }
    for (cv::Mat const & image : images)
    {
        for (Operator const & op : kOperators)
        {
            for (int const shape : {0, 1, 2, 7})
            {
                Curve curve = kBefore;
                EXPECT_FALSE(op.call(image, curve, shape)) << op.name;
                EXPECT_EQ(curve, kBefore);
            }
        }
        cv::Mat corners(4, 4, CV_16SC1, cv::Scalar(3));
        tests::Snapshot const before(corners);
        EXPECT_FALSE(ExtractHarrisCorners(image, corners));
        EXPECT_TRUE(before.IsUntouched());
    }
}

TEST(ShapeCurveExceptions, DepthsAndShapesThatOpenCVRefuses)
{
    for (Operator const & op : kOperators)
    {
        Curve curve;
        for (int const depth : tests::kUndilatedDepths)
        {
            cv::Mat image(5, 6, depth);
            tests::FillBytes(image, 1);
            for (int const shape : kShapes)
            {
                EXPECT_THROW(static_cast<void>(op.call(image, curve, shape)), cv::Exception) << op.name << depth;
            }
        }
        cv::Mat const image(5, 6, CV_8UC1, cv::Scalar(1));
        for (int const shape : tests::kStrangeElementShapes)
        {
            EXPECT_THROW(static_cast<void>(op.call(image, curve, shape)), cv::Exception) << op.name << shape;
        }
    }
}

TEST(HarrisCorners, MatchPlainLoops)
{
    Random random(7420);
    for (int const depth : tests::kDepths)
    {
        for (int round = 0; round < 6; ++round)
        {
            cv::Mat const parent =
                tests::RandomImage(random, {9 + random.Below(25), 9 + random.Below(25)}, depth, {0.4, 0.0, 200});
            // A view of it, whose surroundings must not count.
            cv::Mat const image = parent(cv::Rect(3, 2, parent.cols - 6, parent.rows - 5));
            cv::Mat out(2, 2, CV_8UC1);
            ASSERT_TRUE(ExtractHarrisCorners(image, out));
            ASSERT_EQ(out.type(), CV_32FC1);
            ASSERT_EQ(out.size(), image.size());
            cv::Mat1d actual;
            out.convertTo(actual, CV_64F);
            EXPECT_LT(cv::norm(actual, tests::OracleHarrisCorners(image), cv::NORM_INF), 0.02);
            double minimum = -1.0;
            double maximum = -1.0;
            cv::minMaxLoc(out, &minimum, &maximum);
            EXPECT_NEAR(minimum, 0.0, 1e-4);
            EXPECT_NEAR(maximum, 255.0, 1e-4);
        }
    }
}

TEST(HarrisCorners, OfAFlatImage_AreNowhere)
{
    cv::Mat out;
    ASSERT_TRUE(ExtractHarrisCorners(cv::Mat(6, 7, CV_16UC1, cv::Scalar(300)), out));
    tests::ExpectEqualImages(out, cv::Mat(6, 7, CV_32FC1, cv::Scalar(0)));
}

TEST(HarrisCorners, TakeWhatOpenCVConverts_AndMayReplaceTheImage)
{
    cv::Mat image = Draw<short>({".........", ".777777..", ".777777..", ".777777..", ".777777..", "........."});
    cv::Mat expected;
    ASSERT_TRUE(ExtractHarrisCorners(image, expected));
    cv::Mat converted;
    image.convertTo(converted, CV_8S);
    cv::Mat out;
    ASSERT_TRUE(ExtractHarrisCorners(converted, out));
    tests::ExpectEqualImages(out, expected);
    ASSERT_TRUE(ExtractHarrisCorners(image, image));
    tests::ExpectEqualImages(image, expected);
}

} // namespace

} // namespace morvane::features
