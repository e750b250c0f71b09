#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/connexity/ConnectedZoneScan.h>
#include <morvane/connexity/Labelling.h>

#include <cstring>
#include <string>

namespace
{

using namespace morvane::connexity;

/// An image with the delta that goes with it.
struct Input
{
    std::string name;
    cv::Mat (*make)(int side);
    double delta;
};

Input const kInputs[] = {
    {"8U", benchmarks::GreyBlobs, 1.0},
    {"16U", [](int side) { return benchmarks::Terrain(side, CV_16UC1); }, 25.0},
    {"32F", [](int side) { return benchmarks::Terrain(side, CV_32FC1); }, 0.025},
};

/// The plain form: the walk, with its conditions called directly.
template <class T, class Condition, class Pixels>
void Walk(cv::Mat const & image, eConnexityType connexity, Exactly<Condition> condition, cv::Mat & labels)
{
    labels.setTo(0);
    ZoneLabelWriter<int> writer{&labels};
    Zone zone;
    ConnectedZoneScan<T, ZoneLabelWriter<int>, Exactly<Condition>, Pixels>(image, connexity, condition, writer, zone)
        .Run();
}

template <class T>
void WalkFlat(cv::Mat const & image, eConnexityType connexity, cv::Mat & labels)
{
    Walk<T, EqualConnected<T>, AllPixels>(image, connexity, Exactly<EqualConnected<T>>(), labels);
}

template <class T>
void WalkDelta(cv::Mat const & image, eConnexityType connexity, double delta, cv::Mat & labels)
{
    Walk<T, DeltaConnected<T>, AllPixels>(image, connexity, Exactly<DeltaConnected<T>>(delta), labels);
}

void WalkFlatZones(cv::Mat const & image, eConnexityType connexity, cv::Mat & labels)
{
    if (image.depth() == CV_8U) WalkFlat<uchar>(image, connexity, labels);
    if (image.depth() == CV_16U) WalkFlat<ushort>(image, connexity, labels);
    if (image.depth() == CV_32F) WalkFlat<float>(image, connexity, labels);
}

void WalkDeltaZones(cv::Mat const & image, eConnexityType connexity, double delta, cv::Mat & labels)
{
    if (image.depth() == CV_8U) WalkDelta<uchar>(image, connexity, delta, labels);
    if (image.depth() == CV_16U) WalkDelta<ushort>(image, connexity, delta, labels);
    if (image.depth() == CV_32F) WalkDelta<float>(image, connexity, delta, labels);
}

/// Times an operator that writes labels: @p label takes the image and the labels.
template <class Operator>
void TimeLabels(std::string const & name, Input const & input, int side, Operator const & label)
{
    benchmarks::Time(
        name,
        [=] {
            return [=, image = input.make(side), labels = cv::Mat(side, side, CV_32SC1)]() mutable {
                return label(image, labels);
            };
        },
        side);
}

/// Times an operator that counts.
template <class Operator>
void TimeCount(std::string const & name, Input const & input, int side, Operator const & count)
{
    benchmarks::Time(
        name,
        [=] {
            return [=, image = input.make(side)] {
                int zones = 0;
                return count(image, zones);
            };
        },
        side);
}

void RegisterFlat(Input const & input, int side, eConnexityType connexity, std::string const & where)
{
    TimeLabels("LabelFlatZones/morvane/" + where, input, side, [=](cv::Mat const & image, cv::Mat & labels) {
        return LabelFlatZones(image, connexity, labels);
    });
    TimeLabels("LabelFlatZones/walk/" + where, input, side, [=](cv::Mat const & image, cv::Mat & labels) {
        WalkFlatZones(image, connexity, labels);
        return true;
    });
    TimeLabels("LabelFlatZonesNoZero/morvane/" + where, input, side, [=](cv::Mat const & image, cv::Mat & labels) {
        return LabelFlatZonesNoZero(image, connexity, labels);
    });
    TimeLabels("LabelFlatZonesNoZero2/morvane/" + where, input, side, [=](cv::Mat const & image, cv::Mat & labels) {
        return LabelFlatZonesNoZero(image, image, connexity, labels);
    });
}

void RegisterCounts(Input const & input, int side, eConnexityType connexity, std::string const & where)
{
    TimeCount("CountFlatZones/morvane/" + where, input, side, [=](cv::Mat const & image, int & count) {
        return CountFlatZones(image, connexity, count);
    });
    TimeCount("CountFlatZonesNoZero/morvane/" + where, input, side, [=](cv::Mat const & image, int & count) {
        return CountFlatZonesNoZero(image, connexity, count);
    });
    TimeCount("CountZones/morvane/" + where, input, side, [=](cv::Mat const & image, int & count) {
        return CountZones(image, connexity, count);
    });
    TimeLabels("CountZones/Label/" + where, input, side, [=](cv::Mat const & image, cv::Mat & labels) {
        return Label(image, connexity, labels);
    });
}

void RegisterDelta(Input const & input, int side, eConnexityType connexity, std::string const & where)
{
    double const delta = input.delta;
    TimeLabels("LabelDeltaFlatZones/morvane/" + where, input, side, [=](cv::Mat const & image, cv::Mat & labels) {
        return LabelDeltaFlatZones(image, connexity, delta, labels);
    });
    TimeLabels("LabelDeltaFlatZones/walk/" + where, input, side, [=](cv::Mat const & image, cv::Mat & labels) {
        WalkDeltaZones(image, connexity, delta, labels);
        return true;
    });
    TimeLabels("LabelDeltaFlatZonesNoZero/morvane/" + where, input, side, [=](cv::Mat const & image, cv::Mat & labels) {
        return LabelDeltaFlatZonesNoZero(image, connexity, delta, labels);
    });
    TimeLabels("LabelDeltaFlatZones2/morvane/" + where, input, side, [=](cv::Mat const & image, cv::Mat & labels) {
        return LabelDeltaFlatZones(image, image, connexity, delta, delta, labels);
    });
    TimeLabels(
        "LabelDeltaFlatZonesWithAreaCondition/morvane/" + where, input, side,
        [=](cv::Mat const & image, cv::Mat & labels) {
            constexpr int kArea = 100;
            return LabelDeltaFlatZonesWithAreaCondition(image, image, connexity, delta, delta, kArea, labels);
        });
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {512, 1024, 2048, 4096})
    {
        for (Input const & input : kInputs)
        {
            for (auto const connexity : {eConnexity4, eConnexity8})
            {
                std::string const where =
                    input.name + (connexity == eConnexity4 ? "-4/" : "-8/") + std::to_string(side);
                RegisterFlat(input, side, connexity, where);
                RegisterCounts(input, side, connexity, where);
                RegisterDelta(input, side, connexity, where);
            }
        }
    }
    return true;
}();

} // namespace
