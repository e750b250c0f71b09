// Queues that share their memory, against as many queues of the standard library.
#include "common/ChunkedFifos.h"

#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace morvane::common
{

namespace
{

using tests::Random;

/// The queues and their plain likeness.
template <class Item, std::size_t kQueues>
class Pair
{
public:
    void Push(std::size_t queue, Item item)
    {
        m_fifos->Push(queue, item);
        m_plain.at(queue).push_back(item);
    }

    /// Pops from both; @p queue must hold something.
    void ExpectPop(std::size_t queue)
    {
        ASSERT_EQ(m_fifos->Pop(queue), m_plain.at(queue).front()) << "queue " << queue;
        m_plain.at(queue).pop_front();
    }

    [[nodiscard]] std::size_t PlainFirstFrom(std::size_t queue) const
    {
        while (queue < kQueues && m_plain.at(queue).empty())
        {
            ++queue;
        }
        return queue;
    }

    void ExpectFirstFrom(std::size_t queue) const
    {
        ASSERT_EQ(m_fifos->FirstFrom(queue), PlainFirstFrom(queue)) << "from " << queue;
    }

    void ExpectAllFirst() const
    {
        for (std::size_t queue = 0; queue <= kQueues; ++queue)
        {
            ASSERT_NO_FATAL_FAILURE(ExpectFirstFrom(queue));
        }
    }

    void ExpectDrains()
    {
        for (std::size_t queue = PlainFirstFrom(0); queue != kQueues; queue = PlainFirstFrom(queue))
        {
            ASSERT_NO_FATAL_FAILURE(ExpectFirstFrom(0));
            ASSERT_NO_FATAL_FAILURE(ExpectPop(queue));
        }
        ASSERT_NO_FATAL_FAILURE(ExpectAllFirst());
    }

private:
    // On the heap, as it is large for a stack.
    std::unique_ptr<ChunkedFifos<Item, kQueues>> m_fifos = std::make_unique<ChunkedFifos<Item, kQueues>>();
    std::array<std::deque<Item>, kQueues> m_plain;
};

/// Pushes and pops at random; few queues at a time, so that they grow beyond a chunk, and a drift up and down.
template <class Item, std::size_t kQueues>
void ExpectLikeDeques(Random & random, int steps)
{
    Pair<Item, kQueues> pair;
    double pushShare = 0.5;
    std::size_t spread = 1;
    for (int step = 0; step < steps; ++step)
    {
        if (step % 1000 == 0)
        {
            pushShare = 0.3 + 0.5 * random.Unit();
            spread = 1 + static_cast<std::size_t>(random.Below(random.Chance(0.5) ? 3 : static_cast<int>(kQueues)));
        }
        auto const below = [&](std::size_t bound) {
            return static_cast<std::size_t>(random.Below(static_cast<int>(bound)));
        };
        std::size_t const first = pair.PlainFirstFrom(below(kQueues));
        if (random.Chance(pushShare))
        {
            pair.Push((kQueues / 2 + below(spread)) % kQueues, static_cast<Item>(random.Next()));
        }
        else if (first != kQueues)
        {
            ASSERT_NO_FATAL_FAILURE(pair.ExpectPop(first));
        }
        ASSERT_NO_FATAL_FAILURE(pair.ExpectFirstFrom(below(kQueues + 1)));
        if (step % 500 == 0)
        {
            ASSERT_NO_FATAL_FAILURE(pair.ExpectAllFirst());
        }
    }
    pair.ExpectDrains();
}

TEST(ChunkedFifos, RandomPushesAndPops_AreThoseOfDeques)
{
    Random random(700);
    ExpectLikeDeques<std::uint32_t, 512>(random, 40000);
    ExpectLikeDeques<std::uint64_t, 512>(random, 40000);
    ExpectLikeDeques<std::uint32_t, 64>(random, 20000);
    ExpectLikeDeques<unsigned char, 128>(random, 20000);
}

TEST(ChunkedFifos, NothingPushed_IsNowhereFilled)
{
    ChunkedFifos<std::uint32_t, 512> const fifos;
    for (std::size_t queue = 0; queue <= 512; ++queue)
    {
        EXPECT_EQ(fifos.FirstFrom(queue), 512U);
    }
}

TEST(ChunkedFifos, OneFilledQueue_IsFirstFromEveryQueueUpToIt)
{
    ChunkedFifos<std::uint32_t, 512> fifos;
    for (std::size_t filled = 0; filled < 512; ++filled)
    {
        fifos.Push(filled, 7);
        for (std::size_t queue = 0; queue <= 512; ++queue)
        {
            ASSERT_EQ(fifos.FirstFrom(queue), queue <= filled ? filled : 512U) << filled << " from " << queue;
        }
        ASSERT_EQ(fifos.Pop(filled), 7U);
    }
    EXPECT_EQ(fifos.FirstFrom(0), 512U);
}

TEST(ChunkedFifos, QueuesAtTheEndsOfWords_AreFoundInOrder)
{
    std::vector<std::size_t> const ends{0, 63, 64, 127, 128, 191, 192, 255, 256, 319, 320, 383, 384, 447, 448, 511};
    Pair<std::uint32_t, 512> pair;
    for (std::size_t const queue : ends)
    {
        pair.Push(queue, static_cast<std::uint32_t>(1000 + queue));
        ASSERT_NO_FATAL_FAILURE(pair.ExpectAllFirst());
    }
    // From the middle outwards, so that gaps of whole words open.
    for (std::size_t step = 0; step < ends.size() / 2; ++step)
    {
        ASSERT_NO_FATAL_FAILURE(pair.ExpectPop(ends[ends.size() / 2 - 1 - step]));
        ASSERT_NO_FATAL_FAILURE(pair.ExpectAllFirst());
        ASSERT_NO_FATAL_FAILURE(pair.ExpectPop(ends[ends.size() / 2 + step]));
        ASSERT_NO_FATAL_FAILURE(pair.ExpectAllFirst());
    }
}

TEST(ChunkedFifos, QueuesOfEveryLength_KeepTheirOrder)
{
    // Lengths to either side of one and several chunks, filled and emptied in turn by one queue after the other.
    Pair<std::uint32_t, 128> pair;
    for (int length = 1; length <= 400; ++length)
    {
        auto const queue = static_cast<std::size_t>(length % 128);
        for (int item = 0; item < length; ++item)
        {
            pair.Push(queue, static_cast<std::uint32_t>(1000 * length + item));
        }
        for (int item = 0; item < length; ++item)
        {
            ASSERT_NO_FATAL_FAILURE(pair.ExpectFirstFrom(0));
            ASSERT_NO_FATAL_FAILURE(pair.ExpectPop(queue));
        }
        ASSERT_NO_FATAL_FAILURE(pair.ExpectFirstFrom(0));
    }
}

TEST(ChunkedFifos, QueuesFilledInTurn_DoNotMix)
{
    Pair<std::uint32_t, 64> pair;
    for (std::uint32_t item = 0; item < 20000; ++item)
    {
        pair.Push(item % 64, item);
    }
    // Half of each is taken before all grow again, over the chunks that came free.
    for (std::uint32_t item = 0; item < 10000; ++item)
    {
        ASSERT_NO_FATAL_FAILURE(pair.ExpectPop(item % 64));
    }
    for (std::uint32_t item = 0; item < 20000; ++item)
    {
        pair.Push((item * 7) % 64, 100000 + item);
    }
    pair.ExpectDrains();
}

/// An item that counts how many were made without a value: those that queues made room for.
struct Counted
{
    Counted() { ++made; }
    explicit Counted(int number)
        : value(number)
    {}

    static inline int made = 0;
    int value = 0;
};

TEST(ChunkedFifos, EmptiedQueues_GiveTheirRoomToTheNext)
{
    ChunkedFifos<Counted, 512> fifos;
    Counted::made = 0;
    auto const fillAndEmpty = [&](std::size_t queue, int length) {
        for (int item = 0; item < length; ++item)
        {
            fifos.Push(queue, Counted(item));
        }
        for (int item = 0; item < length; ++item)
        {
            ASSERT_EQ(fifos.Pop(queue).value, item);
        }
    };
    fillAndEmpty(0, 1000);
    int const room = Counted::made;
    EXPECT_GE(room, 1000);
    for (std::size_t queue = 0; queue < 512; ++queue)
    {
        ASSERT_NO_FATAL_FAILURE(fillAndEmpty(queue, 1 + static_cast<int>(queue) % 1000));
    }
    EXPECT_EQ(Counted::made, room) << "room was made though there was some";
}

} // namespace

} // namespace morvane::common
