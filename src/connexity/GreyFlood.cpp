#include "connexity/GreyFlood.h"

#include "common/ChunkedFifos.h"
#include "common/Prefetch.h"
#include "common/ValueRange.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

namespace morvane::connexity::flooding_internals
{

namespace
{

constexpr int kUnreached = 0;
constexpr int kLine = -1;
constexpr int kQueued = -2;

/// One more than the largest cost that there is, 510, and the number of queues.
constexpr std::size_t kNoCost = 512;

/// What pixel b costs when it is seen from pixel a: dark ones go first.
std::size_t Cost(int a, int b)
{
    int const cost = std::abs(a - b) + a;
    return static_cast<std::size_t>(cost);
}

/// A pixel's grey value and its marker, in which the status is kept, in one word: a flood that jumps from pixel to pixel
/// waits for memory, and so for one plane rather than two.
template <class Word>
struct Pixel
{
    static constexpr unsigned kGreyBits = 8;
    static constexpr int kLeastMarker = kQueued;
    static constexpr Word kUnreachedStatus = kUnreached - kLeastMarker;
    /// Larger markers need a wider word.
    static constexpr std::uint64_t kMostMarker = (std::numeric_limits<Word>::max() >> kGreyBits) - kUnreachedStatus;

    static Word Make(int grey, int marker)
    {
        return static_cast<Word>(static_cast<Word>(std::int64_t{marker} - kLeastMarker) << kGreyBits) |
               static_cast<Word>(grey);
    }

    static int Grey(Word word) { return static_cast<int>(word & ((1U << kGreyBits) - 1)); }

    static int Marker(Word word)
    {
        return static_cast<int>(static_cast<std::int64_t>(word >> kGreyBits) + kLeastMarker);
    }
};

/// The flood over a plane without gaps. Its border of lines keeps every neighbour inside.
template <class Word, class Index>
class Flood
{
    using Of = Pixel<Word>;

public:
    Flood(cv::Mat const & image, cv::Mat const & markers)
        : m_size(markers.size())
        , m_plane(markers.total())
        , m_steps{
              static_cast<Index>(Index{0} - 1U), 1, static_cast<Index>(Index{0} - static_cast<Index>(markers.cols)),
              static_cast<Index>(markers.cols)}
    {
        for (int y = 0; y < m_size.height; ++y)
        {
            uchar const * const grey = image.ptr(y);
            int const * const marker = markers.ptr<int>(y);
            Word * const row = m_plane.data() + RowStart(y);
            bool const isBorder = y == 0 || y == m_size.height - 1;
            for (int x = 0; x < m_size.width; ++x)
            {
                row[x] = Of::Make(grey[x], isBorder ? kLine : std::max(marker[x], kUnreached));
            }
            row[0] = Of::Make(grey[0], kLine);
            row[m_size.width - 1] = Of::Make(grey[m_size.width - 1], kLine);
        }
    }

    bool Run()
    {
        PushFirst();
        std::size_t active = m_queues.FirstFrom(0);
        if (active == kNoCost) return false;
        while (active != kNoCost)
        {
            AskFor(m_queues.Ahead(active));
            active = std::min(active, Spread(m_queues.Pop(active)));
            if (m_queues.IsEmpty(active)) active = m_queues.FirstFrom(active);
        }
        return true;
    }

    void CopyTo(cv::Mat & markers) const
    {
        for (int y = 0; y < m_size.height; ++y)
        {
            Word const * const row = m_plane.data() + RowStart(y);
            std::transform(row, row + m_size.width, markers.ptr<int>(y), Of::Marker);
        }
    }

private:
    [[nodiscard]] std::size_t RowStart(int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_size.width);
    }

