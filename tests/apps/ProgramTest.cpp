#include "apps/ProgramFixture.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using morvane::tests::Program;
using morvane::tests::Read;

TEST_F(Program, Label_WritesLosslessLabels)
{
    WriteScan("scan.png");
    process::Outcome const outcome = Run({"label", In("scan.png"), "--connexity", "4", "-o", In("labels.tif")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    cv::Mat const labels = Read(In("labels.tif"));
    ASSERT_EQ(labels.type(), CV_32SC1);
    cv::Mat const expected =
        (cv::Mat_<int>(3, 5) << 1, 0, 0, 0, 0, //
         0, 2, 0, 0, 3,                        //
         0, 0, 0, 0, 3);
    EXPECT_EQ(cv::norm(labels, expected, cv::NORM_INF), 0.0) << labels;
    EXPECT_EQ(Files(), (std::set<std::string>{"scan.png", "labels.tif"}));
}

TEST_F(Program, Label_SaysWhatTheImageIsAndHowManyZonesItHas)
{
    WriteScan("scan.tif", CV_32FC1);
    process::Outcome const outcome = Run({"label", In("scan.tif"), "--connexity", "8"});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    for (std::string const line :
         {"size   5 x 3\n", "type   CV_32FC1, 32-bit float, 1 channel\n", "empty  73.3 %\n", "zones  2\n"})
    {
        EXPECT_NE(outcome.output.find(line), std::string::npos) << outcome.output;
    }
}

TEST_F(Program, Label_TakesEveryNeighbourhoodByName)
{
    WriteScan("scan.png");
    std::map<std::string, int> const zones = {
        {"4", 3},
        {"4-wrapped", 3},
        {"8", 2},
        {"8-axes-first", 2},
        {"8-wrapped", 1},
        {"12", 2},
        {"20", 2},
        {"12-interleaved", 2},
        {"12-interleaved-wrapped", 1},
        {"20-interleaved", 2},
        {"20-interleaved-wrapped", 1},
        {"24-interleaved", 2},
        {"24-interleaved-wrapped", 1},
    };
    for (auto const & [name, count] : zones)
    {
        process::Outcome const outcome = Run({"label", In("scan.png"), "--connexity", name});
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_NE(outcome.output.find("zones  " + std::to_string(count) + "\n"), std::string::npos) << name << "\n"
                                                                                                    << outcome.output;
    }
}

TEST_F(Program, Label_TakesColourAndWideImages)
{
    for (int const type : {CV_8UC3, CV_8UC4, CV_16UC1, CV_16UC3})
    {
        WriteScan("scan.png", type);
        process::Outcome const outcome = Run({"label", In("scan.png"), "--connexity", "4"});
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_NE(outcome.output.find("type   " + cv::typeToString(type) + ","), std::string::npos) << outcome.output;
        EXPECT_NE(outcome.output.find("zones  3\n"), std::string::npos) << outcome.output;
    }
}

TEST_F(Program, Picture_HasOneColourForEachZoneAndBlackForNone)
{
    // A chessboard of single pixels: many zones.
    cv::Mat image = cv::Mat::zeros(40, 40, CV_8UC1);
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = y % 2; x < image.cols; x += 2)
        {
            image.at<uchar>(y, x) = 200;
        }
    }
    ASSERT_TRUE(cv::imwrite(In("scan.png"), image));
    process::Outcome const outcome =
        Run({"label", In("scan.png"), "--connexity", "4", "-o", In("labels.tif"), "--picture", In("zones.png")});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;

    cv::Mat const labels = Read(In("labels.tif"));
    cv::Mat const picture = Read(In("zones.png"));
    ASSERT_EQ(picture.type(), CV_8UC3);
    std::set<std::vector<int>> colours;
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            auto const & colour = picture.at<cv::Vec3b>(y, x);
            bool const isBlack = colour == cv::Vec3b(0, 0, 0);
            ASSERT_EQ(isBlack, labels.at<int>(y, x) == 0);
            if (isBlack) continue;
            EXPECT_GE(*std::min_element(colour.val, colour.val + 3), 64);
            colours.insert({colour[0], colour[1], colour[2]});
        }
    }
    EXPECT_EQ(colours.size(), 800U);
}

TEST_F(Program, FileNames_MayHoldBlanksAndQuotes)
{
    WriteScan("a 'scan' \"of\" $HOME; ok.png");
    process::Outcome const outcome = Run(
        {"label", In("a 'scan' \"of\" $HOME; ok.png"), "--connexity", "4", "-o", In("my labels.TIF"), "--picture",
         In("it's.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(Files(), (std::set<std::string>{"a 'scan' \"of\" $HOME; ok.png", "my labels.TIF", "it's.png"}));
}

