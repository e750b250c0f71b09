#include "apps/ProgramFixture.h"

#include <morvane/features/Normals.h>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using morvane::tests::Program;
using morvane::tests::Read;

/// What the library finds, with 0 in place of the distance where there is no slope.
struct Found
{
    cv::Mat1f slope;
    cv::Mat1f rms;
    int slopes = 0;
    double mean = 0.0;
};

/// Heights that rise with the column by one for a pixel, uneven by a fraction, with a gap of 0 in the middle.
cv::Mat1f Ramp()
{
    cv::Mat1f heights(11, 14);
    cv::RNG random(5);
    for (int row = 0; row < heights.rows; ++row)
    {
        for (int column = 0; column < heights.cols; ++column)
        {
            heights(row, column) = static_cast<float>(40 + 4 * column + random.uniform(0, 2)) / 4.0F;
        }
    }
    heights(cv::Rect(5, 4, 4, 3)) = 0.0F;
    return heights;
}

Found Expected(cv::Mat1f const & heights, cv::Mat const & mask, float pixelSize, unsigned int kernel)
{
    cv::Mat normals;
    cv::Mat slope;
    cv::Mat rms;
    EXPECT_TRUE(morvane::features::ComputeNormalSlopeAndRms(heights, mask, pixelSize, kernel, normals, slope, rms));
    Found found{slope, rms};
    double sum = 0.0;
    for (int row = 0; row < slope.rows; ++row)
    {
        for (int column = 0; column < slope.cols; ++column)
        {
            if (found.slope(row, column) == -1.0F)
            {
                found.rms(row, column) = 0.0F;
                continue;
            }
            ++found.slopes;
            sum += static_cast<double>(found.slope(row, column));
        }
    }
    found.mean = found.slopes == 0 ? 0.0 : sum / found.slopes;
    return found;
}

void ExpectSame(cv::Mat const & actual, cv::Mat1f const & expected)
{
    ASSERT_EQ(actual.type(), CV_32FC1);
    ASSERT_EQ(actual.size(), expected.size());
    EXPECT_EQ(cv::norm(actual, expected, cv::NORM_INF), 0.0);
}