    /// Queues the pixels beside the markers.
    void PushFirst()
    {
        for (int y = 1; y < m_size.height - 1; ++y)
        {
            for (int x = 1; x < m_size.width - 1; ++x)
            {
                auto const pixel = static_cast<Index>(RowStart(y) + static_cast<std::size_t>(x));
                if (Of::Marker(m_plane[pixel]) != kUnreached) continue;
                std::size_t cost = kNoCost;
                for (Index const step : m_steps)
                {
                    Word const neighbour = m_plane[static_cast<Index>(pixel + step)];
                    if (Of::Marker(neighbour) <= 0) continue;
                    cost = std::min(cost, Cost(Of::Grey(m_plane[pixel]), Of::Grey(neighbour)));
                }
                if (cost == kNoCost) continue;
                m_plane[pixel] = Of::Make(Of::Grey(m_plane[pixel]), kQueued);
                m_queues.Push(cost, pixel);
            }
        }
    }

    /// Asks for the memory around a pixel, which lies far from the one before it.
    void AskFor(Index pixel) const
    {
        // An item that is not there yet lies on the border.
        if (pixel < static_cast<Index>(m_size.width)) return;
        Word const * const word = m_plane.data() + pixel;
        common::Prefetch(word);
        common::Prefetch(word - m_size.width);
        common::Prefetch(word + m_size.width);
    }

    /// Labels a pixel that has waited as its labelled neighbours are, a line where they differ, and queues the others unless
    /// it is one. @return the least of their costs
    std::size_t Spread(Index pixel)
    {
        Word * const plane = m_plane.data();
        std::array<Index, 4> const steps = m_steps;
        Word const self = plane[pixel];
        std::array<Word, 4> const words{
            plane[static_cast<Index>(pixel + steps[0])], plane[static_cast<Index>(pixel + steps[1])],
            plane[static_cast<Index>(pixel + steps[2])], plane[static_cast<Index>(pixel + steps[3])]};
        // Labels are the largest statuses, and there is one: without branches, as what the neighbours are cannot be
        // predicted.
        Word most = 0;
        for (Word const word : words)
        {
            Word const status = word >> Of::kGreyBits;
            most = status > most ? status : most;
        }
        bool isLine = false;
        for (Word const word : words)
        {
            Word const status = word >> Of::kGreyBits;
            isLine |= status > Of::kUnreachedStatus && status != most;
        }
        int const grey = Of::Grey(self);
        if (isLine)
        {
            plane[pixel] = Of::Make(grey, kLine);
            return kNoCost;
        }
        plane[pixel] = static_cast<Word>(most << Of::kGreyBits) | static_cast<Word>(grey);
        std::size_t cheapest = kNoCost;
        for (std::size_t side = 0; side < 4; ++side)
        {
            if (words[side] >> Of::kGreyBits != Of::kUnreachedStatus) continue;
            int const other = Of::Grey(words[side]);
            auto const neighbour = static_cast<Index>(pixel + steps[side]);
            std::size_t const cost = Cost(grey, other);
            plane[neighbour] = Of::Make(other, kQueued);
            m_queues.Push(cost, neighbour);
            cheapest = std::min(cheapest, cost);
        }
        return cheapest;
    }

    cv::Size m_size;
    std::vector<Word> m_plane;
    /// To the left, the right, up and down; steps back wrap, and back again when they are added.
    std::array<Index, 4> m_steps;
    common::ChunkedFifos<Index, kNoCost> m_queues;
};

template <class Word, class Index>
bool FloodIn(cv::Mat const & image, cv::Mat & markers)
{
    Flood<Word, Index> flood(image, markers);
    bool const isFlooded = flood.Run();
    flood.CopyTo(markers);
    return isFlooded;
}

} // namespace

bool FloodGrey(cv::Mat const & image, cv::Mat & markers)
{
    if (markers.total() > std::numeric_limits<std::uint32_t>::max())
    {
        return FloodIn<std::uint64_t, std::uint64_t>(image, markers);
    }
    int const most = common::WidenedBy<int>(markers, {0, 0}).high;
    return static_cast<std::uint64_t>(most) <= Pixel<std::uint32_t>::kMostMarker
               ? FloodIn<std::uint32_t, std::uint32_t>(image, markers)
               : FloodIn<std::uint64_t, std::uint32_t>(image, markers);
}

} // namespace morvane::connexity::flooding_internals
