#include "apps/ProgramFixture.h"
#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <morvane/algorithm/RegionGrowing.h>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <set>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

class WandCommand : public Program
{
protected:
    void Save(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// The labels that are written for image.tif; the counts that are printed must be theirs.
    [[nodiscard]] cv::Mat Grown(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"wand", In("image.tif"), "-o", In("out.tif")});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        cv::Mat labels = Read(In("out.tif"));
        EXPECT_EQ(labels.type(), CV_32SC1);
        double zones = 0;
        cv::minMaxIdx(labels, nullptr, &zones);
        std::string const counted = "\nzones  " + std::to_string(static_cast<int>(zones)) + "\npixels  " +
                                    std::to_string(cv::countNonZero(labels)) + "\n";
        EXPECT_NE(outcome.output.find(counted), std::string::npos) << outcome.output << " is not" << counted;
        return labels;
    }

    void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named) const
    {
        arguments.insert(arguments.begin(), {"wand", In("image.tif"), "-o", In("out.tif")});
        ExpectFailure(arguments, named);
    }
};

TEST_F(WandCommand, EachSeedGrowsAZoneOverSmallSteps)
{
    Save("image.tif", Draw<ushort>({"1239", "9998", "1.12"}));
    ExpectDrawn(Grown({"--connexity", "4", "--delta", "1", "--seed", "0,0"}), {"111.", "....", "...."});
    // In the order of the seeds; a seed in a zone adds none.
    ExpectDrawn(
        Grown({"--connexity", "4", "--delta", "1", "--seed", "3,2", "--seed", "2,0", "--seed=0,0", "--seed", "3,0"}),
        {"2223", "3333", "1111"});
    ExpectDrawn(
        Grown({"--connexity", "8-wrapped", "--delta", "1", "--seed", "3,0", "--seed", "0,2"}),
        {"...1", "1111", "2222"});
}

TEST_F(WandCommand, StepsMayHaveToBeSmallInASecondImageToo)
{
    Save("image.tif", Draw<uchar>({"11111"}));
    Save("second.tif", Draw<short>({"12249"}));
    auto const grown = [&](std::vector<std::string> more) {
        more.insert(more.end(), {"--connexity", "4", "--seed", "0,0", "--second", In("second.tif"), "--delta", "1"});
        return Grown(more);
    };
    ExpectDrawn(grown({}), {"111.."});
    ExpectDrawn(grown({"--second-delta", "2"}), {"1111."});
    ExpectDrawn(grown({"--second-delta", "0"}), {"1...."});
}

TEST_F(WandCommand, BudgetIsSpentOnTheNearestOrOnTheLowest)
{
    // To either side of the seed the first pixel joins; what is left of the budget then goes to both, or to the left.
    Save("image.tif", Draw<uchar>({"1111211"}));
    std::vector<std::string> const shared{"--connexity", "4", "--budget", "7", "--seed", "3,0"};
    ExpectDrawn(Grown(shared), {".11111."});
    std::vector<std::string> lowestFirst = shared;
    lowestFirst.emplace_back("--lowest-first");
    ExpectDrawn(Grown(lowestFirst), {"11111.."});
    // A zone has at least its seed.
    ExpectDrawn(Grown({"--connexity", "4", "--budget", "0", "--seed", "0,0"}), {"1......"});
}

TEST_F(WandCommand, Flood_GrowsBySidesAndCornersAndHasNoFrame)
{
    Save("image.tif", Draw<uchar>({"1199", "9219", "9983"}));
    ExpectDrawn(Grown({"--flood", "--delta", "1", "--seed", "0,0"}), {"11..", ".11.", "...."});
    ExpectDrawn(Grown({"--flood", "--delta", "2", "--seed", "3,2"}), {"11..", ".11.", "...1"});
    Save("second.tif", Draw<int>({"1399", "9219", "9999"}));
    ExpectDrawn(
        Grown({"--flood", "--delta", "1", "--second", In("second.tif"), "--seed", "0,0"}), {"11..", ".11.", "...."});
    ExpectDrawn(
        Grown({"--flood", "--delta", "1", "--second", In("second.tif"), "--second-delta", "0", "--seed", "0,0"}),
        {"1...", "....", "...."});
}

TEST_F(WandCommand, Flood_AsksEveryChannel)
{
    cv::Mat3b image(1, 4, cv::Vec3b(10, 20, 30));
    image(0, 2) = {10, 23, 30};
    image(0, 3) = {10, 23, 34};
    Save("image.tif", image);
    ExpectDrawn(Grown({"--flood", "--delta", "3", "--seed", "0,0"}), {"111."});
    ExpectDrawn(Grown({"--flood", "--delta", "4", "--seed", "0,0"}), {"1111"});
    ExpectDrawn(Grown({"--flood", "--delta", "2", "--seed", "0,0"}), {"11.."});
}

