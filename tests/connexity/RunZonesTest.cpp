// Zones by runs against the plain flood, at the borders of words and in both widths of run numbers.
#include "connexity/RunZones.h"

#include <morvane/connexity/Conditions.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/Oracles.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <vector>

namespace morvane::connexity::labelling_internals
{

namespace
{

using common::BitImage;
using tests::OracleCondition;
using tests::Random;
using PlainZones = std::vector<std::vector<cv::Point>>;

/// Around the borders of words, and wide enough for stretches that are filled as a whole.
std::vector<int> const kWidths{1, 2, 3, 5, 63, 64, 65, 127, 128, 129, 191, 257};

/// A link, or none, between any two pixels, however far apart: a coin is thrown for each pair.
class RandomLinks final : public ZoneLinks
{
public:
    RandomLinks(Random & random, cv::Size size, double share)
        : m_salt(random.Next())
        , m_size(size)
        , m_share(share)
    {}

    /// Columns that do not count, and the bits behind the last, are set.
    void Row(int y, cv::Point offset, BitImage::Word * bits) const override
    {
        std::fill_n(bits, BitImage::WordsFor(m_size.width), ~BitImage::Word{0});
        for (int x = 0; x < m_size.width; ++x)
        {
            cv::Point const other = cv::Point(x, y) + offset;
            bool const counts = cv::Rect(cv::Point(), m_size).contains(other);
            if (counts && !AreLinked({x, y}, other)) bits[x / 64] &= ~(BitImage::Word{1} << (x % 64));
        }
    }

    [[nodiscard]] bool AreLinked(cv::Point one, cv::Point other) const override
    {
        std::uint64_t const first = Index(one);
        std::uint64_t const second = Index(other);
        Random coin(m_salt + std::min(first, second) * 1000003 + std::max(first, second));
        return coin.Chance(m_share);
    }

private:
    [[nodiscard]] std::uint64_t Index(cv::Point pixel) const
    {
        return static_cast<std::uint64_t>(pixel.y) * static_cast<std::uint64_t>(m_size.width) +
               static_cast<std::uint64_t>(pixel.x);
    }

    std::uint64_t m_salt;
    cv::Size m_size;
    double m_share;
};

BitImage BitsOf(cv::Mat1b const & mask)
{
    BitImage bits(mask.rows, mask.cols);
    for (int y = 0; y < mask.rows; ++y)
    {
        for (int x = 0; x < mask.cols; ++x)
        {
            if (mask(y, x) != 0) bits.Row(y)[x / 64] |= BitImage::Word{1} << (x % 64);
        }
    }
    return bits;
}

OracleCondition OfLinks(ZoneLinks const & links)
{
    OracleCondition condition;
    condition.isConnected = [&links](cv::Point from, cv::Point to, cv::Point) {
        return links.AreLinked(from, to);
    };
    return condition;
}

PlainZones ZonesAbove(PlainZones const & zones, std::uint64_t area)
{
    PlainZones larger;
    std::copy_if(zones.begin(), zones.end(), std::back_inserter(larger), [area](auto const & zone) {
        return zone.size() > area;
    });
    return larger;
}

/// An image's pixels that take part, the links between them, a shape, and the zones that a flood gives.
struct Case
{
    cv::Mat1b mask;
    ZoneLinks const & links;
    int number;
    PlainZones zones;

