// The searches by OpenCV alone.
#include <morvane/algorithm/MatchingScores.h>
#include <morvane/algorithm/TemplateMatching.h>

#include "support/AllTypes.h"
#include "support/FitOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <tuple>
#include <vector>

namespace morvane::algorithm::OpenCV
{

namespace
{

using tests::Angles;
using tests::Draw;
using tests::Fit;
using tests::FitOf;
using tests::FramedImage;
using tests::Random;
using tests::TransformationOf;
using tests::TranslationOf;

constexpr std::array kMethods{cv::TM_SQDIFF,       cv::TM_SQDIFF_NORMED, cv::TM_CCORR,
                              cv::TM_CCORR_NORMED, cv::TM_CCOEFF,        cv::TM_CCOEFF_NORMED};
constexpr double kRounding = 1e-3;
constexpr double kLowest = std::numeric_limits<double>::lowest();

cv::Mat RandomValues(Random & random, cv::Size size, int depth)
{
    cv::Mat image(size, depth);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            tests::SetElement(image, y, x, 0, random.Chance(0.3) ? 0 : random.Below(100));
        }
    }
    return image;
}

/// What a call answers, unless it throws.
template <class Call>
std::optional<Fit> Try(Call const & call)
{
    try
    {
        return call();
    }
    catch (cv::Exception const &)
    {
        return std::nullopt;
    }
}

/// Empty images, several channels, different depths.
std::vector<std::array<cv::Mat, 2>> RefusedPairs()
{
    cv::Mat const bytes = Draw<uchar>({"12", "34"});
    return {
        {bytes, cv::Mat()},
        {cv::Mat(), bytes},
        {cv::Mat(), cv::Mat()},
        {bytes, cv::Mat(0, 3, CV_8U)},
        {Draw<cv::Vec2b>({"12", "34"}), bytes},
        {bytes, Draw<cv::Vec3b>({"12", "34"})},
        {Draw<cv::Vec3b>({"12", "34"}), Draw<cv::Vec3b>({"12", "34"})},
        {bytes, Draw<ushort>({"12", "34"})},
        {Draw<float>({"12", "34"}), Draw<double>({"12", "34"})},
    };
}

TEST(FindBestMatching, FindsWhereTheTemplateLies)
{
    cv::Mat const templ = Draw<uchar>({"12", "35"});
    cv::Mat const image = Draw<uchar>(
        {".....", //
         "...12", //
         "...35", //
         "....."});
    for (int const method : kMethods)
    {
        SCOPED_TRACE(method);
        Fit const fit = FitOf(image, templ, method);
        EXPECT_TRUE(fit.answer);
        EXPECT_EQ(fit.x, 3);
        EXPECT_EQ(fit.y, 1);
    }
    // 1 + 4 + 9 + 25 in common; no difference.
    EXPECT_NEAR(FitOf(image, templ, cv::TM_CCORR).score, 39.0, kRounding);
    EXPECT_NEAR(FitOf(image, templ, cv::TM_SQDIFF).score, 0.0, kRounding);
    EXPECT_NEAR(FitOf(image, templ, cv::TM_CCORR_NORMED).score, 1.0, kRounding);
}

TEST(FindBestMatching, NegatesSquaredDifferences)
{
    // 2 is off by 1 and 3 off by 2.
    Fit const fit = FitOf(Draw<uchar>({"9129"}), Draw<uchar>({"24"}), cv::TM_SQDIFF);
    EXPECT_EQ(fit.x, 1);
    EXPECT_NEAR(fit.score, -5.0, kRounding);
    EXPECT_LT(FitOf(Draw<uchar>({"9129"}), Draw<uchar>({"24"}), cv::TM_SQDIFF_NORMED).score, 0.0);
}

