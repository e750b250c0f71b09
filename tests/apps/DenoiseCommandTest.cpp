#include "apps/ProgramFixture.h"

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <morvane/filters/NonLocalMeans.h>

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

using namespace morvane::filters;

class DenoiseCommand : public Program
{
protected:
    void Save(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// What is written, after a run without a word on the standard error.
    [[nodiscard]] cv::Mat Denoised(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), "denoise");
        arguments.insert(arguments.end(), {"-o", In("out.tif")});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        cv::Mat const image = Read(arguments[1]);
        cv::Mat out = Read(In("out.tif"));
        std::string const counted = "\nchanged  " + std::to_string(cv::countNonZero(out != image)) + "\n";
        EXPECT_NE(outcome.output.find(counted), std::string::npos) << outcome.output;
        EXPECT_GT(cv::countNonZero(out != image), 0);
        return out;
    }

    void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named) const
    {
        arguments.insert(arguments.begin(), "denoise");
        arguments.insert(arguments.end(), {"--strength", "10", "-o", In("out.tif")});
        ExpectFailure(arguments, named);
    }
};

/// Noise on two planes that meet in a step.
cv::Mat Noise(cv::Size size, int depth, double offset = 0.0)
{
    Random random(7);
    cv::Mat1d noise(size);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            noise(y, x) = offset + (x + y / 2 < size.width ? 60 : 160) + random.Below(20);
        }
    }
    cv::Mat image;
    noise.convertTo(image, depth);
    return image;
}

TEST_F(DenoiseCommand, Bands_GiveTheResultOfOneCall)
{
    // Taller than several bands of one thread.
    for (int const depth : {CV_8U, CV_16U, CV_16S})
    {
        SCOPED_TRACE(depth);
        cv::Mat const image = Noise({50, 150}, depth, depth == CV_16S ? -100.0 : 0.0);
        Save("noise.tif", image);
        cv::Mat expected;
        ASSERT_TRUE(NLMeans(image, 5, 7, 12.5F, expected));
        ExpectEqualImages(
            Denoised({In("noise.tif"), "--method", "plain", "--patch", "5", "--search", "7", "--strength", "12.5"}),
            expected);
    }
}

TEST_F(DenoiseCommand, Bands_DoNotDependOnWhatTheOthersHold)
{
    // Below, differences are so large that sums of them round; above they are small.
    cv::Mat image = Noise({40, 140}, CV_32S);
    Random random(3);
    for (int y = 90; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            image.at<int>(y, x) = 2000000000 - random.Below(40000000);
        }
    }
    Save("noise.tif", image);
    for (std::string const strength : {"10", "2e7"})
    {
        cv::Mat expected;
        ASSERT_TRUE(NLMeans(image, 4, 6, std::stof(strength), expected));
        ExpectEqualImages(
            Denoised({In("noise.tif"), "--method", "plain", "--patch", "4", "--search", "6", "--strength", strength}),
            expected);
    }
}

TEST_F(DenoiseCommand, Parallel_IsTheDefaultWithPatchesOf5InSquaresOf21)
{
    cv::Mat const image = Noise({60, 300}, CV_8U);
    Save("noise.png", image);
    cv::Mat expected;
    ASSERT_TRUE(NLMeansParallel(image, 5, 21, 10.0F, expected));
    ExpectEqualImages(Denoised({In("noise.png"), "--strength", "10"}), expected);
}

TEST_F(DenoiseCommand, Iterative_GoesOverItSeveralTimes)
{
    cv::Mat const image = Noise({40, 40}, CV_8U);
    Save("noise.png", image);
    std::vector<std::string> arguments{In("noise.png"), "--method", "iterative", "--search", "9", "--strength", "10"};
    cv::Mat expected;
    ASSERT_TRUE(NLMeansIterative(image, 5, 9, 10.0F, 3, expected));
    ExpectEqualImages(Denoised(arguments), expected);
    arguments.insert(arguments.end(), {"--iterations", "2"});
    ASSERT_TRUE(NLMeansIterative(image, 5, 9, 10.0F, 2, expected));
    ExpectEqualImages(Denoised(arguments), expected);
}

TEST_F(DenoiseCommand, MultiScale_WorksOnLevels)
{
    cv::Mat const image = Noise({90, 91}, CV_16S, -300.0);
    Save("noise.tif", image);
    for (std::string const method : {"multi-scale", "multi-scale-parallel"})
    {
        auto const filter = method == "multi-scale" ? MSD_NLMeans : MSD_NLMeansParallel;
        std::vector<std::string> arguments{In("noise.tif"), "--method", method, "--search", "9", "--strength", "8"};
        cv::Mat expected(image.size(), image.type());
        ASSERT_TRUE(filter(image, 5, 9, 8.0F, 3, expected));
        ExpectEqualImages(Denoised(arguments), expected);
        arguments.insert(arguments.end(), {"--levels", "1"});
        ASSERT_TRUE(filter(image, 5, 9, 8.0F, 1, expected));
        ExpectEqualImages(Denoised(arguments), expected);
    }
}

