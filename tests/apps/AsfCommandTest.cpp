#include "apps/ProgramFixture.h"

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <morvane/filters/AlternatingSequentialFilters.h>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace morvane::tests
{

namespace
{

class AsfCommand : public Program
{
protected:
    void Save(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// What is written, after a run that reports so many changed pixels.
    [[nodiscard]] cv::Mat Smooth(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), "asf");
        arguments.insert(arguments.end(), {"-o", In("out.tif")});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        cv::Mat out = Read(In("out.tif"));
        std::string const counted = "\nchanged  " + std::to_string(cv::countNonZero(out != Read(arguments[1]))) + "\n";
        EXPECT_NE(outcome.output.find(counted), std::string::npos) << outcome.output;
        return out;
    }

    void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named) const
    {
        arguments.insert(arguments.begin(), "asf");
        arguments.insert(arguments.end(), {"-o", In("out.tif")});
        ExpectFailure(arguments, named);
    }
};

TEST_F(AsfCommand, BrightAndDarkSpecksVanish)
{
    Save(
        "specks.png", Draw(
                          {"22222888888", //
                           "22222888888", //
                           "22922888188", //
                           "22922888888", //
                           "22222888888", //
                           "22222888888"},
                          CV_8UC1));
    ExpectDrawn(
        Smooth({In("specks.png"), "--size", "3"}), {"22222888888", //
                                                    "22222888888", //
                                                    "22222888888", //
                                                    "22222888888", //
                                                    "22222888888", //
                                                    "22222888888"});
}

TEST_F(AsfCommand, Switches_ReachTheLibrary)
{
    Random random(9);
    cv::Mat const image = RandomImage(random, {33, 24}, CV_32FC1, {0.2, 0.0, 60});
    Save("image.tif", image);
    cv::Mat expected;
    ASSERT_TRUE(filters::ASF_Close(image, expected, 5, cv::MORPH_RECT));
    ExpectEqualImages(Smooth({In("image.tif"), "--size", "5"}), expected);
    ExpectEqualImages(Smooth({In("image.tif"), "--size", "6", "--first", "close", "--shape", "rectangle"}), expected);
    ASSERT_TRUE(filters::ASF_Open(image, expected, 5, cv::MORPH_ELLIPSE));
    ExpectEqualImages(Smooth({In("image.tif"), "--size", "5", "--first", "open", "--shape", "ellipse"}), expected);
    ASSERT_TRUE(filters::ASF_Open(image, expected, 3, cv::MORPH_CROSS));
    ExpectEqualImages(Smooth({In("image.tif"), "--size", "3", "--first", "open", "--shape", "cross"}), expected);
    EXPECT_EQ(Run({"asf", In("image.tif"), "--size", "3", "--picture", In("picture.png")}).status, 0);
    EXPECT_EQ(Read(In("picture.png")).type(), CV_8UC1);
    EXPECT_EQ(Files(), (std::set<std::string>{"image.tif", "out.tif", "picture.png"}));
}

TEST_F(AsfCommand, NamesWhatItCannotUse)
{
    Save("labels.tif", cv::Mat1i(9, 9, 1));
    Save("bytes.tif", cv::Mat1b(7, 9, uchar{1}));
    std::set<std::string> const before = Files();
    std::string const bytes = In("bytes.tif");
    Refuses({In("labels.tif"), "--size", "3"}, {"labels.tif", "CV_32SC1", "accepted"});
    Refuses({bytes, "--size", "8"}, {"bytes.tif", "9 x 7", "--size 8"});
    Refuses({bytes, "--size", "2"}, {"--size", "2"});
    Refuses({bytes, "--size", "3", "--first", "both"}, {"--first", "both", "close, open"});
    Refuses({bytes, "--size", "3", "--picture", bytes}, {"bytes.tif", "overwritten"});
    Refuses({bytes, "--size", "3", "--picture", "/proc/out.png"}, {"/proc/out.png", "written"});
    EXPECT_EQ(Files(), before);
}

} // namespace

} // namespace morvane::tests
