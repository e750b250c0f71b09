#include "apps/ProgramFixture.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <limits>
#include <set>
#include <string>

namespace
{

using morvane::tests::Program;

class MeasureCommand : public Program
{
protected:
    /// Writes labels with a gap in their numbers.
    void SetUp() override
    {
        Program::SetUp();
        cv::Mat1i const labels =
            (cv::Mat1i(3, 4) << 0, 1, 1, 0, //
             0, 1, 0, 0,                    //
             3, 0, 0, 3);
        ASSERT_TRUE(cv::imwrite(In("labels.tif"), labels));
    }

    [[nodiscard]] static std::string Measured(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "measure");
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        return outcome.output;
    }
};

std::string const kGeometry = "label,area,row_min,row_max,column_min,column_max,row_mean,column_mean";

TEST_F(MeasureCommand, PrintsARowForEachLabelThatThereIs)
{
    EXPECT_EQ(
        Measured({In("labels.tif")}), kGeometry + "\n"
                                                  "1,3,0,1,1,2,0.3333333333333333,1.3333333333333333\n"
                                                  "3,2,2,2,0,3,2,1.5\n");
}

TEST_F(MeasureCommand, MeasuresValuesInDouble)
{
    // Squares and sums that 8 bits could not hold.
    cv::Mat1b const values =
        (cv::Mat1b(3, 4) << 9, 200, 250, 9, //
         9, 240, 9, 9,                      //
         255, 9, 9, 251);
    ASSERT_TRUE(cv::imwrite(In("values.png"), values));
    EXPECT_EQ(
        Measured({In("labels.tif"), "--values", In("values.png")}),
        kGeometry + ",sum,min,max,mean,deviation\n"
                    "1,3,0,1,1,2,0.3333333333333333,1.3333333333333333,690,200,250,230,21.602468994692867\n"
                    "3,2,2,2,0,3,2,1.5,506,251,255,253,2\n");
}

TEST_F(MeasureCommand, MeasuresEachChannel)
{
    cv::Mat values(3, 4, CV_8UC3, cv::Scalar(1, 2, 3));
    ASSERT_TRUE(cv::imwrite(In("values.png"), values));
    std::string const table = Measured({In("labels.tif"), "--values", In("values.png")});
    EXPECT_NE(
        table.find(
            ",sum_0,min_0,max_0,mean_0,deviation_0,sum_1,min_1,max_1,mean_1,deviation_1,sum_2,min_2,max_2,mean_2,"
            "deviation_2\n"),
        std::string::npos)
        << table;
    EXPECT_NE(table.find(",3,1,1,1,0,6,2,2,2,0,9,3,3,3,0\n"), std::string::npos) << table;
}

TEST_F(MeasureCommand, HoldsSumsOfPositionsThatDoNotFitIn32Bits)
{
    // The rows of one zone of 2100 x 2100 pixels sum up to 4.6e9.
    ASSERT_TRUE(cv::imwrite(In("large.png"), cv::Mat(2100, 2100, CV_8UC1, cv::Scalar(255))));
    std::string const table = Measured({In("large.png")});
    EXPECT_EQ(table, kGeometry + "\n255,4410000,0,2099,0,2099,1049.5,1049.5\n");
}

TEST_F(MeasureCommand, WritesTheTableIntoAFile)
{
    EXPECT_EQ(Measured({In("labels.tif"), "-o", In("table.csv")}), "");
    EXPECT_EQ(ReadText("table.csv"), Measured({In("labels.tif")}));
    EXPECT_EQ(Files(), (std::set<std::string>{"labels.tif", "table.csv"}));
}

TEST_F(MeasureCommand, PrintsTheHeadAloneWhereThereIsNoZone)
{
    ASSERT_TRUE(cv::imwrite(In("none.png"), cv::Mat(3, 4, CV_8UC1, cv::Scalar(0))));
    EXPECT_EQ(Measured({In("none.png")}), kGeometry + "\n");
}

TEST_F(MeasureCommand, NamesWhatItCannotUse)
{
    ASSERT_TRUE(cv::imwrite(In("float.tif"), cv::Mat(3, 4, CV_32FC1, cv::Scalar(1))));
    ASSERT_TRUE(cv::imwrite(In("colour.png"), cv::Mat(3, 4, CV_8UC3, cv::Scalar::all(1))));
    ASSERT_TRUE(cv::imwrite(In("negative.tif"), cv::Mat(3, 4, CV_32SC1, cv::Scalar(-1))));
    ASSERT_TRUE(cv::imwrite(In("huge.tif"), cv::Mat(3, 4, CV_32SC1, cv::Scalar(std::numeric_limits<int>::max()))));
    ASSERT_TRUE(cv::imwrite(In("small.png"), cv::Mat(3, 3, CV_8UC1, cv::Scalar(1))));
    std::set<std::string> const before = Files();
    ExpectFailure({"measure"}, {"labels"});
    ExpectFailure({"measure", In("nowhere.tif")}, {"nowhere.tif", "no such file"});
    ExpectFailure({"measure", In("float.tif")}, {"float.tif", "CV_32FC1", "integers"});
    ExpectFailure({"measure", In("colour.png")}, {"colour.png", "3 channels"});
    ExpectFailure({"measure", In("negative.tif")}, {"negative.tif", "negative"});
    ExpectFailure({"measure", In("huge.tif")}, {"huge.tif", "larger"});
    ExpectFailure({"measure", In("labels.tif"), "--values", In("small.png")}, {"small.png", "3 x 3", "4 x 3"});
    ExpectFailure({"measure", In("labels.tif"), "-o", In("none/table.csv")}, {"none/table.csv", "folder"});
    ExpectFailure({"measure", In("labels.tif"), "-o", In("labels.tif")}, {"labels.tif", "overwritten"});
    ExpectFailure({"measure", In("labels.tif"), "-o", "/proc/table.csv"}, {"/proc/table.csv", "written"});
    EXPECT_EQ(Files(), before);
}

} // namespace
