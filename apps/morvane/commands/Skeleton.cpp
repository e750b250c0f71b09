#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Shapes.h"
#include "morvane/support/Table.h"

#include <morvane/features/Skeleton.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

namespace program
{

namespace
{

namespace fs = std::filesystem;
using namespace morvane::features;

constexpr int kLargestElement = 1000;
constexpr int kLeastSide = 3;

/// How a shape is reduced.
enum class Method
{
    ZhangSuen,
    GuoHall,
    Erosion
};

/// The segments as a table: a line for each, under its label.
std::string CsvOf(SegmentMap const & ends)
{
    int const rows = ends.empty() ? 1 : ends.rbegin()->first + 1;
    cv::Mat1b isPresent(rows, 1, uchar{0});
    cv::Mat1d columns(rows, 5, 0.0);
    for (auto const & [label, segment] : ends)
    {
        auto const & [first, second] = segment;
        isPresent(label) = 1;
        cv::Mat1d const row =
            (cv::Mat1d(1, columns.cols) << first.x, first.y, second.x, second.y, cv::norm(second - first));
        row.copyTo(columns.row(label));
    }
    Table table("label", isPresent);
    int column = 0;
    for (char const * const name : {"x1", "y1", "x2", "y2", "length"})
    {
        table.Add(name, columns.col(column++));
    }
    return table.AsCsv();
}

/// The segments, each in a colour of its own, over the image in dark greys, on which the shape stands out.
cv::Mat PictureOfSegments(cv::Mat const & image, cv::Mat const & shape, cv::Mat const & segments)
{
    constexpr double kDim = 0.2;
    constexpr double kLift = 30.0;
    cv::Mat dim;
    GreyPicture(image, {.isOfMeasured = true}).convertTo(dim, CV_8U, kDim);
    cv::add(dim, kLift, dim, shape);
    cv::Mat picture;
    cv::cvtColor(dim, picture, cv::COLOR_GRAY2BGR);
    PictureOfZones(segments).copyTo(picture, segments > 0);
    return picture;
}

class SkeletonCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "skeleton"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Reduce a shape to lines, and cut the lines into straight segments";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option(
                "image", m_image, "an image of one channel; the shape is what is measured: the pixels that are not 0")
            ->required();
        DeclareReduction(arguments);
        arguments.add_option("-o,--output", m_output, "the skeleton, an 8-bit image: 255 on its lines, 0 elsewhere");
        arguments.add_option("--segments", m_segments, "the table of the straight segments: ends and length, as CSV");
        arguments.add_option(
            "--segment-labels", m_labels,
            "the segments drawn with the labels that they have in the table, a 32-bit TIFF, 0 elsewhere");
        arguments.add_option(
            "--segment-picture", m_picture, "a picture: a colour for each segment, drawn over the image in dark greys");
        arguments
            .add_option(
                "--tolerance", m_tolerance,
                "how far, in pixels, the lines may lie from the segments, 1.5 by default; above 0")
            ->check(IsNumberAbove(0.0));
    }

    void Run() override
    {
        CheckSwitches();
        Outputs outputs;
        outputs.Declare(m_output, {}, {m_image});
        outputs.DeclareText(m_segments, {m_image});
        outputs.Declare(m_labels, {".tif", ".tiff"}, {m_image});
        outputs.Declare(m_picture, {}, {m_image});

        cv::Mat const image = ReadScalars(m_image);
        cv::Mat const shape = ShapeOf(image);
        cv::Mat const skeleton = SkeletonOf(shape);
        cv::Mat segments;
        SegmentMap ends;
        if (AreSegmentsWanted() && !ExtractSegmentsFromSkeleton(skeleton, Tolerance(), segments, ends))
        {
            throw ProgramError(m_image, "its skeleton cannot be cut into segments");
        }

        if (!m_output.empty()) outputs.Write(m_output, skeleton);
        if (!m_segments.empty()) outputs.WriteText(m_segments, CsvOf(ends));
        if (!m_labels.empty()) outputs.Write(m_labels, segments);
        if (!m_picture.empty()) outputs.Write(m_picture, PictureOfSegments(image, shape, segments));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "shape  " << cv::countNonZero(shape) << "\nskeleton  " << cv::countNonZero(skeleton) << '\n';
        if (AreSegmentsWanted()) std::cout << "segments  " << ends.size() << '\n';
    }