    Case(cv::Mat1b const & mask_, ZoneLinks const & links_, int number_)
        : mask(mask_)
        , links(links_)
        , number(number_)
        , zones(tests::OracleZones(mask, number, OfLinks(links)))
    {}
};

template <class Run>
RunZones<Run> RunZonesOf(Case const & given)
{
    return {BitsOf(given.mask), given.links, tests::Shape(given.number)};
}

template <class Run, class Out>
::testing::AssertionResult WritesPlainLabels(Case const & given, int labelType)
{
    tests::FramedImage labels(tests::DirtyLabels(given.mask.size(), labelType));
    RunZonesOf<Run>(given).template WriteLabels<Out>(labels.View());
    auto const result =
        tests::EqualImages(labels.View(), tests::OracleLabels(given.zones, given.mask.size(), labelType));
    return result ? labels.IsFrameUntouched() : result;
}

template <class Run, class Out>
::testing::AssertionResult WritesPlainLabelsAbove(Case const & given, std::uint64_t area, int labelType)
{
    tests::FramedImage labels(tests::DirtyLabels(given.mask.size(), labelType));
    RunZonesOf<Run>(given).template WriteLabelsAbove<Out>(area, labels.View());
    auto const result = tests::EqualImages(
        labels.View(), tests::OracleLabels(ZonesAbove(given.zones, area), given.mask.size(), labelType));
    return result ? labels.IsFrameUntouched() : result;
}

/// The area bounds at which something changes, and those at which nothing is left.
std::vector<std::uint64_t> AreasOf(Case const & given, Random & random)
{
    std::vector<std::uint64_t> areas{0, 1, std::numeric_limits<std::uint64_t>::max()};
    if (given.zones.empty()) return areas;
    auto const & zone = given.zones[static_cast<std::size_t>(random.Below(static_cast<int>(given.zones.size())))];
    areas.insert(areas.end(), {zone.size(), zone.size() - 1, (std::uint64_t{1} << 32) + zone.size() - 1});
    return areas;
}

template <class Run>
void ExpectPlainZones(Case const & given, Random & random)
{
    SCOPED_TRACE(tests::Case(CV_8UC1, given.mask.size(), given.number));
    ASSERT_EQ(RunZonesOf<Run>(given).Count(), given.zones.size());
    ASSERT_TRUE((WritesPlainLabels<Run, int>(given, CV_32SC1)));
    ASSERT_TRUE((WritesPlainLabels<Run, ushort>(given, CV_16UC1)));
    ASSERT_TRUE((WritesPlainLabels<Run, ushort>(given, CV_16SC1)));
    ASSERT_TRUE((WritesPlainLabels<Run, uchar>(given, CV_8UC1)));
    for (std::uint64_t const area : AreasOf(given, random))
    {
        SCOPED_TRACE(area);
        ASSERT_TRUE((WritesPlainLabelsAbove<Run, int>(given, area, CV_32SC1)));
    }
    ASSERT_TRUE((WritesPlainLabelsAbove<Run, ushort>(given, 1, CV_16UC1)));
    ASSERT_TRUE((WritesPlainLabelsAbove<Run, uchar>(given, 1, CV_8UC1)));
}

/// Expects the zones of all shapes, and of one number beyond them, which has no neighbours.
template <class Run>
void ExpectPlainZonesOfAllShapes(cv::Mat1b const & mask, ZoneLinks const & links, Random & random)
{
    for (int number = 0; number <= tests::kConnexityCount; ++number)
    {
        ExpectPlainZones<Run>(Case(mask, links, number), random);
        if (::testing::Test::HasFatalFailure()) return;
    }
}

template <class Run>
class ZonesByRuns : public ::testing::Test
{};
using Runs = ::testing::Types<std::uint32_t, std::uint64_t>;
TYPED_TEST_SUITE(ZonesByRuns, Runs);

TYPED_TEST(ZonesByRuns, MatchThePlainFloodWhereEveryStepIsAllowed)
{
    Random random(101);
    for (int const cols : kWidths)
    {
        for (double const share : {0.1, 0.6, 0.97, 1.0})
        {
            cv::Mat1b const mask = tests::RandomMask(random, {cols, 1 + random.Below(5)}, share);
            ExpectPlainZonesOfAllShapes<TypeParam>(mask, EveryLink(mask.size()), random);
            if (this->HasFatalFailure()) return;
        }
    }
}

TYPED_TEST(ZonesByRuns, MatchThePlainFloodOverAnyLinks)
{
    Random random(102);
    for (int const cols : kWidths)
    {
        for (double const share : {0.1, 0.3, 0.5, 0.8, 0.98})
        {
            cv::Mat1b const mask =
                tests::RandomMask(random, {cols, 1 + random.Below(6)}, random.Chance(0.5) ? 1.0 : 0.8);
            ExpectPlainZonesOfAllShapes<TypeParam>(mask, RandomLinks(random, mask.size(), share), random);
            if (this->HasFatalFailure()) return;
        }
    }
}

TYPED_TEST(ZonesByRuns, MatchThePlainFloodOverTheLinksOfImages)
{
    Random random(103);
    for (int const cols : kWidths)
    {
        cv::Size const size(cols, 1 + random.Below(5));
        cv::Mat1b const mask = tests::RandomMask(random, size, 0.9);
        tests::FramedImage floats(tests::RandomImage(random, size, CV_32FC1, {0.1, 0.05, 2}));
        tests::FramedImage colours(tests::RandomImage(random, size, CV_8UC3, {0.1, 0.02, 4}));
        ImageLinks<float, EqualConnected<float>> const equal(floats.View(), {});
        using Delta = DeltaConnected_MultiChannel<uchar, 3>;
        ImageLinks<cv::Vec3b, Delta> const near(colours.View(), Delta(3.0));
        ExpectPlainZonesOfAllShapes<TypeParam>(mask, equal, random);
        ExpectPlainZonesOfAllShapes<TypeParam>(mask, near, random);
        ExpectPlainZonesOfAllShapes<TypeParam>(mask, BothLinks(equal, near, size), random);
        if (this->HasFatalFailure()) return;
    }
}

TYPED_TEST(ZonesByRuns, MatchThePlainFloodOnPatternsThatMergeLate)
{
    Random random(104);
    for (int const cols : {64, 65, 130})
    {
        for (tests::Pattern const & pattern : tests::AllPatterns({cols, 9}))
        {
            SCOPED_TRACE(pattern.name);
            ExpectPlainZonesOfAllShapes<TypeParam>(pattern.mask, EveryLink(pattern.mask.size()), random);
            if (this->HasFatalFailure()) return;
        }
    }
}

TYPED_TEST(ZonesByRuns, ZeroTheElementsBesideTheLabels)
{
    Random random(105);
    for (int const cols : {3, 64, 129})
    {
        cv::Mat1b const mask = tests::RandomMask(random, {cols, 4}, 0.6);
        EveryLink const links(mask.size());
        for (int const number : {0, 4})
        {
            Case const given(mask, links, number);
            EXPECT_TRUE((WritesPlainLabels<TypeParam, int>(given, CV_32SC2)));
            EXPECT_TRUE((WritesPlainLabels<TypeParam, uchar>(given, CV_8UC3)));
            EXPECT_TRUE((WritesPlainLabelsAbove<TypeParam, ushort>(given, 2, CV_16UC4)));
        }
    }
}

TYPED_TEST(ZonesByRuns, LabelsWrapAtTheLimitOfTheirType)
{
    cv::Mat1b dots(1, 65537 * 2, uchar{0});
    for (int x = 0; x < dots.cols; x += 2)
    {
        dots(0, x) = 1;
    }
    EveryLink const links(dots.size());
    Case const given(dots, links, eConnexity4);
    ASSERT_EQ(given.zones.size(), 65537U);
    EXPECT_TRUE((WritesPlainLabels<TypeParam, uchar>(given, CV_8UC1)));
    EXPECT_TRUE((WritesPlainLabels<TypeParam, ushort>(given, CV_16UC1)));
    EXPECT_TRUE((WritesPlainLabelsAbove<TypeParam, ushort>(given, 0, CV_16UC1)));
    EXPECT_TRUE((WritesPlainLabels<TypeParam, int>(given, CV_32SC1)));
}

TYPED_TEST(ZonesByRuns, OfAnEmptyImageAreNone)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 3), cv::Size(70, 0)})
    {
        cv::Mat1b const mask(size);
        EveryLink const links(size);
        for (int number = 0; number <= tests::kConnexityCount; ++number)
        {
            Case const given(mask, links, number);
            EXPECT_EQ(RunZonesOf<TypeParam>(given).Count(), 0U);
            cv::Mat labels(size, CV_32SC1);
            RunZonesOf<TypeParam>(given).template WriteLabels<int>(labels);
            RunZonesOf<TypeParam>(given).template WriteLabelsAbove<int>(0, labels);
            EXPECT_EQ(labels.size(), size);
        }
    }
}

