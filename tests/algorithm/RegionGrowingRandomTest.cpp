// The operators that grow zones, the accumulator partitions among them, against the plain growth.
#include "support/AllTypes.h"
#include "support/GrowingOracle.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <map>
#include <string>

namespace morvane::tests
{

namespace
{

/// An image that suits what an operator is bounded by.
cv::Mat ImageFor(Random & random, GrowthUnderTest const & growth, cv::Size size, int depth)
{
    if (growth.isBySum) return RandomTerrain(random, size, depth);
    return random.Chance(0.5) ? GradedImage(random, size, depth) : RandomImage(random, size, depth, {0.1, 0.05, 6});
}

double DeltaFor(Random & random, GrowthUnderTest const & growth)
{
    return growth.isBySum ? RandomBudget(random) : RandomDelta(random);
}

/// A second image, of which a third are wider than the first and a third narrower.
cv::Mat SecondFor(Random & random, GrowthUnderTest const & growth, cv::Size size, int depth)
{
    int const kind = random.Below(3);
    if (kind == 1) size.width += 1 + random.Below(9);
    if (kind == 2) size.width = random.Below(size.width + 1);
    return ImageFor(random, growth, size, depth);
}

GrowthInput InputFor(Random & random, GrowthUnderTest const & growth, cv::Size size, cv::Vec2i depths, int connexity)
{
    GrowthInput input;
    input.image = ImageFor(random, growth, size, depths[0]);
    input.second = SecondFor(random, growth, size, depths[1]);
    input.connexity = connexity;
    input.seeds = RandomSeeds(random, size);
    input.delta1 = DeltaFor(random, growth);
    input.delta2 = DeltaFor(random, growth);
    return input;
}

int DepthOf(Random & random)
{
    return kDepths[static_cast<std::size_t>(random.Below(6))];
}

TEST(RegionGrowingRandom, EveryDepth_MatchesThePlainGrowth)
{
    // ExpectPlainGrowth() tries every depth of labels: 6 times 3 instantiations.
    Random random(1320);
    int number = -1;
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        if (growth.images == 2) continue;
        for (int const depth : kDepths)
        {
            for (int round = 0; round < 90; ++round)
            {
                cv::Size const size = RandomFamilySize(random);
                ExpectPlainGrowth(random, growth, InputFor(random, growth, size, {depth, depth}, number));
                if (HasFailure()) return;
                number = number == 13 ? -1 : number + 1;
            }
        }
    }
}

TEST(RegionGrowingRandom, EveryPairOfDepths_MatchesThePlainGrowth)
{
    // 6 times 6 times 3 instantiations.
    Random random(1321);
    int number = -1;
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        if (growth.images == 1) continue;
        for (int const depth1 : kDepths)
        {
            for (int const depth2 : kDepths)
            {
                for (int round = 0; round < 30; ++round)
                {
                    cv::Size const size = RandomFamilySize(random);
                    ExpectPlainGrowth(random, growth, InputFor(random, growth, size, {depth1, depth2}, number));
                    if (HasFailure()) return;
                    number = number == 13 ? -1 : number + 1;
                }
            }
        }
    }
}

TEST(RegionGrowingRandom, NarrowImages_MatchThePlainGrowth)
{
    Random random(1322);
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        for (int round = 0; round < 12; ++round)
        {
            for (int number = 0; number < kConnexityCount; ++number)
            {
                cv::Size const size(random.Below(6), random.Below(10));
                cv::Vec2i const depths(DepthOf(random), DepthOf(random));
                ExpectPlainGrowth(random, growth, InputFor(random, growth, size, depths, number));
                if (HasFailure()) return;
            }
        }
    }
}

TEST(RegionGrowingRandom, LargerImages_MatchThePlainGrowth)
{
    // Zones of thousands of pixels, with bounds that let them grow.
    Random random(1323);
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        for (int round = 0; round < 26; ++round)
        {
            cv::Size const size(80 + random.Below(80), 60 + random.Below(60));
            GrowthInput input;
            input.image = RandomImage(random, size, DepthOf(random), {0.1, 0.0, 6});
            input.second = RandomImage(random, size, DepthOf(random), {0.1, 0.0, 3});
            input.connexity = round % kConnexityCount;
            input.seeds = RandomSeeds(random, size);
            input.delta1 = growth.isBySum ? 100.0 + random.Below(20000) : 2.0 + random.Below(4);
            input.delta2 = 1.0 + random.Below(3);
            ExpectPlainGrowth(random, growth, input);
            if (HasFailure()) return;
        }
    }
}

TEST(RegionGrowingRandom, WindingPatterns_MatchThePlainGrowth)
{
    Random random(1324);
    for (auto const & pattern : AllPatterns({67, 41}))
    {
        SCOPED_TRACE(pattern.name);
        for (GrowthUnderTest const & growth : AllGrowths())
        {
            GrowthInput input;
            input.image = pattern.mask * 2;
            input.second = pattern.mask;
            input.connexity = random.Below(kConnexityCount);
            input.seeds = RandomSeeds(random, input.image.size());
            input.delta1 = growth.isBySum ? 1.0 + random.Below(500) : random.Below(3);
            input.delta2 = random.Below(2);
            ExpectPlainGrowth(random, growth, input);
            if (HasFailure()) return;
        }
    }
}

