#include <morvane/algorithm/Filling.h>

#include <morvane/common/Conversions.h>
#include <morvane/common/Neighbourhood.h>
#include <morvane/connexity/Connexity.h>

#include "common/Dispatch.h"
#include "common/EdgeColumns.h"

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

namespace morvane::algorithm
{

namespace
{

/// Tells whether any of some elements is 0.
template <class T>
bool HoldsZero(T const * elements, std::int64_t count)
{
    // Flags as wide as the elements, and no way out before the end, so that it compiles to plain vector code.
    using Flag = std::conditional_t<
        sizeof(T) == 1, std::uint8_t,
        std::conditional_t<
            sizeof(T) == 2, std::uint16_t, std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>>>;
    Flag found = 0;
    for (std::int64_t index = 0; index < count; ++index)
    {
        found = static_cast<Flag>(found | static_cast<Flag>(elements[index] == T{0}));
    }
    return found != 0;
}

/// Calls @p fill with the position of each element of a row that is 0, and passes over the others at memory bandwidth.
template <class T, class Fill>
void VisitZeros(T const * row, int columns, Fill const & fill)
{
    // The widest rows end where an int does.
    constexpr std::int64_t kBlock = 64;
    for (std::int64_t first = 0; first < columns; first += kBlock)
    {
        std::int64_t const last = std::min<std::int64_t>(first + kBlock, columns);
        if (!HoldsZero(row + first, last - first)) continue;
        for (std::int64_t x = first; x < last; ++x)
        {
            if (row[x] == T{0}) fill(static_cast<int>(x));
        }
    }
}

/// Copies @p image to @p out, and fills the pixels at which @p mask is 0 with `valueAt(pixel)`.
template <class T, class ValueAt>
bool CopyAndFill(cv::Mat const & image, cv::Mat const & mask, cv::Mat & out, ValueAt const & valueAt)
{
    for (int y = 0; y < image.rows; ++y)
    {
        T const * const pixels = image.ptr<T>(y);
        T * const filled = out.ptr<T>(y);
        if (filled != pixels) std::copy_n(pixels, image.cols, filled);
        VisitZeros(mask.ptr<T>(y), image.cols, [&](int x) { filled[x] = valueAt(cv::Point(x, y)); });
    }
    return true;
}

/// The pixel at a distance in bytes from another of the same matrix.
template <class T>
T const & AtDistance(T const & pixel, std::ptrdiff_t bytes)
{
    return *reinterpret_cast<T const *>(reinterpret_cast<uchar const *>(&pixel) + bytes);
}

/// The mean of those neighbours of a pixel at which a mask is not 0.
template <class T>
class MaskedMean
{
public:
    MaskedMean(cv::Mat const & image, cv::Mat const & mask, connexity::eConnexityType type)
        : m_image(&image)
        , m_mask(&mask)
        , m_neighbourhood(connexity::NeighbourhoodOver(connexity::Connexity(type), image.size()))
        , m_imageOffsets(m_neighbourhood.LinearOffsets(image))
        // Of several channels, elements are meant, not pixels.
        , m_maskOffsets(m_neighbourhood.LinearOffsets(mask.reshape(1)))
    {}

    T operator()(cv::Point const & pixel) const
    {
        // Unsigned, so that the wrap-around of int is defined.
        using Sum = std::conditional_t<std::integral<T>, unsigned, T>;
        Sum sum = 0;
        int count = 0;
        auto const add = [&](T const & value, T const & holds) {
            // A pixel that does not hold may be a NaN: it is left out, not multiplied.
            sum += holds != T{0} ? static_cast<Sum>(value) : Sum{0};
            count += static_cast<int>(holds != T{0});
        };
        VisitNeighbours(pixel, add);
        if (count == 0) return T{0};
        if constexpr (std::integral<T>)
        {
            return static_cast<T>(common::WrapTo<int>(sum) / count);
        }
        else
        {
            return sum / static_cast<T>(count);
        }
    }

private:
    template <class Add>
    void VisitNeighbours(cv::Point const & pixel, Add const & add) const
    {
        T const & value = m_image->ptr<T>(pixel.y)[pixel.x];
        T const & holds = m_mask->ptr<T>(pixel.y)[pixel.x];
        if (m_neighbourhood.IsInterior(pixel))
        {
            for (std::size_t index = 0; index < m_neighbourhood.Count(); ++index)
            {
                add(AtDistance(value, m_imageOffsets[index]), AtDistance(holds, m_maskOffsets[index]));
            }
            return;
        }
        for (std::size_t index = 0; index < m_neighbourhood.Count(); ++index)
        {
            common::FarPoint const neighbour = common::FarNeighbour(pixel, m_neighbourhood.Offset(index));
            int const y = common::NearestRow(neighbour.y, m_image->rows);
            int const x = m_neighbourhood.WrapsInX() ? common::OppositeEdgeColumn(neighbour.x, m_image->cols)
                                                     : common::NearestColumn(neighbour.x, m_image->cols);
            add(m_image->ptr<T>(y)[x], m_mask->ptr<T>(y)[x]);
        }
    }

