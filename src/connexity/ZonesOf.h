/// @file
/// What the leaves of the labelling family are made of: the pixels that take part, the links between them, and what is
/// done with the zones.
#pragma once

#include <morvane/common/PixelTypes.h>
#include <morvane/connexity/Conditions.h>
#include <morvane/connexity/ConnectedZoneScan.h>

#include "common/BitImage.h"
#include "connexity/RunZones.h"
#include "connexity/ZoneLinks.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

namespace morvane::connexity::labelling_internals
{

/// The conditions over images of @p N channels.
template <class T, int N>
struct ConditionsOver
{
    using Equal = EqualConnected_MultiChannel<T, N>;
    using Delta = DeltaConnected_MultiChannel<T, N>;
};

template <class T>
struct ConditionsOver<T, 1>
{
    using Equal = EqualConnected<T>;
    using Delta = DeltaConnected<T>;
};

/// Links between pixels of equal value.
template <class T, int N>
ImageLinks<common::Pixel<T, N>, typename ConditionsOver<T, N>::Equal> EqualLinks(cv::Mat const & image)
{
    return {image, {}};
}

/// Links between pixels that differ by at most @p delta.
template <class T, int N>
ImageLinks<common::Pixel<T, N>, typename ConditionsOver<T, N>::Delta> DeltaLinks(cv::Mat const & image, double delta)
{
    return {image, typename ConditionsOver<T, N>::Delta(delta)};
}

/// The pixels that take part in a walk of this flavour: AllPixels or NoZero.
template <class Flavour, class T, int N>
common::BitImage PixelsOf(cv::Mat const & image)
{
    common::BitImage pixels(image.rows, image.cols);
    // There is no row to point at.
    if (image.cols == 0) return pixels;
    for (int y = 0; y < image.rows; ++y)
    {
        auto const * const row = image.ptr<common::Pixel<T, N>>(y);
        common::FillBits(image.cols, pixels.Row(y), [row](int x) { return Flavour::Takes(row[x]); });
    }
    return pixels;
}

/// Calls @p use with the zones; runs are counted in 32 bits where the image is small enough.
template <class Use>
void WithZones(common::BitImage pixels, ZoneLinks const & links, eConnexityType connexity, Use && use)
{
    auto const total = static_cast<std::uint64_t>(pixels.Rows()) * static_cast<std::uint64_t>(pixels.Cols());
    if (total < std::numeric_limits<std::uint32_t>::max())
    {
        use(RunZones<std::uint32_t>(std::move(pixels), links, connexity));
    }
    else
    {
        use(RunZones<std::uint64_t>(std::move(pixels), links, connexity));
    }
}

/// Writes the labels of the zones, all or those of more pixels than @p area. @return true
template <class Out>
bool LabelZones(
    common::BitImage pixels, ZoneLinks const & links, eConnexityType connexity, cv::Mat & labels,
    std::optional<std::uint64_t> area = std::nullopt)
{
    WithZones(std::move(pixels), links, connexity, [&]<class Zones>(Zones && zones) {
        if (area)
        {
            std::forward<Zones>(zones).template WriteLabelsAbove<Out>(*area, labels);
        }
        else
        {
            std::forward<Zones>(zones).template WriteLabels<Out>(labels);
        }
    });
    return true;
}

/// The number of zones.
inline std::size_t CountZonesOf(common::BitImage pixels, ZoneLinks const & links, eConnexityType connexity)
{
    std::size_t count = 0;
    WithZones(std::move(pixels), links, connexity, [&](auto const & zones) { count = zones.Count(); });
    return count;
}

} // namespace morvane::connexity::labelling_internals
