#include "apps/ProgramFixture.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <morvane/connexity/QuasiFlatZones.h>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

class QuasiFlatCommand : public Program
{
protected:
    void Save(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// The mask of a run with image.tif, with 1 for 255.
    [[nodiscard]] cv::Mat Mask(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"quasi-flat", In("image.tif"), "-o", In("mask.png")});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        cv::Mat const mask = Read(In("mask.png"));
        EXPECT_EQ(mask.type(), CV_8UC1);
        std::string const counted = "\nmask  " + std::to_string(cv::countNonZero(mask)) + "\n";
        EXPECT_NE(outcome.output.find(counted), std::string::npos) << outcome.output;
        EXPECT_EQ(cv::countNonZero(mask == 255), cv::countNonZero(mask));
        return mask / 255;
    }

    void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named) const
    {
        arguments.insert(arguments.begin(), {"quasi-flat", In("image.tif"), "--connexity", "4"});
        ExpectFailure(arguments, named);
    }
};

TEST_F(QuasiFlatCommand, MasksTheZonesWithSeeds)
{
    Save("image.tif", Draw<ushort>({"1239", "9.98", "1.12"}));
    std::vector<std::string> const rules{"--connexity", "4", "--delta", "1"};
    auto const with = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), rules.begin(), rules.end());
        return Mask(arguments);
    };
    ExpectDrawn(with({"--seed", "0,0"}), {"111.", "....", "...."});
    ExpectDrawn(with({"--seed", "3,1", "--seed", "2,2"}), {"...1", "..11", "..11"});
    // A seed where nothing was measured has no effect.
    ExpectDrawn(with({"--seed", "1,1"}), {"....", "....", "...."});
    Save("seeds.png", Draw<uchar>({"....", "7...", "...."}));
    ExpectDrawn(with({"--seeds", In("seeds.png")}), {"....", "1...", "...."});
}

TEST_F(QuasiFlatCommand, MasksTheLargestZoneWithoutSeeds)
{
    Save("image.tif", Draw<int>({"1239", "9.98", "1.18"}));
    ExpectDrawn(Mask({"--connexity", "4", "--delta", "1"}), {"...1", "..11", "...1"});
}

TEST_F(QuasiFlatCommand, FiltersInTheOrderThatIsAsked)
{
    // A pillar and a hole of one pixel each: the closing fills the hole and joins nothing, either way.
    Save("image.tif", Draw<uchar>({"5555555", "5555555", "5595525", "5555555", "5555555"}));
    cv::Mat const all = cv::Mat::ones(5, 7, CV_8UC1);
    for (std::string const first : {"closing-first", "opening-first"})
    {
        EXPECT_TRUE(EqualImages(
            Mask({"--connexity", "4", "--delta", "0", "--filter", first, "--window", "3", "--seed", "0,0"}), all))
            << first;
    }
    ExpectDrawn(
        Mask({"--connexity", "4", "--delta", "0", "--seed", "0,0"}),
        {"1111111", "1111111", "11.11.1", "1111111", "1111111"});
}

TEST_F(QuasiFlatCommand, FillsHolesOfAnyImage)
{
    Save("image.tif", Draw<uchar>({"55555", "5...5", "5...5", "5...5", "55555"}));
    std::vector<std::string> const rules{"--connexity", "4", "--delta", "0", "--seed", "0,0"};
    ExpectDrawn(Mask(rules), {"11111", "1...1", "1...1", "1...1", "11111"});
    std::vector<std::string> filled = rules;
    filled.insert(filled.end(), {"--fill-holes", "--window", "5"});
    ExpectDrawn(Mask(filled), {"11111", "11111", "11111", "11111", "11111"});
}

