/// @file
/// One bit per pixel: masks that are compared, shifted and counted 64 pixels at a time.
#pragma once

#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane::common
{

/// A binary image, packed. Pixel x of a row is bit x % 64 of word x / 64; bits past the last column are 0.
///
/// A row is preceded and followed by a word of zeros that may be read, never written: row[-1] and row[words].
class BitImage
{
public:
    using Word = std::uint64_t;
    static constexpr int kWordBits = 64;

    /// How many words hold a row of this many pixels.
    [[nodiscard]] static constexpr int WordsFor(int cols) { return cols / kWordBits + (cols % kWordBits != 0 ? 1 : 0); }

    /// All bits 0.
    BitImage(int rows, int cols)
        : m_rows(std::max(rows, 0))
        , m_cols(std::max(cols, 0))
        , m_wordsPerRow(WordsFor(m_cols))
        , m_words(static_cast<std::size_t>(m_rows) * RowStride() + 1)
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
        // Behind the zeros that end the row before.
        return static_cast<std::size_t>(y) * RowStride() + 1;
    }

    [[nodiscard]] std::size_t RowStride() const { return static_cast<std::size_t>(m_wordsPerRow) + 1; }

    int m_rows;
    int m_cols;
    int m_wordsPerRow;
    std::vector<Word> m_words;
};

/// The word @p index of a row moved by @p offset columns, -63 to 63: its bit x is the row's bit x + offset.
///
/// Reads the word before or after it.
[[nodiscard]] inline BitImage::Word MovedWord(BitImage::Word const * row, int index, int offset)
{
    if (offset == 0) return row[index];
    if (offset < 0) return (row[index] << -offset) | (row[index - 1] >> (BitImage::kWordBits + offset));
    return (row[index] >> offset) | (row[index + 1] << (BitImage::kWordBits - offset));
}

/// Moves a row of @p words words @p columns to the right, 1 to 63, zeros coming in.
inline void MoveRight(BitImage::Word * row, int words, int columns)
{
    for (int index = words - 1; index > 0; --index)
    {
        row[index] = MovedWord(row, index, -columns);
    }
    if (words > 0) row[0] <<= columns;
}

/// Calls @p visit with the position of each set bit, the lowest first.
template <class Visit>
void ForEachBit(BitImage::Word word, Visit && visit)
{
    for (; word != 0; word &= word - 1)
    {
        visit(std::countr_zero(word));
    }
}

/// How many of the set bits lie at position @p bit or below it.
[[nodiscard]] inline int CountUpTo(BitImage::Word word, int bit)
{
    return std::popcount(word & (~BitImage::Word{0} >> (BitImage::kWordBits - 1 - bit)));
}

/// Packs 64 flags, each 0 or 255, into a word, the first flag in the lowest bit.
[[nodiscard]] inline BitImage::Word PackFlags(uchar const * flags)
{
    BitImage::Word word = 0;
#if CV_SIMD128
    for (int quarter = 0; quarter < 4; ++quarter)
    {
        auto const signs = static_cast<unsigned>(cv::v_signmask(cv::v_load(flags + std::ptrdiff_t{16} * quarter)));
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
    // Compared as a difference: at the end of the widest images, the sum would not fit.
    for (; cols - x >= BitImage::kWordBits; x += BitImage::kWordBits)
    {
        for (int bit = 0; bit < BitImage::kWordBits; ++bit)
        {
            flags[bit] = predicate(x + bit) ? 255 : 0;
        }
        *row++ = PackFlags(flags);
    }
    if (x == cols) return;
    std::fill(std::begin(flags), std::end(flags), uchar{0});
    for (int bit = 0; bit < cols - x; ++bit)
    {
        flags[bit] = predicate(x + bit) ? 255 : 0;
    }
    *row = PackFlags(flags);
}

} // namespace morvane::common
