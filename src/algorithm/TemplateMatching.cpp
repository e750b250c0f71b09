#include <morvane/algorithm/TemplateMatching.h>

#include "algorithm/PaddedReference.h"
#include "algorithm/PeakSearch.h"
#include "common/Dispatch.h"

#include <morvane/algorithm/MatchingScores.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>

namespace morvane::algorithm
{

using matching::TM_Parameters;

namespace
{

constexpr int kEveryPosition = 0; // the modes of the engines
constexpr int kByAlgorithm = 1;
constexpr double kHalfTurn = 180.0;
constexpr double kAnywhere = -1.0;

/// Takes a candidate that is better than the best; what the caller brought along stays.
void KeepBetter(TemplateMatchingInfo const & candidate, double angle, TemplateMatchingInfo & best)
{
    if (!(candidate.score > best.score)) return;
    best.score = candidate.score;
    best.translationX = candidate.translationX;
    best.translationY = candidate.translationY;
    best.positionX = candidate.positionX;
    best.positionY = candidate.positionY;
    best.angle = angle;
}

/// The share of the work as it is told.
float ShareOf(double done, double all)
{
    return std::min(static_cast<float>(done / all), 1.0F);
}

/// Runs the engine over an orientation and a range of translations.
bool Search(
    cv::Mat const & reference, cv::Mat const & moving, TM_Parameters const & parameters,
    std::function<bool(float)> const & progress, TemplateMatchingInfo & best, CandidateQueues & queues,
    OpenCV_algos algo)
{
    return matching_internals::SearchRotationsAndTranslations(
        reference, moving, parameters, progress, best, queues, algo, kByAlgorithm);
}

} // namespace

// The functions are taken by value as the interface has it.
// NOLINTBEGIN(performance-unnecessary-value-param)

bool TemplateMatchingFullManual(
    cv::Mat const & reference, cv::Mat const & moving, TM_Parameters const & parameters,
    std::function<bool(float)> progress, TemplateMatchingInfo & best, CandidateQueues & queues, OpenCV_algos & algo)
{
    return Search(reference, moving, parameters, progress, best, queues, algo);
}

bool TemplateMatchingAutomatic(
    cv::Mat const & reference, cv::Mat const & moving, TM_Parameters const & parameters,
    std::function<bool(float)> progress, TemplateMatchingInfo & best, CandidateQueues & queues, OpenCV_algos & algo)
{
    TM_Parameters changed = parameters;
    changed.Set_Orientation_Infos({0.0, kHalfTurn, 2.0});
    changed.Set_Translation_Range(kAnywhere);
    return Search(reference, moving, changed, progress, best, queues, algo);
}

bool TemplateMatchingOnlyRotation(
    cv::Mat const & reference, cv::Mat const & moving, TM_Parameters const & parameters,
    std::function<bool(float)> progress, TemplateMatchingInfo & best, CandidateQueues & queues, OpenCV_algos & algo)
{
    TM_Parameters changed = parameters;
    changed.Set_Orientation_Infos({0.0, kHalfTurn, 1.0});
    changed.Set_Translation_Range(1.0);
    return Search(reference, moving, changed, progress, best, queues, algo);
}

bool TemplateMatchingOnlyTransation(
    cv::Mat const & reference, cv::Mat const & moving, TM_Parameters const & parameters,
    std::function<bool(float)> progress, TemplateMatchingInfo & best, CandidateQueues & queues, OpenCV_algos & algo)
{
    TM_Parameters changed = parameters;
    changed.Set_Orientation_Range(0.0);
    changed.Set_Orientation_Step(1.0);
    changed.Set_Translation_Range(kAnywhere);
    return Search(reference, moving, changed, progress, best, queues, algo);
}

bool TemplateMatchingFullAuto(
    cv::Mat const & reference, cv::Mat const & moving, std::function<bool(float)> progress, TemplateMatchingInfo & best)
{
    constexpr double kStep = 3.0;
    return matching_internals::SearchFullAuto(reference, moving, 0.0, kHalfTurn, kStep, kEveryPosition, progress, best);
}

// NOLINTEND(performance-unnecessary-value-param)

namespace matching_internals
{

namespace
{

/// What the moving image is laid on, in every step of a search.
struct Scene
{
    cv::Mat padded;
    Frame frame;
};

bool TestEveryPosition(Scene const & scene, cv::Mat const & rotated, TemplateMatchingInfo & candidate)
{
    return TestAllPossibleTranslation(
        scene.padded, rotated, scene.frame.margin, scene.frame.reference.height, scene.frame.reference.width,
        scene.frame.diagonal, candidate);
}

/// The number of steps of a search. @return 0 for one that no list can have
int StepsOf(TM_Parameters const & parameters)
{
    double const steps = std::round(2.0 * parameters.Get_Orientation_Range() / parameters.Get_Orientation_Step());
    // Not a number at all is one step, too.
    return steps >= 1.0 ? std::max(common::TruncateTo<int>(steps), 0) : 1;
}

} // namespace

bool SearchRotationsAndTranslations(
    cv::Mat const & reference, cv::Mat const & moving, TM_Parameters const & parameters,
    std::function<bool(float)> const & progress, TemplateMatchingInfo & best, CandidateQueues & queues,
    OpenCV_algos algo, int mode)
{
    (void)progress(0.0F);
    auto const frame = FrameOf(reference, moving, parameters.GetImageInfos().Get_Ratio());
    int const steps = StepsOf(parameters);
    if (!frame || steps == 0) return false;
    Scene const scene{Padded(reference, *frame), *frame};
    queues.clear();
    queues.resize(static_cast<std::size_t>(steps));

    std::unique_ptr<PeakSearch const> peaks;
    double angle = parameters.Get_Orientation_Center() - parameters.Get_Orientation_Range();
    for (int i = 0; i < steps; ++i)
    {
        // The steps grow, on purpose.
        angle += i * parameters.Get_Orientation_Step();
        cv::Mat rotated;
        double dx = 0.0;
        double dy = 0.0;
        if (!utils::RotateImage(moving, angle, rotated, dx, dy)) return false;

        TemplateMatchingInfo candidate;
        bool done = false;
        if (mode == kEveryPosition) done = TestEveryPosition(scene, rotated, candidate);
        if (mode == kByAlgorithm)
        {
            constexpr double kPi = 3.141592653589793;
            cv::Point_<double> const station = utils::UpdateStationPosition(
                {moving.cols, moving.rows}, parameters.GetMovStationPositionOnMov(), angle * kPi / kHalfTurn);
            if (algo == ExpectedPosition)
            {
                done = TestTranslationsAroundExpectedPosition(
                    scene.padded, rotated, frame->margin, reference.rows, reference.cols, frame->diagonal, parameters,
                    station, candidate);
            }
            if (algo == Correlation)
            {
                if (!peaks) peaks = std::make_unique<PeakSearch const>(scene.padded, *frame, parameters);
                done = peaks->Find(rotated, station, queues[static_cast<std::size_t>(i)], candidate);
            }
        }
        if (!done) return false;

        if (candidate.score > best.score)
        {
            best.peakX = candidate.peakX;
            best.peakY = candidate.peakY;
        }
        KeepBetter(candidate, angle, best);
        if (!progress(ShareOf(i, steps))) break;
    }
    (void)progress(1.0F);
    return true;
}

bool SearchFullAuto(
    cv::Mat const & reference, cv::Mat const & moving, double center, double range, double step, int mode,
    std::function<bool(float)> const & progress, TemplateMatchingInfo & best)
{
    (void)progress(0.0F);
    auto const frame = FrameOf(reference, moving, best.ratio);
    double const farthest = std::abs(center) + std::abs(range);
    bool const leadsOn = step > 0.0 && std::isfinite(farthest) && farthest + step > farthest;
    if (!frame || !leadsOn) return false;
    Scene const scene{Padded(reference, *frame), *frame};

    double const count = std::round(2.0 * range / step);
    int done = 0;
    for (double angle = center - range; angle <= center + range; angle += step)
    {
        cv::Mat rotated;
        double dx = 0.0;
        double dy = 0.0;
        if (!utils::RotateImage(moving, angle, rotated, dx, dy)) return false;
        TemplateMatchingInfo candidate;
        if (mode != kEveryPosition || !TestEveryPosition(scene, rotated, candidate)) return false;
        KeepBetter(candidate, angle, best);
        ++done;
        // This search cannot be stopped.
        (void)progress(ShareOf(done, count));
    }
    (void)progress(1.0F);
    return true;
}

} // namespace matching_internals

} // namespace morvane::algorithm
