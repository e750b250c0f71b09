/// @file
/// The searches for a rotation and a translation angle by angle, and all that can be seen of them.
#pragma once

#include "support/MatchingOracle.h"

#include <morvane/algorithm/TemplateMatching.h>

#include <opencv2/core.hpp>

#include <array>
#include <cstddef>
#include <functional>
#include <limits>
#include <vector>

namespace morvane::tests
{

/// The score of a placement that was not found yet.
inline constexpr double kNoScore = std::numeric_limits<double>::lowest();

/// A search with parameters.
struct Search
{
    cv::Mat reference;
    cv::Mat moving;
    Prior prior;
    int algo = 0;
    int mode = 1;
    algorithm::TemplateMatchingInfo best = {};
    algorithm::CandidateQueues queues = {};
    int stopAt = -1;     ///< the number of the report that is answered with false
    bool forget = false; ///< whether each report sets the best score back, so that every step tells its best
};

/// A small search in which every angle and every way has a best placement with a score above 0.
[[nodiscard]] Search SmallSearch();

/// Which number of a record is which.
enum Field : std::size_t
{
    kScore,
    kAngle,
    kTranslationX,
    kTranslationY,
    kPositionX,
    kPositionY,
    kRatio,
    kReserved1,
    kReserved2,
    kPeakX,
    kPeakY
};

/// All numbers of a record.
using Fields = std::array<double, 11>;
[[nodiscard]] Fields FieldsOf(algorithm::TemplateMatchingInfo const & info);

/// What came of a search.
struct Outcome
{
    bool answer = false;
    Fields best{};
    std::vector<float> reports;
    std::vector<Fields> bestAtReports;
    std::vector<std::vector<Fields>> queues; ///< from the top
};

/// Searches with the library.
[[nodiscard]] Outcome Find(Search const & search);

/// One of the searches with parameters that callers have.
using SearchFunction = bool (*)(
    cv::Mat const &, cv::Mat const &, algorithm::matching::TM_Parameters const &, std::function<bool(float)>,
    algorithm::TemplateMatchingInfo &, algorithm::CandidateQueues &, algorithm::OpenCV_algos &);
[[nodiscard]] Outcome FindBy(SearchFunction function, Search const & search);

/// Searches step by step.
[[nodiscard]] Outcome OracleFind(Search const & search);

/// Expects the same answer, reports, bests and candidates.
void ExpectSameOutcome(Outcome const & actual, Outcome const & expected);

/// A search without parameters.
struct AutoSearch
{
    cv::Mat reference;
    cv::Mat moving;
    double center = 0.0;
    double range = 180.0;
    double step = 3.0;
    int mode = 0;
    algorithm::TemplateMatchingInfo best = {};
    bool forget = false;
};

[[nodiscard]] Outcome Find(AutoSearch const & search);
[[nodiscard]] Outcome OracleFind(AutoSearch const & search);

} // namespace morvane::tests
