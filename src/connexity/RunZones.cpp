#include "connexity/RunZones.h"

#include "connexity/RowWriter.h"

#include <algorithm>
#include <utility>

namespace morvane::connexity::labelling_internals
{

using common::BitImage;
using common::CountUpTo;
using common::ForEachBit;
using common::MovedWord;
using Word = BitImage::Word;

namespace
{

bool IsLeft(cv::Point offset)
{
    return offset.x == -1 && offset.y == 0;
}

bool IsUp(cv::Point offset)
{
    return offset.x == 0 && offset.y == -1;
}

/// The offsets that lead to pixels earlier in raster order than their origin; the step up comes first.
///
/// The shapes are symmetric, so that these cover every pair of neighbours once. Steps to the left are no part of them:
/// they make the runs.
std::vector<cv::Point> EarlierOffsets(common::Neighbourhood const & neighbourhood)
{
    std::vector<cv::Point> offsets;
    for (std::size_t index = 0; index < neighbourhood.Count(); ++index)
    {
        cv::Point const offset = neighbourhood.Offset(index);
        bool const isEarlier = offset.y < 0 || (offset.y == 0 && offset.x < 0);
        if (isEarlier && !IsLeft(offset)) offsets.push_back(offset);
    }
    std::stable_partition(offsets.begin(), offsets.end(), IsUp);
    return offsets;
}

bool HasLeft(common::Neighbourhood const & neighbourhood)
{
    for (std::size_t index = 0; index < neighbourhood.Count(); ++index)
    {
        if (IsLeft(neighbourhood.Offset(index))) return true;
    }
    return false;
}

} // namespace

template <class Run>
RunZones<Run>::RunZones(BitImage pixels, ZoneLinks const & links, eConnexityType connexity)
    : m_pixels(std::move(pixels))
    , m_starts(m_pixels.Rows(), m_pixels.Cols())
    , m_links(1, m_pixels.Cols())
    , m_stepsUp(1, m_pixels.Cols())
{
    auto const neighbourhood = NeighbourhoodOver(Connexity(connexity), {m_pixels.Cols(), m_pixels.Rows()});
    FindRuns(links, HasLeft(neighbourhood));
    auto const offsets = EarlierOffsets(neighbourhood);
    for (int y = 0; y < m_pixels.Rows(); ++y)
    {
        for (cv::Point const & offset : offsets)
        {
            if (y + offset.y < 0) continue;
            switch (offset.x)
            {
            case -2:
                JoinAt<-2>(y, offset.y, links);
                break;
            case -1:
                JoinAt<-1>(y, offset.y, links);
                break;
            case 0:
                JoinAt<0>(y, offset.y, links);
                break;
            case 1:
                JoinAt<1>(y, offset.y, links);
                break;
            default:
                JoinAt<2>(y, offset.y, links);
                break;
            }
        }
    }
    if (neighbourhood.WrapsInX()) JoinSeam(links, neighbourhood);
}

template <class Run>
void RunZones<Run>::FindRuns(ZoneLinks const & links, bool withinRows)
{
    int const words = m_pixels.WordsPerRow();
    m_runsBefore.reserve(static_cast<std::size_t>(words) * static_cast<std::size_t>(m_pixels.Rows()));
    Run runs = 0;
    for (int y = 0; y < m_pixels.Rows(); ++y)
    {
        Word const * const pixels = m_pixels.Row(y);
        Word * const starts = m_starts.Row(y);
        if (withinRows) links.Row(y, {-1, 0}, m_links.Row(0));
        for (int index = 0; index < words; ++index)
        {
            Word const linked = withinRows ? m_links.Row(0)[index] : 0;
            starts[index] = pixels[index] & ~(linked & MovedWord(pixels, index, -1));
            m_runsBefore.push_back(runs);
            runs += static_cast<Run>(std::popcount(starts[index]));
        }
    }
    m_forest = RunForest<Run>(static_cast<std::size_t>(runs));
}

template <class Run>
class RunZones<Run>::RowOfRuns
{
public:
    RowOfRuns(Word const * pixels, Word const * starts, Run const * runsBefore)
        : m_pixels(pixels)
        , m_starts(starts)
        , m_runsBefore(runsBefore)
    {}

    /// The pixels that take part, in the word @p index moved by @p offset.
    [[nodiscard]] Word Pixels(int index, int offset) const { return MovedWord(m_pixels, index, offset); }

    /// The pixels that are linked to their left neighbour, in the word @p index moved by @p offset.
    [[nodiscard]] Word Continuing(int index, int offset) const
    {
        return Pixels(index, offset) & ~MovedWord(m_starts, index, offset);
    }

