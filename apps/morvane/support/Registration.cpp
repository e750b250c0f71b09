#include "morvane/support/Registration.h"

#include <morvane/algorithm/MatchingScores.h>
#include <morvane/algorithm/TemplateMatching.h>
#include <morvane/common/Conversions.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace program
{

namespace
{

using namespace morvane::algorithm;

constexpr int kCoarsestSide = 56; ///< pixels of the moving image in the first search
constexpr int kLowestLevel = 3;   ///< the search counts equal pixels above 2
constexpr double kMostLevels = 1e9;
constexpr double kCoarseShare = 0.8; ///< of the work

/// Ends a search that does not listen to what its callback answers.
struct Ended
{};

/// The highest level of each square of @p factor x @p factor pixels.
cv::Mat Coarser(cv::Mat const & levels, int factor)
{
    cv::Mat1i coarse((levels.rows + factor - 1) / factor, (levels.cols + factor - 1) / factor, 0);
    for (int y = 0; y < levels.rows; ++y)
    {
        for (int x = 0; x < levels.cols; ++x)
        {
            int & level = coarse(y / factor, x / factor);
            level = std::max(level, levels.at<int>(y, x));
        }
    }
    return coarse;
}

/// The middle of an image, from the corner of its first pixel.
cv::Point2d MiddleOf(cv::Mat const & image)
{
    return {image.cols * 0.5, image.rows * 0.5};
}

/// Pixels of the margin that the search leaves around the reference.
double MarginOf(cv::Mat const & moving, double ratio)
{
    return std::floor(std::floor(std::hypot(moving.cols, moving.rows) + 0.5) * ratio + 0.5);
}

/// The pose of a placement.
Pose PoseOf(TemplateMatchingInfo const & found, cv::Mat const & moving, double ratio)
{
    constexpr double kRadians = CV_PI / 180.0;
    cv::Point2d const middle =
        utils::UpdateStationPosition({moving.cols, moving.rows}, MiddleOf(moving), found.angle * kRadians);
    double const margin = MarginOf(moving, ratio);
    Pose pose;
    pose.angle = found.angle;
    pose.middle = cv::Point2d(found.positionX, found.positionY) + middle - cv::Point2d(margin, margin);
    pose.score = found.score;
    pose.pairs = cv::countNonZero(moving);
    return pose;
}

bool IsFound(TemplateMatchingInfo const & best)
{
    return best.score > 0.0;
}

/// Tries angles around a pose, the nearest first, and shifts at each.
///
/// @param pose in pixels of @p reference; replaced by the best, of equals by the nearest
/// @param angleStep degrees between angles; four are tried to either side
/// @return false when the search was ended
bool Refine(
    cv::Mat const & reference, cv::Mat const & moving, double ratio, double angleStep,
    std::function<bool(double)> const & report, Pose & pose)
{
    constexpr std::array kSteps{0, -1, 1, -2, 2, -3, 3, -4, 4};
    constexpr double kReach = 4.0;
    TemplateMatchingInfo best;
    CandidateQueues queues;
    OpenCV_algos algo = ExpectedPosition;
    double tried = 0.0;
    for (int const steps : kSteps)
    {
        matching::TM_Parameters const parameters(
            {1.0, 1.0, ratio}, {0.0, 0.0}, MiddleOf(moving), {0.0, 0.0},
            {pose.angle + steps * angleStep, 0.0, 1.0, pose.middle.x, pose.middle.y, kReach});
        bool const done = TemplateMatchingFullManual(
            reference, moving, parameters, [](float) { return true; }, best, queues, algo);
        ++tried;
        if (!done || !report(tried / kSteps.size())) return false;
    }
    if (IsFound(best)) pose = PoseOf(best, moving, ratio);
    return true;
}

} // namespace

cv::Mat LevelsOf(cv::Mat const & heights, double lowest, HeightLevels const & levels)
{
    cv::Mat values;
    heights.convertTo(values, CV_64F);
    cv::Mat1i result(values.size(), 0);
    cv::Rect const image({0, 0}, values.size());
    for (int y = 0; y < values.rows; ++y)
    {
        for (int x = 0; x < values.cols; ++x)
        {
            double const height = values.at<double>(y, x);
            if (height == 0.0) continue;
            double low = height;
            double high = height;
            cv::Mat const around = values(cv::Rect(x - 1, y - 1, 3, 3) & image);
            for (auto it = around.begin<double>(); it != around.end<double>(); ++it)
            {
                if (*it == 0.0) continue;
                low = std::min(low, *it);
                high = std::max(high, *it);
            }
            if (high - low < levels.structure) continue;
            result(y, x) =
                kLowestLevel + morvane::common::TruncateTo<int>(std::min((height - lowest) / levels.step, kMostLevels));
        }
    }
    return result;
}

std::optional<Pose>
FindPose(cv::Mat const & reference, cv::Mat const & moving, double margin, std::function<bool(double)> const & report)
{
    int factor = 1;
    while (std::max(moving.rows, moving.cols) > kCoarsestSide * factor)
    {
        factor *= 2;
    }
    int finer = 0;
    for (int f = factor; f > 1; f /= 2)
    {
        ++finer;
    }

    cv::Mat const coarse = Coarser(moving, factor);
    TemplateMatchingInfo best;
    best.ratio = margin;
    bool isEnded = false;
    try
    {
        auto const listen = [&](float share) {
            if (!report(kCoarseShare * share)) throw Ended();
            return true;
        };
        if (!TemplateMatchingFullAuto(Coarser(reference, factor), coarse, listen, best)) return std::nullopt;
    }
    catch (Ended const &)
    {
        isEnded = true;
    }
    if (!IsFound(best)) return std::nullopt;

    Pose pose = PoseOf(best, coarse, margin);
    double angleStep = 0.75;
    for (int level = 0; level <= finer && !isEnded; ++level)
    {
        auto const tell = [&](double share) {
            return report(kCoarseShare + (1.0 - kCoarseShare) * (level + share) / (finer + 1));
        };
        isEnded = !Refine(Coarser(reference, factor), Coarser(moving, factor), margin, angleStep, tell, pose);
        angleStep /= 2.0;
        if (factor == 1 || isEnded) break;
        factor /= 2;
        pose.middle *= 2.0;
    }
    pose.isFinest = !isEnded;
    // In pixels of the whole images.
    pose.middle *= factor;
    return pose;
}

cv::Mat OverlayOf(cv::Mat const & reference, cv::Mat const & moving, Pose const & pose)
{
    cv::Mat turned;
    double dx = 0.0;
    double dy = 0.0;
    (void)utils::RotateImage(moving, pose.angle, turned, dx, dy);
    cv::Point const place(cvRound(pose.middle.x - turned.cols * 0.5), cvRound(pose.middle.y - turned.rows * 0.5));
    cv::Rect const all = cv::Rect({0, 0}, reference.size()) | cv::Rect(place, turned.size());
    cv::Mat fixed = cv::Mat::zeros(all.size(), CV_8UC1);
    cv::Mat moved = fixed.clone();
    reference.copyTo(fixed(cv::Rect(-all.tl(), reference.size())));
    turned.copyTo(moved(cv::Rect(place - all.tl(), turned.size())));
    cv::Mat const shown = fixed | moved;
    cv::Rect const content = cv::boundingRect(shown);
    cv::Mat picture;
    cv::merge(std::array{fixed, moved, fixed}, picture);
    return content.empty() ? picture : picture(content).clone();
}

} // namespace program
