#include "apps/ProgramFixture.h"

#include <morvane/features/Skeleton.h>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <cmath>
#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace morvane::features;
using morvane::tests::Program;
using morvane::tests::Read;

/// A frame with a bar through it, of which one half is brighter.
cv::Mat1b Frame()
{
    cv::Mat1b image(30, 40, uchar{0});
    image(cv::Rect(4, 4, 32, 22)) = 100;
    image(cv::Rect(9, 9, 22, 12)) = 0;
    image(cv::Rect(18, 4, 5, 22)) = 100;
    image(cv::Rect(20, 0, 20, 30)) *= 2;
    return image;
}

cv::Mat1b Thinned(cv::Mat const & shape, ThinningTypes type, int iterations)
{
    cv::Mat skeleton;
    thinning(shape, skeleton, type, iterations);
    return skeleton;
}

cv::Mat1b Eroded(cv::Mat const & image, cv::MorphShapes shape, int size)
{
    cv::Mat skeleton;
    EXPECT_TRUE(ExtractSkeletonByErosion(image, skeleton, shape, size));
    return skeleton;
}

void ExpectSame(cv::Mat const & actual, cv::Mat const & expected)
{
    ASSERT_EQ(actual.type(), expected.type());
    ASSERT_EQ(actual.size(), expected.size());
    EXPECT_EQ(cv::norm(actual, expected, cv::NORM_INF), 0.0);
}

class SkeletonCommand : public Program
{
protected:
    void SetUp() override
    {
        Program::SetUp();
        ASSERT_TRUE(cv::imwrite(In("frame.png"), Frame()));
    }

    [[nodiscard]] static std::string Output(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "skeleton");
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        return outcome.output;
    }

    void ExpectSkeleton(std::vector<std::string> switches, cv::Mat const & expected) const
    {
        switches.insert(switches.end(), {In("frame.png"), "-o", In("skeleton.png")});
        std::string const output = Output(switches);
        ExpectSame(Read(In("skeleton.png")), expected);
        std::string const count = "\nskeleton  " + std::to_string(cv::countNonZero(expected)) + "\n";
        EXPECT_NE(output.find(count), std::string::npos) << output;
    }
};

TEST_F(SkeletonCommand, Methods_AreThoseOfTheLibrary)
{
    cv::Mat const shape = Frame() != 0;
    cv::Mat const thin = Thinned(shape, ThinningZhangSuen, 0);
    // Otherwise the switches could be mixed up and nobody saw it.
    ASSERT_GT(cv::norm(thin, Thinned(shape, ThinningGuoHall, 0), cv::NORM_INF), 0.0);
    ASSERT_GT(cv::norm(thin, Thinned(shape, ThinningZhangSuen, 1), cv::NORM_INF), 0.0);
    ASSERT_GT(cv::norm(Eroded(shape, cv::MORPH_RECT, 3), Eroded(shape, cv::MORPH_CROSS, 5), cv::NORM_INF), 0.0);
    ExpectSkeleton({}, thin);
    ExpectSkeleton({"--method", "zhang-suen", "--iterations", "1"}, Thinned(shape, ThinningZhangSuen, 1));
    ExpectSkeleton({"--method", "guo-hall"}, Thinned(shape, ThinningGuoHall, 0));
    ExpectSkeleton({"--method", "guo-hall", "--iterations", "1"}, Thinned(shape, ThinningGuoHall, 1));
    ExpectSkeleton({"--method", "erosion"}, Eroded(shape, cv::MORPH_RECT, 3));
    ExpectSkeleton({"--method", "erosion", "--shape", "cross", "--size", "5"}, Eroded(shape, cv::MORPH_CROSS, 5));
}

TEST_F(SkeletonCommand, Shape_IsWhatIsMeasuredOrBrightEnough)
{
    cv::Mat1b const image = Frame();
    // The darker half lies below 128: it belongs to the shape all the same.
    std::string const output = Output({In("frame.png")});
    EXPECT_NE(output.find("\nshape  " + std::to_string(cv::countNonZero(image)) + "\n"), std::string::npos) << output;
    EXPECT_EQ(output.find("segments"), std::string::npos) << output;
    ExpectSkeleton({"--from", "200"}, Thinned(image == 200, ThinningZhangSuen, 0));
    ExpectSkeleton({"--from", "200.5"}, cv::Mat1b(image.size(), uchar{0}));
    // Empty pixels are no shape, whatever the bound.
    ExpectSkeleton({"--from", "-1"}, Thinned(image != 0, ThinningZhangSuen, 0));
    ExpectSkeleton({"--method", "erosion", "--grey"}, Eroded(image, cv::MORPH_RECT, 3));
    EXPECT_GT(cv::norm(Eroded(image, cv::MORPH_RECT, 3), Eroded(image != 0, cv::MORPH_RECT, 3), cv::NORM_INF), 0.0);
}

