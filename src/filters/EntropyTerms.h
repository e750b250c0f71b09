/// @file
/// The terms p ln p of an entropy, looked up.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <unordered_map>
#include <vector>

namespace morvane::filters::window_internals
{

/// The term of a level.
///
/// @param count pixels of the level
/// @param pixels of the image or window
[[nodiscard]] inline double EntropyTerm(double count, double pixels)
{
    if (!(count > 0.0)) return 0.0;
    double const share = count / pixels;
    return share * std::log(share);
}

/// The terms of windows with one number of pixels.
class EntropyTerms
{
public:
    /// Longer tables would cost more than they save: a level seldom occurs so often.
    static constexpr std::size_t kLongest = 4096;

    /// Without a table, for windows that occur too seldom to make one.
    explicit EntropyTerms(std::size_t pixels)
        : m_pixels(pixels)
        , m_terms(1, 0.0)
    {}

    static EntropyTerms WithTable(std::size_t pixels)
    {
        EntropyTerms terms(pixels);
        for (std::size_t count = 1; count <= std::min(pixels, kLongest); ++count)
        {
            terms.m_terms.push_back(EntropyTerm(static_cast<double>(count), static_cast<double>(pixels)));
        }
        return terms;
    }

    /// Tells whether every term is in the table.
    [[nodiscard]] bool IsComplete() const { return m_terms.size() > m_pixels; }

    /// The table: terms of counts from 0 on.
    [[nodiscard]] double const * Table() const { return m_terms.data(); }

    /// The term of any count.
    [[nodiscard]] double Of(std::size_t count) const
    {
        return count < m_terms.size() ? m_terms[count]
                                      : EntropyTerm(static_cast<double>(count), static_cast<double>(m_pixels));
    }

private:
    std::size_t m_pixels;
    std::vector<double> m_terms;
};

/// The tables that were made so far, by the pixels of the window.
class EntropyTables
{
public:
    [[nodiscard]] EntropyTerms const & For(std::size_t pixels)
    {
        auto found = m_tables.find(pixels);
        if (found == m_tables.end()) found = m_tables.emplace(pixels, EntropyTerms::WithTable(pixels)).first;
        return found->second;
    }

private:
    std::unordered_map<std::size_t, EntropyTerms> m_tables;
};

} // namespace morvane::filters::window_internals
