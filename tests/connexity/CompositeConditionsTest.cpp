// What the composite conditions ask, tell and read, call by call. Their answers on random pixels:
// CompositeStepsTest.cpp; their walks: CompositeWalksTest.cpp.
#include <morvane/connexity/Conditions.h>

#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Walks.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::OracleCondition;
using tests::PositionCondition;
using tests::Row;

using Calls = std::vector<std::string>;

/// A part that writes its calls under its name, positions as columns, and gives one answer.
OracleCondition Part(std::string const & name, bool const & answer, Calls & calls)
{
    OracleCondition part;
    part.reset = [name, &calls] {
        calls.push_back(name + " reset");
    };
    part.isConnected = [name, &answer, &calls](cv::Point from, cv::Point to, cv::Point seed) {
        calls.push_back(
            name + " " + std::to_string(from.x) + "->" + std::to_string(to.x) + " of " + std::to_string(seed.x));
        return answer;
    };
    part.add = [name, &calls](cv::Point) {
        calls.push_back(name + " add");
    };
    return part;
}

template <class T>
using Root = typename tests::RootCondition<T>::Type;

/// A composite over a row of integers and one of floats, with parts that write down their calls.
struct PairOfParts
{
    cv::Mat walked = Row<int>({10, 20, 30});
    cv::Mat second = Row<float>({0.5F, 1.5F, 2.5F});
    Calls calls;
    bool firstAnswer = true;
    bool secondAnswer = true;
    PositionCondition<int> first{walked, Part("first", firstAnswer, calls)};
    PositionCondition<float> other{second, Part("second", secondAnswer, calls)};
    ImageConnected<int, float, AlwaysConnected<int>, AlwaysConnected<float>> composite{second, first, other};
};

TEST(ImageConnected, ResetsTheFirstPartThenTheSecond)
{
    PairOfParts pair;
    pair.composite.Reset();
    EXPECT_EQ(pair.calls, Calls({"first reset", "second reset"}));
}

TEST(ImageConnected, TellsItsPartsNothingOfWhatEnters)
{
    PairOfParts pair;
    pair.composite.Add({1, 0}, 20);
    EXPECT_EQ(pair.calls, Calls());
}

TEST(ImageConnected, AsksTheSecondPartAboutTheSamePixelsOfItsOwnImage)
{
    PairOfParts pair;
    EXPECT_TRUE(pair.composite.IsConnected({1, 0}, 20, {2, 0}, 30, {0, 0}, 10));
    EXPECT_TRUE(pair.composite.IsConnected({2, 0}, 30, {1, 0}, 20, {1, 0}, 20));
    EXPECT_EQ(pair.calls, Calls({"first 1->2 of 0", "second 1->2 of 0", "first 2->1 of 1", "second 2->1 of 1"}));
    EXPECT_EQ(pair.first.WrongValues(), 0);
    EXPECT_EQ(pair.other.WrongValues(), 0);
}

TEST(ImageConnected, NeedsBothPartsAndStopsAtTheFirstRefusal)
{
    Calls const firstOnly{"first 0->1 of 0"};
    Calls const both{"first 0->1 of 0", "second 0->1 of 0"};
    for (bool const first : {false, true})
    {
        for (bool const second : {false, true})
        {
            PairOfParts pair;
            pair.firstAnswer = first;
            pair.secondAnswer = second;
            EXPECT_EQ(pair.composite.IsConnected({0, 0}, 10, {1, 0}, 20, {0, 0}, 10), first && second);
            EXPECT_EQ(pair.calls, first ? both : firstOnly);
        }
    }
}

TEST(ImageConnected, DoesNotReadTheSecondImageWhereTheFirstPartRefuses)
{
    // There is no pixel to read.
    cv::Mat const nothing;
    DeltaConnected<uchar> first(5.0);
    DeltaConnected<double> second(5.0);
    ImageConnected<uchar, double, DeltaConnected<uchar>, DeltaConnected<double>> composite(nothing, first, second);
    EXPECT_FALSE(composite.IsConnected({700, 900}, 10, {701, 900}, 16, {0, 0}, 10));
}

