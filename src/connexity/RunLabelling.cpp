#include "connexity/RunLabelling.h"

#include <morvane/common/Conversions.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <numeric>

namespace morvane::connexity::labelling_internals
{

using common::BitImage;
using Run = RunForest::Run;
using Word = BitImage::Word;

namespace
{

constexpr int kLastBit = BitImage::kWordBits - 1;

bool HasDiagonals(eConnexityType connexity)
{
    return connexity != eConnexity4 && connexity != eConnexity4Wrapped;
}

bool IsWrapped(eConnexityType connexity)
{
    return connexity == eConnexity4Wrapped || connexity == eConnexity8Wrapped;
}

/// Moves every pixel of a word one column to the right, the last pixel of the word before it coming in.
Word ShiftRight(Word word, Word before)
{
    return (word << 1) | (before >> kLastBit);
}

/// Moves every pixel of a word one column to the left, the first pixel of the word after it coming in.
Word ShiftLeft(Word word, Word after)
{
    return (word >> 1) | (after << kLastBit);
}

/// The pixels of a row at which a run begins, in the given word of it.
Word RunStarts(Word word, Word before)
{
    return word & ~ShiftRight(word, before);
}

/// How many of the set pixels lie at column @p bit of the word or left of it.
Run CountUpTo(Word word, int bit)
{
    return static_cast<Run>(std::popcount(word & (~Word{0} >> (kLastBit - bit))));
}

/// For each row, the number of runs in the rows above it; one more entry for the whole image.
std::vector<Run> CountRuns(BitImage const & mask)
{
    std::vector<Run> runsAbove(static_cast<std::size_t>(mask.Rows()) + 1);
    Run runs = 0;
    for (int y = 0; y < mask.Rows(); ++y)
    {
        runsAbove[static_cast<std::size_t>(y)] = runs;
        Word const * const row = mask.Row(y);
        Word before = 0;
        for (int index = 0; index < mask.WordsPerRow(); ++index)
        {
            runs += static_cast<Run>(std::popcount(RunStarts(row[index], before)));
            before = row[index];
        }
    }
    runsAbove.back() = runs;
    return runsAbove;
}

/// Calls @p visit with the position of each set bit, the lowest first.
template <class Visit>
void ForEachBit(Word word, Visit && visit)
{
    for (; word != 0; word &= word - 1)
    {
        visit(std::countr_zero(word));
    }
}

/// Joins the runs of two neighbouring rows that touch. Each pair of touching runs is found once.
template <bool Diagonals>
void JoinRows(Word const * above, Word const * below, int words, Run firstAbove, Run firstBelow, RunForest & forest)
{
    Word aboveBefore = 0;
    Word belowBefore = 0;
    // One less than the index of the first run that begins in the word, wrapping for the very first.
    Run lastAbove = firstAbove - 1;
    Run lastBelow = firstBelow - 1;
    for (int index = 0; index < words; ++index)
    {
        Word const up = above[index];
        Word const down = below[index];
        Word const startsAbove = RunStarts(up, aboveBefore);
        Word const startsBelow = RunStarts(down, belowBefore);

        Word contacts = RunStarts(up & down, aboveBefore & belowBefore);
        if constexpr (Diagonals)
        {
            // A run that begins right below the end of one above; any overlap has been seen as a contact.
            contacts |= startsBelow & ShiftRight(up, aboveBefore) & ~up;
        }
        ForEachBit(contacts, [&](int bit) {
            forest.Join(lastBelow + CountUpTo(startsBelow, bit), lastAbove + CountUpTo(startsAbove, bit));
        });
        if constexpr (Diagonals)
        {
            bool const isLast = index + 1 == words;
            Word const endsBelow = down & ~ShiftLeft(down, isLast ? 0 : below[index + 1]);
            Word const fromRight = endsBelow & ShiftLeft(up, isLast ? 0 : above[index + 1]) & ~up;
            ForEachBit(fromRight, [&](int bit) {
                forest.Join(lastBelow + CountUpTo(startsBelow, bit), lastAbove + CountUpTo(startsAbove, bit) + 1);
            });
        }
        lastAbove += static_cast<Run>(std::popcount(startsAbove));
        lastBelow += static_cast<Run>(std::popcount(startsBelow));
        aboveBefore = up;
        belowBefore = down;
    }
}

/// Joins the runs that touch across the seam between the last and the first column.
void JoinSeam(BitImage const & mask, bool diagonals, std::vector<Run> const & runsAbove, RunForest & forest)
{
    int const reach = diagonals ? 1 : 0;
    for (int y = 0; y < mask.Rows(); ++y)
    {
        if (!mask.At(0, y)) continue;
        for (int other = std::max(y - reach, 0); other <= std::min(y + reach, mask.Rows() - 1); ++other)
        {
            if (!mask.At(mask.Cols() - 1, other)) continue;
            forest.Join(runsAbove[static_cast<std::size_t>(y)], runsAbove[static_cast<std::size_t>(other) + 1] - 1);
        }
    }
}

/// Sets the elements from @p from to @p to; may also write a few after @p to, but none after @p cols.
template <class Out>
void FillAhead(Out * row, int from, int to, int cols, Out value)
{
    constexpr int kChunk = 32 / static_cast<int>(sizeof(Out));
    if (to + kChunk > cols)
    {
        std::fill(row + from, row + to, value);
        return;
    }
    // Whole chunks of a constant size: wide stores, and one guess for all the short stretches.
    for (int x = from; x < to; x += kChunk)
    {
        std::fill_n(row + x, kChunk, value);
    }
}

/// Writes the labels of one row, from left to right: each stretch may spill over the next, which then overwrites it.
template <class Out>
void WriteRow(Word const * mask, int words, int cols, Out const * runLabels, Out * row)
{
    int from = 0;
    Out value = 0;
    Word before = 0;
    for (int index = 0; index < words; ++index)
    {
        Word const word = mask[index];
        ForEachBit(word ^ ShiftRight(word, before), [&](int bit) {
            int const to = index * BitImage::kWordBits + bit;
            if (to >= cols) return;
            FillAhead(row, from, to, cols, value);
            from = to;
            // Runs and gaps take turns, but a select costs less than a guess.
            bool const starts = ((word >> bit) & 1U) != 0;
            value = starts ? *runLabels : Out{0};
            runLabels += starts ? 1 : 0;
        });
        before = word;
    }
    std::fill(row + from, row + cols, value);
}

} // namespace

RunForest::RunForest(std::size_t runs)
    : m_parents(runs)
{
    std::iota(m_parents.begin(), m_parents.end(), Run{0});
}

template <class Out>
std::vector<Out> RunForest::Number() const
{
    std::vector<Out> labels(m_parents.size());
    Run zones = 0;
    for (std::size_t run = 0; run < m_parents.size(); ++run)
    {
        // A parent is a smaller run, so that its label is there already. Selects, as roots come unpredictably.
        bool const isRoot = m_parents[run] == run;
        zones += isRoot ? 1 : 0;
        Out const inherited = labels[m_parents[run]];
        labels[run] = isRoot ? common::WrapTo<Out>(zones) : inherited;
    }
    return labels;
}

bool CanLabelByRuns(eConnexityType connexity, std::size_t pixels)
{
    switch (connexity)
    {
    case eConnexity4:
    case eConnexity4Wrapped:
    case eConnexity8:
    case eConnexity8AxesFirst:
    case eConnexity8Wrapped:
        return pixels <= std::numeric_limits<Run>::max();
    default:
        return false;
    }
}

template <class Out>
void LabelByRuns(BitImage const & mask, eConnexityType connexity, cv::Mat & labels)
{
    if (mask.Rows() == 0 || mask.Cols() == 0) return;

    bool const diagonals = HasDiagonals(connexity);
    int const words = mask.WordsPerRow();
    std::vector<Run> const runsAbove = CountRuns(mask);
    RunForest forest(runsAbove.back());
    for (int y = 1; y < mask.Rows(); ++y)
    {
        auto const row = static_cast<std::size_t>(y);
        auto const join = diagonals ? JoinRows<true> : JoinRows<false>;
        join(mask.Row(y - 1), mask.Row(y), words, runsAbove[row - 1], runsAbove[row], forest);
    }
    if (IsWrapped(connexity)) JoinSeam(mask, diagonals, runsAbove, forest);

    std::vector<Out> const runLabels = forest.Number<Out>();
    for (int y = 0; y < mask.Rows(); ++y)
    {
        WriteRow(
            mask.Row(y), words, mask.Cols(), runLabels.data() + runsAbove[static_cast<std::size_t>(y)],
            labels.ptr<Out>(y));
    }
}

template void LabelByRuns<uchar>(BitImage const &, eConnexityType, cv::Mat &);
template void LabelByRuns<ushort>(BitImage const &, eConnexityType, cv::Mat &);
template void LabelByRuns<int>(BitImage const &, eConnexityType, cv::Mat &);

} // namespace morvane::connexity::labelling_internals
