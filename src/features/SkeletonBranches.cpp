// How a skeleton is cut into branches.

#include <morvane/features/Skeleton.h>

#include <morvane/common/ImageCompare.h>
#include <morvane/connexity/Labelling.h>
#include <morvane/geodesy/GeodesicOperators.h>

#include "common/Dispatch.h"
#include "connexity/GeodesicWalk.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

namespace morvane::features::skeleton_internals
{

namespace
{

using connexity::geodesic_internals::GeodesicWalk;
using connexity::geodesic_internals::WalkPlane;

using Piece = std::vector<cv::Point>;

/// In how many parts some pixels are, which come one after the other.
class PartCounter
{
public:
    /// @param plane `CV_32SC1` of 0, for the numbers of the pixels that have come; 0 again in the end
    PartCounter(cv::Mat1i & plane, std::size_t pixels)
        : m_plane(&plane)
        , m_parents(pixels)
    {
        m_pixels.reserve(pixels);
    }

    PartCounter(PartCounter const &) = delete;
    PartCounter & operator=(PartCounter const &) = delete;

    ~PartCounter()
    {
        for (cv::Point const & pixel : m_pixels)
        {
            (*m_plane)(pixel) = 0;
        }
    }

    void Add(cv::Point const & pixel)
    {
        std::size_t const number = m_pixels.size();
        m_parents[number] = number;
        m_pixels.push_back(pixel);
        ++m_parts;
        for (int y = std::max(pixel.y - 1, 0); y <= std::min(pixel.y + 1, m_plane->rows - 1); ++y)
        {
            for (int x = std::max(pixel.x - 1, 0); x <= std::min(pixel.x + 1, m_plane->cols - 1); ++x)
            {
                int const other = (*m_plane)(y, x);
                if (other != 0) Join(number, static_cast<std::size_t>(other) - 1);
            }
        }
        (*m_plane)(pixel) = static_cast<int>(number) + 1;
    }

    [[nodiscard]] std::size_t Count() const { return m_parts; }

private:
    std::size_t RootOf(std::size_t number)
    {
        while (m_parents[number] != number)
        {
            m_parents[number] = m_parents[m_parents[number]];
            number = m_parents[number];
        }
        return number;
    }

    void Join(std::size_t one, std::size_t other)
    {
        std::size_t const root = RootOf(one);
        std::size_t const otherRoot = RootOf(other);
        if (root == otherRoot) return;
        m_parents[root] = otherRoot;
        --m_parts;
    }

    cv::Mat1i * m_plane;
    std::vector<std::size_t> m_parents;
    Piece m_pixels;
    std::size_t m_parts = 0;
};

/// How many pixels belong to the branch that begins with the first of a connected piece.
///
/// The branch grows level by level while the rest is in one piece, and by one level more. The rests are put together from
/// the last to the first, so that no pixel is looked at once for each level.
///
/// @param pixels in the order of their distances
std::size_t BranchSize(std::span<cv::Point const> pixels, std::span<int const> distances, cv::Mat1i & plane)
{
    int const levels = distances.back();
    // By the number of levels in the branch: in how many parts the rest is.
    std::vector<std::size_t> parts(static_cast<std::size_t>(levels) + 1, 0);
    PartCounter counter(plane, pixels.size());
    for (std::size_t index = pixels.size(); index-- > 0;)
    {
        counter.Add(pixels[index]);
        parts[static_cast<std::size_t>(distances[index]) - 1] = counter.Count();
    }
    std::size_t grown = 1;
    while (parts[grown] == 1)
    {
        ++grown;
    }
    auto const end = std::upper_bound(distances.begin(), distances.end(), static_cast<int>(grown) + 1);
    return static_cast<std::size_t>(end - distances.begin());
}

/// The pieces of an image in raster order of their first pixels.
bool PiecesOf(cv::Mat const & image, cv::Mat1i & work, std::deque<Piece> & pieces)
{
    work.create(image.size());
    if (!connexity::LabelFlatZonesNoZero(image, connexity::eConnexity8, work)) return false;
    for (int y = 0; y < work.rows; ++y)
    {
        for (int x = 0; x < work.cols; ++x)
        {
            auto const label = static_cast<std::size_t>(work(y, x));
            if (label == 0) continue;
            if (label > pieces.size()) pieces.resize(label);
            pieces[label - 1].emplace_back(x, y);
        }
    }
    return true;
}

bool IsBefore(cv::Point const & one, cv::Point const & other)
{
    return one.y < other.y || (one.y == other.y && one.x < other.x);
}

/// Cuts pieces into branches.
class PieceCutter
{
public:
    /// @param work the number of each piece, from 1
    PieceCutter(cv::Mat1i & work, std::deque<Piece> pieces)
        : m_work(work)
        , m_plane(work)
        , m_walk(m_plane)
        , m_order(work.size(), 0)
        , m_pieces(std::move(pieces))
        , m_lastNumber(static_cast<int>(m_pieces.size()))
    {}

