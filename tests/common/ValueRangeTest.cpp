#include "common/ValueRange.h"

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace morvane::tests
{

namespace
{

using common::ValueRange;
using common::WidenedBy;

template <class T>
using Limits = std::numeric_limits<T>;

/// The widest crossed range: any number widens it.
template <class T>
constexpr ValueRange<T> kNone = Limits<T>::has_infinity ? ValueRange<T>{Limits<T>::infinity(), -Limits<T>::infinity()}
                                                        : ValueRange<T>{Limits<T>::max(), Limits<T>::lowest()};

template <class T>
void ExpectRange(ValueRange<T> const & actual, T low, T high)
{
    EXPECT_EQ(actual.low, low);
    EXPECT_EQ(actual.high, high);
}

template <class T>
ValueRange<T> OracleRange(cv::Mat const & image, ValueRange<T> range, bool skipZero)
{
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            for (int channel = 0; channel < image.channels(); ++channel)
            {
                double const value = ElementAt(image, y, x, channel);
                if (std::isnan(value) || (skipZero && value == 0.0)) continue;
                if (value < range.low) range.low = static_cast<T>(value);
                if (value > range.high) range.high = static_cast<T>(value);
            }
        }
    }
    return range;
}

template <class T>
void CheckRange(cv::Mat const & image, ValueRange<T> const & start)
{
    SCOPED_TRACE(cv::typeToString(image.type()) + ", columns " + std::to_string(image.cols));
    ValueRange<T> const all = OracleRange(image, start, false);
    ExpectRange(WidenedBy<T>(image, start), all.low, all.high);
    ValueRange<T> const measured = OracleRange(image, start, true);
    ExpectRange(WidenedBy<T, true>(image, start), measured.low, measured.high);
}

TEST(ValueRange, AgreesWithThePlainFormForAllTypesAndWidths)
{
    Random random(81);
    ForEachElement([&]<class T> {
        int const depth = cv::DataType<T>::depth;
        for (int repeat = 0; repeat < 300; ++repeat)
        {
            // Up to a few strides of the widest type's loop.
            cv::Size const size(random.Below(300), random.Below(5));
            int const type = CV_MAKETYPE(depth, 1 + random.Below(4));
            cv::Mat const image = RandomImage(random, size, type, {.emptyShare = 0.3, .specialShare = 0.05});
            CheckRange<T>(image, kNone<T>);
            CheckRange<T>(image, {T(2), T(2)});
            CheckRange<T>(FramedImage(image).View(), {T(0), T(0)});
        }
    });
}

TEST(ValueRange, SeesTheExtremesAtEachPlaceOfARow)
{
    ForEachElement([]<class T> {
        for (int const width : {1, 15, 16, 17, 127, 128, 129, 261})
        {
            cv::Mat image(2, width, cv::DataType<T>::depth, cv::Scalar(50));
            for (int x = 0; x < width; ++x)
            {
                T & pixel = image.ptr<T>(1)[x];
                pixel = T(1);
                ExpectRange(WidenedBy<T>(image, kNone<T>), T(1), T(50));
                ExpectRange(WidenedBy<T, true>(image, kNone<T>), T(1), T(50));
                pixel = T(99);
                ExpectRange(WidenedBy<T>(image, kNone<T>), T(50), T(99));
                pixel = T(0);
                ExpectRange(WidenedBy<T>(image, kNone<T>), T(0), T(50));
                ExpectRange(WidenedBy<T, true>(image, kNone<T>), T(50), T(50));
                pixel = T(50);
            }
        }
    });
}

TEST(ValueRange, ReachesTheEndsOfEachType)
{
    ForEachElement([]<class T> {
        cv::Mat const image = Row<T>({Limits<T>::lowest(), T(3), Limits<T>::max()});
        ExpectRange(WidenedBy<T>(image, {T(3), T(3)}), Limits<T>::lowest(), Limits<T>::max());
        T const lowest = Limits<T>::lowest() == 0 ? T(3) : Limits<T>::lowest();
        ExpectRange(WidenedBy<T, true>(image, {T(3), T(3)}), lowest, Limits<T>::max());
    });
}

TEST(ValueRange, NeverShrinksWhatIsGiven)
{
    ForEachElement([]<class T> {
        cv::Mat const image = Draw({"345", "678"}, cv::DataType<T>::depth);
        ExpectRange(WidenedBy<T>(image, {T(1), T(9)}), T(1), T(9));
        ExpectRange(WidenedBy<T>(image, {T(0), T(4)}), T(0), T(8));
        ExpectRange(WidenedBy<T>(image, {T(7), T(20)}), T(3), T(20));
    });
}

TEST(ValueRange, StaysAsGivenWithoutAPixel)
{
    ForEachElement([]<class T> {
        for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 5), cv::Size(5, 0)})
        {
            cv::Mat const image(size, cv::DataType<T>::depth);
            ExpectRange(WidenedBy<T>(image, {T(2), T(5)}), T(2), T(5));
            ExpectRange(WidenedBy<T, true>(image, {T(5), T(2)}), T(5), T(2));
        }
        cv::Mat const zeros = cv::Mat::zeros(3, 200, cv::DataType<T>::depth);
        ExpectRange(WidenedBy<T, true>(zeros, {T(5), T(2)}), T(5), T(2));
        ExpectRange(WidenedBy<T, true>(zeros, kNone<T>), kNone<T>.low, kNone<T>.high);
        ExpectRange(WidenedBy<T>(zeros, kNone<T>), T(0), T(0));
    });
}

template <class T>
void ExpectSpecialNumbers()
{
    T const nan = Limits<T>::quiet_NaN();
    T const infinity = Limits<T>::infinity();
    ExpectRange(WidenedBy<T>(Row<T>({nan, T(2), nan, T(4), nan}), kNone<T>), T(2), T(4));
    ExpectRange(WidenedBy<T>(Row<T>({nan, nan}), {T(1), T(1)}), T(1), T(1));
    ExpectRange(WidenedBy<T>(cv::Mat(2, 200, cv::DataType<T>::depth, cv::Scalar(nan)), {T(5), T(2)}), T(5), T(2));
    ExpectRange(WidenedBy<T>(Row<T>({T(2), infinity, nan}), kNone<T>), T(2), infinity);
    ExpectRange(WidenedBy<T, true>(Row<T>({T(0), -infinity, nan}), kNone<T>), -infinity, -infinity);
    // Negative zero is a zero; the least numbers beside it are none.
    T const tiny = Limits<T>::denorm_min();
    ExpectRange(WidenedBy<T, true>(Row<T>({T(0), -T(0), T(3)}), kNone<T>), T(3), T(3));
    ExpectRange(WidenedBy<T, true>(Row<T>({-tiny, T(0), tiny}), kNone<T>), -tiny, tiny);
}

TEST(ValueRange, PassesOverNaNAndTakesInfinities)
{
    ExpectSpecialNumbers<float>();
    ExpectSpecialNumbers<double>();
}

} // namespace

} // namespace morvane::tests
