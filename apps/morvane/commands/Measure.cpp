#include "morvane/Command.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Table.h"

#include <morvane/connexity/ZoneMeasures.h>
#include <morvane/visual/ColorMaps.h>

#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace program
{

namespace
{

namespace fs = std::filesystem;
using namespace morvane::connexity;

/// The image in which each pixel holds its column.
cv::Mat ColumnNumbers(cv::Size size)
{
    cv::Mat1d numbers(1, size.width);
    for (int x = 0; x < size.width; ++x)
    {
        numbers(x) = x;
    }
    return cv::repeat(numbers, size.height, 1);
}

/// The image in which each pixel holds its row.
cv::Mat RowNumbers(cv::Size size)
{
    return ColumnNumbers({size.height, size.width}).t();
}

/// The standard deviation of the values in each zone, about the zone's own mean so that nothing cancels.
cv::Mat Deviations(cv::Mat const & labels, cv::Mat const & areas, cv::Mat const & values, cv::Mat const & means)
{
    cv::Mat centres(labels.size(), CV_64FC1);
    if (!morvane::visual::ApplyLut(labels, means, centres)) throw ProgramError("the means cannot be written back");
    cv::Mat deviations = ComputeSQAccumulation(labels, values - centres) / areas;
    cv::sqrt(deviations, deviations);
    return deviations;
}

void AddPositions(cv::Mat const & labels, cv::Mat const & areas, Table & table)
{
    table.Add("row_min", ComputeRowMin(labels));
    table.Add("row_max", ComputeRowMax(labels));
    table.Add("column_min", ComputeColMin(labels));
    table.Add("column_max", ComputeColMax(labels));
    // ComputeRowAcc() and ComputeColAcc() would wrap on large zones.
    table.Add("row_mean", ComputeAccumulation(labels, RowNumbers(labels.size())) / areas);
    table.Add("column_mean", ComputeAccumulation(labels, ColumnNumbers(labels.size())) / areas);
}

/// @param values one channel, double, so that no sum wraps
void AddValues(
    cv::Mat const & labels, cv::Mat const & areas, cv::Mat const & values, std::string const & suffix, Table & table)
{
    cv::Mat const sums = ComputeAccumulation(labels, values);
    cv::Mat const means = sums / areas;
    table.Add("sum" + suffix, sums);
    table.Add("min" + suffix, ComputeMin(labels, values));
    table.Add("max" + suffix, ComputeMax(labels, values));
    table.Add("mean" + suffix, means);
    table.Add("deviation" + suffix, Deviations(labels, areas, values, means));
}

/// The labels in 32 bits, in which no table size wraps.
cv::Mat ReadDenseLabels(fs::path const & file)
{
    cv::Mat labels = ReadLabels(file);
    double lowest = 0.0;
    cv::minMaxIdx(labels, &lowest, nullptr);
    if (lowest < 0.0) throw ProgramError(file, "holds negative numbers; labels start at 1");
    CheckDenseLabels(file, labels);
    return labels;
}

class MeasureCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "measure"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Print what each zone of a label image measures, as CSV";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments.add_option("labels", m_labels, "an image of labels, as `label` writes it; 0 is no zone")->required();
        arguments.add_option(
            "--values", m_values, "an image of the same size: its sum, extremes, mean and deviation in each zone");
        arguments.add_option("-o,--output", m_output, "the file for the table, in place of the standard output");
    }

    void Run() override
    {
        Outputs outputs;
        outputs.DeclareText(m_output, {m_labels, m_values});
        std::string const csv = Measure().AsCsv();
        if (m_output.empty())
        {
            std::cout << csv;
            return;
        }
        outputs.WriteText(m_output, csv);
        outputs.Commit();
    }

private:
    [[nodiscard]] Table Measure() const
    {
        cv::Mat const labels = ReadDenseLabels(m_labels);
        cv::Mat areas;
        ComputeArea(labels).convertTo(areas, CV_64F);
        cv::Mat const isPresent = areas > 0.0;
        Table table("label", isPresent);
        table.Add("area", areas);
        AddPositions(labels, areas, table);
        if (!m_values.empty()) AddChannels(labels, areas, table);
        return table;
    }

    void AddChannels(cv::Mat const & labels, cv::Mat const & areas, Table & table) const
    {
        cv::Mat values = ReadImageLike(m_values, labels, m_labels);
        values.convertTo(values, CV_64F);
        std::vector<cv::Mat> channels;
        cv::split(values, channels);
        for (std::size_t channel = 0; channel < channels.size(); ++channel)
        {
            std::string const suffix = channels.size() == 1 ? "" : "_" + std::to_string(channel);
            AddValues(labels, areas, channels[channel], suffix, table);
        }
    }

    fs::path m_labels;
    fs::path m_values;
    fs::path m_output;
};

Registered<MeasureCommand> const registered;

} // namespace

} // namespace program