private:
    void DeclareReduction(CLI::App & arguments)
    {
        auto * const from = arguments.add_option(
            "--from", m_from, "the shape is the measured pixels of at least this value, in place of all");
        DeclareNamed<Method>(
            arguments, "--method", m_method,
            {{"zhang-suen", Method::ZhangSuen}, {"guo-hall", Method::GuoHall}, {"erosion", Method::Erosion}},
            "zhang-suen (thinning, the default), guo-hall (thinning with thinner diagonals), erosion (what openings of "
            "growing size take away, joined to lines). Thinning leaves the outermost rows and columns as they are");
        arguments
            .add_option("--iterations", m_iterations, "with thinning: end after so many, else when nothing changes")
            ->check(CLI::PositiveNumber);
        m_shapeOption = DeclareShape(arguments, m_shape);
        arguments.add_option("--size", m_size, "with erosion: the size of the element in pixels, 3 by default")
            ->check(CLI::Range(1, kLargestElement));
        arguments
            .add_flag("--grey,--gray", m_isGrey, "with erosion: of the grey levels of an 8-bit image, not of a shape")
            ->excludes(from);
    }

    [[nodiscard]] bool AreSegmentsWanted() const
    {
        return !m_segments.empty() || !m_labels.empty() || !m_picture.empty();
    }

    [[nodiscard]] double Tolerance() const
    {
        constexpr double kTolerance = 1.5;
        return m_tolerance.value_or(kTolerance);
    }

    void CheckSwitches() const
    {
        bool const isErosion = m_method == Method::Erosion;
        if (isErosion && m_iterations) throw ProgramError("--iterations is for thinning, not for --method erosion");
        if (!isErosion && m_shapeOption->count() > 0) throw ProgramError("--shape needs --method erosion");
        if (!isErosion && m_size) throw ProgramError("--size needs --method erosion");
        if (!isErosion && m_isGrey) throw ProgramError("--grey needs --method erosion");
        if (m_tolerance && !AreSegmentsWanted())
        {
            throw ProgramError("--tolerance needs --segments, --segment-labels or --segment-picture");
        }
    }

    /// What is reduced: `CV_8UC1`, and but for grey levels 255 on the shape, 0 elsewhere.
    [[nodiscard]] cv::Mat ShapeOf(cv::Mat const & image) const
    {
        if (m_isGrey)
        {
            CheckDepth(m_image, image, {CV_8U});
            return image;
        }
        cv::Mat shape = image != 0.0;
        if (m_from) shape &= image >= *m_from;
        return shape;
    }

    [[nodiscard]] cv::Mat SkeletonOf(cv::Mat const & shape) const
    {
        cv::Mat skeleton;
        if (m_method != Method::Erosion)
        {
            thinning(
                shape, skeleton, m_method == Method::GuoHall ? ThinningGuoHall : ThinningZhangSuen,
                m_iterations.value_or(0));
            return skeleton;
        }
        if (std::min(shape.rows, shape.cols) < kLeastSide)
        {
            throw ProgramError(
                m_image, "is " + DescribeSize(shape) + "; --method erosion needs 3 rows and columns or more");
        }
        constexpr int kSize = 3;
        if (!ExtractSkeletonByErosion(shape, skeleton, static_cast<cv::MorphShapes>(m_shape), m_size.value_or(kSize)))
        {
            throw ProgramError(m_image, "was refused");
        }
        return skeleton;
    }

    fs::path m_image;
    fs::path m_output;
    fs::path m_segments;
    fs::path m_labels;
    fs::path m_picture;
    Method m_method = Method::ZhangSuen;
    std::optional<double> m_from;
    std::optional<int> m_iterations;
    std::optional<int> m_size;
    std::optional<double> m_tolerance;
    CLI::Option * m_shapeOption = nullptr;
    int m_shape = cv::MORPH_RECT;
    bool m_isGrey = false;
};

Registered<SkeletonCommand> const registered;

} // namespace

} // namespace program
