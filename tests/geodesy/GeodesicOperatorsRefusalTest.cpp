// What the geodesic operators refuse, what they leave to OpenCV's exceptions, and what becomes of the output.
#include <morvane/geodesy/GeodesicOperators.h>

#include "support/AllTypes.h"
#include "support/GeodesicOracle.h"
#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace morvane::geodesy
{

namespace
{

using Call = bool (*)(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out);

/// An operator, with a kernel of 3 where it takes one.
struct Operator
{
    char const * name;
    Call call;
};

constexpr Operator kDilate{"GeoDilate", [](cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out) {
                               return GeoDilate(marker, mask, shape, out, 3);
                           }};
constexpr Operator kErode{"GeoErode", GeoErode};
constexpr Operator kDistance{"GeodesicDistance", GeodesicDistance};
constexpr std::array kSteps{kDilate, kErode};
constexpr std::array kAll{kDilate, kErode, kDistance};

constexpr int kBadShape = 7;

/// A matrix whose bytes are all 1, for depths that can't be filled otherwise.
cv::Mat Ones(cv::Size size, int type)
{
    cv::Mat image(size.height, size.width, type);
    tests::FillBytes(image, 1);
    return image;
}

/// Expects a refusal that leaves @p out alone. A shape that would throw shows that nothing was tried before.
void ExpectRefused(Operator const & op, cv::Mat const & marker, cv::Mat const & mask, cv::Mat & out)
{
    SCOPED_TRACE(std::string(op.name) + ", marker " + cv::typeToString(marker.type()));
    tests::Snapshot const before(out);
    for (int const shape : {0, 1, 2, kBadShape})
    {
        EXPECT_FALSE(op.call(marker, mask, shape, out));
        EXPECT_TRUE(before.IsUntouched());
    }
}

/// Expects a refusal after an empty output was made.
void ExpectRefusedButMade(Operator const & op, cv::Mat const & marker, cv::Mat const & mask, cv::Size size, int type)
{
    SCOPED_TRACE(std::string(op.name) + ", marker " + cv::typeToString(marker.type()));
    for (int const shape : {0, kBadShape})
    {
        cv::Mat out;
        EXPECT_FALSE(op.call(marker, mask, shape, out));
        EXPECT_EQ(out.size(), size);
        EXPECT_EQ(out.type(), type);
    }
}

TEST(GeodesicRefusals, MarkerAndMaskOfDifferentTypes)
{
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32FC1, CV_64FC1, CV_8SC1, CV_32SC1, CV_8UC3})
    {
        int const other = type == CV_8UC1 ? CV_8UC2 : CV_8UC1;
        for (Operator const & op : kAll)
        {
            for (int const outType : {type, other})
            {
                cv::Mat out = Ones({4, 3}, outType);
                ExpectRefused(op, Ones({4, 3}, type), Ones({4, 3}, other), out);
            }
        }
        for (Operator const & op : kSteps)
        {
            cv::Mat none;
            ExpectRefused(op, Ones({4, 3}, type), Ones({4, 3}, other), none);
        }
        // The distance makes its output before it looks at types.
        ExpectRefusedButMade(kDistance, Ones({4, 3}, type), Ones({4, 3}, other), {4, 3}, other);
    }
}

TEST(GeodesicRefusals, MarkerAndMaskOfDifferentSizes)
{
    cv::Mat const marker = Ones({4, 3}, CV_16SC1);
    for (cv::Size const size : {cv::Size(3, 4), cv::Size(4, 4), cv::Size(5, 3), cv::Size(12, 1)})
    {
        cv::Mat const mask = Ones(size, CV_16SC1);
        for (Operator const & op : kAll)
        {
            cv::Mat out = Ones({4, 3}, CV_16SC1);
            ExpectRefused(op, marker, mask, out);
        }
        ExpectRefusedButMade(kDilate, marker, mask, marker.size(), CV_16SC1);
        ExpectRefusedButMade(kErode, marker, mask, marker.size(), CV_16SC1);
        ExpectRefusedButMade(kDistance, marker, mask, size, CV_16SC1);
    }
}

TEST(GeodesicRefusals, OutputOfAnotherSizeOrType)
{
    cv::Mat const image = Ones({4, 3}, CV_8UC1);
    for (Operator const & op : kAll)
    {
        for (cv::Size const size : {cv::Size(3, 4), cv::Size(5, 3), cv::Size(4, 2), cv::Size(1, 1)})
        {
            cv::Mat out = Ones(size, CV_8UC1);
            ExpectRefused(op, image, image, out);
        }
        for (int const type : {CV_8SC1, CV_16UC1, CV_32FC1, CV_8UC2})
        {
            cv::Mat out = Ones({4, 3}, type);
            ExpectRefused(op, image, image, out);
        }
    }
}

