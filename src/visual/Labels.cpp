// Colours and tables on label images.

#include <morvane/visual/ColorMaps.h>

#include "common/Dispatch.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace morvane::visual
{

using common::IsSingleChannel;
using common::SameSize;
using common::VisitSignedLabel;

namespace
{

template <class Label>
int LargestLabel(cv::Mat const & labels)
{
    int largest = 0;
    for (int y = 0; y < labels.rows; ++y)
    {
        auto const * const row = labels.ptr<Label>(y);
        for (int x = 0; x < labels.cols; ++x)
        {
            largest = std::max(largest, static_cast<int>(row[x]));
        }
    }
    return largest;
}

/// Colours of the labels from 1 on.
std::vector<cv::Vec3b> DrawColours(int count)
{
    constexpr unsigned kColours = 255;
    cv::RNG & generator = cv::theRNG();
    std::vector<cv::Vec3b> colours(static_cast<std::size_t>(count));
    for (cv::Vec3b & colour : colours)
    {
        for (int channel = 0; channel < 3; ++channel)
        {
            colour[channel] = static_cast<uchar>(generator.next() % kColours);
        }
    }
    return colours;
}

/// Writes the entry of each label; @p Label 0, below 0 and from @p rows on give 0.
template <class Label, class Entry>
void LookUp(cv::Mat const & image, Entry const * table, int rows, cv::Mat & output)
{
    for (int y = 0; y < image.rows; ++y)
    {
        auto const * const labels = image.ptr<Label>(y);
        auto * const entries = output.ptr<Entry>(y);
        for (int x = 0; x < image.cols; ++x)
        {
            // As unsigned, so that one comparison catches negative labels as well.
            auto const label = static_cast<std::uint32_t>(static_cast<int>(labels[x]));
            bool const hasEntry = label != 0 && label < static_cast<std::uint32_t>(rows);
            Entry const entry = table[hasEntry ? label : 0];
            entries[x] = hasEntry ? entry : Entry{};
        }
    }
}

template <class Label, class Entry>
bool ApplyTable(cv::Mat const & image, cv::Mat const & lut, cv::Mat & output)
{
    if (lut.dims > 2 || lut.cols != 1 || !SameSize(image, output) || lut.type() != output.type()) return false;
    if (lut.rows == 0)
    {
        output = cv::Scalar(0);
        return true;
    }
    // A column of a wider matrix has gaps between its entries.
    cv::Mat const table = lut.isContinuous() ? lut : lut.clone();
    LookUp<Label, Entry>(image, table.ptr<Entry>(), table.rows, output);
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
        std::vector<cv::Vec3b> const colours = DrawColours(LargestLabel<Label>(labels));
        for (int y = 0; y < labels.rows; ++y)
        {
            auto const * const row = labels.ptr<Label>(y);
            auto * const pixels = output.ptr<cv::Vec3b>(y);
            for (int x = 0; x < labels.cols; ++x)
            {
                auto const label = static_cast<int>(row[x]);
                pixels[x] = label > 0 ? colours[static_cast<std::size_t>(label) - 1] : cv::Vec3b();
            }
        }
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
