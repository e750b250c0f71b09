// What the graph operators refuse, and that the graph stays as it was then.
#include <morvane/connexity/ZoneGraph.h>

#include "support/AllTypes.h"
#include "support/GraphOracle.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>

namespace morvane::connexity
{

namespace
{

using tests::Border;

/// A matrix whose bytes are all 1, for depths that can't be filled otherwise.
cv::Mat AllOnes(cv::Size size, int type)
{
    cv::Mat image(size.height, size.width, type);
    tests::FillBytes(image, 1);
    return image;
}

void ExpectRefused(Border border, cv::Mat const & image, cv::Mat const & labels)
{
    for (int number = -1; number <= tests::kConnexityCount; ++number)
    {
        Graph graph = tests::StrangeGraph();
        tests::PlainGraph const before = tests::ReadGraph(graph);
        SCOPED_TRACE(tests::Case(image.type(), image.size(), number) + ", labels " + cv::typeToString(labels.type()));
        EXPECT_FALSE(tests::CallExtract(border, image, labels, number, 1.0, graph));
        ASSERT_TRUE(tests::EqualGraphs(graph, before));
    }
}

TEST(ExtractGraphRefusals, LabelsOfOtherTypes)
{
    cv::Mat const image = AllOnes({3, 2}, CV_8UC1);
    for (int depth = CV_8U; depth <= CV_16F; ++depth)
    {
        for (int channels = 1; channels <= 5; ++channels)
        {
            int const type = CV_MAKETYPE(depth, channels);
            if (type == CV_32SC1) continue;
            for (Border const border : tests::kBorders)
            {
                ExpectRefused(border, image, AllOnes({3, 2}, type));
                ExpectRefused(border, cv::Mat(0, 0, CV_8UC1), cv::Mat(0, 0, type));
            }
        }
    }
}

TEST(ExtractGraphRefusals, LabelsThatWereNeverMade)
{
    for (Border const border : tests::kBorders)
    {
        ExpectRefused(border, {}, {});
    }
}

TEST(ExtractGraphRefusals, ImagesOfOtherSizes)
{
    cv::Mat const labels = AllOnes({3, 2}, CV_32SC1);
    for (Border const border : tests::kConditionalBorders)
    {
        for (cv::Size const size : {cv::Size(2, 3), cv::Size(3, 3), cv::Size(4, 2), cv::Size(6, 1), cv::Size(2, 2)})
        {
            ExpectRefused(border, AllOnes(size, CV_8UC1), labels);
        }
        ExpectRefused(border, {}, labels);
        ExpectRefused(border, AllOnes({3, 2}, CV_8UC1), cv::Mat(0, 0, CV_32SC1));
        ExpectRefused(border, cv::Mat(0, 3, CV_8UC1), cv::Mat(3, 0, CV_32SC1));
        // As many elements, but not as many pixels.
        ExpectRefused(border, AllOnes({2, 2}, CV_8UC2), AllOnes({4, 2}, CV_32SC1));
    }
}

TEST(ExtractGraphRefusals, ImagesOfRefusedDepths)
{
    cv::Mat const labels = AllOnes({3, 2}, CV_32SC1);
    for (Border const border : tests::kConditionalBorders)
    {
        for (int const depth : tests::kRefusedDepths)
        {
            for (int const channels : {1, 2, 4})
            {
                ExpectRefused(border, AllOnes({3, 2}, CV_MAKETYPE(depth, channels)), labels);
            }
            ExpectRefused(border, cv::Mat(0, 0, depth), cv::Mat(0, 0, CV_32SC1));
        }
    }
}

TEST(ExtractGraphRefusals, MoreThanTwoDimensions)
{
    std::array const sides{2, 3, 4};
    cv::Mat const labels(3, sides.data(), CV_32SC1, cv::Scalar(1));
    cv::Mat const image(3, sides.data(), CV_8UC1, cv::Scalar(1));
    for (Border const border : tests::kBorders)
    {
        ExpectRefused(border, image, labels);
        ExpectRefused(border, AllOnes({3, 2}, CV_8UC1), labels);
    }
    for (Border const border : tests::kConditionalBorders)
    {
        ExpectRefused(border, image, AllOnes({3, 2}, CV_32SC1));
    }
}

TEST(LabelFlatZonesWithGraphRefusals, SeveralChannels)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            for (int const labelDepth : tests::kLabelDepths)
            {
                cv::Mat labels = tests::DirtyLabels({3, 2}, labelDepth);
                tests::Snapshot const before(labels);
                EXPECT_FALSE(
                    LabelFlatZonesWithGraph(AllOnes({3, 2}, CV_MAKETYPE(depth, channels)), eConnexity8, labels));
                EXPECT_TRUE(before.IsUntouched());
            }
        }
    }
}

TEST(LabelFlatZonesWithGraphRefusals, DepthsAndSizes)
{
    auto const expectRefused = [](cv::Mat const & image, cv::Mat & labels) {
        for (int number = -1; number <= tests::kConnexityCount; ++number)
        {
            tests::Snapshot const before(labels);
            EXPECT_FALSE(LabelFlatZonesWithGraph(image, tests::Shape(number), labels));
            ASSERT_TRUE(before.IsUntouched()) << tests::Case(image.type(), image.size(), number);
        }
    };
    cv::Mat labels = tests::DirtyLabels({3, 2}, CV_32SC1);
    for (int const depth : tests::kRefusedDepths)
    {
        expectRefused(AllOnes({3, 2}, depth), labels);
    }
    for (int const depth : tests::kRefusedLabelDepths)
    {
        cv::Mat refused = tests::DirtyLabels({3, 2}, depth);
        expectRefused(AllOnes({3, 2}, CV_8UC1), refused);
    }
    for (cv::Size const size : {cv::Size(2, 3), cv::Size(3, 3), cv::Size(4, 2), cv::Size(6, 1), cv::Size(0, 0)})
    {
        expectRefused(AllOnes(size, CV_8UC1), labels);
    }
    cv::Mat none;
    expectRefused(AllOnes({3, 2}, CV_8UC1), none);
}

TEST(LabelFlatZonesWithGraphRefusals, MoreThanTwoDimensions)
{
    std::array const sides{2, 3, 4};
    cv::Mat const volume(3, sides.data(), CV_8UC1, cv::Scalar(1));
    cv::Mat labels(3, sides.data(), CV_32SC1, cv::Scalar(7));
    EXPECT_FALSE(LabelFlatZonesWithGraph(volume, eConnexity8, labels));
    EXPECT_EQ(labels.at<int>(1, 2, 3), 7);
}

} // namespace

} // namespace morvane::connexity