    [[nodiscard]] bool IsDone() const { return m_pieces.empty(); }

    /// Takes the first piece, cuts off its branch, and lets the rest wait behind the other pieces.
    Piece CutNext()
    {
        Piece const piece = std::move(m_pieces.front());
        m_pieces.pop_front();
        cv::Point const start = m_walk.FindLongestPath(piece).first;
        auto const reached = m_walk.Reach(start);
        std::size_t const size = BranchSize(reached, m_walk.Distances(), m_order);
        Piece branch(reached.begin(), reached.begin() + static_cast<std::ptrdiff_t>(size));
        Piece rest(reached.begin() + static_cast<std::ptrdiff_t>(size), reached.end());
        for (cv::Point const & pixel : branch)
        {
            m_work(pixel) = 0;
        }
        std::sort(rest.begin(), rest.end(), IsBefore);
        Divide(rest);
        return branch;
    }

private:
    /// Numbers the parts of what is left of a piece, in raster order of their first pixels.
    void Divide(Piece const & rest)
    {
        int const before = m_lastNumber;
        for (cv::Point const & pixel : rest)
        {
            if (m_work(pixel) > before) continue;
            auto const part = m_walk.Reach(pixel);
            ++m_lastNumber;
            for (cv::Point const & member : part)
            {
                m_work(member) = m_lastNumber;
            }
            Piece piece(part.begin(), part.end());
            std::sort(piece.begin(), piece.end(), IsBefore);
            m_pieces.push_back(std::move(piece));
        }
    }

    cv::Mat1i m_work;
    WalkPlane m_plane;
    GeodesicWalk m_walk;
    cv::Mat1i m_order;
    std::deque<Piece> m_pieces;
    int m_lastNumber;
};

} // namespace

bool SplitSkeletonBySegments(cv::Mat const & skeleton, cv::Mat & labels)
{
    bool const isReady = common::SameSize(skeleton, labels) && !skeleton.empty() && labels.type() == CV_32SC1;
    if (!isReady) return false;
    cv::Mat1i work;
    std::deque<Piece> pieces;
    if (!PiecesOf(skeleton, work, pieces)) return false;
    double largest = 0.0;
    cv::minMaxLoc(labels, nullptr, &largest);
    int label = static_cast<int>(largest);
    for (PieceCutter cutter(work, std::move(pieces)); !cutter.IsDone();)
    {
        ++label;
        for (cv::Point const & pixel : cutter.CutNext())
        {
            labels.at<int>(pixel) = label;
        }
    }
    return connexity::LabelFlatZonesNoZero(labels.clone(), connexity::eConnexity8, labels);
}

bool FindMainSegmentUntilBifurcation(cv::Mat const & zone, cv::Mat const & seed, cv::Mat out)
{
    if (!FindAdaptedKernelForImageProcessing(zone, seed, 3)) return false;
    cv::Mat current = seed.clone();
    cv::Mat labels(zone.size(), CV_32SC1);
    while (true)
    {
        cv::Mat next;
        if (!geodesy::GeoDilate(current, zone, cv::MORPH_RECT, next, 3)) return false;
        cv::Mat const rest = zone - current;
        if (!connexity::LabelFlatZonesNoZero(rest, connexity::eConnexity8, labels)) return false;
        double parts = 0.0;
        cv::minMaxLoc(labels, nullptr, &parts);
        // Of a rest that cannot be reached, nothing would ever change.
        if (parts != 1.0 || common::AreImagesEqual(current, next))
        {
            next.copyTo(out);
            return true;
        }
        current = next;
    }
}

bool FindAdaptedKernelForImageProcessing(cv::Mat const & zone, cv::Mat const &, int)
{
    // The contours and extrema of the distances that it is named for would not leave it: whether there can be distances
    // is all that does.
    return !zone.empty() && common::IsRaster(zone) && common::IsSingleChannel(zone);
}

} // namespace morvane::features::skeleton_internals
