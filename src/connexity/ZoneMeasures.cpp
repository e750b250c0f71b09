#include <morvane/connexity/ZoneMeasures.h>

#include "common/Dispatch.h"
#include "connexity/ZoneTables.h"

#include <algorithm>
#include <cstdint>

namespace morvane::connexity
{

using common::IsRaster;
using common::IsSingleChannel;
using common::VisitElement;
using common::VisitSignedLabel;
using common::WrapTo;
using namespace measure_internals;

namespace measure_internals
{

std::optional<Labels> PrepareLabels(cv::Mat const & labels)
{
    return VisitSignedLabel(labels, [&]<class Label>() -> std::optional<Labels> {
        double smallest = 0.0;
        double largest = 0.0;
        if (!labels.empty()) cv::minMaxIdx(labels, &smallest, &largest);
        auto const last = static_cast<Label>(std::max(largest, 0.0));
        // In the type of the labels, wrap-around and all.
        int const rows = WrapTo<Label>(static_cast<unsigned>(last) + 1U);

        Labels ready{labels, rows};
        if (labels.depth() != CV_32S) labels.convertTo(ready.image, CV_32S);
        // Negative labels belong to no zone.
        if (smallest < 0.0)
        {
            // A new matrix: the labels may still be the caller's.
            cv::Mat clipped;
            cv::max(ready.image, 0, clipped);
            ready.image = clipped;
        }
        return ready;
    });
}

void MatchShapes(cv::Mat & labels, cv::Mat & values, cv::Mat & others)
{
    if (labels.size() == values.size() && labels.size() == others.size()) return;
    cv::Mat flatLabels = labels.clone().reshape(0, 1);
    int const pixels = flatLabels.cols;
    int const common = static_cast<int>(std::min({labels.total(), values.total(), others.total()}));
    auto const flatten = [pixels, common](cv::Mat const & image) {
        cv::Mat flat = cv::Mat::zeros(1, pixels, image.type());
        if (common > 0) image.clone().reshape(0, 1).colRange(0, common).copyTo(flat.colRange(0, common));
        return flat;
    };
    flatLabels.colRange(common, pixels) = cv::Scalar(0);
    labels = flatLabels;
    values = flatten(values);
    others = flatten(others);
}

} // namespace measure_internals

namespace
{

/// A table in which every entry has the start value; without rows where there are none.
cv::Mat NewTable(int rows, int type, double start)
{
    cv::Mat table(rows, 1, type);
    table.setTo(cv::Scalar::all(start));
    return table;
}

/// Measures areas and positions, for which a run of pixels counts as a whole.
template <class Merge, class ValueOfRun>
cv::Mat MeasureRuns(cv::Mat const & image, ValueOfRun const & valueOfRun)
{
    if (!IsRaster(image) || !IsSingleChannel(image)) return {};
    auto const labels = PrepareLabels(image);
    if (!labels) return {};
    cv::Mat table = NewTable(labels->rows, CV_32SC1, Merge::kStart);
    if (table.empty()) return table;
    FillTableFromRuns<Merge>(*labels, table.ptr<int>(), valueOfRun);
    return table;
}

/// The sum of the columns of a run, wrapping.
int SumOfColumns(int start, int end)
{
    // The first and the last make a pair, and so on; one of the factors is even.
    auto const count = static_cast<std::int64_t>(end) - start;
    auto const pair = static_cast<std::int64_t>(start) + end - 1;
    return WrapTo<int>(count * pair / 2);
}

/// A value as it is.
struct AsItIs
{
    template <class T>
    static T Of(T value, T)
    {
        return value;
    }
};

/// The product of two values.
struct Product
{
    template <class T>
    static T Of(T value, T other)
    {
        return Times(value, other);
    }
};

/// The leaf: values of type T, one channel after the other.
template <class Merge, class Function, class T>
cv::Mat MeasureLeaf(Labels labels, cv::Mat values, cv::Mat others)
{
    using E = TableElement<T>;
    int const channels = values.channels();
    cv::Mat table = NewTable(labels.rows, CV_MAKETYPE(cv::DataType<E>::depth, channels), Merge::kStart);
    if (table.empty() || labels.image.empty()) return table;
    MatchShapes(labels.image, values, others);
    bool const mayReorder = MayReorder<Merge, T>(values);
    for (int channel = 0; channel < channels; ++channel)
    {
        E * const column = table.ptr<E>() + channel;
        FillTable<Merge>(labels, mayReorder, column, static_cast<std::size_t>(channels), [&](int y) {
            T const * const row = values.ptr<T>(y) + channel;
            T const * const other = others.ptr<T>(y) + channel;
            return [row, other, channels](int x) {
                auto const place = static_cast<std::ptrdiff_t>(x) * channels;
                return static_cast<E>(Function::template Of<T>(row[place], other[place]));
            };
        });
    }
    return table;
}

template <class Merge, class Function>
cv::Mat MeasureValues(cv::Mat const & image, cv::Mat const & values, cv::Mat const & others)
{
    if (!IsRaster(image) || !IsRaster(values) || !IsSingleChannel(image)) return {};
    if (values.channels() != 1 && values.channels() != 3) return {};
    return VisitElement(values, [&]<class T>() -> cv::Mat {
        auto labels = PrepareLabels(image);
        if (!labels) return {};
        return MeasureLeaf<Merge, Function, T>(*labels, values, others);
    });
}

} // namespace

cv::Mat ComputeArea(cv::Mat const & labels)
{
    return MeasureRuns<Sum>(labels, [](int, int start, int end) { return end - start; });
}

cv::Mat ComputeAccumulation(cv::Mat const & labels, cv::Mat const & values)
{
    return MeasureValues<Sum, AsItIs>(labels, values, values);
}

cv::Mat ComputeSQAccumulation(cv::Mat const & labels, cv::Mat const & values)
{
    return MeasureValues<Sum, Product>(labels, values, values);
}

cv::Mat ComputeProductAccumulation(cv::Mat const & labels, cv::Mat const & values1, cv::Mat const & values2)
{
    if (values1.type() != values2.type() || !IsRaster(values2)) return {};
    return MeasureValues<Sum, Product>(labels, values1, values2);
}

cv::Mat ComputeMax(cv::Mat const & labels, cv::Mat const & values)
{
    return MeasureValues<Largest, AsItIs>(labels, values, values);
}

cv::Mat ComputeMin(cv::Mat const & labels, cv::Mat const & values)
{
    return MeasureValues<Smallest, AsItIs>(labels, values, values);
}

cv::Mat ComputeRowAcc(cv::Mat const & labels)
{
    return MeasureRuns<Sum>(labels, [](int y, int start, int end) { return Times(y, end - start); });
}

cv::Mat ComputeColAcc(cv::Mat const & labels)
{
    return MeasureRuns<Sum>(labels, [](int, int start, int end) { return SumOfColumns(start, end); });
}

cv::Mat ComputeRowMax(cv::Mat const & labels)
{
    return MeasureRuns<Largest>(labels, [](int y, int, int) { return y; });
}

cv::Mat ComputeRowMin(cv::Mat const & labels)
{
    return MeasureRuns<Smallest>(labels, [](int y, int, int) { return y; });
}

cv::Mat ComputeColMax(cv::Mat const & labels)
{
    return MeasureRuns<Largest>(labels, [](int, int, int end) { return end - 1; });
}

cv::Mat ComputeColMin(cv::Mat const & labels)
{
    return MeasureRuns<Smallest>(labels, [](int, int start, int) { return start; });
}

} // namespace morvane::connexity