TEST_F(WandCommand, GivesTheZonesOfTheLibrary)
{
    Random random(970);
    cv::Size const size(30, 20);
    std::vector<cv::Point> const seeds{{4, 5}, {29, 19}, {0, 10}, {17, 3}};
    std::vector<std::string> const shared{
        "--connexity", "12-interleaved-wrapped", "--seed", "4,5", "--seed", "29,19", "--seed", "0,10", "--seed",
        "17,3"};
    auto const grown = [&](std::vector<std::string> more) {
        more.insert(more.end(), shared.begin(), shared.end());
        return Grown(more);
    };
    auto const shape = connexity::eConnexity12InterleavedWrapped;
    for (int const depth : kDepths)
    {
        SCOPED_TRACE(depth);
        cv::Mat const image = RandomImage(random, size, depth, {0.2, 0.02, 9});
        cv::Mat const second = RandomImage(random, size, CV_64FC1, {0.1, 0.02, 4});
        Save("image.tif", image);
        Save("second.tif", second);
        cv::Mat labels(size, CV_32SC1);
        ASSERT_TRUE(algorithm::MagicWand(image, shape, seeds, 1.5F, labels));
        EXPECT_TRUE(EqualImages(grown({"--delta", "1.5"}), labels));
        ASSERT_TRUE(algorithm::MagicWand(image, second, shape, seeds, 2.0F, 1.0F, labels));
        EXPECT_TRUE(EqualImages(grown({"--delta", "2", "--second", In("second.tif"), "--second-delta", "1"}), labels));
        ASSERT_TRUE(algorithm::MagicWandBasedOnAccumulator(image, shape, seeds, 60.5F, labels));
        EXPECT_TRUE(EqualImages(grown({"--budget", "60.5"}), labels));
        ASSERT_TRUE(algorithm::MagicWandBasedOnPriorityAccumulator(image, shape, seeds, 60.5F, labels));
        EXPECT_TRUE(EqualImages(grown({"--budget", "60.5", "--lowest-first"}), labels));
    }
}

TEST_F(WandCommand, Picture_HasAColourForEachZone)
{
    Save("image.tif", Draw<uchar>({"1159"}));
    process::Outcome const outcome = Run(
        {"wand", In("image.tif"), "--connexity", "4", "--delta", "0", "--seed", "0,0", "--seed", "3,0", "--picture",
         In("picture.png")});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("size   4 x 1\n"), std::string::npos) << outcome.output;
    cv::Mat3b const picture = Read(In("picture.png"));
    ASSERT_EQ(picture.size(), cv::Size(4, 1));
    EXPECT_EQ(picture(0, 0), picture(0, 1));
    EXPECT_EQ(picture(0, 2), cv::Vec3b(0, 0, 0));
    EXPECT_NE(picture(0, 0), picture(0, 3));
    EXPECT_NE(picture(0, 0), picture(0, 2));
    EXPECT_EQ(Files(), (std::set<std::string>{"image.tif", "picture.png"}));
}

TEST_F(WandCommand, NamesASeedThatItCannotUse)
{
    Save("image.tif", Draw<uchar>({"123", "456"}));
    std::set<std::string> const before = Files();
    auto const refuses = [&](std::string const & seed, std::vector<std::string> const & named) {
        Refuses({"--connexity", "4", "--delta", "1", "--seed", "0,0", "--seed=" + seed}, named);
    };
    Refuses({"--connexity", "4", "--delta", "1"}, {"--seed"});
    for (char const * const outside : {"3,0", "0,2", "-1,0", "0,-1", "2147483647,0"})
    {
        refuses(outside, {"image.tif", std::string("no pixel ") + outside, "3 x 2"});
    }
    for (char const * const strange :
         {"1", "1,", ",1", "1,1,1", "1;1", "one,1", "1.5,1", "1,1x", " 1,1", "2147483648,0"})
    {
        refuses(strange, {std::string("--seed ") + strange, "X,Y"});
    }
    Refuses({"--flood", "--delta", "1", "--seed", "0,0", "--seed", "1,0"}, {"--flood", "one --seed"});
    EXPECT_EQ(Files(), before);
}

