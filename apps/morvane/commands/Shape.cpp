#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Shapes.h"
#include "morvane/support/Table.h"
#include "morvane/support/ZoneShapes.h"

#include <morvane/connexity/GeodesicMeasures.h>
#include <morvane/features/ShapeDescriptors.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

namespace program
{

namespace
{

namespace fs = std::filesystem;

constexpr int kLeastSide = 3;

/// The boxes of the connected parts, over the parts in grey.
cv::Mat PictureOfBoxes(cv::Mat const & image)
{
    // What is measured stays above black, however low.
    constexpr double kDim = 0.5;
    constexpr double kDarkest = 35.0;
    cv::Mat dim;
    GreyPicture(image, {.isOfMeasured = true}).convertTo(dim, CV_8U, kDim, kDarkest);
    dim.setTo(0.0, image == 0.0);
    cv::Mat picture;
    cv::cvtColor(dim, picture, cv::COLOR_GRAY2BGR);
    std::vector<cv::Rect> boxes;
    static_cast<void>(morvane::features::BoundingRectangles(image, boxes));
    int number = 0;
    for (cv::Rect const & box : boxes)
    {
        cv::rectangle(picture, box, cv::Scalar(ColourOfZone(++number)));
    }
    return picture;
}

/// A curve of sizes as CSV.
///
/// @param curve whose entries follow each other in steps of two pixels
/// @param name of its column
/// @param firstStep the step of the first entry; step i has an element of 2 i + 1 pixels
std::string CsvOf(std::vector<double> const & curve, char const * name, int firstStep)
{
    int const rows = firstStep + static_cast<int>(curve.size());
    cv::Mat1b isPresent(rows, 1, uchar{1});
    cv::Mat1d sizes(rows, 1, 1.0);
    cv::Mat1d values(rows, 1, 0.0);
    for (int step = 0; step < rows; ++step)
    {
        isPresent(step) = step >= firstStep ? 1 : 0;
        sizes(step) = 2.0 * step + 1.0;
        if (step >= firstStep) values(step) = curve[static_cast<std::size_t>(step - firstStep)];
    }
    Table table("step", isPresent);
    table.Add("size", sizes);
    table.Add(name, values);
    return table.AsCsv();
}

class ShapeCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "shape"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Measure the shape of each zone, as CSV, and the sizes and corners of a whole image";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option(
                "image", m_image,
                "labels, or any image of one channel; a zone is a set of equal pixels that are not 0 and touch each "
                "other by sides or corners")
            ->required();
        arguments.add_option(
            "-o,--output", m_output,
            "the file for the table of the zones, in place of the standard output. There is no table where only "
            "outputs are asked for that measure no zones");
        DeclareNamed<std::optional<ZoneMeasure>>(
            arguments, "--measure", m_measure,
            {{"diameter", kDiameter},
             {"elongation", kElongation},
             {"tortuosity", kTortuosity},
             {"standard-elongation", kStandardElongation}},
            "what --values and --picture show: diameter (the longest path in a zone in pixels, the default), "
            "elongation (about 1 for a disc), tortuosity (that path by the way between its ends), standard-elongation "
            "(the squared ratio of the axes of the outline, of the zone in the first corner of the image alone, and "
            "only where no empty pixel touches that corner; 0 elsewhere)");
        arguments.add_option("--values", m_values, "the measure at each pixel, a TIFF of doubles");
        arguments.add_option(
            "--picture", m_picture,
            "a picture of the measure in false colours: blue is the least, white the greatest, black where there is "
            "none");
        arguments.add_option(
            "--extremities", m_extremities, "the ends of the longest paths, an 8-bit image: 255 there, 0 elsewhere");
        arguments.add_option(
            "--extremity-picture", m_extremityPicture, "a picture of them: white dots on the zones in colours");
        DeclareWholeImage(arguments);
    }

    void Run() override
    {
        CheckSwitches();
        Outputs outputs;
        DeclareOutputs(outputs);

        cv::Mat const image = ReadScalars(m_image);
        std::optional<Table> table;
        if (AreZonesMeasured()) table = MeasureZones(image, outputs);
        MeasureWholeImage(image, outputs);
        if (table && !m_output.empty()) outputs.WriteText(m_output, table->AsCsv());
        outputs.Commit();

        if (!table)
        {
            PrintImage(m_image, image);
        }
        else if (m_output.empty())
        {
            std::cout << table->AsCsv();
        }
    }