TEST_F(QuasiFlatCommand, Base_SearchesInItsOwnUnits)
{
    // Ground at 2 m with a slow slope, a table of 1 m on it.
    cv::Mat1f image(60, 80, 2.0F);
    for (int x = 0; x < image.cols; ++x)
    {
        image.col(x) += 0.002F * static_cast<float>(x);
    }
    image(cv::Rect(30, 20, 20, 20)) += 1.0F;
    Save("image.tif", image);
    std::vector<std::string> const rules{"--connexity", "8", "--delta", "0.05", "--base", "--pixel-size", "0.1"};
    auto const base = [&](std::string const & unit) {
        std::vector<std::string> arguments = rules;
        arguments.insert(arguments.end(), {"--unit", unit, "--area-limit", "50"});
        return Mask(arguments);
    };
    auto const library = [&](double unit) {
        cv::Mat filtered;
        cv::Mat mask;
        cv::Mat heights;
        image.convertTo(heights, CV_32F, unit);
        EXPECT_TRUE(QuasiFlatZonesPropagation(
            heights, projection::ProjectionClosingFirst, 0.05 * unit, connexity::eConnexity8, 3, false, false,
            cv::Mat(), 50, 0, 20, 0.1 * unit, 0.3, filtered, mask));
        return cv::Mat(mask / 255);
    };
    EXPECT_TRUE(EqualImages(base("1000"), library(1000.0)));
    EXPECT_TRUE(EqualImages(base("10000"), library(10000.0)));
    // Within 4 m of the floor the table counts, within 40 cm it does not.
    EXPECT_EQ(base("1000").at<uchar>(30, 40), 1);
    EXPECT_EQ(base("10000").at<uchar>(30, 40), 0);
    EXPECT_EQ(base("10000").at<uchar>(50, 10), 1);
}

TEST_F(QuasiFlatCommand, WritesZonesAndPictures)
{
    Save("image.tif", Draw<uchar>({"1199", ".888"}));
    process::Outcome const outcome = Run(
        {"quasi-flat", In("image.tif"), "--connexity", "4", "--delta", "1", "--seed", "0,0", "--zones", In("zones.tif"),
         "--zones-picture", In("zones.png"), "--picture", In("picture.png")});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("\nzones  2\nmask  2\n"), std::string::npos) << outcome.output;
    ExpectDrawn(Read(In("zones.tif")), {"1122", ".222"});
    cv::Mat3b const zones = Read(In("zones.png"));
    EXPECT_EQ(zones(0, 0), zones(0, 1));
    EXPECT_NE(zones(0, 0), zones(0, 2));
    EXPECT_EQ(zones(1, 0), cv::Vec3b());
    cv::Mat3b const picture = Read(In("picture.png"));
    ASSERT_EQ(picture.size(), cv::Size(4, 2));
    // Outside mask and seed it is grey.
    EXPECT_EQ(picture(1, 3)[0], picture(1, 3)[2]);
}

TEST_F(QuasiFlatCommand, NamesWhatItCannotUse)
{
    Save("image.tif", Draw<uchar>({"123"}));
    Save("float.tif", Draw<float>({"123"}));
    Save("small.png", Draw<uchar>({"12"}));
    Refuses({}, {"--delta"});
    Refuses({"--delta", "-1"}, {"--delta"});
    Refuses({"--delta", "1", "--fill-holes"}, {"--window"});
    Refuses({"--delta", "1", "--filter", "closing-first"}, {"--window"});
    Refuses({"--delta", "1", "--filter", "none", "--window", "3"}, {"--filter", "none", "opening-first"});
    Refuses({"--delta", "1", "--window", "3"}, {"--window", "--filter"});
    Refuses({"--delta", "1", "--fill-holes", "--window", "2"}, {"--window"});
    Refuses({"--delta", "1", "--base"}, {"--pixel-size"});
    Refuses({"--delta", "1", "--pixel-size", "1"}, {"--base"});
    Refuses({"--delta", "1", "--base", "--pixel-size", "0"}, {"--pixel-size"});
    Refuses({"--delta", "1", "--base", "--pixel-size", "1", "--area-limit", "0"}, {"--area-limit"});
    Refuses({"--delta", "1", "--base", "--pixel-size", "1", "--radius", "-1"}, {"--radius"});
    Refuses({"--delta", "1", "--base", "--pixel-size", "1", "--seed", "0,0"}, {"--seed", "--base"});
    Refuses({"--delta", "1", "--seed", "3,0"}, {"3,0", "3 x 1"});
    Refuses({"--delta", "1", "--seed", "a"}, {"--seed a"});
    Refuses({"--delta", "1", "--seeds", In("small.png")}, {"small.png"});
    Refuses({"--delta", "1", "--seeds", In("float.tif")}, {"float.tif"});
    Refuses({"--delta", "1", "--seeds", In("missing.png")}, {"missing.png"});
}

} // namespace

} // namespace morvane::tests
