#include <morvane/connexity/RegionalExtrema.h>

#include <morvane/connexity/ConnectedZoneScan.h>

#include "common/Dispatch.h"
#include "connexity/ExtremaPixels.h"
#include "connexity/ZonesOf.h"

#include <utility>

namespace morvane::connexity
{

using common::IsRaster;
using common::IsSingleChannel;
using common::SameSize;
using common::VisitElement;
using common::VisitLabel;
using extrema_internals::ExtremaPixels;
using extrema_internals::NotAbove;
using extrema_internals::NotBelow;

namespace
{

using PointsOfLabel = std::map<int, std::vector<cv::Point_<int>>>;

template <class Keeps, class T, class Out>
bool WriteExtrema(cv::Mat const & image, eConnexityType connexity, cv::Mat & labels)
{
    ExtremaPixels<T, Keeps> const pixels(image, connexity);
    labelling_internals::WithZones(
        pixels.Candidates(), pixels, connexity, [&]<class Run>(labelling_internals::RunZones<Run> && zones) {
            std::vector<Run> spoilt;
            pixels.ForEachSpoilt(zones.RunStarts(), [&](cv::Point pixel) { spoilt.push_back(zones.RunAt(pixel)); });
            std::move(zones).template WriteLabelsWithout<Out>(spoilt, labels);
        });
    return true;
}

template <class Keeps>
bool LabelExtrema(cv::Mat const & image, eConnexityType connexity, cv::Mat & labels)
{
    if (!IsSingleChannel(image) || !SameSize(image, labels)) return false;
    return VisitElement(image, [&]<class T> {
        return VisitLabel(labels, [&]<class Out> { return WriteExtrema<Keeps, T, Out>(image, connexity, labels); });
    });
}

/// Enters each zone under its number, from 1.
struct PointWriter
{
    PointsOfLabel * points;
    int label = 0;

    void operator()(Zone const & zone) { points->emplace_hint(points->end(), ++label, zone); }
};

template <class Keeps>
bool ListExtrema(cv::Mat const & image, eConnexityType connexity, PointsOfLabel & points)
{
    points.clear();
    if (!IsRaster(image) || !IsSingleChannel(image)) return false;
    if (!VisitElement(image, []<class T> { return true; })) return false;
    cv::Mat labels(image.size(), CV_32SC1);
    if (!LabelExtrema<Keeps>(image, connexity, labels)) return false;
    // No two extrema touch under one label, so that a walk over the labels finds each as the walk over the image does.
    Exactly<EqualConnected<int>> condition;
    PointWriter writer{&points};
    Zone zone;
    return ConnectedZoneScan<int, PointWriter, Exactly<EqualConnected<int>>, NoZero>(
               labels, connexity, condition, writer, zone)
        .Run();
}

} // namespace

bool LabelMaxima(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels)
{
    return LabelExtrema<NotBelow>(image, connexity, labels);
}

bool LabelMinima(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels)
{
    return LabelExtrema<NotAbove>(image, connexity, labels);
}

bool LabelMaxima(cv::Mat const & image, eConnexityType const & connexity, PointsOfLabel & points)
{
    return ListExtrema<NotBelow>(image, connexity, points);
}

bool LabelMinima(cv::Mat const & image, eConnexityType const & connexity, PointsOfLabel & points)
{
    return ListExtrema<NotAbove>(image, connexity, points);
}

} // namespace morvane::connexity
