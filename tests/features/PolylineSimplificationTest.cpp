// Polylines with fewer points.
#include "tarnel/PolylineSimplification.h"

#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <vector>

namespace morvane::features
{

namespace
{

using tarnel::Polyline;
using tarnel::RDP_2DPolylineSimplification;
using tests::Random;

double const kInfinity = std::numeric_limits<double>::infinity();
double const kNaN = std::numeric_limits<double>::quiet_NaN();

/// Points in a row, with keys 10, 20, 30, ...
Polyline Chain(std::vector<Eigen::Vector2d> const & points)
{
    Polyline chain;
    for (Eigen::Vector2d const & point : points)
    {
        chain[10 * static_cast<int>(chain.size() + 1)] = point;
    }
    return chain;
}

/// The keys of what stays.
std::vector<int> Kept(Polyline const & chain, double tolerance)
{
    Polyline out{{5, {1.0, 2.0}}};
    EXPECT_TRUE(RDP_2DPolylineSimplification(chain, tolerance, out));
    std::vector<int> keys;
    for (auto const & [key, point] : out)
    {
        EXPECT_EQ(point, chain.at(key));
        keys.push_back(key);
    }
    return keys;
}

using Keys = std::vector<int>;

TEST(PolylineSimplification, KeepsBothEnds)
{
    EXPECT_EQ(Kept({}, 1.0), Keys{});
    EXPECT_EQ(Kept(Chain({{3, 4}}), 1.0), Keys{10});
    EXPECT_EQ(Kept(Chain({{3, 4}, {5, 6}}), 100.0), (Keys{10, 20}));
    EXPECT_EQ(Kept(Chain({{3, 4}, {3, 4}}), 100.0), (Keys{10, 20}));
    EXPECT_EQ(Kept(Chain({{0, 0}, {5, 90}, {9, -90}, {10, 0}}), kInfinity), (Keys{10, 40}));
}

TEST(PolylineSimplification, DropsWhatLiesOnTheSegments)
{
    EXPECT_EQ(Kept(Chain({{0, 0}, {1, 0}, {2, 0}, {5, 0}}), 0.0), (Keys{10, 40}));
    EXPECT_EQ(Kept(Chain({{0, 0}, {0, 1}, {0, 2}, {1, 2}, {2, 2}}), 0.0), (Keys{10, 30, 50}));
}

TEST(PolylineSimplification, OfPixelsInARow_KeepsTheEndsAlone)
{
    // Rounding must not put a pixel beside the line.
    for (cv::Point const step : {cv::Point(1, 0), {0, -1}, {1, 1}, {-1, 1}, {2, 1}, {-3, 7}})
    {
        for (int count = 2; count <= 300; ++count)
        {
            Polyline row;
            for (int place = 0; place < count; ++place)
            {
                row[place] = {17.0 + place * step.x, 5.0 + place * step.y};
            }
            ASSERT_EQ(Kept(row, 0.0), (Keys{0, count - 1})) << step << ", " << count;
        }
    }
}

TEST(PolylineSimplification, KeepsWhatIsFartherThanTheTolerance)
{
    Polyline const chain = Chain({{0, 0}, {4, 3}, {8, 0}});
    EXPECT_EQ(Kept(chain, 2.999), (Keys{10, 20, 30}));
    EXPECT_EQ(Kept(chain, 3.0), (Keys{10, 30}));
    EXPECT_EQ(Kept(chain, 3.001), (Keys{10, 30}));
}

TEST(PolylineSimplification, TakesTheFarthestFirst_AndThenLooksAgain)
{
    // The second point is far from the long segment, but near to the one to the third.
    EXPECT_EQ(Kept(Chain({{0, 0}, {1, 4}, {2, 9}, {12, 0}}), 1.0), (Keys{10, 30, 40}));
    // Of two as far, the first stays; then the second is near.
    EXPECT_EQ(Kept(Chain({{0, 0}, {0, 2}, {1, 2}, {9, 0}}), 1.5), (Keys{10, 20, 40}));
}

TEST(PolylineSimplification, OfSeveralAsFar_KeepsTheFirst)
{
    // All between the ends lie beside the straight way, 5 right for 1 down, by 15 of the root of 26.
    for (int count = 2; count <= 40; ++count)
    {
        Polyline chain{{0, {0, 0}}};
        for (int place = 1; place <= count; ++place)
        {
            chain[place] = {5.0 * place, place + 3.0};
        }
        chain[count + 1] = {5.0 * (count + 1), count + 1.0};
        EXPECT_EQ(Kept(chain, 2.95), (Keys{0, count + 1}));
        Keys const kept = Kept(chain, 2.9);
        ASSERT_GT(kept.size(), 2U);
        EXPECT_EQ(kept[1], 1) << count;
    }
}

TEST(PolylineSimplification, MeasuresTheDistanceFromTheSegment_NotFromTheLine)
{
    // Beyond the end, on the line: 5 away from the segment.
    EXPECT_EQ(Kept(Chain({{0, 0}, {15, 0}, {10, 0}}), 4.0), (Keys{10, 20, 30}));
    EXPECT_EQ(Kept(Chain({{0, 0}, {15, 0}, {10, 0}}), 5.0), (Keys{10, 30}));
    EXPECT_EQ(Kept(Chain({{0, 0}, {-3, 4}, {10, 0}}), 4.5), (Keys{10, 20, 30}));
}

TEST(PolylineSimplification, OfAClosedChain_MeasuresTheDistanceFromItsEnd)
{
    EXPECT_EQ(Kept(Chain({{0, 0}, {3, 4}, {0, 0}}), 4.9), (Keys{10, 20, 30}));
    EXPECT_EQ(Kept(Chain({{0, 0}, {3, 4}, {0, 0}}), 5.0), (Keys{10, 30}));
    EXPECT_EQ(Kept(Chain({{0, 0}, {9, 0}, {9, 9}, {0, 9}, {0, 0}}), 1.0), (Keys{10, 20, 30, 40, 50}));
}

TEST(PolylineSimplification, BelowZero_KeepsAll)
{
    Polyline const chain = Chain({{0, 0}, {1, 0}, {2, 0}, {2, 0}, {3, 0}});
    EXPECT_EQ(Kept(chain, -1e-300), (Keys{10, 20, 30, 40, 50}));
    EXPECT_EQ(Kept(chain, -kInfinity), (Keys{10, 20, 30, 40, 50}));
    EXPECT_EQ(Kept(chain, -0.0), (Keys{10, 50}));
}

TEST(PolylineSimplification, RefusesWhatIsNoNumber_WithTheOutputUntouched)
{
    Polyline const before{{5, {1.0, 2.0}}, {-7, {3.0, 4.0}}};
    Polyline out = before;
    EXPECT_FALSE(RDP_2DPolylineSimplification(Chain({{0, 0}, {1, 1}}), kNaN, out));
    EXPECT_FALSE(RDP_2DPolylineSimplification({}, kNaN, out));
    for (double const number : {kNaN, kInfinity, -kInfinity})
    {
        EXPECT_FALSE(RDP_2DPolylineSimplification(Chain({{0, 0}, {number, 1}, {2, 2}}), 1.0, out));
        EXPECT_FALSE(RDP_2DPolylineSimplification(Chain({{0, 0}, {1, 1}, {2, number}}), 1.0, out));
    }
    EXPECT_EQ(out, before);
}

TEST(PolylineSimplification, MayReplaceTheChain)
{
    Polyline chain = Chain({{0, 0}, {1, 0}, {2, 0}, {2, 5}});
    ASSERT_TRUE(RDP_2DPolylineSimplification(chain, 0.5, chain));
    EXPECT_EQ(chain, (Polyline{{10, {0, 0}}, {30, {2, 0}}, {40, {2, 5}}}));
}

double DistanceToSegment(Eigen::Vector2d const & point, Eigen::Vector2d const & from, Eigen::Vector2d const & to)
{
    Eigen::Vector2d const along = to - from;
    double const length = along.norm();
    if (length == 0.0) return (point - from).norm();
    double const place = along.dot(point - from) / length;
    if (place <= 0.0) return (point - from).norm();
    if (place >= length) return (point - to).norm();
    return std::abs(along.x() * (point - from).y() - along.y() * (point - from).x()) / length;
}

/// Expects a subset with both ends, whose segments are near to all that they stand for; and that none of it could have
/// been left out where it was decided on.
void ExpectNear(Polyline const & chain, Polyline const & kept, double tolerance)
{
    ASSERT_TRUE(
        std::includes(chain.begin(), chain.end(), kept.begin(), kept.end(), [](auto const & one, auto const & other) {
            return one.first < other.first;
        }));
    ASSERT_EQ(*kept.begin(), *chain.begin());
    ASSERT_EQ(*kept.rbegin(), *chain.rbegin());
    for (auto next = std::next(kept.begin()); next != kept.end(); ++next)
    {
        auto const before = std::prev(next);
        for (auto dropped = chain.upper_bound(before->first); dropped->first != next->first; ++dropped)
        {
            ASSERT_LE(DistanceToSegment(dropped->second, before->second, next->second), tolerance + 1e-9);
        }
    }
}

/// A random walk, over pixels or anywhere, that may come back to where it was; keys have gaps.
Polyline RandomChain(Random & random)
{
    bool const isOnPixels = random.Chance(0.7);
    Polyline chain;
    Eigen::Vector2d at(random.Below(100), random.Below(100));
    int key = random.Below(10) - 5;
    Eigen::Vector2d step(1, 0);
    for (int count = 1 + random.Below(150); count > 0; --count)
    {
        chain[key] = at;
        key += 1 + random.Below(3);
        if (random.Chance(0.4)) step = {random.Below(3) - 1, random.Below(3) - 1};
        at += step;
        if (!isOnPixels) at += Eigen::Vector2d(random.Unit(), 3.0 * random.Unit());
    }
    return chain;
}

TEST(PolylineSimplification, NothingDroppedIsFartherThanTheTolerance)
{
    Random random(7330);
    for (int round = 0; round < 300; ++round)
    {
        Polyline const chain = RandomChain(random);
        std::size_t before = chain.size();
        for (double const tolerance : {0.0, 1.0, 1.5, 10.0, kInfinity})
        {
            Polyline kept;
            ASSERT_TRUE(RDP_2DPolylineSimplification(chain, tolerance, kept));
            ExpectNear(chain, kept, tolerance);
            if (HasFailure()) FAIL() << "round " << round << ", tolerance " << tolerance;
            // What stays for a larger tolerance stays for a smaller one.
            EXPECT_LE(kept.size(), before);
            before = kept.size();
        }
        EXPECT_LE(before, 2U);
    }
}

TEST(PolylineSimplification, SplitsOnlyWhereSomethingIsTooFar)
{
    Random random(7331);
    for (int round = 0; round < 200; ++round)
    {
        Polyline const chain = RandomChain(random);
        Polyline kept;
        ASSERT_TRUE(RDP_2DPolylineSimplification(chain, 2.0, kept));
        // If all lie near to the segment between the ends, nothing else may stay, and the other way round.
        double farthest = 0.0;
        for (auto const & [key, point] : chain)
        {
            farthest = std::max(farthest, DistanceToSegment(point, chain.begin()->second, chain.rbegin()->second));
        }
        if (std::abs(farthest - 2.0) < 1e-9) continue;
        EXPECT_EQ(kept.size() <= 2, farthest < 2.0) << "round " << round;
    }
}

TEST(PolylineSimplification, OfHugeNumbers_Ends)
{
    double const huge = std::numeric_limits<double>::max();
    Polyline const chain = Chain({{-huge, huge}, {huge, -huge}, {0, huge}, {1, 1}, {huge, huge}});
    Polyline kept;
    ASSERT_TRUE(RDP_2DPolylineSimplification(chain, 1.0, kept));
    EXPECT_EQ(kept.count(10), 1U);
    EXPECT_EQ(kept.count(50), 1U);
}

} // namespace

} // namespace morvane::features
