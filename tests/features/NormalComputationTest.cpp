// The strategies as classes: what they are made with, and what they hand over.
#include <morvane/features/NormalComputation.h>

#include "support/ImageLiterals.h"
#include "support/NormalOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

namespace morvane
{

namespace
{

using tests::Draw;
using tests::EqualImages;
using tests::NormalSettings;
using tests::OracleNormals;
using tests::PointCloud;
using tests::Random;

template <class T>
using Output = NormalAndRMSOutput_T<T>;
template <class T>
using Moving = NormalComputationWithWindowMoving_T<T, Output<T>>;
template <class T>
using Integral = NormalComputationWithPyramid_T<T, Output<T>, Nonefuntion<double>>;
template <class T>
using Search = NormalComputationWithPyramidWindowMoving_T<T, Output<T>, Nonefuntion<double>>;
template <class T>
using RootSearch = NormalComputationWithPyramidWindowMoving_T<T, Output<T>, Sqrtfuntion<double>>;

/// A strategy of a caller.
class OwnComputation final : public NormalComputation_T<float, RMSOutput_T<float>, Nonefuntion<double>>
{
public:
    using NormalComputation_T::NormalComputation_T;
    void Execute() override {}
};

/// An output that forgets.
class NoOutput final : public RMSOutput_T<float>
{
public:
    void WriteNormalAndRms(int const *, int const *, int, double const *, double const *, float, float, int) override {}
};

/// A computation on images of a size.
struct Made
{
    Made(cv::Size size, int halfWidth, int minPoints)
        : image(size, CV_32FC1, cv::Scalar(1.0))
        , computation(halfWidth, image, image, image, image, output, minPoints)
    {}

    cv::Mat image;
    NoOutput output;
    OwnComputation computation;
};

TEST(NormalFunctions, GiveTheNumberAndItsRoot)
{
    EXPECT_EQ(Nonefuntion<double>()(0.3), 0.3);
    EXPECT_EQ(Sqrtfuntion<double>()(0.3), std::sqrt(0.3));
}

TEST(NormalComputation, CutsWindowsThatExceedTheImage)
{
    struct Case
    {
        cv::Size size;
        int halfWidth;
        int expected;
    };
    for (Case const & cut : std::vector<Case>{
             {{30, 20}, 50, 9},
             {{20, 30}, 50, 9},
             {{30, 20}, 9, 9},
             {{30, 20}, 10, 9},
             {{21, 21}, 10, 10},
             {{21, 21}, 11, 9},
             {{30, 20}, 0, 0},
             {{3, 3}, 1, 1},
             {{3, 3}, 2, 0},
             {{2, 9}, 1, 0},
             {{1, 9}, 0, 0},
             {{1, 9}, 1, -1},
             {{9, 9}, std::numeric_limits<int>::max(), 3}})
    {
        Made const made(cut.size, cut.halfWidth, 6);
        EXPECT_EQ(made.computation.halfWidth, cut.expected) << cut.size << " " << cut.halfWidth;
        EXPECT_EQ(made.computation.windowWidth, 2 * cut.expected + 1) << cut.size << " " << cut.halfWidth;
    }
}

TEST(NormalComputation, StartsAtTheSmallestRadiusWithRoomForThePoints)
{
    constexpr std::array kPoints{0, 1, 3, 4, 6, 8, 9, 16, 24, 25, 49, 81, 121};
    constexpr std::array kRadii{1, 1, 1, 1, 1, 1, 2, 2, 2, 3, 4, 5, 6};
    for (std::size_t i = 0; i < kPoints.size(); ++i)
    {
        EXPECT_EQ(Made({9, 9}, 1, kPoints[i]).computation.firstRadius, kRadii[i]) << kPoints[i];
    }
}

TEST(NormalComputation, HoldsWhatItIsMadeWith)
{
    PointCloud const cloud{
        Draw<uchar>({"123", "456", "789"}), Draw<float>({"123", "456", "789"}), Draw<float>({"321", "456", "789"}),
        Draw<float>({"999", "456", "789"})};
    NoOutput output;
    OwnComputation const computation(1, cloud.depth, cloud.x, cloud.y, cloud.z, output, 5);
    EXPECT_TRUE(computation.wrapColumns);
    EXPECT_EQ(computation.depth, &cloud.depth);
    EXPECT_EQ(computation.x, &cloud.x);
    EXPECT_EQ(computation.y.data, cloud.y.data);
    EXPECT_EQ(computation.z.data, cloud.z.data);
    EXPECT_EQ(computation.output, &output);
    EXPECT_EQ(computation.minPoints, 5);
}

TEST(NormalComputation, MarksWherePointsExist)
{
    cv::Mat const marks = Draw<uchar>({"1011", "0001"});
    cv::Mat normals(2, 4, CV_32FC3);
    cv::Mat rms(2, 4, CV_32FC1);
    Output<float> output(normals, 25.0F, rms);
    cv::Mat const coordinates(2, 4, CV_32FC1, cv::Scalar(1.0));
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32SC1, CV_32FC1, CV_64FC1})
    {
        cv::Mat depth = Draw({"3011", "0001"}, type);
        if (type == CV_16SC1 || type == CV_32SC1) tests::SetElement(depth, 0, 0, 0, -300.0);
        if (depth.depth() >= CV_32F)
        {
            tests::SetElement(depth, 0, 0, 0, 1e-30);
            tests::SetElement(depth, 0, 1, 0, -0.0);
            tests::SetElement(depth, 0, 2, 0, std::numeric_limits<double>::infinity());
        }
        EXPECT_TRUE(
            EqualImages(Moving<float>(1, depth, coordinates, coordinates, coordinates, output, 6).validity, marks));
        EXPECT_TRUE(
            EqualImages(Search<float>(1, depth, coordinates, coordinates, coordinates, output, 6).validity, marks));
        Integral<float> const integral(1, depth, coordinates, coordinates, coordinates, output, 6);
        EXPECT_TRUE(EqualImages(integral.validity, marks));
        EXPECT_TRUE(EqualImages(integral.count, Draw<int>({"00000", "01123", "01124"})));
    }
}

