// The counting operators.

#include <morvane/common/Conversions.h>
#include <morvane/connexity/Labelling.h>

#include "common/Dispatch.h"
#include "connexity/ZonesOf.h"

namespace morvane::connexity
{

using common::IsRaster;
using common::IsSingleChannel;
using common::VisitElement;
using common::WrapTo;
using namespace labelling_internals;

bool CountZones(cv::Mat const & image, eConnexityType const & connexity, int & count)
{
    if (!IsSingleChannel(image) || !IsRaster(image)) return false;
    return VisitElement(image, [&]<class T> {
        count = WrapTo<int>(CountZonesOf(PixelsOf<NoZero, T, 1>(image), EveryLink(image.size()), connexity));
        return true;
    });
}

bool CountFlatZones(cv::Mat const & image, eConnexityType const & connexity, int & count)
{
    if (!IsSingleChannel(image) || !IsRaster(image)) return false;
    return VisitElement(image, [&]<class T> {
        count = WrapTo<int>(CountZonesOf(PixelsOf<AllPixels, T, 1>(image), EqualLinks<T, 1>(image), connexity));
        return true;
    });
}

bool CountFlatZonesNoZero(cv::Mat const & image, eConnexityType const & connexity, int & count)
{
    if (!IsSingleChannel(image) || !IsRaster(image)) return false;
    return VisitElement(image, [&]<class T> {
        count = WrapTo<int>(CountZonesOf(PixelsOf<NoZero, T, 1>(image), EqualLinks<T, 1>(image), connexity));
        return true;
    });
}

} // namespace morvane::connexity