/// Expects that Row and AreLinked agree on all columns that count.
void ExpectRowsAgree(ZoneLinks const & links, cv::Size size)
{
    for (int dy = -2; dy <= 2; ++dy)
    {
        for (int dx = -2; dx <= 2; ++dx)
        {
            for (int y = std::max(0, -dy); y < std::min(size.height, size.height - dy); ++y)
            {
                BitImage bits(1, size.width);
                links.Row(y, {dx, dy}, bits.Row(0));
                for (int x = std::max(0, -dx); x < std::min(size.width, size.width - dx); ++x)
                {
                    ASSERT_EQ(bits.At(x, 0), links.AreLinked({x, y}, {x + dx, y + dy}))
                        << cv::Point(x, y) << " and " << cv::Point(dx, dy) << " of " << size;
                }
                ASSERT_EQ(bits.Row(0)[-1], 0U);
                ASSERT_EQ(bits.Row(0)[bits.WordsPerRow()], 0U) << "wrote behind the row";
            }
        }
    }
}

TEST(ZoneLinks, RowsSayWhatAreLinkedSays)
{
    Random random(106);
    for (int const cols : kWidths)
    {
        cv::Size const size(cols, 5);
        tests::FramedImage image(tests::RandomImage(random, size, CV_16SC1, {0.3, 0.1, 3}));
        cv::Mat const colours = tests::RandomImage(random, size, CV_64FC2, {0.3, 0.05, 2});
        ImageLinks<short, DeltaConnected<short>> const near(image.View(), DeltaConnected<short>(1.0));
        using Equal = EqualConnected_MultiChannel<double, 2>;
        ImageLinks<cv::Vec2d, Equal> const equal(colours, Equal());
        ExpectRowsAgree(EveryLink(size), size);
        ExpectRowsAgree(near, size);
        ExpectRowsAgree(equal, size);
        ExpectRowsAgree(BothLinks(near, equal, size), size);
        if (HasFatalFailure()) return;
    }
}

TEST(ZoneLinks, AreThoseOfTheCondition)
{
    cv::Mat const image = tests::Draw<uchar>({"15", "93"});
    ImageLinks<uchar, DeltaConnected<uchar>> const near(image, DeltaConnected<uchar>(4.0));
    ImageLinks<uchar, EqualConnected<uchar>> const equal(image, {});
    BothLinks const both(near, equal, image.size());
    EXPECT_TRUE(near.AreLinked({0, 0}, {1, 0}));
    EXPECT_FALSE(near.AreLinked({0, 0}, {0, 1}));
    EXPECT_TRUE(near.AreLinked({0, 1}, {1, 0}));
    EXPECT_FALSE(equal.AreLinked({0, 0}, {1, 0}));
    EXPECT_TRUE(equal.AreLinked({0, 0}, {0, 0}));
    EXPECT_FALSE(both.AreLinked({0, 0}, {1, 0}));
    EXPECT_TRUE(both.AreLinked({1, 1}, {1, 1}));
    EXPECT_TRUE(EveryLink(image.size()).AreLinked({0, 0}, {0, 1}));
}

} // namespace

} // namespace morvane::connexity::labelling_internals
