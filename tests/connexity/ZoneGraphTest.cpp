// The graphs of drawn label images.
#include <morvane/connexity/ZoneGraph.h>

#include "support/AllTypes.h"
#include "support/GraphOracle.h"
#include "support/ImageLiterals.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Border;
using tests::Draw;
using tests::DrawLabels;
using tests::Extracted;
using tests::Joints;
using tests::JointsOf;
using tests::Row;

/// The edges of a drawing of labels.
Joints JointsOf(tests::Drawing const & labels, int connexity)
{
    return tests::JointsOf(Extracted(DrawLabels(labels), connexity));
}

TEST(ExtractGraph, NoZone_IsOneVertexWithoutEdges)
{
    for (int number = -1; number <= tests::kConnexityCount; ++number)
    {
        for (cv::Size const size : {cv::Size(3, 2), cv::Size(1, 1), cv::Size(0, 0), cv::Size(4, 0), cv::Size(0, 4)})
        {
            cv::Mat const labels(size.height, size.width, CV_32SC1, cv::Scalar(0));
            Graph const graph = Extracted(labels, number);
            EXPECT_EQ(graph.VertexCount(), 1U);
            EXPECT_EQ(graph.EdgeCount(), 0U);
        }
    }
}

TEST(ExtractGraph, LabelThatTouchesNothing_IsAVertexWithoutEdges)
{
    Graph const graph = Extracted(DrawLabels({"11..", "11.2"}), eConnexity8);
    EXPECT_EQ(graph.VertexCount(), 3U);
    EXPECT_EQ(graph.EdgeCount(), 0U);
}

TEST(ExtractGraph, LabelsThatDoNotOccur_AreVerticesToo)
{
    Graph const graph = Extracted(DrawLabels({"5.z2"}), eConnexity4);
    EXPECT_EQ(graph.VertexCount(), 36U);
    EXPECT_EQ(JointsOf(graph), (Joints{{35, 2}}));
    EXPECT_TRUE(graph.HasEdge(2, 35));
}

TEST(ExtractGraph, VerticesAndEdgesHaveTheValues0AndFalse)
{
    tests::PlainGraph const graph = tests::ReadGraph(Extracted(DrawLabels({"121"}), eConnexity4));
    EXPECT_EQ(graph.names, (std::vector{0, 0, 0}));
    EXPECT_EQ(graph.edges, (std::vector<tests::PlainEdge>{{1, 2, false}}));
    EXPECT_EQ(graph.outEdges, (std::vector<std::vector<tests::PlainEdge>>{{}, {{1, 2, false}}, {{2, 1, false}}}));
}

TEST(ExtractGraph, LabelsThatTouchAtSeveralPlaces_HaveOneEdgeReachedFromBothEnds)
{
    Graph const graph = Extracted(DrawLabels({"2112", "2222", "1.21"}), eConnexity8);
    EXPECT_EQ(JointsOf(graph), (Joints{{2, 1}}));
    EXPECT_TRUE(graph.HasEdge(1, 2));
    EXPECT_TRUE(graph.HasEdge(2, 1));
    EXPECT_FALSE(graph.HasEdge(1, 1));
}

TEST(ExtractGraph, ZoneInSeveralPieces_IsOneVertex)
{
    EXPECT_EQ(JointsOf({"1.2", "...", "3.1", "..4"}, eConnexity4), (Joints{{1, 4}}));
    EXPECT_EQ(JointsOf({"12.", "...", ".31"}, eConnexity4), (Joints{{1, 2}, {3, 1}}));
}

