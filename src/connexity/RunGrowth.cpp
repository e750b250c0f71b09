#include "connexity/RunGrowth.h"

#include <morvane/common/Conversions.h>

#include "common/Dispatch.h"

namespace morvane::connexity::growth_internals
{

std::vector<RowReach> RowReaches(Connexity const & connexity, bool wrapsInX)
{
    std::vector<RowReach> reaches;
    for (cv::Point const & offset : connexity)
    {
        auto const known =
            std::find_if(reaches.begin(), reaches.end(), [&](RowReach const & reach) { return reach.dy == offset.y; });
        if (known == reaches.end())
        {
            reaches.push_back({offset.y, std::min(offset.x, 0), std::max(offset.x, 0)});
            continue;
        }
        known->first = std::min(known->first, offset.x);
        known->last = std::max(known->last, offset.x);
    }
    // A run already ends where no step leads on to the pixels beside it.
    std::erase_if(reaches, [&](RowReach const & reach) {
        return !wrapsInX && reach.dy == 0 && reach.first >= -1 && reach.last <= 1;
    });
    return reaches;
}

void RunLabels::Write(Run const & run)
{
    common::VisitLabel(*m_labels, [&]<class Label> {
        auto * const row = m_labels->ptr<Label>(run.y);
        std::fill(row + run.first, row + run.last + 1, common::WrapTo<Label>(m_zone));
        return true;
    });
}

} // namespace morvane::connexity::growth_internals
