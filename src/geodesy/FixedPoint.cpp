#include "geodesy/FixedPoint.h"

#include <morvane/common/ImageCompare.h>

#include "common/Dispatch.h"
#include "geodesy/GeodesicSteps.h"
#include "geodesy/Propagation.h"
#include "geodesy/Sweeps.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace morvane::geodesy::reconstruction_internals
{

using common::AreImagesEqual;
using common::Neighbourhood;
using common::PaddedGrid;

namespace
{

/// OpenCV's morphology takes the depths of the library but one.
template <class T>
constexpr bool kHasMorphology = !std::is_same_v<T, int>;

template <class T>
bool IsPlain(cv::Mat const & image)
{
    if constexpr (std::is_floating_point_v<T>)
    {
        using Bits = std::conditional_t<sizeof(T) == sizeof(std::uint32_t), std::uint32_t, std::uint64_t>;
        constexpr Bits kNegativeZero = std::bit_cast<Bits>(-T{0});
        std::ptrdiff_t const elements = std::ptrdiff_t{image.cols} * image.channels();
        bool isPlain = true;
        for (int y = 0; y < image.rows; ++y)
        {
            T const * const row = image.ptr<T>(y);
            for (std::ptrdiff_t x = 0; x < elements; ++x)
            {
                isPlain &= !std::isnan(row[x]) && std::bit_cast<Bits>(row[x]) != kNegativeZero;
            }
        }
        return isPlain;
    }
    return true;
}

template <class Order, class T>
void Step(cv::Mat const & values, cv::Mat const & mask, int shape, cv::Mat & next, cv::Size kernelSize)
{
    std::is_same_v<Order, Rising<T>> ? GeoDilateBySize(values, mask, shape, next, kernelSize)
                                     : GeoErodeBySize(values, mask, shape, next, kernelSize);
}

/// Takes steps as long as many pixels change, then carries on from those that changed last.
template <class Order, class T, class Index>
void StepAndPropagate(
    cv::Mat & values, cv::Mat const & mask, int shape, cv::Size kernelSize, PaddedGrid<Index> const & grid)
{
    // A step costs about as much as asking this many pixels for all their neighbours.
    std::size_t const few = values.total() / (1 + grid.Steps().size());
    cv::Mat next;
    cv::Mat isChanged;
    for (;;)
    {
        Step<Order, T>(values, mask, shape, next, kernelSize);
        cv::compare(values, next, isChanged, cv::CMP_NE);
        cv::swap(values, next);
        auto const changes = static_cast<std::size_t>(cv::countNonZero(isChanged));
        if (changes == 0) return;
        if (changes <= few) break;
    }
    std::vector<cv::Point> changed;
    cv::findNonZero(isChanged, changed);
    std::vector<Index> queue;
    queue.reserve(changed.size());
    for (cv::Point const & pixel : changed)
    {
        queue.push_back(grid.RowStart(pixel.y) + static_cast<Index>(pixel.x));
    }
    Planes<Order, T, Index> planes(values, mask, grid);
    planes.Propagate(std::move(queue));
    planes.CopyTo(values);
}

/// Takes one step. @return whether it changed nothing
template <class Order, class T>
bool StandsStill(cv::Mat & values, cv::Mat const & mask, int shape, cv::Size kernelSize)
{
    cv::Mat next;
    Step<Order, T>(values, mask, shape, next, kernelSize);
    bool const standsStill = AreImagesEqual(values, next);
    values = next;
    return standsStill;
}

template <class Order, class T, class Index, bool kDiagonal>
void SweepAndPropagate(cv::Mat & values, cv::Mat const & mask, PaddedGrid<Index> const & grid)
{
    Planes<Order, T, Index> planes(values, mask, grid);
    planes.Propagate(Sweeps<Order, T, Index, kDiagonal>(planes, grid, values.size()).Run());
    planes.CopyTo(values);
}

/// Moves the values of one channel to where they end.
template <class Order, class T>
void Move(cv::Mat & values, cv::Mat const & mask, int shape, cv::Size kernelSize)
{
    // One step costs a tenth of the sweeps, and markers on which nothing moves are common.
    if (StandsStill<Order, T>(values, mask, shape, kernelSize)) return;
    Neighbourhood const neighbourhood = ReachOfElement(shape, kernelSize, values.size());
    common::VisitIndex(neighbourhood, values.size(), [&]<class Index> {
        PaddedGrid<Index> const grid(neighbourhood, values.size());
        std::size_t const steps = grid.Steps().size();
        if (kernelSize == cv::Size(3, 3) && steps == 8)
        {
            SweepAndPropagate<Order, T, Index, true>(values, mask, grid);
        }
        else if (kernelSize == cv::Size(3, 3) && steps == 4)
        {
            SweepAndPropagate<Order, T, Index, false>(values, mask, grid);
        }
        else
        {
            StepAndPropagate<Order, T>(values, mask, shape, kernelSize, grid);
        }
        return true;
    });
}

} // namespace

bool HasFixedPoint(cv::Mat const & image)
{
    return common::VisitElement(image, [&]<class T> { return kHasMorphology<T> && IsPlain<T>(image); });
}

cv::Mat FixedPoint(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Size kernelSize, Direction direction)
{
    bool const rises = direction == Direction::Rise;
    // The first clip of the first step.
    cv::Mat result = rises ? cv::Mat(cv::min(marker, mask)) : cv::Mat(cv::max(marker, mask));
    auto const move = [&](cv::Mat & values, cv::Mat const & bounds) {
        common::VisitElement(marker, [&]<class T> {
            if constexpr (kHasMorphology<T>)
            {
                rises ? Move<Rising<T>, T>(values, bounds, shape, kernelSize)
                      : Move<Falling<T>, T>(values, bounds, shape, kernelSize);
            }
            return true;
        });
    };
    if (marker.channels() == 1)
    {
        move(result, mask);
        return result;
    }
    // Channels never meet.
    std::vector<cv::Mat> channels;
    cv::split(result, channels);
    for (int channel = 0; channel < marker.channels(); ++channel)
    {
        cv::Mat bounds;
        cv::extractChannel(mask, bounds, channel);
        move(channels[static_cast<std::size_t>(channel)], bounds);
    }
    cv::merge(channels, result);
    return result;
}

} // namespace morvane::geodesy::reconstruction_internals
