/// @file
/// Zones that grow from seeds run by run, for conditions under which the order of growth makes no difference.
#pragma once

#include <morvane/common/Conversions.h>
#include <morvane/common/PixelTypes.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

namespace morvane::connexity::growth_internals
{

/// What DeltaConnected and DeltaConnectedSeed ask of two values, without a branch: for single questions, of which nobody can
/// predict the answer.
template <common::Element T>
class NearValues
{
public:
    explicit NearValues(double delta)
        : m_delta(common::TruncateTo<T>(delta))
    {}

    [[nodiscard]] bool operator()(T one, T other) const
    {
        if constexpr (std::same_as<T, int>)
        {
            // Differences that no int can hold read as negative ones.
            return common::WrapTo<int>(std::abs(std::int64_t{one} - other)) <= m_delta;
        }
        else
        {
            // Of narrow integers, an int holds every difference.
            return std::abs(one - other) <= m_delta;
        }
    }

private:
    T m_delta;
};

/// Steps are allowed between pixels of one image that differ by at most a delta.
template <common::Element T>
class NearNeighbour
{
public:
    /// Whether the answer depends on the pixel that the step begins at.
    static constexpr bool kDependsOnSource = true;

    NearNeighbour(cv::Mat const & image, double delta)
        : m_image(&image)
        , m_near(delta)
    {}

    void Open(cv::Point const &) {}

    /// What tells about steps from the pixels of one row to those of another, or of the same, by their columns.
    [[nodiscard]] auto Between(int from, int to) const
    {
        return [near = m_near, one = m_image->ptr<T>(from), other = m_image->ptr<T>(to)](int x, int toX) {
            return near(one[x], other[toX]);
        };
    }

private:
    cv::Mat const * m_image;
    NearValues<T> m_near;
};

/// Steps are allowed to pixels of one image that differ from the seed by at most a delta.
template <common::Element T>
class NearSeed
{
public:
    static constexpr bool kDependsOnSource = false;

    NearSeed(cv::Mat const & image, double delta)
        : m_image(&image)
        , m_near(delta)
    {}

    void Open(cv::Point const & seed) { m_seed = m_image->ptr<T>(seed.y)[seed.x]; }

    /// @copydoc NearNeighbour::Between
    [[nodiscard]] auto Between(int, int to) const
    {
        return [near = m_near, seed = m_seed, other = m_image->ptr<T>(to)](int, int toX) {
            return near(other[toX], seed);
        };
    }

private:
    cv::Mat const * m_image;
    NearValues<T> m_near;
    T m_seed{};
};

/// Steps are allowed that both allow.
template <class First, class Second>
class BothNear
{
public:
    static constexpr bool kDependsOnSource = First::kDependsOnSource || Second::kDependsOnSource;

    BothNear(First first, Second second)
        : m_first(std::move(first))
        , m_second(std::move(second))
    {}

    void Open(cv::Point const & seed)
    {
        m_first.Open(seed);
        m_second.Open(seed);
    }

    /// @copydoc NearNeighbour::Between
    [[nodiscard]] auto Between(int from, int to) const
    {
        return [first = m_first.Between(from, to), second = m_second.Between(from, to)](int x, int toX) {
            return first(x, toX) && second(x, toX);
        };
    }

private:
    First m_first;
    Second m_second;
};

/// Pixels beside each other, from the first to the last column.
struct Run
{
    int y;
    int first;
    int last;
};

/// How far the neighbours of a pixel reach in one row.
struct RowReach
{
    int dy;
    int first;
    int last;
};

/// The rows in which a shape has neighbours, and their reach. All of an interval are neighbours, but for the pixel itself.
[[nodiscard]] std::vector<RowReach> RowReaches(Connexity const & connexity, bool wrapsInX);

/// Where the labels of zones are written, a run at a time; they wrap at the limit of the depth.
class RunLabels
{
public:
    /// @param labels an image of labels, set to 0; of several channels, the first elements of each row are meant
    explicit RunLabels(cv::Mat & labels)
        : m_labels(&labels)
    {}

    /// The runs that follow are of the next zone.
    void BeginZone() { ++m_zone; }

    void Write(Run const & run);

private:
    cv::Mat * m_labels;
    std::uint64_t m_zone = 0;
};

/// Grows zones, one after the other, over what the zones before them have left free.
///
/// A zone is a pile of runs. A run that is taken off it looks into the rows that its neighbours reach; a free pixel there to
/// which a step leads is the first of a new run, which goes as far to both sides as steps lead from pixel to pixel.
///
/// @tparam Near NearNeighbour, NearSeed or BothNear
template <class Near>
class RunGrowth
{
public:
    RunGrowth(cv::Size size, eConnexityType type, Near near, cv::Mat & labels)
        : m_size(size)
        , m_wrapsInX(NeighbourhoodOver(Connexity(type), size).WrapsInX())
        , m_hasNeighbours(Connexity(type).size() > 0)
        , m_reaches(RowReaches(Connexity(type), m_wrapsInX))
        , m_near(std::move(near))
        , m_labels(labels)
        , m_taken(cv::Mat::zeros(size, CV_8UC1))
    {}

