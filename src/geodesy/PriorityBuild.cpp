#include "geodesy/PriorityBuild.h"

#include <morvane/connexity/RegionalExtrema.h>

#include "common/Dispatch.h"
#include "common/PaddedGrid.h"
#include "common/PriorityFlood.h"
#include "geodesy/FixedPoint.h"

#include <functional>
#include <map>
#include <type_traits>
#include <vector>

namespace morvane::geodesy::reconstruction_internals
{

using common::PaddedGrid;

namespace
{

/// The flood rises from minima: the lowest comes first.
struct Over
{
    using Comes = std::less<>;
    static constexpr bool kSmallestFirst = true;

    static void Meet(cv::Mat const & one, cv::Mat const & other, cv::Mat & out) { cv::max(one, other, out); }

    template <class Extrema>
    static bool Seeds(cv::Mat const & image, connexity::eConnexityType connexity, Extrema & extrema)
    {
        return connexity::LabelMinima(image, connexity, extrema);
    }

    /// The level unless it is not above the mask: a NaN in the mask stays.
    template <class T>
    static T Level(T level, T bound)
    {
        return level > bound ? level : bound;
    }
};

/// The flood sinks from maxima: the highest comes first.
struct Under
{
    using Comes = std::greater<>;
    static constexpr bool kSmallestFirst = false;

    static void Meet(cv::Mat const & one, cv::Mat const & other, cv::Mat & out) { cv::min(one, other, out); }

    template <class Extrema>
    static bool Seeds(cv::Mat const & image, connexity::eConnexityType connexity, Extrema & extrema)
    {
        return connexity::LabelMaxima(image, connexity, extrema);
    }

    template <class T>
    static T Level(T level, T bound)
    {
        return level < bound ? level : bound;
    }
};

/// The queue where the order of equal levels does not show: bytes have a bucket each, other levels wait in a heap.
template <class Way, class T, class Index>
using AnyOrderQueue = std::conditional_t<
    std::is_same_v<T, uchar>, common::ByteQueue<Index, Way::kSmallestFirst>,
    common::EqualFirstQueue<common::HeapQueue<T, Index, typename Way::Comes>, T, Index>>;

/// The flood over planes, from seeds to be added.
template <class Way, class T, class Index, class Queue>
class Flood
{
public:
    Flood(cv::Mat const & mask, cv::Mat & out, common::Neighbourhood const & neighbourhood)
        : m_out(out)
        , m_grid(neighbourhood, out.size())
        , m_bounds(common::PlaneOf(mask, m_grid, T{0}))
        , m_values(common::PlaneOf(out, m_grid, T{0}))
        , m_states(m_grid, neighbourhood.WrapsInX(), out.size())
    {}

    void AddSeed(cv::Point pixel)
    {
        Index const element = m_grid.RowStart(pixel.y) + static_cast<Index>(pixel.x);
        m_states.Touch(element);
        m_queue.Push(m_values[element], element);
    }

    void Run()
    {
        common::PriorityFlood(m_grid, m_states, m_queue, [&](Index element, T level) {
            // From the mask, not from the image that is built: else nothing would ever be filled.
            m_values[element] = Way::Level(level, m_bounds[element]);
            return m_values[element];
        });
        common::CopyPlane(m_values, m_grid, m_out);
    }

private:
    cv::Mat & m_out;
    PaddedGrid<Index> m_grid;
    std::vector<T> m_bounds;
    std::vector<T> m_values;
    common::FloodStates<Index> m_states;
    Queue m_queue;
};

template <class Way, class T, class Index>
bool FloodInAnyOrder(
    cv::Mat const & mask, connexity::eConnexityType connexity, common::Neighbourhood const & neighbourhood,
    cv::Mat & out)
{
    cv::Mat1i seeds(out.size());
    if (!Way::Seeds(out, connexity, seeds)) return false;
    Flood<Way, T, Index, AnyOrderQueue<Way, T, Index>> flood(mask, out, neighbourhood);
    for (int y = 0; y < out.rows; ++y)
    {
        for (int x = 0; x < out.cols; ++x)
        {
            if (seeds(y, x) != 0) flood.AddSeed({x, y});
        }
    }
    flood.Run();
    return true;
}

/// For levels whose order shows though they are equal, or not comparable: seeds by their labels, and the heap alone.
template <class Way, class T, class Index>
bool FloodInOrder(
    cv::Mat const & mask, connexity::eConnexityType connexity, common::Neighbourhood const & neighbourhood,
    cv::Mat & out)
{
    std::map<int, std::vector<cv::Point>> seeds;
    if (!Way::Seeds(out, connexity, seeds)) return false;
    Flood<Way, T, Index, common::HeapQueue<T, Index, typename Way::Comes>> flood(mask, out, neighbourhood);
    for (auto const & [label, pixels] : seeds)
    {
        for (cv::Point const & pixel : pixels)
        {
            flood.AddSeed(pixel);
        }
    }
    flood.Run();
    return true;
}

template <class Way, class T>
bool Build(cv::Mat const & mask, cv::Mat const & marker, connexity::eConnexityType connexity, cv::Mat & out)
{
    // A header of its own: where `out` is the mask, a copy is what the flood reads.
    cv::Mat const bounds = out.data == mask.data ? mask.clone() : mask;
    Way::Meet(mask, marker, out);
    // A mask of one pixel is a number to OpenCV, but bounds no larger image.
    if (out.empty() || out.size() != bounds.size()) return false;
    // With NaN and negative zeros the order of levels shows.
    bool const inOrder = std::is_floating_point_v<T> && !(HasFixedPoint(bounds) && HasFixedPoint(out));
    auto const neighbourhood = NeighbourhoodOver(connexity::Connexity(connexity), out.size());
    return common::VisitIndex(neighbourhood, out.size(), [&]<class Index> {
        return inOrder ? FloodInOrder<Way, T, Index>(bounds, connexity, neighbourhood, out)
                       : FloodInAnyOrder<Way, T, Index>(bounds, connexity, neighbourhood, out);
    });
}

/// Three depths have an implementation, of the six.
template <class Way>
bool BuildInType(cv::Mat const & mask, cv::Mat const & marker, connexity::eConnexityType connexity, cv::Mat & out)
{
    if (!common::IsRaster(mask) || !common::IsRaster(marker)) return false;
    return common::VisitElement(mask, [&]<class T> {
        if constexpr (std::is_same_v<T, uchar> || std::is_same_v<T, int> || std::is_same_v<T, float>)
        {
            return !mask.empty() && !marker.empty() && Build<Way, T>(mask, marker, connexity, out);
        }
        return false;
    });
}

} // namespace

bool BuildOver(cv::Mat const & mask, cv::Mat const & marker, connexity::eConnexityType connexity, cv::Mat & out)
{
    return BuildInType<Over>(mask, marker, connexity, out);
}

bool BuildUnder(cv::Mat const & mask, cv::Mat const & marker, connexity::eConnexityType connexity, cv::Mat & out)
{
    return BuildInType<Under>(mask, marker, connexity, out);
}

} // namespace morvane::geodesy::reconstruction_internals
