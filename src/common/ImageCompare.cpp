#include <morvane/common/ImageCompare.h>

#include <morvane/common/Conversions.h>

#include "common/Dispatch.h"
#include "common/PixelSelection.h"
#include "common/RasterOrder.h"

#include <opencv2/core/utility.hpp>

#include <array>
#include <cstring>

namespace morvane::common
{

namespace
{

/// What the comparison is with: an image or a number.
struct RightOperand
{
    cv::Mat const * image = nullptr;
    double number = 0.0;
};

/// What is selected: an image or a scalar.
struct Choice
{
    cv::Mat const * image = nullptr;
    cv::Scalar scalar;
};

constexpr int kNotEqual = 5;

/// Fewer pixels than this are not worth a second thread.
constexpr std::size_t kPixelsPerStripe = std::size_t{1} << 18;

bool IsAccepted(
    cv::Mat const & left, RightOperand const & right, Choice const & whenTrue, Choice const & whenFalse,
    cv::Mat const & output)
{
    auto const fits = [](cv::Mat const * image, auto const & rule) {
        return image == nullptr || rule(*image);
    };
    auto const rightFits = [&](auto const & rule) {
        return fits(right.image, rule);
    };
    auto const choicesFit = [&](auto const & rule) {
        return fits(whenTrue.image, rule) && fits(whenFalse.image, rule);
    };
    auto const hasTotal = [&](cv::Mat const & image) {
        return image.total() == left.total();
    };

    if (!IsRaster(left) || !IsRaster(output) || !rightFits(IsRaster) || !choicesFit(IsRaster)) return false;
    if (!IsSingleChannel(left) || !rightFits(IsSingleChannel)) return false;
    if (!choicesFit([&](cv::Mat const & image) { return image.channels() == output.channels(); })) return false;
    if (!hasTotal(output) || !rightFits(hasTotal) || !choicesFit(hasTotal)) return false;
    if (!rightFits([&](cv::Mat const & image) { return image.depth() == left.depth(); })) return false;
    return choicesFit([&](cv::Mat const & image) { return image.depth() == output.depth(); });
}

/// The bytes of a pixel in which each channel is the scalar's component, converted.
template <class Out>
std::array<uchar, 32> PixelOf(cv::Scalar const & scalar)
{
    std::array<uchar, 32> bytes{};
    for (int channel = 0; channel < kMaxChannels; ++channel)
    {
        Out const value = TruncateTo<Out>(scalar[channel]);
        std::memcpy(bytes.data() + static_cast<std::size_t>(channel) * sizeof(Out), &value, sizeof(Out));
    }
    return bytes;
}

/// The whole operation on images that were accepted and have one shape.
template <class T, class Out>
class Selection
{
public:
    Selection(
        cv::Mat const & left, int comparison, RightOperand const & right, Choice whenTrue, Choice whenFalse,
        cv::Mat & output)
        : m_left(left)
        , m_output(output)
        , m_right(right)
    {
        SetRelation(comparison);
        if (m_exchangesResults) std::swap(whenTrue, whenFalse);
        m_whenTrue = whenTrue;
        m_whenFalse = whenFalse;
        m_truePixel = PixelOf<Out>(whenTrue.scalar);
        m_falsePixel = PixelOf<Out>(whenFalse.scalar);
    }

    void SelectRow(int y) const
    {
        Comparison<T> row = m_comparison;
        row.values = m_left.ptr<T>(y);
        if (m_right.image != nullptr) row.others = m_right.image->ptr<T>(y);
        if (m_exchangesOperands) std::swap(row.values, row.others);

        Source const whenTrue = SourceOf(m_whenTrue, m_truePixel, y);
        Source const whenFalse = SourceOf(m_whenFalse, m_falsePixel, y);
        if (std::is_same_v<T, Out> && m_output.channels() == 1)
        {
            RowSelection<T>::SelectValues(row, whenTrue, whenFalse, m_output.ptr(y), m_left.cols);
        }
        else
        {
            RowSelection<T>::SelectPixels(row, whenTrue, whenFalse, m_output.ptr(y), m_left.cols, m_output.elemSize());
        }
    }

private:
    void SetRelation(int comparison)
    {
        if (m_right.image == nullptr || comparison < 0 || comparison > kNotEqual)
        {
            m_comparison.interval = IntervalOf<T>(comparison, m_right.number);
            m_exchangesResults = m_comparison.interval.isOutside;
            return;
        }
        constexpr std::array kRelations{Relation::Equal,   Relation::Greater,        Relation::GreaterOrEqual,
                                        Relation::Greater, Relation::GreaterOrEqual, Relation::Equal};
        m_comparison.relation = kRelations[static_cast<std::size_t>(comparison)];
        m_exchangesOperands = comparison == 3 || comparison == 4;
        m_exchangesResults = comparison == kNotEqual;
    }

