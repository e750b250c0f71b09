// Windows of constant width in space, with an output of the caller.
#include <morvane/features/NormalComputation.h>

#include "support/NormalOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <limits>
#include <vector>

namespace morvane
{

namespace
{

using tests::FixedWidth;
using tests::FixedWidthResult;
using tests::PlaneAnswer;
using tests::PointCloud;
using tests::Random;

/// What an output is given.
struct Given
{
    cv::Point pixel;
    int count = 0;
    cv::Vec3d centroid;
    cv::Vec3d normal;
    float rms = 0.0F;
    float score = 0.0F;
    int flag = 0;
};

/// Keeps all it is given.
class Recorder final : public RMSOutput_T<float>
{
public:
    void WriteNormalAndRms(
        int const * row, int const * column, int count, double const * centroid, double const * normal, float rms,
        float score, int flag) override
    {
        given.push_back({{*column, *row}, count, cv::Vec3d(centroid), cv::Vec3d(normal), rms, score, flag});
    }

    std::vector<Given> given;
};

/// Images and settings of one run.
struct Scene
{
    explicit Scene(cv::Size size, FixedWidth const & widths)
        : cloud{cv::Mat(size, CV_32FC1, cv::Scalar(10.0)), cv::Mat(size, CV_32FC1), cv::Mat(size, CV_32FC1), cv::Mat(size, CV_32FC1)}
        , mask(size, CV_8UC1, cv::Scalar(255))
        , settings(widths)
    {
        // A rough plane, which fits nowhere too well.
        for (int row = 0; row < size.height; ++row)
        {
            for (int column = 0; column < size.width; ++column)
            {
                cloud.x.at<float>(row, column) = static_cast<float>(column);
                cloud.y.at<float>(row, column) = static_cast<float>(row);
                cloud.z.at<float>(row, column) = static_cast<float>((5 * row + 3 * column) % 4) * 0.25F + 8.0F;
            }
        }
    }

    /// Takes a point away.
    void Empty(int row, int column)
    {
        for (cv::Mat * const image : {&cloud.depth, &cloud.x, &cloud.y, &cloud.z})
        {
            image->at<float>(row, column) = 0.0F;
        }
    }

    [[nodiscard]] std::vector<Given> Run() const
    {
        Recorder recorder;
        NormalComputationWithMaxDepthWithFixedWidth computation(
            settings.halfWidth, cloud.depth, cloud.x, cloud.y, cloud.z, recorder, settings.maxDepthDifference,
            settings.width, settings.angleStep, settings.rowLimit, settings.columnLimit, mask, settings.minPoints);
        computation.Execute();
        return recorder.given;
    }

    /// What is given for a pixel; fails the test if nothing is.
    [[nodiscard]] Given At(int row, int column) const
    {
        for (Given const & given : Run())
        {
            if (given.pixel == cv::Point(column, row)) return given;
        }
        ADD_FAILURE() << "nothing at row " << row << ", column " << column;
        return {};
    }

