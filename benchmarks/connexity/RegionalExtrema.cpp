#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/connexity/ConnectedZoneScan.h>
#include <morvane/connexity/RegionalExtrema.h>

#include <opencv2/imgproc.hpp>

#include <string>

namespace
{

using namespace morvane::connexity;

benchmarks::NamedImage const kInputs[] = {
    {"8U", benchmarks::GreyBlobs},
    {"16U",
     [](int side) {
         return benchmarks::Terrain(side, CV_16UC1);
     }},
    {"32F",
     [](int side) {
         return benchmarks::Terrain(side, CV_32FC1);
     }},
};

/// The plain form: a walk over the flat zones that compares every pixel with every neighbour.
template <class T>
bool WalkMaxima(cv::Mat const & image, eConnexityType connexity, cv::Mat & labels)
{
    labels.setTo(0);
    auto const neighbourhood = NeighbourhoodOver(Connexity(connexity), image.size());
    int maxima = 0;
    auto const write = [&](Zone const & zone) {
        for (cv::Point const & pixel : zone)
        {
            T const value = image.at<T>(pixel);
            for (std::size_t index = 0; index < neighbourhood.Count(); ++index)
            {
                auto const neighbour = neighbourhood.Neighbour(pixel, index);
                if (neighbour && image.at<T>(*neighbour) > value) return;
            }
        }
        ++maxima;
        for (cv::Point const & pixel : zone)
        {
            labels.at<int>(pixel) = maxima;
        }
    };
    Zone zone;
    Exactly<EqualConnected<T>> condition;
    return ConnectedZoneScan<T, decltype(write) const, Exactly<EqualConnected<T>>, AllPixels>(
               image, connexity, condition, write, zone)
        .Run();
}

bool WalkMaximaOf(cv::Mat const & image, eConnexityType connexity, cv::Mat & labels)
{
    switch (image.depth())
    {
    case CV_8U:
        return WalkMaxima<uchar>(image, connexity, labels);
    case CV_16U:
        return WalkMaxima<ushort>(image, connexity, labels);
    default:
        return WalkMaxima<float>(image, connexity, labels);
    }
}

[[maybe_unused]] bool const registered = [] {
    using Form = bool (*)(cv::Mat const &, eConnexityType, cv::Mat &);
    std::pair<std::string, Form> const forms[] = {
        {"LabelMaxima/morvane/",
         [](cv::Mat const & image, eConnexityType connexity, cv::Mat & labels) {
             return LabelMaxima(image, connexity, labels);
         }},
        {"LabelMaxima/walk/", WalkMaximaOf},
        {"LabelMinima/morvane/",
         [](cv::Mat const & image, eConnexityType connexity, cv::Mat & labels) {
             return LabelMinima(image, connexity, labels);
         }},
    };
    for (int const side : {512, 1024, 2048, 4096})
    {
        for (benchmarks::NamedImage const & input : kInputs)
        {
            for (auto const connexity : {eConnexity4, eConnexity8})
            {
                for (auto const & [name, form] : forms)
                {
                    std::string const where =
                        input.name + (connexity == eConnexity4 ? "-4/" : "-8/") + std::to_string(side);
                    benchmarks::Time(
                        name + where,
                        [=, form = form] {
                            return [=, image = input.make(side), labels = cv::Mat(side, side, CV_32SC1)]() mutable {
                                return form(image, connexity, labels);
                            };
                        },
                        side);
                }
            }
        }
    }
    return true;
}();

} // namespace
