#include "support/GrowingOracle.h"

#include <morvane/algorithm/RegionGrowing.h>
#include <morvane/connexity/AccumulatorZones.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>

namespace morvane::tests
{

namespace
{

/// The bound of sums as an image of the depth takes it.
double BudgetOf(double budget, int depth)
{
    if (depth == CV_64F) return budget;
    if (depth == CV_32F) return static_cast<double>(static_cast<float>(budget));
    double const cut = std::trunc(budget);
    bool const fits = cut >= -2147483648.0 && cut <= 2147483647.0;
    return fits ? cut : -2147483648.0;
}

/// A sum in the arithmetic of sums over an image of the depth: 32-bit integers that wrap, single or double precision.
double SumOf(double value, double sum, int depth)
{
    if (depth == CV_64F) return value + sum;
    if (depth == CV_32F) return static_cast<double>(static_cast<float>(value) + static_cast<float>(sum));
    constexpr std::int64_t kTurn = std::int64_t{1} << 32;
    std::int64_t total = static_cast<std::int64_t>(value) + static_cast<std::int64_t>(sum);
    if (total > std::numeric_limits<int>::max()) total -= kTurn;
    if (total < std::numeric_limits<int>::min()) total += kTurn;
    return static_cast<double>(total);
}

/// A pixel that waits for its neighbours to be asked.
struct Waiting
{
    cv::Point point;
    double value;
};

bool IsLater(Waiting const & one, Waiting const & other)
{
    return one.value > other.value;
}

void Put(std::vector<Waiting> & work, Waiting const & pixel, GrowthOrder order)
{
    work.push_back(pixel);
    if (order == GrowthOrder::Lowest) std::push_heap(work.begin(), work.end(), IsLater);
}

cv::Point Take(std::vector<Waiting> & work, GrowthOrder order)
{
    auto next = work.begin();
    if (order == GrowthOrder::Lowest)
    {
        std::pop_heap(work.begin(), work.end(), IsLater);
        next = std::prev(work.end());
    }
    else if (order != GrowthOrder::Oldest)
    {
        for (auto pixel = work.begin(); pixel != work.end(); ++pixel)
        {
            bool const winsTie = order == GrowthOrder::LowestYoungest && pixel->value == next->value;
            if (pixel->value < next->value || winsTie) next = pixel;
        }
    }
    cv::Point const point = next->point;
    work.erase(next);
    return point;
}

/// The way from a pixel to its neighbour, which may not exist.
bool Step(cv::Size size, bool wraps, cv::Point & point)
{
    if (point.y < 0 || point.y >= size.height) return false;
    if (wraps && point.x < 0)
    {
        point.x += size.width;
    }
    else if (wraps && point.x >= size.width)
    {
        point.x -= size.width;
    }
    // In an image that is narrower than the offset one turn is not enough.
    return point.x >= 0 && point.x < size.width;
}

/// The delta as an operator with `float` arguments sees it.
double Single(double delta)
{
    return static_cast<double>(static_cast<float>(delta));
}

float AsFloat(double delta)
{
    return static_cast<float>(delta);
}

OracleCondition SumsOfWand(GrowthInput const & in)
{
    return SumsBelow(in.image, Single(in.delta1));
}

OracleCondition SumsOfPartition(GrowthInput const & in)
{
    return SumsBelow(in.image, in.delta1);
}

template <class Values>
double Pick(Random & random, Values const & values)
{
    return values[static_cast<std::size_t>(random.Below(static_cast<int>(values.size())))];
}

} // namespace

OracleCondition SumsBelow(cv::Mat const & image, double budget)
{
    auto const sum = std::make_shared<double>(0.0);
    double const bound = BudgetOf(budget, image.depth());
    auto const with = [image, sum](cv::Point point) {
        return SumOf(ElementAt(image, point.y, point.x), *sum, image.depth());
    };
    OracleCondition condition;
    condition.reset = [sum] {
        *sum = 0.0;
    };
    condition.isConnected = [with, bound](cv::Point, cv::Point to, cv::Point) {
        return with(to) < bound;
    };
    condition.add = [with, sum](cv::Point point) {
        *sum = with(point);
    };
    return condition;
}

OracleCondition StepsFromSeed(cv::Mat const & image, double delta)
{
    OracleCondition condition;
    OracleCondition const near = DeltaSteps(image, delta);
    condition.isConnected = [near](cv::Point, cv::Point to, cv::Point seed) {
        return near.isConnected(seed, to, seed);
    };
    return condition;
}

OracleZoneList OracleGrownZones(
    cv::Mat const & image, int connexity, std::vector<cv::Point> const & seeds, OracleCondition const & condition,
    GrowthOrder order)
{
    std::vector<cv::Point> const offsets = OracleOffsets(connexity);
    bool const wraps = OracleWraps(connexity);
    cv::Mat1b visited(image.rows, image.cols, uchar{0});
    OracleZoneList zones;
    for (cv::Point const & seed : seeds)
    {
        bool const isInside = seed.x >= 0 && seed.x < image.cols && seed.y >= 0 && seed.y < image.rows;
        if (!isInside || visited(seed) == 1) continue;
        std::vector<cv::Point> zone;
        condition.reset();
        visited(seed) = 1;
        std::vector<Waiting> work;
        Put(work, {seed, ElementAt(image, seed.y, seed.x)}, order);
        condition.add(seed);
        while (!work.empty())
        {
            cv::Point const pixel = Take(work, order);
            zone.push_back(pixel);
            for (cv::Point const & offset : offsets)
            {
                cv::Point neighbour = pixel + offset;
                if (!Step(image.size(), wraps, neighbour)) continue;
                if (!condition.isConnected(pixel, neighbour, seed)) continue;
                if (visited(neighbour) == 1) continue;
                condition.add(neighbour);
                Put(work, {neighbour, ElementAt(image, neighbour.y, neighbour.x)}, order);
                visited(neighbour) = 1;
            }
        }
        zones.push_back(zone);
    }
    return zones;
}

std::vector<cv::Point> RasterSeeds(cv::Size size)
{
    std::vector<cv::Point> seeds;
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            seeds.emplace_back(x, y);
        }
    }
    return seeds;
}

