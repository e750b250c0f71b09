// The graphs of drawn label images with a condition on the pixels that touch.
#include <morvane/connexity/ZoneGraph.h>

#include "support/AllTypes.h"
#include "support/GraphOracle.h"
#include "support/ImageLiterals.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Border;
using tests::Draw;
using tests::Drawing;
using tests::DrawLabels;
using tests::Extracted;
using tests::Joints;
using tests::JointsOf;
using tests::Row;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The edges between touching pixels that differ by at most @p delta.
Joints Within(cv::Mat const & image, Drawing const & labels, double delta, int connexity = eConnexity4)
{
    return JointsOf(Extracted(Border::Within, image, DrawLabels(labels), connexity, delta));
}

/// The edges between touching pixels that differ by more than @p delta.
Joints Beyond(cv::Mat const & image, Drawing const & labels, double delta, int connexity = eConnexity4)
{
    return JointsOf(Extracted(Border::Beyond, image, DrawLabels(labels), connexity, delta));
}

/// Is there an edge between two zones of one pixel each, with these values? In whichever order they lie.
template <class T>
bool Joined(Border border, T one, T other, double delta)
{
    cv::Mat const labels = DrawLabels({"12"});
    bool const joined = Extracted(border, Row<T>({one, other}), labels, eConnexity4, delta).HasEdge(1, 2);
    EXPECT_EQ(Extracted(border, Row<T>({other, one}), labels, eConnexity4, delta).HasEdge(1, 2), joined)
        << "depends on the order";
    return joined;
}

/// Expects an edge of just one of the two operators.
template <class T>
void ExpectWithin(T one, T other, double delta, bool expected)
{
    SCOPED_TRACE(
        ::testing::Message() << cv::typeToString(cv::traits::Type<T>::value) << ": " << +one << " and " << +other
                             << ", delta " << delta);
    EXPECT_EQ(Joined(Border::Within, one, other, delta), expected);
    EXPECT_EQ(Joined(Border::Beyond, one, other, delta), !expected);
}

/// Expects an edge of neither.
template <class T>
void ExpectNeither(T one, T other, double delta)
{
    SCOPED_TRACE(::testing::Message() << one << " and " << other << ", delta " << delta);
    EXPECT_FALSE(Joined(Border::Within, one, other, delta));
    EXPECT_FALSE(Joined(Border::Beyond, one, other, delta));
}

TEST(ExtractGraphWithDelta, BoundIsInclusiveForOneAndExclusiveForTheOther)
{
    tests::ForEachElement([]<class T> {
        ExpectWithin<T>(10, 15, 5, true);
        ExpectWithin<T>(10, 16, 5, false);
        ExpectWithin<T>(7, 7, 0, true);
        ExpectWithin<T>(7, 8, 0, false);
    });
    ExpectWithin<short>(-3, 4, 7, true);
    ExpectWithin<int>(-3, 4, 6, false);
}

TEST(ExtractGraphWithDelta, OnePairAlongTheBorderThatPasses_IsEnough)
{
    cv::Mat const image = Draw<uchar>({"1259", "9998"});
    Drawing const labels{"1111", "2222"};
    // Steps of 8, 7, 4 and 1.
    EXPECT_EQ(Within(image, labels, 0), (Joints{}));
    EXPECT_EQ(Within(image, labels, 1), (Joints{{1, 2}}));
    EXPECT_EQ(Beyond(image, labels, 7), (Joints{{1, 2}}));
    EXPECT_EQ(Beyond(image, labels, 8), (Joints{}));
}

TEST(ExtractGraphWithDelta, ZonesThatFailEverywhereAlongTheirBorder_HaveNoEdge)
{
    cv::Mat const image = Draw<uchar>({"119", "119", "559"});
    Drawing const labels{"112", "112", "332"};
    EXPECT_EQ(Within(image, labels, 3), (Joints{}));
    EXPECT_EQ(Within(image, labels, 4), (Joints{{1, 3}, {3, 2}}));
    EXPECT_EQ(Beyond(image, labels, 3), (Joints{{1, 2}, {1, 3}, {3, 2}}));
    EXPECT_EQ(Beyond(image, labels, 4), (Joints{{1, 2}}));
    // All zones keep their vertices.
    EXPECT_EQ(Extracted(Border::Within, image, DrawLabels(labels), eConnexity4, 3).VertexCount(), 4U);
}

