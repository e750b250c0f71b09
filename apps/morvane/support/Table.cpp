#include "morvane/support/Table.h"

#include <array>
#include <charconv>
#include <utility>

namespace program
{

namespace
{

void Append(double number, std::string & text)
{
    std::array<char, 32> digits{};
    auto const [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc()) text.append(digits.data(), end);
}

} // namespace

Table::Table(std::string key, cv::Mat1b wanted)
    : m_wanted(std::move(wanted))
    , m_names({std::move(key)})
{}

void Table::Add(std::string const & name, cv::Mat const & values)
{
    CV_Assert(values.size() == m_wanted.size() && values.channels() == 1);
    m_names.push_back(name);
    values.convertTo(m_columns.emplace_back(), CV_64F);
}

std::string Table::AsCsv() const
{
    std::string text;
    for (std::string const & name : m_names)
    {
        text += (text.empty() ? "" : ",") + name;
    }
    text += '\n';
    for (int row = 0; row < m_wanted.rows; ++row)
    {
        if (m_wanted(row) == 0) continue;
        Append(row, text);
        for (cv::Mat1d const & column : m_columns)
        {
            text += ',';
            Append(column(row), text);
        }
        text += '\n';
    }
    return text;
}

} // namespace program