TEST_F(SkeletonCommand, Shape_HasNoPixelsThatAreNaN)
{
    cv::Mat1f depth;
    Frame().convertTo(depth, CV_32F, -0.01);
    depth(0, 0) = std::numeric_limits<float>::quiet_NaN();
    depth(15, 14) = std::numeric_limits<float>::quiet_NaN();
    ASSERT_TRUE(cv::imwrite(In("depth.tif"), depth));
    (void)Output({In("depth.tif"), "-o", In("skeleton.png")});
    ExpectSame(Read(In("skeleton.png")), Thinned(Frame() != 0, ThinningZhangSuen, 0));
}

TEST_F(SkeletonCommand, Segments_AreThoseOfTheLibrary)
{
    cv::Mat const skeleton = Thinned(Frame() != 0, ThinningZhangSuen, 0);
    for (double const tolerance : {1.5, 0.25})
    {
        cv::Mat labels;
        SegmentMap ends;
        ASSERT_TRUE(ExtractSegmentsFromSkeleton(skeleton, tolerance, labels, ends));
        ASSERT_GT(ends.size(), 2U);
        std::vector<std::string> arguments{
            In("frame.png"), "--segments", In("segments.csv"), "--segment-labels", In("segments.tif")};
        // The first is the default.
        if (tolerance < 1.0) arguments.insert(arguments.end(), {"--tolerance", "0.25"});
        std::string const output = Output(arguments);
        ExpectSame(Read(In("segments.tif")), labels);
        std::istringstream table(ReadText("segments.csv"));
        std::string line;
        ASSERT_TRUE(std::getline(table, line));
        EXPECT_EQ(line, "label,x1,y1,x2,y2,length");
        for (auto const & [label, segment] : ends)
        {
            auto const & [first, second] = segment;
            ASSERT_TRUE(std::getline(table, line));
            std::istringstream numbers(line);
            std::vector<double> row;
            for (std::string number; std::getline(numbers, number, ',');)
            {
                row.push_back(std::stod(number));
            }
            double const length = std::hypot(second.x - first.x, second.y - first.y);
            ASSERT_EQ(row.size(), 6U) << line;
            EXPECT_EQ(row[0], label);
            EXPECT_EQ(cv::Point2d(row[1], row[2]), cv::Point2d(first)) << line;
            EXPECT_EQ(cv::Point2d(row[3], row[4]), cv::Point2d(second)) << line;
            EXPECT_DOUBLE_EQ(row[5], length);
        }
        EXPECT_FALSE(std::getline(table, line)) << line;
        EXPECT_NE(output.find("\nsegments  " + std::to_string(ends.size()) + "\n"), std::string::npos) << output;
    }
}

TEST_F(SkeletonCommand, Segments_OfABarAreOne)
{
    cv::Mat1b image(5, 12, uchar{0});
    image(cv::Rect(2, 2, 8, 1)) = 7;
    ASSERT_TRUE(cv::imwrite(In("bar.png"), image));
    (void)Output({In("bar.png"), "--segments", In("segments.csv")});
    std::string const table = ReadText("segments.csv");
    // Which end comes first is not ours to say.
    EXPECT_TRUE(
        table == "label,x1,y1,x2,y2,length\n1,2,2,9,2,7\n" || table == "label,x1,y1,x2,y2,length\n1,9,2,2,2,7\n")
        << table;
}

TEST_F(SkeletonCommand, Picture_ShowsSegmentsOverTheImage)
{
    (void)Output({In("frame.png"), "--segment-picture", In("picture.png"), "--segment-labels", In("segments.tif")});
    cv::Mat1b const image = Frame();
    cv::Mat1i const labels = Read(In("segments.tif"));
    cv::Mat3b const picture = Read(In("picture.png"));
    ASSERT_EQ(picture.size(), image.size());
    std::set<std::vector<int>> colours;
    std::set<int> drawn;
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            cv::Vec3b const & colour = picture(y, x);
            if (labels(y, x) > 0)
            {
                drawn.insert(labels(y, x));
                colours.insert({colour[0], colour[1], colour[2]});
                continue;
            }
            EXPECT_EQ(colour[0], colour[1]);
            EXPECT_EQ(colour[0], colour[2]);
            EXPECT_EQ(colour[0] == 0, image(y, x) == 0);
            EXPECT_LT(colour[0], 90);
        }
    }
    EXPECT_GT(drawn.size(), 2U);
    EXPECT_EQ(colours.size(), drawn.size());
}