    static Source SourceOf(Choice const & choice, std::array<uchar, 32> const & pixel, int y)
    {
        if (choice.image == nullptr) return {pixel.data(), true};
        return {choice.image->ptr(y), false};
    }

    cv::Mat const & m_left;
    cv::Mat & m_output;
    RightOperand m_right;
    Choice m_whenTrue;
    Choice m_whenFalse;
    Comparison<T> m_comparison;
    bool m_exchangesOperands = false;
    bool m_exchangesResults = false;
    alignas(16) std::array<uchar, 32> m_truePixel;
    alignas(16) std::array<uchar, 32> m_falsePixel;
};

template <class T, class Out>
void SelectAllRows(Selection<T, Out> const & selection, cv::Mat const & left)
{
    auto const selectRows = [&](cv::Range const & rows) {
        for (int y = rows.start; y < rows.end; ++y)
        {
            selection.SelectRow(y);
        }
    };
    cv::Range const all(0, left.rows);
    std::size_t const stripes = left.total() / kPixelsPerStripe;
    if (left.rows <= 1 || stripes <= 1)
    {
        selectRows(all);
    }
    else
    {
        cv::parallel_for_(all, selectRows, static_cast<double>(stripes));
    }
}

/// Brings every image into the size of the left one and selects.
template <class T, class Out>
bool Select(
    cv::Mat const & left, int comparison, RightOperand const & right, Choice const & whenTrue, Choice const & whenFalse,
    cv::Mat & output)
{
    cv::Size const size = left.size();
    cv::Mat const rightImage = right.image != nullptr ? InSize(size, *right.image) : cv::Mat();
    cv::Mat const trueImage = whenTrue.image != nullptr ? InSize(size, *whenTrue.image) : cv::Mat();
    cv::Mat const falseImage = whenFalse.image != nullptr ? InSize(size, *whenFalse.image) : cv::Mat();
    cv::Mat target = output.size() == size ? output : cv::Mat(size, output.type());

    Selection<T, Out> const selection(
        left, comparison, {right.image != nullptr ? &rightImage : nullptr, right.number},
        {whenTrue.image != nullptr ? &trueImage : nullptr, whenTrue.scalar},
        {whenFalse.image != nullptr ? &falseImage : nullptr, whenFalse.scalar}, target);
    SelectAllRows(selection, left);
    if (target.data != output.data) CopyInRasterOrder(target, output, output.total());
    return true;
}

bool Compare(
    cv::Mat const & left, int comparison, RightOperand const & right, Choice const & whenTrue, Choice const & whenFalse,
    cv::Mat & output)
{
    if (!IsAccepted(left, right, whenTrue, whenFalse, output)) return false;
    return VisitElement(left, [&]<class T> {
        return VisitElement(output, [&]<class Out> {
            if (output.channels() > kMaxChannels) return false;
            if (left.empty()) return true;
            return Select<T, Out>(left, comparison, right, whenTrue, whenFalse, output);
        });
    });
}

} // namespace

bool ImageCompare(
    cv::Mat const & left, int comparison, cv::Mat const & right, cv::Mat const & whenTrue, cv::Mat const & whenFalse,
    cv::Mat & output)
{
    return Compare(left, comparison, {&right, 0.0}, {&whenTrue, {}}, {&whenFalse, {}}, output);
}

bool ImageCompare(
    cv::Mat const & left, int comparison, cv::Mat const & right, cv::Mat const & whenTrue,
    cv::Scalar_<double> const & whenFalse, cv::Mat & output)
{
    return Compare(left, comparison, {&right, 0.0}, {&whenTrue, {}}, {nullptr, whenFalse}, output);
}

bool ImageCompare(
    cv::Mat const & left, int comparison, cv::Mat const & right, cv::Scalar_<double> const & whenTrue,
    cv::Mat const & whenFalse, cv::Mat & output)
{
    return Compare(left, comparison, {&right, 0.0}, {nullptr, whenTrue}, {&whenFalse, {}}, output);
}

bool ImageCompare(
    cv::Mat const & left, int comparison, cv::Mat const & right, cv::Scalar_<double> const & whenTrue,
    cv::Scalar_<double> const & whenFalse, cv::Mat & output)
{
    return Compare(left, comparison, {&right, 0.0}, {nullptr, whenTrue}, {nullptr, whenFalse}, output);
}

bool ImageCompare(
    cv::Mat const & left, int comparison, double right, cv::Mat const & whenTrue, cv::Mat const & whenFalse,
    cv::Mat & output)
{
    return Compare(left, comparison, {nullptr, right}, {&whenTrue, {}}, {&whenFalse, {}}, output);
}

bool ImageCompare(
    cv::Mat const & left, int comparison, double right, cv::Mat const & whenTrue, cv::Scalar_<double> const & whenFalse,
    cv::Mat & output)
{
    return Compare(left, comparison, {nullptr, right}, {&whenTrue, {}}, {nullptr, whenFalse}, output);
}

bool ImageCompare(
    cv::Mat const & left, int comparison, double right, cv::Scalar_<double> const & whenTrue, cv::Mat const & whenFalse,
    cv::Mat & output)
{
    return Compare(left, comparison, {nullptr, right}, {nullptr, whenTrue}, {&whenFalse, {}}, output);
}

bool ImageCompare(
    cv::Mat const & left, int comparison, double right, cv::Scalar_<double> const & whenTrue,
    cv::Scalar_<double> const & whenFalse, cv::Mat & output)
{
    return Compare(left, comparison, {nullptr, right}, {nullptr, whenTrue}, {nullptr, whenFalse}, output);
}

bool AreImagesEqual(cv::Mat const & one, cv::Mat const & other)
{
    if (one.channels() != other.channels() || one.total() != other.total() || one.depth() != other.depth())
        return false;
    if (one.rows != other.rows || one.cols != other.cols) return false;
    // Also the -1 rows of matrices of more than two dimensions: nothing is looked at then.
    if (one.rows <= 0) return true;
    std::size_t const rowBytes = static_cast<std::size_t>(one.cols) * one.elemSize();
    for (int y = 0; y < one.rows; ++y)
    {
        if (rowBytes != 0 && std::memcmp(one.ptr(y), other.ptr(y), rowBytes) != 0) return false;
    }
    return true;
}

cv::Mat SafeDivision(cv::Mat const & numerator, cv::Mat const & denominator)
{
    auto const isAccepted = []<class T> {
        return true;
    };
    if (!VisitElement(numerator, isAccepted) || !VisitElement(denominator, isAccepted)) return {};
    cv::Mat result = cv::Mat::zeros(numerator.size(), numerator.type());
    cv::Mat const quotient = numerator / denominator;
    // Its answer is not asked for: a denominator that it refuses leaves the zeros.
    ImageCompare(denominator, 0, 0.0, cv::Scalar(0), quotient, result);
    return result;
}

namespace
{

template <class T>
void ScaleRow(T const * __restrict values, double scale, uchar * __restrict grey, int length)
{
    for (int x = 0; x < length; ++x)
    {
        grey[x] = TruncateTo<uchar>(static_cast<double>(values[x]) * scale);
    }
}

} // namespace

bool ConvertToGrayScale(cv::Mat const & image, cv::Mat & grey)
{
    if (!IsRaster(image)) return false;
    return VisitElement(image, [&]<class T> {
        if (image.empty()) return false;
        double lowest = 0.0;
        double highest = 0.0;
        cv::minMaxLoc(image, &lowest, &highest);
        if (!(highest - lowest > 0.0)) return false;
        double const scale = 256.0 / (highest - lowest);
        // A new image, as the old one of `grey` may be the image itself.
        cv::Mat1b scaled(image.size());
        for (int y = 0; y < image.rows; ++y)
        {
            ScaleRow(image.ptr<T>(y), scale, scaled.ptr<uchar>(y), image.cols);
        }
        scaled.copyTo(grey);
        return true;
    });
}

} // namespace morvane::common
