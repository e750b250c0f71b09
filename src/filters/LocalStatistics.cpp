#include "filters/EntropyTerms.h"
#include "filters/LocalMean.h"
#include "filters/StripHistogram.h"

#include <morvane/common/ImageCompare.h>
#include <morvane/filters/Statistics.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace morvane::filters
{

namespace
{

using namespace window_internals;

/// Where the statistics that need a histogram go; null for one that nobody asked for.
struct HistogramOutputs
{
    cv::Mat * entropy;
    cv::Mat * median;
};

/// The grey image with the window that slides over it.
struct Window
{
    cv::Mat grey;
    int half;

    [[nodiscard]] Span Rows(int y) const { return WindowAround(y, half, grey.rows); }
    [[nodiscard]] Span Cols(int x) const { return WindowAround(x, half, grey.cols); }
};

/// Slides the windows of eight rows at once, and takes what is asked for from their histograms.
template <class Count>
class StripStatistics
{
public:
    StripStatistics(Window const & window, HistogramOutputs const & outputs)
        : m_window(window)
        , m_outputs(outputs)
        , m_histogram(window.grey, window.half)
    {}

    void Run()
    {
        for (int row = 0; row < m_window.grey.rows; row += kLanes)
        {
            RunStrip(row);
        }
    }

private:
    void RunStrip(int row)
    {
        int const cols = m_window.grey.cols;
        int const half = m_window.half;
        m_row = row;
        m_rows = std::min(kLanes, m_window.grey.rows - row);
        m_histogram.Begin(row);
        for (int x = 0; x < std::min(half - 1, cols); ++x)
        {
            m_histogram.Enter(x);
        }
        for (int x = 0; x < cols; ++x)
        {
            if (half - 1 < cols - x) m_histogram.Enter(x + half - 1);
            if (x > half) m_histogram.Leave(x - half - 1);
            if (!IsAnyMeasured(x)) continue;
            FindAreas(x);
            if (m_outputs.median != nullptr) WriteMedians(x);
            if (m_outputs.entropy != nullptr) WriteEntropies(x);
        }
    }

    [[nodiscard]] bool IsAnyMeasured(int x) const
    {
        bool isAny = false;
        for (int lane = 0; lane < m_rows; ++lane)
        {
            isAny = isAny || IsMeasured(lane, x);
        }
        return isAny;
    }

    [[nodiscard]] bool IsMeasured(int lane, int x) const { return m_window.grey.ptr(m_row + lane)[x] != 0; }

    void FindAreas(int x)
    {
        int const width = m_window.Cols(x).Length();
        for (int lane = 0; lane < m_rows; ++lane)
        {
            m_areas[static_cast<std::size_t>(lane)] = m_window.Rows(m_row + lane).Area(width);
        }
    }

    /// The median is the last level that at most half of the values above 0 lie below.
    void WriteMedians(int x)
    {
        Lanes<Count> below;
        Lanes<Count> limits;
        Lanes<Count> medians;
        for (std::size_t lane = 0; lane < kLanes; ++lane)
        {
            auto const zeros = m_histogram[0][lane];
            limits.Set(lane, static_cast<Count>(zeros + (static_cast<Count>(m_areas[lane]) - zeros) / 2));
        }
        for (std::size_t word = 0; word < StripHistogram<Count>::kWords && !below.AreAbove(limits); ++word)
        {
            m_histogram.VisitOccurring(word, [&](std::size_t level) {
                medians.TakeWhereNotAbove(below, limits, Lanes<Count>(static_cast<Count>(level)));
                below += m_histogram[level];
            });
        }
        for (int lane = 0; lane < m_rows; ++lane)
        {
            if (!IsMeasured(lane, x)) continue;
            m_outputs.median->ptr(m_row + lane)[x] = static_cast<uchar>(medians[static_cast<std::size_t>(lane)]);
        }
    }

    void WriteEntropies(int x)
    {
        std::array<EntropyTerms const *, kLanes> const terms = TermsAt(x);
        bool areComplete = true;
        for (EntropyTerms const * const one : terms)
        {
            areComplete = areComplete && one->IsComplete();
        }
        std::array<double, kLanes> const sums = areComplete ? SumTables(terms) : SumTerms(terms);
        for (int lane = 0; lane < m_rows; ++lane)
        {
            if (!IsMeasured(lane, x)) continue;
            m_outputs.entropy->ptr<float>(m_row + lane)[x] =
                static_cast<float>(sums[static_cast<std::size_t>(lane)] * -1.0);
        }
    }

    /// The terms for each window; where it is cut in x and in y there is no table of them.
    [[nodiscard]] std::array<EntropyTerms const *, kLanes> TermsAt(int x)
    {
        std::array<EntropyTerms const *, kLanes> terms{};
        bool const isCutInX = m_window.Cols(x).IsCut(m_window.half);
        for (int lane = 0; lane < kLanes; ++lane)
        {
            auto const i = static_cast<std::size_t>(lane);
            if (lane >= m_rows)
            {
                terms[i] = terms[0];
                continue;
            }
            bool const isCutInY = m_window.Rows(m_row + lane).IsCut(m_window.half);
            if (isCutInX && isCutInY)
            {
                m_untabled[i] = EntropyTerms(m_areas[i]);
                terms[i] = &m_untabled[i];
            }
            else
            {
                terms[i] = &m_tables.For(m_areas[i]);
            }
        }
        return terms;
    }

    /// Adds up terms from level to level, all lanes side by side; a level that a window has not adds 0.
    template <class TermOf>
    [[nodiscard]] std::array<double, kLanes> Sum(TermOf const & termOf) const
    {
        std::array<double, kLanes> sums{};
        for (std::size_t word = 0; word < StripHistogram<Count>::kWords; ++word)
        {
            m_histogram.VisitOccurring(word, [&](std::size_t level) {
                // The last level is left out.
                if (level == kLevels - 1) return;
                Lanes<Count> const & counts = m_histogram[level];
                for (std::size_t lane = 0; lane < kLanes; ++lane)
                {
                    sums[lane] += termOf(lane, counts[lane]);
                }
            });
        }
        return sums;
    }

    [[nodiscard]] std::array<double, kLanes> SumTables(std::array<EntropyTerms const *, kLanes> const & terms) const
    {
        std::array<double const *, kLanes> tables{};
        std::transform(
            terms.begin(), terms.end(), tables.begin(), [](EntropyTerms const * one) { return one->Table(); });
        return Sum([&](std::size_t lane, std::size_t count) { return tables[lane][count]; });
    }

    [[nodiscard]] std::array<double, kLanes> SumTerms(std::array<EntropyTerms const *, kLanes> const & terms) const
    {
        return Sum([&](std::size_t lane, std::size_t count) { return terms[lane]->Of(count); });
    }

    Window m_window;
    HistogramOutputs m_outputs;
    StripHistogram<Count> m_histogram;
    EntropyTables m_tables;
    std::vector<EntropyTerms> m_untabled = std::vector<EntropyTerms>(kLanes, EntropyTerms(1));
    int m_row = 0;
    int m_rows = 0;
    std::array<std::size_t, kLanes> m_areas{};
};

/// The greatest area of a window.
std::size_t GreatestArea(Window const & window)
{
    auto const side = [&](int size) {
        return std::min(2 * static_cast<std::size_t>(window.half), static_cast<std::size_t>(size));
    };
    return side(window.grey.rows) * side(window.grey.cols);
}

void WriteFromHistograms(Window const & window, HistogramOutputs const & outputs)
{
    if (GreatestArea(window) <= std::numeric_limits<std::uint16_t>::max())
    {
        StripStatistics<std::uint16_t>(window, outputs).Run();
    }
    else
    {
        StripStatistics<std::uint32_t>(window, outputs).Run();
    }
}

/// Half the window's side: always even.
int HalfOf(unsigned int kernelSize, cv::Size size)
{
    unsigned const half = kernelSize / 2;
    unsigned const even = half + (half & 1U);
    // A window that covers the image from all of its pixels grows no further.
    return static_cast<int>(std::min(even, static_cast<unsigned>(std::max(size.width, size.height))));
}

/// Scales the image to grey, makes the outputs, and calls @p write with the window, if that holds pixels, and with
/// them.
///
/// @param types of the outputs
/// @param outputs replaced by zeros
template <class Write>
bool Slide(
    cv::Mat const & src, unsigned int kernelSize, std::vector<int> const & types,
    std::vector<cv::Mat *> const & outputs, Write const & write)
{
    if (src.dims > 2 || src.rows <= 0 || src.cols <= 0 || kernelSize == 0) return false;
    Window window;
    if (!common::ConvertToGrayScale(src, window.grey)) return false;
    window.half = HalfOf(kernelSize, src.size());
    // Two outputs may be one matrix: these keep the pixels of each, whatever becomes of it.
    std::vector<cv::Mat> results;
    for (std::size_t i = 0; i < outputs.size(); ++i)
    {
        *outputs[i] = cv::Mat::zeros(window.grey.size(), types[i]);
        results.push_back(*outputs[i]);
    }
    // An empty window has no statistics; that shows only where there is a pixel to slide it over.
    if (window.half == 0) return cv::countNonZero(window.grey) == 0;
    write(window, results);
    return true;
}

} // namespace

bool LocalEntropyNoZero(cv::Mat const & src, unsigned int kernelSize, cv::Mat & entropy)
{
    return Slide(src, kernelSize, {CV_32FC1}, {&entropy}, [](Window const & window, std::vector<cv::Mat> & results) {
        WriteFromHistograms(window, {&results[0], nullptr});
    });
}

bool LocalMeanNoZero(cv::Mat const & src, unsigned int kernelSize, cv::Mat & mean, cv::Mat & stdDev)
{
    return Slide(
        src, kernelSize, {CV_32FC1, CV_32FC1}, {&mean, &stdDev},
        [](Window const & window, std::vector<cv::Mat> & results) {
            WriteMeans(window.grey, window.half, results[0], results[1]);
        });
}

bool LocalMedianNoZero(cv::Mat const & src, unsigned int kernelSize, cv::Mat & median)
{
    return Slide(src, kernelSize, {CV_8UC1}, {&median}, [](Window const & window, std::vector<cv::Mat> & results) {
        WriteFromHistograms(window, {nullptr, &results[0]});
    });
}

bool LocalStatisticsNoZero(
    cv::Mat const & src, unsigned int kernelSize, cv::Mat & entropy, cv::Mat & mean, cv::Mat & stdDev, cv::Mat & median)
{
    return Slide(
        src, kernelSize, {CV_32FC1, CV_32FC1, CV_32FC1, CV_8UC1}, {&entropy, &mean, &stdDev, &median},
        [](Window const & window, std::vector<cv::Mat> & results) {
            WriteFromHistograms(window, {&results[0], &results[3]});
            WriteMeans(window.grey, window.half, results[1], results[2]);
        });
}

} // namespace morvane::filters
