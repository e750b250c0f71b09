/// @file
/// Connected zones by runs: the labels of the flood without a walk.
///
/// Where a condition is symmetric and remembers nothing, zones do not depend on the order of the walk. A row is then a
/// list of runs (stretches of pixels linked from one to the next), links to other rows are found in bit masks, 64
/// pixels at a time, and a union-find whose roots are the smallest runs numbers the zones by their first pixels in
/// raster order.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include "common/BitImage.h"
#include "connexity/RunForest.h"
#include "connexity/ZoneLinks.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane::connexity::labelling_internals
{

/// The zones of an image. Made in one go; then asked for their number or written as labels, once.
///
/// @tparam Run numbers the runs, at most as many as pixels: `std::uint32_t` or, for larger images, `std::uint64_t`
template <class Run>
class MORVANE_EXPORT RunZones
{
public:
    /// Finds the zones.
    ///
    /// @param pixels the pixels that take part
    /// @param links the steps that are allowed between them
    /// @param connexity any, wrapped or not; a value outside the table makes each pixel a zone
    RunZones(common::BitImage pixels, ZoneLinks const & links, eConnexityType connexity);

    /// The number of zones.
    [[nodiscard]] std::size_t Count() const;

    /// Writes the labels: zones from 1 in raster order of their first pixels, wrapped to the label type; other pixels
    /// 0.
    ///
    /// @tparam Out `uchar`, `ushort` or `int`
    /// @param labels of the image's size, depth of @p Out; the first `cols` elements of each row are overwritten
    template <class Out>
    void WriteLabels(cv::Mat & labels) &&;

    /// As WriteLabels(), for zones of more than @p area pixels; the others get 0 and consume no label.
    template <class Out>
    void WriteLabelsAbove(std::uint64_t area, cv::Mat & labels) &&;

    /// Where runs start.
    [[nodiscard]] common::BitImage const & RunStarts() const { return m_starts; }

    /// The run that holds a pixel that takes part: numbered from 1 on, in raster order.
    [[nodiscard]] Run RunAt(cv::Point pixel) const;

    /// As WriteLabels(), without the zones to which one of @p runs belongs; these get 0 and consume no label.
    template <class Out>
    void WriteLabelsWithout(std::vector<Run> const & runs, cv::Mat & labels) &&;

private:
    using Word = common::BitImage::Word;

    /// Cuts the rows into runs.
    void FindRuns(ZoneLinks const & links, bool withinRows);

    /// Joins the runs of row @p y with those that the offset (@p Dx, @p dy) leads to, in the same row or above.
    template <int Dx>
    void JoinAt(int y, int dy, ZoneLinks const & links);

    /// Joins the runs that touch across the seam between the last and the first column.
    void JoinSeam(ZoneLinks const & links, common::Neighbourhood const & neighbourhood);

    /// The runs of one row.
    class RowOfRuns;
    [[nodiscard]] RowOfRuns RowAt(int y) const;

    /// The number of pixels of each run.
    [[nodiscard]] std::vector<Run> RunLengths() const;

    /// Numbers the zones whose roots @p keeps and writes them. Parents are roots already.
    template <class Out, class Keeps>
    void WriteKept(Keeps const & keeps, cv::Mat & labels);

    template <class Out>
    void Write(std::vector<Run> const & runLabels, cv::Mat & labels) const;

    common::BitImage m_pixels;
    common::BitImage m_starts;
    /// For each word of m_starts, in raster order, the number of runs that begin before it.
    std::vector<Run> m_runsBefore;
    RunForest<Run> m_forest{0};
    /// The links of the row that is being looked at, and the steps up that were found in it, each as an image of one
    /// row.
    common::BitImage m_links;
    common::BitImage m_stepsUp;
};

} // namespace morvane::connexity::labelling_internals