    cv::Mat const * m_image;
    cv::Mat const * m_mask;
    common::Neighbourhood m_neighbourhood;
    std::vector<std::ptrdiff_t> m_imageOffsets;
    std::vector<std::ptrdiff_t> m_maskOffsets;
};

/// What the medians do with neighbours that are 0.
enum class Zeros
{
    Kept,
    Overwritten, ///< the others close up over them, and the places at the end keep what they held
};

/// The neighbour of a pixel that is one above the middle of all, sorted.
template <class T, Zeros kZeros>
class UpperMedian
{
public:
    /// @param type of two neighbours at least
    UpperMedian(cv::Mat const & image, connexity::eConnexityType type)
        : m_image(&image)
        , m_neighbourhood(connexity::NeighbourhoodOver(connexity::Connexity(type), image.size()))
        , m_offsets(m_neighbourhood.LinearOffsets(image))
        , m_values(m_neighbourhood.Count())
    {}

    T operator()(cv::Point const & pixel)
    {
        Gather(pixel);
        if constexpr (kZeros == Zeros::Overwritten) CloseUpOverZeros();
        auto const wanted = m_values.begin() + static_cast<std::ptrdiff_t>(m_values.size() / 2 + 1);
        std::nth_element(m_values.begin(), wanted, m_values.end(), ComesBefore);
        return *wanted;
    }

private:
    /// NaN comes last.
    static bool ComesBefore(T one, T other)
    {
        if constexpr (std::floating_point<T>)
        {
            if (std::isnan(one)) return false;
            if (std::isnan(other)) return true;
        }
        return one < other;
    }

    /// What std::remove does, with its end forgotten.
    void CloseUpOverZeros()
    {
        std::size_t end = 0;
        for (T const value : m_values)
        {
            if (value != T{0}) m_values[end++] = value;
        }
    }

    void Gather(cv::Point const & pixel)
    {
        T const & value = m_image->ptr<T>(pixel.y)[pixel.x];
        bool const isInterior = m_neighbourhood.IsInterior(pixel);
        for (std::size_t index = 0; index < m_values.size(); ++index)
        {
            m_values[index] = isInterior ? AtDistance(value, m_offsets[index]) : AtBorder(pixel, index);
        }
    }

    [[nodiscard]] T AtBorder(cv::Point const & pixel, std::size_t index) const
    {
        int const columns = m_image->cols;
        common::FarPoint const neighbour = common::FarNeighbour(pixel, m_neighbourhood.Offset(index));
        T const * const row = m_image->ptr<T>(common::NearestRow(neighbour.y, m_image->rows));
        if (!m_neighbourhood.WrapsInX()) return row[common::NearestColumn(neighbour.x, columns)];
        std::int64_t x = neighbour.x;
        if (x < 0)
        {
            x += columns;
        }
        else if (x >= columns)
        {
            x -= columns;
        }
        // Narrower than the offset: there is nothing.
        return x >= 0 && x < columns ? row[x] : T{0};
    }

    cv::Mat const * m_image;
    common::Neighbourhood m_neighbourhood;
    std::vector<std::ptrdiff_t> m_offsets;
    std::vector<T> m_values;
};

template <Zeros kZeros>
bool FillWithMedian(cv::Mat const & image, cv::Mat & out, connexity::eConnexityType type)
{
    bool const isReady = common::IsSingleChannel(image) && common::SameSize(image, out) && image.depth() == out.depth();
    // The one above the middle is the third at least.
    if (!isReady || connexity::Connexity(type).size() <= 2) return false;
    return common::VisitElement(image, [&]<class T> {
        UpperMedian<T, kZeros> median(image, type);
        return CopyAndFill<T>(image, image, out, [&](cv::Point const & pixel) { return median(pixel); });
    });
}

} // namespace

bool FillImageWithMean(cv::Mat const & image, cv::Mat const & mask, cv::Mat & out, connexity::eConnexityType connexity)
{
    bool const isReady = common::IsSingleChannel(image) && common::SameSize(image, mask, out) &&
                         image.depth() == out.depth() && mask.depth() == out.depth();
    if (!isReady) return false;
    return common::VisitElement(
        image, [&]<class T> { return CopyAndFill<T>(image, mask, out, MaskedMean<T>(image, mask, connexity)); });
}

bool FillImageWithMedian(cv::Mat const & image, cv::Mat & out, connexity::eConnexityType connexity)
{
    return FillWithMedian<Zeros::Kept>(image, out, connexity);
}

bool FillImageWithMedianNoZero(cv::Mat const & image, cv::Mat & out, connexity::eConnexityType connexity)
{
    return FillWithMedian<Zeros::Overwritten>(image, out, connexity);
}

} // namespace morvane::algorithm
