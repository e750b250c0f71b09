#include <morvane/connexity/ZoneMeasures.h>

#include "common/Dispatch.h"
#include "common/RasterOrder.h"
#include "common/ValueRange.h"
#include "connexity/ZoneTables.h"

#include <algorithm>

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
        auto const [smallest, largest] = common::WidenedBy<Label>(labels, {0, 0});
        // In the type of the labels, wrap-around and all.
        int const rows = WrapTo<Label>(static_cast<unsigned>(largest) + 1U);

        Labels ready{labels, rows};
        if (labels.depth() != CV_32S) labels.convertTo(ready.image, CV_32S);
        // Negative labels belong to no zone.
        if (smallest < 0)
        {
            // A new matrix: the labels may still be the caller's.
            cv::Mat clipped;
            cv::max(ready.image, 0, clipped);
            ready.image = clipped;
        }
        return ready;
    });
}

void MatchSizes(cv::Mat & labels, cv::Mat & values, cv::Mat & others)
{
    cv::Size const size = labels.size();
    std::size_t const pixels = std::min({labels.total(), values.total(), others.total()});
    values = common::InSize(size, values);
    others = common::InSize(size, others);
    if (pixels == labels.total()) return;
    cv::Mat met = cv::Mat::zeros(size, labels.type());
    common::CopyInRasterOrder(labels, met, pixels);
    labels = met;
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

/// Measures areas and positions: @p valueOfRow gives for a row y a function from x to an `int`.
template <class Merge, class ValueOfRow>
cv::Mat MeasurePositions(cv::Mat const & image, ValueOfRow const & valueOfRow)
{
    if (!IsRaster(image) || !IsSingleChannel(image)) return {};
    auto const labels = PrepareLabels(image);
    if (!labels) return {};
    cv::Mat table = NewTable(labels->rows, CV_32SC1, Merge::kStart);
    if (!table.empty()) FillTable<Merge>(*labels, true, table.ptr<int>(), 1, valueOfRow);
    return table;
}

/// The row of each pixel.
auto RowOfPixel(int y)
{
    return [y](int) {
        return y;
    };
}

/// The column of each pixel.
auto ColumnOfPixel(int)
{
    return [](int x) {
        return x;
    };
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
    MatchSizes(labels.image, values, others);
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
    return MeasurePositions<Sum>(labels, [](int) {
        return [](int) {
            return 1;
        };
    });
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
    return MeasurePositions<Sum>(labels, RowOfPixel);
}

cv::Mat ComputeColAcc(cv::Mat const & labels)
{
    return MeasurePositions<Sum>(labels, ColumnOfPixel);
}

cv::Mat ComputeRowMax(cv::Mat const & labels)
{
    return MeasurePositions<Largest>(labels, RowOfPixel);
}

cv::Mat ComputeRowMin(cv::Mat const & labels)
{
    return MeasurePositions<Smallest>(labels, RowOfPixel);
}

cv::Mat ComputeColMax(cv::Mat const & labels)
{
    return MeasurePositions<Largest>(labels, ColumnOfPixel);
}

cv::Mat ComputeColMin(cv::Mat const & labels)
{
    return MeasurePositions<Smallest>(labels, ColumnOfPixel);
}

} // namespace morvane::connexity
