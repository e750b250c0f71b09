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

class ReconstructCommand : public Program
{
protected:
    void SetUp() override
    {
        Program::SetUp();
        Draw("peaks.png", (cv::Mat1b(1, 7) << 10, 30, 10, 20, 50, 20, 10));
        // A hollow whose rim has a gap at a corner.
        Draw(
            "bowl.png", (cv::Mat1b(5, 5) << 5, 5, 5, 5, 5, //
                         5, 1, 9, 9, 5,                    //
                         5, 9, 2, 9, 5,                    //
                         5, 9, 9, 9, 5,                    //
                         5, 5, 5, 5, 5));
    }

    void Draw(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// What is written, after a run that reports so many changed pixels.
    [[nodiscard]] cv::Mat Reconstructed(std::vector<std::string> arguments, int changed) const
    {
        arguments.insert(arguments.begin(), "reconstruct");
        arguments.insert(arguments.end(), {"-o", In("out.tif")});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        std::string const counted = "changed  " + std::to_string(changed) + "\n";
        EXPECT_NE(outcome.output.find(counted), std::string::npos) << outcome.output;
        return Read(In("out.tif"));
    }

    /// Runs the command with its output in place.
    void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named) const
    {
        arguments.insert(arguments.begin(), "reconstruct");
        arguments.insert(arguments.end(), {"-o", In("out.tif")});
        ExpectFailure(arguments, named);
    }
};

void ExpectSame(cv::Mat const & image, cv::Mat const & expected)
{
    ASSERT_EQ(image.type(), expected.type());
    ASSERT_EQ(image.size(), expected.size());
    EXPECT_EQ(cv::norm(image, expected, cv::NORM_INF), 0.0) << image;
}

/// Two rooms of 3 by 3 and a corridor of one row between them, in walls of another value.
cv::Mat1b Rooms(int inside, int wall)
{
    cv::Mat1b rooms(5, 10, static_cast<uchar>(wall));
    rooms(cv::Rect(1, 1, 3, 3)).setTo(inside);
    rooms(cv::Rect(6, 1, 3, 3)).setTo(inside);
    rooms(cv::Rect(4, 2, 2, 1)).setTo(inside);
    return rooms;
}

TEST_F(ReconstructCommand, Lower_CutsEachPeakByTheAmount)
{
    // The smaller peak keeps what the valley beside it lets through.
    ExpectSame(Reconstructed({In("peaks.png"), "--lower", "25"}, 2), (cv::Mat1b(1, 7) << 10, 10, 10, 20, 25, 20, 10));
}

TEST_F(ReconstructCommand, Raise_FillsEachPitByTheAmount)
{
    Draw("pits.tif", (cv::Mat1s(1, 7) << 50, 30, 50, 40, -10, 40, 50));
    ExpectSame(
        Reconstructed({In("pits.tif"), "--erode", "--raise", "10"}, 2), (cv::Mat1s(1, 7) << 50, 40, 50, 40, 0, 40, 50));
    Draw("pits.tif", (cv::Mat1i(1, 7) << 50, 30, 50, 40, -70000, 40, 50));
    ExpectSame(
        Reconstructed({In("pits.tif"), "--erode", "--raise", "10", "--connexity", "4"}, 2),
        (cv::Mat1i(1, 7) << 50, 40, 50, 40, -69990, 40, 50));
}

TEST_F(ReconstructCommand, Marker_SpreadsFromWhereItIs)
{
    Draw("words.png", (cv::Mat1w(1, 7) << 100, 300, 100, 200, 500, 200, 100));
    Draw("marker.png", (cv::Mat1w(1, 7) << 0, 0, 0, 0, 2000, 0, 0));
    ExpectSame(
        Reconstructed({In("words.png"), "--marker", In("marker.png")}, 1),
        (cv::Mat1w(1, 7) << 100, 100, 100, 200, 500, 200, 100));
}

TEST_F(ReconstructCommand, Frame_KeepsWhatTheEdgeReaches)
{
    ExpectSame(
        Reconstructed({In("bowl.png"), "--frame"}, 7), (cv::Mat1b(5, 5) << 5, 5, 5, 5, 5, //
                                                        5, 1, 5, 5, 5,                    //
                                                        5, 5, 2, 5, 5,                    //
                                                        5, 5, 5, 5, 5,                    //
                                                        5, 5, 5, 5, 5));
    ExpectSame(
        Reconstructed({In("bowl.png"), "--frame", "--erode"}, 2), (cv::Mat1b(5, 5) << 5, 5, 5, 5, 5, //
                                                                   5, 5, 9, 9, 5,                    //
                                                                   5, 9, 5, 9, 5,                    //
                                                                   5, 9, 9, 9, 5,                    //
                                                                   5, 5, 5, 5, 5));
}

