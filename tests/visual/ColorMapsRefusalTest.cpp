// What the maps accept and refuse.
#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/MapOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane::tests
{

namespace
{

cv::Mat Filled(cv::Size size, int type)
{
    cv::Mat image(size, type);
    FillBytes(image, 0x11);
    return image;
}

void ExpectRefused(MapUnderTest const & map, cv::Mat const & image, cv::Mat output)
{
    SCOPED_TRACE(
        testing::Message() << map.name << " of " << cv::typeToString(image.type()) << ' ' << image.size() << " to "
                           << cv::typeToString(output.type()) << ' ' << output.size());
    Snapshot const snapshot(output);
    EXPECT_FALSE(map.whole(image, output));
    EXPECT_FALSE(map.limited(image, output, 1, 2, true));
    EXPECT_FALSE(map.limited(image, output, 1, 2, false));
    EXPECT_TRUE(snapshot.IsUntouched());
}

TEST(ColorMaps, RefuseDepthsThatTheLibraryDoesNotKnow)
{
    for (MapUnderTest const & map : kMaps)
    {
        for (int const depth : kRefusedDepths)
        {
            ExpectRefused(map, Filled({4, 3}, depth), Filled({4, 3}, map.outputType));
        }
    }
}

TEST(ColorMaps, RefuseImagesOfSeveralChannels)
{
    for (MapUnderTest const & map : kMaps)
    {
        for (int const depth : kDepths)
        {
            for (int const channels : {2, 3, 4, 5})
            {
                ExpectRefused(map, Filled({4, 3}, CV_MAKETYPE(depth, channels)), Filled({4, 3}, map.outputType));
            }
        }
    }
}

TEST(ColorMaps, RefuseOutputsOfAnotherTypeAndDoNotMakeThemAnew)
{
    for (MapUnderTest const & map : kMaps)
    {
        for (int depth = CV_8U; depth <= CV_16F; ++depth)
        {
            for (int const channels : {1, 2, 3, 4, 5})
            {
                int const type = CV_MAKETYPE(depth, channels);
                if (type != map.outputType) ExpectRefused(map, Filled({4, 3}, CV_32F), Filled({4, 3}, type));
            }
        }
    }
}

TEST(ColorMaps, RefuseOutputsOfAnotherSizeAndDoNotMakeThemAnew)
{
    for (MapUnderTest const & map : kMaps)
    {
        for (int const depth : kDepths)
        {
            for (cv::Size const size : {cv::Size(3, 4), cv::Size(4, 2), cv::Size(5, 3), cv::Size(12, 1), cv::Size()})
            {
                ExpectRefused(map, Filled({4, 3}, depth), Filled(size, map.outputType));
            }
            ExpectRefused(map, cv::Mat(), Filled({4, 3}, map.outputType));
        }
    }
}

TEST(ColorMaps, AcceptEmptyImages)
{
    for (MapUnderTest const & map : kMaps)
    {
        for (int const depth : kDepths)
        {
            for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 3), cv::Size(4, 0)})
            {
                cv::Mat output(size, map.outputType);
                EXPECT_TRUE(map.whole(cv::Mat(size, depth), output));
                EXPECT_TRUE(map.limited(cv::Mat(size, depth), output, 1, 2, true));
                EXPECT_EQ(output.size(), size);
            }
        }
    }
}

} // namespace

} // namespace morvane::tests
