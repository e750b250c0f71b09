/// @file
/// Labelling by runs: the zones of a mask under 4 or 8 neighbours, without a walk.
///
/// Where every step between measured pixels is allowed, the zones do not depend on the order of the walk. A row is then
/// a list of runs, contacts between the runs of two rows are found in bit masks, and a union-find whose roots are the
/// smallest runs numbers the zones by their first pixels in raster order: the labels of the flood, exactly.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include "common/BitImage.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane::connexity::labelling_internals
{

/// Tells whether masks of this many pixels under this neighbourhood can be labelled by runs.
///
/// The shapes of 4 and 8 neighbours can, in any order of their offsets, wrapped or not; runs are counted in 32 bits.
[[nodiscard]] MORVANE_EXPORT bool CanLabelByRuns(eConnexityType connexity, std::size_t pixels);

/// Labels the zones of a mask; see Label() for what is written.
///
/// @tparam Out `uchar`, `ushort` or `int`
/// @param mask the pixels that take part
/// @param connexity one that CanLabelByRuns() accepts
/// @param labels of the mask's size, depth of @p Out; the first `cols` elements of each row are overwritten
template <class Out>
MORVANE_EXPORT void LabelByRuns(common::BitImage const & mask, eConnexityType connexity, cv::Mat & labels);

/// Sets of runs that are joined: union-find in which the root of a set is its smallest member.
class RunForest
{
public:
    using Run = std::uint32_t;

    /// @p runs sets of one run each.
    explicit RunForest(std::size_t runs);

    /// Joins the sets of two runs.
    void Join(Run first, Run second)
    {
        Run const one = Root(first);
        Run const other = Root(second);
        Run const root = one < other ? one : other;
        // Without a branch: which of the two is the root cannot be predicted.
        m_parents[one] = root;
        m_parents[other] = root;
        m_parents[first] = root;
        m_parents[second] = root;
    }

    /// The label of each run: sets numbered from 1 in the order of their roots, wrapped to the label type.
    template <class Out>
    [[nodiscard]] std::vector<Out> Number() const;

private:
    [[nodiscard]] Run Root(Run run) const
    {
        // Two steps without a question: most runs lie that close to their root, and the loop is then not a guess.
        run = m_parents[m_parents[run]];
        while (m_parents[run] != run)
        {
            run = m_parents[run];
        }
        return run;
    }

    std::vector<Run> m_parents;
};

} // namespace morvane::connexity::labelling_internals
