// The queues by priority, and the flood that takes from them.
#include "common/PriorityFlood.h"

#include <morvane/connexity/Connexity.h>

#include "support/AllTypes.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <type_traits>
#include <utility>
#include <vector>

namespace morvane::common
{

namespace
{

using tests::Random;

/// Everything that is pushed and not taken yet, in order of the keys.
template <class Key, class Comes>
using Waiting = std::map<Key, std::multiset<std::uint32_t>, Comes>;

/// Pushes and takes at random; what is taken must wait under the first of all keys.
///
/// @param nextKey gives a key, from the one that was taken last
template <class Comes, class Key, class Queue, class NextKey>
void ExpectFirstKeysFirst(Queue && queue, Random & random, NextKey && nextKey)
{
    Waiting<Key, Comes> waiting;
    std::uint32_t element = 0;
    Key last{};
    int taken = 0;
    for (int count = 0; count < 4000; ++count)
    {
        ASSERT_EQ(queue.IsEmpty(), waiting.empty());
        // More are pushed than taken in the first half.
        if (waiting.empty() || random.Chance(count < 2000 ? 0.6 : 0.3))
        {
            Key const key = nextKey(last, taken == 0);
            queue.Push(key, element);
            waiting[key].insert(element++);
            continue;
        }
        auto const entry = queue.Pop();
        ++taken;
        last = entry.key;
        auto const first = waiting.begin();
        ASSERT_EQ(entry.key, first->first);
        auto const place = first->second.find(entry.element);
        ASSERT_NE(place, first->second.end()) << "element " << entry.element << " does not wait under this key";
        first->second.erase(place);
        if (first->second.empty()) waiting.erase(first);
    }
    EXPECT_GT(taken, 1000);
}

TEST(PriorityFloodQueues, HeapGivesTheFirstKeyFirst)
{
    Random random(61);
    auto const anyKey = [&random](double, bool) {
        return random.Chance(0.1) ? std::numeric_limits<double>::infinity() : random.Below(40) - 20.5;
    };
    ExpectFirstKeysFirst<std::less<>, double>(HeapQueue<double, std::uint32_t, std::less<>>(), random, anyKey);
    ExpectFirstKeysFirst<std::greater<>, double>(HeapQueue<double, std::uint32_t, std::greater<>>(), random, anyKey);
}

TEST(PriorityFloodQueues, HeapGivesEqualKeysInTheOrderOfTheStandardHeap)
{
    struct Entry
    {
        int key;
        std::uint64_t element;
    };
    auto const later = [](Entry const & one, Entry const & other) {
        return other.key < one.key;
    };
    Random random(62);
    HeapQueue<int, std::uint64_t, std::less<>> queue;
    std::vector<Entry> heap;
    for (std::uint64_t element = 0; element < 2000; ++element)
    {
        int const key = random.Below(5);
        queue.Push(key, element);
        heap.push_back({key, element});
        std::push_heap(heap.begin(), heap.end(), later);
        if (!random.Chance(0.4)) continue;
        std::pop_heap(heap.begin(), heap.end(), later);
        auto const taken = queue.Pop();
        ASSERT_EQ(taken.key, heap.back().key);
        ASSERT_EQ(taken.element, heap.back().element);
        heap.pop_back();
    }
    EXPECT_GT(heap.size(), 1000U);
}

TEST(PriorityFloodQueues, BytesGiveTheFirstKeyFirstAlsoWhenItComesLate)
{
    Random random(63);
    auto const anyKey = [&random](uchar, bool) {
        return static_cast<uchar>(random.Below(256));
    };
    ExpectFirstKeysFirst<std::less<>, uchar>(ByteQueue<std::uint32_t, true>(), random, anyKey);
    ExpectFirstKeysFirst<std::greater<>, uchar>(ByteQueue<std::uint32_t, false>(), random, anyKey);
}

TEST(PriorityFloodQueues, BytesOfOneKeyLeaveLastInFirstOut)
{
    for (uchar const key : {uchar{0}, uchar{128}, uchar{255}})
    {
        ByteQueue<std::uint32_t, true> queue;
        queue.Push(key, 1);
        queue.Push(key, 2);
        EXPECT_EQ(queue.Pop().element, 2U);
        queue.Push(key, 3);
        EXPECT_EQ(queue.Pop().element, 3U);
        EXPECT_EQ(queue.Pop().element, 1U);
        EXPECT_TRUE(queue.IsEmpty());
    }
}

TEST(PriorityFloodQueues, EqualFirstGivesTheFirstKeyFirstWhereKeysDoNotGoBack)
{
    Random random(64);
    ExpectFirstKeysFirst<std::less<>, int>(
        EqualFirstQueue<HeapQueue<int, std::uint32_t, std::less<>>, int, std::uint32_t>(), random,
        [&random](int last, bool isNew) { return isNew ? random.Below(5) : last + random.Below(4); });
    ExpectFirstKeysFirst<std::greater<>, int>(
        EqualFirstQueue<HeapQueue<int, std::uint32_t, std::greater<>>, int, std::uint32_t>(), random,
        [&random](int last, bool isNew) { return isNew ? random.Below(5) : last - random.Below(4); });
}

TEST(PriorityFloodStates, OnlyPixelsAreUntouchedAndOnlyTheMarginBesideThemIsAcross)
{
    for (bool const wraps : {false, true})
    {
        cv::Size const size(5, 3);
        Neighbourhood const neighbourhood({{-2, 0}, {1, 1}}, wraps, size);
        PaddedGrid<std::uint32_t> const grid(neighbourhood, size);
        FloodStates<std::uint32_t> states(grid, wraps, size);
        ASSERT_EQ(grid.Margin(), 2U);
        for (int y = -2; y < size.height + 2; ++y)
        {
            for (int x = -2; x < size.width + 2; ++x)
            {
                auto const element =
                    grid.RowStart(0) + static_cast<std::uint32_t>(y * (size.width + 4)) + static_cast<std::uint32_t>(x);
                bool const isRow = y >= 0 && y < size.height;
                bool const isPixel = isRow && x >= 0 && x < size.width;
                EXPECT_EQ(states.IsUntouched(element), isPixel) << x << " " << y;
                EXPECT_EQ(states.IsAcross(element), wraps && isRow && !isPixel) << x << " " << y;
            }
        }
        std::uint32_t const pixel = grid.RowStart(1) + 4;
        states.Touch(pixel);
        EXPECT_FALSE(states.IsUntouched(pixel));
        EXPECT_TRUE(states.IsUntouched(pixel - 1));
    }
}

/// What a flood asks to be reached: the pixel from its key, and the key of the pixel that it comes from.
struct Reached
{
    cv::Point pixel;
    int from;