TEST(NormalComputationWithPyramid, HoldsIntegralImages)
{
    cv::Mat const depth = Draw<float>({"10", "01"});
    cv::Mat const x = Draw<float>({"12", "03"});
    cv::Mat const y = Draw<float>({"30", "21"});
    cv::Mat const z = Draw<float>({"11", "24"});
    cv::Mat normals(2, 2, CV_32FC3);
    cv::Mat rms(2, 2, CV_32FC1);
    Output<float> output(normals, 25.0F, rms);
    Integral<float> const computation(1, depth, x, y, z, output, 6);
    EXPECT_TRUE(EqualImages(computation.sumX, Draw<double>({"000", "013", "016"})));
    EXPECT_TRUE(EqualImages(computation.squareSumX, Draw<double>({"000", "015", "01e"})));
    EXPECT_TRUE(EqualImages(computation.sumY, Draw<double>({"000", "033", "056"})));
    EXPECT_TRUE(EqualImages(computation.squareSumY, Draw<double>({"000", "099", "0de"})));
    EXPECT_TRUE(EqualImages(computation.sumZ, Draw<double>({"000", "012", "038"})));
    EXPECT_TRUE(EqualImages(computation.squareSumZ, Draw<double>({"000", "012", "05m"})));
    EXPECT_TRUE(EqualImages(computation.sumXY, Draw<double>({"000", "033", "036"})));
    EXPECT_TRUE(EqualImages(computation.sumYZ, Draw<double>({"000", "033", "07b"})));
    EXPECT_TRUE(EqualImages(computation.sumXZ, Draw<double>({"000", "013", "01f"})));
}

TEST(NormalAndRMSOutput, StoresTheNormalAndTheDistance)
{
    cv::Mat normals(2, 3, CV_32FC3, cv::Scalar::all(9.0));
    cv::Mat rms(2, 3, CV_32FC1, cv::Scalar(9.0));
    Output<float> output(normals, 7.0F, rms);
    EXPECT_EQ(output.normals, &normals);
    EXPECT_EQ(output.defaultRms, 7.0F);
    EXPECT_EQ(output.rms, &rms);
    EXPECT_EQ(rms.at<float>(0, 0), 9.0F);
    int const row = 1;
    int const column = 2;
    std::array const centroid{1.0, 2.0, 3.0};
    std::array const normal{0.1, 0.2, 0.3};
    NormalOutput_T<float> & base = output;
    base.WriteNormal(&row, &column, 5, centroid.data(), normal.data());
    EXPECT_EQ(normals.at<cv::Vec3f>(1, 2), cv::Vec3f(0.1F, 0.2F, 0.3F));
    EXPECT_EQ(rms.at<float>(1, 2), 9.0F);
    std::array const other{0.4, 0.5, 0.6};
    base.WriteNormalAndRms(&row, &column, 5, centroid.data(), other.data(), 0.7, 0.8, 3);
    EXPECT_EQ(normals.at<cv::Vec3f>(1, 2), cv::Vec3f(0.4F, 0.5F, 0.6F));
    EXPECT_EQ(rms.at<float>(1, 2), 0.7F);
    EXPECT_EQ(cv::countNonZero(rms != 9.0F), 1);
}