TEST(FindBestTranslation, CountsFromTheMiddlesLessOne)
{
    // In the middle of a larger image: -1.
    cv::Mat const image = Draw<uchar>({"....", ".12.", ".35.", "...."});
    cv::Mat const templ = Draw<uchar>({"12", "35"});
    Fit fit = TranslationOf(image, templ, cv::TM_CCORR);
    EXPECT_TRUE(fit.answer);
    EXPECT_EQ(fit.x, -1);
    EXPECT_EQ(fit.y, -1);
    EXPECT_NEAR(fit.score, 39.0 / 4.0, kRounding);
    fit = TranslationOf(templ, image, cv::TM_CCORR);
    EXPECT_EQ(fit.x, 1);
    EXPECT_EQ(fit.y, 1);
    EXPECT_NEAR(fit.score, 39.0 / 4.0, kRounding);
    // A half is rounded down: the middle of 2 at 1 lies half a pixel left of that of 5.
    fit = TranslationOf(Draw<uchar>({".12..", ".35..", "....."}), templ, cv::TM_CCORR);
    EXPECT_EQ(fit.x, -2);
    EXPECT_EQ(fit.y, -2);
    fit = TranslationOf(templ, templ, cv::TM_CCORR);
    EXPECT_EQ(fit.x, -1);
    EXPECT_EQ(fit.y, -1);
}

TEST(FindBestTranslation, FindsOverlapsOfAPixel)
{
    cv::Mat const image = Draw<uchar>({"...", "...", "..9"});
    cv::Mat const templ = Draw<uchar>({"9..", "...", "..."});
    // The first pixel of the template on the last of the image: two to the right, less one.
    Fit const fit = TranslationOf(image, templ, cv::TM_CCORR);
    EXPECT_EQ(fit.x, 1);
    EXPECT_EQ(fit.y, 1);
    EXPECT_NEAR(fit.score, 9.0, kRounding);
    EXPECT_EQ(TranslationOf(templ, image, cv::TM_CCORR).x, -3);
}

TEST(FindBestTranslation, OfSwappedImages_IsTheOpposite)
{
    Random random(9301);
    for (int repeat = 0; repeat < 60; ++repeat)
    {
        cv::Mat const image = RandomValues(random, {1 + random.Below(12), 1 + random.Below(12)}, CV_8U);
        cv::Mat const templ = RandomValues(random, {1 + random.Below(12), 1 + random.Below(12)}, CV_8U);
        if (image.total() == templ.total()) continue;
        Fit const fit = TranslationOf(image, templ, cv::TM_CCORR);
        Fit const swapped = TranslationOf(templ, image, cv::TM_CCORR);
        ASSERT_TRUE(fit.answer);
        EXPECT_EQ(swapped, (Fit{true, -fit.x, -fit.y, fit.angle, fit.score}));
    }
}

TEST(FindBestTransformation, FindsTheAngle)
{
    Random random(9302);
    cv::Mat const templ = RandomValues(random, {14, 9}, CV_8U);
    cv::Mat turned;
    double dx = 0.0;
    double dy = 0.0;
    utils::RotateImage(templ, 50.0, turned, dx, dy);
    cv::Mat image = cv::Mat::zeros(31, 35, CV_8U);
    turned.copyTo(image(cv::Rect({9, 4}, turned.size())));
    Fit const fit = TransformationOf(image, templ, cv::TM_CCORR, {10.0, 90.0, 10.0});
    EXPECT_TRUE(fit.answer);
    EXPECT_EQ(fit.angle, 50.0);
    // The middle of 17 at 9 is that of 35.
    ASSERT_EQ(turned.size(), cv::Size(17, 17));
    EXPECT_EQ(fit.x, -1);
    EXPECT_EQ(fit.y, 4 + 8 - 15 - 1);
    EXPECT_NEAR(fit.score, cv::norm(turned, cv::NORM_L2SQR) / static_cast<double>(turned.total()), kRounding);
}

