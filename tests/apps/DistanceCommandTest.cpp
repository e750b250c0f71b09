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

class DistanceCommand : public Program
{
protected:
    void SetUp() override
    {
        Program::SetUp();
        Draw("image.png", Passages());
    }

    /// Two rooms that are joined at the bottom, and one apart.
    static cv::Mat1b Passages()
    {
        return (
            cv::Mat1b(3, 7) << 7, 7, 0, 7, 7, 0, 9, //
            0, 7, 0, 7, 0, 0, 9,                    //
            7, 7, 7, 7, 7, 0, 9);
    }

    void Draw(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// What is written, after a run that reports this largest distance.
    [[nodiscard]] cv::Mat Distances(std::vector<std::string> arguments, int greatest) const
    {
        arguments.insert(arguments.begin(), "distance");
        arguments.insert(arguments.end(), {"-o", In("out.tif")});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        std::string const reported = "\ngreatest  " + std::to_string(greatest) + "\n";
        EXPECT_NE(outcome.output.find(reported), std::string::npos) << outcome.output;
        return Read(In("out.tif"));
    }

    void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named) const
    {
        arguments.insert(arguments.begin(), "distance");
        arguments.insert(arguments.end(), {"-o", In("out.tif")});
        ExpectFailure(arguments, named);
    }
};

void ExpectSame(cv::Mat const & distances, cv::Mat1f const & expected)
{
    ASSERT_EQ(distances.type(), CV_32FC1);
    ASSERT_EQ(distances.size(), expected.size());
    EXPECT_EQ(cv::norm(distances, expected, cv::NORM_INF), 0.0) << distances;
}

TEST_F(DistanceCommand, From_CountsStepsFromOnePixel)
{
    ExpectSame(
        Distances({In("image.png"), "--from", "0", "0"}, 5), (cv::Mat1f(3, 7) << 1, 2, 0, 5, 5, 0, 0, //
                                                              0, 2, 0, 4, 0, 0, 0,                    //
                                                              3, 3, 3, 4, 5, 0, 0));
    // Column first, then row.
    ExpectSame(
        Distances({In("image.png"), "--from", "6", "1"}, 2), (cv::Mat1f(3, 7) << 0, 0, 0, 0, 0, 0, 2, //
                                                              0, 0, 0, 0, 0, 0, 1,                    //
                                                              0, 0, 0, 0, 0, 0, 2));
}

TEST_F(DistanceCommand, Shape_SaysWhereAStepMayLead)
{
    cv::Mat1f const bySides =
        (cv::Mat1f(3, 7) << 1, 2, 0, 8, 9, 0, 0, //
         0, 3, 0, 7, 0, 0, 0,                    //
         5, 4, 5, 6, 7, 0, 0);
    ExpectSame(Distances({In("image.png"), "--from", "0", "0", "--shape", "cross"}, 9), bySides);
    // The ellipse of 3 by 3 is the cross.
    ExpectSame(Distances({In("image.png"), "--from", "0", "0", "--shape", "ellipse"}, 9), bySides);
}

TEST_F(DistanceCommand, Marker_StartsAtItsMeasuredPixels)
{
    // The mark in the second row lies where nothing was measured.
    cv::Mat1b marker(3, 7, uchar{0});
    marker(0, 4) = 200;
    marker(1, 2) = 1;
    Draw("marker.png", marker);
    // Of the others the nearest counts.
    marker(0, 0) = 1;
    marker(2, 6) = 1;
    Draw("marker.png", marker);
    ExpectSame(
        Distances({In("image.png"), "--marker", In("marker.png"), "--shape", "cross"}, 5),
        (cv::Mat1f(3, 7) << 1, 2, 0, 2, 1, 0, 3, //
         0, 3, 0, 3, 0, 0, 2,                    //
         5, 4, 5, 4, 5, 0, 1));
}

TEST_F(DistanceCommand, Marker_MayBeOfAnyType)
{
    Draw("image.png", cv::Mat1b(1, 4, uchar{1}));
    float const nan = std::numeric_limits<float>::quiet_NaN();
    Draw("marker.tif", (cv::Mat1f(1, 4) << nan, 0.0F, 0.0F, -0.25F));
    ExpectSame(Distances({In("image.png"), "--marker", In("marker.tif")}, 4), (cv::Mat1f(1, 4) << 4, 3, 2, 1));
}

TEST_F(DistanceCommand, OtherTypes_AreTakenToo)
{
    for (int const depth : {CV_16U, CV_16S, CV_32S, CV_64F})
    {
        SCOPED_TRACE(depth);
        cv::Mat image;
        Passages().convertTo(image, depth);
        Draw("image.tif", image);
        ExpectSame(
            Distances({In("image.tif"), "--from", "1", "1"}, 4), (cv::Mat1f(3, 7) << 2, 2, 0, 4, 4, 0, 0, //
                                                                  0, 1, 0, 3, 0, 0, 0,                    //
                                                                  2, 2, 2, 3, 4, 0, 0));
    }
}

TEST_F(DistanceCommand, NaN_IsNotMeasured_AndNegativeValuesAre)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    Draw("image.tif", (cv::Mat1f(1, 5) << 0.25F, -3.0F, 1.0F, nan, 1.0F));
    ExpectSame(Distances({In("image.tif"), "--from", "0", "0"}, 3), (cv::Mat1f(1, 5) << 1, 2, 3, 0, 0));
}

