/// @file
/// Tables of figures, as text.
#pragma once

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace program
{

/// Named columns of numbers with one row for each label that is wanted.
class Table
{
public:
    /// @param key the name of the first column, which holds the number of the row
    /// @param wanted N x 1, `CV_8UC1`: rows that are 0 are left out
    Table(std::string key, cv::Mat1b wanted);

    /// Adds a column: N x 1, one channel of any depth.
    void Add(std::string const & name, cv::Mat const & values);

    /// The table as comma-separated values: a line of names, then a line for each row. Numbers have as many digits as it
    /// takes to read the same number back.
    [[nodiscard]] std::string AsCsv() const;

private:
    cv::Mat1b m_wanted;
    std::vector<std::string> m_names;
    std::vector<cv::Mat1d> m_columns;
};

} // namespace program