TEST(ExtractGraph, EdgesComeInTheOrderOfTheNeighbours)
{
    tests::Drawing const labels{"345", "216", "987"};
    // Of the four, the left, the right, the lower, the upper.
    EXPECT_EQ(
        JointsOf(labels, eConnexity4), (Joints{
                                           {3, 4},
                                           {3, 2},
                                           {4, 5},
                                           {4, 1},
                                           {5, 6},
                                           {2, 1},
                                           {2, 9},
                                           {1, 6},
                                           {1, 8},
                                           {6, 7},
                                           {9, 8},
                                           {8, 7},
                                       }));
    // Round the middle, as all edges but those are missing.
    cv::Mat const star = DrawLabels({"3.4.5", ".....", "2.1.6", ".....", "9.8.7"});
    EXPECT_EQ(JointsOf(Extracted(star, eConnexity8)), (Joints{}));
    EXPECT_EQ(
        JointsOf(Extracted(star, eConnexity24Interleaved)),
        (Joints{
            {3, 2}, {3, 1}, {3, 4}, {4, 2}, {4, 1}, {4, 6}, {4, 5}, {5, 1}, {5, 6}, {2, 9},
            {2, 8}, {2, 1}, {1, 9}, {1, 8}, {1, 7}, {1, 6}, {6, 8}, {6, 7}, {9, 8}, {8, 7},
        }));
}

TEST(ExtractGraph, TwoOrdersOfTheSameNeighbours_GiveTwoOrdersOfEdges)
{
    tests::Drawing const step{".1", "23"};
    EXPECT_EQ(JointsOf(step, eConnexity8), (Joints{{1, 2}, {1, 3}, {2, 3}}));
    EXPECT_EQ(JointsOf(step, eConnexity8AxesFirst), (Joints{{1, 3}, {1, 2}, {2, 3}}));
}

TEST(ExtractGraph, EdgeRunsFromTheLabelThatIsMetFirst)
{
    EXPECT_EQ(JointsOf({"9", "3"}, eConnexity4), (Joints{{9, 3}}));
    EXPECT_EQ(JointsOf({"3", "9"}, eConnexity4), (Joints{{3, 9}}));
    // 2 and 3 touch in both rows, and 3 is met first.
    EXPECT_EQ(JointsOf({"1.32", "1.23"}, eConnexity4), (Joints{{3, 2}}));
}

TEST(ExtractGraph, ZeroAndNegativeLabels_AreNoZones)
{
    cv::Mat const labels = Row<int>({3, 0, 1, -1, 2, 1, std::numeric_limits<int>::min(), 3, -7});
    Graph const graph = Extracted(labels, eConnexity4);
    EXPECT_EQ(graph.VertexCount(), 4U);
    EXPECT_EQ(JointsOf(graph), (Joints{{2, 1}}));
    Graph const none = Extracted(Row<int>({-1, -2, -3}), eConnexity12);
    EXPECT_EQ(none.VertexCount(), 1U);
    EXPECT_EQ(none.EdgeCount(), 0U);
}

TEST(ExtractGraph, ReachesAsFarAsTheNeighbourhood)
{
    tests::Drawing const labels{"1.2", "...", "34."};
    EXPECT_EQ(JointsOf(labels, eConnexity4), (Joints{{3, 4}}));
    EXPECT_EQ(JointsOf(labels, eConnexity12), (Joints{{1, 3}, {1, 2}, {3, 4}}));
    EXPECT_EQ(JointsOf(labels, eConnexity20), (Joints{{1, 3}, {1, 4}, {1, 2}, {2, 4}, {3, 4}}));
    EXPECT_EQ(JointsOf(labels, eConnexity24Interleaved), (Joints{{1, 3}, {1, 4}, {1, 2}, {2, 3}, {2, 4}, {3, 4}}));
}

TEST(ExtractGraph, WrappedShape_JoinsTheLeftAndTheRightEdge)
{
    tests::Drawing const labels{"1..2", "....", "3...", "...4"};
    EXPECT_EQ(JointsOf(labels, eConnexity4), (Joints{}));
    EXPECT_EQ(JointsOf(labels, eConnexity4Wrapped), (Joints{{1, 2}}));
    EXPECT_EQ(JointsOf(labels, eConnexity8), (Joints{}));
    EXPECT_EQ(JointsOf(labels, eConnexity8Wrapped), (Joints{{1, 2}, {3, 4}}));
}

TEST(ExtractGraph, TopAndBottom_NeverMeet)
{
    for (int const number : {1, 4, 8, 10, 12})
    {
        EXPECT_EQ(JointsOf({"11", "..", "..", "22"}, number), (Joints{})) << number;
    }
}