cv::Mat WithColumns(cv::Mat const & image, int cols)
{
    cv::Mat result(image.rows, cols, image.type(), cv::Scalar(0));
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < std::min(cols, image.cols); ++x)
        {
            SetElement(result, y, x, 0, ElementAt(image, y, x));
        }
    }
    return result;
}

std::vector<GrowthUnderTest> const & AllGrowths()
{
    using namespace algorithm;
    static std::vector<GrowthUnderTest> const all{
        {"MagicWand", 1, true, false,
         [](GrowthInput const & in, cv::Mat & out) {
             return MagicWand(in.image, Shape(in.connexity), in.seeds, AsFloat(in.delta1), out);
         },
         [](GrowthInput const & in) { return DeltaSteps(in.image, Single(in.delta1)); }, GrowthOrder::Oldest},
        {"MagicWand of two", 2, true, false,
         [](GrowthInput const & in, cv::Mat & out) {
             return MagicWand(
                 in.image, in.second, Shape(in.connexity), in.seeds, AsFloat(in.delta1), AsFloat(in.delta2), out);
         },
         [](GrowthInput const & in) {
             return StepsOfBoth(
                 DeltaSteps(in.image, Single(in.delta1)),
                 DeltaSteps(WithColumns(in.second, in.image.cols), Single(in.delta2)));
         },
         GrowthOrder::Oldest},
        {"MagicWandBasedOnAccumulator", 1, true, true,
         [](GrowthInput const & in, cv::Mat & out) {
             return MagicWandBasedOnAccumulator(in.image, Shape(in.connexity), in.seeds, AsFloat(in.delta1), out);
         },
         SumsOfWand, GrowthOrder::Oldest},
        {"MagicWandBasedOnPriorityAccumulator", 1, true, true,
         [](GrowthInput const & in, cv::Mat & out) {
             return MagicWandBasedOnPriorityAccumulator(
                 in.image, Shape(in.connexity), in.seeds, AsFloat(in.delta1), out);
         },
         SumsOfWand, GrowthOrder::Lowest},
        {"GrowRegion", 2, false, false,
         [](GrowthInput const & in, cv::Mat & out) {
             return GrowRegion(in.image, in.second, Shape(in.connexity), AsFloat(in.delta1), AsFloat(in.delta2), out);
         },
         [](GrowthInput const & in) {
             return StepsOfBoth(
                 StepsFromSeed(in.image, Single(in.delta1)),
                 StepsFromSeed(WithColumns(in.second, in.image.cols), Single(in.delta2)));
         },
         GrowthOrder::Oldest},
        {"LabelAccumulatorZones", 1, false, true,
         [](GrowthInput const & in, cv::Mat & out) {
             return connexity::LabelAccumulatorZones(in.image, Shape(in.connexity), in.delta1, out);
         },
         SumsOfPartition, GrowthOrder::Oldest},
        {"LabelPriorityAccumulatorZones", 1, false, true,
         [](GrowthInput const & in, cv::Mat & out) {
             return connexity::LabelPriorityAccumulatorZones(in.image, Shape(in.connexity), in.delta1, out);
         },
         SumsOfPartition, GrowthOrder::Lowest},
    };
    return all;
}

