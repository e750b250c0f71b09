#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/connexity/ZoneGraph.h>

#include <opencv2/imgproc.hpp>

#include <string>

namespace
{

using namespace morvane::connexity;

/// Zones that touch, a zone for each 210 pixels: each pixel belongs to the nearest of scattered points.
cv::Mat Cells(int side)
{
    constexpr int kPixels = 210;
    cv::Mat1b isFar(side, side, uchar{1});
    cv::RNG random(7);
    for (int point = 0; point < side * side / kPixels; ++point)
    {
        isFar(random.uniform(0, side), random.uniform(0, side)) = 0;
    }
    cv::Mat distances;
    cv::Mat labels;
    cv::distanceTransform(isFar, distances, labels, cv::DIST_L2, cv::DIST_MASK_5, cv::DIST_LABEL_PIXEL);
    return labels;
}

/// One zone that surrounds @p count others of one pixel.
cv::Mat Star(int side, int count)
{
    constexpr int kPitch = 4;
    cv::Mat1i labels(side, side, 1);
    int label = 1;
    for (int y = 0; y < side; y += kPitch)
    {
        for (int x = 0; x < side && label <= count; x += kPitch)
        {
            labels(y, x) = ++label;
        }
    }
    return labels;
}

/// The plain form: whether two labels are joined is read from the list of edges of one.
bool WalkTheLists(cv::Mat const & labels, Graph & graph)
{
    double largest = 0.0;
    cv::minMaxLoc(labels, nullptr, &largest);
    graph.Clear();
    graph.Resize(static_cast<std::size_t>(largest) + 1);
    Connexity const connexity(eConnexity8);
    cv::Rect const image({}, labels.size());
    for (int y = 0; y < labels.rows; ++y)
    {
        for (int x = 0; x < labels.cols; ++x)
        {
            int const label = labels.at<int>(y, x);
            for (cv::Point const & offset : connexity)
            {
                cv::Point const to = cv::Point(x, y) + offset;
                if (label < 1 || !image.contains(to)) continue;
                int const other = labels.at<int>(to);
                auto const u = static_cast<std::size_t>(label);
                auto const v = static_cast<std::size_t>(other);
                if (other >= 1 && other != label && !graph.HasEdge(u, v)) graph.AddEdge(u, v, false);
            }
        }
    }
    return true;
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {512, 1024, 2048, 4096})
    {
        benchmarks::NamedImage const zones{"cells", Cells};
        benchmarks::NamedImage const star{"star-10000", [](int size) {
                                              return Star(size, 10000);
                                          }};
        for (benchmarks::NamedImage const & input : {zones, star})
        {
            benchmarks::TimeOn(
                "ExtractGraph/morvane/", input, side, [graph = Graph()](cv::Mat & labels, cv::Mat &) mutable {
                    return ExtractGraph(labels, eConnexity8, graph);
                });
            benchmarks::TimeOn(
                "ExtractGraph/plain/", input, side,
                [graph = Graph()](cv::Mat & labels, cv::Mat &) mutable { return WalkTheLists(labels, graph); });
        }
    }
    return true;
}();

} // namespace
