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

class ExtremaCommand : public Program
{
protected:
    void Draw(cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In("image.tif"), image)); }

    /// The labels, after a run that reports so many extrema.
    [[nodiscard]] cv::Mat
    Labels(std::string const & connexity, std::vector<std::string> const & more, std::string const & counted) const
    {
        std::vector<std::string> arguments{"extrema", In("image.tif"), "--connexity", connexity, "-o", In("out.tif")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        EXPECT_NE(outcome.output.find("\n" + counted + "\n"), std::string::npos) << outcome.output;
        return Read(In("out.tif"));
    }
};

void ExpectSame(cv::Mat const & labels, cv::Mat1i const & expected)
{
    ASSERT_EQ(labels.type(), CV_32SC1);
    ASSERT_EQ(labels.size(), expected.size());
    EXPECT_EQ(cv::norm(labels, expected, cv::NORM_INF), 0.0) << labels;
}

TEST_F(ExtremaCommand, LabelsTheMaxima)
{
    Draw((cv::Mat1w(1, 7) << 100, 3000, 100, 2000, 5000, 5000, 1000));
    ExpectSame(Labels("4", {}, "maxima  2"), (cv::Mat1i(1, 7) << 0, 1, 0, 0, 2, 2, 0));
}

TEST_F(ExtremaCommand, Minima_LabelsThoseInstead)
{
    Draw((cv::Mat1b(1, 7) << 10, 30, 10, 20, 50, 50, 10));
    ExpectSame(Labels("4", {"--minima"}, "minima  3"), (cv::Mat1i(1, 7) << 1, 0, 2, 0, 0, 0, 3));
}

TEST_F(ExtremaCommand, Connexity_SaysWhichNeighboursCount)
{
    Draw(
        (cv::Mat1b(3, 3) << 9, 1, 1, //
         1, 9, 1,                    //
         1, 1, 1));
    ExpectSame(Labels("8", {}, "maxima  1"), (cv::Mat1i(3, 3) << 1, 0, 0, 0, 1, 0, 0, 0, 0));
    Draw((cv::Mat1b(1, 7) << 10, 30, 10, 20, 50, 50, 10));
    ExpectSame(Labels("4-wrapped", {"--minima"}, "minima  2"), (cv::Mat1i(1, 7) << 1, 0, 2, 0, 0, 0, 1));
}

TEST_F(ExtremaCommand, EmptyPixels_AreZerosLikeAnyOther)
{
    Draw((cv::Mat1s(1, 5) << -4, 0, -2, -3, 0));
    ExpectSame(Labels("4", {}, "maxima  2"), (cv::Mat1i(1, 5) << 0, 1, 0, 0, 2));
    float const nan = std::numeric_limits<float>::quiet_NaN();
    Draw((cv::Mat1f(1, 5) << nan, 0.5F, nan, -1.0F, nan));
    ExpectSame(Labels("4", {}, "maxima  2"), (cv::Mat1i(1, 5) << 0, 1, 0, 0, 2));
}

TEST_F(ExtremaCommand, ConstantImage_IsOneExtremum)
{
    Draw(cv::Mat1i(2, 3, 0));
    ExpectSame(Labels("4", {"--minima", "--dynamic", "7"}, "minima  1"), cv::Mat1i(2, 3, 1));
}

TEST_F(ExtremaCommand, Dynamic_KeepsMaximaThatStandOut)
{
    // From 30 the way to 50 goes down to 10.
    Draw((cv::Mat1b(1, 7) << 10, 30, 10, 20, 50, 20, 10));
    cv::Mat1i const both = (cv::Mat1i(1, 7) << 0, 1, 0, 0, 2, 0, 0);
    cv::Mat1i const higher = (cv::Mat1i(1, 7) << 0, 0, 0, 0, 1, 0, 0);
    ExpectSame(Labels("4", {"--dynamic", "20.0005"}, "maxima  2"), both);
    ExpectSame(Labels("4", {"--dynamic", "20.01"}, "maxima  1"), higher);
    // More than the type holds: from the highest there is no way up.
    ExpectSame(Labels("4", {"--dynamic", "300"}, "maxima  1"), higher);
}

TEST_F(ExtremaCommand, Dynamic_KeepsMinimaThatStandOut)
{
    // To what is lower the way goes up by 18 from 12, by 39 from 11.
    Draw((cv::Mat1b(1, 7) << 10, 30, 12, 20, 50, 20, 11));
    auto const minima = [this](std::string const & dynamic, int count) {
        return Labels("8", {"--minima", "--dynamic", dynamic}, "minima  " + std::to_string(count));
    };
    ExpectSame(minima("18", 3), (cv::Mat1i(1, 7) << 1, 0, 2, 0, 0, 0, 3));
    ExpectSame(minima("19", 2), (cv::Mat1i(1, 7) << 1, 0, 0, 0, 0, 0, 2));
}

TEST_F(ExtremaCommand, Dynamic_MayBeAFraction)
{
    Draw((cv::Mat1d(1, 5) << 1.0, 1.5, 1.25, 2.0, 1.0));
    ExpectSame(Labels("4", {"--dynamic", "0.26"}, "maxima  1"), (cv::Mat1i(1, 5) << 0, 0, 0, 1, 0));
}

