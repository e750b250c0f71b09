#include <morvane/connexity/Flooding.h>

#include <morvane/connexity/ZoneMeasures.h>
#include <morvane/visual/ColorMaps.h>

#include "common/Dispatch.h"
#include "connexity/GreyFlood.h"
#include "connexity/ZonesOf.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <limits>

namespace morvane::connexity
{

using common::IsSingleChannel;
using common::SameSize;
using common::VisitElement;
using common::VisitLabel;
using common::VisitSignedLabel;
using namespace labelling_internals;

namespace
{

/// The watershed draws a line along the border: columns, then rows take what is beside them.
void RepairBorder(cv::Mat1i & basins)
{
    if (basins.cols > 1)
    {
        basins.col(1).copyTo(basins.col(0));
        basins.col(basins.cols - 2).copyTo(basins.col(basins.cols - 1));
    }
    if (basins.rows > 1)
    {
        basins.row(1).copyTo(basins.row(0));
        basins.row(basins.rows - 2).copyTo(basins.row(basins.rows - 1));
    }
}

/// The basins of the seeds in the image, -1 on the lines between them.
cv::Mat1i FindBasins(cv::Mat const & image, cv::Mat const & seeds)
{
    cv::Mat1i basins(image.size());
    VisitSignedLabel(seeds, [&]<class Seed> {
        for (int y = 0; y < basins.rows; ++y)
        {
            std::copy_n(seeds.ptr<Seed>(y), basins.cols, basins.ptr<int>(y));
        }
        return true;
    });
    cv::Mat grey(image.size(), CV_8UC1);
    constexpr double kLargest = std::numeric_limits<double>::max();
    // What the map refuses stays as it is: no answer is asked for.
    static_cast<void>(visual::GrayMapNoZero(image, grey, -kLargest, kLargest, true));
    cv::Mat colour;
    cv::cvtColor(grey, colour, cv::COLOR_GRAY2BGR);
    cv::watershed(colour, basins);
    RepairBorder(basins);
    return basins;
}

/// Spreads the markers over the zones that @p label makes: it takes the links inside the basins.
template <class LabelInBasins>
bool SpreadMarkers(cv::Mat const & image, cv::Mat & markers, LabelInBasins const & label)
{
    cv::Mat const seeds = markers.clone();
    cv::Mat1i const basins = FindBasins(image, seeds);
    label(EqualLinks<int, 1>(basins));
    cv::Mat const highest = ComputeMax(markers, seeds);
    return !highest.empty() && visual::ApplyLut(markers, highest, markers);
}

template <class Flavour>
bool FloodDelta(cv::Mat const & image, eConnexityType connexity, double delta, cv::Mat & markers)
{
    if (!IsSingleChannel(image) || !SameSize(image, markers)) return false;
    return VisitElement(image, [&]<class T> {
        return VisitLabel(markers, [&]<class Out> {
            return SpreadMarkers(image, markers, [&](ZoneLinks const & inBasins) {
                auto const small = DeltaLinks<T, 1>(image, delta);
                LabelZones<Out>(
                    PixelsOf<Flavour, T, 1>(image), BothLinks(small, inBasins, image.size()), connexity, markers);
            });
        });
    });
}

template <class Flavour>
bool FloodDelta(
    cv::Mat const & image, cv::Mat const & second, eConnexityType connexity, double delta1, double delta2,
    cv::Mat & markers)
{
    if (!IsSingleChannel(image) || !IsSingleChannel(second) || !SameSize(markers, image, second)) return false;
    return VisitElement(image, [&]<class T1> {
        return VisitElement(second, [&]<class T2> {
            return VisitLabel(markers, [&]<class Out> {
                return SpreadMarkers(image, markers, [&](ZoneLinks const & inBasins) {
                    auto const small = DeltaLinks<T1, 1>(image, delta1);
                    auto const smallInSecond = DeltaLinks<T2, 1>(second, delta2);
                    BothLinks const both(small, smallInSecond, image.size());
                    LabelZones<Out>(
                        PixelsOf<Flavour, T1, 1>(image), BothLinks(both, inBasins, image.size()), connexity, markers);
                });
            });
        });
    });
}

} // namespace

bool Flooding(cv::Mat & image, cv::Mat & markers)
{
    // Read as what they have to be, other types would be read beyond their ends.
    if (image.type() != CV_8UC1 || markers.type() != CV_32SC1 || !SameSize(image, markers)) return false;
    return !markers.empty() && flooding_internals::FloodGrey(image, markers);
}

bool FloodingNoZero(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & markers)
{
    if (!IsSingleChannel(image) || !SameSize(image, markers)) return false;
    return VisitElement(image, [&]<class T> {
        return VisitLabel(markers, [&]<class Out> {
            return SpreadMarkers(image, markers, [&](ZoneLinks const & inBasins) {
                LabelZones<Out>(PixelsOf<NoZero, T, 1>(image), inBasins, connexity, markers);
            });
        });
    });
}

bool FloodingDelta(cv::Mat const & image, eConnexityType const & connexity, double delta, cv::Mat & markers)
{
    return FloodDelta<AllPixels>(image, connexity, delta, markers);
}

bool FloodingDelta(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    cv::Mat & markers)
{
    return FloodDelta<AllPixels>(image, second, connexity, delta1, delta2, markers);
}

bool FloodingDeltaNoZero(cv::Mat const & image, eConnexityType const & connexity, double delta, cv::Mat & markers)
{
    return FloodDelta<NoZero>(image, connexity, delta, markers);
}

bool FloodingDeltaNoZero(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    cv::Mat & markers)
{
    return FloodDelta<NoZero>(image, second, connexity, delta1, delta2, markers);
}

} // namespace morvane::connexity