TEST(ExtractGraph, OffsetOf2BeyondTheEdge_LandsOnTheEdgeColumn)
{
    // From the first column, two to the left is the last column and not the one before it: 1 and 2 are first found
    // from the 2, whose step of two to the right lands on the first column.
    EXPECT_EQ(JointsOf({"1...2."}, eConnexity12InterleavedWrapped), (Joints{{2, 1}}));
    // From the second column it is the last one.
    EXPECT_EQ(JointsOf({".1...2"}, eConnexity12InterleavedWrapped), (Joints{{1, 2}}));
    // The row below is scanned later, from the 2.
    tests::Drawing const apart{"1.....", "....2."};
    EXPECT_EQ(JointsOf(apart, eConnexity12InterleavedWrapped), (Joints{}));
    EXPECT_EQ(JointsOf(apart, eConnexity20InterleavedWrapped), (Joints{{2, 1}}));
    // Also where both reach the edge: the 3 joins the 1 after the 4, from its last offsets.
    EXPECT_EQ(
        JointsOf({"1....2", "....34"}, eConnexity24InterleavedWrapped),
        (Joints{{1, 2}, {1, 4}, {2, 3}, {2, 4}, {3, 4}, {3, 1}}));
}

TEST(ExtractGraph, NarrowWrappedImages_HaveTheOppositeColumnForNeighbour)
{
    // In one column, every offset beyond the edge lands on it again.
    EXPECT_EQ(JointsOf({"1", "2", "3"}, eConnexity4Wrapped), (Joints{{1, 2}, {2, 3}}));
    EXPECT_EQ(JointsOf({"1", "2", "3"}, eConnexity8Wrapped), (Joints{{1, 2}, {2, 3}}));
    // Two to the right and one down lands in the row below, before straight down does.
    EXPECT_EQ(JointsOf({"1", "2", "3"}, eConnexity20InterleavedWrapped), (Joints{{1, 2}, {1, 3}, {2, 3}}));
    EXPECT_EQ(JointsOf({"1", "2", "3"}, eConnexity20Interleaved), (Joints{{1, 3}, {1, 2}, {2, 3}}));
    // In two columns: left of the left one is the right one, and left of it again too.
    EXPECT_EQ(JointsOf({"1.", ".2"}, eConnexity4Wrapped), (Joints{}));
    EXPECT_EQ(
        JointsOf({"12", "34"}, eConnexity12InterleavedWrapped),
        (Joints{{1, 2}, {1, 4}, {1, 3}, {2, 3}, {2, 4}, {3, 4}}));
}

TEST(ExtractGraph, OutsideTheTableOfShapes_NothingTouches)
{
    for (int const number : tests::kStrangeConnexities)
    {
        Graph const graph = Extracted(DrawLabels({"123", "456"}), number);
        EXPECT_EQ(graph.VertexCount(), 7U);
        EXPECT_EQ(graph.EdgeCount(), 0U);
    }
}

TEST(ExtractGraph, WhatTheGraphHeldBefore_IsGone)
{
    Graph graph = tests::StrangeGraph();
    ASSERT_TRUE(ExtractGraph(DrawLabels({"12", "33"}), eConnexity4, graph));
    tests::PlainGraph const first = tests::ReadGraph(graph);
    EXPECT_EQ(first.names, (std::vector{0, 0, 0, 0}));
    EXPECT_EQ(JointsOf(graph), (Joints{{1, 2}, {1, 3}, {2, 3}}));
    // Of a larger graph nothing stays, also when the next one is small.
    ASSERT_TRUE(ExtractGraph(DrawLabels({"1."}), eConnexity4, graph));
    EXPECT_TRUE(tests::EqualGraphs(graph, {{0, 0}, {{}, {}}, {}}));
    ASSERT_TRUE(ExtractGraph(DrawLabels({"12", "33"}), eConnexity4, graph));
    EXPECT_TRUE(tests::EqualGraphs(graph, first));
}

