#include "apps/ProgramFixture.h"
#include "apps/Terminal.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <morvane/algorithm/MatchingScores.h>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

class RegisterCommand : public Program
{
protected:
    void Save(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// Hills and blocks on them, none of which looks like another.
    static cv::Mat1f Landscape(int rows, int columns)
    {
        Random random(77);
        cv::Mat1f coarse(7, 9);
        for (float & height : coarse)
        {
            height = 20.0F + static_cast<float>(random.Below(30));
        }
        cv::Mat1f heights;
        cv::resize(coarse, heights, {columns, rows}, 0.0, 0.0, cv::INTER_CUBIC);
        for (int block = 0; block < 12; ++block)
        {
            cv::Rect const place(random.Below(columns - 20), random.Below(rows - 20), 6 + block, 14);
            heights(place) += static_cast<float>(5 + random.Below(20));
        }
        return heights;
    }

    /// The part of an image around a place, as a scanner would show it that stood turned.
    static cv::Mat1f SeenFrom(cv::Mat1f const & heights, cv::Rect const & part, double angle)
    {
        cv::Mat turned;
        double dx = 0.0;
        double dy = 0.0;
        EXPECT_TRUE(algorithm::utils::RotateImage(heights(part).clone(), -angle, turned, dx, dy));
        return turned;
    }

    /// The numbers after a word at the start of a line of the report.
    static std::vector<double> Reported(std::string const & report, std::string const & word)
    {
        std::smatch line;
        if (!std::regex_search(report, line, std::regex("\n" + word + "((?:  [-+.e0-9]+)+)\n"))) return {};
        std::istringstream numbers(line[1].str());
        return {std::istream_iterator<double>(numbers), {}};
    }

    void ExpectPose(std::vector<std::string> arguments, double angle, cv::Point2d const & middle) const
    {
        arguments.insert(arguments.begin(), {"register", In("reference.tif"), In("moving.tif")});
        process::Outcome const outcome = Run(arguments);
        ASSERT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        auto const angles = Reported(outcome.output, "angle");
        auto const places = Reported(outcome.output, "middle");
        ASSERT_EQ(angles.size(), 1U) << outcome.output;
        ASSERT_EQ(places.size(), 2U) << outcome.output;
        EXPECT_LT(std::abs(std::remainder(angles[0] - angle, 360.0)), 1.0) << outcome.output;
        EXPECT_NEAR(places[0], middle.x, 1.5) << outcome.output;
        EXPECT_NEAR(places[1], middle.y, 1.5) << outcome.output;
        EXPECT_EQ(outcome.output.find("interrupted"), std::string::npos);
    }
};

TEST_F(RegisterCommand, FindsAKnownPoseAgain)
{
    cv::Mat1f const heights = Landscape(150, 190);
    Save("reference.tif", heights(cv::Rect(0, 0, 120, 110)));
    // The middle of the part is 115, 80 in the reference, which it leaves to the right and below.
    for (double const angle : {0.0, 37.0, -110.0, 180.0})
    {
        SCOPED_TRACE(angle);
        Save("moving.tif", SeenFrom(heights, cv::Rect(60, 20, 110, 120), angle));
        ExpectPose({}, angle, {115.0, 80.0});
    }
}

TEST_F(RegisterCommand, ComparesOnlyWhatStandsOut)
{
    // On the slope of the moving image nothing has the height that it has in the reference, but where the blocks are.
    cv::Mat1f const heights = Landscape(130, 130);
    Save("reference.tif", heights);
    Save("moving.tif", SeenFrom(heights, cv::Rect(30, 25, 90, 80), 20.0));
    ExpectPose({"--structure", "2", "--height-step", "4"}, 20.0, {75.0, 65.0});
}

TEST_F(RegisterCommand, SmallImagesNeedNoCoarserOnes)
{
    cv::Mat1f const heights = Landscape(50, 60);
    Save("reference.tif", heights);
    Save("moving.tif", heights(cv::Rect(10, 8, 30, 25)));
    ExpectPose({"--margin", "0.2", "--height-step", "1"}, 0.0, {25.0, 20.5});
}

TEST_F(RegisterCommand, Picture_ShowsBothInOnePlace)
{
    cv::Mat1f const heights = Landscape(60, 60);
    Save("reference.tif", heights);
    Save("moving.tif", heights);
    process::Outcome const outcome =
        Run({"register", In("reference.tif"), In("moving.tif"), "--margin", "0.3", "--picture", In("both.png")});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(Reported(outcome.output, "angle"), std::vector<double>{0.0}) << outcome.output;
    // Every pixel is worth 16.
    EXPECT_EQ(Reported(outcome.output, "score"), std::vector<double>{16.0 * 60 * 60}) << outcome.output;
    EXPECT_EQ(Reported(outcome.output, "shift"), (std::vector<double>{0.0, 0.0})) << outcome.output;
    cv::Mat3b const both = Read(In("both.png"));
    // Without the margin.
    ASSERT_EQ(both.size(), cv::Size(60, 60));
    // They agree: what is there is grey.
    for (cv::Vec3b const & pixel : both)
    {
        EXPECT_EQ(pixel, cv::Vec3b::all(pixel[0]));
    }
    EXPECT_EQ(Files(), (std::set<std::string>{"reference.tif", "moving.tif", "both.png"}));
}

TEST_F(RegisterCommand, CtrlC_GivesTheBestSoFar)
{
    cv::Mat1f const heights = Landscape(112, 112);
    Save("reference.tif", heights);
    Save("moving.tif", heights);
    // Far more positions than are tried before the first word.
    TerminalOutcome const outcome = RunAtTerminal(
        MORVANE_PROGRAM,
        {"register", In("reference.tif"), In("moving.tif"), "--margin", "4", "--progress", "--picture", In("both.png")},
        "%");
    EXPECT_EQ(outcome.status, 0) << outcome.shown;
    EXPECT_NE(outcome.shown.find("interrupted"), std::string::npos) << outcome.shown;
    EXPECT_EQ(Files().count("both.png"), 1U);
}

TEST_F(RegisterCommand, CtrlC_SaysSoWhenThereIsNothingYet)
{
    Save("reference.tif", cv::Mat1f(112, 112, 100.0F));
    Save("moving.tif", cv::Mat1f(112, 112, 500.0F));
    TerminalOutcome const outcome = RunAtTerminal(
        MORVANE_PROGRAM,
        {"register", In("reference.tif"), In("moving.tif"), "--margin", "4", "--progress", "--height-step", "1"}, "%");
    EXPECT_EQ(outcome.status, 2) << outcome.shown;
    EXPECT_NE(outcome.shown.find("interrupted before"), std::string::npos) << outcome.shown;
}

TEST_F(RegisterCommand, NamesWhatItCannotUse)
{
    Save("reference.tif", Draw<float>({"123", "456"}));
    Save("moving.tif", Draw<float>({"...", "..."}));
    Save("colour.png", Draw<cv::Vec3b>({"123"}));
    std::string const reference = In("reference.tif");
    ExpectFailure({"register", reference}, {"moving"});
    ExpectFailure({"register", reference, In("missing.tif")}, {"missing.tif"});
    ExpectFailure({"register", reference, In("colour.png")}, {"colour.png"});
    ExpectFailure({"register", In("colour.png"), reference}, {"colour.png"});
    ExpectFailure({"register", reference, In("moving.tif")}, {"moving.tif", "nothing"});
    for (std::string const option : {"--height-step", "--structure"})
    {
        ExpectFailure({"register", reference, reference, option, "0"}, {option});
        ExpectFailure({"register", reference, reference, option, "nan"}, {option});
    }
    ExpectFailure({"register", reference, reference, "--margin", "-1"}, {"--margin"});
    ExpectFailure({"register", reference, reference, "--margin", "5"}, {"--margin"});
}

} // namespace

} // namespace morvane::tests
