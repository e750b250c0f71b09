#include "apps/ProgramFixture.h"

#include <morvane/features/Normals.h>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
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

/// Coordinates of a scan, in double precision.
struct Cloud
{
    cv::Mat1d x;
    cv::Mat1d y;
    cv::Mat1d z;
};

/// What the library finds, with 0 in place of the distance where there is no normal.
struct Found
{
    cv::Mat3f normals;
    cv::Mat1f rms;
    int points = 0;
    int planes = 0;
};

/// A corner of a floor and a wall, in whole millimetres, uneven by some of them; the last columns are empty.
Cloud Corner()
{
    cv::Size const size(16, 12);
    Cloud cloud{cv::Mat1d(size, 0.0), cv::Mat1d(size, 0.0), cv::Mat1d(size, 0.0)};
    cv::RNG random(7);
    for (int row = 0; row < size.height; ++row)
    {
        for (int column = 0; column < size.width - 5; ++column)
        {
            bool const isWall = row < size.height / 2;
            cloud.x(row, column) = 50 * column - 300;
            cloud.y(row, column) = (isWall ? 2000 : 2300 - 50 * row) + random.uniform(-4, 5);
            cloud.z(row, column) = (isWall ? -700 - 50 * row : -1000) + random.uniform(-4, 5);
        }
    }
    return cloud;
}

Found Expected(Cloud const & cloud, eNormalComputationMethod method, int radius, bool wraps)
{
    cv::Mat1d exists(cloud.x.size(), 0.0);
    exists.setTo(1.0, (cloud.x != 0.0) | (cloud.y != 0.0) | (cloud.z != 0.0));
    cv::Mat normals;
    cv::Mat rms;
    EXPECT_TRUE(ComputeMatNormal(exists, cloud.x, cloud.y, cloud.z, normals, rms, method, radius, wraps));
    Found found;
    normals.convertTo(found.normals, CV_32F);
    rms.convertTo(found.rms, CV_32F);
    found.points = cv::countNonZero(exists);
    for (int row = 0; row < normals.rows; ++row)
    {
        for (int column = 0; column < normals.cols; ++column)
        {
            if (normals.at<cv::Vec3d>(row, column) == cv::Vec3d())
            {
                found.rms(row, column) = 0.0F;
            }
            else
            {
                ++found.planes;
            }
        }
    }
    return found;
}

/// The upper middle one of the values above 0.
float MedianOf(cv::Mat1f const & values)
{
    std::vector<float> sorted;
    std::copy_if(values.begin(), values.end(), std::back_inserter(sorted), [](float value) { return value > 0.0F; });
    std::sort(sorted.begin(), sorted.end());
    return sorted.empty() ? 0.0F : sorted[sorted.size() / 2];
}

std::string Line(std::string const & name, double number)
{
    std::ostringstream line;
    line << '\n' << name << "  " << number << '\n';
    return line.str();
}

void ExpectSame(cv::Mat const & actual, cv::Mat const & expected)
{
    ASSERT_EQ(actual.type(), expected.type());
    ASSERT_EQ(actual.size(), expected.size());
    EXPECT_EQ(cv::norm(actual, expected, cv::NORM_INF), 0.0);
}

class NormalsCommand : public Program
{
protected:
    /// Writes a cloud as images of a depth, each number divided.
    void Store(Cloud const & cloud, int depth, double divisor) const
    {
        Store("x.tif", cloud.x, depth, divisor);
        Store("y.tif", cloud.y, depth, divisor);
        Store("z.tif", cloud.z, depth, divisor);
    }

    void Store(std::string const & name, cv::Mat1d const & numbers, int depth, double divisor) const
    {
        cv::Mat image;
        cv::Mat(numbers / divisor).convertTo(image, depth);
        ASSERT_TRUE(cv::imwrite(In(name), image));
    }

    [[nodiscard]] std::vector<std::string> Arguments(std::vector<std::string> const & more) const
    {
        std::vector<std::string> all{"normals", "--x", In("x.tif"), "--y", In("y.tif"), "--z", In("z.tif")};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }

