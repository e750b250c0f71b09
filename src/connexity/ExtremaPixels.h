/// @file
/// The pixels of an image that no neighbour exceeds, as bits.
#pragma once

#include <morvane/common/Neighbourhood.h>
#include <morvane/connexity/Connexity.h>

#include "common/BitImage.h"
#include "connexity/ZoneLinks.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane::connexity::extrema_internals
{

/// What is asked of a maximum: each neighbour is equal or lower. With a NaN on either side, it is neither.
struct NotBelow
{
    template <class T>
    constexpr bool operator()(T value, T neighbour) const
    {
        return value >= neighbour;
    }
};

/// What is asked of a minimum.
struct NotAbove
{
    template <class T>
    constexpr bool operator()(T value, T neighbour) const
    {
        return value <= neighbour;
    }
};

/// Finds the pixels that may belong to an extremum, and those among them that prove that theirs is none.
///
/// A flat zone is an extremum when no pixel of it is exceeded by a neighbour. So the pixels that are not exceeded make
/// the zones, and such a zone is spoilt where it touches a pixel of its own value that is. Serves as the links between
/// equal pixels as well, which are found on the way.
template <class T, class Keeps>
class ExtremaPixels final : public labelling_internals::ZoneLinks
{
    using Word = common::BitImage::Word;

public:
    ExtremaPixels(cv::Mat const & image, eConnexityType connexity)
        : m_image(image)
        , m_neighbourhood(NeighbourhoodOver(Connexity(connexity), image.size()))
        , m_candidates(image.rows, image.cols)
        , m_equals(m_neighbourhood.Count(), m_candidates)
    {
        for (int y = 0; y < image.rows; ++y)
        {
            for (int word = 0; word < m_candidates.WordsPerRow(); ++word)
            {
                Judge(y, word);
            }
        }
    }

    /// The pixels that no neighbour exceeds.
    [[nodiscard]] common::BitImage const & Candidates() const { return m_candidates; }

    /// Calls @p visit with candidates that touch an equal pixel that is none: one at least of each run that holds any.
    ///
    /// @param starts bit x of row y is set where a run of equal candidates starts
    template <class Visit>
    void ForEachSpoilt(common::BitImage const & starts, Visit && visit) const
    {
        for (int y = 0; y < m_image.rows; ++y)
        {
            for (int word = 0; word < m_candidates.WordsPerRow(); ++word)
            {
                // The first of each run is enough: those to whose left a spoilt one of the same run lies are left out.
                Word const spoilt = Spoilt(y, word);
                Word const firsts = spoilt & ~((spoilt << 1) & ~starts.Row(y)[word]);
                common::ForEachBit(firsts, [&](int bit) { visit(cv::Point(word * kBlock + bit, y)); });
            }
            if (m_neighbourhood.WrapsInX()) SpoiltAtSeam(y, visit);
        }
    }

    void Row(int y, cv::Point offset, Word * bits) const override
    {
        std::size_t index = 0;
        while (m_neighbourhood.Offset(index) != offset)
        {
            ++index;
        }
        std::copy_n(m_equals[index].Row(y), m_equals[index].WordsPerRow(), bits);
    }

    [[nodiscard]] bool AreLinked(cv::Point one, cv::Point other) const override
    {
        return m_image.ptr<T>(one.y)[one.x] == m_image.ptr<T>(other.y)[other.x];
    }

private:
    static constexpr int kBlock = common::BitImage::kWordBits;

    /// For the pixels of one word, 0 or 255.
    struct alignas(64) Flags
    {
        uchar of[kBlock];
    };

    /// Tells whether the row that an offset leads to lies inside the image.
    [[nodiscard]] bool HasRow(int y, cv::Point offset) const
    {
        return offset.y < 0 ? y >= -offset.y : m_image.rows - y > offset.y;
    }

    /// Finds the candidates and the equal neighbours of the pixels of one word.
    void Judge(int y, int word)
    {
        int const start = word * kBlock;
        int const count = std::min(kBlock, m_image.cols - start);
        T const * const values = m_image.ptr<T>(y) + start;
        Flags keeps{};
        std::fill_n(keeps.of, count, uchar{255});
        for (std::size_t index = 0; index < m_neighbourhood.Count(); ++index)
        {
            cv::Point const offset = m_neighbourhood.Offset(index);
            if (!HasRow(y, offset)) continue;
            Flags equals{};
            T const * const neighbours = m_image.ptr<T>(y + offset.y) + start;
            // The neighbours lie in the row of memory from the block's pixel `first` to before `end`; in 64 bits, as the
            // widest images end where an int does.
            std::int64_t const left = -std::int64_t{offset.x} - start;
            int const first = static_cast<int>(std::clamp<std::int64_t>(left, 0, count));
            int const end = static_cast<int>(std::clamp<std::int64_t>(left + m_image.cols, first, count));
            if (first == 0 && end == kBlock)
            {
                JudgeStretch(values, neighbours + offset.x, 0, kBlock, keeps, equals);
            }
            else if (first < end)
            {
                JudgeStretch(values, neighbours + offset.x, first, end, keeps, equals);
            }
            if (m_neighbourhood.WrapsInX())
            {
                JudgeSeam({start, y}, index, 0, first, keeps);
                JudgeSeam({start, y}, index, end, count, keeps);
            }
            m_equals[index].Row(y)[word] = common::PackFlags(equals.of);
        }
        m_candidates.Row(y)[word] = common::PackFlags(keeps.of);
    }

    static void
    JudgeStretch(T const * values, T const * neighbours, int first, int end, Flags & keepFlags, Flags & equalFlags)
    {
        // Bytes may alias anything: without the promise that these do not, the loop would stay scalar.
        uchar * __restrict const keeps = keepFlags.of;
        uchar * __restrict const equals = equalFlags.of;
        for (int x = first; x < end; ++x)
        {
            keeps[x] = static_cast<uchar>(keeps[x] & (Keeps()(values[x], neighbours[x]) ? 255 : 0));
            equals[x] = values[x] == neighbours[x] ? 255 : 0;
        }
    }

    /// The columns whose neighbour lies across the seam, if anywhere.
    void JudgeSeam(cv::Point start, std::size_t index, int first, int end, Flags & keeps) const
    {
        for (int x = first; x < end; ++x)
        {
            cv::Point const pixel(start.x + x, start.y);
            auto const neighbour = m_neighbourhood.Neighbour(pixel, index);
            if (!neighbour) continue;
            T const other = m_image.ptr<T>(neighbour->y)[neighbour->x];
            if (!Keeps()(m_image.ptr<T>(pixel.y)[pixel.x], other)) keeps.of[x] = 0;
        }
    }

    /// The candidates of one word that have an equal neighbour which is none, on this side of the seam.
    [[nodiscard]] Word Spoilt(int y, int word) const
    {
        Word const candidates = m_candidates.Row(y)[word];
        if (candidates == 0) return 0;
        Word spoilt = 0;
        for (std::size_t index = 0; index < m_neighbourhood.Count(); ++index)
        {
            cv::Point const offset = m_neighbourhood.Offset(index);
            if (!HasRow(y, offset)) continue;
            Word const others = common::MovedWord(m_candidates.Row(y + offset.y), word, offset.x);
            // Beyond the border nothing is equal.
            spoilt |= m_equals[index].Row(y)[word] & ~others;
        }
        return candidates & spoilt;
    }

    /// The candidates of one row that have such a neighbour across the seam.
    template <class Visit>
    void SpoiltAtSeam(int y, Visit && visit) const
    {
        for (int x = 0; x < m_image.cols; ++x)
        {
            // On to the other side, past the columns that do not reach the seam.
            if (x == m_neighbourhood.Reach()) x = std::max(x, m_image.cols - m_neighbourhood.Reach());
            if (x < m_image.cols && m_candidates.At(x, y) && IsSpoilt({x, y})) visit(cv::Point(x, y));
        }
    }

    [[nodiscard]] bool IsSpoilt(cv::Point pixel) const
    {
        for (std::size_t index = 0; index < m_neighbourhood.Count(); ++index)
        {
            auto const neighbour = m_neighbourhood.Neighbour(pixel, index);
            if (neighbour && AreLinked(pixel, *neighbour) && !m_candidates.At(neighbour->x, neighbour->y)) return true;
        }
        return false;
    }

    cv::Mat const & m_image;
    common::Neighbourhood m_neighbourhood;
    common::BitImage m_candidates;
    /// For each offset, the pixels whose neighbour there is equal, seam aside.
    std::vector<common::BitImage> m_equals;
};

} // namespace morvane::connexity::extrema_internals
