#include <morvane/geodesy/GeodesicOperators.h>

#include "common/Dispatch.h"
#include "geodesy/GeodesicFlood.h"
#include "geodesy/GeodesicSteps.h"

namespace morvane::geodesy
{

using common::SameSize;

namespace
{

/// Lets OpenCV say whether it dilates images of this type with this shape. @throws cv::Exception when it does not
void CheckWithOpenCV(int type, int shape)
{
    cv::Mat const pixel = cv::Mat::zeros(1, 1, type);
    cv::Mat dilated;
    GeoDilateBySize(pixel, pixel, shape, dilated, {3, 3});
}

} // namespace

bool GeoDilate(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, int kernelSize)
{
    return AreReady(marker, mask, out) && GeoDilateBySize(marker, mask, shape, out, {kernelSize, kernelSize});
}

bool GeoErode(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out)
{
    return AreReady(marker, mask, out) && GeoErodeBySize(marker, mask, shape, out, {3, 3});
}

bool GeodesicDistance(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out)
{
    if (marker.empty() || mask.empty() || !common::IsRaster(mask)) return false;
    if (out.empty()) out.create(mask.size(), mask.type());
    if (marker.type() != mask.type() || out.type() != mask.type() || !SameSize(mask, marker, out)) return false;
    if (!common::IsSingleChannel(mask)) return false;
    return common::VisitElement(mask, [&]<class T> {
        if (mask.total() > 1) CheckWithOpenCV(mask.type(), shape);
        distance_internals::WriteDistances(marker, mask, shape, out);
        return true;
    });
}

} // namespace morvane::geodesy