TEST_F(ExtremaCommand, PathsOfADynamic_FollowTheNeighbourhood)
{
    Draw(
        (cv::Mat1b(3, 3) << 9, 0, 0, //
         0, 8, 0,                    //
         0, 0, 0));
    ExpectSame(Labels("4", {"--dynamic", "5"}, "maxima  2"), (cv::Mat1i(3, 3) << 1, 0, 0, 0, 2, 0, 0, 0, 0));
    ExpectSame(Labels("8", {"--dynamic", "5"}, "maxima  1"), (cv::Mat1i(3, 3) << 1, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST_F(ExtremaCommand, PathsOfADynamic_NeverCrossTheSeam)
{
    // Across the seam the way from 8 to 9 would go down by 1 alone.
    Draw((cv::Mat1b(1, 4) << 9, 0, 8, 7));
    ExpectSame(Labels("4-wrapped", {"--dynamic", "5"}, "maxima  2"), (cv::Mat1i(1, 4) << 1, 0, 2, 0));
    // Marks that touch across it are one zone all the same.
    Draw((cv::Mat1b(1, 3) << 9, 0, 8));
    ExpectSame(Labels("4-wrapped", {"--dynamic", "5"}, "maxima  1"), (cv::Mat1i(1, 3) << 1, 0, 1));
}

TEST_F(ExtremaCommand, Picture_HasAColourForEachExtremum)
{
    Draw((cv::Mat1b(1, 7) << 10, 30, 10, 20, 50, 50, 10));
    process::Outcome const outcome =
        Run({"extrema", In("image.tif"), "--connexity", "4", "--picture", In("picture.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("size   7 x 1\n"), std::string::npos) << outcome.output;
    cv::Mat const picture = Read(In("picture.png"));
    ASSERT_EQ(picture.type(), CV_8UC3);
    auto const colour = [&picture](int x) {
        return picture.at<cv::Vec3b>(0, x);
    };
    cv::Vec3b const black(0, 0, 0);
    for (int const x : {0, 2, 3, 6})
    {
        EXPECT_EQ(colour(x), black) << x;
    }
    EXPECT_NE(colour(1), black);
    EXPECT_NE(colour(4), black);
    EXPECT_NE(colour(1), colour(4));
    EXPECT_EQ(colour(4), colour(5));
    EXPECT_EQ(Files(), (std::set<std::string>{"image.tif", "picture.png"}));
}

TEST_F(ExtremaCommand, NamesASwitchThatItCannotUse)
{
    Draw(cv::Mat1b(2, 2, uchar{1}));
    std::set<std::string> const before = Files();
    std::string const image = In("image.tif");
    ExpectFailure({"extrema", "--connexity", "4", "-o", In("out.tif")}, {"image"});
    ExpectFailure({"extrema", image, "-o", In("out.tif")}, {"--connexity"});
    ExpectFailure({"extrema", image, "--connexity", "6", "-o", In("out.tif")}, {"--connexity", "6", "4-wrapped"});
    // What is within the tolerance of nothing stands out everywhere.
    ExpectFailure(
        {"extrema", image, "--connexity", "4", "--dynamic", "0.001", "-o", In("out.tif")}, {"--dynamic", "0.001"});
    ExpectFailure(
        {"extrema", image, "--connexity", "4", "--dynamic", "nan", "-o", In("out.tif")}, {"--dynamic", "nan"});
    EXPECT_EQ(Files(), before);
}

TEST_F(ExtremaCommand, NamesAnImageThatItCannotUse)
{
    ASSERT_TRUE(cv::imwrite(In("colour.png"), cv::Mat(3, 4, CV_8UC3, cv::Scalar::all(1))));
    ASSERT_TRUE(cv::imwrite(In("bytes.tif"), cv::Mat(3, 4, CV_8SC1, cv::Scalar(1))));
    std::set<std::string> const before = Files();
    auto const refuses = [this](std::string const & name, std::vector<std::string> const & named) {
        ExpectFailure({"extrema", In(name), "--connexity", "4", "-o", In("out.tif")}, named);
    };
    refuses("nowhere.tif", {"nowhere.tif", "no such file"});
    refuses("colour.png", {"colour.png", "3 channels"});
    refuses("bytes.tif", {"bytes.tif", "8-bit signed"});
    EXPECT_EQ(Files(), before);
}

TEST_F(ExtremaCommand, NamesAnOutputThatItCannotWrite)
{
    Draw(cv::Mat1b(2, 2, uchar{1}));
    std::set<std::string> const before = Files();
    auto const extrema = [this](std::vector<std::string> more) {
        more.insert(more.begin(), {"extrema", In("image.tif"), "--connexity", "4"});
        return more;
    };
    ExpectFailure(extrema({"-o", In("out.png")}), {"out.png", ".tif"});
    ExpectFailure(extrema({"-o", In("image.tif")}), {"image.tif", "overwritten"});
    ExpectFailure(extrema({"--picture", In("image.tif")}), {"image.tif", "overwritten"});
    ExpectFailure(extrema({"--picture", In("out.what")}), {"out.what", "format"});
    EXPECT_EQ(Files(), before);
}

} // namespace
