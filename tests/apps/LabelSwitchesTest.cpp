// The switches with which `morvane label` reaches the whole family of labelling operators.

#include "apps/ProgramFixture.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <set>
#include <string>
#include <vector>

namespace
{

using morvane::tests::Program;
using morvane::tests::Read;

class LabelSwitches : public Program
{
protected:
    /// Writes the steps image: equal values, steps of 1 and of 10, empty pixels in the middle.
    void SetUp() override
    {
        Program::SetUp();
        cv::Mat1w const steps =
            (cv::Mat1w(3, 6) << 10, 10, 0, 11, 12, 30, //
             10, 10, 0, 11, 12, 30,                    //
             20, 20, 0, 40, 40, 40);
        ASSERT_TRUE(cv::imwrite(In("steps.png"), steps));
    }

    /// The labels of the steps image, 4 neighbours.
    [[nodiscard]] cv::Mat1i Labels(std::vector<std::string> const & switches) const
    {
        std::vector<std::string> arguments{"label", In("steps.png"), "--connexity", "4", "-o", In("labels.tif")};
        arguments.insert(arguments.end(), switches.begin(), switches.end());
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        cv::Mat labels = Read(In("labels.tif"));
        EXPECT_EQ(labels.type(), CV_32SC1);
        double zones = 0.0;
        cv::minMaxIdx(labels, nullptr, &zones);
        std::string const counted = "zones  " + std::to_string(static_cast<int>(zones)) + "\n";
        EXPECT_NE(outcome.output.find(counted), std::string::npos) << outcome.output;
        return labels;
    }
};

void ExpectSame(cv::Mat1i const & labels, cv::Mat1i const & expected)
{
    ASSERT_EQ(labels.size(), expected.size());
    EXPECT_EQ(cv::countNonZero(labels != expected), 0) << labels;
}

TEST_F(LabelSwitches, Flat_LabelsZonesOfEqualValues_EmptyOnesIncluded)
{
    ExpectSame(Labels({"--flat"}), (cv::Mat1i(3, 6) << 1, 1, 2, 3, 4, 5, 1, 1, 2, 3, 4, 5, 6, 6, 2, 7, 7, 7));
}

TEST_F(LabelSwitches, FlatNoZero_LeavesEmptyPixelsOut)
{
    ExpectSame(
        Labels({"--flat", "--no-zero"}), (cv::Mat1i(3, 6) << 1, 1, 0, 2, 3, 4, 1, 1, 0, 2, 3, 4, 5, 5, 0, 6, 6, 6));
}

TEST_F(LabelSwitches, Delta_BoundsTheStepBetweenNeighbours)
{
    ExpectSame(Labels({"--delta", "10"}), (cv::Mat1i(3, 6) << 1, 1, 1, 2, 2, 3, 1, 1, 1, 2, 2, 3, 1, 1, 1, 3, 3, 3));
}

TEST_F(LabelSwitches, DeltaNoZero_LeavesEmptyPixelsOut)
{
    ExpectSame(
        Labels({"--delta", "1", "--no-zero"}),
        (cv::Mat1i(3, 6) << 1, 1, 0, 2, 2, 3, 1, 1, 0, 2, 2, 3, 4, 4, 0, 5, 5, 5));
}

TEST_F(LabelSwitches, Second_MustBeAlikeAsWell)
{
    cv::Mat1b const second =
        (cv::Mat1b(3, 6) << 1, 5, 9, 1, 1, 1, //
         1, 5, 9, 1, 1, 1,                    //
         1, 5, 9, 1, 1, 1);
    ASSERT_TRUE(cv::imwrite(In("second.png"), second));
    ExpectSame(
        Labels({"--flat", "--no-zero", "--second", In("second.png")}),
        (cv::Mat1i(3, 6) << 1, 2, 0, 3, 4, 5, 1, 2, 0, 3, 4, 5, 6, 7, 0, 8, 8, 8));
    // The bound on the second image is that on the first, unless it has its own.
    ExpectSame(
        Labels({"--delta", "10", "--no-zero", "--second", In("second.png")}),
        (cv::Mat1i(3, 6) << 1, 1, 0, 2, 2, 3, 1, 1, 0, 2, 2, 3, 1, 1, 0, 3, 3, 3));
    ExpectSame(
        Labels({"--delta", "10", "--second", In("second.png"), "--second-delta", "3"}),
        (cv::Mat1i(3, 6) << 1, 2, 3, 4, 4, 5, 1, 2, 3, 4, 4, 5, 1, 2, 3, 5, 5, 5));
}

TEST_F(LabelSwitches, MinArea_DropsSmallerZonesAndNumbersAnew)
{
    ExpectSame(
        Labels({"--flat", "--no-zero", "--min-area", "3"}),
        (cv::Mat1i(3, 6) << 1, 1, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 2, 2, 2));
    ExpectSame(
        Labels({"--flat", "--no-zero", "--min-area", "4"}),
        (cv::Mat1i(3, 6) << 1, 1, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
    ExpectSame(Labels({"--min-area", "10"}), cv::Mat1i(3, 6, 0));
    ExpectSame(Labels({"--min-area", "9"}), (cv::Mat1i(3, 6) << 0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 1, 1));
}

TEST_F(LabelSwitches, Switches_ThatDoNotGoTogetherAreNamed)
{
    ASSERT_TRUE(cv::imwrite(In("small.png"), cv::Mat(2, 6, CV_8UC1, cv::Scalar(1))));
    ASSERT_TRUE(cv::imwrite(In("colour.png"), cv::Mat(3, 6, CV_8UC3, cv::Scalar::all(1))));
    std::set<std::string> const before = Files();
    auto const label = [this](std::vector<std::string> more) {
        more.insert(more.begin(), {"label", In("steps.png"), "--connexity", "4", "-o", In("labels.tif")});
        return more;
    };
    ExpectFailure(label({"--flat", "--delta", "1"}), {"--flat", "--delta"});
    ExpectFailure(label({"--second", In("steps.png")}), {"--second", "--delta"});
    ExpectFailure(label({"--flat", "--second", In("steps.png")}), {"--second", "--no-zero"});
    ExpectFailure(label({"--second-delta", "1"}), {"--second-delta"});
    ExpectFailure(label({"--delta", "wide"}), {"--delta"});
    ExpectFailure(label({"--min-area", "0"}), {"--min-area"});
    ExpectFailure(label({"--delta", "1", "--second", In("none.png")}), {"none.png", "no such file"});
    ExpectFailure(label({"--delta", "1", "--second", In("small.png")}), {"small.png", "6 x 2", "steps.png", "6 x 3"});
    ExpectFailure(label({"--delta", "1", "--second", In("colour.png")}), {"colour.png", "3 channels", "1"});
    ExpectFailure(label({"--flat", "--no-zero", "--second", In("colour.png")}), {"colour.png", "3 channels", "1"});
    EXPECT_EQ(Files(), before);
}

} // namespace