TEST(ImageConnected, ReadsTheRowsOfAView)
{
    cv::Mat const content = (cv::Mat_<ushort>(3, 2) << 1, 2, 3, 4, 5, 6);
    tests::FramedImage framed(content);
    cv::Mat const walked(3, 2, CV_8UC1, cv::Scalar(0));
    Calls calls;
    bool const yes = true;
    AlwaysConnected<uchar> first;
    PositionCondition<ushort> second(content, Part("second", yes, calls));
    ImageConnected<uchar, ushort, AlwaysConnected<uchar>, AlwaysConnected<ushort>> composite(
        framed.View(), first, second);
    EXPECT_TRUE(composite.IsConnected({0, 1}, 0, {1, 2}, 0, {1, 0}, 0));
    EXPECT_EQ(calls.size(), 1U);
    EXPECT_EQ(second.WrongValues(), 0);
}

TEST(ImageConnected, ReadsTheSecondImageAsItIsWhenAsked)
{
    cv::Mat second = Row<int>({7, 7});
    EqualConnected<uchar> first;
    EqualConnected<int> other;
    ImageConnected<uchar, int, EqualConnected<uchar>, EqualConnected<int>> composite(second, first, other);
    EXPECT_TRUE(composite.IsConnected({0, 0}, 1, {1, 0}, 1, {0, 0}, 1));
    second.at<int>(1) = 8;
    EXPECT_FALSE(composite.IsConnected({0, 0}, 1, {1, 0}, 1, {0, 0}, 1)) << "the image is borrowed, not copied";
}

