#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/filters/NonLocalMeans.h>

#include <opencv2/core/utility.hpp>
#include <opencv2/photo.hpp>

#include <string>
#include <vector>

namespace
{

using namespace morvane::filters;

constexpr int kPatch = 5;
constexpr int kSearch = 21;
constexpr float kNoise = 10.0F; ///< grey levels

/// Terrain with noise, its levels spread by @p factor.
cv::Mat NoisyTerrain(int side, int depth, double factor)
{
    cv::Mat noise(side, side, CV_32FC1);
    cv::RNG(side).fill(noise, cv::RNG::NORMAL, 0.0, kNoise);
    cv::Mat terrain;
    benchmarks::GreyTerrain(side).convertTo(terrain, CV_32F);
    cv::Mat noisy = terrain + noise;
    noisy = cv::max(cv::min(noisy, 255.0), 0.0);
    noisy.convertTo(noisy, depth, factor);
    return noisy;
}

/// Times @p work on a number of OpenCV's threads.
template <class Work>
void TimeOnThreads(std::string const & name, int side, int depth, double factor, int threads, Work work)
{
    benchmarks::Time(
        name + "-" + std::to_string(threads) + "/" + std::to_string(side),
        [=] {
            return [=, image = NoisyTerrain(side, depth, factor), out = cv::Mat()]() mutable {
                int const before = cv::getNumThreads();
                cv::setNumThreads(threads);
                bool const isDone = work(image, out, kNoise * static_cast<float>(factor));
                cv::setNumThreads(before);
                return isDone;
            };
        },
        side);
}

void TimeDepth(std::string const & name, int side, int depth, double factor, bool hasSquares)
{
    for (int const threads : {1, 2})
    {
        TimeOnThreads(
            "NonLocalMeans/morvane/" + name, side, depth, factor, threads,
            [](cv::Mat const & image, cv::Mat & out, float h) {
                return NLMeansParallel(image, kPatch, kSearch, h, out);
            });
        TimeOnThreads(
            "NonLocalMeans/OpenCV L1/" + name, side, depth, factor, threads,
            [](cv::Mat const & image, cv::Mat & out, float h) {
                cv::fastNlMeansDenoising(image, out, std::vector<float>{h}, kPatch, kSearch, cv::NORM_L1);
                return true;
            });
        if (!hasSquares) continue;
        TimeOnThreads(
            "NonLocalMeans/OpenCV L2/" + name, side, depth, factor, threads,
            [](cv::Mat const & image, cv::Mat & out, float h) {
                cv::fastNlMeansDenoising(image, out, h, kPatch, kSearch);
                return true;
            });
    }
    TimeOnThreads(
        "NonLocalMeans/serial/" + name, side, depth, factor, 2,
        [](cv::Mat const & image, cv::Mat & out, float h) { return NLMeans(image, kPatch, kSearch, h, out); });
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {256, 512, 1024, 2048})
    {
        TimeDepth("8U", side, CV_8U, 1.0, true);
        TimeDepth("16U", side, CV_16U, 200.0, false);
    }
    // Where sums of a patch round, and every pixel must add up its own.
    for (int const side : {256, 512})
    {
        TimeOnThreads(
            "NonLocalMeans/morvane/32S", side, CV_32S, 1.0e6, 2, [](cv::Mat const & image, cv::Mat & out, float h) {
                return NLMeansParallel(image, kPatch, kSearch, h, out);
            });
    }
    return true;
}();

} // namespace
