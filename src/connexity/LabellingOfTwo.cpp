// The labelling operators over two images.

#include <morvane/connexity/Labelling.h>

#include "common/Dispatch.h"
#include "connexity/ZonesOf.h"

#include <cstdint>
#include <optional>

namespace morvane::connexity
{

using common::IsSingleChannel;
using common::SameSize;
using common::VisitChannels;
using common::VisitElement;
using common::VisitLabel;
using namespace labelling_internals;

namespace
{

/// What the delta operators over two images differ in.
struct DeltaZonesOfTwo
{
    double delta1;
    double delta2;
    /// Zones of so many pixels or fewer are dropped.
    std::optional<std::uint64_t> area;
    /// The answer to a label image of a refused depth and to images of more than 4 channels.
    bool answerToRefusedLeaf;
};

/// The leaf: both images have N channels.
template <class Flavour, class T1, class T2, class Out, int N>
bool LabelLeaf(
    cv::Mat const & image, cv::Mat const & second, eConnexityType connexity, DeltaZonesOfTwo const & zones,
    cv::Mat & labels)
{
    auto const first = DeltaLinks<T1, N>(image, zones.delta1);
    auto const other = DeltaLinks<T2, N>(second, zones.delta2);
    return LabelZones<Out>(
        PixelsOf<Flavour, T1, N>(image), BothLinks(first, other, image.size()), connexity, labels, zones.area);
}

template <class Flavour>
bool LabelDeltaZones(
    cv::Mat const & image, cv::Mat const & second, eConnexityType connexity, DeltaZonesOfTwo const & zones,
    cv::Mat & labels)
{
    if (!SameSize(labels, image, second)) return false;
    bool const refused = zones.answerToRefusedLeaf;
    return VisitElement(image, [&]<class T1> {
        return VisitElement(second, [&]<class T2> {
            auto const withLabels = [&]<class Out> {
                if (image.channels() != second.channels()) return false;
                auto const withChannels = [&]<int N> {
                    return LabelLeaf<Flavour, T1, T2, Out, N>(image, second, connexity, zones, labels);
                };
                return VisitChannels(image, withChannels, refused);
            };
            return VisitLabel(labels, withLabels, refused);
        });
    });
}

/// The bound of the area condition: a negative one, read as unsigned, is larger than any zone.
std::uint64_t AreaBound(int area)
{
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(area));
}

} // namespace

bool LabelFlatZonesNoZero(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, cv::Mat & labels)
{
    if (!IsSingleChannel(image) || !IsSingleChannel(second)) return false;
    if (!SameSize(labels, image, second)) return false;
    return VisitElement(image, [&]<class T1> {
        return VisitElement(second, [&]<class T2> {
            return VisitLabel(labels, [&]<class Out> {
                auto const first = EqualLinks<T1, 1>(image);
                auto const other = EqualLinks<T2, 1>(second);
                return LabelZones<Out>(
                    PixelsOf<NoZero, T1, 1>(image), BothLinks(first, other, image.size()), connexity, labels);
            });
        });
    });
}

bool LabelDeltaFlatZones(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    cv::Mat & labels)
{
    return LabelDeltaZones<AllPixels>(image, second, connexity, {delta1, delta2, std::nullopt, false}, labels);
}

// The three operators below answer true, and write nothing, where the leaf is refused: callers rely on it.

bool LabelDeltaFlatZonesNoZero(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    cv::Mat & labels)
{
    return LabelDeltaZones<NoZero>(image, second, connexity, {delta1, delta2, std::nullopt, true}, labels);
}

bool LabelDeltaFlatZonesWithAreaCondition(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    int area, cv::Mat & labels)
{
    return LabelDeltaZones<AllPixels>(image, second, connexity, {delta1, delta2, AreaBound(area), true}, labels);
}

bool LabelDeltaFlatZonesNoZeroWithAreaCondition(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    int area, cv::Mat & labels)
{
    return LabelDeltaZones<NoZero>(image, second, connexity, {delta1, delta2, AreaBound(area), true}, labels);
}

} // namespace morvane::connexity