    /// Grows a zone from each free pixel in raster order.
    void GrowAll()
    {
        for (int y = 0; y < m_size.height; ++y)
        {
            for (int x = FreeFrom(y, 0, m_size.width); x < m_size.width; x = FreeFrom(y, x, m_size.width))
            {
                GrowFrom({x, y});
            }
        }
    }

    /// Grows a zone from each of the seeds that lies inside the image and is free.
    void GrowFrom(std::vector<cv::Point> const & seeds)
    {
        cv::Rect const image({}, m_size);
        for (cv::Point const & seed : seeds)
        {
            if (image.contains(seed) && m_taken.ptr<uchar>(seed.y)[seed.x] == 0) GrowFrom(seed);
        }
    }

private:
    /// The first free column of a row from @p x on; @p end, at the most, where there is none.
    [[nodiscard]] int FreeFrom(int y, int x, int end) const
    {
        auto const * const taken = m_taken.ptr<uchar>(y);
        if (x >= end || taken[x] == 0) return std::min(x, end);
        void const * const free = std::memchr(taken + x, 0, static_cast<std::size_t>(end - x));
        return free == nullptr ? end : static_cast<int>(static_cast<uchar const *>(free) - taken);
    }

    void GrowFrom(cv::Point const & seed)
    {
        m_labels.BeginZone();
        m_near.Open(seed);
        Take(seed.y, seed.x);
        while (!m_runs.empty())
        {
            Run const run = m_runs.back();
            m_runs.pop_back();
            for (RowReach const & reach : m_reaches)
            {
                std::int64_t const y = std::int64_t{run.y} + reach.dy;
                if (y >= 0 && y < m_size.height) LookInto(static_cast<int>(y), run, reach);
            }
        }
    }

    /// Takes the run around a free pixel. @return its last column
    int Take(int y, int x)
    {
        auto * const taken = m_taken.ptr<uchar>(y);
        auto const near = m_near.Between(y, y);
        Run run{y, x, x};
        while (m_hasNeighbours && run.first > 0 && taken[run.first - 1] == 0 && near(run.first, run.first - 1))
        {
            --run.first;
        }
        while (m_hasNeighbours && run.last + 1 < m_size.width && taken[run.last + 1] == 0 &&
               near(run.last, run.last + 1))
        {
            ++run.last;
        }
        std::fill(taken + run.first, taken + run.last + 1, uchar{1});
        m_labels.Write(run);
        m_runs.push_back(run);
        return run.last;
    }

    /// Takes what a run reaches in a row, inside the image and, where columns wrap, across the seam.
    void LookInto(int y, Run const & run, RowReach const & reach)
    {
        std::int64_t const width = m_size.width;
        std::int64_t const first = std::int64_t{run.first} + reach.first;
        std::int64_t const last = std::int64_t{run.last} + reach.last;
        LookIntoPart(y, run, reach, std::max<std::int64_t>(first, 0), std::min(last, width - 1), 0);
        if (!m_wrapsInX) return;
        LookIntoPart(y, run, reach, std::max<std::int64_t>(first + width, 0), width - 1, width);
        LookIntoPart(y, run, reach, 0, std::min(last - width, width - 1), -width);
    }

    /// @param moved how far the columns lie from where they would be without the wrap
    void LookIntoPart(
        int y, Run const & run, RowReach const & reach, std::int64_t first, std::int64_t last, std::int64_t moved)
    {
        if (first > last) return;
        auto const near = m_near.Between(run.y, y);
        int const end = static_cast<int>(last) + 1;
        for (int x = FreeFrom(y, static_cast<int>(first), end); x < end; x = FreeFrom(y, x + 1, end))
        {
            if (IsReached(near, x, run, reach, x - moved)) x = Take(y, x);
        }
    }

    /// Tells whether a step leads to a column from any pixel of the run that reaches it.
    ///
    /// @param x the column
    /// @param unmoved where it would be without the wrap
    template <class Steps>
    [[nodiscard]] static bool
    IsReached(Steps const & near, int x, Run const & run, RowReach const & reach, std::int64_t unmoved)
    {
        if constexpr (!Near::kDependsOnSource) return near(run.first, x);
        auto const lowest = static_cast<int>(std::max<std::int64_t>(run.first, unmoved - reach.last));
        auto const highest = static_cast<int>(std::min<std::int64_t>(run.last, unmoved - reach.first));
        for (int from = lowest; from <= highest; ++from)
        {
            if (near(from, x)) return true;
        }
        return false;
    }

    cv::Size m_size;
    bool m_wrapsInX;
    /// No shape leaves out the pixels beside one, but a number outside the table has no neighbours at all.
    bool m_hasNeighbours;
    std::vector<RowReach> m_reaches;
    Near m_near;
    RunLabels m_labels;
    /// 1 where a zone has taken a pixel.
    cv::Mat m_taken;
    std::vector<Run> m_runs;
};

} // namespace morvane::connexity::growth_internals