private:
    void DeclareWholeImage(CLI::App & arguments)
    {
        arguments.add_option(
            "--boxes", m_boxes, "a picture: a box round each part of the measured pixels that lies in no hole");
        arguments.add_option(
            "--closed", m_closed,
            "the measured pixels, closed by a square of 11 pixels six times: an 8-bit image, 255 or 0");
        arguments.add_option(
            "--opening-curve", m_openingCurve,
            "what share of the image is left after openings of growing size, as CSV");
        arguments.add_option("--closing-curve", m_closingCurve, "the same with closings");
        arguments.add_option(
            "--fractal-curve", m_fractalCurve,
            "the area between dilation and erosion at growing sizes, by the size, as CSV");
        m_shapeOption = DeclareShape(arguments, m_shape);
        arguments.add_option(
            "--harris", m_harris, "the response of Harris' corner detector, scaled to 0 to 255, a TIFF of floats");
        arguments.add_option("--harris-picture", m_harrisPicture, "a picture of it in grey");
    }

    [[nodiscard]] bool AreCurvesWanted() const
    {
        return !m_openingCurve.empty() || !m_closingCurve.empty() || !m_fractalCurve.empty();
    }

    [[nodiscard]] bool IsHarrisWanted() const { return !m_harris.empty() || !m_harrisPicture.empty(); }

    [[nodiscard]] bool AreZonesMeasured() const
    {
        bool const isWanted = !m_output.empty() || !m_values.empty() || !m_picture.empty() || !m_extremities.empty() ||
                              !m_extremityPicture.empty();
        return isWanted || (!AreCurvesWanted() && !IsHarrisWanted() && m_boxes.empty() && m_closed.empty());
    }

    void CheckSwitches() const
    {
        if (m_measure && m_values.empty() && m_picture.empty())
        {
            throw ProgramError("--measure needs --values or --picture");
        }
        if (m_shapeOption->count() > 0 && !AreCurvesWanted())
        {
            throw ProgramError("--shape needs --opening-curve, --closing-curve or --fractal-curve");
        }
    }

    void DeclareOutputs(Outputs & outputs) const
    {
        outputs.DeclareText(m_output, {m_image});
        outputs.Declare(m_values, {".tif", ".tiff"}, {m_image});
        outputs.Declare(m_picture, {}, {m_image});
        outputs.Declare(m_extremities, {}, {m_image});
        outputs.Declare(m_extremityPicture, {}, {m_image});
        outputs.Declare(m_boxes, {}, {m_image});
        outputs.Declare(m_closed, {}, {m_image});
        outputs.DeclareText(m_openingCurve, {m_image});
        outputs.DeclareText(m_closingCurve, {m_image});
        outputs.DeclareText(m_fractalCurve, {m_image});
        outputs.Declare(m_harris, {".tif", ".tiff"}, {m_image});
        outputs.Declare(m_harrisPicture, {}, {m_image});
    }

    [[nodiscard]] Table MeasureZones(cv::Mat const & image, Outputs & outputs) const
    {
        FlatZones const zones = FlatZonesOf(m_image, image);
        if (!m_values.empty() || !m_picture.empty())
        {
            cv::Mat const values = Computed(zones, m_measure.value_or(kDiameter).compute);
            if (!m_values.empty()) outputs.Write(m_values, values);
            if (!m_picture.empty()) outputs.Write(m_picture, PictureOfMeasure(values));
        }
        if (!m_extremities.empty() || !m_extremityPicture.empty())
        {
            cv::Mat const marks = Computed(zones, morvane::connexity::GeodesicExtremitiesOnFlatZonesNoZero);
            if (!m_extremities.empty()) outputs.Write(m_extremities, marks);
            if (!m_extremityPicture.empty()) outputs.Write(m_extremityPicture, PictureOfExtremities(zones, marks));
        }
        return TableOfShapes(zones);
    }

    void MeasureWholeImage(cv::Mat const & image, Outputs & outputs) const
    {
        if (!m_boxes.empty()) outputs.Write(m_boxes, PictureOfBoxes(image));
        if (!m_closed.empty())
        {
            cv::Mat closed = cv::Mat::zeros(image.size(), CV_8UC1);
            if (!morvane::features::BoundingConvexHulls(image != 0.0, closed))
            {
                throw ProgramError(m_image, "cannot be closed");
            }
            outputs.Write(m_closed, closed);
        }
        if (!AreCurvesWanted() && !IsHarrisWanted()) return;
        if (std::min(image.rows, image.cols) < kLeastSide)
        {
            throw ProgramError(
                m_image, "is " + DescribeSize(image) + "; curves and corners need 3 rows and columns or more");
        }
        MeasureCurves(image, outputs);
        MeasureCorners(image, outputs);
    }

    void MeasureCurves(cv::Mat const & image, Outputs & outputs) const
    {
        using namespace morvane::features;
        cv::Mat numbers = image;
        // OpenCV's morphology takes no integers of 32 bits; they are exact in double.
        if (image.depth() == CV_32S) image.convertTo(numbers, CV_64F);
        std::vector<double> curve;
        if (!m_openingCurve.empty())
        {
            Check(GranulometryByOpening(numbers, curve, m_shape));
            outputs.WriteText(m_openingCurve, CsvOf(curve, "share", 0));
        }
        if (!m_closingCurve.empty())
        {
            Check(GranulometryByClosing(numbers, curve, m_shape));
            outputs.WriteText(m_closingCurve, CsvOf(curve, "share", 0));
        }
        if (!m_fractalCurve.empty())
        {
            Check(MorphologicalFractalDimension(numbers, curve, m_shape));
            outputs.WriteText(m_fractalCurve, CsvOf(curve, "area", 1));
        }
    }

    void MeasureCorners(cv::Mat const & image, Outputs & outputs) const
    {
        if (!IsHarrisWanted()) return;
        cv::Mat response;
        Check(morvane::features::ExtractHarrisCorners(image, response));
        if (!m_harris.empty()) outputs.Write(m_harris, response);
        if (m_harrisPicture.empty()) return;
        cv::Mat picture;
        response.convertTo(picture, CV_8U);
        outputs.Write(m_harrisPicture, picture);
    }

    void Check(bool isDone) const
    {
        if (!isDone) throw ProgramError(m_image, "was refused");
    }

    fs::path m_image;
    fs::path m_output;
    fs::path m_values;
    fs::path m_picture;
    fs::path m_extremities;
    fs::path m_extremityPicture;
    fs::path m_boxes;
    fs::path m_closed;
    fs::path m_openingCurve;
    fs::path m_closingCurve;
    fs::path m_fractalCurve;
    fs::path m_harris;
    fs::path m_harrisPicture;
    std::optional<ZoneMeasure> m_measure;
    CLI::Option * m_shapeOption = nullptr;
    int m_shape = cv::MORPH_RECT;
};

Registered<ShapeCommand> const registered;

} // namespace

} // namespace program
