// The store of nodes, and trees that are drawn.
#include <morvane/connexity/MaxTree.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

namespace morvane::connexity
{

namespace
{

using common::AreaAttribute;
using tests::Draw;
using tests::ExpectDrawn;

constexpr std::uint64_t kBlock = 131072;

using Node = MaxTreeNode<uchar, AreaAttribute>;
using AreaTree = MaxTreeBuilder<uchar, AreaAttribute>;

TEST(MaxTreeNode, IsACriterionWithTwoLinksAndALevel)
{
    EXPECT_TRUE((std::is_base_of_v<common::AttributeCriterion<AreaAttribute>, Node>));
    EXPECT_TRUE((std::is_same_v<decltype(Node::nextSibling), std::uint64_t>));
    EXPECT_TRUE((std::is_same_v<decltype(Node::firstChild), std::uint64_t>));
    EXPECT_TRUE((std::is_same_v<decltype(MaxTreeNode<ushort, AreaAttribute>::level), ushort>));
    Node const node;
    EXPECT_EQ(node.nextSibling, 0U);
    EXPECT_EQ(node.firstChild, 0U);
    EXPECT_EQ(node.level, 0);
    EXPECT_TRUE(node.IsEmpty());
    EXPECT_LT(reinterpret_cast<char const *>(&node.nextSibling), reinterpret_cast<char const *>(&node.firstChild));
    EXPECT_LT(reinterpret_cast<char const *>(&node.firstChild), reinterpret_cast<char const *>(&node.level));
}

TEST(MaxTreeStore, HasNoNodeAtFirst)
{
    MaxTreeStore<Node> store;
    EXPECT_EQ(store.Root(), 1U);
    EXPECT_EQ(store.NextIndex(), 1U);
    for (std::uint64_t const index : {std::uint64_t{0}, std::uint64_t{1}, kBlock, ~std::uint64_t{0}})
    {
        EXPECT_EQ(store.Get(index), nullptr) << index;
        EXPECT_EQ(std::as_const(store).Get(index), nullptr) << index;
    }
}

TEST(MaxTreeStore, NumbersNodesFromOne)
{
    MaxTreeStore<Node> store;
    EXPECT_EQ(store.Create(), 1U);
    EXPECT_EQ(store.Create(), 2U);
    EXPECT_EQ(store.NextIndex(), 3U);
    EXPECT_EQ(store.Get(0), nullptr);
    ASSERT_NE(store.Get(1), nullptr);
    ASSERT_NE(store.Get(2), nullptr);
    EXPECT_NE(store.Get(1), store.Get(2));
    EXPECT_EQ(store.Get(3), nullptr);
    EXPECT_EQ(std::as_const(store).Get(2), store.Get(2));
    store.SetRoot(2);
    EXPECT_EQ(store.Root(), 2U);
}

TEST(MaxTreeStore, KeepsNodesInPlaceAcrossBlocks)
{
    MaxTreeStore<Node> store;
    std::vector<Node *> places{nullptr};
    for (std::uint64_t index = 1; index < 2 * kBlock + 5; ++index)
    {
        ASSERT_EQ(store.Get(index), nullptr) << index;
        ASSERT_EQ(store.Create(), index);
        Node * const node = store.Get(index);
        ASSERT_NE(node, nullptr) << index;
        ASSERT_TRUE(node->IsEmpty() && node->level == 0 && node->firstChild == 0 && node->nextSibling == 0) << index;
        node->firstChild = index;
        places.push_back(node);
    }
    EXPECT_EQ(store.NextIndex(), 2 * kBlock + 5);
    for (std::uint64_t index = 1; index < 2 * kBlock + 5; ++index)
    {
        ASSERT_EQ(store.Get(index), places[index]) << index;
        ASSERT_EQ(store.Get(index)->firstChild, index);
        // A block is one array.
        bool const isFirst = index % kBlock == 0 || index == 1;
        ASSERT_TRUE(isFirst || places[index] == places[index - 1] + 1) << index;
    }
    EXPECT_EQ(store.Get(2 * kBlock + 5), nullptr);
    EXPECT_EQ(store.Get(3 * kBlock), nullptr);
}

/// What a drawn tree is compared by.
struct Line
{
    int level;
    std::uint64_t firstChild;
    std::uint64_t nextSibling;
    std::uint64_t value;

