/// @file
/// One bit per pixel: masks that are compared, shifted and counted 64 pixels at a time.
#pragma once

#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane::common
{

/// A binary image, packed. Pixel x of a row is bit x % 64 of word x / 64; bits past the last column are 0.
class BitImage
{
public:
    using Word = std::uint64_t;
    static constexpr int kWordBits = 64;

    BitImage(int rows, int cols)
        : m_rows(std::max(rows, 0))
        , m_cols(std::max(cols, 0))
        , m_wordsPerRow(m_cols / kWordBits + (m_cols % kWordBits != 0 ? 1 : 0))
        , m_words(static_cast<std::size_t>(m_rows) * static_cast<std::size_t>(m_wordsPerRow))
    {}

    [[nodiscard]] int Rows() const { return m_rows; }
    [[nodiscard]] int Cols() const { return m_cols; }
    [[nodiscard]] int WordsPerRow() const { return m_wordsPerRow; }

    [[nodiscard]] Word * Row(int y) { return m_words.data() + Offset(y); }
    [[nodiscard]] Word const * Row(int y) const { return m_words.data() + Offset(y); }

    [[nodiscard]] bool At(int x, int y) const { return ((Row(y)[x / kWordBits] >> (x % kWordBits)) & 1U) != 0; }

private:
    [[nodiscard]] std::size_t Offset(int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_wordsPerRow);
    }

    int m_rows;
    int m_cols;
    int m_wordsPerRow;
    std::vector<Word> m_words;
};

/// Packs 64 flags, each 0 or 255, into a word, the first flag in the lowest bit.
[[nodiscard]] inline BitImage::Word PackFlags(uchar const * flags)
{
    BitImage::Word word = 0;
#if CV_SIMD128
    for (int quarter = 0; quarter < 4; ++quarter)
    {
        auto const signs = static_cast<unsigned>(cv::v_signmask(cv::v_load(flags + 16 * quarter)));
        word |= static_cast<BitImage::Word>(signs) << (16 * quarter);
    }
#else
    for (int bit = 0; bit < BitImage::kWordBits; ++bit)
    {
        word |= static_cast<BitImage::Word>(flags[bit] & 1U) << bit;
    }
#endif
    return word;
}

/// Fills one row of bits: bit x is set where `predicate(x)` holds, for x from 0 to @p cols - 1.
///
/// The predicate is asked in straight loops of 64, so that a comparison of neighbouring pixels compiles to SIMD.
template <class Predicate>
void FillBits(int cols, BitImage::Word * row, Predicate const & predicate)
{
    alignas(64) uchar flags[BitImage::kWordBits];
    int x = 0;
    for (; x + BitImage::kWordBits <= cols; x += BitImage::kWordBits)
    {
        for (int bit = 0; bit < BitImage::kWordBits; ++bit)
        {
            flags[bit] = predicate(x + bit) ? 255 : 0;
        }
        *row++ = PackFlags(flags);
    }
    if (x == cols) return;
    std::fill(std::begin(flags), std::end(flags), uchar{0});
    for (int bit = 0; x + bit < cols; ++bit)
    {
        flags[bit] = predicate(x + bit) ? 255 : 0;
    }
    *row = PackFlags(flags);
}

} // namespace morvane::common
