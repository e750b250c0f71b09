/// @file
/// The traversal engine: a raster scan with one breadth-first flood for each zone, and what happens to a finished zone.
#pragma once

#include <morvane/common/Conversions.h>
#include <morvane/common/Neighbourhood.h>
#include <morvane/common/PixelTypes.h>
#include <morvane/connexity/Conditions.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

#include <cstddef>
#include <type_traits>
#include <vector>

namespace morvane::connexity
{

/// The pixels of one zone in the order in which they left the queue, the seed first.
using Zone = std::vector<cv::Point_<int>>;

/// Stamps each finished zone with the next label, from 1.
///
/// The counter wraps silently at the limit of the label type: in 8 bits, 255 is followed by 0 and then by 1.
///
/// @tparam Out `uchar`, `ushort` (also for a `CV_16S` label image, which takes the bit pattern) or `int`
template <class Out>
struct ZoneLabelWriter
{
    cv::Mat * labels; ///< the label image, of the walked image's size, depth of @p Out
    Out label = 0;    ///< the label of the last stamped zone

    /// Takes a finished zone.
    void operator()(Zone const & zone)
    {
        label = common::WrapTo<Out>(static_cast<unsigned>(label) + 1U);
        for (cv::Point const & pixel : zone)
        {
            labels->ptr<Out>(pixel.y)[pixel.x] = label;
        }
    }
};

/// As ZoneLabelWriter for zones of more pixels than a bound; other zones are passed over and consume no label.
///
/// @tparam Out as for ZoneLabelWriter
template <class Out>
struct ZoneAreaLabelWriter
{
    cv::Mat * labels;         ///< the label image, of the walked image's size, depth of @p Out
    std::size_t const * area; ///< the bound: a zone is stamped when it has more pixels
    Out label = 0;            ///< the label of the last stamped zone

    /// Takes a finished zone.
    void operator()(Zone const & zone)
    {
        if (zone.size() <= *area) return;
        ZoneLabelWriter<Out> writer{labels, label};
        writer(zone);
        label = writer.label;
    }
};

/// Counts finished zones and stores the count after each.
struct ZoneCounter
{
    int * count;   ///< where the count goes; not written when there is no zone
    int zones = 0; ///< zones so far

    /// Takes a finished zone.
    void operator()(Zone const &)
    {
        ++zones;
        *count = zones;
    }
};

/// Flavour of a walk: every pixel is a seed and a neighbour.
struct AllPixels
{
    /// Tells whether a pixel takes part.
    template <class In>
    static constexpr bool Takes(In const &)
    {
        return true;
    }
};

/// Flavour of a walk: pixels that hold nothing are neither seeds nor neighbours, and separate zones.
struct NoZero
{
    /// Tells whether a pixel takes part.
    template <class In>
    static bool Takes(In const & value)
    {
        return common::IsNonZeroPixel(value);
    }
};

/// Splits an image into connected zones: one raster scan, one breadth-first flood for each unvisited seed.
///
/// A pixel belongs to a zone when a chain of allowed steps leads to it from the zone's seed, the zone's first pixel in
/// raster order. A pixel that a zone has taken is never given to another. With a condition that is not symmetric, or
/// that looks at the seed or at what was added, the zones depend on the raster order and on the order of the offsets;
/// the condition is asked for each directed pair, before the walk looks whether the neighbour is already taken.
///
/// One instance makes one walk, on one thread; instances share nothing. All arguments are borrowed and must outlive it.
///
/// Cost: one queue entry per pixel that takes part and one question per pixel and neighbour, O(pixels). Memory: one
/// byte per pixel for the mask and eight for the zone vector, reserved once; no allocation per zone.
///
/// @code
/// morvane::connexity::AlwaysConnected<uchar> condition;
/// int count = 0;
/// ZoneCounter counter{&count};
/// Zone zone;
/// ConnectedZoneScan<uchar, ZoneCounter, AlwaysConnected<uchar>, NoZero> scan(
///     image, eConnexity8, condition, counter, zone);
/// scan.Run();
/// @endcode
///
/// @tparam In pixel of the walked image: an element type, or `cv::Vec` of 2 to 4 of them
/// @tparam Out output object: called with each finished Zone
/// @tparam Condition condition type; calls go through the virtual table unless it is final (see Exactly)
/// @tparam Pixels AllPixels or NoZero
template <class In, class Out, class Condition, class Pixels>
class ConnectedZoneScan
{
public:
    /// Prepares a walk over @p input; nothing is walked yet.
    ///
    /// @param input image with pixels of type @p In, at most two-dimensional, continuous or not
    /// @param type the neighbourhood; a value outside the table gives zones of one pixel
    /// @param condition asked at each step
    /// @param output receives each finished zone
    /// @param zone working memory for the zone being built
    /// @throws std::bad_alloc, std::length_error, cv::Exception when memory runs out
    ConnectedZoneScan(cv::Mat const & input, eConnexityType type, Condition & condition, Out & output, Zone & zone)
        : m_input(&input)
        , m_neighbourhood(NeighbourhoodOver(Connexity(type), input.size()))
        , m_output(&output)
        , m_condition(&condition)
        , m_zone(&zone)
    {
        m_visited.create(input.rows, input.cols, CV_8UC1);
        m_visited.setTo(0.0);
        m_inputOffsets = m_neighbourhood.LinearOffsets(input);
        m_visitedOffsets = m_neighbourhood.LinearOffsets(m_visited);
        // The largest zone there can be: the vector is the queue as well and must not move under the flood.
        m_zone->reserve(input.total());
    }

