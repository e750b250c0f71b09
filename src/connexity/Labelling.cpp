#include <morvane/connexity/Labelling.h>

#include <morvane/connexity/ConnectedZoneScan.h>

#include "common/BitImage.h"
#include "common/Dispatch.h"
#include "connexity/RunLabelling.h"

namespace morvane::connexity
{

using common::SameSize;
using common::VisitChannels;
using common::VisitElement;
using common::VisitLabel;

namespace
{

/// The condition that allows every step between pixels of this type.
template <class T, int N>
struct Always
{
    using Type = AlwaysConnected_MultiChannel<T, N>;
};

template <class T>
struct Always<T, 1>
{
    using Type = AlwaysConnected<T>;
};

/// The bits of the pixels at which something was measured.
template <class In>
common::BitImage MeasuredPixels(cv::Mat const & image)
{
    common::BitImage mask(image.rows, image.cols);
    for (int y = 0; y < image.rows; ++y)
    {
        In const * const row = image.ptr<In>(y);
        common::FillBits(image.cols, mask.Row(y), [row](int x) { return common::IsNonZeroPixel(row[x]); });
    }
    return mask;
}

/// Labels by walking, for any neighbourhood.
template <class Condition, class Pixels, class In, class Out>
bool LabelByWalk(cv::Mat const & image, eConnexityType connexity, Condition & condition, cv::Mat & labels)
{
    labels = cv::Scalar(0);
    ZoneLabelWriter<Out> writer{&labels};
    Zone zone;
    return ConnectedZoneScan<In, ZoneLabelWriter<Out>, Condition, Pixels>(image, connexity, condition, writer, zone)
        .Run();
}

template <class T, int N, class Out>
bool LabelMeasuredZones(cv::Mat const & image, eConnexityType connexity, cv::Mat & labels)
{
    using In = common::Pixel<T, N>;
    if (labelling_internals::CanLabelByRuns(connexity, image.total()))
    {
        // Elements beside the labels, in a label image of more channels, are zeroed as well.
        if (labels.channels() > 1) labels = cv::Scalar(0);
        labelling_internals::LabelByRuns<Out>(MeasuredPixels<In>(image), connexity, labels);
        return true;
    }
    Exactly<typename Always<T, N>::Type> condition;
    return LabelByWalk<decltype(condition), NoZero, In, Out>(image, connexity, condition, labels);
}

} // namespace

bool Label(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels)
{
    if (!SameSize(image, labels)) return false;
    return VisitElement(image, [&]<class T> {
        return VisitLabel(labels, [&]<class Out> {
            return VisitChannels(image, [&]<int N> { return LabelMeasuredZones<T, N, Out>(image, connexity, labels); });
        });
    });
}

} // namespace morvane::connexity
