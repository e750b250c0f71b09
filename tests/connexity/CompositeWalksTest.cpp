// Walks over the composite conditions.
#include <morvane/connexity/ConnectedZoneScan.h>

#include "support/AllTypes.h"
#include "support/DeltaAnswers.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"
#include "support/Walks.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <functional>
#include <utility>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::OracleCondition;
using tests::Random;

/// The zones of a walk over an image of pixels @p In that asks a composite.
template <class In, class Pixels, class Composite>
std::vector<Zone> ZonesUnder(Composite & composite, cv::Mat const & image, eConnexityType type)
{
    tests::ZoneCollector collector;
    Zone zone;
    ConnectedZoneScan<In, tests::ZoneCollector, Composite, Pixels> scan(image, type, composite, collector, zone);
    scan.Run();
    return collector.zones;
}

template <class In, class Pixels, class Composite>
cv::Mat LabelsUnder(Composite & composite, cv::Mat const & image, eConnexityType type = eConnexity4)
{
    return tests::OracleLabels(ZonesUnder<In, Pixels>(composite, image, type), image.size(), CV_32SC1);
}

/// The labels of a walk over two images, with the same condition on both.
template <class Pixels, template <class> class Condition, class... Delta>
cv::Mat LabelsOfTwo(cv::Mat const & first, cv::Mat const & second, Delta... delta)
{
    Condition<uchar> firstCondition(delta...);
    Condition<int> secondCondition(delta...);
    ImageConnected<uchar, int, Condition<uchar>, Condition<int>> composite(second, firstCondition, secondCondition);
    return LabelsUnder<uchar, Pixels>(composite, first);
}

TEST(CompositeWalks, DeltaZeroGivesTheZonesThatAreFlatOnBothImages)
{
    cv::Mat const first = Draw<uchar>({"1122", "1122", "3333"});
    cv::Mat const second = Draw<int>({"5556", "5556", "5566"});
    tests::ExpectDrawn(LabelsOfTwo<AllPixels, DeltaConnected>(first, second, 0.0), {"1123", "1123", "4455"});
    tests::ExpectDrawn(LabelsOfTwo<AllPixels, EqualConnected>(first, second), {"1123", "1123", "4455"});
}

TEST(CompositeWalks, AStepMustBeSmallOnBothImages)
{
    cv::Mat const first = Draw<uchar>({"12399"});
    cv::Mat const second = Draw<int>({"88667"});
    tests::ExpectDrawn(LabelsOfTwo<AllPixels, DeltaConnected>(first, second, 1.0), {"11233"});
    tests::ExpectDrawn(LabelsOfTwo<AllPixels, DeltaConnected>(first, second, 2.0), {"11122"});
    tests::ExpectDrawn(LabelsOfTwo<AllPixels, DeltaConnected>(first, second, 6.0), {"11111"});
}

TEST(CompositeWalks, BothImagesAreComparedWithTheirSeed)
{
    cv::Mat const first = Draw<uchar>({"1357"});
    cv::Mat const second = Draw<int>({"1122"});
    tests::ExpectDrawn(LabelsOfTwo<AllPixels, DeltaConnectedSeed>(first, second, 4.0), {"1112"});
    tests::ExpectDrawn(LabelsOfTwo<AllPixels, DeltaConnectedSeed>(first, Draw<int>({"1399"}), 4.0), {"1122"});
    tests::ExpectDrawn(
        LabelsOfTwo<AllPixels, DeltaConnectedSeed>(Draw<uchar>({"5555"}), Draw<int>({"1357"}), 2.0), {"1122"});
}

TEST(CompositeWalks, OnlyEmptyPixelsOfTheWalkedImageSeparate)
{
    cv::Mat const first = Draw<uchar>({"11.11", "11.11"});
    cv::Mat const second = Draw<int>({"77777", "..777"});
    tests::ExpectDrawn(LabelsOfTwo<NoZero, EqualConnected>(first, second), {"11.22", "33.22"});
    tests::ExpectDrawn(LabelsOfTwo<AllPixels, EqualConnected>(first, second), {"11233", "44233"});
}

