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

class FillHolesCommand : public Program
{
protected:
    void Draw(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// What is written, after a run that reports so many filled pixels.
    [[nodiscard]] cv::Mat Filled(std::vector<std::string> arguments, int filled) const
    {
        arguments.insert(arguments.begin(), "fill-holes");
        arguments.insert(arguments.end(), {"-o", In("out.tif")});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        std::string const counted = "\nfilled  " + std::to_string(filled) + "\n";
        EXPECT_NE(outcome.output.find(counted), std::string::npos) << outcome.output;
        return Read(In("out.tif"));
    }

    void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named) const
    {
        arguments.insert(arguments.begin(), "fill-holes");
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

/// A hollow in a rim of 9 on a plain of 5; the pixel in the corner of the rim is given.
cv::Mat1b Bowl(int corner, int bottom)
{
    cv::Mat1b bowl(5, 5, uchar{5});
    bowl(cv::Rect(1, 1, 3, 3)).setTo(9);
    bowl(1, 1) = static_cast<uchar>(corner);
    bowl(2, 2) = static_cast<uchar>(bottom);
    return bowl;
}

TEST_F(FillHolesCommand, RaisesAHollowToItsRim_EmptyOrNot)
{
    Draw("image.png", Bowl(9, 0));
    ExpectSame(Filled({In("image.png")}, 1), Bowl(9, 9));
    // A hollow on the edge is none.
    Draw("image.png", (cv::Mat1b(3, 3) << 9, 1, 9, 9, 4, 9, 9, 9, 9));
    ExpectSame(Filled({In("image.png")}, 0), (cv::Mat1b(3, 3) << 9, 1, 9, 9, 4, 9, 9, 9, 9));
}

TEST_F(FillHolesCommand, RaisesNoHigherThanTheLowestRim)
{
    Draw(
        "image.png", (cv::Mat1b(3, 7) << 9, 9, 9, 9, 9, 9, 9, //
                      9, 1, 4, 2, 7, 3, 6,                    //
                      9, 9, 9, 9, 9, 9, 9));
    ExpectSame(
        Filled({In("image.png"), "--shape", "cross"}, 4), (cv::Mat1b(3, 7) << 9, 9, 9, 9, 9, 9, 9, //
                                                           9, 7, 7, 7, 7, 6, 6,                    //
                                                           9, 9, 9, 9, 9, 9, 9));
}

TEST_F(FillHolesCommand, ShapeAndConnexity_SayWhetherHollowsRunOutThroughCorners)
{
    Draw("image.png", Bowl(1, 2));
    ExpectSame(Filled({In("image.png")}, 2), Bowl(5, 5));
    ExpectSame(Filled({In("image.png"), "--shape", "cross"}, 2), Bowl(5, 9));
    // The ellipse of 3 by 3 is the cross.
    ExpectSame(Filled({In("image.png"), "--shape", "ellipse"}, 2), Bowl(5, 9));
    ExpectSame(Filled({In("image.png"), "--connexity", "8"}, 2), Bowl(5, 5));
    ExpectSame(Filled({In("image.png"), "--connexity", "4"}, 2), Bowl(5, 9));
}

TEST_F(FillHolesCommand, Seeds_AreWhereHollowsRunOut)
{
    Draw("image.png", (cv::Mat1b(1, 5) << 2, 9, 3, 9, 4));
    Draw("seeds.png", (cv::Mat1b(1, 5) << 1, 0, 0, 0, 0));
    cv::Mat1b const fromTheLeft = (cv::Mat1b(1, 5) << 2, 9, 9, 9, 9);
    ExpectSame(Filled({In("image.png"), "--seeds", In("seeds.png")}, 2), fromTheLeft);
    // Over the seam the last pixel runs out into the first.
    ExpectSame(
        Filled({In("image.png"), "--seeds", In("seeds.png"), "--connexity", "4-wrapped"}, 1),
        (cv::Mat1b(1, 5) << 2, 9, 9, 9, 4));
}

TEST_F(FillHolesCommand, Seeds_MayBeOfAnyType)
{
    Draw("image.png", (cv::Mat1b(1, 5) << 2, 9, 3, 9, 4));
    float const nan = std::numeric_limits<float>::quiet_NaN();
    Draw("seeds.tif", (cv::Mat1f(1, 5) << nan, 0.0F, 0.25F, 0.0F, 0.0F));
    ExpectSame(Filled({In("image.png"), "--seeds", In("seeds.tif")}, 2), (cv::Mat1b(1, 5) << 9, 9, 3, 9, 9));
}

TEST_F(FillHolesCommand, TypesOfMorphologyAlone_AreKept)
{
    for (int const depth : {CV_16U, CV_16S, CV_64F})
    {
        SCOPED_TRACE(depth);
        cv::Mat image;
        cv::Mat filled;
        Bowl(9, 2).convertTo(image, depth);
        Bowl(9, 9).convertTo(filled, depth);
        Draw("image.tif", image);
        ExpectSame(Filled({In("image.tif")}, 1), filled);
    }
}

TEST_F(FillHolesCommand, TypeOfThePriorityFloodAlone_IsKept)
{
    cv::Mat1i image;
    cv::Mat1i filled;
    Bowl(9, 2).convertTo(image, CV_32S, 100000.0);
    Bowl(9, 9).convertTo(filled, CV_32S, 100000.0);
    Draw("image.tif", image);
    ExpectSame(Filled({In("image.tif"), "--connexity", "4"}, 1), filled);
}

TEST_F(FillHolesCommand, Floats_AreFilledToTheWholeNumberBelowTheirGreatest)
{
    cv::Mat1f image;
    Bowl(9, 2).convertTo(image, CV_32F);
    image += 0.5F;
    cv::Mat1f filled = image.clone();
    filled(2, 2) = 9.0F;
    Draw("image.tif", image);
    ExpectSame(Filled({In("image.tif")}, 1), filled);
    ExpectSame(Filled({In("image.tif"), "--connexity", "8"}, 1), filled);
}

TEST_F(FillHolesCommand, NaN_CountsAsZero)
{
    cv::Mat1f image;
    Bowl(9, 2).convertTo(image, CV_32F);
    image(2, 2) = std::numeric_limits<float>::quiet_NaN();
    Draw("image.tif", image);
    cv::Mat1f filled;
    Bowl(9, 9).convertTo(filled, CV_32F);
    ExpectSame(Filled({In("image.tif")}, 1), filled);
}

TEST_F(FillHolesCommand, Picture_SpreadsTheRangeOfTheMeasuredPixels)
{
    cv::Mat1b image = Bowl(8, 2);
    image(0, 0) = 0;
    Draw("image.png", image);
    process::Outcome const outcome = Run({"fill-holes", In("image.png"), "--picture", In("picture.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("size   5 x 5\n"), std::string::npos) << outcome.output;
    // 5 to 9: the gap of 8, to which the hollow is filled, comes at three quarters of 255.
    ExpectSame(
        Read(In("picture.png")), (cv::Mat1b(5, 5) << 0, 0, 0, 0, 0, //
                                  0, 191, 255, 255, 0,              //
                                  0, 255, 191, 255, 0,              //
                                  0, 255, 255, 255, 0,              //
                                  0, 0, 0, 0, 0));
    EXPECT_EQ(Files(), (std::set<std::string>{"image.png", "picture.png"}));
}

TEST_F(FillHolesCommand, NamesASwitchThatItCannotUse)
{
    Draw("image.png", Bowl(9, 2));
    std::set<std::string> const before = Files();
    Refuses({}, {"image"});
    Refuses({In("image.png"), "--shape", "cross", "--connexity", "4"}, {"--shape", "--connexity"});
    Refuses({In("image.png"), "--shape", "star"}, {"--shape", "star", "rectangle, cross, ellipse"});
    Refuses({In("image.png"), "--connexity", "16"}, {"--connexity", "16", "4-wrapped"});
    EXPECT_EQ(Files(), before);
}

TEST_F(FillHolesCommand, NamesAnImageThatItCannotUse)
{
    Draw("colour.png", cv::Mat(5, 5, CV_8UC3, cv::Scalar::all(1)));
    Draw("whole.tif", cv::Mat(5, 5, CV_32SC1, cv::Scalar(1)));
    Draw("words.png", cv::Mat(5, 5, CV_16UC1, cv::Scalar(1)));
    std::set<std::string> const before = Files();
    Refuses({In("nowhere.png")}, {"nowhere.png", "no such file"});
    Refuses({In("colour.png")}, {"colour.png", "3 channels"});
    Refuses({In("whole.tif")}, {"whole.tif", "32-bit signed", "accepted"});
    Refuses({In("words.png"), "--connexity", "4"}, {"words.png", "16-bit unsigned", "accepted"});
    EXPECT_EQ(Files(), before);
}

TEST_F(FillHolesCommand, NamesSeedsThatItCannotUse)
{
    Draw("image.png", Bowl(9, 2));
    Draw("colour.png", cv::Mat(5, 5, CV_8UC3, cv::Scalar::all(1)));
    Draw("small.png", cv::Mat(4, 5, CV_8UC1, cv::Scalar(1)));
    Draw("none.png", cv::Mat(5, 5, CV_8UC1, cv::Scalar(0)));
    std::set<std::string> const before = Files();
    auto const refuses = [this](std::string const & seeds, std::vector<std::string> const & named) {
        Refuses({In("image.png"), "--seeds", In(seeds)}, named);
    };
    refuses("nowhere.png", {"nowhere.png", "no such file"});
    refuses("colour.png", {"colour.png", "3 channels"});
    refuses("small.png", {"small.png", "5 x 4", "image.png", "5 x 5"});
    refuses("none.png", {"none.png", "no seed"});
    EXPECT_EQ(Files(), before);
}

TEST_F(FillHolesCommand, NamesAnOutputThatItCannotWrite)
{
    Draw("image.tif", Bowl(9, 2));
    Draw("seeds.tif", Bowl(9, 2));
    std::set<std::string> const before = Files();
    auto const fill = [this](std::vector<std::string> more) {
        more.insert(more.begin(), {"fill-holes", In("image.tif"), "--seeds", In("seeds.tif")});
        return more;
    };
    ExpectFailure(fill({"-o", In("out.png")}), {"out.png", ".tif"});
    ExpectFailure(fill({"-o", In("image.tif")}), {"image.tif", "overwritten"});
    ExpectFailure(fill({"-o", In("seeds.tif")}), {"seeds.tif", "overwritten"});
    ExpectFailure(fill({"--picture", In("image.tif")}), {"image.tif", "overwritten"});
    ExpectFailure(fill({"--picture", In("seeds.tif")}), {"seeds.tif", "overwritten"});
    ExpectFailure(fill({"--picture", In("out.what")}), {"out.what", "format"});
    EXPECT_EQ(Files(), before);
}

} // namespace
