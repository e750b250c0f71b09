/// @file
/// Attributes of connected components: small accumulators that take pixels one by one, merge, and yield one number.
///
/// An attribute that has taken no pixel is empty: its area is 0, or its interval is inverted, the minimum above the
/// maximum. Coordinates are widened to 64 bits with their sign and compared as unsigned numbers.
#pragma once

#include <morvane/Export.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace morvane::common
{

/// Which attribute an operator measures. The numbers are part of the interface; operators refuse others.
enum eAttributeType : int
{
    eAttributeHeight = 0,   ///< extent along rows, see HeightAttribute
    eAttributeWidth = 1,    ///< extent along columns, see WidthAttribute
    eAttributeStrain = 2,   ///< the larger of both, see StrainAttribute
    eAttributeMinHW = 3,    ///< the smaller of both, see MinHWAttribute
    eAttributeArea = 4,     ///< number of pixels, see AreaAttribute
    eAttributeSqrtArea = 5, ///< square root of the number of pixels, see SqrtAreaAttribute
};

namespace attribute_internals
{

/// A coordinate as it is compared.
[[nodiscard]] constexpr std::uint64_t Widened(int coordinate)
{
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(coordinate));
}

/// The coordinates that were met, from the least to the most; none while the least is above the most.
struct Interval
{
    std::uint64_t least;
    std::uint64_t most;

    void Take(int coordinate)
    {
        least = std::min(least, Widened(coordinate));
        most = std::max(most, Widened(coordinate));
    }

    void Merge(Interval const & other)
    {
        least = std::min(least, other.least);
        most = std::max(most, other.most);
    }

    [[nodiscard]] bool IsInverted() const { return least > most; }

    /// How many coordinates lie in it, 0 when it is inverted.
    [[nodiscard]] std::uint64_t Extent() const { return IsInverted() ? 0 : most - least + 1; }
};

/// The lower bound of an empty interval of rows.
inline constexpr std::uint64_t kNoRow = 4294967295U;

/// The box around the pixels of a component: what the attributes of both sides share.
class Box
{
public:
    /// Takes the pixel in column x and row y.
    void AddPixel(int x, int y, int /*z*/)
    {
        m_x.Take(x);
        m_y.Take(y);
    }

    /// The leftmost column.
    [[nodiscard]] std::uint64_t GetXmin() const { return m_x.least; }
    /// The rightmost column.
    [[nodiscard]] std::uint64_t GetXmax() const { return m_x.most; }
    /// The uppermost row.
    [[nodiscard]] std::uint64_t GetYmin() const { return m_y.least; }
    /// The lowermost row.
    [[nodiscard]] std::uint64_t GetYmax() const { return m_y.most; }
    /// Sets the leftmost column.
    void SetXmin(int xmin) { m_x.least = Widened(xmin); }
    /// Sets the rightmost column.
    void SetXmax(int xmax) { m_x.most = Widened(xmax); }
    /// Sets the uppermost row.
    void SetYmin(int ymin) { m_y.least = Widened(ymin); }
    /// Sets the lowermost row.
    void SetYmax(int ymax) { m_y.most = Widened(ymax); }

protected:
    Box(int xmin, int xmax, std::uint64_t ymin, std::uint64_t ymax)
        : m_x{Widened(xmin), Widened(xmax)}
        , m_y{ymin, ymax}
    {}

    /// Is either interval inverted?
    [[nodiscard]] bool IsInverted() const { return m_x.IsInverted() || m_y.IsInverted(); }

    [[nodiscard]] std::uint64_t Width() const { return m_x.Extent(); }
    [[nodiscard]] std::uint64_t Height() const { return m_y.Extent(); }

    void MergeBox(Box const & other)
    {
        m_x.Merge(other.m_x);
        m_y.Merge(other.m_y);
    }

private:
    Interval m_x;
    Interval m_y;
};

} // namespace attribute_internals

/// The number of pixels.
class MORVANE_EXPORT AreaAttribute
{
public:
    /// @param area number of pixels so far; a negative one becomes a huge one
    AreaAttribute(int area = 0)
        : m_area(attribute_internals::Widened(area))
    {}

    /// Takes a pixel, wherever it is.
    void AddPixel(int /*x*/, int /*y*/, int /*z*/) { ++m_area; }

    /// Takes the pixels of another component.
    void Merge(AreaAttribute const & other) { m_area += other.m_area; }

    /// The number of pixels.
    [[nodiscard]] std::uint64_t GetValue() const { return m_area; }
    /// The number of pixels.
    [[nodiscard]] std::uint64_t GetArea() const { return m_area; }

    /// Has it taken no pixel?
    [[nodiscard]] virtual bool IsEmpty() const;

private:
    std::uint64_t m_area;
};

/// The square root of the number of pixels, a whole number.
///
/// The root is taken in single precision and truncated; areas beyond 2^24 lose their last digits.
class MORVANE_EXPORT SqrtAreaAttribute
{
public:
    /// @param area number of pixels so far; a negative one becomes a huge one
    SqrtAreaAttribute(int area = 0)
        : m_area(attribute_internals::Widened(area))
    {}

    /// Takes a pixel, wherever it is.
    void AddPixel(int /*x*/, int /*y*/, int /*z*/) { ++m_area; }

    /// Takes the pixels of another component.
    void Merge(SqrtAreaAttribute const & other) { m_area += other.m_area; }