    /// Expects what the library finds in a cloud.
    void ExpectFound(std::vector<std::string> more, Found const & expected) const
    {
        more.insert(more.end(), {"-o", In("normals.tif"), "--rms", In("rms.tif")});
        process::Outcome const outcome = Run(Arguments(more));
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        ExpectSame(Read(In("normals.tif")), expected.normals);
        ExpectSame(Read(In("rms.tif")), expected.rms);
        for (std::string const & line :
             {std::string("\nsize   16 x 12\n"), Line("points", expected.points), Line("normals", expected.planes),
              Line("median rms", MedianOf(expected.rms))})
        {
            EXPECT_NE(outcome.output.find(line), std::string::npos) << line << outcome.output;
        }
        EXPECT_EQ(outcome.output.find("--scale"), std::string::npos) << outcome.output;
    }
};

TEST_F(NormalsCommand, Methods_AreThoseOfTheLibrary)
{
    Cloud const cloud = Corner();
    Store(cloud, CV_16S, 1.0);
    Found const plain = Expected(cloud, WindowMoving, 3, false);
    // Two empty columns have normals; a window further away sees one column, whose points have the same X exactly.
    EXPECT_EQ(plain.points, 12 * 11);
    EXPECT_EQ(plain.planes, 12 * 13);
    EXPECT_LT(plain.normals(2, 4)[1], -0.9F);
    EXPECT_GT(plain.normals(10, 4)[2], 0.9F);
    ExpectFound({}, plain);
    ExpectFound({"--method", "moving", "--radius", "2", "--wrap"}, Expected(cloud, WindowMoving, 2, true));
    ExpectFound({"--method", "pyramid", "--radius", "4"}, Expected(cloud, Pyramid, 4, false));
    ExpectFound({"--method", "search"}, Expected(cloud, PyramidWindowMoving, 3, false));
    ExpectFound({"--method", "search-root", "--wrap"}, Expected(cloud, PyramidWindowMovingSqrt, 3, true));
}

TEST_F(NormalsCommand, Scale_BringsMetresToMillimetres)
{
    Cloud const cloud = Corner();
    // Powers of two divide without rounding.
    Store(cloud, CV_32F, 1024.0);
    Store("y.tif", cloud.y, CV_64F, 1024.0);
    ExpectFound({"--scale", "1024"}, Expected(cloud, WindowMoving, 3, false));

    process::Outcome const outcome = Run(Arguments(
        {"--scale", "0.001", "-o", In("none.tif"), "--picture", In("none.png"), "--rms-picture", In("flat.png")}));
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("\nnormals  0\nmedian rms  0\nnote  "), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("--scale 1000"), std::string::npos) << outcome.output;
    EXPECT_EQ(cv::norm(Read(In("none.tif")), cv::NORM_INF), 0.0);
    EXPECT_EQ(cv::norm(Read(In("none.png")), cv::NORM_INF), 0.0);
    EXPECT_EQ(cv::norm(Read(In("flat.png")), cv::NORM_INF), 0.0);
}

TEST_F(NormalsCommand, Points_AreFiniteInAllCoordinates)
{
    Cloud cloud = Corner();
    // A coordinate of 0 is one like any other while the point has others.
    cloud.x(4, 6) = 0.0;
    cloud.y(4, 7) = 0.0;
    Cloud broken{cloud.x.clone(), cloud.y.clone(), cloud.z.clone()};
    broken.x(3, 3) = std::numeric_limits<double>::quiet_NaN();
    broken.y(8, 2) = std::numeric_limits<double>::infinity();
    broken.z(9, 9) = -std::numeric_limits<double>::infinity();
    for (cv::Point const place : {cv::Point(3, 3), cv::Point(2, 8), cv::Point(9, 9)})
    {
        cloud.x(place) = 0.0;
        cloud.y(place) = 0.0;
        cloud.z(place) = 0.0;
    }
    Store(broken, CV_32F, 1.0);
    ExpectFound({}, Expected(cloud, WindowMoving, 3, false));
}

