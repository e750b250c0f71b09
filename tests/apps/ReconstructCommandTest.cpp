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
        Draw("pits.png", (cv::Mat1b(1, 7) << 50, 30, 50, 40, 10, 40, 50));
        // A hollow whose rim has a gap at a corner.
        Draw(
            "bowl.png", (cv::Mat1b(5, 5) << 5, 5, 5, 5, 5, //
                         5, 1, 9, 9, 5,                    //
                         5, 9, 2, 9, 5,                    //
                         5, 9, 9, 9, 5,                    //
                         5, 5, 5, 5, 5));
    }

    void Draw(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    void Draw(std::string const & name, cv::Mat const & image, int depth) const
    {
        cv::Mat converted;
        image.convertTo(converted, depth);
        Draw(name, converted);
    }

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
    ExpectSame(Reconstructed({In("peaks.png"), "--lower", "10"}, 2), (cv::Mat1b(1, 7) << 10, 20, 10, 20, 40, 20, 10));
    // Lowered by 25, the smaller peak keeps what the valley beside it lets through.
    ExpectSame(Reconstructed({In("peaks.png"), "--lower", "25"}, 2), (cv::Mat1b(1, 7) << 10, 10, 10, 20, 25, 20, 10));
}

TEST_F(ReconstructCommand, Raise_FillsEachPitByTheAmount)
{
    ExpectSame(
        Reconstructed({In("pits.png"), "--erode", "--raise", "10"}, 2),
        (cv::Mat1b(1, 7) << 50, 40, 50, 40, 20, 40, 50));
}

TEST_F(ReconstructCommand, Marker_SpreadsFromWhereItIs)
{
    Draw("marker.png", (cv::Mat1b(1, 7) << 0, 0, 0, 0, 200, 0, 0));
    ExpectSame(
        Reconstructed({In("peaks.png"), "--marker", In("marker.png")}, 1),
        (cv::Mat1b(1, 7) << 10, 10, 10, 20, 50, 20, 10));
    Draw("marker.png", (cv::Mat1b(1, 7) << 255, 255, 255, 255, 0, 255, 255));
    ExpectSame(
        Reconstructed({In("pits.png"), "--erode", "--marker", In("marker.png")}, 1),
        (cv::Mat1b(1, 7) << 50, 50, 50, 40, 10, 40, 50));
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

TEST_F(ReconstructCommand, Frame_OfAnImageThatIsAllEdgeIsTheImage)
{
    ExpectSame(Reconstructed({In("peaks.png"), "--frame"}, 0), (cv::Mat1b(1, 7) << 10, 30, 10, 20, 50, 20, 10));
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
    ExpectSame(Reconstructed(with({"--shape", "rectangle"}), 2), byCorners);
    ExpectSame(Reconstructed(with({"--shape", "cross"}), 2), bySides);
    // The ellipse of 3 by 3 is the cross.
    ExpectSame(Reconstructed(with({"--shape", "ellipse"}), 2), bySides);
    ExpectSame(Reconstructed(with({"--connexity", "4"}), 2), bySides);
    ExpectSame(Reconstructed(with({"--connexity", "8"}), 2), byCorners);
}

TEST_F(ReconstructCommand, Size_LetsTheMarkerLeap)
{
    Draw("gap.png", (cv::Mat1b(1, 3) << 50, 0, 50));
    Draw("marker.png", (cv::Mat1b(1, 3) << 50, 0, 0));
    std::vector<std::string> arguments{In("gap.png"), "--marker", In("marker.png"), "--size", "3"};
    ExpectSame(Reconstructed(arguments, 1), (cv::Mat1b(1, 3) << 50, 0, 0));
    arguments.back() = "5";
    ExpectSame(Reconstructed(arguments, 0), (cv::Mat1b(1, 3) << 50, 0, 50));
    arguments.back() = "1";
    ExpectSame(Reconstructed(arguments, 1), (cv::Mat1b(1, 3) << 50, 0, 0));
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
    ExpectSame(Reconstructed({In("rooms.png"), "--marker", In("marker.png"), "--viscosity", "1"}, 0), rooms);

    Draw("rooms.png", Rooms(0, 9));
    Draw("marker.png", cv::Mat(9 - marker));
    ExpectSame(
        Reconstructed({In("rooms.png"), "--erode", "--marker", In("marker.png"), "--viscosity", "3"}, 11),
        cv::Mat(9 - firstRoom));
}

TEST_F(ReconstructCommand, WrappedConnexity_CrossesTheSeam)
{
    Draw("gap.png", (cv::Mat1b(1, 3) << 50, 0, 50));
    Draw("marker.png", (cv::Mat1b(1, 3) << 50, 0, 0));
    std::vector<std::string> arguments{In("gap.png"), "--marker", In("marker.png"), "--connexity", "4"};
    ExpectSame(Reconstructed(arguments, 1), (cv::Mat1b(1, 3) << 50, 0, 0));
    arguments.back() = "4-wrapped";
    ExpectSame(Reconstructed(arguments, 0), (cv::Mat1b(1, 3) << 50, 0, 50));

    Draw("gap.png", (cv::Mat1b(1, 3) << 0, 50, 0));
    Draw("marker.png", (cv::Mat1b(1, 3) << 0, 50, 50));
    arguments.insert(arguments.end(), "--erode");
    ExpectSame(Reconstructed(arguments, 0), (cv::Mat1b(1, 3) << 0, 50, 0));
}

TEST_F(ReconstructCommand, EveryTypeOfMorphology_KeepsItsType)
{
    cv::Mat1b const peaks = (cv::Mat1b(1, 7) << 10, 30, 10, 20, 50, 20, 10);
    cv::Mat1b const cut = (cv::Mat1b(1, 7) << 10, 20, 10, 20, 40, 20, 10);
    for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32F, CV_64F})
    {
        SCOPED_TRACE(depth);
        Draw("peaks.tif", peaks, depth);
        cv::Mat expected;
        cut.convertTo(expected, depth);
        ExpectSame(Reconstructed({In("peaks.tif"), "--lower", "10"}, 2), expected);
    }
}