TEST_F(Program, Label_NamesAnInputThatIsMissingBrokenOrRefused)
{
    ExpectFailure({"label", In("nowhere.tif"), "--connexity", "4"}, {"nowhere.tif", "no such file"});
    ExpectFailure({"label", Folder().string(), "--connexity", "4"}, {Folder().string(), "directory"});

    WriteText("text.png", "this is no picture\n");
    ExpectFailure({"label", In("text.png"), "--connexity", "4"}, {"text.png", "no image"});
    WriteText("empty.tif", "");
    ExpectFailure({"label", In("empty.tif"), "--connexity", "4"}, {"empty.tif", "no image"});
    // A codec that starts and then fails talks to the standard error on its own.
    WriteText("broken.png", "\x89PNG\r\n\x1a\nxxxxxxxxxxxxxxxxxxx");
    ExpectFailure({"label", In("broken.png"), "--connexity", "4"}, {"broken.png", "no image"});
    WriteScan("cut.tif", CV_32FC1);
    fs::resize_file(In("cut.tif"), 20);
    ExpectFailure({"label", In("cut.tif"), "--connexity", "4"}, {"cut.tif", "no image"});

    cv::Mat const bytes(3, 3, CV_8SC1, cv::Scalar(1));
    ASSERT_TRUE(cv::imwrite(In("signed.tif"), bytes));
    ExpectFailure({"label", In("signed.tif"), "--connexity", "4"}, {"signed.tif", "8-bit signed", "accepted"});
}

TEST_F(Program, Label_NamesAnOutputThatCannotBeWritten_AndLeavesNothing)
{
    WriteScan("scan.png");
    WriteText("plain", "a file");
    fs::create_directory(Folder() / "folder.tif");
    std::set<std::string> const before = Files();
    auto const label = [this](std::vector<std::string> more) {
        more.insert(more.begin(), {"label", In("scan.png"), "--connexity", "4"});
        return more;
    };
    ExpectFailure(label({"-o", In("labels.png")}), {"labels.png", ".tif"});
    ExpectFailure(label({"-o", In("labels")}), {"labels", ".tif"});
    ExpectFailure(label({"--picture", In("zones.what")}), {"zones.what", "format"});
    ExpectFailure(label({"-o", In("none/labels.tif")}), {"none/labels.tif", "folder"});
    ExpectFailure(label({"-o", In("plain/labels.tif")}), {"plain/labels.tif", "folder"});
    ExpectFailure(label({"-o", In("folder.tif")}), {"folder.tif", "no plain file"});
    ExpectFailure(label({"--picture", In("scan.png")}), {"scan.png", "overwritten"});
    ExpectFailure(label({"-o", In("a.tif"), "--picture", In("./a.tif")}), {"a.tif", "two outputs"});
    // The labels could be written, the picture could not: neither stays.
    ExpectFailure(label({"-o", In("a.tif"), "--picture", In("none/zones.png")}), {"none/zones.png"});
    ExpectFailure(label({"-o", In("a.tif"), "--picture", "/proc/zones.png"}), {"/proc/zones.png", "written"});
    EXPECT_EQ(Files(), before);
}

TEST_F(Program, Failure_LeavesAnEarlierOutputAsItWas)
{
    WriteScan("scan.png");
    WriteText("labels.tif", "precious");
    ExpectFailure(
        {"label", In("scan.png"), "--connexity", "4", "-o", In("labels.tif"), "--picture", "/proc/zones.png"},
        {"/proc/zones.png"});
    EXPECT_EQ(ReadText("labels.tif"), "precious");
    EXPECT_EQ(Files(), (std::set<std::string>{"scan.png", "labels.tif"}));
}

TEST_F(Program, Success_ReplacesAnEarlierOutput)
{
    WriteScan("scan.png");
    WriteText("labels.tif", "old");
    EXPECT_EQ(Run({"label", In("scan.png"), "--connexity", "4", "-o", In("labels.tif")}).status, 0);
    EXPECT_EQ(Read(In("labels.tif")).type(), CV_32SC1);
}

TEST_F(Program, Usage_IsCheckedWithStatus2)
{
    WriteScan("scan.png");
    ExpectFailure({}, {"--help"});
    ExpectFailure({"paint"}, {"--help"});
    ExpectFailure({"label"}, {"image"});
    ExpectFailure({"label", In("scan.png")}, {"--connexity"});
    ExpectFailure({"label", In("scan.png"), "--connexity", "5"}, {"5", "4-wrapped", "24-interleaved-wrapped"});
    ExpectFailure({"label", In("scan.png"), "--connexity", "4", "--colour"}, {"--colour"});
}

TEST_F(Program, Help_ListsTheCommands)
{
    process::Outcome const help = Run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("label"), std::string::npos) << help.output;
    process::Outcome const label = Run({"label", "--help"});
    EXPECT_EQ(label.status, 0);
    EXPECT_NE(label.output.find("--connexity"), std::string::npos) << label.output;
    process::Outcome const version = Run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "morvane " MORVANE_VERSION "\n");
}

} // namespace
