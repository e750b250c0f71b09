#include "algorithm/PeakSearch.h"

#include "common/Comparisons.h"

#include <morvane/common/ImageCompare.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace morvane::algorithm
{

using common::ImageCompare;
using common::kGreater;
using common::TruncateTo;

namespace
{

/// Positions from the first on, without the last.
struct Stretch
{
    std::int64_t first;
    std::int64_t last;
};

/// Eight bits in which everything occupied for certain counts the same.
bool Reduce(cv::Mat const & image, cv::Mat & reduced)
{
    constexpr double kCertain = 8.0;
    constexpr double kCertainWeight = 16.0;
    constexpr double kEmpty = 1.0;
    image.convertTo(reduced, CV_8U, 1.0, 0.0);
    return ImageCompare(reduced, kGreater, kCertain, cv::Scalar(kCertainWeight), reduced, reduced) &&
           ImageCompare(reduced, kGreater, kEmpty, reduced, cv::Scalar(0), reduced);
}

/// A whole number near a value, beyond any image for values that are.
std::int64_t Rounded(double value)
{
    constexpr double kBeyond = 1e12;
    return static_cast<std::int64_t>(std::clamp(std::round(value), -kBeyond, kBeyond));
}

/// A window along one axis: around an expected place, or everywhere without a range. Its width is odd.
Stretch StretchAround(double expected, double range, int positions)
{
    if (!(range > 0.0)) return {0, positions};
    if (std::isnan(expected)) return {0, 0};
    std::int64_t const first = Rounded(expected - range + 0.5);
    std::int64_t width = Rounded(2.0 * range);
    width += width % 2 == 0 ? 1 : 0;
    return {std::max<std::int64_t>(first, 0), std::min<std::int64_t>(first + width, positions)};
}

} // namespace

PeakSearch::PeakSearch(cv::Mat const & padded, Frame const & frame, matching::TM_Parameters const & parameters)
    : m_frame(frame)
    , m_parameters(parameters)
{
    if (!Reduce(padded, m_reference)) m_reference.release();
}

cv::Rect PeakSearch::WindowAround(cv::Point_<double> const & station, cv::Size const & positions) const
{
    double const range = m_parameters.Get_Translation_RangeDisp();
    cv::Point_<double> const onReference = m_parameters.GetMovStationPositionOnRef();
    double const margin = m_frame.margin;
    double const x = TruncateTo<int>(onReference.x) + margin - station.x;
    double const y = TruncateTo<int>(onReference.y) + margin - station.y;
    Stretch const columns = StretchAround(x, range, positions.width);
    Stretch const rows = StretchAround(y, range, positions.height);
    if (columns.last <= columns.first || rows.last <= rows.first) return {};
    return {
        cv::Point(static_cast<int>(columns.first), static_cast<int>(rows.first)),
        cv::Point(static_cast<int>(columns.last), static_cast<int>(rows.last))};
}

bool PeakSearch::Find(
    cv::Mat const & rotated, cv::Point_<double> const & station, CandidateQueues::value_type & queue,
    TemplateMatchingInfo & candidate) const
{
    constexpr int kPeaks = 10;
    constexpr int kReach = 2;
    cv::Mat reduced;
    if (m_reference.empty() || !Reduce(rotated, reduced)) return false;
    cv::Mat correlation;
    cv::matchTemplate(m_reference, reduced, correlation, cv::TM_CCORR, cv::noArray());
    cv::Rect const window = WindowAround(station, correlation.size());
    if (window.empty()) return false;
    cv::Mat work = correlation(window);
    cv::Point const offset(m_frame.OffsetX(), m_frame.OffsetY());
    for (int peak = 0; peak < kPeaks; ++peak)
    {
        double low = 0.0;
        double high = 0.0;
        cv::Point place;
        cv::minMaxLoc(work, &low, &high, nullptr, &place);
        cv::Rect const around(place.x - kReach, place.y - kReach, 2 * kReach + 1, 2 * kReach + 1);
        work(around & cv::Rect({0, 0}, work.size())).setTo(low);

        TemplateMatchingInfo found;
        found.score = high / static_cast<double>(rotated.total());
        found.positionX = place.x + window.x;
        found.positionY = place.y + window.y;
        found.translationX = found.positionX - offset.x;
        found.translationY = found.positionY - offset.y;
        found.peakX = place.x;
        found.peakY = place.y;
        queue.push(found);
        if (peak == 0) candidate = found;
    }
    return true;
}

} // namespace morvane::algorithm
