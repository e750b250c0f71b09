#include "geodesy/PriorityBuild.h"

#include <morvane/connexity/RegionalExtrema.h>

#include "common/Dispatch.h"
#include "common/PaddedGrid.h"
#include "common/PriorityFlood.h"

#include <functional>
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

    static bool Seeds(cv::Mat const & image, connexity::eConnexityType connexity, cv::Mat & labels)
    {
        return connexity::LabelMinima(image, connexity, labels);
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

    static bool Seeds(cv::Mat const & image, connexity::eConnexityType connexity, cv::Mat & labels)
    {
        return connexity::LabelMaxima(image, connexity, labels);
    }

    template <class T>
    static T Level(T level, T bound)
    {
        return level < bound ? level : bound;
    }
};

/// Bytes have a bucket each; other levels wait in a heap. The result does not depend on the order of equal levels.
template <class Way, class T, class Index>
using QueueOf = std::conditional_t<
    std::is_same_v<T, uchar>, common::ByteQueue<Index, Way::kSmallestFirst>,
    common::EqualFirstQueue<common::HeapQueue<T, Index, typename Way::Comes>, T, Index>>;

template <class Way, class T, class Index>
void Flood(cv::Mat const & mask, cv::Mat1i const & seeds, common::Neighbourhood const & neighbourhood, cv::Mat & out)
{
    PaddedGrid<Index> const grid(neighbourhood, mask.size());
    std::vector<T> const bounds = common::PlaneOf(mask, grid, T{0});
    std::vector<T> values = common::PlaneOf(out, grid, T{0});
    common::FloodStates<Index> states(grid, neighbourhood.WrapsInX(), mask.size());
    QueueOf<Way, T, Index> queue;
    for (int y = 0; y < mask.rows; ++y)
    {
        for (int x = 0; x < mask.cols; ++x)
        {
            if (seeds(y, x) == 0) continue;
            Index const element = grid.RowStart(y) + static_cast<Index>(x);
            states.Touch(element);
            queue.Push(values[element], element);
        }
    }
    common::PriorityFlood(grid, states, queue, [&](Index element, T level) {
        // From the mask, not from the image that is built: else nothing would ever be filled.
        values[element] = Way::Level(level, bounds[element]);
        return values[element];
    });
    common::CopyPlane(values, grid, out);
}

template <class Way, class T>
bool Build(cv::Mat const & mask, cv::Mat const & marker, connexity::eConnexityType connexity, cv::Mat & out)
{
    // A header of its own: where `out` is the mask, a copy is what the flood reads.
    cv::Mat const bounds = out.data == mask.data ? mask.clone() : mask;
    Way::Meet(mask, marker, out);
    if (out.empty()) return false;
    cv::Mat1i seeds(out.size());
    if (!Way::Seeds(out, connexity, seeds)) return false;
    auto const neighbourhood = NeighbourhoodOver(connexity::Connexity(connexity), out.size());
    return common::VisitIndex(neighbourhood, out.size(), [&]<class Index> {
        Flood<Way, T, Index>(bounds, seeds, neighbourhood, out);
        return true;
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