/// Runs a class with settings of its own and expects what the oracle says.
template <class Computation, class T>
void ExpectStrategy(PointCloud const & cloud, NormalSettings const & settings)
{
    cv::Mat normals(cloud.x.size(), CV_MAKETYPE(cloud.x.depth(), 3), cv::Scalar::all(0.0));
    cv::Mat rms(cloud.x.size(), cloud.x.type(), cv::Scalar(settings.defaultRms));
    OracleNormals const expected = tests::OracleStrategy(cloud, settings, normals);
    Output<T> output(normals, static_cast<T>(settings.defaultRms), rms);
    Computation computation(settings.halfWidth, cloud.depth, cloud.x, cloud.y, cloud.z, output, settings.minPoints);
    computation.wrapColumns = settings.wrapColumns;
    computation.Execute();
    ASSERT_TRUE(tests::Agree(normals, rms, expected)) << tests::NormalCase(cloud, settings) << ", points "
                                                      << settings.minPoints << ", default " << settings.defaultRms;
}

template <class T>
void ExpectStrategies(Random & random, cv::Size size)
{
    PointCloud const cloud = tests::RoughCloud(random, size, cv::DataType<T>::type);
    for (int const minPoints : {3, 6, 9, 16, 25})
    {
        // A distance that some windows exceed.
        for (double const defaultRms : {25.0, 0.004})
        {
            int const halfWidth = random.Below(6);
            bool const wrapColumns = random.Chance(0.5);
            ExpectStrategy<Moving<T>, T>(cloud, {0, halfWidth, wrapColumns, minPoints, defaultRms});
            ExpectStrategy<Integral<T>, T>(cloud, {1, halfWidth, wrapColumns, minPoints, defaultRms});
            ExpectStrategy<Search<T>, T>(cloud, {2, halfWidth, wrapColumns, minPoints, defaultRms});
            ExpectStrategy<RootSearch<T>, T>(cloud, {3, halfWidth, wrapColumns, minPoints, 10.0 * defaultRms});
        }
    }
}

TEST(NormalComputation, ObeysEachNumberOfPointsAndDefault)
{
    Random random(701);
    for (cv::Size const size : {cv::Size(17, 13), cv::Size(11, 19), cv::Size(3, 7)})
    {
        ExpectStrategies<float>(random, size);
        ExpectStrategies<double>(random, size);
    }
}

TEST(NormalComputation, LeavesTheOutputOfOtherTypesAndSizesAlone)
{
    Random random(702);
    PointCloud const cloud = tests::RoughCloud(random, {9, 9}, CV_32FC1);
    cv::Mat normals(9, 9, CV_64FC3, cv::Scalar::all(3.0));
    cv::Mat rms(9, 9, CV_64FC1, cv::Scalar(3.0));
    Output<double> output(normals, 25.0, rms);
    Moving<double>(2, cloud.depth, cloud.x, cloud.y, cloud.z, output, 6).Execute();
    Integral<double>(2, cloud.depth, cloud.x, cloud.y, cloud.z, output, 6).Execute();
    Search<double>(2, cloud.depth, cloud.x, cloud.y, cloud.z, output, 6).Execute();
    cv::Mat const wide(9, 10, CV_64FC1, cv::Scalar(1.0));
    Moving<double>(2, cloud.depth, wide, wide, wide, output, 6).Execute();
    Integral<double>(2, cloud.depth, wide, wide, wide, output, 6).Execute();
    Search<double>(2, cloud.depth, wide, wide, wide, output, 6).Execute();
    EXPECT_EQ(cv::countNonZero(rms != 3.0), 0);
}

static_assert(std::has_virtual_destructor_v<Moving<float>>);
static_assert(!std::has_virtual_destructor_v<NormalOutput_T<float>>);

} // namespace

} // namespace morvane
