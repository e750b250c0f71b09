#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/algorithm/MatchingScores.h>
#include <morvane/algorithm/TemplateMatching.h>

#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include <string>
#include <utility>

namespace
{

using namespace morvane::algorithm;

/// Occupancies from 0 to 12, half of the pixels empty.
cv::Mat Occupancy(int side)
{
    cv::Mat1i image(side, side);
    cv::RNG random(5);
    random.fill(image, cv::RNG::UNIFORM, -12, 13);
    return cv::max(image, 0);
}

/// Runs with so many threads of OpenCV.
template <class Work>
auto OnThreads(int threads, Work work)
{
    return [=]() mutable {
        int const before = cv::getNumThreads();
        cv::setNumThreads(threads);
        bool const done = work();
        cv::setNumThreads(before);
        return done;
    };
}

constexpr double kAngle = 37.0;

void TimeRotation(std::string const & type, int depth)
{
    for (int const side : {512, 1024, 2048})
    {
        std::string const rest = type + "/" + std::to_string(side);
        benchmarks::Time(
            "RotateImage/morvane/" + rest,
            [=] {
                return OnThreads(1, [image = benchmarks::RandomValues(side, depth), out = cv::Mat()]() mutable {
                    double dx = 0.0;
                    double dy = 0.0;
                    return utils::RotateImage(image, kAngle, out, dx, dy);
                });
            },
            side);
        // The same square, made beforehand.
        benchmarks::Time(
            "RotateImage/warpAffine/" + rest,
            [=] {
                cv::Mat canvas;
                double dx = 0.0;
                double dy = 0.0;
                (void)utils::RotateImage(benchmarks::RandomValues(side, depth), 0.0, canvas, dx, dy);
                float const middle = static_cast<float>(canvas.cols) * 0.5F;
                cv::Mat const matrix = cv::getRotationMatrix2D({middle, middle}, kAngle, 1.0);
                return OnThreads(1, [=, out = cv::Mat()]() mutable {
                    cv::warpAffine(canvas, out, matrix, canvas.size(), cv::INTER_NEAREST);
                    return true;
                });
            },
            side);
    }
}

/// Every position of a 128 x 128 image on a reference that is larger by a number of positions.
void TimePositions(int threads)
{
    constexpr int kPositions = 64;
    for (int const side : {128, 512, 1024})
    {
        benchmarks::Time(
            "TestAllPossibleTranslation/morvane-" + std::to_string(threads) + "/4096-positions/" + std::to_string(side),
            [=] {
                auto const work = [padded = Occupancy(side + kPositions), rotated = Occupancy(side), side] {
                    TemplateMatchingInfo candidate;
                    return matching_internals::TestAllPossibleTranslation(
                        padded, rotated, 0, side, side, side, candidate);
                };
                return OnThreads(threads, work);
            },
            side);
    }
}

/// A search of 180 angles, and its correlations alone.
void TimeCorrelation(int side)
{
    matching::TM_Parameters const parameters(
        {1.0, 1.0, 0.1}, {0.0, 0.0}, {side * 0.5, side * 0.5}, {side * 0.5, side * 0.5},
        {0.0, 180.0, 2.0, 0.0, 0.0, -1.0});
    benchmarks::Time(
        "TemplateMatchingAutomatic/morvane/occupancy/" + std::to_string(side),
        [=] {
            return OnThreads(1, [=, reference = Occupancy(side), moving = Occupancy(side)] {
                TemplateMatchingInfo best;
                CandidateQueues queues;
                OpenCV_algos algo = Correlation;
                return TemplateMatchingAutomatic(
                    reference, moving, parameters, [](float) { return true; }, best, queues, algo);
            });
        },
        side);
    benchmarks::Time(
        "TemplateMatchingAutomatic/matchTemplate/occupancy/" + std::to_string(side),
        [=] {
            cv::Mat rotated;
            double dx = 0.0;
            double dy = 0.0;
            (void)utils::RotateImage(Occupancy(side), kAngle, rotated, dx, dy);
            int const margin = cvRound(side * 1.41421356 * 0.1);
            cv::Mat padded;
            cv::copyMakeBorder(Occupancy(side), padded, margin, margin, margin, margin, cv::BORDER_CONSTANT);
            padded.convertTo(padded, CV_8U);
            rotated.convertTo(rotated, CV_8U);
            return OnThreads(1, [=] {
                cv::Mat result;
                for (int i = 0; i < 180; ++i)
                {
                    cv::matchTemplate(padded, rotated, result, cv::TM_CCORR);
                }
                return !result.empty();
            });
        },
        side);
}

[[maybe_unused]] bool const registered = [] {
    TimeRotation("8U", CV_8UC1);
    TimeRotation("32S", CV_32SC1);
    for (int const side : {256, 512, 1024})
    {
        benchmarks::Time(
            "EqualOccupancyScore/morvane/occupancy/" + std::to_string(side),
            [=] {
                return [a = Occupancy(side), b = Occupancy(side)] {
                    return matching_internals::EqualOccupancyScore(a, b);
                };
            },
            side);
    }
    TimePositions(1);
    TimePositions(2);
    TimeCorrelation(256);
    TimeCorrelation(512);
    return true;
}();

} // namespace
