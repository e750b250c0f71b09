#include "support/Images.h"

#include <morvane/connexity/ConnectedZoneScan.h>
#include <morvane/connexity/Labelling.h>

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include <functional>
#include <string>
#include <vector>

namespace
{

using morvane::connexity::eConnexityType;

struct Case
{
    std::string name;
    std::function<cv::Mat(int side)> make;
};

std::vector<Case> const & Cases()
{
    static std::vector<Case> const cases = {
        {"blobs", benchmarks::Blobs},
        {"random10",
         [](int side) {
             return benchmarks::RandomMask(side, 0.1);
         }},
        {"random50",
         [](int side) {
             return benchmarks::RandomMask(side, 0.5);
         }},
        {"random90",
         [](int side) {
             return benchmarks::RandomMask(side, 0.9);
         }},
        {"spiral", benchmarks::Spiral},
        {"depth", benchmarks::DepthPanorama},
    };
    return cases;
}

void CountPixels(benchmark::State & state, cv::Mat const & image)
{
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(image.total()));
}

void TimeLabel(benchmark::State & state, Case const & input, int side, eConnexityType connexity)
{
    cv::Mat const image = input.make(side);
    cv::Mat labels(image.size(), CV_32SC1);
    for (auto _ : state)
    {
        bool done = morvane::connexity::Label(image, connexity, labels);
        benchmark::DoNotOptimize(done);
    }
    CountPixels(state, image);
}

void TimeOpenCV(benchmark::State & state, Case const & input, int side, int neighbours, int algorithm)
{
    // Its input is a mask of bytes; making it is not timed.
    cv::Mat const image = input.make(side) != 0;
    cv::Mat labels(image.size(), CV_32SC1);
    for (auto _ : state)
    {
        int count = cv::connectedComponents(image, labels, neighbours, CV_32S, algorithm);
        benchmark::DoNotOptimize(count);
    }
    CountPixels(state, image);
}

/// The general walk, through the public engine, with the condition called directly.
void TimeWalk(benchmark::State & state, Case const & input, int side, eConnexityType connexity)
{
    using namespace morvane::connexity;
    cv::Mat const image = input.make(side);
    cv::Mat labels(image.size(), CV_32SC1);
    for (auto _ : state)
    {
        labels.setTo(0);
        Exactly<AlwaysConnected<uchar>> condition;
        ZoneLabelWriter<int> writer{&labels};
        Zone zone;
        ConnectedZoneScan<uchar, ZoneLabelWriter<int>, Exactly<AlwaysConnected<uchar>>, NoZero>(
            image, connexity, condition, writer, zone)
            .Run();
    }
    CountPixels(state, image);
}

void Register(std::string const & name, std::function<void(benchmark::State &)> const & run)
{
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
}

void RegisterCase(Case const & input, int side)
{
    std::string const where = input.name + "/" + std::to_string(side);
    for (int const neighbours : {4, 8})
    {
        auto const connexity = neighbours == 4 ? morvane::connexity::eConnexity4 : morvane::connexity::eConnexity8;
        std::string const label = "Label" + std::to_string(neighbours);
        Register(label + "/morvane/" + where, [=](auto & state) { TimeLabel(state, input, side, connexity); });
        if (input.name != "depth")
        {
            Register(label + "/morvane-walk/" + where, [=](auto & state) { TimeWalk(state, input, side, connexity); });
        }
        for (auto const & [name, algorithm] :
             {std::pair{"spaghetti", cv::CCL_SPAGHETTI}, {"grana", cv::CCL_GRANA}, {"wu", cv::CCL_WU}})
        {
            Register(label + "/opencv-" + name + "/" + where, [=, algorithm = algorithm](auto & state) {
                TimeOpenCV(state, input, side, neighbours, algorithm);
            });
        }
    }
}

[[maybe_unused]] bool const registered = [] {
    for (Case const & input : Cases())
    {
        for (int const side : {256, 512, 1024, 2048, 4096})
        {
            RegisterCase(input, side);
        }
    }
    return true;
}();

} // namespace