TEST_F(DenoiseCommand, Scale_MakesLevelsOfFloats)
{
    // Quarters and thousands are exact in both directions; NaN counts as 0.
    cv::Mat floats = Noise({40, 100}, CV_32F, -100.0) / 4.0F;
    floats.at<float>(50, 20) = std::numeric_limits<float>::quiet_NaN();
    Save("noise.tif", floats);
    cv::Mat1i levels(floats.size());
    for (int y = 0; y < floats.rows; ++y)
    {
        for (int x = 0; x < floats.cols; ++x)
        {
            float const value = floats.at<float>(y, x);
            levels(y, x) = value == value ? static_cast<int>(value * 1000.0F) : 0;
        }
    }
    cv::Mat1i expected;
    ASSERT_TRUE(NLMeans(levels, 5, 5, 1500.0F, expected));
    process::Outcome const outcome = Run(
        {"denoise", In("noise.tif"), "--method", "parallel", "--search", "5", "--strength", "1500", "--scale", "1000",
         "-o", In("out.tif"), "--picture", In("out.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    std::string const counted = "changed  " + std::to_string(cv::countNonZero(expected != levels)) + "\n";
    EXPECT_NE(outcome.output.find(counted), std::string::npos) << outcome.output;
    cv::Mat const out = Read(In("out.tif"));
    ASSERT_EQ(out.type(), CV_32FC1);
    for (int y = 0; y < out.rows; ++y)
    {
        for (int x = 0; x < out.cols; ++x)
        {
            ASSERT_FLOAT_EQ(out.at<float>(y, x), static_cast<float>(expected(y, x) / 1000.0)) << y << ", " << x;
        }
    }
    EXPECT_EQ(Read(In("out.png")).type(), CV_8UC1);
    EXPECT_EQ(Files(), (std::set<std::string>{"noise.tif", "out.png", "out.tif"}));
}

TEST_F(DenoiseCommand, SmallImages_StayAsTheyAre)
{
    Save("small.png", Noise({12, 11}, CV_8U));
    process::Outcome const outcome = Run({"denoise", In("small.png"), "--strength", "10", "-o", In("out.tif")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("changed  0\n"), std::string::npos) << outcome.output;
    ExpectEqualImages(Read(In("out.tif")), Noise({12, 11}, CV_8U));
}

TEST_F(DenoiseCommand, NamesASwitchThatItCannotUse)
{
    Save("noise.png", Noise({16, 16}, CV_8U));
    std::set<std::string> const before = Files();
    std::string const image = In("noise.png");
    ExpectFailure({"denoise", image, "--strength", "0", "-o", In("out.tif")}, {"--strength", "0"});
    Refuses({image, "--method", "best"}, {"--method", "best", "plain, parallel, iterative, multi-scale"});
    Refuses({image, "--iterations", "2"}, {"--iterations", "--method iterative"});
    Refuses({image, "--levels", "2"}, {"--levels", "--method multi-scale"});
    EXPECT_EQ(Files(), before);
}

TEST_F(DenoiseCommand, NamesAnImageThatItCannotUse)
{
    cv::Mat1w words(16, 16, ushort{1});
    words(3, 3) = 32768;
    Save("words.png", words);
    Save("floats.tif", Noise({16, 16}, CV_32F, -100.0));
    Save("colours.png", cv::Mat(16, 16, CV_8UC3, cv::Scalar::all(1)));
    std::set<std::string> const before = Files();
    for (std::string const method : {"multi-scale", "multi-scale-parallel"})
    {
        Refuses({In("words.png"), "--method", method}, {"words.png", "levels from 1 to 32768", "-32768 to 32767"});
    }
    // From -40 up.
    Refuses(
        {In("floats.tif"), "--method", "multi-scale", "--scale", "1000"},
        {"floats.tif", "levels from -40000 to ", "-32768 to 32767"});
    Refuses(
        {In("floats.tif"), "--method", "multi-scale", "--scale", "1", "--levels", "5"},
        {"floats.tif", "16 x 16", "too small", "5 times"});
    Refuses({In("floats.tif")}, {"floats.tif", "--scale"});
    Refuses({In("floats.tif"), "--scale", "1e9"}, {"floats.tif", "too large for --scale"});
    Refuses({In("colours.png")}, {"colours.png", "3 channels"});
    EXPECT_EQ(Files(), before);
    // What 16 bits just hold passes.
    words(3, 3) = 32767;
    Save("words.png", words);
    EXPECT_EQ(Run({"denoise", In("words.png"), "--method", "multi-scale", "--strength", "1"}).status, 0);
}

TEST_F(DenoiseCommand, NamesAnOutputThatItCannotWrite)
{
    Save("noise.tif", Noise({16, 16}, CV_8U));
    std::set<std::string> const before = Files();
    std::vector<std::string> const denoise{"denoise", In("noise.tif"), "--strength", "10"};
    auto const with = [&denoise](std::vector<std::string> more) {
        more.insert(more.begin(), denoise.begin(), denoise.end());
        return more;
    };
    ExpectFailure(with({"-o", In("noise.tif")}), {"noise.tif", "overwritten"});
    ExpectFailure(with({"-o", In("out.tif"), "--picture", "/proc/out.png"}), {"/proc/out.png", "written"});
    EXPECT_EQ(Files(), before);
}

} // namespace

} // namespace morvane::tests