    /// Walks the whole image: zones are finished in the raster order of their seeds. @return true
    bool Run()
    {
        for (int y = 0; y < m_input->rows; ++y)
        {
            for (int x = 0; x < m_input->cols; ++x)
            {
                FloodFrom({x, y});
            }
        }
        return true;
    }

    /// Floods the zone of one seed and gives it to the output; does nothing when the seed is taken or does not take
    /// part.
    ///
    /// @param seed a position inside the image
    /// @return true
    bool FloodFrom(cv::Point const & seed)
    {
        In const seedValue = m_input->ptr<In>(seed.y)[seed.x];
        uchar & seedVisited = m_visited.ptr<uchar>(seed.y)[seed.x];
        if (!Pixels::Takes(seedValue) || seedVisited != 0) return true;

        m_zone->clear();
        m_condition->Reset();
        seedVisited = 1;
        m_zone->push_back(seed);
        m_condition->Add(seed, seedValue);
        // The zone is its own queue: pixels leave it in the order in which they entered.
        for (std::size_t front = 0; front < m_zone->size(); ++front)
        {
            Spread((*m_zone)[front], seed, seedValue);
        }
        (*m_output)(*m_zone);
        return true;
    }

private:
    /// Takes the neighbours of one pixel of the zone, in list order.
    void Spread(cv::Point const from, cv::Point const & seed, In const & seedValue)
    {
        In const * const pixel = m_input->ptr<In>(from.y) + from.x;
        In const fromValue = *pixel;
        if (m_neighbourhood.IsInterior(from))
        {
            uchar * const visited = m_visited.ptr<uchar>(from.y) + from.x;
            for (std::size_t index = 0; index < m_neighbourhood.Count(); ++index)
            {
                Step(
                    from, fromValue, from + m_neighbourhood.Offset(index), *AtOffset(pixel, m_inputOffsets[index]),
                    seed, seedValue, visited[m_visitedOffsets[index]]);
            }
            return;
        }
        for (std::size_t index = 0; index < m_neighbourhood.Count(); ++index)
        {
            if (auto const to = m_neighbourhood.Neighbour(from, index))
            {
                Step(
                    from, fromValue, *to, m_input->ptr<In>(to->y)[to->x], seed, seedValue,
                    m_visited.ptr<uchar>(to->y)[to->x]);
            }
        }
    }

    /// Takes one neighbour if it takes part, the condition allows the step, and no zone holds it.
    void Step(
        cv::Point const & from, In const & fromValue, cv::Point const & to, In const & toValue, cv::Point const & seed,
        In const & seedValue, uchar & visited)
    {
        if (!Pixels::Takes(toValue)) return;
        if (!m_condition->IsConnected(from, fromValue, to, toValue, seed, seedValue)) return;
        if (visited != 0) return;
        m_condition->Add(to, toValue);
        m_zone->push_back(to);
        visited = 1;
    }

    static In const * AtOffset(In const * pixel, std::ptrdiff_t bytes)
    {
        return reinterpret_cast<In const *>(reinterpret_cast<uchar const *>(pixel) + bytes);
    }

    cv::Mat const * m_input;
    cv::Mat m_visited;
    common::Neighbourhood m_neighbourhood;
    std::vector<std::ptrdiff_t> m_inputOffsets;
    std::vector<std::ptrdiff_t> m_visitedOffsets;
    Out * m_output;
    Condition * m_condition;
    Zone * m_zone;
};

} // namespace morvane::connexity
