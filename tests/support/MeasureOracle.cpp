#include "support/MeasureOracle.h"

#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <morvane/connexity/ZoneMeasures.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace morvane::tests
{

namespace
{

template <class T>
using Entry = std::conditional_t<std::is_integral_v<T>, int, T>;

/// A product in the type of its factors: low bits for integers.
template <class T>
T Product(T left, T right)
{
    if constexpr (std::is_integral_v<T>)
    {
        return static_cast<T>(static_cast<std::uint64_t>(left) * static_cast<std::uint64_t>(right));
    }
    else
    {
        return left * right;
    }
}

template <class T>
Entry<T> Sum(Entry<T> entry, T value)
{
    if constexpr (std::is_integral_v<T>)
    {
        return static_cast<int>(static_cast<std::uint64_t>(entry) + static_cast<std::uint64_t>(value));
    }
    else
    {
        return entry + value;
    }
}

template <class T>
Entry<T> Updated(Measure measure, Entry<T> entry, T value, T other)
{
    switch (measure)
    {
    case Measure::Accumulation:
        return Sum<T>(entry, value);
    case Measure::SquareAccumulation:
        return Sum<T>(entry, Product<T>(value, value));
    case Measure::ProductAccumulation:
        return Sum<T>(entry, Product<T>(value, other));
    case Measure::Max:
        return entry > value ? entry : static_cast<Entry<T>>(value);
    default:
        return entry < value ? entry : static_cast<Entry<T>>(value);
    }
}

double StartOf(Measure measure)
{
    if (measure == Measure::Max) return kMaxStart;
    return measure == Measure::Min ? kMinStart : 0.0;
}

template <class T>
void Fill(cv::Mat & table, Measure measure, cv::Mat const & labels, cv::Mat const & values, cv::Mat const & others)
{
    int const channels = values.channels();
    for (int number = 0; number < labels.rows * labels.cols; ++number)
    {
        double const label = ElementAt(labels, number / labels.cols, number % labels.cols);
        if (label <= 0 || label >= table.rows) continue;
        auto const * const value = reinterpret_cast<T const *>(PixelNumber(values, number));
        auto const * const other = reinterpret_cast<T const *>(PixelNumber(others, number));
        auto * const entry = table.ptr<Entry<T>>(static_cast<int>(label));
        for (int channel = 0; channel < channels; ++channel)
        {
            entry[channel] = Updated<T>(measure, entry[channel], value[channel], other[channel]);
        }
    }
}

/// A number of a random size, so that sums of such numbers round.
double RoundingNumber(Random & random)
{
    return (random.Unit() - 0.4) * std::ldexp(1.0, random.Below(30) - 10);
}

} // namespace

int OracleTableRows(cv::Mat const & labels)
{
    double largest = 0;
    for (int number = 0; number < labels.rows * labels.cols; ++number)
    {
        largest = std::max(largest, ElementAt(labels, number / labels.cols, number % labels.cols));
    }
    return static_cast<int>(OracleLowBits(static_cast<std::int64_t>(largest) + 1, labels.depth()));
}

int OracleTableType(int valueType)
{
    int const depth = CV_MAT_DEPTH(valueType);
    return CV_MAKETYPE(depth == CV_32F || depth == CV_64F ? depth : CV_32S, CV_MAT_CN(valueType));
}

cv::Mat OracleTable(Measure measure, cv::Mat const & labels, cv::Mat const & values, cv::Mat const & others)
{
    int const rows = OracleTableRows(labels);
    cv::Mat table(rows, 1, OracleTableType(values.type()));
    for (int row = 0; row < rows; ++row)
    {
        for (int channel = 0; channel < table.channels(); ++channel)
        {
            SetElement(table, row, 0, channel, StartOf(measure));
        }
    }
    switch (values.depth())
    {
    case CV_8U:
        Fill<uchar>(table, measure, labels, values, others);
        break;
    case CV_16U:
        Fill<ushort>(table, measure, labels, values, others);
        break;
    case CV_16S:
        Fill<short>(table, measure, labels, values, others);
        break;
    case CV_32S:
        Fill<int>(table, measure, labels, values, others);
        break;
    case CV_32F:
        Fill<float>(table, measure, labels, values, others);
        break;
    default:
        Fill<double>(table, measure, labels, values, others);
        break;
    }
    return table;
}

cv::Mat CallCompute(Measure measure, cv::Mat const & labels, cv::Mat const & values, cv::Mat const & others)
{
    switch (measure)
    {
    case Measure::Accumulation:
        return connexity::ComputeAccumulation(labels, values);
    case Measure::SquareAccumulation:
        return connexity::ComputeSQAccumulation(labels, values);
    case Measure::ProductAccumulation:
        return connexity::ComputeProductAccumulation(labels, values, others);
    case Measure::Max:
        return connexity::ComputeMax(labels, values);
    default:
        return connexity::ComputeMin(labels, values);
    }
}

double OracleSum(cv::Mat const & row)
{
    cv::Mat const ones(row.rows, row.cols, CV_8UC1, cv::Scalar(1));
    return ElementAt(OracleTable(Measure::Accumulation, ones, row, row), 1, 0);
}

cv::Mat WithOneNaN(cv::Mat const & image)
{
    cv::Mat plain = CopyOf(image);
    for (int y = 0; y < plain.rows; ++y)
    {
        for (int element = 0; element < plain.cols * plain.channels(); ++element)
        {
            int const x = element / plain.channels();
            int const channel = element % plain.channels();
            if (std::isnan(ElementAt(plain, y, x, channel)))
                SetElement(plain, y, x, channel, std::numeric_limits<double>::quiet_NaN());
        }
    }
    return plain;
}

cv::Mat RandomValues(Random & random, cv::Size size, int type)
{
    if (random.Chance(0.4)) return RandomImage(random, size, type, {.emptyShare = 0.1, .specialShare = 0.1});
    cv::Mat values(size, type);
    bool const floating = values.depth() == CV_32F || values.depth() == CV_64F;
    for (int y = 0; y < size.height; ++y)
    {
        for (int element = 0; element < size.width * values.channels(); ++element)
        {
            double const value = floating ? RoundingNumber(random)
                                          : OracleLowBits(static_cast<std::int64_t>(random.Next()), values.depth());
            SetElement(values, y, element / values.channels(), element % values.channels(), value);
        }
    }
    return values;
}

char const * NameOf(Measure measure)
{
    switch (measure)
    {
    case Measure::Accumulation:
        return "ComputeAccumulation";
    case Measure::SquareAccumulation:
        return "ComputeSQAccumulation";
    case Measure::ProductAccumulation:
        return "ComputeProductAccumulation";
    case Measure::Max:
        return "ComputeMax";
    default:
        return "ComputeMin";
    }
}

} // namespace morvane::tests