TEST(FindBestTransformation, LeavesTheLastAngleOut)
{
    cv::Mat const image = Draw<uchar>({".9.", ".5.", "..."});
    cv::Mat const templ = Draw<uchar>({"...", "59.", "..."});
    // Turned by 90 degrees the images are the same.
    double const angle = TransformationOf(image, templ, cv::TM_SQDIFF, {-270.0, 360.0, 90.0}).angle;
    EXPECT_TRUE(angle == -90.0 || angle == 270.0 || angle == 90.0 || angle == -270.0);
    double const same = std::fmod(angle + 360.0, 360.0);
    EXPECT_EQ(TransformationOf(image, templ, cv::TM_SQDIFF, {same - 90.0, same + 1.0, 90.0}).angle, same);
    EXPECT_NE(TransformationOf(image, templ, cv::TM_SQDIFF, {same - 90.0, same, 90.0}).angle, same);
    // 0.5 angles are one.
    EXPECT_EQ(TransformationOf(image, templ, cv::TM_SQDIFF, {20.0, 25.0, 10.0}).angle, 20.0);
}

TEST(FindBestTransformation, OfEqualScores_KeepsTheFirstAngle)
{
    cv::Mat const image = cv::Mat::zeros(9, 9, CV_8U);
    cv::Mat const templ = cv::Mat::zeros(3, 3, CV_8U);
    for (int const threads : tests::kThreadCounts)
    {
        tests::ThreadCount const count(threads);
        Fit const fit = TransformationOf(image, templ, cv::TM_CCORR, {5.0, 400.0, 2.5});
        EXPECT_EQ(fit.angle, 5.0);
        EXPECT_EQ(fit.score, 0.0);
    }
}

TEST(FindBestTransformation, WithoutAngles_HasNoScore)
{
    cv::Mat const image = Draw<uchar>({".9.", ".5.", "..."});
    EXPECT_EQ(TransformationOf(image, image, cv::TM_CCORR, {5.0, 5.0, 1.0}), (Fit{true, -77, -78, -79.0, kLowest}));
    EXPECT_EQ(TransformationOf(image, image, cv::TM_CCORR, {5.0, 4.5, 1.0}), (Fit{true, -77, -78, -79.0, kLowest}));
    EXPECT_EQ(TransformationOf(image, image, cv::TM_CCORR, {5.0, 5.5, -1.0}), (Fit{true, -77, -78, -79.0, kLowest}));
    // Backwards, there are some.
    EXPECT_EQ(TransformationOf(image, image, cv::TM_SQDIFF, {40.0, -40.0, -40.0}).angle, 0.0);
}

TEST(FindBestTransformation, OfANumberOfAnglesThatCannotBe_Throws)
{
    cv::Mat const image = Draw<uchar>({".9.", ".5.", "..."});
    double const infinity = std::numeric_limits<double>::infinity();
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (Angles const & angles :
         {Angles{5.0, 3.0, 1.0}, Angles{5.0, 7.0, -1.0}, Angles{5.0, 7.0, 0.0}, Angles{5.0, infinity, 1.0},
          Angles{0.0, 1e12, 1.0}, Angles{nan, 7.0, 1.0}})
    {
        Fit fit;
        EXPECT_THROW(
            std::ignore = FindBestTransformation(
                image, image, fit.x, fit.y, fit.angle, fit.score, cv::TM_CCORR, angles.start, angles.end, angles.step),
            std::length_error);
        EXPECT_EQ(fit, Fit());
    }
}

TEST(FindBestTransformation, OfRefusedImages_HasNoScore)
{
    for (auto const & [image, templ] : RefusedPairs())
    {
        SCOPED_TRACE(cv::typeToString(image.type()) + ", " + cv::typeToString(templ.type()));
        // An empty image of the same depth is a square of one pixel when it is turned.
        if (templ.empty() && !image.empty()) continue;
        EXPECT_EQ(
            TransformationOf(image, templ, cv::TM_CCORR, {0.0, 30.0, 10.0}), (Fit{false, -77, -78, -79.0, kLowest}));
        EXPECT_EQ(
            TransformationOf(image, templ, cv::TM_CCORR, {0.0, 0.0, 10.0}), (Fit{true, -77, -78, -79.0, kLowest}));
    }
    cv::Mat const image = Draw<uchar>({".9.", ".5.", "..."});
    EXPECT_EQ(
        TransformationOf(image, cv::Mat(0, 0, CV_8U), cv::TM_SQDIFF, {0.0, 30.0, 10.0}),
        tests::OracleTransformation(image, cv::Mat(0, 0, CV_8U), cv::TM_SQDIFF, {0.0, 30.0, 10.0}));
}