TEST(RegionGrowingRandom, IntegersThatWrap_MatchThePlainGrowth)
{
    // Sums and differences beyond the range of int, in images of few large numbers.
    Random random(1325);
    constexpr std::array kLarge{2000000000.0, 1073741824.0, 2147483647.0, -2147483648.0, -2000000000.0, -1.0,
                                294967290.0,  5.0,          0.0,          1500000000.0,  -1073741824.0, -1500000000.0};
    for (int round = 0; round < 400; ++round)
    {
        cv::Size const size(1 + random.Below(12), 1 + random.Below(12));
        GrowthInput input;
        input.image.create(size, CV_32SC1);
        for (int & value : cv::Mat1i(input.image))
        {
            value = static_cast<int>(kLarge[static_cast<std::size_t>(random.Below(static_cast<int>(kLarge.size())))]);
        }
        input.second = RandomTerrain(random, size, CV_8UC1);
        input.connexity = round % kConnexityCount;
        input.seeds = RandomSeeds(random, size);
        input.delta1 = random.Below(2000000000) - 1000000000;
        input.delta2 = 100.0;
        for (GrowthUnderTest const & growth : AllGrowths())
        {
            ExpectPlainGrowth(random, growth, input);
        }
        if (HasFailure()) return;
    }
}

TEST(RegionGrowingRandom, Ties_FallToTheOrderOfTheHeapInPartitionsToo)
{
    Random random(1326);
    GrowthUnderTest const & partition = AllGrowths().back();
    ASSERT_EQ(partition.order, GrowthOrder::Lowest);
    for (int number = 0; number < kConnexityCount; ++number)
    {
        for (int const levels : {1, 2, 4})
        {
            SCOPED_TRACE("shape " + std::to_string(number) + ", levels " + std::to_string(levels));
            std::map<GrowthOrder, int> differences;
            for (int round = 0; round < 12; ++round)
            {
                GrowthInput input;
                input.image = RandomImage(random, {17, 15}, CV_16SC1, {0.0, 0.0, levels});
                input.connexity = number;
                input.delta1 = 20 + random.Below(100);
                cv::Mat const grown = Grown(partition, input);
                for (GrowthOrder const order :
                     {GrowthOrder::Lowest, GrowthOrder::LowestOldest, GrowthOrder::LowestYoungest})
                {
                    GrowthUnderTest other = partition;
                    other.order = order;
                    auto const zones = OracleZonesOf(other, input);
                    bool const same = !!EqualImages(grown, OracleLabels(zones, input.image.size(), CV_32SC1));
                    differences[order] += same ? 0 : 1;
                }
            }
            EXPECT_EQ(differences[GrowthOrder::Lowest], 0);
            EXPECT_GT(differences[GrowthOrder::LowestOldest], 0);
            EXPECT_GT(differences[GrowthOrder::LowestYoungest], 0);
            if (HasFailure()) return;
        }
    }
}

TEST(RegionGrowingRandom, Partitions_LeaveNoPixelOut)
{
    Random random(1327);
    for (int round = 0; round < 200; ++round)
    {
        cv::Size const size = RandomSize(random, 30);
        for (GrowthUnderTest const & growth : AllGrowths())
        {
            if (growth.takesSeeds) continue;
            cv::Vec2i const depths(DepthOf(random), DepthOf(random));
            cv::Mat const labels = Grown(growth, InputFor(random, growth, size, depths, random.Below(13)));
            ASSERT_EQ(static_cast<std::size_t>(cv::countNonZero(labels)), labels.total()) << growth.name;
        }
    }
}

TEST(RegionGrowingRandom, ZonesOfPositiveNumbers_SumToLessThanTheBudgetOrAreOnePixel)
{
    Random random(1328);
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        if (!growth.isBySum) continue;
        for (int round = 0; round < 60; ++round)
        {
            GrowthInput input;
            input.image = RandomImage(random, {40, 30}, CV_16UC1, {0.2, 0.0, 30});
            input.connexity = random.Below(kConnexityCount);
            input.seeds = RandomSeeds(random, input.image.size());
            input.delta1 = random.Below(200);
            cv::Mat1i const labels(Grown(growth, input));
            std::map<int, std::pair<int, int>> zones;
            for (cv::Point const & p : RasterSeeds(input.image.size()))
            {
                auto & [pixels, sum] = zones[labels(p)];
                ++pixels;
                sum += input.image.at<ushort>(p);
            }
            zones.erase(0);
            EXPECT_FALSE(zones.empty());
            for (auto const & [label, zone] : zones)
            {
                ASSERT_TRUE(zone.first == 1 || zone.second < input.delta1) << growth.name << ", zone " << label;
            }
        }
    }
}

TEST(RegionGrowingRandom, TurningAPanorama_TurnsTheZonesOfWrappedShapes)
{
    Random random(1329);
    for (int const number : {1, 4, 8, 10, 12})
    {
        for (int const turn : {1, 2, 17, 38, 39})
        {
            for (GrowthUnderTest const & growth : AllGrowths())
            {
                if (!growth.takesSeeds) continue;
                GrowthInput input = InputFor(random, growth, {40, 12}, {CV_16UC1, CV_32FC1}, number);
                input.second = ImageFor(random, growth, {40, 12}, CV_32FC1);
                GrowthInput turned = input;
                turned.image = Turned(input.image, turn);
                turned.second = Turned(input.second, turn);
                input.seeds = {{3, 3}, {20, 11}, {39, 5}};
                for (std::size_t seed = 0; seed < input.seeds.size(); ++seed)
                {
                    turned.seeds.resize(3);
                    turned.seeds[seed] = {(input.seeds[seed].x + 40 - turn) % 40, input.seeds[seed].y};
                }
                SCOPED_TRACE("shape " + std::to_string(number) + ", turned by " + std::to_string(turn));
                cv::Mat const expected = Turned(Grown(growth, input), turn);
                ASSERT_TRUE(EqualImages(Grown(growth, turned), expected)) << growth.name;
            }
        }
    }
}

} // namespace

} // namespace morvane::tests