class SlopeCommand : public Program
{
protected:
    void Store(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    void ExpectFound(std::vector<std::string> arguments, int measured, Found const & expected) const
    {
        arguments.insert(arguments.begin(), "slope");
        arguments.insert(arguments.end(), {"-o", In("slope.tif"), "--rms", In("rms.tif")});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        ExpectSame(Read(In("slope.tif")), expected.slope);
        ExpectSame(Read(In("rms.tif")), expected.rms);
        std::ostringstream lines;
        lines << "\nmeasured  " << measured << "\nslopes  " << expected.slopes << "\nmean slope  " << expected.mean
              << '\n';
        EXPECT_NE(outcome.output.find(lines.str()), std::string::npos) << lines.str() << outcome.output;
        EXPECT_EQ(outcome.output.find("--scale"), std::string::npos) << outcome.output;
    }
};

TEST_F(SlopeCommand, MeasuresWhatIsNot0)
{
    cv::Mat1f const heights = Ramp();
    cv::Mat const mask = heights != 0.0F;
    Found const expected = Expected(heights, mask, 1.0F, 3);
    EXPECT_NEAR(expected.mean, 45.0, 3.0);
    EXPECT_EQ(expected.slopes, 11 * 14 - 4 * 3);
    // NaN is a gap too.
    cv::Mat1f broken = heights.clone();
    broken.setTo(std::numeric_limits<float>::quiet_NaN(), heights == 0.0F);
    Store("heights.tif", broken);
    ExpectFound({In("heights.tif"), "--pixel-size", "1"}, cv::countNonZero(mask), expected);
    ExpectFound(
        {In("heights.tif"), "--pixel-size", "0.75", "--kernel", "5"}, cv::countNonZero(mask),
        Expected(heights, mask, 0.75F, 5));
}

TEST_F(SlopeCommand, Mask_SaysWhatWasMeasured)
{
    cv::Mat1f const heights = Ramp();
    cv::Mat1f mask(heights.size(), 0.0F);
    mask(cv::Rect(2, 0, 9, 10)) = -0.5F;
    Store("heights.tif", heights);
    Store("mask.tif", mask);
    ExpectFound(
        {In("heights.tif"), "--pixel-size", "1", "--mask", In("mask.tif")}, 90,
        Expected(heights, mask != 0.0F, 1.0F, 3));
}

TEST_F(SlopeCommand, Scale_MultipliesHeightsAndPixelsAlike)
{
    cv::Mat1f const heights = Ramp();
    cv::Mat const mask = heights != 0.0F;
    Store("metres.tif", cv::Mat(heights / 1024.0F));
    ExpectFound(
        {In("metres.tif"), "--pixel-size", "0.0009765625", "--scale", "1024"}, cv::countNonZero(mask),
        Expected(heights, mask, 1.0F, 3));
    cv::Mat quarters;
    cv::Mat(heights * 4.0F).convertTo(quarters, CV_16U);
    Store("quarters.png", quarters);
    ExpectFound(
        {In("quarters.png"), "--pixel-size", "4", "--scale", "0.25"}, cv::countNonZero(mask),
        Expected(heights, mask, 1.0F, 3));

    process::Outcome const outcome =
        Run({"slope", In("metres.tif"), "--pixel-size", "0.0009765625", "--picture", In("none.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("\nslopes  0\nmean slope  0\nnote  "), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("--scale 1000"), std::string::npos) << outcome.output;
    EXPECT_EQ(cv::norm(Read(In("none.png")), cv::NORM_INF), 0.0);
}

TEST_F(SlopeCommand, Picture_GoesFromBlueToWhite)
{
    cv::Mat1f const heights = Ramp();
    Store("heights.tif", heights);
    process::Outcome const outcome =
        Run({"slope", In("heights.tif"), "--pixel-size", "1", "--picture", In("slope.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    cv::Mat1f const slope = Expected(heights, heights != 0.0F, 1.0F, 3).slope;
    double steepest = 0.0;
    cv::minMaxIdx(slope, nullptr, &steepest);
    cv::Mat const picture = Read(In("slope.png"));
    ASSERT_EQ(picture.type(), CV_8UC3);
    ASSERT_EQ(picture.size(), slope.size());
    for (int row = 0; row < slope.rows; ++row)
    {
        for (int column = 0; column < slope.cols; ++column)
        {
            auto const & colour = picture.at<cv::Vec3b>(row, column);
            auto const value = static_cast<double>(slope(row, column));
            if (value < 0.0)
            {
                EXPECT_EQ(colour, cv::Vec3b(0, 0, 0));
            }
            else if (value == steepest)
            {
                EXPECT_EQ(colour, cv::Vec3b(255, 255, 255));
            }
            else if (value > 0.76 * steepest)
            {
                // The last quarter of the scale: from yellow to red.
                EXPECT_EQ(colour[0], 0);
                EXPECT_NEAR(colour[1], (1.0 - value / steepest) * 1020.0, 1.01);
                EXPECT_EQ(colour[2], 255);
            }
        }
    }
    EXPECT_EQ(Files(), (std::set<std::string>{"heights.tif", "slope.png"}));
}

TEST_F(SlopeCommand, NamesWhatItCannotUse)
{
    Store("heights.tif", Ramp());
    Store("small.png", cv::Mat(11, 13, CV_8UC1, cv::Scalar(1.0)));
    Store("colour.png", cv::Mat(11, 14, CV_8UC3, cv::Scalar::all(1.0)));
    std::set<std::string> const before = Files();
    auto const refuses =
        [this](std::string const & image, std::vector<std::string> more, std::vector<std::string> const & named) {
            more.insert(more.begin(), {"slope", In(image), "-o", In("slope.tif")});
            ExpectFailure(more, named);
        };
    refuses("heights.tif", {}, {"--pixel-size"});
    refuses("heights.tif", {"--pixel-size", "0"}, {"--pixel-size", "0"});
    // Too small for single precision.
    refuses("heights.tif", {"--pixel-size", "1e-60"}, {"heights.tif", "refused"});
    refuses("heights.tif", {"--pixel-size", "1", "--kernel", "0"}, {"--kernel", "0"});
    refuses("heights.tif", {"--pixel-size", "1", "--scale", "-1"}, {"--scale", "-1"});
    refuses("colour.png", {"--pixel-size", "1"}, {"colour.png", "3 channels"});
    refuses("nowhere.png", {"--pixel-size", "1"}, {"nowhere.png", "no such file"});
    refuses(
        "heights.tif", {"--pixel-size", "1", "--mask", In("small.png")},
        {"small.png", "13 x 11", "heights.tif", "14 x 11"});
    refuses("heights.tif", {"--pixel-size", "1", "--rms", In("heights.tif")}, {"heights.tif", "overwritten"});
    refuses("heights.tif", {"--pixel-size", "1", "--picture", In("slope.what")}, {"slope.what", "format"});
    EXPECT_EQ(Files(), before);
}

} // namespace