TEST(GeodesicRefusals, DistancesOfEmptyImagesMakeNoOutput)
{
    cv::Mat const image = Ones({4, 3}, CV_8UC1);
    for (cv::Mat const & none : std::vector<cv::Mat>{cv::Mat(), cv::Mat(0, 5, CV_8UC1), cv::Mat(5, 0, CV_8UC1)})
    {
        cv::Mat out;
        ExpectRefused(kDistance, none, image, out);
        ExpectRefused(kDistance, image, none, out);
        ExpectRefused(kDistance, none, none, out);
        cv::Mat made = Ones({4, 3}, CV_8UC1);
        ExpectRefused(kDistance, none, image, made);
        ExpectRefused(kDistance, image, none, made);
    }
}

TEST(GeodesicRefusals, DistancesOfSeveralChannelsAndRefusedDepths)
{
    std::vector<int> types{CV_8SC1, CV_16FC1, CV_8SC3};
    for (int const depth : tests::kDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            types.push_back(CV_MAKETYPE(depth, channels));
        }
    }
    for (int const type : types)
    {
        for (cv::Size const size : {cv::Size(4, 3), cv::Size(1, 1)})
        {
            cv::Mat const image = Ones(size, type);
            cv::Mat out = Ones(size, type);
            ExpectRefused(kDistance, image, image, out);
            ExpectRefusedButMade(kDistance, image, image, size, type);
        }
    }
}

TEST(GeodesicRefusals, MoreThanTwoDimensions)
{
    std::array const sides{2, 3, 4};
    cv::Mat const volume(3, sides.data(), CV_8UC1, cv::Scalar(1));
    cv::Mat const image = Ones({4, 3}, CV_8UC1);
    for (Operator const & op : kAll)
    {
        cv::Mat outVolume(3, sides.data(), CV_8UC1, cv::Scalar(7));
        EXPECT_FALSE(op.call(volume, volume, kBadShape, outVolume));
        EXPECT_FALSE(op.call(image, image, kBadShape, outVolume));
        EXPECT_EQ(outVolume.dims, 3);
        EXPECT_EQ(outVolume.at<uchar>(1, 2, 3), 7);
        cv::Mat out = Ones({4, 3}, CV_8UC1);
        ExpectRefused(op, volume, image, out);
        ExpectRefused(op, image, volume, out);
    }
}

TEST(GeodesicExceptions, ShapesOutsideTheTableAreThrownBeforeAnythingIsWritten)
{
    for (Operator const & op : kAll)
    {
        for (int const shape : tests::kStrangeElementShapes)
        {
            cv::Mat const image = Ones({4, 3}, CV_8UC1);
            cv::Mat out(3, 4, CV_8UC1, cv::Scalar(77));
            tests::Snapshot const before(out);
            EXPECT_THROW(static_cast<void>(op.call(image, image, shape, out)), cv::Exception) << op.name;
            EXPECT_TRUE(before.IsUntouched());
        }
    }
}

TEST(GeodesicExceptions, KernelsWithoutPixels)
{
    cv::Mat const image = Ones({4, 3}, CV_8UC1);
    for (int const kernelSize : {0, -1, -3})
    {
        cv::Mat out(3, 4, CV_8UC1, cv::Scalar(77));
        tests::Snapshot const before(out);
        EXPECT_THROW(static_cast<void>(GeoDilate(image, image, 0, out, kernelSize)), cv::Exception) << kernelSize;
        EXPECT_TRUE(before.IsUntouched());
    }
}

TEST(GeodesicExceptions, StepsOfDepthsThatAreNotDilated)
{
    for (int const depth : tests::kUndilatedDepths)
    {
        for (int const channels : {1, 3})
        {
            cv::Mat const image = Ones({4, 3}, CV_MAKETYPE(depth, channels));
            for (Operator const & op : kSteps)
            {
                cv::Mat out;
                EXPECT_THROW(static_cast<void>(op.call(image, image, 0, out)), cv::Exception) << op.name;
                EXPECT_EQ(out.size(), image.size());
                EXPECT_EQ(out.type(), image.type());
            }
        }
    }
}

TEST(GeodesicExceptions, StepsOfEmptyImages)
{
    cv::Mat const none(0, 0, CV_8UC1);
    for (Operator const & op : kSteps)
    {
        cv::Mat out;
        EXPECT_THROW(static_cast<void>(op.call(none, none, 0, out)), cv::Exception) << op.name;
        EXPECT_TRUE(out.empty());
    }
}

TEST(GeodesicExceptions, DistancesOf32BitIntegersBeyondOnePixel)
{
    for (cv::Size const size : {cv::Size(2, 1), cv::Size(4, 3)})
    {
        cv::Mat const image = Ones(size, CV_32SC1);
        cv::Mat out;
        EXPECT_THROW(static_cast<void>(GeodesicDistance(image, image, 0, out)), cv::Exception);
        EXPECT_EQ(out.size(), size);
        EXPECT_EQ(out.type(), CV_32SC1);
        // Also where the dilation would have nothing to do.
        cv::Mat const zeros(size, CV_32SC1, cv::Scalar(0));
        EXPECT_THROW(static_cast<void>(GeodesicDistance(zeros, zeros, 0, out)), cv::Exception);
    }
}

} // namespace

} // namespace morvane::geodesy
