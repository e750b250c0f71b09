#include <morvane/connexity/Labelling.h>

#include "common/Dispatch.h"
#include "connexity/ZonesOf.h"

namespace morvane::connexity
{

using common::SameSize;
using common::VisitChannels;
using common::VisitElement;
using common::VisitLabel;
using namespace labelling_internals;

bool Label(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels)
{
    if (!SameSize(image, labels)) return false;
    return VisitElement(image, [&]<class T> {
        return VisitLabel(labels, [&]<class Out> {
            return VisitChannels(image, [&]<int N> {
                return LabelZones<Out>(PixelsOf<NoZero, T, N>(image), EveryLink(image.size()), connexity, labels);
            });
        });
    });
}

bool LabelFlatZones(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels)
{
    if (!SameSize(image, labels)) return false;
    return VisitElement(image, [&]<class T> {
        return VisitLabel(labels, [&]<class Out> {
            return VisitChannels(image, [&]<int N> {
                return LabelZones<Out>(PixelsOf<AllPixels, T, N>(image), EqualLinks<T, N>(image), connexity, labels);
            });
        });
    });
}

bool LabelFlatZonesNoZero(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels)
{
    if (!SameSize(image, labels)) return false;
    return VisitElement(image, [&]<class T> {
        return VisitLabel(labels, [&]<class Out> {
            return VisitChannels(image, [&]<int N> {
                return LabelZones<Out>(PixelsOf<NoZero, T, N>(image), EqualLinks<T, N>(image), connexity, labels);
            });
        });
    });
}

bool LabelDeltaFlatZones(cv::Mat const & image, eConnexityType const & connexity, double delta, cv::Mat & labels)
{
    if (!SameSize(image, labels)) return false;
    return VisitElement(image, [&]<class T> {
        return VisitLabel(labels, [&]<class Out> {
            return VisitChannels(image, [&]<int N> {
                return LabelZones<Out>(
                    PixelsOf<AllPixels, T, N>(image), DeltaLinks<T, N>(image, delta), connexity, labels);
            });
        });
    });
}

bool LabelDeltaFlatZonesNoZero(cv::Mat const & image, eConnexityType const & connexity, double delta, cv::Mat & labels)
{
    if (!SameSize(image, labels)) return false;
    return VisitElement(image, [&]<class T> {
        return VisitLabel(labels, [&]<class Out> {
            return VisitChannels(image, [&]<int N> {
                return LabelZones<Out>(
                    PixelsOf<NoZero, T, N>(image), DeltaLinks<T, N>(image, delta), connexity, labels);
            });
        });
    });
}

} // namespace morvane::connexity