TEST(ExtractGraphWithDelta, FirstPairThatPassesAddsTheEdge)
{
    // Without a bound, the 1 meets the 2 first.
    cv::Mat const image = Draw<uchar>({"19", "15", "11"});
    Drawing const labels{"12", "13", "12"};
    EXPECT_EQ(Within(image, labels, 255), (Joints{{1, 2}, {2, 3}, {1, 3}}));
    EXPECT_EQ(Within(image, labels, 4), (Joints{{2, 3}, {1, 3}, {1, 2}}));
    // The edge runs from the label of the pixel that found it.
    cv::Mat const corner = Draw<uchar>({"19", "99"});
    EXPECT_EQ(Within(corner, {"12", "21"}, 255), (Joints{{1, 2}}));
    EXPECT_EQ(Within(corner, {"12", "21"}, 0), (Joints{{2, 1}}));
    EXPECT_EQ(Beyond(Draw<uchar>({"99", "91"}), {"12", "21"}, 7), (Joints{{2, 1}}));
}

TEST(ExtractGraphWithDelta, ValuesInsideAZoneDoNotMatter)
{
    // The zones are equal in the middle and differ where they touch.
    EXPECT_EQ(Within(Draw<uchar>({"5195"}), {"1122"}, 0), (Joints{}));
    EXPECT_EQ(Beyond(Draw<uchar>({"1551"}), {"1122"}, 0), (Joints{}));
    // What lies outside all zones does not join them either.
    EXPECT_EQ(Within(Draw<uchar>({"555"}), {"1.2"}, 0), (Joints{}));
}

TEST(ExtractGraphWithDelta, SeamAndFarNeighboursAreAskedToo)
{
    cv::Mat const image = Draw<ushort>({"5194", "1111"});
    Drawing const labels{"1..2", "...."};
    EXPECT_EQ(Within(image, labels, 1, eConnexity4), (Joints{}));
    EXPECT_EQ(Within(image, labels, 1, eConnexity4Wrapped), (Joints{{1, 2}}));
    EXPECT_EQ(Within(image, labels, 0, eConnexity4Wrapped), (Joints{}));
    EXPECT_EQ(Beyond(image, labels, 0, eConnexity4Wrapped), (Joints{{1, 2}}));
    // Two to the left of the first column is the last one, whose value is asked.
    EXPECT_EQ(Within(Draw<uchar>({"5.1.15"}), {"1...23"}, 0, eConnexity12InterleavedWrapped), (Joints{{1, 3}}));
    EXPECT_EQ(Within(Draw<uchar>({"5...51"}), {"1...23"}, 0, eConnexity12InterleavedWrapped), (Joints{{2, 1}}));
}

TEST(ExtractGraphWithDelta, SeamIsAskedWhereAPixelHasItsOwnLabelAllAround)
{
    // The last pixels of both rows fail. Below, the first pixel finds the last one, before that one looks for others.
    cv::Mat const image = Draw<uchar>({"5559", "5555"});
    EXPECT_EQ(Within(image, {"11.1", "11.2"}, 0, eConnexity4Wrapped), (Joints{{1, 2}}));
}

TEST(ExtractGraphWithDelta, OutsideTheTableOfShapes_NothingTouches)
{
    cv::Mat const image = Draw<uchar>({"11", "11"});
    for (int const number : tests::kStrangeConnexities)
    {
        EXPECT_EQ(Within(image, {"12", "34"}, 5, number), (Joints{}));
        EXPECT_EQ(Beyond(image, {"12", "34"}, -1, number), (Joints{}));
    }
}

TEST(ExtractGraphWithDelta, NoZone_IsOneVertexWithoutEdges)
{
    for (Border const border : tests::kConditionalBorders)
    {
        for (cv::Size const size : {cv::Size(3, 2), cv::Size(0, 0), cv::Size(4, 0), cv::Size(0, 4)})
        {
            cv::Mat const labels(size.height, size.width, CV_32SC1, cv::Scalar(-1));
            cv::Mat const image(size.height, size.width, CV_32FC1, cv::Scalar(1));
            Graph const graph = Extracted(border, image, labels, eConnexity8Wrapped, 1);
            EXPECT_EQ(graph.VertexCount(), 1U);
            EXPECT_EQ(graph.EdgeCount(), 0U);
        }
    }
}

TEST(ExtractGraphWithDelta, DeltaIsCutToTheElementType)
{
    // 300 is 44 in 8 bits, -1 all of them.
    ExpectWithin<uchar>(0, 44, 300, true);
    ExpectWithin<uchar>(0, 45, 300, false);
    ExpectWithin<uchar>(0, 255, -1, true);
    ExpectWithin<uchar>(0, 1, 256, false);
    ExpectWithin<uchar>(0, 2, 2.9, true);
    ExpectWithin<uchar>(0, 3, 2.9, false);
    ExpectWithin<uchar>(5, 5, -0.9, true);
    ExpectWithin<ushort>(0, 300, 300, true);
    ExpectWithin<ushort>(0, 4, 65540, true);
    ExpectWithin<ushort>(0, 5, 65540, false);
    ExpectWithin<ushort>(0, 65535, -1, true);
    // 40000 is -25536 in 16 bits with a sign.
    ExpectWithin<short>(3, 3, 40000, false);
    ExpectWithin<short>(3, 3, -1, false);
    ExpectWithin<int>(0, 65540, 65540, true);
    ExpectWithin<int>(3, 3, -1, false);
    ExpectWithin<int>(3, 3, 1e10, false);
    // In single precision, 0.1 is the same number as the difference.
    ExpectWithin<float>(0.0F, 0.1F, 0.1, true);
    ExpectWithin<double>(0.0, static_cast<double>(0.1F), 0.1, false);
    ExpectWithin<float>(1.0F, 1.0F, -0.5, false);
    ExpectWithin<double>(1.0, 1.0, -1e-300, false);
}