    bool operator==(Line const & other) const = default;
    friend std::ostream & operator<<(std::ostream & stream, Line const & line)
    {
        return stream << '{' << line.level << ", " << line.firstChild << ", " << line.nextSibling << ", " << line.value
                      << '}';
    }
};

/// Level, first child, next sibling and area of each node from number 1 on.
template <class Tree>
std::vector<Line> LinesOf(Tree const & tree)
{
    std::vector<Line> lines;
    for (std::uint64_t index = 1; index < tree.Store().NextIndex(); ++index)
    {
        auto const & node = *tree.Store().Get(index);
        lines.push_back({static_cast<int>(node.level), node.firstChild, node.nextSibling, node.GetValue()});
    }
    return lines;
}

/// The tree of a drawing in 8 bits.
void ExpectTree(
    tests::Drawing const & image, int connexity, tests::Drawing const & labels, std::vector<Line> const & lines)
{
    cv::Mat written;
    AreaTree const tree(Draw<uchar>(image), tests::Shape(connexity), written);
    EXPECT_EQ(LinesOf(tree), lines);
    EXPECT_EQ(tree.Store().Root(), 1U);
    ASSERT_EQ(written.type(), CV_32SC1);
    ExpectDrawn(written, labels);
}

TEST(MaxTree, OfOnePixelIsItsRoot)
{
    ExpectTree({"7"}, eConnexity8, {"1"}, {{7, 0, 0, 1}});
    ExpectTree({"."}, eConnexity24InterleavedWrapped, {"1"}, {{0, 0, 0, 1}});
}

TEST(MaxTree, OfAConstantImageIsItsRoot)
{
    ExpectTree({"999", "999"}, eConnexity4, {"111", "111"}, {{9, 0, 0, 6}});
}

TEST(MaxTree, BeginsAtTheFirstDarkestPixel)
{
    ExpectTree({"211"}, eConnexity4, {"211"}, {{1, 2, 0, 3}, {2, 0, 0, 1}});
    ExpectTree({"2.1."}, eConnexity4, {"2131"}, {{0, 3, 0, 4}, {2, 0, 0, 1}, {1, 0, 2, 1}});
}

TEST(MaxTree, PrependsChildren)
{
    // From the left: the peak, then the saddle inserted below it, then the second peak before the first.
    ExpectTree({".313."}, eConnexity4, {"12341"}, {{0, 3, 0, 5}, {3, 0, 0, 1}, {1, 4, 0, 3}, {3, 0, 2, 1}});
}

TEST(MaxTree, InsertsANodeBeforeTheSiblingsOfItsChild)
{
    // The hill of level 1 is closed when the flood inserts level 2 on another branch, which takes its place in the list.
    ExpectTree({".1.32"}, eConnexity4, {"12134"}, {{0, 4, 0, 5}, {1, 0, 0, 1}, {3, 0, 0, 1}, {2, 3, 2, 2}});
}

TEST(MaxTree, ForgetsWhatIsOpenBetweenTheLevelsOfAClimb)
{
    // Level 2 was open on the first branch; the second one gets a node of its own there.
    ExpectTree(
        {".32.32."}, eConnexity4, {"1231451"}, {{0, 5, 0, 7}, {3, 0, 0, 1}, {2, 2, 0, 2}, {3, 0, 0, 1}, {2, 4, 3, 2}});
}

TEST(MaxTree, JoinsPlateausAndKeepsSeparateOnesApart)
{
    ExpectTree({"55.55"}, eConnexity4, {"22133"}, {{0, 3, 0, 5}, {5, 0, 0, 2}, {5, 0, 2, 2}});
    ExpectTree({"5.5", "555"}, eConnexity4, {"212", "222"}, {{0, 2, 0, 6}, {5, 0, 0, 5}});
}

TEST(MaxTree, JoinsDiagonalsWhereTheNeighbourhoodDoes)
{
    ExpectTree({"1.", ".1"}, eConnexity4, {"21", "13"}, {{0, 3, 0, 4}, {1, 0, 0, 1}, {1, 0, 2, 1}});
    ExpectTree({"1.", ".1"}, eConnexity8, {"21", "12"}, {{0, 2, 0, 4}, {1, 0, 0, 2}});
}

TEST(MaxTree, DoesNotWrap)
{
    for (int const number : {eConnexity4Wrapped, eConnexity8Wrapped})
    {
        ExpectTree({"9..9"}, number, {"2113"}, {{0, 3, 0, 4}, {9, 0, 0, 1}, {9, 0, 2, 1}});
    }
}

TEST(MaxTree, SeesTheFirstHigherNeighbourInTheOrderOfTheOffsets)
{
    // From the darkest pixel in the middle of the left edge, the ring reaches the right side by the lower corner, the
    // axes by the middle.
    ExpectTree(
        {"55", ".1", "32"}, eConnexity8, {"55", "14", "23"},
        {{0, 4, 0, 6}, {3, 0, 0, 1}, {2, 2, 0, 2}, {1, 5, 0, 5}, {5, 0, 3, 2}});
    ExpectTree(
        {"55", ".1", "32"}, eConnexity8AxesFirst, {"55", "12", "43"},
        {{0, 2, 0, 6}, {1, 5, 0, 5}, {2, 4, 0, 2}, {3, 0, 0, 1}, {5, 0, 3, 2}});
}

TEST(MaxTree, WithoutNeighboursIsTheDarkestPixel)
{
    for (int const number : {13, -1, 1000})
    {
        ExpectTree({"32", "23"}, number, {"01", "00"}, {{2, 0, 0, 1}});
    }
}

TEST(MaxTree, MakesTheLabelImage)
{
    cv::Mat const image = Draw<uchar>({"9.9", "..."});
    std::array<cv::Mat, 4> labels{cv::Mat(), cv::Mat(2, 3, CV_8UC1), cv::Mat(3, 2, CV_32SC1), cv::Mat(2, 3, CV_32SC2)};
    for (cv::Mat & written : labels)
    {
        AreaTree const tree(image, eConnexity4, written);
        ASSERT_EQ(written.type(), CV_32SC1);
        ExpectDrawn(written, {"213", "111"});
        EXPECT_EQ(tree.Store().NextIndex(), 4U);
    }
}

TEST(MaxTree, WritesIntoALabelImageThatFits)
{
    cv::Mat const image = Draw<uchar>({"9.9", "..."});
    tests::FramedImage labels(tests::DirtyLabels(image.size(), CV_32SC1));
    uchar const * const place = labels.View().data;
    AreaTree const tree(image, eConnexity4, labels.View());
    EXPECT_EQ(labels.View().data, place);
    ExpectDrawn(labels.View(), {"213", "111"});
    EXPECT_TRUE(labels.IsFrameUntouched());
    EXPECT_EQ(tree.Store().Get(1)->GetValue(), 6U);
}

TEST(MaxTree, MayLabelItsOwnImage)
{
    cv::Mat image = Draw<int>({"9.9", "..."});
    MaxTreeBuilder<int, AreaAttribute> const tree(image, eConnexity4, image);
    ExpectDrawn(image, {"213", "111"});
    EXPECT_EQ(tree.Store().NextIndex(), 4U);
    cv::Mat narrow = Draw<uchar>({"9.9", "..."});
    AreaTree const narrowTree(narrow, eConnexity4, narrow);
    ExpectDrawn(narrow, {"213", "111"});
    EXPECT_EQ(narrowTree.Store().NextIndex(), 4U);
}

template <class T>
void ExpectNoTree(cv::Mat const & image)
{
    SCOPED_TRACE(cv::typeToString(image.type()));
    cv::Mat labels = tests::DirtyLabels({2, 3}, CV_8UC1);
    tests::Snapshot const before(labels);
    MaxTreeBuilder<T, AreaAttribute> const tree(image, eConnexity4, labels);
    EXPECT_EQ(tree.Store().NextIndex(), 1U);
    EXPECT_EQ(tree.Store().Get(tree.Store().Root()), nullptr);
    EXPECT_TRUE(before.IsUntouched());
}

TEST(MaxTree, HasNoNodesForAnImageOfAnotherTypeOrWithoutPixels)
{
    for (int const depth : {CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F})
    {
        cv::Mat image(3, 2, CV_MAKETYPE(depth, 1));
        tests::FillBytes(image, 0x40);
        if (depth != CV_8U) ExpectNoTree<uchar>(image);
        if (depth != CV_16U && depth != CV_16S) ExpectNoTree<ushort>(image);
        if (depth != CV_32S) ExpectNoTree<int>(image);
    }
    ExpectNoTree<uchar>(cv::Mat(3, 2, CV_8UC2, cv::Scalar::all(1)));
    ExpectNoTree<int>(cv::Mat(3, 2, CV_32SC3, cv::Scalar::all(1)));
    ExpectNoTree<uchar>(cv::Mat());
    ExpectNoTree<uchar>(cv::Mat(0, 5, CV_8UC1));
    ExpectNoTree<int>(cv::Mat(5, 0, CV_32SC1));
    std::array<int, 3> const sizes{2, 2, 2};
    ExpectNoTree<uchar>(cv::Mat(3, sizes.data(), CV_8UC1, cv::Scalar(1)));
}

TEST(MaxTree, OfSparseWideLevelsHasNoNodesInBetween)
{
    int const highest = std::numeric_limits<int>::max();
    cv::Mat labels;
    MaxTreeBuilder<int, AreaAttribute> const tree(
        tests::Row<int>({1, highest, 0, highest, highest - 1}), eConnexity4, labels);
    EXPECT_EQ(
        LinesOf(tree),
        (std::vector<Line>{
            {0, 5, 0, 5}, {highest, 0, 0, 1}, {1, 2, 0, 2}, {highest, 0, 0, 1}, {highest - 1, 4, 3, 2}}));
    ExpectDrawn(labels, {"32145"});
}

TEST(MaxTree, OfNegativeWideLevelsTakesThemAsTheyAre)
{
    int const lowest = std::numeric_limits<int>::min();
    int const highest = std::numeric_limits<int>::max();
    cv::Mat labels;
    MaxTreeBuilder<int, AreaAttribute> const tree(tests::Row<int>({-5, highest, lowest, -1}), eConnexity4, labels);
    EXPECT_EQ(LinesOf(tree), (std::vector<Line>{{lowest, 4, 0, 4}, {highest, 0, 0, 1}, {-5, 2, 0, 2}, {-1, 0, 3, 1}}));
    ExpectDrawn(labels, {"3214"});
}

TEST(MaxTree, OfNegativeShortLevelsTakesTheirBits)
{
    cv::Mat labels;
    MaxTreeBuilder<ushort, AreaAttribute> const tree(tests::Row<short>({-1, 3, -32768}), eConnexity4, labels);
    EXPECT_EQ(LinesOf(tree), (std::vector<Line>{{3, 3, 0, 3}, {65535, 0, 0, 1}, {32768, 0, 2, 1}}));
    ExpectDrawn(labels, {"213"});
}

TEST(MaxTree, OfAMillionLevelsIsAChain)
{
    int const levels = 1000000;
    cv::Mat image(1000, 1000, CV_32SC1);
    for (int pixel = 0; pixel < levels; ++pixel)
    {
        int const y = pixel / 1000;
        // To and fro, so that each pixel lies beside the next.
        int const x = y % 2 == 0 ? pixel % 1000 : 999 - pixel % 1000;
        image.at<int>(y, x) = 2000 * pixel;
    }
    cv::Mat labels;
    MaxTreeBuilder<int, AreaAttribute> const tree(image, eConnexity4, labels);
    MaxTreeStore<MaxTreeNode<int, AreaAttribute>> const & store = tree.Store();
    ASSERT_EQ(store.NextIndex(), levels + std::uint64_t{1});
    EXPECT_EQ(store.Get(store.NextIndex()), nullptr);
    std::uint64_t index = store.Root();
    for (int level = 0; level < levels; ++level)
    {
        auto const * const node = store.Get(index);
        ASSERT_NE(node, nullptr) << level;
        ASSERT_EQ(node->level, 2000 * level);
        ASSERT_EQ(node->GetValue(), static_cast<std::uint64_t>(levels - level));
        ASSERT_EQ(node->nextSibling, 0U);
        index = node->firstChild;
    }
    EXPECT_EQ(index, 0U);
}

} // namespace

} // namespace morvane::connexity