    /// The root of the number of pixels.
    [[nodiscard]] std::uint64_t GetValue() const { return GetSqrtArea(); }
    /// The number of pixels.
    [[nodiscard]] std::uint64_t GetArea() const { return m_area; }
    /// The root of the number of pixels.
    [[nodiscard]] std::uint64_t GetSqrtArea() const
    {
        // The root of the largest area is far below 2^64.
        return static_cast<std::uint64_t>(std::sqrt(static_cast<float>(m_area)));
    }

    /// Has it taken no pixel?
    [[nodiscard]] virtual bool IsEmpty() const;

private:
    std::uint64_t m_area;
};

/// The extent along rows: how many rows from the uppermost pixel to the lowermost.
class MORVANE_EXPORT HeightAttribute
{
public:
    /// @param ymin uppermost row so far
    /// @param ymax lowermost row so far
    HeightAttribute(std::uint64_t ymin = attribute_internals::kNoRow, std::uint64_t ymax = 0)
        : m_y{ymin, ymax}
    {}

    /// Takes the pixel in column x and row y.
    void AddPixel(int /*x*/, int y, int /*z*/) { m_y.Take(y); }

    /// Takes the pixels of another component.
    void Merge(HeightAttribute const & other) { m_y.Merge(other.m_y); }

    /// The number of rows, 0 when empty.
    [[nodiscard]] std::uint64_t GetValue() const { return GetHeight(); }
    /// The number of rows, 0 when empty.
    [[nodiscard]] std::uint64_t GetHeight() const { return m_y.Extent(); }

    /// The uppermost row.
    [[nodiscard]] std::uint64_t GetYmin() const { return m_y.least; }
    /// The lowermost row.
    [[nodiscard]] std::uint64_t GetYmax() const { return m_y.most; }
    /// Sets the uppermost row.
    void SetYmin(int ymin) { m_y.least = attribute_internals::Widened(ymin); }
    /// Sets the lowermost row.
    void SetYmax(int ymax) { m_y.most = attribute_internals::Widened(ymax); }

    /// Is the interval inverted?
    [[nodiscard]] virtual bool IsEmpty() const;

private:
    attribute_internals::Interval m_y;
};

/// The extent along columns: how many columns from the leftmost pixel to the rightmost.
class MORVANE_EXPORT WidthAttribute
{
public:
    /// @param xmin leftmost column so far
    /// @param xmax rightmost column so far
    WidthAttribute(int xmin = -1, int xmax = 0)
        : m_x{attribute_internals::Widened(xmin), attribute_internals::Widened(xmax)}
    {}

    /// Takes the pixel in column x and row y.
    void AddPixel(int x, int /*y*/, int /*z*/) { m_x.Take(x); }

    /// Takes the pixels of another component.
    void Merge(WidthAttribute const & other) { m_x.Merge(other.m_x); }

    /// The number of columns, 0 when empty.
    [[nodiscard]] std::uint64_t GetValue() const { return GetWidth(); }
    /// The number of columns, 0 when empty.
    [[nodiscard]] std::uint64_t GetWidth() const { return m_x.Extent(); }

    /// The leftmost column.
    [[nodiscard]] std::uint64_t GetXmin() const { return m_x.least; }
    /// The rightmost column.
    [[nodiscard]] std::uint64_t GetXmax() const { return m_x.most; }
    /// Sets the leftmost column.
    void SetXmin(int xmin) { m_x.least = attribute_internals::Widened(xmin); }
    /// Sets the rightmost column.
    void SetXmax(int xmax) { m_x.most = attribute_internals::Widened(xmax); }

    /// Is the interval inverted?
    [[nodiscard]] virtual bool IsEmpty() const;

private:
    attribute_internals::Interval m_x;
};

/// The larger of width and height.
class MORVANE_EXPORT StrainAttribute : public attribute_internals::Box
{
public:
    /// @param xmin leftmost column so far
    /// @param xmax rightmost column so far
    /// @param ymin uppermost row so far
    /// @param ymax lowermost row so far
    StrainAttribute(
        int xmin = -1, int xmax = 0, std::uint64_t ymin = attribute_internals::kNoRow, std::uint64_t ymax = 0)
        : Box(xmin, xmax, ymin, ymax)
    {}

    /// Takes the pixels of another component.
    void Merge(StrainAttribute const & other) { MergeBox(other); }

    /// The larger of width and height, 0 when empty.
    [[nodiscard]] std::uint64_t GetValue() const { return GetStrain(); }
    /// The larger of width and height, 0 when empty.
    [[nodiscard]] std::uint64_t GetStrain() const { return IsInverted() ? 0 : std::max(Width(), Height()); }

    /// Is either interval inverted?
    [[nodiscard]] virtual bool IsEmpty() const;
};

/// The smaller of width and height.
class MORVANE_EXPORT MinHWAttribute : public attribute_internals::Box
{
public:
    /// @param xmin leftmost column so far
    /// @param xmax rightmost column so far
    /// @param ymin uppermost row so far
    /// @param ymax lowermost row so far
    MinHWAttribute(
        int xmin = -1, int xmax = 0, std::uint64_t ymin = attribute_internals::kNoRow, std::uint64_t ymax = 0)
        : Box(xmin, xmax, ymin, ymax)
    {}

    /// Takes the pixels of another component.
    void Merge(MinHWAttribute const & other) { MergeBox(other); }

    /// The smaller of width and height, 0 when empty.
    [[nodiscard]] std::uint64_t GetValue() const { return GetMinHW(); }
    /// The smaller of width and height, 0 when empty.
    [[nodiscard]] std::uint64_t GetMinHW() const { return IsInverted() ? 0 : std::min(Width(), Height()); }

    /// Is either interval inverted?
    [[nodiscard]] virtual bool IsEmpty() const;
};

} // namespace morvane::common
