#include <morvane/features/Skeleton.h>

#include "common/Dispatch.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace morvane::features
{

namespace
{

/// The neighbours of a pixel as bits, clockwise from the one above.
constexpr unsigned kNeighbours = 8;

/// The values around a pixel, each 0 or 1, by their numbers 2 to 9, clockwise from the one above.
class Surroundings
{
public:
    explicit Surroundings(unsigned code)
        : m_code(code)
    {}

    /// @param number 2 to 10; 10 is 2 again
    [[nodiscard]] bool operator[](unsigned number) const
    {
        return ((m_code >> ((number - 2) % kNeighbours)) & 1U) != 0;
    }

private:
    unsigned m_code;
};

/// Which half of an iteration.
enum class Half : std::size_t
{
    First = 0,
    Second = 1,
};

bool IsRemovedByZhangSuen(Surroundings const & p, Half half)
{
    int transitions = 0;
    int sum = 0;
    for (unsigned number = 2; number < 2 + kNeighbours; ++number)
    {
        transitions += static_cast<int>(!p[number] && p[number + 1]);
        sum += static_cast<int>(p[number]);
    }
    bool const m1 = half == Half::First ? p[2] && p[4] && p[6] : p[2] && p[4] && p[8];
    bool const m2 = half == Half::First ? p[4] && p[6] && p[8] : p[2] && p[6] && p[8];
    return transitions == 1 && sum >= 2 && sum <= 6 && !m1 && !m2;
}

bool IsRemovedByGuoHall(Surroundings const & p, Half half)
{
    int sides = 0;
    int pairs1 = 0;
    int pairs2 = 0;
    for (unsigned side = 2; side < 2 + kNeighbours; side += 2)
    {
        sides += static_cast<int>(!p[side] && (p[side + 1] || p[side + 2]));
        pairs1 += static_cast<int>(p[side + 7] || p[side]);
        pairs2 += static_cast<int>(p[side] || p[side + 1]);
    }
    int const pairs = std::min(pairs1, pairs2);
    bool const m = half == Half::First ? (p[6] || p[7] || !p[9]) && p[8] : (p[2] || p[3] || !p[5]) && p[4];
    return sides == 1 && pairs >= 2 && pairs <= 3 && !m;
}

/// For each of the 256 surroundings, the halves of an iteration in which a pixel that has them is removed, as bits.
using RemovalTable = std::array<uchar, std::size_t{1} << kNeighbours>;

template <class IsRemoved>
RemovalTable MakeTable(IsRemoved const & isRemoved)
{
    RemovalTable table{};
    for (unsigned code = 0; code < table.size(); ++code)
    {
        Surroundings const surroundings(code);
        unsigned const first = isRemoved(surroundings, Half::First) ? 1U : 0U;
        unsigned const second = isRemoved(surroundings, Half::Second) ? 2U : 0U;
        table[code] = static_cast<uchar>(first | second);
    }
    return table;
}

RemovalTable const & TableOf(ThinningTypes type)
{
    static RemovalTable const zhangSuen = MakeTable(IsRemovedByZhangSuen);
    static RemovalTable const guoHall = MakeTable(IsRemovedByGuoHall);
    static RemovalTable const none{};
    switch (type)
    {
    case ThinningZhangSuen:
        return zhangSuen;
    case ThinningGuoHall:
        return guoHall;
    }
    return none;
}

/// A shape from which pixels are removed until none may go.
///
/// Each pixel keeps its surroundings as a code, which changes when a neighbour is removed. Only then can it become one that
/// may go: it is looked at again in the next half of each kind, if its code says so by then.
class ThinnedShape
{
public:
    /// @param shape continuous, 0 or 1, with 3 rows and columns at least; thinned in place
    ThinnedShape(cv::Mat1b & shape, RemovalTable const & table)
        : m_shape(shape.data)
        , m_table(&table)
        , m_codes(shape.total())
        , m_isFrame(shape.total())
        , m_waiting(shape.total())
        , m_steps(StepsOver(shape.cols))
    {
        MarkFrame(shape.size());
        for (int y = 1; y < shape.rows - 1; ++y)
        {
            std::size_t const row = static_cast<std::size_t>(y) * static_cast<std::size_t>(shape.cols);
            FindCodes(row + 1, row + static_cast<std::size_t>(shape.cols) - 1);
        }
    }

    /// One half of an iteration. @return whether a pixel was removed
    bool Remove(Half half)
    {
        std::vector<std::size_t> candidates = std::exchange(m_candidates[static_cast<std::size_t>(half)], {});
        auto const bit = BitOf(half);
        // All are found before the first is removed.
        std::erase_if(candidates, [&](std::size_t pixel) {
            m_waiting[pixel] = static_cast<uchar>(m_waiting[pixel] & ~bit);
            return m_shape[pixel] == 0 || (m_table->at(m_codes[pixel]) & bit) == 0;
        });
        for (std::size_t const pixel : candidates)
        {
            m_shape[pixel] = 0;
        }
        for (std::size_t const pixel : candidates)
        {
            TellNeighbours(pixel);
        }
        return !candidates.empty();
    }

private:
    /// The distances to the neighbours, clockwise from the one above.
    static std::array<std::size_t, kNeighbours> StepsOver(int columns)
    {
        // Those back wrap, and wrap again when they are added.
        auto const row = static_cast<std::size_t>(columns);
        return {0 - row, 1 - row, 1, row + 1, row, row - 1, std::size_t{0} - 1, 0 - row - 1};
    }

    static unsigned BitOf(Half half) { return 1U << static_cast<unsigned>(half); }

    void MarkFrame(cv::Size size)
    {
        cv::Mat frame(size, CV_8UC1, m_isFrame.data());
        frame.setTo(1);
        frame(cv::Rect(1, 1, size.width - 2, size.height - 2)).setTo(0);
    }

    void FindCodes(std::size_t first, std::size_t last)
    {
        for (std::size_t pixel = first; pixel < last; ++pixel)
        {
            unsigned code = 0;
            for (unsigned neighbour = 0; neighbour < kNeighbours; ++neighbour)
            {
                code |= static_cast<unsigned>(m_shape[pixel + m_steps[neighbour]]) << neighbour;
            }
            m_codes[pixel] = static_cast<uchar>(code);
        }
        for (std::size_t pixel = first; pixel < last; ++pixel)
        {
            if (m_shape[pixel] != 0) Enqueue(pixel);
        }
    }

    /// Lets a pixel wait for the halves in which it may go as things are.
    void Enqueue(std::size_t pixel)
    {
        unsigned const halves = m_table->at(m_codes[pixel]) & ~static_cast<unsigned>(m_waiting[pixel]);
        if (halves == 0) return;
        m_waiting[pixel] = static_cast<uchar>(m_waiting[pixel] | halves);
        for (Half const half : {Half::First, Half::Second})
        {
            if ((halves & BitOf(half)) != 0) m_candidates[static_cast<std::size_t>(half)].push_back(pixel);
        }
    }

    void TellNeighbours(std::size_t pixel)
    {
        for (unsigned neighbour = 0; neighbour < kNeighbours; ++neighbour)
        {
            std::size_t const to = pixel + m_steps[neighbour];
            // Seen from there, this pixel lies on the opposite side.
            unsigned const bit = 1U << ((neighbour + kNeighbours / 2) % kNeighbours);
            m_codes[to] = static_cast<uchar>(m_codes[to] & ~bit);
            if (m_shape[to] != 0 && m_isFrame[to] == 0) Enqueue(to);
        }
    }

    uchar * m_shape;
    RemovalTable const * m_table;
    std::vector<uchar> m_codes;
    std::vector<uchar> m_isFrame;
    /// The halves for which a pixel waits, as bits.
    std::vector<uchar> m_waiting;
    std::array<std::size_t, kNeighbours> m_steps;
    std::array<std::vector<std::size_t>, 2> m_candidates;
};

} // namespace

void thinning(cv::InputArray src, cv::OutputArray dst, ThinningTypes type, int maxIterations)
{
    cv::Mat const image = src.getMat();
    CV_Assert(image.type() == CV_8UC1 && common::IsRaster(image));
    // 1 from 128 on.
    constexpr double kToOne = 0.00392156862745098;
    cv::Mat1b shape;
    image.convertTo(shape, -1, kToOne, 0.0);
    if (shape.rows >= 3 && shape.cols >= 3)
    {
        ThinnedShape thinned(shape, TableOf(type));
        for (int iteration = 0; maxIterations <= 0 || iteration < maxIterations; ++iteration)
        {
            bool const first = thinned.Remove(Half::First);
            bool const second = thinned.Remove(Half::Second);
            if (!first && !second) break;
        }
    }
    shape.convertTo(dst, -1, 255.0);
}

} // namespace morvane::features