    /// The run that holds the pixel in column @p x, which takes part.
    [[nodiscard]] Run RunAt(int x) const
    {
        auto const index = static_cast<unsigned>(x) / BitImage::kWordBits;
        int const bit = static_cast<int>(static_cast<unsigned>(x) % BitImage::kWordBits);
        // As many runs have begun, the last of them is the pixel's.
        return m_runsBefore[index] + static_cast<Run>(CountUpTo(m_starts[index], bit));
    }

private:
    Word const * m_pixels;
    Word const * m_starts;
    Run const * m_runsBefore;
};

template <class Run>
typename RunZones<Run>::RowOfRuns RunZones<Run>::RowAt(int y) const
{
    auto const first = static_cast<std::size_t>(y) * static_cast<std::size_t>(m_pixels.WordsPerRow());
    return {m_pixels.Row(y), m_starts.Row(y), m_runsBefore.data() + first};
}

template <class Run>
template <int Dx>
void RunZones<Run>::JoinAt(int y, int dy, ZoneLinks const & links)
{
    RowOfRuns const row = RowAt(y);
    RowOfRuns const other = RowAt(y + dy);
    constexpr bool kIsDiagonal = Dx == -1 || Dx == 1;
    // "Linked to the pixel beside" is kept at the right one of the two.
    constexpr int kBeside = std::max(Dx, 0);
    bool const isNextRow = dy == -1;
    Word * const stepsUp = m_stepsUp.Row(0);
    Word const * const linked = m_links.Row(0);

    links.Row(y, {Dx, dy}, m_links.Row(0));
    Word before = 0;
    for (int index = 0; index < m_pixels.WordsPerRow(); ++index)
    {
        Word const found = linked[index] & row.Pixels(index, 0) & other.Pixels(index, Dx);
        if (Dx == 0 && isNextRow) stepsUp[index] = found;
        Word steps = found;
        if (kIsDiagonal && isNextRow)
        {
            // A step up and one aside, in either order, make good for these.
            steps &= ~(stepsUp[index] & other.Continuing(index, kBeside));
            steps &= ~(MovedWord(stepsUp, index, Dx) & row.Continuing(index, kBeside));
        }
        // Once the pixels to the left are joined, so are these where both runs go on.
        Word const foundLeft = (found << 1) | (before >> (BitImage::kWordBits - 1));
        steps &= ~(foundLeft & row.Continuing(index, 0) & other.Continuing(index, Dx));
        ForEachBit(steps, [&](int bit) {
            int const x = index * BitImage::kWordBits + bit;
            m_forest.Join(row.RunAt(x), other.RunAt(x + Dx));
        });
        before = found;
    }
}

template <class Run>
void RunZones<Run>::JoinSeam(ZoneLinks const & links, common::Neighbourhood const & neighbourhood)
{
    auto const joinFrom = [&](cv::Point pixel, std::size_t index) {
        // Steps over the right border are the same ones, seen from the other side.
        if (pixel.x + neighbourhood.Offset(index).x >= 0) return;
        auto const other = neighbourhood.Neighbour(pixel, index);
        if (!other || !m_pixels.At(pixel.x, pixel.y) || !m_pixels.At(other->x, other->y)) return;
        if (links.AreLinked(pixel, *other))
            m_forest.Join(RowAt(pixel.y).RunAt(pixel.x), RowAt(other->y).RunAt(other->x));
    };
    int const columns = std::min(neighbourhood.Reach(), m_pixels.Cols());
    for (int y = 0; y < m_pixels.Rows(); ++y)
    {
        for (int x = 0; x < columns; ++x)
        {
            for (std::size_t index = 0; index < neighbourhood.Count(); ++index)
            {
                joinFrom({x, y}, index);
            }
        }
    }
}

template <class Run>
std::size_t RunZones<Run>::Count() const
{
    std::size_t zones = 0;
    for (std::size_t run = 1; run <= m_forest.Runs(); ++run)
    {
        zones += m_forest.IsRoot(static_cast<Run>(run)) ? 1 : 0;
    }
    return zones;
}

template <class Run>
std::vector<Run> RunZones<Run>::RunLengths() const
{
    std::vector<Run> lengths(m_forest.Runs() + 1);
    std::size_t run = 0;
    for (int y = 0; y < m_pixels.Rows(); ++y)
    {
        for (int index = 0; index < m_pixels.WordsPerRow(); ++index)
        {
            Word pixels = m_pixels.Row(y)[index];
            ForEachBit(m_starts.Row(y)[index], [&](int start) {
                // What lies before the start is the rest of the run that was open.
                Word const before = pixels & ((Word{1} << start) - 1);
                lengths[run] += static_cast<Run>(std::popcount(before));
                pixels &= ~before;
                ++run;
            });
            lengths[run] += static_cast<Run>(std::popcount(pixels));
        }
    }
    return lengths;
}

template <class Run>
template <class Out>
void RunZones<Run>::WriteLabels(cv::Mat & labels) &&
{
    std::vector<Run> runLabels = m_forest.Release();
    Run zones = 0;
    for (std::size_t run = 1; run < runLabels.size(); ++run)
    {
        // A parent is a smaller run, so that its label is there already. Selects, as roots come unpredictably.
        bool const isRoot = runLabels[run] == run;
        zones += isRoot ? 1 : 0;
        Run const inherited = runLabels[runLabels[run]];
        runLabels[run] = isRoot ? zones : inherited;
    }
    Write<Out>(runLabels, labels);
}

template <class Run>
template <class Out>
void RunZones<Run>::WriteLabelsAbove(std::uint64_t area, cv::Mat & labels) &&
{
    m_forest.Flatten();
    std::vector<Run> areas = RunLengths();
    for (std::size_t run = 1; run < areas.size(); ++run)
    {
        Run const root = m_forest.Parent(static_cast<Run>(run));
        if (root != run) areas[root] += areas[run];
    }
    WriteKept<Out>([&](Run root) { return areas[root] > area; }, labels);
}

template <class Run>
Run RunZones<Run>::RunAt(cv::Point pixel) const
{
    return RowAt(pixel.y).RunAt(pixel.x);
}

template <class Run>
template <class Out>
void RunZones<Run>::WriteLabelsWithout(std::vector<Run> const & runs, cv::Mat & labels) &&
{
    m_forest.Flatten();
    std::vector<uchar> isLeftOut(m_forest.Runs() + 1, 0);
    for (Run const run : runs)
    {
        isLeftOut[m_forest.Parent(run)] = 1;
    }
    WriteKept<Out>([&](Run root) { return isLeftOut[root] == 0; }, labels);
}

template <class Run>
template <class Out, class Keeps>
void RunZones<Run>::WriteKept(Keeps const & keeps, cv::Mat & labels)
{
    std::vector<Run> runLabels = m_forest.Release();
    Run zones = 0;
    for (std::size_t run = 1; run < runLabels.size(); ++run)
    {
        bool const isRoot = runLabels[run] == run;
        Run const label = isRoot && keeps(static_cast<Run>(run)) ? ++zones : 0;
        runLabels[run] = isRoot ? label : runLabels[runLabels[run]];
    }
    Write<Out>(runLabels, labels);
}

template <class Run>
template <class Out>
void RunZones<Run>::Write(std::vector<Run> const & runLabels, cv::Mat & labels) const
{
    // Elements beside the labels, in a label image of more channels, are zeroed as well.
    if (labels.channels() > 1) labels = cv::Scalar(0);
    int const words = m_pixels.WordsPerRow();
    if (words == 0) return;
    for (int y = 0; y < m_pixels.Rows(); ++y)
    {
        auto const firstWord = static_cast<std::size_t>(y) * static_cast<std::size_t>(words);
        RowWriter<Out, Run> writer(labels.ptr<Out>(y), m_pixels.Cols(), runLabels.data() + m_runsBefore[firstWord]);
        for (int index = 0; index < words; ++index)
        {
            writer.Write(m_starts.Row(y)[index], m_pixels.Row(y)[index]);
        }
    }
}

template class RunZones<std::uint32_t>;
template void RunZones<std::uint32_t>::WriteLabels<uchar>(cv::Mat &) &&;
template void RunZones<std::uint32_t>::WriteLabels<ushort>(cv::Mat &) &&;
template void RunZones<std::uint32_t>::WriteLabels<int>(cv::Mat &) &&;
template void RunZones<std::uint32_t>::WriteLabelsAbove<uchar>(std::uint64_t, cv::Mat &) &&;
template void RunZones<std::uint32_t>::WriteLabelsWithout<uchar>(std::vector<std::uint32_t> const &, cv::Mat &) &&;
template void RunZones<std::uint32_t>::WriteLabelsAbove<ushort>(std::uint64_t, cv::Mat &) &&;
template void RunZones<std::uint32_t>::WriteLabelsWithout<ushort>(std::vector<std::uint32_t> const &, cv::Mat &) &&;
template void RunZones<std::uint32_t>::WriteLabelsAbove<int>(std::uint64_t, cv::Mat &) &&;
template void RunZones<std::uint32_t>::WriteLabelsWithout<int>(std::vector<std::uint32_t> const &, cv::Mat &) &&;

template class RunZones<std::uint64_t>;
template void RunZones<std::uint64_t>::WriteLabels<uchar>(cv::Mat &) &&;
template void RunZones<std::uint64_t>::WriteLabels<ushort>(cv::Mat &) &&;
template void RunZones<std::uint64_t>::WriteLabels<int>(cv::Mat &) &&;
template void RunZones<std::uint64_t>::WriteLabelsAbove<uchar>(std::uint64_t, cv::Mat &) &&;
template void RunZones<std::uint64_t>::WriteLabelsWithout<uchar>(std::vector<std::uint64_t> const &, cv::Mat &) &&;
template void RunZones<std::uint64_t>::WriteLabelsAbove<ushort>(std::uint64_t, cv::Mat &) &&;
template void RunZones<std::uint64_t>::WriteLabelsWithout<ushort>(std::vector<std::uint64_t> const &, cv::Mat &) &&;
template void RunZones<std::uint64_t>::WriteLabelsAbove<int>(std::uint64_t, cv::Mat &) &&;
template void RunZones<std::uint64_t>::WriteLabelsWithout<int>(std::vector<std::uint64_t> const &, cv::Mat &) &&;

} // namespace morvane::connexity::labelling_internals
