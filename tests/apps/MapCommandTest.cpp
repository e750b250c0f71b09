#include "apps/ProgramFixture.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <limits>
#include <set>
#include <string>
#include <vector>

namespace
{

using morvane::tests::Program;
using morvane::tests::Read;

class MapCommand : public Program
{
protected:
    void SetUp() override
    {
        Program::SetUp();
        cv::Mat1f const values = (cv::Mat1f(1, 5) << 0.0F, 10.0F, 15.0F, 20.0F, 30.0F);
        ASSERT_TRUE(cv::imwrite(In("values.tif"), values));
    }

    void Map(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"map", In("values.tif")});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_NE(outcome.output.find("size   5 x 1\n"), std::string::npos) << outcome.output;
    }

    [[nodiscard]] cv::Mat1b Grey(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.end(), {"--grey", In("grey.png")});
        Map(arguments);
        cv::Mat picture = Read(In("grey.png"));
        EXPECT_EQ(picture.type(), CV_8UC1);
        return picture;
    }

    [[nodiscard]] cv::Mat3b Colour(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.end(), {"--colour", In("colour.png")});
        Map(arguments);
        cv::Mat picture = Read(In("colour.png"));
        EXPECT_EQ(picture.type(), CV_8UC3);
        return picture;
    }
};

std::vector<int> Row(cv::Mat1b const & picture)
{
    return {picture.begin(), picture.end()};
}

std::vector<cv::Vec3b> Row(cv::Mat3b const & picture)
{
    return {picture.begin(), picture.end()};
}

cv::Vec3b const kBlack(0, 0, 0);
cv::Vec3b const kWhite(255, 255, 255);

TEST_F(MapCommand, Grey_SpreadsTheRangeOfTheImage)
{
    EXPECT_EQ(Row(Grey({})), (std::vector<int>{0, 85, 127, 170, 255}));
}

TEST_F(MapCommand, Range_CutsWhatLiesOutside)
{
    EXPECT_EQ(Row(Grey({"--range", "10", "20"})), (std::vector<int>{0, 0, 127, 255, 255}));
}

TEST_F(MapCommand, NoZero_TakesTheRangeOfTheMeasuredPixels)
{
    EXPECT_EQ(Row(Grey({"--no-zero"})), (std::vector<int>{0, 0, 63, 127, 255}));
}

TEST_F(MapCommand, Colour_GoesFromGreenOverYellowToRed)
{
    // Of 511 steps: 0, 170, 255 (red full, green begins to fall), 340, and the upper end, which is white.
    EXPECT_EQ(
        Row(Colour({})), (std::vector<cv::Vec3b>{{0, 255, 0}, {0, 255, 170}, {0, 255, 255}, {0, 170, 255}, kWhite}));
}

TEST_F(MapCommand, ColourNoZero_HasItsOwnScale)
{
    // Of 1275 steps: below the range, 0, 318 (blue full, green 63), 637 (green full, blue falls), the upper end.
    EXPECT_EQ(
        Row(Colour({"--no-zero"})), (std::vector<cv::Vec3b>{kBlack, kBlack, {255, 63, 0}, {128, 255, 0}, kWhite}));
}

TEST_F(MapCommand, BothPictures_AreMadeAtOnce)
{
    EXPECT_EQ(Row(Grey({"--color", In("colour.png")})), (std::vector<int>{0, 85, 127, 170, 255}));
    EXPECT_EQ(Read(In("colour.png")).type(), CV_8UC3);
}

TEST_F(MapCommand, NaN_CountsAsNothingMeasured)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat1f const values = (cv::Mat1f(1, 5) << nan, 10.0F, 15.0F, 20.0F, 30.0F);
    ASSERT_TRUE(cv::imwrite(In("values.tif"), values));
    EXPECT_EQ(Row(Grey({})), (std::vector<int>{0, 85, 127, 170, 255}));
    EXPECT_EQ(Row(Grey({"--no-zero"})), (std::vector<int>{0, 0, 63, 127, 255}));
}

TEST_F(MapCommand, NamesWhatItCannotUse)
{
    ASSERT_TRUE(cv::imwrite(In("colour.png"), cv::Mat(3, 4, CV_8UC3, cv::Scalar::all(1))));
    std::set<std::string> const before = Files();
    ExpectFailure({"map", In("values.tif")}, {"--grey", "--colour"});
    ExpectFailure({"map", In("colour.png"), "--grey", In("grey.png")}, {"colour.png", "3 channels"});
    ExpectFailure({"map", In("values.tif"), "--grey", In("grey.png"), "--range", "1"}, {"--range"});
    ExpectFailure({"map", In("values.tif"), "--grey", In("grey.what")}, {"grey.what", "format"});
    ExpectFailure({"map", In("values.tif"), "--grey", In("a.png"), "--colour", In("a.png")}, {"a.png", "two outputs"});
    ExpectFailure({"map", In("nowhere.tif"), "--grey", In("grey.png")}, {"nowhere.tif", "no such file"});
    EXPECT_EQ(Files(), before);
}

} // namespace
