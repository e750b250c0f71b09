// Trees against the plain flood, node by node, and against the components of the upper level sets.
#include <morvane/connexity/MaxTree.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/MaxTreeOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

namespace morvane::connexity
{

namespace
{

using common::AreaAttribute;
using common::eAttributeType;
using common::HeightAttribute;
using common::MinHWAttribute;
using common::SqrtAreaAttribute;
using common::StrainAttribute;
using common::WidthAttribute;
using tests::OraclePaths;
using tests::OracleTree;
using tests::Random;

/// A tree without its types.
struct PlainTree
{
    struct Node
    {
        std::int64_t level;
        std::uint64_t firstChild;
        std::uint64_t nextSibling;
        std::uint64_t value;
    };

    std::uint64_t root;
    std::vector<Node> nodes; ///< from number 1 on
    cv::Mat labels;
};

template <class T, class A>
PlainTree Built(cv::Mat const & image, int connexity)
{
    PlainTree tree{};
    MaxTreeBuilder<T, A> const builder(image, tests::Shape(connexity), tree.labels);
    tree.root = builder.Store().Root();
    for (std::uint64_t index = 1; index < builder.Store().NextIndex(); ++index)
    {
        auto const & node = *builder.Store().Get(index);
        tree.nodes.push_back({node.level, node.firstChild, node.nextSibling, node.GetValue()});
    }
    return tree;
}

template <class T>
PlainTree BuiltWith(eAttributeType attribute, cv::Mat const & image, int connexity)
{
    std::array const builders{Built<T, HeightAttribute>, Built<T, WidthAttribute>, Built<T, StrainAttribute>,
                              Built<T, MinHWAttribute>,  Built<T, AreaAttribute>,  Built<T, SqrtAreaAttribute>};
    return builders.at(static_cast<std::size_t>(attribute))(image, connexity);
}

PlainTree Built(eAttributeType attribute, cv::Mat const & image, int connexity)
{
    if (image.depth() == CV_8U) return BuiltWith<uchar>(attribute, image, connexity);
    if (image.depth() == CV_32S) return BuiltWith<int>(attribute, image, connexity);
    return BuiltWith<ushort>(attribute, image, connexity);
}

void ExpectNodes(PlainTree const & tree, OracleTree const & expected, eAttributeType attribute)
{
    ASSERT_EQ(tree.root, 1U);
    ASSERT_EQ(tree.nodes.size() + 1, expected.nodes.size());
    for (std::size_t index = 1; index < expected.nodes.size(); ++index)
    {
        PlainTree::Node const & node = tree.nodes[index - 1];
        ASSERT_EQ(node.level, expected.nodes[index].level) << index;
        ASSERT_EQ(node.firstChild, expected.nodes[index].firstChild) << index;
        ASSERT_EQ(node.nextSibling, expected.nodes[index].nextSibling) << index;
        ASSERT_EQ(node.value, tests::OracleValue(expected.nodes[index].measure, attribute)) << index;
    }
    ASSERT_TRUE(tests::EqualImages(tree.labels, expected.labels));
}

/// Expects that the node of each pixel is the smallest component around it.
void ExpectComponents(PlainTree const & tree, OraclePaths const & paths, eAttributeType attribute)
{
    ASSERT_EQ(tree.nodes.size(), paths.components.size());
    std::size_t pixel = 0;
    for (int y = 0; y < tree.labels.rows; ++y)
    {
        for (int x = 0; x < tree.labels.cols; ++x, ++pixel)
        {
            auto const label = static_cast<std::size_t>(tree.labels.at<int>(y, x));
            ASSERT_EQ(label == 0, paths.ofPixel[pixel].empty());
            if (label == 0) continue;
            ASSERT_EQ(tree.nodes.at(label - 1).level, paths.Last(pixel).level);
            ASSERT_EQ(tree.nodes.at(label - 1).value, tests::OracleValue(paths.Last(pixel).measure, attribute));
        }
    }
}

void ExpectTree(cv::Mat const & image, int connexity, eAttributeType attribute)
{
    SCOPED_TRACE(tests::TreeCase(image, connexity) + ", attribute " + std::to_string(attribute));
    PlainTree const tree = Built(attribute, image, connexity);
    ExpectNodes(tree, tests::OracleFlood(image, connexity), attribute);
    ExpectComponents(tree, tests::OracleDecompose(image, connexity), attribute);
}

cv::Size SomeSize(Random & random)
{
    cv::Size const size = tests::RandomSize(random, 14);
    return {size.width + 1, size.height + 1};
}

TEST(MaxTreeRandom, IsThatOfThePlainFloodInEveryShapeAndDepth)
{
    Random random(55);
    for (int number = -1; number <= tests::kConnexityCount; ++number)
    {
        for (int const depth : tests::kTreeDepths)
        {
            for (eAttributeType const attribute : tests::kAttributes)
            {
                ExpectTree(tests::HillyImage(random, SomeSize(random), depth, 2 + random.Below(8)), number, attribute);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(MaxTreeRandom, OfRowsAndColumnsIsThatOfThePlainFlood)
{
    Random random(56);
    for (int round = 0; round < 120; ++round)
    {
        int const length = 1 + random.Below(40);
        int const breadth = 1 + random.Below(2);
        cv::Size const size = random.Chance(0.5) ? cv::Size(length, breadth) : cv::Size(breadth, length);
        int const depth = tests::kTreeDepths.at(static_cast<std::size_t>(random.Below(4)));
        ExpectTree(
            tests::HillyImage(random, size, depth, 2 + random.Below(5)), random.Below(tests::kConnexityCount),
            tests::kAttributes.at(static_cast<std::size_t>(random.Below(6))));
        if (HasFatalFailure()) return;
    }
}

TEST(MaxTreeRandom, OfManyLevelsIsThatOfThePlainFlood)
{
    Random random(57);
    for (int const depth : tests::kTreeDepths)
    {
        cv::Mat image(20, 25, CV_MAKETYPE(depth, 1));
        // All bits, except the sign's: levels across the whole range.
        cv::Mat bytes(image.rows, image.cols * static_cast<int>(image.elemSize()), CV_8UC1, image.data);
        for (int y = 0; y < bytes.rows; ++y)
        {
            for (int x = 0; x < bytes.cols; ++x)
            {
                bool const isTop = (x + 1) % static_cast<int>(image.elemSize()) == 0;
                bytes.at<uchar>(y, x) = static_cast<uchar>(random.Below(isTop && depth >= CV_16S ? 128 : 256));
            }
        }
        ExpectTree(image, eConnexity4, common::eAttributeArea);
        ExpectTree(image, eConnexity24Interleaved, common::eAttributeStrain);
        if (HasFatalFailure()) return;
    }
}

TEST(MaxTreeRandom, OfMoreNodesThanABlockHoldsIsThatOfThePlainFlood)
{
    Random random(61);
    cv::Mat image(550, 600, CV_8UC1);
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            image.at<uchar>(y, x) = static_cast<uchar>(random.Below(256));
        }
    }
    OracleTree const expected = tests::OracleFlood(image, eConnexity4);
    EXPECT_GT(expected.nodes.size(), 131072U);
    ExpectNodes(Built(common::eAttributeArea, image, eConnexity4), expected, common::eAttributeArea);
}

TEST(MaxTreeRandom, OfNegativeLevelsIsThatOfThePlainFlood)
{
    Random random(58);
    for (int round = 0; round < 60; ++round)
    {
        int const depth = round % 2 == 0 ? CV_16S : CV_32S;
        cv::Mat const image = tests::RandomImage(random, SomeSize(random), CV_MAKETYPE(depth, 1), {0.2, 0.5, 4});
        cv::Mat const lower = image - 2;
        ExpectTree(image, random.Below(tests::kConnexityCount), common::eAttributeArea);
        ExpectTree(lower, random.Below(tests::kConnexityCount), common::eAttributeWidth);
        if (HasFatalFailure()) return;
    }
}

TEST(MaxTreeRandom, OfAViewIsThatOfItsPixels)
{
    Random random(59);
    for (int const depth : tests::kTreeDepths)
    {
        cv::Mat const image = tests::HillyImage(random, {17, 13}, depth, 6);
        tests::FramedImage framed(image);
        ExpectTree(framed.View(), eConnexity12, common::eAttributeArea);
        EXPECT_TRUE(framed.IsFrameUntouched());
        EXPECT_TRUE(tests::EqualImages(framed.View(), image));
    }
}

TEST(MaxTreeRandom, OfAWrappedShapeIsThatOfItsPartner)
{
    constexpr std::array<std::array<int, 2>, 5> kPartners{{{0, 1}, {2, 4}, {7, 8}, {9, 10}, {11, 12}}};
    Random random(60);
    for (auto const [plain, wrapped] : kPartners)
    {
        cv::Mat const image = tests::HillyImage(random, {9, 11}, CV_8U, 5);
        cv::Mat labels;
        cv::Mat partner;
        MaxTreeBuilder<uchar, AreaAttribute> const one(image, tests::Shape(plain), labels);
        MaxTreeBuilder<uchar, AreaAttribute> const other(image, tests::Shape(wrapped), partner);
        EXPECT_EQ(one.Store().NextIndex(), other.Store().NextIndex());
        EXPECT_TRUE(tests::EqualImages(labels, partner));
    }
}

} // namespace

} // namespace morvane::connexity
