// The set of levels against std::set, on both sides of the limits at which it gets another floor.
#include <morvane/common/LevelSet.h>

#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <set>

namespace morvane::common
{

namespace
{

using tests::Random;

constexpr std::array<std::size_t, 12> kLimits{1, 2, 63, 64, 65, 128, 4095, 4096, 4097, 262144, 262145, 300000};

std::size_t PlainLastUpTo(std::set<std::size_t> const & levels, std::size_t level)
{
    auto const after = levels.upper_bound(level);
    return after == levels.begin() ? LevelSet::kNone : *std::prev(after);
}

std::size_t PlainFirstFrom(std::set<std::size_t> const & levels, std::size_t level)
{
    auto const first = levels.lower_bound(level);
    return first == levels.end() ? LevelSet::kNone : *first;
}

/// Asks about a level and, as the answer may be wrong only around what is there, the neighbours of its answers.
void ExpectSame(LevelSet const & set, std::set<std::size_t> const & plain, std::size_t level)
{
    ASSERT_EQ(set.Contains(level), plain.count(level) == 1) << level;
    ASSERT_EQ(set.LastUpTo(level), PlainLastUpTo(plain, level)) << level;
    ASSERT_EQ(set.FirstFrom(level), PlainFirstFrom(plain, level)) << level;
}

/// A level, often near the borders of words and of the whole.
std::size_t AnyLevel(Random & random, std::size_t limit)
{
    auto const bound = static_cast<int>(limit);
    int const kind = random.Below(4);
    if (kind == 0) return limit - 1 - static_cast<std::size_t>(random.Below(std::min(bound, 3)));
    auto const level = static_cast<std::size_t>(random.Below(bound));
    if (kind == 1) return std::min(level / 64 * 64 + (random.Chance(0.5) ? 63U : 0U), limit - 1);
    return kind == 2 ? static_cast<std::size_t>(random.Below(std::min(bound, 70))) : level;
}

TEST(LevelSet, IsEmptyAtFirst)
{
    for (std::size_t const limit : kLimits)
    {
        LevelSet const set(limit);
        for (std::size_t const level : {std::size_t{0}, limit / 2, limit - 1})
        {
            EXPECT_FALSE(set.Contains(level)) << limit;
            EXPECT_EQ(set.LastUpTo(level), LevelSet::kNone) << limit;
            EXPECT_EQ(set.FirstFrom(level), LevelSet::kNone) << limit;
        }
    }
}

TEST(LevelSet, FindsASingleLevelFromEverywhere)
{
    for (std::size_t const limit : {1U, 64U, 65U, 4096U, 4097U})
    {
        for (std::size_t const level : {std::size_t{0}, limit / 3, limit - 1})
        {
            LevelSet set(limit);
            set.Insert(level);
            std::set<std::size_t> const plain{level};
            for (std::size_t asked = 0; asked < limit; ++asked)
            {
                ExpectSame(set, plain, asked);
            }
            set.Remove(level);
            EXPECT_EQ(set.LastUpTo(limit - 1), LevelSet::kNone);
            EXPECT_EQ(set.FirstFrom(0), LevelSet::kNone);
        }
    }
}

TEST(LevelSet, FindsNothingFromTheLimitOn)
{
    for (std::size_t const limit : kLimits)
    {
        LevelSet set(limit);
        set.Insert(limit - 1);
        EXPECT_EQ(set.FirstFrom(limit), LevelSet::kNone) << limit;
        EXPECT_EQ(set.FirstFrom(limit + 1), LevelSet::kNone) << limit;
        EXPECT_EQ(set.FirstFrom(LevelSet::kNone), LevelSet::kNone) << limit;
    }
}

TEST(LevelSet, AgreesWithAPlainSet)
{
    Random random(53);
    for (std::size_t const limit : kLimits)
    {
        LevelSet set(limit);
        std::set<std::size_t> plain;
        for (int round = 0; round < 6000; ++round)
        {
            SCOPED_TRACE(::testing::Message() << "limit " << limit << ", round " << round);
            std::size_t const level = AnyLevel(random, limit);
            // Long stretches of growth and of decay, so that words fill and empty.
            if (random.Chance(round / 1500 % 2 == 0 ? 0.7 : 0.3))
            {
                set.Insert(level);
                plain.insert(level);
            }
            else
            {
                std::size_t const found = PlainFirstFrom(plain, level);
                std::size_t const removed = found == LevelSet::kNone || random.Chance(0.2) ? level : found;
                set.Remove(removed);
                plain.erase(removed);
            }
            ExpectSame(set, plain, level);
            ExpectSame(set, plain, AnyLevel(random, limit));
            if (HasFatalFailure()) return;
        }
        for (std::size_t const level : std::set<std::size_t>(plain))
        {
            set.Remove(level);
        }
        EXPECT_EQ(set.LastUpTo(limit - 1), LevelSet::kNone);
        EXPECT_EQ(set.FirstFrom(0), LevelSet::kNone);
    }
}

TEST(LevelSet, HoldsAllLevelsAtOnce)
{
    for (std::size_t const limit : {1U, 64U, 65U, 4096U, 4097U})
    {
        LevelSet set(limit);
        for (std::size_t level = 0; level < limit; ++level)
        {
            set.Insert(level);
            set.Insert(level);
        }
        for (std::size_t level = 0; level < limit; ++level)
        {
            ASSERT_EQ(set.LastUpTo(level), level);
            ASSERT_EQ(set.FirstFrom(level), level);
        }
    }
}

} // namespace

} // namespace morvane::common
