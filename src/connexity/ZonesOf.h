/// @file
/// The leaves of the labelling family: which pixels of an image take part, and what is done with their zones.
#pragma once

#include <morvane/common/PixelTypes.h>

#include "common/BitImage.h"
#include "connexity/RunZones.h"
#include "connexity/ZoneLinks.h"

#include <cstdint>
#include <limits>
#include <utility>

namespace morvane::connexity::labelling_internals
{

/// The pixels at which something was measured.
template <class T, int N>
common::BitImage MeasuredPixels(cv::Mat const & image)
{
    common::BitImage pixels(image.rows, image.cols);
    for (int y = 0; y < image.rows; ++y)
    {
        auto const * const row = image.ptr<common::Pixel<T, N>>(y);
        common::FillBits(image.cols, pixels.Row(y), [row](int x) { return common::IsNonZeroPixel(row[x]); });
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

/// Writes the labels of all zones. @return true
template <class Out>
bool LabelZones(common::BitImage pixels, ZoneLinks const & links, eConnexityType connexity, cv::Mat & labels)
{
    WithZones(std::move(pixels), links, connexity, [&]<class Zones>(Zones && zones) {
        std::forward<Zones>(zones).template WriteLabels<Out>(labels);
    });
    return true;
}

} // namespace morvane::connexity::labelling_internals