/// Zone 1 with zones 2 to @p neighbours + 1 along it in the row below, each @p width pixels wide.
cv::Mat Comb(int neighbours, int width)
{
    cv::Mat labels(2, neighbours * width, CV_32SC1, cv::Scalar(1));
    for (int x = 0; x < labels.cols; ++x)
    {
        labels.at<int>(1, x) = x / width + 2;
    }
    return labels;
}

TEST(ExtractGraph, ZoneWithTenThousandNeighbours_HasAnEdgeToEachInOrder)
{
    constexpr int neighbours = 10000;
    Graph const graph = Extracted(Comb(neighbours, 1), eConnexity4);
    ASSERT_EQ(graph.VertexCount(), neighbours + 2U);
    // Each to the zone above and to the one beside.
    ASSERT_EQ(graph.EdgeCount(), 2U * neighbours - 1U);
    tests::PlainGraph const plain = tests::ReadGraph(graph);
    ASSERT_EQ(plain.outEdges[1].size(), static_cast<std::size_t>(neighbours));
    for (int neighbour = 2; neighbour < neighbours + 2; ++neighbour)
    {
        auto const index = static_cast<std::size_t>(neighbour - 2);
        ASSERT_EQ(plain.outEdges[1][index], (tests::PlainEdge{1, neighbour, false}));
        ASSERT_EQ(plain.edges[index], (tests::PlainEdge{1, neighbour, false}));
        ASSERT_EQ(plain.outEdges[index + 2].front(), (tests::PlainEdge{neighbour, 1, false}));
    }
}

TEST(ExtractGraph, LongBordersWithManyNeighbours_AreMetOften)
{
    cv::Mat const labels = Comb(1500, 3);
    for (int const number : {eConnexity8, eConnexity24InterleavedWrapped})
    {
        EXPECT_TRUE(tests::EqualGraphs(Extracted(labels, number), tests::OracleGraph(labels, number)));
    }
}

TEST(ExtractGraph, SparseLabels_KeepTheirNumbers)
{
    Graph const graph = Extracted(Row<int>({300000, 7, 65536, 0, 299999}), eConnexity4);
    EXPECT_EQ(graph.VertexCount(), 300001U);
    EXPECT_EQ(JointsOf(graph), (Joints{{300000, 7}, {7, 65536}}));
    // Pairs that are alike in their low bits.
    EXPECT_EQ(JointsOf(Extracted(Row<int>({65538, 1, 2}), eConnexity4)), (Joints{{65538, 1}, {1, 2}}));
    EXPECT_EQ(
        JointsOf(Extracted(Row<int>({1, 65538, 65537, 2}), eConnexity4)),
        (Joints{{1, 65538}, {65538, 65537}, {65537, 2}}));
}

TEST(ExtractGraph, ViewIsReadInsideOnly)
{
    // Around the view, other labels touch it, and larger ones.
    cv::Mat const parent = DrawLabels({"zzzzz", "91129", "95529", "zzzzz"});
    cv::Mat const view = parent(cv::Rect(1, 1, 3, 2));
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        cv::Mat const copy = view.clone();
        EXPECT_TRUE(tests::EqualGraphs(Extracted(view, number), tests::OracleGraph(copy, number)));
        EXPECT_EQ(Extracted(view, number).VertexCount(), 6U);
    }
    EXPECT_EQ(JointsOf(Extracted(view, eConnexity4)), (Joints{{1, 5}, {1, 2}, {5, 2}}));
}

TEST(ExtractGraph, LabelsStayAsTheyAre)
{
    cv::Mat const labels = DrawLabels({"12.", "343"});
    cv::Mat const image = Draw<uchar>({"123", "456"});
    tests::Snapshot const sameLabels(labels);
    tests::Snapshot const sameImage(image);
    for (Border const border : tests::kBorders)
    {
        static_cast<void>(Extracted(border, image, labels, eConnexity8Wrapped, 2));
        EXPECT_TRUE(sameLabels.IsUntouched());
        EXPECT_TRUE(sameImage.IsUntouched());
    }
}

} // namespace

} // namespace morvane::connexity
