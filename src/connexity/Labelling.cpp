#include <morvane/connexity/Labelling.h>

#include <morvane/connexity/ConnectedZoneScan.h>

#include "common/Dispatch.h"

namespace morvane::connexity
{

using common::SameSize;
using common::VisitChannels;
using common::VisitElement;
using common::VisitLabel;

bool Label(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels)
{
    if (!SameSize(image, labels)) return false;
    return VisitElement(image, [&]<class T> {
        return VisitLabel(labels, [&]<class Label> {
            return VisitChannels(image, [&]<int N> {
                labels = cv::Scalar(0);
                using In = common::Pixel<T, N>;
                using Condition = Exactly<typename std::conditional_t<
                    N == 1, std::type_identity<AlwaysConnected<T>>,
                    std::type_identity<AlwaysConnected_MultiChannel<T, N == 1 ? 2 : N>>>::type>;
                Condition condition;
                ZoneLabelWriter<Label> writer{&labels};
                Zone zone;
                ConnectedZoneScan<In, ZoneLabelWriter<Label>, Condition, NoZero> scan(
                    image, connexity, condition, writer, zone);
                return scan.Run();
            });
        });
    });
}

} // namespace morvane::connexity
