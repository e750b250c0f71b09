// Colours and tables on label images.

#include <morvane/visual/ColorMaps.h>

#include "common/Dispatch.h"
#include "common/ValueRange.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace morvane::visual
{

using common::IsSingleChannel;
using common::SameSize;
using common::VisitSignedLabel;

namespace
{

/// A table with an entry for each label from 0 on, and one more, the last, for all that lie outside.
template <class Entry>
std::vector<Entry> EmptyTable(std::size_t rows)
{
    return std::vector<Entry>(rows + 1, Entry{});
}

/// Random colours for the labels from 1 to @p count.
std::vector<cv::Vec3b> DrawColours(int count)
{
    constexpr unsigned kColours = 255;
    cv::RNG & generator = cv::theRNG();
    std::vector<cv::Vec3b> table = EmptyTable<cv::Vec3b>(static_cast<std::size_t>(count) + 1);
    for (auto colour = table.begin() + 1; colour != table.end() - 1; ++colour)
    {
        for (int channel = 0; channel < 3; ++channel)
        {
            (*colour)[channel] = static_cast<uchar>(generator.next() % kColours);
        }
    }
    return table;
}

/// Writes the entry of each label.
template <class Label, class Entry>
void LookUp(cv::Mat const & image, std::vector<Entry> const & table, cv::Mat & output)
{
    // Loads side by side, from a table in which every label has a place, keep the loop without a branch.
    constexpr int kLanes = 8;
    auto const last = static_cast<std::uint32_t>(table.size() - 1);
    auto const entryOf = [&table, last](Label label) {
        // As unsigned, so that negative labels lie outside as well.
        return table[std::min(static_cast<std::uint32_t>(static_cast<int>(label)), last)];
    };
    for (int y = 0; y < image.rows; ++y)
    {
        auto const * const labels = image.ptr<Label>(y);
        auto * const entries = output.ptr<Entry>(y);
        int x = 0;
        for (; image.cols - x >= kLanes; x += kLanes)
        {
            std::array<Entry, kLanes> found;
            for (std::size_t lane = 0; lane < kLanes; ++lane)
            {
                found[lane] = entryOf(labels[static_cast<std::size_t>(x) + lane]);
            }
            std::copy(found.begin(), found.end(), entries + x);
        }
        for (; x < image.cols; ++x)
        {
            entries[x] = entryOf(labels[x]);
        }
    }
}

template <class Label, class Entry>
bool ApplyTable(cv::Mat const & image, cv::Mat const & lut, cv::Mat & output)
{
    if (lut.dims > 2 || lut.cols != 1 || !SameSize(image, output) || lut.type() != output.type()) return false;
    // A copy, as label 0 has no entry whatever the row 0 holds, and as a column of a wider matrix has gaps.
    std::vector<Entry> table = EmptyTable<Entry>(static_cast<std::size_t>(lut.rows));
    for (int row = 1; row < lut.rows; ++row)
    {
        table[static_cast<std::size_t>(row)] = *lut.ptr<Entry>(row);
    }
    LookUp<Label>(image, table, output);
    return true;
}

/// Calls @p leaf with an entry type of the size of one element; what its bits mean does not matter.
template <class Leaf>
bool VisitEntry(cv::Mat const & output, Leaf && leaf)
{
    switch (output.type())
    {
    case CV_8UC1:
        return leaf.template operator()<std::uint8_t>();
    case CV_16UC1:
    case CV_16SC1:
        return leaf.template operator()<std::uint16_t>();
    case CV_32SC1:
    case CV_32FC1:
        return leaf.template operator()<std::uint32_t>();
    case CV_64FC1:
        return leaf.template operator()<std::uint64_t>();
    case CV_8UC3:
        return leaf.template operator()<cv::Vec3b>();
    case CV_16UC3:
    case CV_16SC3:
        return leaf.template operator()<cv::Vec3w>();
    case CV_32SC3:
    case CV_32FC3:
        return leaf.template operator()<cv::Vec3i>();
    case CV_64FC3:
        return leaf.template operator()<cv::Vec<std::int64_t, 3>>();
    default:
        return false;
    }
}

} // namespace

bool ColorLabel(cv::Mat const & labels, cv::Mat & output)
{
    return VisitSignedLabel(labels, [&]<class Label> {
        if (!IsSingleChannel(labels) || output.type() != CV_8UC3 || !SameSize(labels, output)) return false;
        LookUp<Label>(labels, DrawColours(common::WidenedBy<Label>(labels, {0, 0}).high), output);
        return true;
    });
}

bool ApplyLut(cv::Mat const & image, cv::Mat const & lut, cv::Mat & output)
{
    if (!IsSingleChannel(image)) return false;
    return VisitEntry(output, [&]<class Entry> {
        return VisitSignedLabel(image, [&]<class Label> { return ApplyTable<Label, Entry>(image, lut, output); });
    });
}

} // namespace morvane::visual
