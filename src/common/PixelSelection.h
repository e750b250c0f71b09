/// @file
/// The loops of the selection by comparison: one row at a time, on pixels of one size.
///
/// The six comparisons come down to four: with a number, whether a value lies in an interval of its own type; with an
/// image, equal, greater, and greater or equal. Less is greater with the operands exchanged, not equal is equal with the
/// results exchanged; with a NaN all of them come out as they should.
#pragma once

#include <morvane/common/PixelTypes.h>

#include "common/ValueInterval.h"

#include <opencv2/core.hpp>

#include <cstddef>

namespace morvane::common
{

/// A comparison of two values.
enum class Relation
{
    Inside,         ///< the value lies in an interval
    Equal,          ///< both are equal
    Greater,        ///< the value is greater than the other
    GreaterOrEqual, ///< the value is greater than or equal to the other
};

/// One row of a comparison: values, and an interval or a row of other values.
template <Element T>
struct Comparison
{
    Relation relation = Relation::Inside;
    Interval<T> interval{};
    T const * values = nullptr;
    T const * others = nullptr;
};

/// One row of what is selected from: pixels, or one pixel for all.
struct Source
{
    uchar const * pixels = nullptr;
    bool isConstant = false;
};

/// The loops over a row that compare values of one type.
template <Element T>
struct RowSelection
{
    /// Selects a row of pixels of the compared type itself.
    static void SelectValues(
        Comparison<T> const & row, Source const & whenTrue, Source const & whenFalse, uchar * output, int cols);

    /// Selects a row of pixels of @p pixelSize bytes: 1, 2, 3, 4, 6, 8, 12, 16, 24 or 32.
    static void SelectPixels(
        Comparison<T> const & row, Source const & whenTrue, Source const & whenFalse, uchar * output, int cols,
        std::size_t pixelSize);
};

} // namespace morvane::common
