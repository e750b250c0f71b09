/// @file
/// Sets of runs that are being joined.
#pragma once

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace morvane::connexity::labelling_internals
{

/// Union-find in which the root of a set is its smallest member. Runs are numbered from 1; 0 is no run.
///
/// @tparam Run unsigned integer that numbers the runs
template <class Run>
class RunForest
{
public:
    /// @p runs sets of one run each.
    explicit RunForest(std::size_t runs)
        : m_parents(runs + 1)
    {
        std::iota(m_parents.begin(), m_parents.end(), Run{0});
    }

    /// The number of runs.
    [[nodiscard]] std::size_t Runs() const { return m_parents.size() - 1; }

    /// Joins the sets of two runs.
    void Join(Run first, Run second)
    {
        Run const one = Root(first);
        Run const other = Root(second);
        Run const root = std::min(one, other);
        // Written without a branch: which of the two is the root cannot be predicted.
        m_parents[one] = root;
        m_parents[other] = root;
        m_parents[first] = root;
        m_parents[second] = root;
    }

    /// Makes every run's parent its root.
    void Flatten()
    {
        for (Run & parent : m_parents)
        {
            // Parents are smaller and so flat already.
            parent = m_parents[parent];
        }
    }

    /// Is the run the root of its set?
    [[nodiscard]] bool IsRoot(Run run) const { return m_parents[run] == run; }

    /// A run of the same set that is smaller than @p run, or @p run itself when it is the root.
    [[nodiscard]] Run Parent(Run run) const { return m_parents[run]; }

    /// Gives up the sets and hands out the memory of the parents, for labels to be written over them in rising order.
    [[nodiscard]] std::vector<Run> Release() { return std::move(m_parents); }

private:
    [[nodiscard]] Run Root(Run run) const
    {
        // Two steps without a question: most runs lie that close to their root, and the loop is then no guess.
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