TEST(CompositeWalks, ZonesEndWhereTheZoneImageChanges)
{
    cv::Mat const image = Draw<uchar>({"1234", "9876", "...."});
    cv::Mat const zones = Draw<int>({"1122", "1122", "2222"});
    AlwaysConnected<uchar> always;
    DeltaConnected<uchar> near(1.0);
    EqualConnected<int> sameZone;
    ImageConnected<uchar, int, AlwaysConnected<uchar>, EqualConnected<int>> inZone(zones, always, sameZone);
    tests::ExpectDrawn((LabelsUnder<uchar, AllPixels>(inZone, image)), {"1122", "1122", "2222"});
    tests::ExpectDrawn((LabelsUnder<uchar, NoZero>(inZone, image)), {"1122", "1122", "...."});
    ImageConnected<uchar, int, DeltaConnected<uchar>, EqualConnected<int>> nearInZone(zones, near, sameZone);
    tests::ExpectDrawn((LabelsUnder<uchar, AllPixels>(nearInZone, image)), {"1122", "3344", "5555"});
}

TEST(CompositeWalks, ThreeImagesMustAllAllowTheStep)
{
    cv::Mat const image = Draw<uchar>({"111199", "111199"});
    cv::Mat const zones = Draw<int>({"112222", "112222"});
    cv::Mat const second = Draw<short>({"777777", "444444"});
    DeltaConnected<uchar> first(2.0);
    EqualConnected<int> sameZone;
    for (bool const isWide : {false, true})
    {
        DeltaConnected<short> third(isWide ? 3.0 : 2.0);
        TwoImageConnected<uchar, int, short, DeltaConnected<uchar>, EqualConnected<int>, DeltaConnected<short>>
            composite(zones, second, first, sameZone, third);
        cv::Mat const labels = LabelsUnder<uchar, AllPixels>(composite, image);
        if (isWide)
        {
            tests::ExpectDrawn(labels, {"112233", "112233"});
        }
        else
        {
            tests::ExpectDrawn(labels, {"112233", "445566"});
        }
    }
}

TEST(CompositeWalks, TheSeamJoinsOnBothImages)
{
    cv::Mat const first = Draw<uchar>({"1221", "1221"});
    cv::Mat const second = Draw<int>({"3333", "3334"});
    EqualConnected<uchar> firstEqual;
    EqualConnected<int> secondEqual;
    ImageConnected<uchar, int, EqualConnected<uchar>, EqualConnected<int>> composite(second, firstEqual, secondEqual);
    tests::ExpectDrawn((LabelsUnder<uchar, AllPixels>(composite, first, eConnexity4Wrapped)), {"1221", "1223"});
    tests::ExpectDrawn((LabelsUnder<uchar, AllPixels>(composite, first, eConnexity4)), {"1223", "1224"});
}

/// A condition of a caller's own: allows a number of steps in each zone, and says how it was used.
class LimitedSteps : public AlwaysConnected<int>
{
public:
    explicit LimitedSteps(int limit)
        : m_limit(limit)
    {}

    void Reset() override
    {
        m_steps = 0;
        ++m_zones;
    }

    bool IsConnected(cv::Point const &, int, cv::Point const &, int, cv::Point const &, int) override
    {
        return ++m_steps <= m_limit;
    }

    void Add(cv::Point const &, int) override { ++m_added; }

    [[nodiscard]] int Zones() const { return m_zones; }
    [[nodiscard]] int Added() const { return m_added; }

private:
    int m_limit;
    int m_steps = 0;
    int m_zones = 0;
    int m_added = 0;
};

TEST(CompositeWalks, ResetAPartAtTheStartOfEachZoneAndNeverAddToIt)
{
    cv::Mat const image = Draw<uchar>({"111199"});
    cv::Mat const second = Draw<int>({"555555"});
    EqualConnected<uchar> equal;
    // Enough for two pixels: a step to the right and one back, or one to the left, which is taken, and one to the right.
    LimitedSteps limited(2);
    ImageConnected<uchar, int, EqualConnected<uchar>, AlwaysConnected<int>> composite(second, equal, limited);
    tests::ExpectDrawn((LabelsUnder<uchar, AllPixels>(composite, image)), {"112233"});
    EXPECT_EQ(limited.Zones(), 3);
    EXPECT_EQ(limited.Added(), 0);
    // The same part in the places of a composite of three, its type known to the walk.
    Exactly<LimitedSteps> pinned(2);
    AlwaysConnected<short> always;
    cv::Mat const third = Draw<short>({"1....."});
    TwoImageConnected<uchar, int, short, EqualConnected<uchar>, Exactly<LimitedSteps>, AlwaysConnected<short>> three(
        second, third, equal, pinned, always);
    EXPECT_EQ(pinned.Zones(), 0);
    tests::ExpectDrawn((LabelsUnder<uchar, AllPixels>(three, image)), {"112233"});
    EXPECT_EQ(pinned.Zones(), 3);
    EXPECT_EQ(pinned.Added(), 0);
}

