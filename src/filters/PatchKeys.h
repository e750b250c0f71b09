/// @file
/// How alike two patches are, as a key into a table of weights.
///
/// Three ways to sum up the differences of a patch, by what the image needs for exact results. All of them work on rows
/// of one tile and one offset at a time, so that loops run over neighbouring pixels; keys grow with the difference.
#pragma once

#include "common/Avx2.h"
#include "filters/NonLocalMeansPass.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane::filters::nlmeans_internals
{

using Key = std::uint16_t;

/// Loops run over whole groups of pixels; images and rows have room for one group more.
inline constexpr int kGroup = 16;

[[nodiscard]] constexpr int WholeGroups(int columns)
{
    return (columns + kGroup - 1) / kGroup * kGroup;
}

/// The pixels that are worked on at once: small enough for the nearest cache.
struct Tile
{
    static constexpr int kRows = 16;
    static constexpr int kCols = 128;

    int x;
    int y;
    int cols;
    int rows;
};

/// The exponent of a scaled distance as an index into the table of weights, the end of the table where it is dropped.
[[nodiscard]] MORVANE_INLINED Key KeyOfScaled(float distance)
{
    constexpr auto kEnd = static_cast<float>(NLMeansParameters::kTableSize);
    // The first comparison drops a NaN, the second what would point before the table.
    float const below = distance < kEnd ? distance : kEnd;
    return static_cast<Key>(static_cast<int>(below > -1.0F ? below : kEnd));
}

/// The table of weights with an end of weight 0.
[[nodiscard]] inline std::vector<float> WeightsByExponent(NLMeansParameters const & parameters)
{
    std::vector<float> weights = parameters.weightTable;
    weights.push_back(0.0F);
    return weights;
}

template <class Level>
[[nodiscard]] MORVANE_INLINED Level Difference(Level one, Level other)
{
    return static_cast<Level>(std::max(one, other) - std::min(one, other));
}

/// Sums in integers, of columns first: each row of pixels costs one row of differences in and one out.
template <class Level>
class ColumnSums
{
public:
    /// @param levels the image, differences of which are those of the pixels
    /// @param radius of the patch
    ColumnSums(cv::Mat const & levels, int radius)
        : m_levels(levels)
        , m_radius(radius)
        , m_columns(static_cast<std::size_t>(WholeGroups(Tile::kCols + kGroup + 2 * radius)))
        , m_sums(Tile::kCols + kGroup)
    {}

    /// Goes to the row above the first one of the tile.
    MORVANE_INLINED void Begin(Tile const & tile, cv::Point offset)
    {
        m_tile = tile;
        m_offset = offset;
        std::fill(m_columns.begin(), m_columns.end(), Level{0});
        for (int y = tile.y - m_radius; y < tile.y + m_radius; ++y)
        {
            Enter(y);
        }
    }

    /// The sums of the patches around a row of the tile; rows come one after the other.
    MORVANE_INLINED Level const * Sums(int y)
    {
        Enter(y + m_radius);
        SumColumns();
        Leave(y - m_radius);
        return m_sums.data();
    }

private:
    [[nodiscard]] MORVANE_INLINED int Length() const { return WholeGroups(WholeGroups(m_tile.cols) + 2 * m_radius); }

    [[nodiscard]] MORVANE_INLINED Level const * Here(int y) const
    {
        return m_levels.ptr<Level>(y) + m_tile.x - m_radius;
    }

    [[nodiscard]] MORVANE_INLINED Level const * There(int y) const { return Here(y + m_offset.y) + m_offset.x; }

    MORVANE_INLINED void Enter(int y)
    {
        Level const * const here = Here(y);
        Level const * const there = There(y);
        Level * __restrict const columns = m_columns.data();
        int const length = Length();
        for (int x = 0; x < length; ++x)
        {
            columns[x] = static_cast<Level>(columns[x] + Difference(here[x], there[x]));
        }
    }

    MORVANE_INLINED void Leave(int y)
    {
        Level const * const here = Here(y);
        Level const * const there = There(y);
        Level * __restrict const columns = m_columns.data();
        int const length = Length();
        for (int x = 0; x < length; ++x)
        {
            columns[x] = static_cast<Level>(columns[x] - Difference(here[x], there[x]));
        }
    }

    /// Three columns, then two more with each further unit of the radius.
    MORVANE_INLINED void SumColumns()
    {
        Level const * const columns = m_columns.data();
        Level * __restrict const sums = m_sums.data();
        int const length = WholeGroups(m_tile.cols);
        if (m_radius == 0)
        {
            std::copy_n(columns, length, sums);
            return;
        }
        for (int x = 0; x < length; ++x)
        {
            sums[x] = static_cast<Level>(columns[x] + columns[x + 1] + columns[x + 2]);
        }
        for (int k = 3; k <= 2 * m_radius; k += 2)
        {
            for (int x = 0; x < length; ++x)
            {
                sums[x] = static_cast<Level>(sums[x] + columns[x + k] + columns[x + k + 1]);
            }
        }
    }

    cv::Mat m_levels;
    int m_radius;
    Tile m_tile{};
    cv::Point m_offset;
    std::vector<Level> m_columns;
    std::vector<Level> m_sums;
};

/// Keys that are the distances themselves, where a patch's sum of differences fits 16 bits.
class NarrowKeys
{
public:
    using Level = std::uint16_t;
    static constexpr double kLargestSum = 65535.0;

    NarrowKeys(cv::Mat const & levels, NLMeansParameters const & parameters, float factor)
        : m_sums(levels, parameters.patchRadius)
        , m_keys(Tile::kCols + kGroup)
    {
        std::vector<float> const byExponent = WeightsByExponent(parameters);
        for (float distance = 0.0F; distance <= static_cast<float>(kLargestSum); ++distance)
        {
            m_weights.push_back(byExponent[KeyOfScaled(distance * factor)]);
            if (m_weights.back() == 0.0F) break;
        }
    }

    [[nodiscard]] std::vector<float> const & Weights() const { return m_weights; }

    MORVANE_INLINED void Begin(Tile const & tile, cv::Point offset)
    {
        m_cols = WholeGroups(tile.cols);
        m_sums.Begin(tile, offset);
    }

    MORVANE_INLINED Key const * Row(int y)
    {
        auto const last = static_cast<Key>(m_weights.size() - 1);
        Level const * const sums = m_sums.Sums(y);
        Key * __restrict const keys = m_keys.data();
        for (int x = 0; x < m_cols; ++x)
        {
            keys[x] = std::min(sums[x], last);
        }
        return keys;
    }

private:
    ColumnSums<Level> m_sums;
    std::vector<Key> m_keys;
    std::vector<float> m_weights; ///< up to the first distance that is dropped: weights never grow
    int m_cols = 0;
};

/// Keys that are exponents, where a patch's sum is exact in single precision.
class WideKeys
{
public:
    using Level = std::uint32_t;
    static constexpr double kLargestSum = 16777216.0;

    WideKeys(cv::Mat const & levels, NLMeansParameters const & parameters, float factor)
        : m_sums(levels, parameters.patchRadius)
        , m_keys(Tile::kCols + kGroup)
        , m_weights(WeightsByExponent(parameters))
        , m_factor(factor)
    {}

    [[nodiscard]] std::vector<float> const & Weights() const { return m_weights; }

    MORVANE_INLINED void Begin(Tile const & tile, cv::Point offset)
    {
        m_cols = WholeGroups(tile.cols);
        m_sums.Begin(tile, offset);
    }

    MORVANE_INLINED Key const * Row(int y)
    {
        Level const * const sums = m_sums.Sums(y);
        Key * __restrict const keys = m_keys.data();
        float const factor = m_factor;
        for (int x = 0; x < m_cols; ++x)
        {
            keys[x] = KeyOfScaled(static_cast<float>(static_cast<int>(sums[x])) * factor);
        }
        return keys;
    }

private:
    ColumnSums<Level> m_sums;
    std::vector<Key> m_keys;
    std::vector<float> m_weights;
    float m_factor;
    int m_cols = 0;
};

/// Keys that are exponents, of sums that round: every pixel gets the terms of its patch one by one, row by row.
class RoundedKeys
{
public:
    using Level = std::uint32_t;

    RoundedKeys(cv::Mat const & levels, NLMeansParameters const & parameters, float factor)
        : m_levels(levels)
        , m_radius(parameters.patchRadius)
        , m_stride(Tile::kCols + 2 * kGroup + 2 * m_radius)
        , m_differences(static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(Tile::kRows + 2 * m_radius))
        , m_keys(Tile::kCols + kGroup)
        , m_weights(WeightsByExponent(parameters))
        , m_factor(factor)
    {}

    [[nodiscard]] std::vector<float> const & Weights() const { return m_weights; }

    MORVANE_INLINED void Begin(Tile const & tile, cv::Point offset)
    {
        m_tile = tile;
        int const length = WholeGroups(WholeGroups(tile.cols) + 2 * m_radius);
        for (int y = 0; y < tile.rows + 2 * m_radius; ++y)
        {
            Level const * const here = m_levels.ptr<Level>(tile.y - m_radius + y) + tile.x - m_radius;
            Level const * const there =
                m_levels.ptr<Level>(tile.y - m_radius + y + offset.y) + tile.x - m_radius + offset.x;
            float * __restrict const differences = DifferencesAt(y);
            for (int x = 0; x < length; ++x)
            {
                differences[x] = static_cast<float>(Difference(here[x], there[x]));
            }
        }
    }

    MORVANE_INLINED Key const * Row(int y)
    {
        for (int x = 0; x < m_tile.cols; x += kGroup)
        {
            std::array<float, kGroup> sums{};
            for (int py = 0; py <= 2 * m_radius; ++py)
            {
                float const * const row = DifferencesAt(y - m_tile.y + py) + x;
                for (int px = 0; px <= 2 * m_radius; ++px)
                {
                    for (std::size_t i = 0; i < kGroup; ++i)
                    {
                        sums[i] += row[static_cast<std::size_t>(px) + i];
                    }
                }
            }
            for (std::size_t i = 0; i < kGroup; ++i)
            {
                m_keys[static_cast<std::size_t>(x) + i] = KeyOfScaled(sums[i] * m_factor);
            }
        }
        return m_keys.data();
    }

private:
    MORVANE_INLINED float * DifferencesAt(int row)
    {
        return m_differences.data() + static_cast<std::ptrdiff_t>(row) * m_stride;
    }

    cv::Mat m_levels;
    int m_radius;
    int m_stride;
    Tile m_tile{};
    std::vector<float> m_differences;
    std::vector<Key> m_keys;
    std::vector<float> m_weights;
    float m_factor;
};

} // namespace morvane::filters::nlmeans_internals