TEST_F(WandCommand, NamesSwitchesThatDoNotGoTogether)
{
    Save("image.tif", Draw<uchar>({"123"}));
    Save("second.tif", Draw<uchar>({"123"}));
    std::set<std::string> const before = Files();
    auto const refuses = [&](std::vector<std::string> arguments, std::vector<std::string> const & named) {
        arguments.insert(arguments.end(), {"--seed", "0,0"});
        Refuses(arguments, named);
    };
    refuses({"--connexity", "4"}, {"--delta", "--budget"});
    refuses({"--connexity", "4", "--delta", "1", "--budget", "1"}, {"--delta", "--budget"});
    refuses({"--delta", "1"}, {"--connexity", "--flood"});
    refuses({"--budget", "1"}, {"--connexity", "--flood"});
    refuses({"--flood", "--connexity", "4", "--delta", "1"}, {"--flood", "--connexity"});
    refuses({"--flood", "--budget", "1"}, {"--flood", "--delta"});
    refuses({"--connexity", "4", "--delta", "1", "--lowest-first"}, {"--lowest-first", "--budget"});
    refuses({"--connexity", "4", "--delta", "1", "--second-delta", "1"}, {"--second-delta", "--second"});
    refuses({"--connexity", "4", "--budget", "1", "--second", In("second.tif")}, {"--second", "--delta"});
    refuses({"--flood", "--delta", "-1"}, {"--delta", "negative"});
    refuses(
        {"--flood", "--delta", "1", "--second", In("second.tif"), "--second-delta", "-1"},
        {"--second-delta", "negative"});
    EXPECT_EQ(Files(), before);
}

TEST_F(WandCommand, NamesAFileThatItCannotUse)
{
    Save("image.tif", Draw<uchar>({"123"}));
    Save("colour.png", Draw<cv::Vec3b>({"123"}));
    Save("four.png", Draw<cv::Vec4b>({"123"}));
    Save("words.png", Draw<ushort>({"123"}));
    Save("small.png", Draw<uchar>({"12"}));
    std::set<std::string> const before = Files();
    auto const refusesImage = [&](std::string const & image, std::vector<std::string> rules,
                                  std::vector<std::string> const & named) {
        rules.insert(rules.begin(), {"wand", In(image), "--seed", "0,0", "-o", In("out.tif")});
        ExpectFailure(rules, named);
    };
    std::vector<std::string> const steps{"--connexity", "4", "--delta", "1"};
    std::vector<std::string> const flood{"--flood", "--delta", "1"};
    refusesImage("none.tif", steps, {"none.tif", "no such file"});
    refusesImage("colour.png", steps, {"colour.png", "3 channels"});
    refusesImage("words.png", flood, {"words.png", "16-bit unsigned", "accepted"});
    refusesImage("four.png", flood, {"four.png", "4 channels", "1 or 3"});
    auto const refusesSecond = [&](std::string const & second, std::vector<std::string> rules,
                                   std::vector<std::string> const & named) {
        rules.insert(rules.end(), {"--seed", "0,0", "--second", In(second)});
        Refuses(rules, named);
    };
    for (auto const & rules : {steps, flood})
    {
        refusesSecond("none.tif", rules, {"none.tif", "no such file"});
        refusesSecond("small.png", rules, {"small.png", "2 x 1", "image.tif", "3 x 1"});
    }
    refusesSecond("colour.png", steps, {"colour.png", "3 channels"});
    refusesSecond("words.png", flood, {"words.png", "16-bit unsigned", "accepted"});
    EXPECT_EQ(Files(), before);
}

TEST_F(WandCommand, NamesAnOutputThatItCannotWrite)
{
    Save("image.tif", Draw<uchar>({"123"}));
    Save("second.tif", Draw<uchar>({"123"}));
    std::set<std::string> const before = Files();
    auto const refuses = [&](std::vector<std::string> arguments, std::vector<std::string> const & named) {
        arguments.insert(
            arguments.begin(), {"wand", In("image.tif"), "--second", In("second.tif"), "--connexity", "4", "--delta",
                                "1", "--seed", "0,0"});
        ExpectFailure(arguments, named);
    };
    refuses({"-o", In("out.png")}, {"out.png", ".tif"});
    refuses({"-o", In("image.tif")}, {"image.tif", "overwritten"});
    refuses({"-o", In("second.tif")}, {"second.tif", "overwritten"});
    refuses({"--picture", In("image.tif")}, {"image.tif", "overwritten"});
    refuses({"--picture", In("second.tif")}, {"second.tif", "overwritten"});
    refuses({"--picture", In("out.what")}, {"out.what", "format"});
    EXPECT_EQ(Files(), before);
}

} // namespace

} // namespace morvane::tests
