/// @file
/// Repeating a local pass where the image still changes.
#pragma once

#include <morvane/common/ImageCompare.h>

#include <opencv2/core.hpp>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace morvane::geodesy::reconstruction_internals
{

/// An image cut into squares, some of which are marked.
class Tiles
{
public:
    /// None marked.
    explicit Tiles(cv::Size size)
        : m_size(size)
        , m_marks(cv::Mat1b::zeros(CountOf(size.height), CountOf(size.width)))
    {}

    [[nodiscard]] std::size_t Count() const { return m_marks.total(); }
    [[nodiscard]] std::size_t Marked() const { return static_cast<std::size_t>(cv::countNonZero(m_marks)); }

    /// Calls @p visit with each tile, as a mark and a rectangle.
    template <class Visit>
    void ForEach(Visit && visit)
    {
        for (int y = 0; y < m_marks.rows; ++y)
        {
            for (int x = 0; x < m_marks.cols; ++x)
            {
                cv::Rect const tile(x * kSide, y * kSide, kSide, kSide);
                visit(m_marks(y, x), tile & cv::Rect(cv::Point(), m_size));
            }
        }
    }

    /// Marks the tiles that lie within @p reach of those of @p others that are marked.
    void MarkAround(Tiles const & others, cv::Size reach)
    {
        m_marks.setTo(0);
        int const columns = CountOf(reach.width);
        int const rows = CountOf(reach.height);
        cv::Rect const all(0, 0, m_marks.cols, m_marks.rows);
        for (int y = 0; y < m_marks.rows; ++y)
        {
            for (int x = 0; x < m_marks.cols; ++x)
            {
                if (others.m_marks(y, x) == 0) continue;
                m_marks(cv::Rect(x - columns, y - rows, 2 * columns + 1, 2 * rows + 1) & all).setTo(1);
            }
        }
    }

private:
    static constexpr int kSide = 64;

    static int CountOf(int length) { return length / kSide + (length % kSide != 0 ? 1 : 0); }

    cv::Size m_size;
    cv::Mat1b m_marks;
};

/// Repeats a pass over the tiles in which something can change.
///
/// Where the image has not changed within reach of a pixel, the pass gives there what it gave before. So after a pass over
/// the whole image only the surroundings of what changed are passed over. Exact unless a pass depends on where in memory a
/// pixel lies, as OpenCV's do on NaN and on the sign of zero.
///
/// @tparam Pass `pass(area, current, out)` takes a view of the image so far and writes the pass over the area of that view,
///         which ends there as an image ends
template <class Pass>
class ActiveTiles
{
public:
    /// @param reach how far, in columns and rows, a pixel has a say in a pass
    ActiveTiles(cv::Size size, cv::Size reach, Pass pass)
        : m_image(cv::Point(), size)
        , m_reach(reach)
        , m_changed(size)
        , m_active(size)
        , m_pass(std::move(pass))
    {}

    /// Repeats the pass on @p image, in place, until it changes nothing, or so many times.
    void Run(cv::Mat & image, std::size_t passes)
    {
        std::size_t active = m_active.Count();
        for (std::size_t pass = 0; pass < passes && active > 0; ++pass)
        {
            // A small pass costs several times as much for a pixel.
            active < m_active.Count() / 8 ? PassOverActive(image) : PassOverAll(image);
            m_active.MarkAround(m_changed, m_reach);
            active = m_active.Marked();
        }
    }

private:
    void PassOverAll(cv::Mat & image)
    {
        m_pass(m_image, image, m_next);
        m_changed.ForEach([&](uchar & mark, cv::Rect const & tile) {
            mark = common::AreImagesEqual(image(tile), m_next(tile)) ? 0 : 1;
        });
        m_next.copyTo(image);
    }

    void PassOverActive(cv::Mat & image)
    {
        m_results.clear();
        m_active.ForEach([&](uchar mark, cv::Rect const & tile) {
            if (mark == 0) return;
            cv::Rect const area = cv::Rect(
                                      tile.x - m_reach.width, tile.y - m_reach.height, tile.width + 2 * m_reach.width,
                                      tile.height + 2 * m_reach.height) &
                                  m_image;
            cv::Mat result(area.size(), image.type());
            m_pass(area, image(area), result);
            m_results.emplace_back(tile, result(tile - area.tl()));
        });
        std::size_t next = 0;
        m_changed.ForEach([&](uchar & mark, cv::Rect const & tile) {
            mark = 0;
            if (next == m_results.size() || m_results[next].first != tile) return;
            cv::Mat const & result = m_results[next++].second;
            cv::Mat before = image(tile);
            if (common::AreImagesEqual(before, result)) return;
            result.copyTo(before);
            mark = 1;
        });
    }

    cv::Rect m_image;
    cv::Size m_reach;
    /// The tiles that changed in the last pass, and those that may change in the next.
    Tiles m_changed;
    Tiles m_active;
    Pass m_pass;
    cv::Mat m_next;
    /// The tiles of a pass over some, with what they become.
    std::vector<std::pair<cv::Rect, cv::Mat>> m_results;
};

} // namespace morvane::geodesy::reconstruction_internals