/// A composite of a caller's own that listens to what enters.
class ListeningComposite : public ImageConnected<uchar, int, EqualConnected<uchar>, EqualConnected<int>>
{
public:
    using ImageConnected::ImageConnected;

    void Add(cv::Point const & point, uchar const & value) override
    {
        m_values.push_back(value);
        m_columns.push_back(point.x);
    }

    [[nodiscard]] std::vector<int> const & Values() const { return m_values; }
    [[nodiscard]] std::vector<int> const & Columns() const { return m_columns; }

private:
    std::vector<int> m_values;
    std::vector<int> m_columns;
};

TEST(CompositeWalks, TellADerivedCompositeWhatEnters)
{
    cv::Mat const image = Draw<uchar>({"112.2"});
    cv::Mat const second = Draw<int>({"44455"});
    EqualConnected<uchar> firstEqual;
    EqualConnected<int> secondEqual;
    ListeningComposite listening(second, firstEqual, secondEqual);
    ImageConnected<uchar, int, EqualConnected<uchar>, EqualConnected<int>> & base = listening;
    tests::ExpectDrawn((LabelsUnder<uchar, NoZero>(base, image)), {"112.3"});
    EXPECT_EQ(listening.Values(), std::vector<int>({1, 1, 2, 2}));
    EXPECT_EQ(listening.Columns(), std::vector<int>({0, 1, 2, 4}));
}

/// Whether two pixels of an image lie within a delta.
template <class T>
std::function<bool(cv::Point, cv::Point)> WithinIn(cv::Mat const & image, T delta)
{
    return [image, delta](cv::Point one, cv::Point other) {
        return tests::PlainAnswer(image.at<T>(one), image.at<T>(other), delta) == tests::Answer::kWithin;
    };
}

/// Whether two pixels of several channels lie within a distance.
template <class In>
std::function<bool(cv::Point, cv::Point)> WithinNormIn(cv::Mat const & image, double delta)
{
    return [image, delta](cv::Point one, cv::Point other) {
        return cv::norm(image.at<In>(one), image.at<In>(other), cv::NORM_L2) <= delta;
    };
}

OracleCondition OfSteps(std::function<bool(cv::Point, cv::Point, cv::Point)> isConnected)
{
    OracleCondition condition;
    condition.isConnected = std::move(isConnected);
    return condition;
}

template <class In, class Composite>
void ExpectPlainZones(Composite & composite, cv::Mat const & image, int number, OracleCondition const & rule)
{
    SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
    cv::Mat1b const all(image.size(), uchar{1});
    ASSERT_EQ(
        (ZonesUnder<In, AllPixels>(composite, image, tests::Shape(number))), tests::OracleZones(all, number, rule));
    ASSERT_EQ(
        (ZonesUnder<In, NoZero>(composite, image, tests::Shape(number))),
        tests::OracleZones(tests::OracleTakesPart(image), number, rule));
}

/// Random images of one size, in views with gaps between their rows.
class RandomPair
{
public:
    RandomPair(Random & random, int firstType, int secondType)
        : RandomPair(random, tests::RandomSize(random, 16), firstType, secondType)
    {}

    cv::Mat const & First() { return m_first.View(); }
    cv::Mat const & Second() { return m_second.View(); }

private:
    RandomPair(Random & random, cv::Size size, int firstType, int secondType)
        : m_first(tests::RandomImage(random, size, firstType, {random.Unit() / 2.0, random.Unit() / 5.0, 6}))
        , m_second(tests::RandomImage(random, size, secondType, {random.Unit() / 2.0, random.Unit() / 5.0, 6}))
    {}

    tests::FramedImage m_first;
    tests::FramedImage m_second;
};