TEST(ImageConnectedMultiChannel, AsksBothPartsInOrderAboutWholePixels)
{
    cv::Mat const walked = Row<cv::Vec3b>({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
    cv::Mat const second = Row<cv::Vec3d>({{0.1, 0.2, 0.3}, {0.4, 0.5, 0.6}, {0.7, 0.8, 0.9}});
    Calls calls;
    bool firstAnswer = true;
    bool const secondAnswer = true;
    PositionCondition<cv::Vec3b> first(walked, Part("first", firstAnswer, calls));
    PositionCondition<cv::Vec3d> other(second, Part("second", secondAnswer, calls));
    ImageConnected_MultiChannel<uchar, double, Root<cv::Vec3b>, Root<cv::Vec3d>, 3> composite(second, first, other);
    composite.Reset();
    composite.Add({0, 0}, {1, 2, 3});
    EXPECT_TRUE(composite.IsConnected({1, 0}, {4, 5, 6}, {2, 0}, {7, 8, 9}, {0, 0}, {1, 2, 3}));
    EXPECT_EQ(calls, Calls({"first reset", "second reset", "first 1->2 of 0", "second 1->2 of 0"}));
    EXPECT_EQ(first.WrongValues(), 0);
    EXPECT_EQ(other.WrongValues(), 0);
    calls.clear();
    firstAnswer = false;
    EXPECT_FALSE(composite.IsConnected({1, 0}, {4, 5, 6}, {2, 0}, {7, 8, 9}, {0, 0}, {1, 2, 3}));
    EXPECT_EQ(calls, Calls({"first 1->2 of 0"}));
}

/// A composite over a row of bytes, one of zones and one of doubles.
struct ThreeParts
{
    cv::Mat walked = Row<uchar>({10, 20, 30});
    cv::Mat zones = Row<int>({-1, 70000, 2});
    cv::Mat second = Row<double>({0.5, 1.5, 2.5});
    Calls calls;
    bool firstAnswer = true;
    bool zoneAnswer = true;
    bool thirdAnswer = true;
    PositionCondition<uchar> first{walked, Part("first", firstAnswer, calls)};
    PositionCondition<int> zone{zones, Part("zone", zoneAnswer, calls)};
    PositionCondition<double> third{second, Part("third", thirdAnswer, calls)};
    TwoImageConnected<uchar, int, double, AlwaysConnected<uchar>, AlwaysConnected<int>, AlwaysConnected<double>>
        composite{zones, second, first, zone, third};
};

TEST(TwoImageConnected, ResetsItsPartsInOrderAndTellsThemNothingOfWhatEnters)
{
    ThreeParts parts;
    parts.composite.Reset();
    parts.composite.Add({1, 0}, 20);
    EXPECT_EQ(parts.calls, Calls({"first reset", "zone reset", "third reset"}));
}

TEST(TwoImageConnected, AsksAboutTheSamePixelsOfEachImage)
{
    ThreeParts parts;
    EXPECT_TRUE(parts.composite.IsConnected({1, 0}, 20, {2, 0}, 30, {0, 0}, 10));
    EXPECT_EQ(parts.calls, Calls({"first 1->2 of 0", "zone 1->2 of 0", "third 1->2 of 0"}));
    EXPECT_EQ(parts.first.WrongValues(), 0);
    EXPECT_EQ(parts.zone.WrongValues(), 0);
    EXPECT_EQ(parts.third.WrongValues(), 0);
}

TEST(TwoImageConnected, NeedsAllPartsAndStopsAtTheFirstRefusal)
{
    Calls const all{"first 0->1 of 0", "zone 0->1 of 0", "third 0->1 of 0"};
    for (int answers = 0; answers < 8; ++answers)
    {
        SCOPED_TRACE(answers);
        ThreeParts parts;
        parts.firstAnswer = (answers & 1) != 0;
        parts.zoneAnswer = (answers & 2) != 0;
        parts.thirdAnswer = (answers & 4) != 0;
        EXPECT_EQ(parts.composite.IsConnected({0, 0}, 10, {1, 0}, 20, {0, 0}, 10), answers == 7);
        std::ptrdiff_t const asked = !parts.firstAnswer ? 1 : !parts.zoneAnswer ? 2 : 3;
        EXPECT_EQ(parts.calls, Calls(all.begin(), all.begin() + asked));
    }
}

TEST(TwoImageConnected, DoesNotReadAnImageAfterARefusal)
{
    using Composite =
        TwoImageConnected<uchar, int, float, DeltaConnected<uchar>, EqualConnected<int>, DeltaConnected<float>>;
    cv::Mat const nothing;
    cv::Mat const zones = Row<int>({3, 4});
    DeltaConnected<uchar> first(5.0);
    EqualConnected<int> zone;
    DeltaConnected<float> third(5.0);
    Composite refusedByTheFirst(nothing, nothing, first, zone, third);
    EXPECT_FALSE(refusedByTheFirst.IsConnected({0, 0}, 10, {1, 0}, 16, {0, 0}, 10));
    Composite refusedByTheZones(zones, nothing, first, zone, third);
    EXPECT_FALSE(refusedByTheZones.IsConnected({0, 0}, 10, {1, 0}, 15, {0, 0}, 10));
}

TEST(ImageConnected, ConvertsTheDeltaOfEachImageToItsOwnType)
{
    cv::Mat const second = Row<float>({0.0F, 2.5F, 5.5F});
    DeltaConnected<uchar> first(2.9);
    DeltaConnected<float> other(2.9);
    ImageConnected<uchar, float, DeltaConnected<uchar>, DeltaConnected<float>> composite(second, first, other);
    EXPECT_TRUE(composite.IsConnected({0, 0}, 7, {1, 0}, 9, {0, 0}, 7));
    EXPECT_FALSE(composite.IsConnected({0, 0}, 7, {1, 0}, 10, {0, 0}, 7));
    EXPECT_FALSE(composite.IsConnected({1, 0}, 7, {2, 0}, 9, {0, 0}, 7));
}

TEST(ImageConnected, RefusesWhereEitherImageHoldsNaN)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat const second = Row<float>({1.0F, nan});
    EqualConnected<float> equal;
    ImageConnected<float, float, EqualConnected<float>, EqualConnected<float>> composite(second, equal, equal);
    EXPECT_TRUE(composite.IsConnected({0, 0}, 1.0F, {0, 0}, 1.0F, {0, 0}, 1.0F));
    EXPECT_FALSE(composite.IsConnected({0, 0}, nan, {0, 0}, nan, {0, 0}, nan));
    EXPECT_FALSE(composite.IsConnected({1, 0}, 1.0F, {1, 0}, 1.0F, {0, 0}, 1.0F));
}

} // namespace

} // namespace morvane::connexity