    PointCloud cloud;
    cv::Mat mask;
    FixedWidth settings;
};

/// Expects what the oracle says. @return the number of planes
int ExpectOracle(Scene const & scene)
{
    std::vector<Given> const actual = scene.Run();
    std::vector<FixedWidthResult> const expected = tests::OracleFixedWidth(scene.cloud, scene.mask, scene.settings);
    EXPECT_EQ(actual.size(), expected.size());
    int planes = 0;
    for (std::size_t i = 0; i < std::min(actual.size(), expected.size()); ++i)
    {
        Given const & given = actual[i];
        tests::OraclePlane const & plane = expected[i].plane;
        EXPECT_EQ(given.pixel, expected[i].pixel);
        EXPECT_EQ(given.count, plane.count) << given.pixel;
        EXPECT_LE(cv::norm(given.centroid - plane.centroid), 1e-12) << given.pixel;
        EXPECT_EQ(given.score, given.rms);
        EXPECT_EQ(given.flag, 0);
        if (plane.answer == PlaneAnswer::Open) continue;
        bool const isPlane = plane.answer == PlaneAnswer::Plane;
        cv::Vec3d const normal = isPlane ? plane.normal : cv::Vec3d();
        cv::Vec3d const other = plane.isSideOpen ? -normal : normal;
        EXPECT_LE(std::min(cv::norm(given.normal - normal), cv::norm(given.normal - other)), 1e-6) << given.pixel;
        EXPECT_NEAR(given.rms, isPlane ? plane.rms : 0.0, 1.5e-7 * std::max(1.0, plane.rms)) << given.pixel;
        planes += isPlane ? 1 : 0;
    }
    return planes;
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, HoldsWhatItIsMadeWith)
{
    Scene const scene({20, 30}, {});
    Recorder recorder;
    NormalComputationWithMaxDepthWithFixedWidth const computation(
        50, scene.cloud.depth, scene.cloud.x, scene.cloud.y, scene.cloud.z, recorder, 2.0F, 3.0F, 0.25F, 4, 5,
        scene.mask, 7);
    EXPECT_FALSE(computation.wrapColumns);
    EXPECT_EQ(computation.halfWidth, 9);
    EXPECT_EQ(computation.windowWidth, 19);
    EXPECT_EQ(computation.maxDepthDifference, 2.0F);
    EXPECT_EQ(computation.fixedWidth, 3.0F);
    EXPECT_EQ(computation.inverseAngleStep, 4.0F);
    EXPECT_EQ(computation.rowLimit, 4);
    EXPECT_EQ(computation.columnLimit, 5);
    EXPECT_EQ(computation.holeMask.data, scene.mask.data);
    EXPECT_EQ(computation.minPoints, 7);
    EXPECT_EQ(computation.output, &recorder);
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, LeavesABorderOfTheLargestRadius)
{
    Scene scene({11, 10}, {});
    scene.settings.halfWidth = 4;
    std::vector<Given> const given = scene.Run();
    ASSERT_EQ(given.size(), 6U);
    EXPECT_EQ(given.front().pixel, cv::Point(4, 4));
    EXPECT_EQ(given.back().pixel, cv::Point(6, 5));
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, DoesNothingWithoutAWindow)
{
    Scene scene({11, 11}, {});
    scene.settings.halfWidth = 0;
    EXPECT_TRUE(scene.Run().empty());
    // A side of 3 cuts the radius to 0.
    Scene small({3, 11}, {});
    small.settings.halfWidth = 2;
    EXPECT_TRUE(small.Run().empty());
    small.settings.minPoints = 0;
    small.settings.halfWidth = 1;
    EXPECT_FALSE(small.Run().empty());
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, WidensTheWindowForNearPixels)
{
    // With a width of 10 at a depth of 10 the angle is an eighth of a circle.
    FixedWidth widths;
    widths.halfWidth = 12;
    widths.width = 10.0F;
    for (int const radius : {1, 3, 4, 7, 8})
    {
        widths.angleStep = 0.7853982F / static_cast<float>(radius);
        Scene const scene({25, 25}, widths);
        int const side = 2 * std::max(radius, 3) + 1;
        EXPECT_EQ(scene.At(12, 12).count, side * side) << radius;
    }
    // The arc tangent of a tenth is 0.1012 in the polynomial, and would be 0.0997: 7.56 steps instead of 7.44.
    widths.angleStep = 0.01339F;
    widths.width = 1.0F;
    EXPECT_EQ(Scene({25, 25}, widths).At(12, 12).count, 17 * 17);
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, LooksAtEverySecondPixelOfWideWindows)
{
    FixedWidth widths;
    widths.halfWidth = 20;
    widths.width = 10.0F;
    struct Case
    {
        int radius;
        int samples;
    };
    // A stride of 1 up to a radius of 8, 2 up to 15, 3 from 16 on.
    for (Case const wide : {Case{8, 17}, Case{9, 10}, Case{10, 11}, Case{15, 16}, Case{16, 11}, Case{20, 14}})
    {
        widths.angleStep = 0.7853982F / static_cast<float>(wide.radius);
        Scene const scene({41, 41}, widths);
        EXPECT_EQ(scene.At(20, 20).count, wide.samples * wide.samples) << wide.radius;
    }
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, CutsTheRadiusToTheLargest)
{
    FixedWidth widths;
    widths.halfWidth = 2;
    Scene const scene({9, 9}, widths);
    EXPECT_EQ(scene.At(4, 4).count, 25);
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, LeavesOutWhatIsMuchNearer)
{
    FixedWidth widths;
    widths.halfWidth = 3;
    widths.maxDepthDifference = 1.0F;
    Scene scene({7, 7}, widths);
    ASSERT_EQ(scene.At(3, 3).count, 49);
    scene.cloud.depth.at<float>(0, 0) = 9.0F; // nearer by exactly the limit
    scene.cloud.depth.at<float>(0, 1) = 9.25F;
    scene.cloud.depth.at<float>(0, 2) = 2.0F;
    scene.cloud.depth.at<float>(0, 3) = 1000.0F; // farther ones stay
    scene.cloud.depth.at<float>(0, 4) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(scene.At(3, 3).count, 46);
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, SkipsPixelsWithoutDepth)
{
    FixedWidth widths;
    widths.halfWidth = 3;
    Scene scene({9, 7}, widths);
    scene.cloud.depth.at<float>(3, 3) = 0.0F;
    scene.cloud.depth.at<float>(3, 4) = -4.0F;
    scene.mask.setTo(0);
    std::vector<Given> const given = scene.Run();
    ASSERT_EQ(given.size(), 1U);
    EXPECT_EQ(given[0].pixel, cv::Point(5, 3));
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, NeedsMorePointsThanAsked)
{
    FixedWidth widths;
    widths.halfWidth = 3;
    widths.minPoints = 48;
    EXPECT_EQ(Scene({7, 7}, widths).Run().size(), 1U);
    widths.minPoints = 49;
    EXPECT_TRUE(Scene({7, 7}, widths).Run().empty());
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, DividesByManyHolesToo)
{
    FixedWidth widths;
    widths.halfWidth = 3;
    Scene scene({7, 7}, widths);
    // Seven holes are not more than the seven samples in a row.
    for (int column = 0; column < 7; ++column)
    {
        scene.Empty(0, column);
    }
    Given const few = scene.At(3, 3);
    EXPECT_EQ(few.count, 42);
    scene.Empty(6, 6);
    Given const many = scene.At(3, 3);
    EXPECT_EQ(many.count, 49);
    double const weight = 1.0F / 49.0F;
    EXPECT_DOUBLE_EQ(many.centroid[0], weight * (6 * 21 - 6));
    ExpectOracle(scene);
    // A pixel is no hole outside the mask, at the limits or beyond: it is left out, since it is nearer.
    scene.mask.at<uchar>(6, 6) = 0;
    EXPECT_EQ(scene.At(3, 3).count, 41);
    scene.mask.setTo(1);
    EXPECT_EQ(scene.At(3, 3).count, 49);
    scene.settings.rowLimit = 6;
    EXPECT_EQ(scene.At(3, 3).count, 41);
    scene.settings.rowLimit = 7;
    scene.settings.columnLimit = 6;
    EXPECT_EQ(scene.At(3, 3).count, 41);
    scene.settings.columnLimit = 7;
    EXPECT_EQ(scene.At(3, 3).count, 49);
    // With a generous difference, what is no hole joins the points, coordinates of 0 and all.
    scene.mask.at<uchar>(6, 6) = 0;
    scene.settings.maxDepthDifference = 11.0F;
    EXPECT_EQ(scene.At(3, 3).count, 42);
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, HandsOverZerosWithoutAPlane)
{
    FixedWidth widths;
    widths.halfWidth = 3;
    Scene scene({7, 7}, widths);
    scene.cloud.z.setTo(8.0);
    Given const given = scene.At(3, 3);
    EXPECT_EQ(given.count, 49);
    EXPECT_EQ(given.normal, cv::Vec3d());
    EXPECT_EQ(given.rms, 0.0F);
    EXPECT_EQ(given.score, 0.0F);
    double const weight = 1.0F / 49.0F;
    EXPECT_EQ(given.centroid, cv::Vec3d(weight * 147.0, weight * 147.0, weight * 392.0));
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, DoesNothingWithOtherImages)
{
    FixedWidth widths;
    widths.halfWidth = 3;
    Scene scene({7, 7}, widths);
    scene.mask = cv::Mat(7, 7, CV_32FC1, cv::Scalar(1.0));
    EXPECT_TRUE(scene.Run().empty());
    scene.mask = cv::Mat(7, 8, CV_8UC1, cv::Scalar(1.0));
    EXPECT_TRUE(scene.Run().empty());
    scene.mask = cv::Mat(7, 7, CV_8UC1, cv::Scalar(1.0));
    EXPECT_FALSE(scene.Run().empty());
    scene.cloud.depth.convertTo(scene.cloud.depth, CV_64F);
    EXPECT_TRUE(scene.Run().empty());
}

TEST(NormalComputationWithMaxDepthWithFixedWidth, AgreesWithPlainLoops)
{
    Random random(703);
    int planes = 0;
    for (int i = 0; i < 40; ++i)
    {
        FixedWidth widths;
        widths.halfWidth = 1 + random.Below(10);
        widths.maxDepthDifference = static_cast<float>(random.Below(12));
        widths.width = 0.5F + static_cast<float>(random.Below(8));
        widths.angleStep = 0.01F + 0.1F * static_cast<float>(random.Unit());
        cv::Size const size(2 * widths.halfWidth + random.Below(17), 2 * widths.halfWidth + random.Below(17));
        widths.rowLimit = random.Below(size.height + 2);
        widths.columnLimit = random.Below(size.width + 2);
        widths.minPoints = random.Chance(0.5) ? 6 : random.Below(60);
        tests::CloudMixture mixture;
        mixture.emptyShare = random.Chance(0.5) ? 0.1 : 0.4;
        Scene scene(size, widths);
        scene.cloud = tests::RoughCloud(random, size, CV_32FC1, mixture);
        cv::multiply(scene.cloud.depth, cv::Mat(size, CV_32FC1, cv::Scalar(0.125)), scene.cloud.depth);
        scene.mask = tests::RandomMask(random, size, 0.8) * 200;
        planes += ExpectOracle(scene);
        ASSERT_FALSE(HasFailure()) << "run " << i;
    }
    EXPECT_GT(planes, 1000);
}

} // namespace

} // namespace morvane
