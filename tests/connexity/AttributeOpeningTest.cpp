// AttributeOpening on drawn images.
#include <morvane/connexity/AttributeOpening.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/MaxTreeOracle.h"
#include "support/RandomImages.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <string>

namespace morvane::connexity
{

namespace
{

using common::eAttributeType;
using tests::Draw;
using tests::Drawing;
using tests::ExpectDrawn;

constexpr unsigned kMost = std::numeric_limits<unsigned>::max();

/// The filtered image, written over rubbish.
cv::Mat Opened(cv::Mat const & image, eAttributeType attribute, int connexity, unsigned threshold)
{
    cv::Mat out = tests::DirtyLabels(image.size(), image.type());
    uchar const * const place = out.data;
    EXPECT_TRUE(AttributeOpening(image, attribute, tests::Shape(connexity), threshold, out));
    EXPECT_EQ(out.data, place) << "the output was reallocated";
    return out;
}

/// Expects the same of every depth.
void ExpectOpened(
    Drawing const & image, eAttributeType attribute, int connexity, unsigned threshold, Drawing const & expected)
{
    for (int const depth : tests::kTreeDepths)
    {
        SCOPED_TRACE(cv::typeToString(depth) + ", threshold " + std::to_string(threshold));
        ExpectDrawn(Opened(Draw(image, CV_MAKETYPE(depth, 1)), attribute, connexity, threshold), expected);
    }
}

TEST(AttributeOpening, RemovesWhatIsSmallerThanTheThreshold)
{
    Drawing const image{".........", ".7..999..", ".7..9.9..", "....999..", "........."};
    ExpectOpened(image, common::eAttributeArea, eConnexity4, 2, image);
    ExpectOpened(
        image, common::eAttributeArea, eConnexity4, 3,
        {".........", "....999..", "....9.9..", "....999..", "........."});
    ExpectOpened(
        image, common::eAttributeArea, eConnexity4, 9,
        {".........", ".........", ".........", ".........", "........."});
}

TEST(AttributeOpening, LevelsPeaksDownToTheComponentThatIsLargeEnough)
{
    Drawing const image{"22222222", "25557682", "25557782", "22222222"};
    // The 6 lies at a saddle: the 7 and 8 beside it are six pixels from level 6 on, twelve from level 5 on.
    ExpectOpened(image, common::eAttributeArea, eConnexity4, 3, {"22222222", "25557672", "25557772", "22222222"});
    ExpectOpened(image, common::eAttributeArea, eConnexity4, 6, {"22222222", "25556662", "25556662", "22222222"});
    ExpectOpened(image, common::eAttributeArea, eConnexity4, 7, {"22222222", "25555552", "25555552", "22222222"});
    ExpectOpened(image, common::eAttributeArea, eConnexity4, 13, {"22222222", "22222222", "22222222", "22222222"});
}

TEST(AttributeOpening, MeasuresEachAttribute)
{
    // A bar, a square and a diagonal of four pixels, and a post of five.
    Drawing const image{"1111.2.33.4...", ".....2.33..4..", ".....2......4.", ".....2.......4", ".....2........"};
    Drawing const tall{".....2....4...", ".....2.....4..", ".....2......4.", ".....2.......4", ".....2........"};
    Drawing const broad{"1111......4...", "...........4..", "............4.", ".............4", ".............."};
    Drawing const either{"1111.2....4...", ".....2.....4..", ".....2......4.", ".....2.......4", ".....2........"};
    Drawing const post{".....2........", ".....2........", ".....2........", ".....2........", ".....2........"};
    Drawing const both{".......33.4...", ".......33..4..", "............4.", ".............4", ".............."};
    ExpectOpened(image, common::eAttributeHeight, eConnexity8, 3, tall);
    ExpectOpened(image, common::eAttributeWidth, eConnexity8, 3, broad);
    ExpectOpened(image, common::eAttributeStrain, eConnexity8, 3, either);
    ExpectOpened(image, common::eAttributeMinHW, eConnexity8, 2, both);
    ExpectOpened(image, common::eAttributeArea, eConnexity8, 4, image);
    ExpectOpened(image, common::eAttributeArea, eConnexity8, 5, post);
}

TEST(AttributeOpening, TruncatesTheRootOfTheArea)
{
    Drawing const image{"88888888..", "..........", "999999999."};
    ExpectOpened(image, common::eAttributeSqrtArea, eConnexity4, 2, image);
    ExpectOpened(image, common::eAttributeSqrtArea, eConnexity4, 3, {"..........", "..........", "999999999."});
    ExpectOpened(image, common::eAttributeSqrtArea, eConnexity4, 4, {"..........", "..........", ".........."});
}

TEST(AttributeOpening, BelowTheThresholdTheRootIsZeroAndNotItsLevel)
{
    ExpectOpened({"999", "999"}, common::eAttributeArea, eConnexity4, 6, {"999", "999"});
    ExpectOpened({"999", "999"}, common::eAttributeArea, eConnexity4, 7, {"...", "..."});
    ExpectOpened({"585", "555"}, common::eAttributeArea, eConnexity4, 6, {"555", "555"});
    ExpectOpened({"585", "555"}, common::eAttributeArea, eConnexity4, 7, {"...", "..."});
    ExpectOpened({"585", "555"}, common::eAttributeHeight, eConnexity4, 2, {"555", "555"});
    ExpectOpened({"585", "555"}, common::eAttributeHeight, eConnexity4, 3, {"...", "..."});
    ExpectOpened({"585", "555"}, common::eAttributeWidth, eConnexity4, kMost, {"...", "..."});
}

TEST(AttributeOpening, OfOnePixelKeepsItOrGivesZero)
{
    for (eAttributeType const attribute : tests::kAttributes)
    {
        ExpectOpened({"7"}, attribute, eConnexity8, 0, {"7"});
        ExpectOpened({"7"}, attribute, eConnexity8, 1, {"7"});
        ExpectOpened({"7"}, attribute, eConnexity8, 2, {"."});
        ExpectOpened({"7"}, attribute, eConnexity8, kMost, {"."});
    }
}

TEST(AttributeOpening, ComparesThirtyTwoBitsOfTheThreshold)
{
    cv::Mat const image(300, 300, CV_8UC1, cv::Scalar(9));
    EXPECT_TRUE(tests::EqualImages(Opened(image, common::eAttributeArea, eConnexity4, 90000), image));
    // The low 8 and 16 bits of these are at most 1.
    for (unsigned const threshold : {131072U, 0x10000000U, 0x80000001U})
    {
        EXPECT_EQ(cv::countNonZero(Opened(image, common::eAttributeArea, eConnexity4, threshold)), 0) << threshold;
    }
    EXPECT_EQ(cv::countNonZero(Opened(image, common::eAttributeArea, eConnexity4, 90001)), 0);
}

TEST(AttributeOpening, PlateausAreRemovedOneByOne)
{
    // Two plateaus of one level under one parent; one of them has five pixels.
    ExpectOpened({"5511555", "1111155"}, common::eAttributeArea, eConnexity4, 3, {"1111555", "1111155"});
    // Joined by one pixel they are one node.
    ExpectOpened({"5555555", "1111155"}, common::eAttributeArea, eConnexity4, 9, {"5555555", "1111155"});
}

TEST(AttributeOpening, JoinsWhatTheNeighbourhoodJoins)
{
    Drawing const image{"6.....", ".6....", "......", ".6...."};
    Drawing const empty{"......", "......", "......", "......"};
    Drawing const diagonal{"6.....", ".6....", "......", "......"};
    ExpectOpened(image, common::eAttributeArea, eConnexity4, 2, empty);
    ExpectOpened(image, common::eAttributeArea, eConnexity8, 2, diagonal);
    ExpectOpened(image, common::eAttributeArea, eConnexity8AxesFirst, 2, diagonal);
    ExpectOpened(image, common::eAttributeArea, eConnexity8, 3, empty);
    // Two rows apart, in the same column.
    ExpectOpened(image, common::eAttributeArea, eConnexity12, 3, image);
    ExpectOpened(image, common::eAttributeArea, eConnexity20, 3, image);
}

TEST(AttributeOpening, DoesNotWrap)
{
    Drawing const image{"44....44", "44....44"};
    Drawing const empty{"........", "........"};
    for (int const number :
         {eConnexity4Wrapped, eConnexity8Wrapped, eConnexity12InterleavedWrapped, eConnexity20InterleavedWrapped,
          eConnexity24InterleavedWrapped})
    {
        ExpectOpened(image, common::eAttributeArea, number, 4, image);
        ExpectOpened(image, common::eAttributeArea, number, 5, empty);
    }
}

TEST(AttributeOpening, WithoutNeighboursReachesTheFirstDarkestPixelOnly)
{
    for (int const number : {13, 65, -1})
    {
        ExpectOpened({"543", "334"}, common::eAttributeArea, number, 1, {"..3", "..."});
        ExpectOpened({"543", "334"}, common::eAttributeArea, number, 2, {"...", "..."});
    }
}

TEST(AttributeOpening, WorksInPlace)
{
    for (int const depth : tests::kTreeDepths)
    {
        cv::Mat image = Draw({"2252", "9222"}, CV_MAKETYPE(depth, 1));
        uchar const * const place = image.data;
        ASSERT_TRUE(AttributeOpening(image, common::eAttributeArea, eConnexity4, 2, image));
        EXPECT_EQ(image.data, place);
        ExpectDrawn(image, {"2222", "2222"});
    }
}

/// Expects the result of opening a row by area 2.
template <class T>
void ExpectRow(std::initializer_list<T> image, std::initializer_list<T> expected)
{
    EXPECT_TRUE(tests::EqualImages(
        Opened(tests::Row<T>(image), common::eAttributeArea, eConnexity4, 2), tests::Row<T>(expected)));
}

TEST(AttributeOpening, ReachesTheExtremesOfEachType)
{
    ExpectRow<uchar>({255, 255, 0, 254}, {255, 255, 0, 0});
    ExpectRow<ushort>({65535, 65535, 0, 65534}, {65535, 65535, 0, 0});
    ExpectRow<short>({32767, 32767, 0, 32766}, {32767, 32767, 0, 0});
    int const most = std::numeric_limits<int>::max();
    ExpectRow<int>({most, most, 0, most - 1}, {most, most, 0, 0});
    ExpectRow<int>({0, most, 1, most, 1}, {0, 1, 1, 1, 1});
    ExpectRow<int>({1, most, 0, 1, 1}, {1, 1, 0, 1, 1});
}

TEST(AttributeOpening, TreatsNegativeShortsAsTheirBits)
{
    // -1 is the highest, -32768 the one above 32767.
    ExpectRow<short>({-1, 5, 5}, {5, 5, 5});
    ExpectRow<short>({-1, -32768, 32767}, {-32768, -32768, 32767});
}

TEST(AttributeOpening, TreatsNegativeIntsAsLowLevels)
{
    int const least = std::numeric_limits<int>::min();
    int const most = std::numeric_limits<int>::max();
    ExpectRow<int>({-5, -5, -7, -6}, {-5, -5, -7, -7});
    ExpectRow<int>({most, least, -1}, {least, least, least});
    // The root inherits 0, which here is brighter.
    ExpectRow<int>({-9}, {0});
}

TEST(AttributeOpening, OfAMillionLevelsDoesNotExhaustTheStack)
{
    int const levels = 1000000;
    // Up step by step; and at once to the peak and down, so that each node is inserted below the one before.
    cv::Mat rising(1, levels, CV_32SC1);
    cv::Mat falling(1, levels, CV_32SC1);
    for (int x = 0; x < levels; ++x)
    {
        rising.at<int>(0, x) = x;
        falling.at<int>(0, x) = x == 0 ? 0 : levels - x;
    }
    unsigned const threshold = 1000;
    cv::Mat const openedRising = Opened(rising, common::eAttributeArea, eConnexity4, threshold);
    cv::Mat const openedFalling = Opened(falling, common::eAttributeWidth, eConnexity8, threshold);
    for (int x = 0; x < levels; ++x)
    {
        // Of level v and above there are as many pixels as from v to the last.
        ASSERT_EQ(openedRising.at<int>(0, x), std::min(x, levels - static_cast<int>(threshold))) << x;
        ASSERT_EQ(openedFalling.at<int>(0, x), std::min(falling.at<int>(0, x), levels - static_cast<int>(threshold)))
            << x;
    }
}

} // namespace

} // namespace morvane::connexity
