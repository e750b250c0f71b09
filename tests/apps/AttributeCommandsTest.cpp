// The commands on attributes: attribute-open and ultimate-open.

#include "apps/ProgramFixture.h"

#include "support/ImageLiterals.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

using AttributeOpenCommand = Program;
using UltimateOpenCommand = Program;

/// A speck of one pixel, a bar of three, and a block of level 5 with a step of level 8 on it.
cv::Mat Things()
{
    return Draw(
        {"11111111", //
         "14111111", //
         "11115551", //
         "13331581", //
         "11115551", //
         "11111111"},
        CV_8UC1);
}

TEST_F(AttributeOpenCommand, RemovesWhatMeasuresLess)
{
    ASSERT_TRUE(cv::imwrite(In("things.png"), Things()));
    process::Outcome const outcome = Run(
        {"attribute-open", In("things.png"), "--attribute", "area", "--threshold", "3", "--connexity", "4", "-o",
         In("opened.tif"), "--picture", In("opened.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    // Two pixels change: the speck, and the step of one pixel on the block.
    EXPECT_NE(outcome.output.find("changed  2\n"), std::string::npos) << outcome.output;
    ExpectDrawn(
        Read(In("opened.tif")), {"11111111", //
                                 "11111111", //
                                 "11115551", //
                                 "13331551", //
                                 "11115551", //
                                 "11111111"});
    EXPECT_EQ(Read(In("opened.png")).type(), CV_8UC1);
}

TEST_F(AttributeOpenCommand, MeasuresWhatItIsAskedTo)
{
    ASSERT_TRUE(cv::imwrite(In("things.png"), Things()));
    struct Case
    {
        std::string attribute;
        std::string threshold;
        std::string changed;
    };
    // The bar is 3 wide and 1 high, the block 3 by 3, the specks 1 by 1; the whole image is 8 by 6.
    for (Case const & one : std::vector<Case>{
             {"width", "3", "2"},
             {"height", "3", "5"},
             {"strain", "3", "2"},
             {"min-hw", "3", "5"},
             {"sqrt-area", "2", "5"}})
    {
        process::Outcome const outcome = Run(
            {"attribute-open", In("things.png"), "--attribute", one.attribute, "--threshold", one.threshold,
             "--connexity", "4"});
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_NE(outcome.output.find("changed  " + one.changed + "\n"), std::string::npos)
            << one.attribute << ": " << outcome.output;
    }
}

TEST_F(AttributeOpenCommand, TakesFloatsByAScale)
{
    cv::Mat floats;
    Things().convertTo(floats, CV_32F, 0.25);
    ASSERT_TRUE(cv::imwrite(In("floats.tif"), floats));
    process::Outcome const outcome = Run(
        {"attribute-open", In("floats.tif"), "--attribute", "area", "--threshold", "3", "--connexity", "4", "--scale",
         "100", "-o", In("opened.tif")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    cv::Mat const opened = Read(In("opened.tif"));
    EXPECT_EQ(opened.type(), CV_32FC1);
    EXPECT_EQ(ElementAt(opened, 1, 1), 0.25);
    EXPECT_EQ(ElementAt(opened, 3, 6), 1.25);
    EXPECT_EQ(ElementAt(opened, 3, 2), 0.75);
}

TEST_F(AttributeOpenCommand, SaysWhatIsWrong)
{
    std::vector<std::string> const rest{"--attribute", "area", "--threshold", "3", "--connexity", "4"};
    auto const with = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "attribute-open");
        arguments.insert(arguments.end(), rest.begin(), rest.end());
        return arguments;
    };
    cv::Mat floats;
    Things().convertTo(floats, CV_32F);
    ASSERT_TRUE(cv::imwrite(In("floats.tif"), floats));
    ASSERT_TRUE(cv::imwrite(In("large.tif"), floats * 1e9));
    ASSERT_TRUE(cv::imwrite(In("negative.tif"), -floats));
    ASSERT_TRUE(cv::imwrite(In("colours.png"), cv::Mat(3, 3, CV_8UC3, cv::Scalar(1, 2, 3))));
    auto const files = Files();
    ExpectFailure(with({In("floats.tif")}), {"floats.tif", "--scale"});
    ExpectFailure(with({In("large.tif"), "--scale", "10"}), {"large.tif", "too large"});
    ExpectFailure(with({In("negative.tif"), "--scale", "10"}), {"negative.tif", "negative"});
    ExpectFailure(with({In("colours.png")}), {"colours.png", "channel"});
    ExpectFailure(with({In("none.png")}), {"none.png"});
    ExpectFailure(with({In("floats.tif"), "--scale", "0"}), {"--scale"});
    ExpectFailure(with({In("floats.tif"), "--scale", "10", "-o", In("opened.png")}), {"opened.png"});
    ExpectFailure(with({In("floats.tif"), "--scale", "10", "-o", In("floats.tif")}), {"floats.tif"});
    ExpectFailure(
        {"attribute-open", In("floats.tif"), "--attribute", "volume", "--threshold", "3", "--connexity", "4"},
        {"volume"});
    EXPECT_EQ(Files(), files);
}

TEST_F(UltimateOpenCommand, FindsResiduesAndSizes)
{
    ASSERT_TRUE(cv::imwrite(In("things.png"), Things()));
    process::Outcome const outcome = Run(
        {"ultimate-open", In("things.png"), "--attribute", "area", "--connexity", "4", "--residues", In("residues.tif"),
         "--sizes", In("sizes.tif"), "--residue-picture", In("residues.png"), "--size-picture", In("sizes.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("largest  8\n"), std::string::npos) << outcome.output;
    // The block, 8 pixels with its step, stands out by 4, the step by 3 only.
    ExpectDrawn(
        Read(In("residues.tif")), {"........", //
                                   ".3......", //
                                   "....444.", //
                                   ".222.44.", //
                                   "....444.", //
                                   "........"});
    ExpectDrawn(
        Read(In("sizes.tif")), {"........", //
                                ".2......", //
                                "....999.", //
                                ".444.99.", //
                                "....999.", //
                                "........"});
    EXPECT_EQ(Read(In("residues.png")).type(), CV_8UC1);
    EXPECT_EQ(Read(In("sizes.png")).type(), CV_8UC3);
}

TEST_F(UltimateOpenCommand, PassesOverWhatIsTooLarge)
{
    ASSERT_TRUE(cv::imwrite(In("things.png"), Things()));
    process::Outcome const outcome = Run(
        {"ultimate-open", In("things.png"), "--attribute", "area", "--connexity", "4", "--max", "5", "--residues",
         In("residues.tif")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    // The block of 8 pixels counts for nothing, the step on it does.
    ExpectDrawn(
        Read(In("residues.tif")), {"........", //
                                   ".3......", //
                                   "........", //
                                   ".222..3.", //
                                   "........", //
                                   "........"});
}

TEST_F(UltimateOpenCommand, JoinsWhatMeasuresNearlyTheSame)
{
    ASSERT_TRUE(cv::imwrite(In("things.png"), Things()));
    process::Outcome const outcome = Run(
        {"ultimate-open", In("things.png"), "--attribute", "area", "--connexity", "4", "--max", "100", "--delta", "10",
         "--residues", In("residues.tif")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    // The step and the block differ by less than 10 pixels: 3 and 4 add up.
    EXPECT_EQ(ElementAt(Read(In("residues.tif")), 3, 6), 7.0);
    ExpectFailure(
        {"ultimate-open", In("things.png"), "--attribute", "area", "--connexity", "4", "--delta", "10"}, {"--max"});
}

} // namespace

} // namespace morvane::tests
