#include "connexity/GreyFlood.h"

#include "common/ChunkedFifos.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace morvane::connexity::flooding_internals
{

namespace
{

constexpr int kUnreached = 0;
constexpr int kLine = -1;
constexpr int kQueued = -2;

/// One more than the largest cost that there is, 510, and the number of queues.
constexpr int kNoCost = 512;

/// What pixel b costs when it is seen from pixel a: dark ones go first.
std::size_t Cost(uchar a, uchar b)
{
    int const cost = std::abs(a - b) + a;
    return static_cast<std::size_t>(cost);
}

/// The flood over two planes whose rows are @p stride elements apart. The status is kept in the markers; their border of
/// lines keeps every neighbour inside.
template <class Index>
class Flood
{
public:
    Flood(uchar const * image, int * markers, cv::Size size, std::size_t stride)
        : m_image(image)
        , m_markers(markers)
        , m_size(size)
        , m_stride(static_cast<Index>(stride))
        , m_steps{static_cast<Index>(Index{0} - 1U), 1, static_cast<Index>(Index{0} - m_stride), m_stride}
    {}

    bool Run()
    {
        DrawBorder();
        PushFirst();
        std::size_t active = m_queues.FirstFrom(0);
        if (active == kNoCost) return false;
        for (; active != kNoCost; active = m_queues.FirstFrom(active))
        {
            Index const pixel = m_queues.Pop(active);
            int const label = LabelFrom(pixel);
            m_markers[pixel] = label;
            if (label != kLine) active = std::min(active, PushNeighbours(pixel));
        }
        return true;
    }

private:
    [[nodiscard]] Index RowStart(int y) const { return static_cast<Index>(y) * m_stride; }

    void DrawBorder()
    {
        if (m_size.width == 0 || m_size.height == 0) return;
        std::fill_n(m_markers, m_size.width, kLine);
        std::fill_n(m_markers + RowStart(m_size.height - 1), m_size.width, kLine);
        for (int y = 1; y < m_size.height - 1; ++y)
        {
            int * const row = m_markers + RowStart(y);
            row[0] = kLine;
            row[m_size.width - 1] = kLine;
        }
    }

    /// Queues the pixels beside the markers.
    void PushFirst()
    {
        for (int y = 1; y < m_size.height - 1; ++y)
        {
            for (int x = 1; x < m_size.width - 1; ++x)
            {
                Index const pixel = RowStart(y) + static_cast<Index>(x);
                if (m_markers[pixel] < 0) m_markers[pixel] = kUnreached;
                if (m_markers[pixel] != kUnreached) continue;
                std::size_t cost = kNoCost;
                for (Index const step : m_steps)
                {
                    Index const neighbour = pixel + step;
                    if (m_markers[neighbour] > 0) cost = std::min(cost, Cost(m_image[pixel], m_image[neighbour]));
                }
                if (cost != kNoCost) Push(cost, pixel);
            }
        }
    }

    void Push(std::size_t cost, Index pixel)
    {
        m_queues.Push(cost, pixel);
        m_markers[pixel] = kQueued;
    }

    /// The label of the labelled neighbours, a line where they differ.
    [[nodiscard]] int LabelFrom(Index pixel) const
    {
        int label = kUnreached;
        for (Index const step : m_steps)
        {
            int const other = m_markers[static_cast<Index>(pixel + step)];
            if (other <= 0 || other == label) continue;
            if (label != kUnreached) return kLine;
            label = other;
        }
        return label;
    }

    /// Queues the neighbours that were not reached. @return the least of their costs
    std::size_t PushNeighbours(Index pixel)
    {
        std::size_t least = kNoCost;
        for (Index const step : m_steps)
        {
            Index const neighbour = pixel + step;
            if (m_markers[neighbour] != kUnreached) continue;
            std::size_t const cost = Cost(m_image[pixel], m_image[neighbour]);
            Push(cost, neighbour);
            least = std::min(least, cost);
        }
        return least;
    }

    uchar const * m_image;
    int * m_markers;
    cv::Size m_size;
    Index m_stride;
    /// To the left, the right, up and down; steps back wrap, and back again when they are added.
    std::array<Index, 4> m_steps;
    common::ChunkedFifos<Index, kNoCost> m_queues;
};

/// Floods matrices whose rows are as many elements apart.
bool FloodAligned(cv::Mat const & image, cv::Mat & markers)
{
    std::size_t const stride = markers.step1();
    auto * const pixels = markers.ptr<int>();
    if (stride * static_cast<std::size_t>(markers.rows) <= std::numeric_limits<std::uint32_t>::max())
    {
        return Flood<std::uint32_t>(image.ptr(), pixels, markers.size(), stride).Run();
    }
    return Flood<std::uint64_t>(image.ptr(), pixels, markers.size(), stride).Run();
}

} // namespace

bool FloodGrey(cv::Mat const & image, cv::Mat & markers)
{
    if (image.step1() == markers.step1()) return FloodAligned(image, markers);
    cv::Mat packed = markers.clone();
    bool const isFlooded = FloodAligned(image.clone(), packed);
    packed.copyTo(markers);
    return isFlooded;
}

} // namespace morvane::connexity::flooding_internals