template <class T1, class T2>
void ExpectPlainZonesOfTwo(Random & random)
{
    RandomPair images(random, cv::DataType<T1>::type, cv::DataType<T2>::type);
    int const number = random.Below(tests::kConnexityCount);
    auto const delta1 = static_cast<T1>(random.Below(4));
    auto const delta2 = static_cast<T2>(random.Below(4));
    auto const withinFirst = WithinIn<T1>(images.First(), delta1);
    auto const withinSecond = WithinIn<T2>(images.Second(), delta2);

    DeltaConnected<T1> first(static_cast<double>(delta1));
    DeltaConnected<T2> second(static_cast<double>(delta2));
    ImageConnected<T1, T2, DeltaConnected<T1>, DeltaConnected<T2>> near(images.Second(), first, second);
    ExpectPlainZones<T1>(near, images.First(), number, OfSteps([&](cv::Point from, cv::Point to, cv::Point) {
                             return withinFirst(from, to) && withinSecond(from, to);
                         }));
    DeltaConnectedSeed<T1> firstSeed(static_cast<double>(delta1));
    DeltaConnectedSeed<T2> secondSeed(static_cast<double>(delta2));
    ImageConnected<T1, T2, DeltaConnectedSeed<T1>, DeltaConnectedSeed<T2>> nearSeed(
        images.Second(), firstSeed, secondSeed);
    ExpectPlainZones<T1>(nearSeed, images.First(), number, OfSteps([&](cv::Point, cv::Point to, cv::Point seed) {
                             return withinFirst(seed, to) && withinSecond(seed, to);
                         }));

    cv::Mat const zones = tests::RandomImage(random, images.First().size(), CV_32SC1, {0.1, 0.0, 2});
    EqualConnected<int> sameZone;
    TwoImageConnected<T1, int, T2, DeltaConnected<T1>, EqualConnected<int>, DeltaConnected<T2>> three(
        zones, images.Second(), first, sameZone, second);
    ExpectPlainZones<T1>(three, images.First(), number, OfSteps([&](cv::Point from, cv::Point to, cv::Point) {
                             return withinFirst(from, to) && withinSecond(from, to) &&
                                    zones.at<int>(from) == zones.at<int>(to);
                         }));
}

TEST(CompositeWalks, MatchThePlainWalkOnRandomImages)
{
    Random random(91);
    for (int round = 0; round < 120 && !HasFailure(); ++round)
    {
        ExpectPlainZonesOfTwo<uchar, double>(random);
        ExpectPlainZonesOfTwo<ushort, uchar>(random);
        ExpectPlainZonesOfTwo<short, ushort>(random);
        ExpectPlainZonesOfTwo<int, short>(random);
        ExpectPlainZonesOfTwo<float, int>(random);
        ExpectPlainZonesOfTwo<double, float>(random);
    }
}

template <class T1, class T2, int N>
void ExpectPlainZonesOfVectors(Random & random)
{
    using In1 = cv::Vec<T1, N>;
    using In2 = cv::Vec<T2, N>;
    RandomPair images(random, cv::traits::Type<In1>::value, cv::traits::Type<In2>::value);
    double const delta1 = random.Unit() * 8.0;
    double const delta2 = random.Unit() * 8.0;
    auto const withinFirst = WithinNormIn<In1>(images.First(), delta1);
    auto const withinSecond = WithinNormIn<In2>(images.Second(), delta2);
    DeltaConnected_MultiChannel<T1, N> first(delta1);
    DeltaConnected_MultiChannel<T2, N> second(delta2);
    ImageConnected_MultiChannel<T1, T2, DeltaConnected_MultiChannel<T1, N>, DeltaConnected_MultiChannel<T2, N>, N>
        composite(images.Second(), first, second);
    ExpectPlainZones<In1>(
        composite, images.First(), random.Below(tests::kConnexityCount),
        OfSteps(
            [&](cv::Point from, cv::Point to, cv::Point) { return withinFirst(from, to) && withinSecond(from, to); }));
}

TEST(CompositeWalks, MatchThePlainWalkOnRandomImagesOfSeveralChannels)
{
    Random random(92);
    for (int round = 0; round < 120 && !HasFailure(); ++round)
    {
        ExpectPlainZonesOfVectors<uchar, double, 2>(random);
        ExpectPlainZonesOfVectors<float, uchar, 3>(random);
        ExpectPlainZonesOfVectors<int, ushort, 4>(random);
        ExpectPlainZonesOfVectors<short, short, 3>(random);
    }
}

} // namespace

} // namespace morvane::connexity
