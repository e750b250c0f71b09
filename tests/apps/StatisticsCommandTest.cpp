#include "apps/ProgramFixture.h"

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <morvane/filters/Statistics.h>

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

class StatisticsCommand : public Program
{
protected:
    void Save(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// Runs the command with all its outputs. @return what it printed
    [[nodiscard]] std::string Measure(std::string const & image, std::string const & kernel) const
    {
        std::vector<std::string> arguments{"statistics", In(image), "--kernel", kernel};
        for (std::string const name : {"entropy", "mean", "deviation", "median"})
        {
            arguments.insert(
                arguments.end(), {"--" + name, In(name + ".tif"), "--" + name + "-picture", In(name + ".png")});
        }
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        return outcome.output;
    }

    void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named) const
    {
        arguments.insert(arguments.begin(), "statistics");
        arguments.insert(arguments.end(), {"--mean", In("mean.tif")});
        ExpectFailure(arguments, named);
    }
};

TEST_F(StatisticsCommand, Outputs_AreThoseOfTheLibrary)
{
    Random random(5);
    for (int const type : {CV_8UC1, CV_16SC1, CV_32FC1})
    {
        SCOPED_TRACE(type);
        cv::Mat const image = RandomImage(random, {31, 23}, type, {0.3, 0.0, 40});
        Save("image.tif", image);
        std::string const printed = Measure("image.tif", "6");
        cv::Mat entropy;
        cv::Mat mean;
        cv::Mat deviation;
        cv::Mat median;
        ASSERT_TRUE(filters::LocalStatisticsNoZero(image, 6, entropy, mean, deviation, median));
        ExpectEqualImages(Read(In("entropy.tif")), entropy);
        ExpectEqualImages(Read(In("mean.tif")), mean);
        ExpectEqualImages(Read(In("deviation.tif")), deviation);
        ExpectEqualImages(Read(In("median.tif")), median);
    }
    for (std::string const name : {"entropy", "mean", "deviation", "median"})
    {
        EXPECT_EQ(Read(In(name + ".png")).type(), CV_8UC3);
    }
}

TEST_F(StatisticsCommand, Picture_IsOverTheRangeOfTheMeasuredPixels)
{
    // The window of a pixel of one row has the two columns before it, its own, and the one after. With the range of 128,
    // levels are doubled; the last one would be 256, which is 0, and empty.
    Save("image.png", (cv::Mat1b(1, 11) << 0, 20, 0, 60, 0, 0, 0, 100, 0, 0, 128));
    EXPECT_NE(Measure("image.png", "2").find("size   11 x 1\n"), std::string::npos);
    ExpectEqualImages(Read(In("median.tif")), (cv::Mat1b(1, 11) << 0, 40, 0, 120, 0, 0, 0, 200, 0, 0, 0));
    // Of 1275 steps from black to red, the middle; the upper end is white.
    cv::Mat3b expected(1, 11, cv::Vec3b(0, 0, 0));
    expected(0, 3) = cv::Vec3b(128, 255, 0);
    expected(0, 7) = cv::Vec3b(255, 255, 255);
    ExpectEqualImages(Read(In("median.png")), expected);
}

TEST_F(StatisticsCommand, Lines_TellOfTheWholeImage)
{
    // Of 0.5, 3.25, 8 and 20 the upper one of the middle; the mean of all eight is 3, and the squares of the differences
    // from it sum up to 462.875.
    float const nan = std::numeric_limits<float>::quiet_NaN();
    Save("image.tif", (cv::Mat1f(2, 4) << 0.5F, 0.0F, 8.0F, -7.75F, 3.25F, 0.0F, nan, 20.0F));
    std::string const printed = Measure("image.tif", "3");
    EXPECT_NE(printed.find("\nmedian     8 of those above 0\nmean       3\ndeviation  "), std::string::npos) << printed;
    EXPECT_NE(printed.find("\ndeviation  7.606"), std::string::npos) << printed;
    // In doubles more digits are told.
    Save("image.tif", (cv::Mat1d(1, 3) << 100.2, 236123.4567, 0.0));
    EXPECT_NE(Measure("image.tif", "3").find("\nmedian     236123.4567 of"), std::string::npos);
}

TEST_F(StatisticsCommand, NamesWhatItCannotUse)
{
    float const infinity = std::numeric_limits<float>::infinity();
    Save("flat.tif", cv::Mat1f(3, 4, 2.5F));
    Save("infinite.tif", (cv::Mat1f(1, 3) << 1.0F, infinity, 0.0F));
    Save("colours.png", cv::Mat(3, 4, CV_8UC3, cv::Scalar::all(1)));
    Save("image.tif", (cv::Mat1b(1, 3) << 1, 2, 3));
    std::set<std::string> const before = Files();
    Refuses({In("flat.tif"), "--kernel", "4"}, {"flat.tif", "flat", "every pixel is 2.5"});
    Refuses({In("infinite.tif"), "--kernel", "4"}, {"infinite.tif", "infinite"});
    Refuses({In("colours.png"), "--kernel", "4"}, {"colours.png", "3 channels"});
    Refuses({In("image.tif"), "--kernel", "1"}, {"--kernel 1", "no window", "2"});
    Refuses({In("image.tif"), "--kernel", "4", "--median", In("mean.tif")}, {"mean.tif", "two outputs"});
    Refuses({In("image.tif"), "--kernel", "4", "--median", In("image.tif")}, {"image.tif", "overwritten"});
    Refuses({In("image.tif"), "--kernel", "4", "--median-picture", "/proc/median.png"}, {"/proc/median.png"});
    EXPECT_EQ(Files(), before);
}

} // namespace

} // namespace morvane::tests
