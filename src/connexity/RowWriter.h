/// @file
/// Labels written from runs, a row at a time.
#pragma once

#include <morvane/common/Conversions.h>

#include "common/BitImage.h"

#include <algorithm>
#include <bit>

namespace morvane::connexity::labelling_internals
{

/// Writes the labels of one row from left to right, word by word.
template <class Out, class Run>
class RowWriter
{
    using Word = common::BitImage::Word;
    static constexpr int kWordBits = common::BitImage::kWordBits;

public:
    /// @param row the labels to write, of @p cols elements
    /// @param labels the label of the last run before the row, whatever it is, followed by those of the row's runs
    RowWriter(Out * row, int cols, Run const * labels)
        : m_row(row)
        , m_cols(cols)
        , m_labels(labels)
    {}

    /// Takes the next word: the bits at which runs start, and the bits of pixels that take part.
    void Write(Word starts, Word pixels)
    {
        // A border is where the label changes: a run starts, or the first pixel after one that takes no part.
        Word const borders = starts | (~pixels & ((pixels << 1) | m_lastPixel));
        int const columns = m_cols - m_x;
        if (columns < kWordBits)
        {
            WritePixels(starts, pixels, columns);
        }
        else if (starts == ~Word{0})
        {
            WriteSingles();
        }
        else if (columns >= 2 * kWordBits && std::popcount(borders) <= kFewBorders)
        {
            WriteStretches(borders, starts);
        }
        else
        {
            WritePixels(starts, pixels, kWordBits);
        }
        m_lastPixel = pixels >> (kWordBits - 1);
        m_x += std::min(columns, kWordBits);
    }

private:
    /// Up to as many borders in a word, filling a word's width at each is faster than going from pixel to pixel.
    static constexpr int kFewBorders = 4;

    /// 64 runs of one pixel.
    void WriteSingles()
    {
        for (int bit = 0; bit < kWordBits; ++bit)
        {
            m_row[m_x + bit] = common::WrapTo<Out>(m_labels[bit + 1]);
        }
        m_labels += kWordBits;
    }

    /// Fills a word's width at each border, which spills into the next word, to be written later. No length is guessed.
    void WriteStretches(Word borders, Word starts)
    {
        Out * const row = m_row + m_x;
        Run const * labels = m_labels;
        std::fill_n(row, kWordBits, LabelWhere(m_lastPixel, *labels));
        common::ForEachBit(borders, [&](int bit) {
            Word const isStart = (starts >> bit) & 1U;
            labels += isStart;
            std::fill_n(row + bit, kWordBits, LabelWhere(isStart, *labels));
        });
        m_labels = labels;
    }

    void WritePixels(Word starts, Word pixels, int columns)
    {
        Out * const row = m_row + m_x;
        Run const * labels = m_labels;
        for (int bit = 0; bit < columns; ++bit)
        {
            labels += (starts >> bit) & 1U;
            row[bit] = LabelWhere((pixels >> bit) & 1U, *labels);
        }
        m_labels = labels;
    }

    /// The label where @p condition is 1, 0 where it is 0: a mask, as which pixels take part cannot be predicted.
    static Out LabelWhere(Word condition, Run label)
    {
        return common::WrapTo<Out>(label & common::WrapTo<Run>(Word{0} - condition));
    }

    Out * m_row;
    int m_cols;
    /// The label of the last run that started.
    Run const * m_labels;
    int m_x = 0;
    /// 1 when the last pixel of the word before takes part.
    Word m_lastPixel = 0;
};

} // namespace morvane::connexity::labelling_internals