TEST_F(NormalsCommand, Pictures_ShowDirectionsAndDistances)
{
    Cloud const cloud = Corner();
    Store(cloud, CV_32S, 1.0);
    process::Outcome const outcome =
        Run(Arguments({"--radius", "2", "--picture", In("normals.png"), "--rms-picture", In("rms.png")}));
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    Found const found = Expected(cloud, WindowMoving, 2, false);
    float const median = MedianOf(found.rms);
    cv::Mat const picture = Read(In("normals.png"));
    cv::Mat const distances = Read(In("rms.png"));
    ASSERT_EQ(picture.type(), CV_8UC3);
    ASSERT_EQ(distances.type(), CV_8UC3);
    ASSERT_EQ(picture.size(), found.rms.size());
    ASSERT_EQ(distances.size(), found.rms.size());
    cv::Vec3b const black(0, 0, 0);
    cv::Vec3b const white(255, 255, 255);
    int empty = 0;
    int far = 0;
    for (int row = 0; row < picture.rows; ++row)
    {
        for (int column = 0; column < picture.cols; ++column)
        {
            auto const & colour = picture.at<cv::Vec3b>(row, column);
            auto const & distance = distances.at<cv::Vec3b>(row, column);
            cv::Vec3f const normal = found.normals(row, column);
            if (normal == cv::Vec3f())
            {
                ++empty;
                EXPECT_EQ(colour, black);
                EXPECT_EQ(distance, black);
                continue;
            }
            // Blue, green, red: rounded to the nearest level.
            EXPECT_NEAR(colour[0], (static_cast<double>(normal[2]) + 1.0) / 2.0 * 255.0, 0.501);
            EXPECT_NEAR(colour[1], (static_cast<double>(normal[1]) + 1.0) / 2.0 * 255.0, 0.501);
            EXPECT_NEAR(colour[2], (static_cast<double>(normal[0]) + 1.0) / 2.0 * 255.0, 0.501);
            bool const isFar = found.rms(row, column) > 5.0F * median;
            far += isFar ? 1 : 0;
            if (isFar)
            {
                EXPECT_EQ(distance, white);
            }
        }
    }
    // A window of radius 2 sees no point from the last three columns, one column of the same X from the one before, and
    // six points from the lowest pixel of the next.
    EXPECT_EQ(empty, 12 * 4 + 1);
    EXPECT_GT(far, 0);
    EXPECT_LT(far, found.planes / 2);
}

TEST_F(NormalsCommand, NamesWhatItCannotUse)
{
    Store(Corner(), CV_32F, 1.0);
    ASSERT_TRUE(cv::imwrite(In("small.tif"), cv::Mat(12, 15, CV_32FC1, cv::Scalar(1.0))));
    ASSERT_TRUE(cv::imwrite(In("colour.png"), cv::Mat(12, 16, CV_8UC3, cv::Scalar::all(1.0))));
    std::set<std::string> const before = Files();
    auto const with = [this](std::string const & y, std::string const & z) {
        return std::vector<std::string>{
            "normals",         "--x",       In("x.tif"),      "--y", In(y), "--z", In(z), "-o",
            In("normals.tif"), "--picture", In("normals.png")};
    };
    ExpectFailure({"normals", "--x", In("x.tif"), "--y", In("y.tif")}, {"--z"});
    ExpectFailure(with("small.tif", "z.tif"), {"small.tif", "15 x 12", "x.tif", "16 x 12"});
    ExpectFailure(with("y.tif", "small.tif"), {"small.tif", "15 x 12", "x.tif", "16 x 12"});
    ExpectFailure(with("colour.png", "z.tif"), {"colour.png", "3 channels"});
    ExpectFailure(with("y.tif", "nowhere.tif"), {"nowhere.tif", "no such file"});
    ExpectFailure(Arguments({"--method", "best"}), {"--method", "best", "moving, pyramid, search, search-root"});
    ExpectFailure(Arguments({"--radius", "0"}), {"--radius", "0"});
    ExpectFailure(Arguments({"--scale", "0"}), {"--scale", "0"});
    ExpectFailure(Arguments({"-o", In("normals.png")}), {"normals.png", ".tif"});
    ExpectFailure(Arguments({"--rms", In("z.tif")}), {"z.tif", "overwritten"});
    ExpectFailure(Arguments({"--picture", In("a.png"), "--rms-picture", In("a.png")}), {"a.png", "two outputs"});
    EXPECT_EQ(Files(), before);
}

} // namespace
