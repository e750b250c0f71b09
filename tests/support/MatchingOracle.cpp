#include "support/MatchingOracle.h"

#include <morvane/common/ImageCompare.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace morvane::tests
{

using algorithm::TemplateMatchingInfo;
using algorithm::matching::TM_Parameters;

namespace
{

using Queue = algorithm::CandidateQueues::value_type;

constexpr int kPeaks = 10;

int OffsetOf(int length, Placing const & placing)
{
    return static_cast<int>(std::floor(length * 0.5 + placing.margin - placing.diagonal * 0.5));
}

/// Values above 8 become 16, 0 and 1 become 0; false for images that cannot be compared.
bool CutValues(cv::Mat const & image, cv::Mat & bytes)
{
    image.convertTo(bytes, CV_8U, 1.0, 0.0);
    return common::ImageCompare(bytes, 1, 8.0, cv::Scalar(16), bytes, bytes) &&
           common::ImageCompare(bytes, 1, 1.0, bytes, cv::Scalar(0), bytes);
}

/// The window of the correlation that is searched, before it is cut.
cv::Rect WindowOf(cv::Size size, int margin, TM_Parameters const & parameters, cv::Point_<double> const & station)
{
    double const range = parameters.Get_Translation_RangeDisp();
    double const ex = static_cast<int>(parameters.GetMovStationPositionOnRef().x) + margin - station.x;
    double const ey = static_cast<int>(parameters.GetMovStationPositionOnRef().y) + margin - station.y;
    cv::Rect window({0, 0}, size);
    if (range > 0.0)
    {
        window.x = static_cast<int>(std::round(ex - range + 0.5));
        window.y = static_cast<int>(std::round(ey - range + 0.5));
        window.width = static_cast<int>(std::round(2.0 * range));
        window.height = window.width;
    }
    if (window.width % 2 == 0) window.width += 1;
    if (window.height % 2 == 0) window.height += 1;
    return window;
}

} // namespace

TM_Parameters ParametersOf(Prior const & prior)
{
    return {
        {1.0, 1.0, prior.ratio},
        prior.refOnRef,
        prior.movOnMov,
        prior.movOnRef,
        {prior.center, prior.orientationRange, prior.orientationStep, prior.translation.x, prior.translation.y,
         prior.range}};
}

int OracleDiagonal(cv::Size size)
{
    double const squares =
        static_cast<double>(size.width) * size.width + static_cast<double>(size.height) * size.height;
    return static_cast<int>(std::floor(std::sqrt(squares) + 0.5));
}

cv::Mat OraclePadded(cv::Mat const & reference, int margin)
{
    cv::Mat padded(reference.rows + 2 * margin, reference.cols + 2 * margin, reference.type(), cv::Scalar(0));
    cv::Mat inside = padded(cv::Rect({margin, margin}, reference.size()));
    if (!reference.empty()) reference.copyTo(inside);
    return padded;
}

int OracleOccupancyScore(cv::Mat const & a, cv::Mat const & b)
{
    int score = 0;
    for (int y = 0; y < a.rows; ++y)
    {
        for (int x = 0; x < a.cols; ++x)
        {
            int const left = a.ptr<int>(y)[x];
            int const right = b.ptr<int>(y)[x];
            if (left == right && left > 2) score += 16;
        }
    }
    return score;
}

TemplateMatchingInfo OracleAllTranslations(Placing const & placing)
{
    int const columns = placing.padded.cols - placing.rotated.cols;
    int const rows = placing.padded.rows - placing.rotated.rows;
    int const offsetX = OffsetOf(placing.referenceSize.width, placing);
    int const offsetY = OffsetOf(placing.referenceSize.height, placing);
    TemplateMatchingInfo kept;
    for (int i = 0; i < columns; ++i)
    {
        for (int j = 0; j < rows; ++j)
        {
            cv::Mat const part = placing.padded(cv::Rect({i, j}, placing.rotated.size()));
            double const score = OracleOccupancyScore(part, placing.rotated);
            bool const isBetter = score > kept.score || (score == kept.score && kept.translationX > i);
            if (!isBetter) continue;
            kept.score = score;
            kept.translationX = i - offsetX;
            kept.translationY = j - offsetY;
            kept.positionX = i;
            kept.positionY = j;
        }
    }
    return kept;
}

TemplateMatchingInfo
OracleTranslationsAround(Placing const & placing, TM_Parameters const & parameters, cv::Point_<double> const & station)
{
    double const expectedX =
        placing.margin + parameters.GetRefStationPositionOnRef().x + parameters.Get_Translation_XDisp();
    double const expectedY =
        placing.margin + parameters.GetRefStationPositionOnRef().y + parameters.Get_Translation_YDisp();
    int const offsetX = OffsetOf(placing.referenceSize.width, placing);
    int const offsetY = OffsetOf(placing.referenceSize.height, placing);
    double const range = parameters.Get_Translation_RangeDisp();
    auto const firstX = static_cast<int>(std::floor(expectedX - station.x - range));
    auto const endX = static_cast<int>(std::ceil(expectedX - station.x + range));
    auto const firstY = static_cast<int>(std::floor(expectedY - station.y - range));
    auto const lastY = static_cast<int>(std::ceil(expectedY - station.y + range));
    cv::Rect const all({0, 0}, placing.padded.size());
    std::pair<TemplateMatchingInfo, algorithm::Distance> kept;
    for (int x = firstX; x < endX; ++x)
    {
        for (int y = firstY; y <= lastY; ++y)
        {
            if (!all.contains({x, y})) continue;
            cv::Rect const common = cv::Rect({x, y}, placing.rotated.size()) & all;
            if (common.empty()) continue;
            double const score =
                OracleOccupancyScore(placing.padded(common), placing.rotated(cv::Rect({0, 0}, common.size())));
            double const byX = x + station.x - expectedX;
            double const byY = y + station.y - expectedY;
            double const distance = std::sqrt(byX * byX + byY * byY);
            bool const isBetter =
                score > kept.first.score || (score == kept.first.score && distance < kept.second.value);
            if (!isBetter) continue;
            kept.second.value = distance;
            kept.first.score = score;
            kept.first.translationX = x - offsetX;
            kept.first.translationY = y - offsetY;
            kept.first.positionX = x;
            kept.first.positionY = y;
        }
    }
    return kept.first;
}

bool OracleCorrelation(
    Placing const & placing, TM_Parameters const & parameters, cv::Point_<double> const & station, Queue & queue,
    TemplateMatchingInfo & candidate)
{
    cv::Mat reference;
    cv::Mat moving;
    if (!CutValues(placing.padded, reference) || !CutValues(placing.rotated, moving)) return false;
    cv::Mat result;
    cv::matchTemplate(reference, moving, result, cv::TM_CCORR, cv::noArray());
    cv::Rect const window = WindowOf(result.size(), placing.margin, parameters, station);
    cv::Rect const common = window & cv::Rect({0, 0}, result.size());
    if (common.area() < 1) return false;
    cv::Mat work = result(common).clone();
    std::vector<std::pair<double, cv::Point>> peaks;
    for (int round = 0; round < kPeaks; ++round)
    {
        double least = 0.0;
        double most = 0.0;
        cv::Point place;
        cv::minMaxLoc(work, &least, &most, nullptr, &place);
        peaks.emplace_back(most, place);
        cv::Rect const near = cv::Rect(place.x - 2, place.y - 2, 5, 5) & cv::Rect({0, 0}, work.size());
        if (!near.empty()) work(near).setTo(least);
    }
    for (auto const & [value, place] : peaks)
    {
        TemplateMatchingInfo record;
        record.score = value / static_cast<double>(placing.rotated.total());
        record.positionX = place.x + std::max(window.x, 0);
        record.positionY = place.y + std::max(window.y, 0);
        record.translationX = record.positionX - OffsetOf(placing.referenceSize.width, placing);
        record.translationY = record.positionY - OffsetOf(placing.referenceSize.height, placing);
        record.peakX = place.x;
        record.peakY = place.y;
        if (queue.empty()) candidate = record;
        queue.push(record);
    }
    return true;
}

} // namespace morvane::tests