TEST_F(SkeletonCommand, NothingMeasured_GivesNoSegments)
{
    ASSERT_TRUE(cv::imwrite(In("none.png"), cv::Mat1b(8, 9, uchar{0})));
    std::string const output = Output(
        {In("none.png"), "-o", In("skeleton.png"), "--segments", In("segments.csv"), "--segment-labels",
         In("segments.tif"), "--segment-picture", In("picture.png")});
    EXPECT_NE(output.find("\nshape  0\nskeleton  0\nsegments  0\n"), std::string::npos) << output;
    EXPECT_EQ(ReadText("segments.csv"), "label,x1,y1,x2,y2,length\n");
    ExpectSame(Read(In("skeleton.png")), cv::Mat(8, 9, CV_8UC1, cv::Scalar(0)));
    ExpectSame(Read(In("segments.tif")), cv::Mat(8, 9, CV_32SC1, cv::Scalar(0)));
    ExpectSame(Read(In("picture.png")), cv::Mat(8, 9, CV_8UC3, cv::Scalar::all(0)));
}

TEST_F(SkeletonCommand, NamesWhatItCannotUse)
{
    ASSERT_TRUE(cv::imwrite(In("colour.png"), cv::Mat(8, 9, CV_8UC3, cv::Scalar::all(1))));
    ASSERT_TRUE(cv::imwrite(In("deep.png"), cv::Mat(8, 9, CV_16UC1, cv::Scalar(1))));
    ASSERT_TRUE(cv::imwrite(In("flat.png"), cv::Mat(2, 9, CV_8UC1, cv::Scalar(1))));
    std::set<std::string> const before = Files();
    std::string const frame = In("frame.png");
    std::string const out = In("out.png");
    ExpectFailure({"skeleton"}, {"image"});
    ExpectFailure({"skeleton", In("nowhere.png"), "-o", out}, {"nowhere.png", "no such file"});
    ExpectFailure({"skeleton", In("colour.png"), "-o", out}, {"colour.png", "3 channels"});
    ExpectFailure({"skeleton", frame, "--method", "best"}, {"--method", "best", "zhang-suen, guo-hall, erosion"});
    ExpectFailure({"skeleton", frame, "--iterations", "0"}, {"--iterations", "0"});
    ExpectFailure({"skeleton", frame, "--method", "erosion", "--iterations", "3"}, {"--iterations", "thinning"});
    ExpectFailure({"skeleton", frame, "--shape", "cross"}, {"--shape", "--method erosion"});
    ExpectFailure({"skeleton", frame, "--size", "5"}, {"--size", "--method erosion"});
    ExpectFailure({"skeleton", frame, "--grey"}, {"--grey", "--method erosion"});
    ExpectFailure({"skeleton", frame, "--method", "erosion", "--size", "0"}, {"--size", "0"});
    ExpectFailure({"skeleton", frame, "--method", "erosion", "--grey", "--from", "9"}, {"--grey", "--from"});
    ExpectFailure({"skeleton", In("deep.png"), "--method", "erosion", "--grey"}, {"deep.png", "8-bit unsigned"});
    ExpectFailure({"skeleton", In("flat.png"), "--method", "erosion", "-o", out}, {"flat.png", "9 x 2", "3 rows"});
    ExpectFailure({"skeleton", frame, "--tolerance", "2"}, {"--tolerance", "--segments"});
    ExpectFailure({"skeleton", frame, "--segments", In("s.csv"), "--tolerance", "nan"}, {"nan"});
    ExpectFailure({"skeleton", frame, "--segments", In("s.csv"), "--tolerance", "-1"}, {"-1"});
    ExpectFailure({"skeleton", frame, "-o", frame}, {"frame.png", "overwritten"});
    ExpectFailure({"skeleton", frame, "--segments", frame}, {"frame.png", "overwritten"});
    ExpectFailure({"skeleton", frame, "--segment-labels", out}, {"out.png", ".tif"});
    ExpectFailure({"skeleton", frame, "-o", out, "--segment-picture", out}, {"out.png", "two outputs"});
    ExpectFailure({"skeleton", frame, "--segments", In("none/s.csv")}, {"none/s.csv", "folder"});
    EXPECT_EQ(Files(), before);
}

} // namespace