TEST_F(ReconstructCommand, Shape_DecidesWhetherCornersLeadOn)
{
    cv::Mat1b const bySides =
        (cv::Mat1b(5, 5) << 5, 5, 5, 5, 5, //
         5, 5, 9, 9, 5,                    //
         5, 9, 9, 9, 5,                    //
         5, 9, 9, 9, 5,                    //
         5, 5, 5, 5, 5);
    cv::Mat1b byCorners = bySides.clone();
    byCorners(2, 2) = 5;
    std::vector<std::string> const frame{In("bowl.png"), "--frame", "--erode"};
    auto const with = [&frame](std::vector<std::string> more) {
        more.insert(more.begin(), frame.begin(), frame.end());
        return more;
    };
    ExpectSame(Reconstructed(with({"--shape", "cross"}), 2), bySides);
    // The ellipse of 3 by 3 is the cross.
    ExpectSame(Reconstructed(with({"--shape", "ellipse"}), 2), bySides);
    ExpectSame(Reconstructed(with({"--connexity", "8"}), 2), byCorners);
}

TEST_F(ReconstructCommand, Size_LetsTheMarkerLeap)
{
    Draw("gap.png", (cv::Mat1b(1, 6) << 50, 0, 50, 0, 0, 50));
    Draw("marker.png", (cv::Mat1b(1, 6) << 50, 0, 0, 0, 0, 0));
    ExpectSame(
        Reconstructed({In("gap.png"), "--marker", In("marker.png"), "--size", "5"}, 1),
        (cv::Mat1b(1, 6) << 50, 0, 50, 0, 0, 0));
}

TEST_F(ReconstructCommand, Viscosity_KeepsTheMarkerOutOfACorridor)
{
    cv::Mat1b const rooms = Rooms(9, 0);
    cv::Mat1b marker(rooms.size(), uchar{0});
    marker(2, 2) = 9;
    Draw("rooms.png", rooms);
    Draw("marker.png", marker);
    ExpectSame(Reconstructed({In("rooms.png"), "--marker", In("marker.png")}, 0), rooms);
    cv::Mat1b firstRoom(rooms.size(), uchar{0});
    firstRoom(cv::Rect(1, 1, 3, 3)).setTo(9);
    ExpectSame(Reconstructed({In("rooms.png"), "--marker", In("marker.png"), "--viscosity", "3"}, 11), firstRoom);

    Draw("rooms.png", Rooms(0, 9));
    Draw("marker.png", cv::Mat(9 - marker));
    ExpectSame(
        Reconstructed({In("rooms.png"), "--erode", "--marker", In("marker.png"), "--viscosity", "3"}, 11),
        cv::Mat(9 - firstRoom));
}

TEST_F(ReconstructCommand, WrappedConnexity_CrossesTheSeam)
{
    Draw("gap.tif", (cv::Mat1f(1, 5) << 5.5F, 0.0F, 5.5F, 0.0F, 5.5F));
    Draw("marker.tif", (cv::Mat1f(1, 5) << 5.5F, 0.0F, 0.0F, 0.0F, 0.0F));
    ExpectSame(
        Reconstructed({In("gap.tif"), "--marker", In("marker.tif"), "--connexity", "4-wrapped"}, 1),
        (cv::Mat1f(1, 5) << 5.5F, 0.0F, 0.0F, 0.0F, 5.5F));
}

TEST_F(ReconstructCommand, NaN_CountsAsZero)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    Draw("holes.tif", (cv::Mat1f(1, 7) << nan, 30.0F, 10.0F, 20.0F, 50.0F, 20.0F, 10.0F));
    ExpectSame(
        Reconstructed({In("holes.tif"), "--lower", "10.5"}, 2),
        (cv::Mat1f(1, 7) << 0.0F, 19.5F, 10.0F, 20.0F, 39.5F, 20.0F, 10.0F));
    double const nothing = std::numeric_limits<double>::quiet_NaN();
    Draw("holes.tif", (cv::Mat1d(1, 3) << 30.0, nothing, 50.0));
    ExpectSame(Reconstructed({In("holes.tif"), "--lower", "0.5"}, 2), (cv::Mat1d(1, 3) << 29.5, 0.0, 49.5));
}

