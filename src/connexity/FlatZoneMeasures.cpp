// Images in which each pixel carries a measure of its flat zone.

#include <morvane/connexity/ConnectedZoneScan.h>
#include <morvane/connexity/Labelling.h>
#include <morvane/connexity/ZoneMeasures.h>
#include <morvane/visual/ColorMaps.h>

#include "common/Dispatch.h"

#include <concepts>

namespace morvane::connexity
{

using common::IsSingleChannel;
using common::SameSize;
using common::VisitElement;

namespace
{

/// Writes each zone's entry to its pixels; an empty matrix where the table is none.
cv::Mat WriteBack(cv::Mat const & labels, cv::Mat const & table)
{
    cv::Mat result;
    result.create(labels.rows, labels.cols, table.type());
    return visual::ApplyLut(labels, table, result) ? result : cv::Mat();
}

/// The labels of the flat zones; empty when the image is refused.
bool LabelZonesOf(cv::Mat const & image, eConnexityType connexity, cv::Mat & labels)
{
    if (!common::IsRaster(image)) return false;
    labels.create(image.rows, image.cols, CV_32SC1);
    return LabelFlatZonesNoZero(image, connexity, labels);
}

/// Sums values over each finished zone, in the order in which the walk took its pixels.
template <class Value>
struct ZoneSumWriter
{
    cv::Mat const * values;
    cv::Mat * sums;

    void operator()(Zone const & zone)
    {
        Value sum = 0;
        for (cv::Point const & pixel : zone)
        {
            sum += values->ptr<Value>(pixel.y)[pixel.x];
        }
        // A NaN differs from 0 as well.
        if (sum == 0) return;
        for (cv::Point const & pixel : zone)
        {
            sums->ptr<Value>(pixel.y)[pixel.x] = sum;
        }
    }
};

/// Floating-point sums depend on their order: only the walk has it.
template <class T, class Value>
cv::Mat SumByWalk(cv::Mat const & image, cv::Mat const & values, eConnexityType connexity)
{
    cv::Mat sums = cv::Mat::zeros(image.size(), values.type());
    Exactly<EqualConnected<T>> condition;
    ZoneSumWriter<Value> writer{&values, &sums};
    Zone zone;
    ConnectedZoneScan<T, ZoneSumWriter<Value>, Exactly<EqualConnected<T>>, NoZero>(
        image, connexity, condition, writer, zone)
        .Run();
    return sums;
}

} // namespace

cv::Mat LabelFlatZonesNoZeroWithArea(cv::Mat const & image, eConnexityType const & connexity)
{
    if (!IsSingleChannel(image)) return {};
    cv::Mat labels;
    if (!LabelZonesOf(image, connexity, labels)) return {};
    return WriteBack(labels, ComputeArea(labels));
}

cv::Mat
LabelFlatZonesNoZeroWithAccumulation(cv::Mat const & image, cv::Mat const & values, eConnexityType const & connexity)
{
    if (!IsSingleChannel(image) || !SameSize(image, values) || !IsSingleChannel(values)) return {};
    return VisitElement(image, [&]<class T> {
        return VisitElement(values, [&]<class Value>() -> cv::Mat {
            if constexpr (std::floating_point<Value>)
            {
                return SumByWalk<T, Value>(image, values, connexity);
            }
            else
            {
                cv::Mat labels;
                if (!LabelZonesOf(image, connexity, labels)) return {};
                return WriteBack(labels, ComputeAccumulation(labels, values));
            }
        });
    });
}

cv::Mat LabelFlatZonesNoZeroWithMax(cv::Mat const & image, cv::Mat const & values, eConnexityType const & connexity)
{
    cv::Mat labels;
    if (!LabelZonesOf(image, connexity, labels)) return {};
    return WriteBack(labels, ComputeMax(labels, values));
}

cv::Mat LabelFlatZonesNoZeroWithMin(cv::Mat const & image, cv::Mat const & values, eConnexityType const & connexity)
{
    cv::Mat labels;
    if (!LabelZonesOf(image, connexity, labels)) return {};
    return WriteBack(labels, ComputeMin(labels, values));
}

} // namespace morvane::connexity
