/// @file
/// The measures of zones as plain loops over pixels.
#pragma once

#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <array>

namespace morvane::tests
{

/// The measures of values.
enum class Measure
{
    Accumulation,
    SquareAccumulation,
    ProductAccumulation,
    Max,
    Min,
};

inline constexpr std::array kMeasures{
    Measure::Accumulation, Measure::SquareAccumulation, Measure::ProductAccumulation, Measure::Max, Measure::Min};

/// The channel counts of measured values.
inline constexpr std::array kMeasuredChannels{1, 3};

/// Start values of the largest and the smallest.
inline constexpr int kMaxStart = -2147483647;
inline constexpr int kMinStart = 2147483647;

/// The largest label, at least 0, plus one, wrapped as the type of the labels does.
[[nodiscard]] int OracleTableRows(cv::Mat const & labels);

/// The type of the table of a measure of values of type @p valueType.
[[nodiscard]] int OracleTableType(int valueType);

/// The table of a measure; the number of rows must not be negative.
///
/// @param values pixel number y * cols + x of the labels meets the same number of the values, which must have as many
/// @param others the second factor of products, otherwise not looked at
[[nodiscard]] cv::Mat
OracleTable(Measure measure, cv::Mat const & labels, cv::Mat const & values, cv::Mat const & others);

/// Calls the operator of @p measure.
[[nodiscard]] cv::Mat
CallCompute(Measure measure, cv::Mat const & labels, cv::Mat const & values, cv::Mat const & others);

/// The sum of a row of numbers in the element type of the table, in the order of the row: the low 32 bits for integers.
[[nodiscard]] double OracleSum(cv::Mat const & row);

/// The same image with one kind of NaN: which of two NaN an addition keeps is the processor's affair.
[[nodiscard]] cv::Mat WithOneNaN(cv::Mat const & image);

/// Values that show the order and the width of an arithmetic: extremes, NaN, numbers that round, integers of all bits.
[[nodiscard]] cv::Mat RandomValues(Random & random, cv::Size size, int type);

/// A line for SCOPED_TRACE.
[[nodiscard]] char const * NameOf(Measure measure);

} // namespace morvane::tests