TEST_F(DistanceCommand, ManySteps_AreCountedInImagesOfBytesToo)
{
    Draw("image.png", cv::Mat1b(1, 1000, uchar{1}));
    cv::Mat1f expected(1, 1000);
    for (int x = 0; x < expected.cols; ++x)
    {
        expected(0, x) = static_cast<float>(x + 1);
    }
    ExpectSame(Distances({In("image.png"), "--from", "0", "0"}, 1000), expected);
}

TEST_F(DistanceCommand, Picture_GoesFromBlueToRed)
{
    Draw("image.png", (cv::Mat1b(1, 6) << 1, 1, 1, 1, 1, 0));
    process::Outcome const outcome =
        Run({"distance", In("image.png"), "--from", "0", "0", "--picture", In("picture.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("size   6 x 1\n"), std::string::npos) << outcome.output;
    cv::Mat const picture = Read(In("picture.png"));
    ASSERT_EQ(picture.type(), CV_8UC3);
    // Of 1275 steps over distances from 1 to 5: 0, 318 (blue full, green 63), 637 (green full, blue falls), 956 (red
    // comes up beside green), and the upper end, which is white. The last pixel is not measured.
    cv::Mat3b const expected =
        (cv::Mat3b(1, 6) << cv::Vec3b(0, 0, 0), cv::Vec3b(255, 63, 0), cv::Vec3b(128, 255, 0), cv::Vec3b(0, 255, 191),
         cv::Vec3b(255, 255, 255), cv::Vec3b(0, 0, 0));
    ASSERT_EQ(picture.size(), expected.size());
    EXPECT_EQ(cv::norm(picture, expected, cv::NORM_INF), 0.0) << picture;
    EXPECT_EQ(Files(), (std::set<std::string>{"image.png", "picture.png"}));
}

TEST_F(DistanceCommand, NamesASwitchThatItCannotUse)
{
    std::set<std::string> const before = Files();
    std::string const image = In("image.png");
    Refuses({"--from", "0", "0"}, {"image"});
    Refuses({image}, {"exactly one", "--marker", "--from"});
    Refuses({image, "--from", "0", "0", "--marker", image}, {"exactly one", "--marker", "--from"});
    Refuses({image, "--from", "0"}, {"--from"});
    Refuses({image, "--from", "0.5", "0"}, {"--from", "0.5"});
    Refuses({image, "--from", "0", "0", "--shape", "star"}, {"--shape", "star", "rectangle, cross, ellipse"});
    EXPECT_EQ(Files(), before);
}

TEST_F(DistanceCommand, NamesAStartThatLeadsNowhere)
{
    cv::Mat1b marker(3, 7, uchar{0});
    marker(0, 2) = 1;
    Draw("beside.png", marker);
    std::set<std::string> const before = Files();
    std::string const image = In("image.png");
    Refuses({image, "--from", "7", "0"}, {"image.png", "column 7, row 0", "outside"});
    Refuses({image, "--from", "-1", "0"}, {"image.png", "column -1, row 0", "outside"});
    Refuses({image, "--from", "2", "1"}, {"image.png", "column 2, row 1", "nothing was measured"});
    Refuses({image, "--marker", In("beside.png")}, {"beside.png", "no pixel", "image.png"});
    EXPECT_EQ(Files(), before);
}

TEST_F(DistanceCommand, NamesAnImageThatItCannotUse)
{
    Draw("colour.png", cv::Mat(3, 7, CV_8UC3, cv::Scalar::all(1)));
    Draw("small.png", cv::Mat(3, 6, CV_8UC1, cv::Scalar(1)));
    std::set<std::string> const before = Files();
    auto const refuses = [this](std::string const & name, std::vector<std::string> const & named) {
        Refuses({In(name), "--from", "0", "0"}, named);
        Refuses({In("image.png"), "--marker", In(name)}, named);
    };
    refuses("nowhere.png", {"nowhere.png", "no such file"});
    refuses("colour.png", {"colour.png", "3 channels"});
    Refuses({In("image.png"), "--marker", In("small.png")}, {"small.png", "6 x 3", "image.png", "7 x 3"});
    EXPECT_EQ(Files(), before);
}

TEST_F(DistanceCommand, NamesAnOutputThatItCannotWrite)
{
    Draw("image.tif", Passages());
    Draw("marker.tif", Passages());
    std::set<std::string> const before = Files();
    auto const distance = [this](std::vector<std::string> more) {
        more.insert(more.begin(), {"distance", In("image.tif"), "--marker", In("marker.tif")});
        return more;
    };
    ExpectFailure(distance({"-o", In("out.png")}), {"out.png", ".tif"});
    ExpectFailure(distance({"-o", In("image.tif")}), {"image.tif", "overwritten"});
    ExpectFailure(distance({"-o", In("marker.tif")}), {"marker.tif", "overwritten"});
    ExpectFailure(distance({"--picture", In("image.tif")}), {"image.tif", "overwritten"});
    ExpectFailure(distance({"--picture", In("marker.tif")}), {"marker.tif", "overwritten"});
    ExpectFailure(distance({"--picture", In("out.what")}), {"out.what", "format"});
    EXPECT_EQ(Files(), before);
}

} // namespace
