// The queue of a flood against a table of stacks.
#include <morvane/connexity/MaxTree.h>

#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <type_traits>
#include <utility>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Random;

TEST(LevelQueue, EntriesHaveSixtyFourBitsByDefault)
{
    LevelQueue<uchar> queue({1});
    EXPECT_TRUE((std::is_same_v<decltype(queue.Pop(0)), std::uint64_t>));
    std::uint64_t const entry = (std::uint64_t{0x12345678U} << 32U) | 0x9ABCDEF0U;
    queue.Push(0, entry);
    EXPECT_EQ(queue.Pop(0), entry);
}

TEST(LevelQueue, TakesSignedLevels)
{
    LevelQueue<int> queue({1, 2});
    queue.Push(0, 4);
    queue.Push(1, 5);
    EXPECT_EQ(queue.Top(), 1);
    EXPECT_EQ(queue.Pop(1), 5U);
    EXPECT_EQ(queue.Top(), 0);
}

TEST(MaxTreeStore, HasNoNodesOnceItWasMoved)
{
    MaxTreeStore<MaxTreeNode<uchar, common::AreaAttribute>> store;
    store.Create();
    ASSERT_NE(store.Get(1), nullptr);
    auto const moved = std::move(store);
    EXPECT_NE(moved.Get(1), nullptr);
    // NOLINTNEXTLINE(bugprone-use-after-move): what is left must not be reached into.
    EXPECT_EQ(store.Get(1), nullptr);
}

TEST(LevelQueue, TheLastOfTheHighestLevelLeavesFirst)
{
    LevelQueue<uchar> queue({2, 0, 3, 1});
    EXPECT_TRUE(queue.IsEmpty());
    queue.Push(2, 20);
    queue.Push(0, 1);
    queue.Push(2, 21);
    EXPECT_EQ(queue.Top(), 2);
    EXPECT_EQ(queue.Pop(2), 21U);
    queue.Push(3, 30);
    EXPECT_EQ(queue.Top(), 3);
    EXPECT_EQ(queue.Pop(3), 30U);
    EXPECT_EQ(queue.Top(), 2);
    EXPECT_EQ(queue.Pop(2), 20U);
    EXPECT_FALSE(queue.IsEmpty());
    EXPECT_EQ(queue.Top(), 0);
    EXPECT_EQ(queue.Pop(0), 1U);
    EXPECT_TRUE(queue.IsEmpty());
}

TEST(LevelQueue, TakesAsManyAsItsHistogramAgain)
{
    LevelQueue<uchar> queue({1, 2});
    for (std::uint64_t round = 0; round < 3; ++round)
    {
        queue.Push(1, 3 * round);
        queue.Push(1, 3 * round + 1);
        queue.Push(0, 3 * round + 2);
        EXPECT_EQ(queue.Pop(1), 3 * round + 1);
        EXPECT_EQ(queue.Pop(1), 3 * round);
        EXPECT_EQ(queue.Top(), 0);
        EXPECT_EQ(queue.Pop(0), 3 * round + 2);
    }
}

/// Random pushes and pops; level @p base stands for the first of the few that the histogram fills.
template <class T>
void ExpectStacks(Random & random, std::size_t levels, int filled)
{
    std::vector<std::size_t> histogram(levels);
    std::vector<std::size_t> used{0, levels - 1};
    for (int index = 0; index < filled; ++index)
    {
        used.push_back(static_cast<std::size_t>(random.Below(static_cast<int>(levels))));
    }
    for (std::size_t const level : used)
    {
        int const capacity = 1 + random.Below(6);
        histogram[level] = static_cast<std::size_t>(capacity);
    }
    LevelQueue<T> queue(histogram);
    std::map<std::size_t, std::vector<std::uint64_t>> stacks;
    std::size_t full = 0;
    for (int round = 0; round < 5000; ++round)
    {
        std::size_t const level = used[static_cast<std::size_t>(random.Below(static_cast<int>(used.size())))];
        if (random.Chance(0.55))
        {
            std::vector<std::uint64_t> & stack = stacks[level];
            if (stack.size() == histogram[level])
            {
                ++full;
                continue;
            }
            stack.push_back(random.Next());
            queue.Push(static_cast<T>(level), stack.back());
        }
        else if (!stacks.empty())
        {
            auto const top = std::prev(stacks.end());
            ASSERT_EQ(static_cast<std::size_t>(queue.Top()), top->first);
            ASSERT_EQ(queue.Pop(static_cast<T>(top->first)), top->second.back());
            top->second.pop_back();
            if (top->second.empty()) stacks.erase(top);
        }
        ASSERT_EQ(queue.IsEmpty(), stacks.empty());
    }
    EXPECT_GT(full, 0U);
}

TEST(LevelQueue, AgreesWithATableOfStacks)
{
    Random random(54);
    for (int round = 0; round < 5; ++round)
    {
        ExpectStacks<uchar>(random, 256, 4);
        ExpectStacks<uchar>(random, 2, 1);
        ExpectStacks<uchar>(random, 1, 0);
        ExpectStacks<ushort>(random, 65536, 8);
        ExpectStacks<ushort>(random, 4097, 3);
        ExpectStacks<std::uint32_t>(random, 100000, 6);
    }
}

} // namespace

} // namespace morvane::connexity