    bool operator==(Reached const & other) const { return pixel == other.pixel && from == other.from; }
};

/// The key of a pixel: in no order with those of its neighbours, so that the queue has to look back.
int KeyOf(cv::Point pixel)
{
    return (pixel.x * 7 + pixel.y * 13) % 17;
}

/// The flood from one seed with a std::push_heap of our own.
std::vector<Reached> PlainFlood(cv::Size size, int connexity, cv::Point seed)
{
    using Entry = std::pair<int, cv::Point>;
    auto const later = [](Entry const & one, Entry const & other) {
        return other.first < one.first;
    };
    std::vector<Reached> all;
    cv::Mat1b touched(size, uchar{0});
    touched(seed) = 1;
    std::vector<Entry> heap{{KeyOf(seed), seed}};
    while (!heap.empty())
    {
        std::pop_heap(heap.begin(), heap.end(), later);
        auto const [key, pixel] = heap.back();
        heap.pop_back();
        for (cv::Point const & offset : tests::OracleOffsets(connexity))
        {
            cv::Point next = pixel + offset;
            if (tests::OracleWraps(connexity) && next.x < 0) next.x += size.width;
            if (tests::OracleWraps(connexity) && next.x >= size.width) next.x -= size.width;
            if (!cv::Rect(cv::Point(), size).contains(next) || touched(next) != 0) continue;
            touched(next) = 1;
            all.push_back({next, key});
            heap.emplace_back(KeyOf(next), next);
            std::push_heap(heap.begin(), heap.end(), later);
        }
    }
    return all;
}

template <class Index>
std::vector<Reached> FloodOfGrid(cv::Size size, int connexity, cv::Point seed)
{
    Neighbourhood const neighbourhood(tests::OracleOffsets(connexity), tests::OracleWraps(connexity), size);
    PaddedGrid<Index> const grid(neighbourhood, size);
    FloodStates<Index> states(grid, neighbourhood.WrapsInX(), size);
    HeapQueue<int, Index, std::less<>> queue;
    auto const elementOf = [&grid](cv::Point pixel) {
        return static_cast<Index>(grid.RowStart(pixel.y) + static_cast<Index>(pixel.x));
    };
    std::map<Index, cv::Point> pixels;
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            pixels[elementOf({x, y})] = {x, y};
        }
    }
    states.Touch(elementOf(seed));
    queue.Push(KeyOf(seed), elementOf(seed));
    std::vector<Reached> all;
    PriorityFlood(grid, states, queue, [&](Index element, int from) {
        cv::Point const pixel = pixels.at(element);
        all.push_back({pixel, from});
        return KeyOf(pixel);
    });
    return all;
}

TEST(PriorityFlood, ReachesThePixelsOfThePlainFloodInItsOrder)
{
    Random random(65);
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        for (cv::Size const size : {cv::Size(1, 1), cv::Size(1, 7), cv::Size(2, 5), cv::Size(3, 4), cv::Size(19, 11)})
        {
            cv::Point const seed(random.Below(size.width), random.Below(size.height));
            auto const expected = PlainFlood(size, number, seed);
            EXPECT_TRUE(FloodOfGrid<std::uint32_t>(size, number, seed) == expected) << number << " " << size;
            EXPECT_TRUE(FloodOfGrid<std::uint64_t>(size, number, seed) == expected) << number << " " << size;
        }
    }
}

TEST(PriorityFlood, ReachesEveryPixelOnce)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        cv::Size const size(23, 9);
        auto const all = FloodOfGrid<std::uint32_t>(size, number, {3, 4});
        EXPECT_EQ(all.size(), static_cast<std::size_t>(size.area()) - 1) << number;
    }
}

TEST(PriorityFlood, FromAnEmptyQueueReachesNothing)
{
    cv::Size const size(4, 4);
    Neighbourhood const neighbourhood(tests::OracleOffsets(0), false, size);
    PaddedGrid<std::uint32_t> const grid(neighbourhood, size);
    FloodStates<std::uint32_t> states(grid, false, size);
    HeapQueue<int, std::uint32_t, std::less<>> queue;
    int reached = 0;
    PriorityFlood(grid, states, queue, [&](std::uint32_t, int) { return ++reached; });
    EXPECT_EQ(reached, 0);
}

} // namespace

} // namespace morvane::common
