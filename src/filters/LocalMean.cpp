#include "filters/LocalMean.h"

#include "filters/StripHistogram.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace morvane::filters::window_internals
{

namespace
{

/// Sums of levels and of their squares.
template <class Sum>
struct Moments
{
    explicit Moments(std::size_t size)
        : levels(size)
        , squares(size)
    {}

    std::vector<Sum> levels;
    std::vector<Sum> squares;
};

/// Slides the sums of the columns of a window from row to row, and those of whole windows along a row.
///
/// @tparam Sum unsigned, with room for the squares of one window in its signed form: sums over more than one window may
///         wrap around, since only their differences count
template <class Sum>
class SlidingMeans
{
public:
    SlidingMeans(cv::Mat const & grey, int half)
        : m_grey(grey)
        , m_half(half)
        , m_columns(static_cast<std::size_t>(grey.cols))
        , m_before(static_cast<std::size_t>(grey.cols) + 1)
    {}

    void Run(cv::Mat & mean, cv::Mat & stdDev)
    {
        for (int y = 0; y < std::min(m_half - 1, m_grey.rows); ++y)
        {
            AddRow<1>(y);
        }
        for (int y = 0; y < m_grey.rows; ++y)
        {
            if (m_half - 1 < m_grey.rows - y) AddRow<1>(y + m_half - 1);
            if (y > m_half) AddRow<-1>(y - m_half - 1);
            SumAlong();
            WriteRow(y, mean.ptr<float>(y), stdDev.ptr<float>(y));
        }
    }

private:
    /// Adds a row to the sums of the columns, or takes it out.
    template <int kSign>
    void AddRow(int y)
    {
        AddLevels<kSign>(m_grey.ptr(y), m_columns.levels.data(), m_columns.squares.data(), m_grey.cols);
    }

    template <int kSign>
    static void AddLevels(uchar const * __restrict row, Sum * __restrict levels, Sum * __restrict squares, int length)
    {
        for (int x = 0; x < length; ++x)
        {
            Sum const level = row[x];
            // Subtraction is the addition of what wraps around.
            levels[x] += static_cast<Sum>(kSign) * level;
            squares[x] += static_cast<Sum>(kSign) * (level * level);
        }
    }

    /// Sums up the columns before each.
    void SumAlong()
    {
        Sum levels = 0;
        Sum squares = 0;
        for (std::size_t x = 0; x < m_columns.levels.size(); ++x)
        {
            levels += m_columns.levels[x];
            squares += m_columns.squares[x];
            m_before.levels[x + 1] = levels;
            m_before.squares[x + 1] = squares;
        }
    }

    void WriteRow(int y, float * mean, float * stdDev) const
    {
        int const cols = m_grey.cols;
        int const rows = WindowAround(y, m_half, m_grey.rows).Length();
        int const firstWhole = std::min(m_half, cols);
        int const lastWhole = std::max(firstWhole, cols - m_half + 1);
        for (int x = 0; x < firstWhole; ++x)
        {
            WritePixels(y, rows, {x, x + 1}, WindowAround(x, m_half, cols), mean, stdDev);
        }
        if (firstWhole < lastWhole)
        {
            WritePixels(y, rows, {firstWhole, lastWhole}, {firstWhole - m_half, firstWhole + m_half}, mean, stdDev);
        }
        for (int x = lastWhole; x < cols; ++x)
        {
            WritePixels(y, rows, {x, x + 1}, WindowAround(x, m_half, cols), mean, stdDev);
        }
    }

    /// Writes pixels whose windows are equally wide.
    ///
    /// @param rows of the windows
    /// @param pixels columns
    /// @param window of the first pixel; those of the others follow
    void WritePixels(int y, int rows, Span const & pixels, Span const & window, float * mean, float * stdDev) const
    {
        WriteMoments(
            m_before.levels.data() + window.first, m_before.squares.data() + window.first, window.Length(), rows,
            m_grey.ptr(y) + pixels.first, pixels.Length(), mean + pixels.first, stdDev + pixels.first);
    }

    /// @param levelsBefore, squaresBefore sums of the columns before the first window, and so on
    static void WriteMoments(
        Sum const * __restrict levelsBefore, Sum const * __restrict squaresBefore, int width, int rows,
        uchar const * __restrict grey, int count, float * __restrict mean, float * __restrict stdDev)
    {
        using Signed = std::make_signed_t<Sum>;
        // In the steps of OpenCV's own mean and deviation, so that they round alike.
        double const scale = 1.0 / (static_cast<double>(rows) * width);
        for (int i = 0; i < count; ++i)
        {
            auto const levels = static_cast<double>(static_cast<Signed>(levelsBefore[i + width] - levelsBefore[i]));
            auto const squares = static_cast<double>(static_cast<Signed>(squaresBefore[i + width] - squaresBefore[i]));
            double const average = levels * scale;
            double const variance = squares * scale - average * average;
            auto const deviation = static_cast<float>(std::sqrt(variance > 0.0 ? variance : 0.0));
            mean[i] = grey[i] != 0 ? static_cast<float>(average) : 0.0F;
            stdDev[i] = grey[i] != 0 ? deviation : 0.0F;
        }
    }

    cv::Mat m_grey;
    int m_half;
    Moments<Sum> m_columns;
    Moments<Sum> m_before;
};

} // namespace

void WriteMeans(cv::Mat const & grey, int half, cv::Mat & mean, cv::Mat & stdDev)
{
    constexpr double kGreatestSquare = 255.0 * 255.0;
    double const rows = std::min<double>(2.0 * half, grey.rows);
    double const cols = std::min<double>(2.0 * half, grey.cols);
    if (rows * cols * kGreatestSquare <= std::numeric_limits<std::int32_t>::max())
    {
        SlidingMeans<std::uint32_t>(grey, half).Run(mean, stdDev);
    }
    else
    {
        SlidingMeans<std::uint64_t>(grey, half).Run(mean, stdDev);
    }
}

} // namespace morvane::filters::window_internals
