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

void RegisterFlat(Input const & input, int side, eConnexityType connexity, std::string const & where)
{
    benchmarks::Time(
        "LabelFlatZones/morvane/" + where,
        [=] {
            return [=, image = input.make(side), labels = cv::Mat(side, side, CV_32SC1)]() mutable {
                return LabelFlatZones(image, connexity, labels);
            };
        },
        side);
    benchmarks::Time(
        "LabelFlatZones/walk/" + where,
        [=] {
            return [=, image = input.make(side), labels = cv::Mat(side, side, CV_32SC1)]() mutable {
                WalkFlatZones(image, connexity, labels);
                return true;
            };
        },
        side);
    benchmarks::Time(
        "LabelFlatZonesNoZero/morvane/" + where,
        [=] {
            return [=, image = input.make(side), labels = cv::Mat(side, side, CV_32SC1)]() mutable {
                return LabelFlatZonesNoZero(image, connexity, labels);
            };
        },
        side);
    benchmarks::Time(
        "LabelFlatZonesNoZero2/morvane/" + where,
        [=] {
            return [=, image = input.make(side), labels = cv::Mat(side, side, CV_32SC1)]() mutable {
                return LabelFlatZonesNoZero(image, image, connexity, labels);
            };
        },
        side);
    benchmarks::Time(
        "CountFlatZones/morvane/" + where,
        [=] {
            return [=, image = input.make(side)]() {
                int count = 0;
                return CountFlatZones(image, connexity, count);
            };
        },
        side);
}

void RegisterDelta(Input const & input, int side, eConnexityType connexity, std::string const & where)
{
    double const delta = input.delta;
    benchmarks::Time(
        "LabelDeltaFlatZones/morvane/" + where,
        [=] {
            return [=, image = input.make(side), labels = cv::Mat(side, side, CV_32SC1)]() mutable {
                return LabelDeltaFlatZones(image, connexity, delta, labels);
            };
        },
        side);
    benchmarks::Time(
        "LabelDeltaFlatZones/walk/" + where,
        [=] {
            return [=, image = input.make(side), labels = cv::Mat(side, side, CV_32SC1)]() mutable {
                WalkDeltaZones(image, connexity, delta, labels);
                return true;
            };
        },
        side);
    benchmarks::Time(
        "LabelDeltaFlatZonesNoZero/morvane/" + where,
        [=] {
            return [=, image = input.make(side), labels = cv::Mat(side, side, CV_32SC1)]() mutable {
                return LabelDeltaFlatZonesNoZero(image, connexity, delta, labels);
            };
        },
        side);
    benchmarks::Time(
        "LabelDeltaFlatZones2/morvane/" + where,
        [=] {
            return [=, image = input.make(side), labels = cv::Mat(side, side, CV_32SC1)]() mutable {
                return LabelDeltaFlatZones(image, image, connexity, delta, delta, labels);
            };
        },
        side);
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
                RegisterDelta(input, side, connexity, where);
            }
        }
    }
    return true;
}();

} // namespace
