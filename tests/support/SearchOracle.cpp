#include "support/SearchOracle.h"

#include "support/ImageLiterals.h"

#include <morvane/algorithm/MatchingScores.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>

namespace morvane::tests
{

using algorithm::TemplateMatchingInfo;
using algorithm::matching::TM_Parameters;
namespace utils = algorithm::utils;

namespace
{

using Queue = algorithm::CandidateQueues::value_type;
using Progress = std::function<bool(float)>;

constexpr double kPi = 3.141592653589793;

bool SearchOneAngle(
    Search const & search, TM_Parameters const & parameters, Placing const & placing, double angle, Queue & queue,
    TemplateMatchingInfo & candidate)
{
    if (search.mode == 0)
    {
        candidate = OracleAllTranslations(placing);
        return true;
    }
    if (search.mode != 1) return false;
    cv::Point_<double> const station = utils::UpdateStationPosition(
        {search.moving.cols, search.moving.rows}, parameters.GetMovStationPositionOnMov(), angle * kPi / 180.0);
    if (search.algo == 1)
    {
        candidate = OracleTranslationsAround(placing, parameters, station);
        return true;
    }
    return search.algo == 0 && OracleCorrelation(placing, parameters, station, queue, candidate);
}

bool OracleSearch(
    Search const & search, Progress const & progress, TemplateMatchingInfo & best, algorithm::CandidateQueues & queues)
{
    TM_Parameters const parameters = ParametersOf(search.prior);
    progress(0.0F);
    Placing placing;
    placing.diagonal = OracleDiagonal(search.moving.size());
    placing.margin = static_cast<int>(std::floor(placing.diagonal * parameters.GetImageInfos().Get_Ratio() + 0.5));
    placing.padded = OraclePadded(search.reference, placing.margin);
    placing.referenceSize = search.reference.size();
    double const step = parameters.Get_Orientation_Step();
    int const count = static_cast<int>(std::max(1.0, std::round(2.0 * parameters.Get_Orientation_Range() / step)));
    queues.clear();
    queues.resize(static_cast<std::size_t>(count));
    double angle = parameters.Get_Orientation_Center() - parameters.Get_Orientation_Range();
    for (int i = 0; i < count; ++i)
    {
        angle += i * step;
        double dx = 0.0;
        double dy = 0.0;
        if (!utils::RotateImage(search.moving, angle, placing.rotated, dx, dy)) return false;
        TemplateMatchingInfo candidate;
        Queue & queue = queues[static_cast<std::size_t>(i)];
        if (!SearchOneAngle(search, parameters, placing, angle, queue, candidate)) return false;
        if (candidate.score > best.score)
        {
            best.score = candidate.score;
            best.translationX = candidate.translationX;
            best.translationY = candidate.translationY;
            best.positionX = candidate.positionX;
            best.positionY = candidate.positionY;
            best.peakX = candidate.peakX;
            best.peakY = candidate.peakY;
            best.angle = angle;
        }
        double const share = static_cast<double>(i) / static_cast<double>(count);
        if (!progress(std::min(static_cast<float>(share), 1.0F))) break;
    }
    progress(1.0F);
    return true;
}

bool OracleAutoSearch(AutoSearch const & search, Progress const & progress, TemplateMatchingInfo & best)
{
    progress(0.0F);
    Placing placing;
    placing.diagonal = OracleDiagonal(search.moving.size());
    placing.margin = static_cast<int>(std::floor(placing.diagonal * best.ratio + 0.5));
    placing.padded = OraclePadded(search.reference, placing.margin);
    placing.referenceSize = search.reference.size();
    double const count = std::round(2.0 * search.range / search.step);
    double done = 0.0;
    double angle = search.center - search.range;
    while (angle <= search.center + search.range)
    {
        double dx = 0.0;
        double dy = 0.0;
        if (!utils::RotateImage(search.moving, angle, placing.rotated, dx, dy)) return false;
        if (search.mode != 0) return false;
        TemplateMatchingInfo const candidate = OracleAllTranslations(placing);
        if (candidate.score > best.score)
        {
            best.score = candidate.score;
            best.translationX = candidate.translationX;
            best.translationY = candidate.translationY;
            best.positionX = candidate.positionX;
            best.positionY = candidate.positionY;
            best.angle = angle;
        }
        done += 1.0;
        progress(std::min(static_cast<float>(done / count), 1.0F));
        angle += search.step;
    }
    progress(1.0F);
    return true;
}

std::vector<Fields> RecordsOf(Queue queue)
{
    std::vector<Fields> records;
    for (; !queue.empty(); queue.pop())
    {
        records.push_back(FieldsOf(queue.top()));
    }
    return records;
}

/// Runs a search that tells its progress, and notes what it tells.
template <class Run>
void Observe(Run && run, TemplateMatchingInfo & best, int stopAt, bool forget, Outcome & outcome)
{
    outcome.answer = run([&](float share) {
        outcome.reports.push_back(share);
        outcome.bestAtReports.push_back(FieldsOf(best));
        if (forget) best.score = kNoScore;
        return static_cast<int>(outcome.reports.size()) - 1 != stopAt;
    });
    outcome.best = FieldsOf(best);
}

/// What a search changes.
struct Known
{
    TemplateMatchingInfo best;
    algorithm::CandidateQueues queues;
};

/// Runs a search with parameters.
template <class Run>
Outcome OutcomeOf(Search const & search, Run && run)
{
    Outcome outcome;
    Known known{search.best, search.queues};
    Observe(
        [&](Progress const & progress) { return run(progress, known); }, known.best, search.stopAt, search.forget,
        outcome);
    std::transform(known.queues.begin(), known.queues.end(), std::back_inserter(outcome.queues), RecordsOf);
    return outcome;
}

} // namespace

Search SmallSearch()
{
    Search search;
    search.reference = Draw<int>(
        {".........", //
         ".33.4455.", //
         ".3444455.", //
         ".3344555.", //
         ".5533666.", //
         ".5536644.", //
         ".5333644.", //
         ".666.333.", //
         "........."});
    search.moving = Draw<int>({"4455", "4555", "3666"});
    search.prior.ratio = 0.4;
    search.prior.refOnRef = {4.0, 4.0};
    search.prior.movOnRef = {4.5, 4.0};
    search.prior.movOnMov = {2.0, 1.0};
    search.prior.range = 3.0;
    return search;
}

Fields FieldsOf(TemplateMatchingInfo const & info)
{
    return {info.score, info.angle,     info.translationX, info.translationY, info.positionX, info.positionY,
            info.ratio, info.reserved1, info.reserved2,    info.peakX,        info.peakY};
}

Outcome FindBy(SearchFunction function, Search const & search)
{
    return OutcomeOf(search, [&](Progress const & progress, Known & known) {
        auto algo = static_cast<algorithm::OpenCV_algos>(search.algo);
        return function(
            search.reference, search.moving, ParametersOf(search.prior), progress, known.best, known.queues, algo);
    });
}

Outcome Find(Search const & search)
{
    return OutcomeOf(search, [&](Progress const & progress, Known & known) {
        return algorithm::matching_internals::SearchRotationsAndTranslations(
            search.reference, search.moving, ParametersOf(search.prior), progress, known.best, known.queues,
            static_cast<algorithm::OpenCV_algos>(search.algo), search.mode);
    });
}

Outcome OracleFind(Search const & search)
{
    return OutcomeOf(search, [&](Progress const & progress, Known & known) {
        return OracleSearch(search, progress, known.best, known.queues);
    });
}

Outcome Find(AutoSearch const & search)
{
    Outcome outcome;
    TemplateMatchingInfo best = search.best;
    Observe(
        [&](Progress const & progress) {
            return algorithm::matching_internals::SearchFullAuto(
                search.reference, search.moving, search.center, search.range, search.step, search.mode, progress, best);
        },
        best, -1, search.forget, outcome);
    return outcome;
}

Outcome OracleFind(AutoSearch const & search)
{
    Outcome outcome;
    TemplateMatchingInfo best = search.best;
    Observe(
        [&](Progress const & progress) { return OracleAutoSearch(search, progress, best); }, best, -1, search.forget,
        outcome);
    return outcome;
}

void ExpectSameOutcome(Outcome const & actual, Outcome const & expected)
{
    EXPECT_EQ(actual.answer, expected.answer);
    EXPECT_EQ(actual.best, expected.best);
    EXPECT_EQ(actual.reports, expected.reports);
    EXPECT_EQ(actual.bestAtReports, expected.bestAtReports);
    EXPECT_EQ(actual.queues, expected.queues);
}

} // namespace morvane::tests