TEST_F(ReconstructCommand, Picture_SpreadsTheRangeOfTheMeasuredPixels)
{
    process::Outcome const outcome =
        Run({"reconstruct", In("peaks.png"), "--lower", "10", "--picture", In("picture.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("size   7 x 1\n"), std::string::npos) << outcome.output;
    // 10 to 40, so that 20 lies at a third of the way.
    ExpectSame(Read(In("picture.png")), (cv::Mat1b(1, 7) << 0, 85, 0, 85, 255, 85, 0));
    EXPECT_FALSE(Files().contains("out.tif"));
}

TEST_F(ReconstructCommand, Switches_ThatDoNotGoTogetherAreNamed)
{
    std::set<std::string> const before = Files();
    std::string const image = In("peaks.png");
    Refuses({}, {"image"});
    Refuses({image}, {"exactly one", "--marker", "--lower", "--raise", "--frame"});
    Refuses({image, "--marker", image, "--frame"}, {"exactly one", "--marker", "--lower", "--raise", "--frame"});
    Refuses({image, "--marker", image, "--lower", "1"}, {"exactly one", "--marker", "--lower", "--raise", "--frame"});
    Refuses(
        {image, "--frame", "--erode", "--raise", "1"}, {"exactly one", "--marker", "--lower", "--raise", "--frame"});
    Refuses({image, "--lower", "1", "--erode"}, {"--lower", "--erode"});
    Refuses({image, "--raise", "1"}, {"--raise", "--erode"});
    Refuses({image, "--frame", "--connexity", "4", "--shape", "cross"}, {"--connexity", "--shape"});
    Refuses({image, "--frame", "--connexity", "4", "--size", "3"}, {"--connexity", "--size"});
    Refuses({image, "--frame", "--connexity", "4", "--viscosity", "3"}, {"--connexity", "--viscosity"});
    EXPECT_EQ(Files(), before);
}

TEST_F(ReconstructCommand, Values_ThatAreNoneAreNamed)
{
    std::set<std::string> const before = Files();
    std::string const image = In("peaks.png");
    Refuses({image, "--lower", "0"}, {"--lower", "0"});
    Refuses({image, "--lower", "nan"}, {"--lower", "nan"});
    Refuses({image, "--erode", "--raise", "-1"}, {"--raise", "-1"});
    Refuses({image, "--frame", "--size", "0"}, {"--size", "0"});
    Refuses({image, "--frame", "--size", "1024"}, {"--size", "1024"});
    Refuses({image, "--frame", "--viscosity", "0"}, {"--viscosity", "0"});
    Refuses({image, "--frame", "--shape", "star"}, {"--shape", "star", "rectangle, cross, ellipse"});
    Refuses({image, "--frame", "--connexity", "5"}, {"--connexity", "5"});
    EXPECT_EQ(Files(), before);
}

TEST_F(ReconstructCommand, NamesAnImageThatItCannotUse)
{
    Draw("colour.png", cv::Mat(1, 7, CV_8UC3, cv::Scalar::all(1)));
    Draw("whole.tif", cv::Mat(1, 7, CV_32SC1, cv::Scalar(1)));
    Draw("words.png", cv::Mat(1, 7, CV_16UC1, cv::Scalar(1)));
    Draw("doubles.tif", cv::Mat(1, 7, CV_64FC1, cv::Scalar(1)));
    std::set<std::string> const before = Files();
    Refuses({In("nowhere.png"), "--frame"}, {"nowhere.png", "no such file"});
    Refuses({In("colour.png"), "--frame"}, {"colour.png", "3 channels"});
    Refuses({In("whole.tif"), "--frame"}, {"whole.tif", "32-bit signed", "accepted"});
    Refuses({In("words.png"), "--frame", "--connexity", "4"}, {"words.png", "16-bit unsigned", "accepted"});
    Refuses({In("doubles.tif"), "--frame", "--connexity", "4"}, {"doubles.tif", "64-bit float", "accepted"});

    std::string const image = In("peaks.png");
    Refuses({image, "--marker", In("nowhere.png")}, {"nowhere.png", "no such file"});
    Refuses({image, "--marker", In("colour.png")}, {"colour.png", "3 channels"});
    Refuses({image, "--marker", In("bowl.png")}, {"bowl.png", "5 x 5", "peaks.png", "7 x 1"});
    Refuses({image, "--marker", In("words.png")}, {"words.png", "16-bit unsigned", "peaks.png", "8-bit unsigned"});
    EXPECT_EQ(Files(), before);
}

TEST_F(ReconstructCommand, NamesAnOutputThatItCannotWrite)
{
    Draw("image.tif", cv::Mat(1, 7, CV_8UC1, cv::Scalar(1)));
    Draw("marker.tif", cv::Mat(1, 7, CV_8UC1, cv::Scalar(1)));
    std::set<std::string> const before = Files();
    auto const reconstruct = [this](std::vector<std::string> more) {
        more.insert(more.begin(), {"reconstruct", In("image.tif"), "--marker", In("marker.tif")});
        return more;
    };
    ExpectFailure(reconstruct({"-o", In("out.png")}), {"out.png", ".tif"});
    ExpectFailure(reconstruct({"-o", In("image.tif")}), {"image.tif", "overwritten"});
    ExpectFailure(reconstruct({"-o", In("marker.tif")}), {"marker.tif", "overwritten"});
    ExpectFailure(reconstruct({"--picture", In("image.tif")}), {"image.tif", "overwritten"});
    ExpectFailure(reconstruct({"--picture", In("marker.tif")}), {"marker.tif", "overwritten"});
    ExpectFailure(reconstruct({"--picture", In("out.what")}), {"out.what", "format"});
    EXPECT_EQ(Files(), before);
}

} // namespace