TEST_F(ReconstructCommand, EveryTypeOfThePriorityFlood_KeepsItsType)
{
    cv::Mat1b const pits = (cv::Mat1b(1, 7) << 50, 30, 50, 40, 10, 40, 50);
    cv::Mat1b const filled = (cv::Mat1b(1, 7) << 50, 40, 50, 40, 20, 40, 50);
    for (int const depth : {CV_8U, CV_32S, CV_32F})
    {
        SCOPED_TRACE(depth);
        Draw("pits.tif", pits, depth);
        cv::Mat expected;
        filled.convertTo(expected, depth);
        ExpectSame(Reconstructed({In("pits.tif"), "--erode", "--raise", "10", "--connexity", "4"}, 2), expected);
    }
}

TEST_F(ReconstructCommand, NaN_CountsAsZero)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    Draw("holes.tif", (cv::Mat1f(1, 7) << nan, 30.0F, 10.0F, 20.0F, 50.0F, 20.0F, 10.0F));
    ExpectSame(
        Reconstructed({In("holes.tif"), "--lower", "10.5"}, 2),
        (cv::Mat1f(1, 7) << 0.0F, 19.5F, 10.0F, 20.0F, 39.5F, 20.0F, 10.0F));
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
    for (std::vector<std::string> const & markers : std::vector<std::vector<std::string>>{
             {},
             {"--frame", "--lower", "1"},
             {"--frame", "--erode", "--raise", "1"},
             {"--marker", In("peaks.png"), "--frame"},
             {"--marker", In("peaks.png"), "--lower", "1"}})
    {
        std::vector<std::string> arguments{image};
        arguments.insert(arguments.end(), markers.begin(), markers.end());
        Refuses(arguments, {"exactly one", "--marker", "--lower", "--raise", "--frame"});
    }
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
    for (std::string const number : {"0", "-1", "wide", "nan", "inf"})
    {
        Refuses({image, "--lower", number}, {"--lower", number});
        Refuses({image, "--erode", "--raise", number}, {"--raise", number});
    }
    for (std::string const side : {"0", "-3", "1024", "2.5"})
    {
        Refuses({image, "--frame", "--size", side}, {"--size", side});
        Refuses({image, "--frame", "--viscosity", side}, {"--viscosity", side});
    }
    Refuses({image, "--frame", "--shape", "star"}, {"--shape", "star", "rectangle, cross, ellipse"});
    Refuses({image, "--frame", "--connexity", "5"}, {"--connexity", "5"});
    EXPECT_EQ(Files(), before);
}

TEST_F(ReconstructCommand, NamesAnImageThatItCannotUse)
{
    Draw("colour.png", cv::Mat(1, 7, CV_8UC3, cv::Scalar::all(1)));
    Draw("whole.tif", cv::Mat(1, 7, CV_32SC1, cv::Scalar(1)));
    Draw("words.png", cv::Mat(1, 7, CV_16UC1, cv::Scalar(1)));
    Draw("bytes.tif", cv::Mat(1, 7, CV_8SC1, cv::Scalar(1)));
    Draw("doubles.tif", cv::Mat(1, 7, CV_64FC1, cv::Scalar(1)));
    WriteText("text.png", "no picture");
    std::set<std::string> const before = Files();
    Refuses({In("nowhere.png"), "--frame"}, {"nowhere.png", "no such file"});
    Refuses({In("text.png"), "--frame"}, {"text.png", "no image"});
    Refuses({In("colour.png"), "--frame"}, {"colour.png", "3 channels"});
    Refuses({In("bytes.tif"), "--frame"}, {"bytes.tif", "8-bit signed"});
    Refuses({In("whole.tif"), "--frame"}, {"whole.tif", "32-bit signed", "accepted"});
    Refuses({In("words.png"), "--frame", "--connexity", "4"}, {"words.png", "16-bit unsigned", "accepted"});
    Refuses({In("doubles.tif"), "--frame", "--connexity", "4"}, {"doubles.tif", "64-bit float", "accepted"});

    std::string const image = In("peaks.png");
    Refuses({image, "--marker", In("nowhere.png")}, {"nowhere.png", "no such file"});
    Refuses({image, "--marker", In("text.png")}, {"text.png", "no image"});
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
    ExpectFailure(reconstruct({"-o", In("out.tif"), "--picture", In("out.tif")}), {"out.tif", "two outputs"});
    ExpectFailure(reconstruct({"-o", In("none/out.tif")}), {"none/out.tif", "folder"});
    EXPECT_EQ(Files(), before);
}

} // namespace