TEST(ExtractGraphWithDelta, DifferencesOfIntWrap)
{
    int const most = std::numeric_limits<int>::max();
    int const least = std::numeric_limits<int>::min();
    ExpectWithin<int>(0, most, most, true);
    ExpectWithin<int>(0, most, most - 1.0, false);
    // These read as negative: 2^31 as the smallest number, the largest difference as -1.
    ExpectWithin<int>(-1, most, 0, true);
    ExpectWithin<int>(least, most, 0, true);
    ExpectWithin<int>(least, most, -1, true);
    ExpectWithin<int>(least, most, -2, false);
    // 16 bits have room in the arithmetic.
    ExpectWithin<short>(-32768, 32767, 32767, false);
    ExpectWithin<ushort>(0, 65535, 65534, false);
}

TEST(ExtractGraphWithDelta, FloatsAreSubtractedInTheirOwnPrecision)
{
    // 16777215.25 is no float: the difference rounds down to the bound.
    ExpectWithin<float>(16777216.0F, 0.75F, 16777215, true);
    ExpectWithin<double>(16777216.0, 0.75, 16777215, false);
}

TEST(ExtractGraphWithDelta, NaNPassesNever)
{
    for (double const delta : {-1.0, 0.0, 1.0, kInfinity, -kInfinity, kNaN})
    {
        ExpectNeither<double>(kNaN, 1.0, delta);
        ExpectNeither<double>(kNaN, kNaN, delta);
        ExpectNeither<float>(std::numeric_limits<float>::quiet_NaN(), 1.0F, delta);
    }
    ExpectNeither<double>(1.0, 1.0, kNaN);
    ExpectNeither<float>(1.0F, 5.0F, kNaN);
    // Another pair of the same border may pass.
    cv::Mat image = Draw<float>({"111", "111"});
    image.at<float>(0, 0) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Within(image, {"1.1", "2.2"}, 0), (Joints{{1, 2}}));
    image.at<float>(1, 2) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Within(image, {"1.1", "2.2"}, 0), (Joints{}));
}

TEST(ExtractGraphWithDelta, EqualInfinitiesHaveNoDifference)
{
    ExpectNeither<double>(kInfinity, kInfinity, 1e300);
    ExpectNeither<double>(-kInfinity, -kInfinity, kInfinity);
    ExpectWithin<double>(kInfinity, -kInfinity, 1e300, false);
    ExpectWithin<double>(kInfinity, 1.0, kInfinity, true);
}

TEST(ExtractGraphWithDelta, OfSeveralChannels_TheFirstElementsOfEachRowAreRead)
{
    // As pixels these are all (1, 9) above and (9, 1) below; as elements they are 1 9 1 over 9 1 9.
    cv::Mat image(2, 3, CV_8UC2, cv::Scalar(1, 9));
    image.row(1).setTo(cv::Scalar(9, 1));
    Drawing const labels{"123", "456"};
    EXPECT_EQ(Within(image, labels, 0, eConnexity8), (Joints{{1, 5}, {2, 4}, {2, 6}, {3, 5}}));
    EXPECT_EQ(Beyond(image, labels, 0, eConnexity8), (Joints{{1, 4}, {1, 2}, {2, 5}, {2, 3}, {3, 6}, {4, 5}, {5, 6}}));
    // More channels than an operator usually takes.
    cv::Mat five(1, 2, CV_32FC(5), cv::Scalar(0));
    five.ptr<float>()[1] = 3;
    EXPECT_EQ(Within(five, {"12"}, 2), (Joints{}));
    EXPECT_EQ(Within(five, {"12"}, 3), (Joints{{1, 2}}));
}

TEST(ExtractGraphWithDelta, LabelsMayBeTheImageToo)
{
    cv::Mat const labels = DrawLabels({"12", "43"});
    for (Border const border : tests::kConditionalBorders)
    {
        Joints const expected = border == Border::Within ? Joints{{1, 2}, {2, 3}, {4, 3}} : Joints{{1, 4}};
        EXPECT_EQ(JointsOf(Extracted(border, labels, labels, eConnexity4, 1)), expected);
    }
}

} // namespace

} // namespace morvane::connexity
