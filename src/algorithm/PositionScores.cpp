#include "algorithm/OccupancyCodes.h"
#include "algorithm/PaddedReference.h"
#include "common/Dispatch.h"

#include <morvane/algorithm/TemplateMatching.h>

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace morvane::algorithm::matching_internals
{

namespace
{

/// Tells whether both images can be read as integers of 32 bits.
bool HaveIntegers(cv::Mat const & a, cv::Mat const & b)
{
    constexpr std::size_t kBytes = 4;
    return common::IsRaster(a) && common::IsRaster(b) && a.elemSize() == kBytes && b.elemSize() == kBytes;
}

/// Calls @p column(i) for each of some columns, side by side.
template <class Column>
void ForEachColumn(int count, Column const & column)
{
    if (count < 1) return;
    cv::parallel_for_({0, count}, [&](cv::Range const & range) {
        for (int i = range.start; i < range.end; ++i)
        {
            column(i);
        }
    });
}

/// The best positions of a column: the rows of the highest score.
struct ColumnBest
{
    int score = std::numeric_limits<int>::min();
    int firstRow = 0;
    int lastRow = 0;

    void Add(int newScore, int row)
    {
        if (newScore < score) return;
        if (newScore > score) firstRow = row;
        score = newScore;
        lastRow = row;
    }
};

/// The best position of a column, by its distance from the expected one where scores are equal.
struct NearestBest
{
    bool isThere = false;
    int score = 0;
    int row = 0;
    Distance distance;

    [[nodiscard]] bool IsBetterThan(NearestBest const & other) const
    {
        if (!isThere || !other.isThere) return isThere;
        return score > other.score || (score == other.score && distance.value < other.distance.value);
    }
};

/// A range of whole numbers, clamped to those below a bound.
struct Interval
{
    int first;
    int end;
};

/// The whole numbers from @p low up to, but excluding, @p high, that lie in [0, bound).
Interval Clamped(double low, double high, int bound)
{
    if (!(low < high)) return {0, 0};
    double const limit = bound;
    return {static_cast<int>(std::clamp(low, 0.0, limit)), static_cast<int>(std::clamp(high, 0.0, limit))};
}

TemplateMatchingInfo RecordOf(int score, cv::Point const & position, cv::Point const & offset)
{
    TemplateMatchingInfo record;
    record.score = score;
    // In double, since an offset may be the smallest int.
    record.translationX = position.x - static_cast<double>(offset.x);
    record.translationY = position.y - static_cast<double>(offset.y);
    record.positionX = position.x;
    record.positionY = position.y;
    return record;
}

} // namespace

int EqualOccupancyScore(cv::Mat const & a, cv::Mat const & b)
{
    constexpr int kLargestEmpty = 2;
    constexpr std::int64_t kPerPair = 16;
    if (!HaveIntegers(a, b) || !common::SameSize(a, b)) return 0;
    std::int64_t equal = 0;
    for (int y = 0; y < a.rows; ++y)
    {
        auto const * const rowA = a.ptr<int>(y);
        auto const * const rowB = b.ptr<int>(y);
        int inRow = 0;
        for (int x = 0; x < a.cols; ++x)
        {
            inRow += static_cast<int>(rowA[x] == rowB[x]) & static_cast<int>(rowA[x] > kLargestEmpty);
        }
        equal += inRow;
    }
    return common::WrapTo<int>(equal * kPerPair);
}

bool TestAllPossibleTranslation(
    cv::Mat const & padded, cv::Mat const & rotated, int const & margin, int const & referenceRows,
    int const & referenceCols, int const & diagonal, TemplateMatchingInfo & candidate)
{
    if (!HaveIntegers(padded, rotated)) return false;
    Frame const frame{margin, {referenceCols, referenceRows}, diagonal};
    cv::Point const offset(frame.OffsetX(), frame.OffsetY());
    // The last column and the last row of positions are not tried.
    int const columns = std::max(padded.cols - rotated.cols, 0);
    int const rows = std::max(padded.rows - rotated.rows, 0);
    std::vector<ColumnBest> bests(static_cast<std::size_t>(rows > 0 ? columns : 0));
    OccupancyCodes const codes(padded, rotated);
    ForEachColumn(static_cast<int>(bests.size()), [&](int x) {
        ColumnBest best;
        for (int y = 0; y < rows; ++y)
        {
            best.Add(codes.ScoreAt(x, y), y);
        }
        bests[static_cast<std::size_t>(x)] = best;
    });
    // One column after the other, as if there were one thread. The kept translation is compared with the column itself.
    TemplateMatchingInfo kept;
    for (int x = 0; x < static_cast<int>(bests.size()); ++x)
    {
        ColumnBest const & best = bests[static_cast<std::size_t>(x)];
        bool const isHigher = best.score > kept.score;
        bool const wins = isHigher || (best.score == kept.score && kept.translationX > x);
        if (!wins) continue;
        // Within a column, the rule makes each further position of an equal score win, or none.
        bool const laterWin = offset.x < 0;
        kept = RecordOf(best.score, {x, laterWin ? best.lastRow : best.firstRow}, offset);
    }
    candidate = kept;
    return true;
}

bool TestTranslationsAroundExpectedPosition(
    cv::Mat const & padded, cv::Mat const & rotated, int const & margin, int const & referenceRows,
    int const & referenceCols, int const & diagonal, matching::TM_Parameters const & parameters,
    cv::Point_<double> const & station, TemplateMatchingInfo & candidate)
{
    if (!HaveIntegers(padded, rotated)) return false;
    Frame const frame{margin, {referenceCols, referenceRows}, diagonal};
    cv::Point_<double> const expected =
        cv::Point_<double>(margin, margin) + parameters.GetRefStationPositionOnRef() +
        cv::Point_<double>(parameters.Get_Translation_XDisp(), parameters.Get_Translation_YDisp());
    double const range = parameters.Get_Translation_RangeDisp();
    double const left = std::floor(expected.x - station.x - range);
    double const right = std::ceil(expected.x - station.x + range);
    double const top = std::floor(expected.y - station.y - range);
    double const bottom = std::ceil(expected.y - station.y + range);
    // The last column is not tried, the last row is.
    Interval const columns = Clamped(left, right, padded.cols);
    Interval const rows = Clamped(top, bottom + 1.0, padded.rows);
    std::vector<NearestBest> bests(static_cast<std::size_t>(columns.end - columns.first));
    OccupancyCodes const codes(padded, rotated);
    ForEachColumn(static_cast<int>(bests.size()), [&](int i) {
        int const x = columns.first + i;
        NearestBest best;
        for (int y = rows.first; y < rows.end; ++y)
        {
            double const dx = x + station.x - expected.x;
            double const dy = y + station.y - expected.y;
            NearestBest const tried{true, codes.ScoreAt(x, y), y, {std::sqrt(dx * dx + dy * dy)}};
            if (tried.IsBetterThan(best)) best = tried;
        }
        bests[static_cast<std::size_t>(i)] = best;
    });
    // One column after the other; of equals the first, whose translation is the smallest.
    auto const nearest =
        std::ranges::max_element(bests, [](NearestBest const & a, NearestBest const & b) { return b.IsBetterThan(a); });
    candidate = TemplateMatchingInfo();
    if (nearest == bests.end() || !nearest->isThere) return true;
    int const x = columns.first + static_cast<int>(nearest - bests.begin());
    candidate = RecordOf(nearest->score, {x, nearest->row}, {frame.OffsetX(), frame.OffsetY()});
    return true;
}

} // namespace morvane::algorithm::matching_internals