TEST(FindBestMatching, OfRefusedImages_LeavesAll)
{
    for (auto const & [image, templ] : RefusedPairs())
    {
        SCOPED_TRACE(cv::typeToString(image.type()) + ", " + cv::typeToString(templ.type()));
        for (int const method : {int{cv::TM_CCORR}, 77})
        {
            EXPECT_EQ(FitOf(image, templ, method), Fit());
            EXPECT_EQ(TranslationOf(image, templ, method), Fit());
        }
    }
}

TEST(FindBestMatching, PassesTheExceptionsOfOpenCVOn)
{
    cv::Mat const image = Draw<uchar>({"1234", "5678"});
    for (int const method : {-1, 6, 77})
    {
        EXPECT_THROW(std::ignore = FitOf(image, image, method), cv::Exception);
        EXPECT_THROW(std::ignore = TranslationOf(image, image, method), cv::Exception);
        for (int const threads : {1, 3})
        {
            tests::ThreadCount const count(threads);
            EXPECT_THROW(std::ignore = TransformationOf(image, image, method, {0.0, 5.0, 1.0}), cv::Exception);
        }
    }
    EXPECT_THROW(std::ignore = FitOf(image, Draw<uchar>({"1", "2", "3"}), cv::TM_CCORR), cv::Exception);
}

TEST(FindBestRandom, AgreesWithThePlainForm)
{
    Random random(9303);
    for (int const depth : {CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F})
    {
        for (int repeat = 0; repeat < 60; ++repeat)
        {
            FramedImage image(RandomValues(random, {1 + random.Below(16), 1 + random.Below(16)}, depth));
            FramedImage templ(RandomValues(random, {1 + random.Below(12), 1 + random.Below(12)}, depth));
            int const method = kMethods.at(static_cast<std::size_t>(random.Below(6)));
            double const start = random.Below(3600) * 0.1;
            Angles const angles{start, start + random.Below(60), 7.3};
            SCOPED_TRACE(tests::Case(depth, image.View().size(), method));
            EXPECT_EQ(Try([&] { return FitOf(image.View(), templ.View(), method); }), Try([&] {
                          return tests::OracleMatching(image.View(), templ.View(), method);
                      }));
            EXPECT_EQ(
                TranslationOf(image.View(), templ.View(), method),
                tests::OracleTranslation(image.View(), templ.View(), method));
            EXPECT_EQ(
                TransformationOf(image.View(), templ.View(), method, angles),
                tests::OracleTransformation(image.View(), templ.View(), method, angles));
            EXPECT_TRUE(image.IsFrameUntouched() && templ.IsFrameUntouched());
            if (testing::Test::HasFailure()) return;
        }
    }
}

TEST(FindBestRandom, IsTheSameAtAnyThreadCount)
{
    Random random(9304);
    cv::Mat const image = RandomValues(random, {90, 71}, CV_16U);
    cv::Mat const templ = RandomValues(random, {40, 33}, CV_16U);
    Angles const angles{-20.0, 20.0, 1.7};
    Fit const expected = tests::OracleTransformation(image, templ, cv::TM_CCOEFF, angles);
    for (int const threads : tests::kThreadCounts)
    {
        SCOPED_TRACE(threads);
        tests::ThreadCount const count(threads);
        EXPECT_EQ(TransformationOf(image, templ, cv::TM_CCOEFF, angles), expected);
    }
}

} // namespace

} // namespace morvane::algorithm::OpenCV