OracleZoneList OracleZonesOf(GrowthUnderTest const & growth, GrowthInput const & input)
{
    return OracleGrownZones(
        input.image, input.connexity, growth.takesSeeds ? input.seeds : RasterSeeds(input.image.size()),
        growth.condition(input), growth.order);
}

cv::Mat Grown(GrowthUnderTest const & growth, GrowthInput const & input, int type)
{
    SCOPED_TRACE(growth.name);
    return Written(input.image.size(), type, [&](cv::Mat & out) { return growth.call(input, out); });
}

void ExpectPlainGrowth(Random & random, GrowthUnderTest const & growth, GrowthInput const & input)
{
    SCOPED_TRACE(
        growth.name + (": " + Case(input.image.type(), input.image.size(), input.connexity)) + ", second " +
        Case(input.second.type(), input.second.size(), 0) + ", deltas " + std::to_string(input.delta1) + " and " +
        std::to_string(input.delta2) + ", seeds " + std::to_string(input.seeds.size()));
    Images const images = growth.images == 2 ? Images{input.image, input.second} : Images{input.image};
    auto const call = [&](Images const & given, cv::Mat & out) {
        GrowthInput same = input;
        same.image = given.front();
        same.second = given.back();
        return growth.call(same, out);
    };
    ExpectZones(random, call, images, OracleZonesOf(growth, input));
}

std::vector<cv::Point> RandomSeeds(Random & random, cv::Size size)
{
    std::vector<cv::Point> seeds;
    int const count = 1 + random.Below(random.Chance(0.2) ? 40 : 6);
    for (int number = 0; number < count; ++number)
    {
        if (!seeds.empty() && random.Chance(0.1))
        {
            seeds.push_back(seeds[static_cast<std::size_t>(random.Below(number))]);
            continue;
        }
        int const margin = random.Chance(0.1) ? 3 : 0;
        int const x = random.Below(std::max(1, size.width + 2 * margin)) - margin;
        int const y = random.Below(std::max(1, size.height + 2 * margin)) - margin;
        seeds.emplace_back(x, y);
    }
    return seeds;
}

cv::Mat RandomTerrain(Random & random, cv::Size size, int depth)
{
    if (random.Chance(0.2)) return RandomImage(random, size, depth, {0.3, 0.4 * random.Unit(), 5});
    static std::vector<std::vector<double>> const lists{
        {1}, {0, 1}, {1, 2}, {0, 1, 2, 3}, {1, 5, 9}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 30, 60, 100, 250}};
    auto const & values = lists[static_cast<std::size_t>(random.Below(static_cast<int>(lists.size())))];
    bool const isSigned = depth != CV_8U && depth != CV_16U;
    double const negativeShare = isSigned && random.Chance(0.5) ? 0.4 * random.Unit() : 0.0;
    double const part = depth >= CV_32F && random.Chance(0.5) ? 0.3 : 0.0;
    cv::Mat image(size.height, size.width, depth);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            double const value = Pick(random, values) * (1.0 + part);
            SetElement(image, y, x, 0, random.Chance(negativeShare) ? -value : value);
        }
    }
    return image;
}

double RandomBudget(Random & random)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::array usual{0.5, 1.0, 2.0, 3.9, 5.0, 8.3, 10.0, 13.0, 20.0, 35.0, 50.0, 80.0, 200.0, 300.0, 1000.0};
    constexpr std::array strange{
        0.0,          -0.0,    -0.5,  -1.0,         -7.0,         -300.0,
        40000.0,      65541.0, 1e9,   2147483520.0, 2147483647.0, -2147483648.0,
        2147483648.0, 1e10,    -1e10, infinity,     -infinity,    std::numeric_limits<double>::quiet_NaN()};
    return random.Chance(0.75) ? Pick(random, usual) : Pick(random, strange);
}

} // namespace morvane::tests
