#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Shapes.h"

#include <morvane/geodesy/Reconstruction.h>

#include <opencv2/imgproc.hpp>

#include <filesystem>
#include <iostream>
#include <optional>

namespace program
{

namespace
{

namespace fs = std::filesystem;

/// How the marker spreads.
struct SpreadRules
{
    bool erode = false;
    int shape = cv::MORPH_RECT;
    int size = 3;
    std::optional<int> viscosity;
    std::optional<morvane::connexity::eConnexityType> connexity; ///< by priority flood, in place of all the others
};

bool Spread(cv::Mat const & marker, cv::Mat const & mask, SpreadRules const & rules, cv::Mat & out)
{
    using namespace morvane::geodesy;
    if (rules.connexity)
    {
        return rules.erode ? OverBuild(mask, marker, *rules.connexity, out)
                           : UnderBuild(mask, marker, *rules.connexity, out);
    }
    cv::Size const size(rules.size, rules.size);
    if (rules.viscosity)
    {
        cv::Size const viscosity(*rules.viscosity, *rules.viscosity);
        return rules.erode ? ReconstructionbyViscousErosion(marker, mask, rules.shape, viscosity, out, size)
                           : ReconstructionbyViscousDilation(marker, mask, rules.shape, viscosity, out, size);
    }
    return rules.erode ? ReconstructionbyErode(marker, mask, rules.shape, out, size)
                       : ReconstructionbyDilate(marker, mask, rules.shape, out, size);
}

/// The image along its edge; elsewhere its least value, or for erosions its greatest.
cv::Mat FrameOf(cv::Mat const & image, bool erode)
{
    double least = 0.0;
    double greatest = 0.0;
    cv::minMaxIdx(image, &least, &greatest);
    cv::Mat frame = image.clone();
    if (image.rows > 2 && image.cols > 2)
    {
        frame(cv::Rect(1, 1, image.cols - 2, image.rows - 2)).setTo(erode ? greatest : least);
    }
    return frame;
}

class ReconstructCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "reconstruct"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Spread a marker under an image, or above it, as far as the image lets it";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments.add_option("image", m_image, "an image of one channel: the mask; NaN counts as 0")->required();
        DeclareMarker(arguments);
        DeclareRules(arguments);
        arguments.add_option("-o,--output", m_output, "the reconstruction, a TIFF of the image's type");
        arguments.add_option("--picture", m_picture, "a grey picture of it, over the range of the measured pixels");
    }

    void Run() override
    {
        CheckExactlyOne(
            {{"--marker", !m_marker.empty()},
             {"--lower", m_lower.has_value()},
             {"--raise", m_raise.has_value()},
             {"--frame", m_frame}});
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image, m_marker});
        outputs.Declare(m_picture, {}, {m_image, m_marker});

        cv::Mat const image = ReadScalars(m_image);
        CheckDepth(m_image, image, m_rules.connexity ? PriorityFloodDepths() : MorphologyDepths());
        cv::Mat out;
        if (!Spread(MarkerOf(image), image, m_rules, out)) throw ProgramError(m_image, "was refused");

        if (!m_output.empty()) outputs.Write(m_output, out);
        if (!m_picture.empty()) outputs.Write(m_picture, GreyPicture(out, {.isOfMeasured = true}));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "changed  " << cv::countNonZero(out != image) << '\n';
    }

private:
    void DeclareMarker(CLI::App & arguments)
    {
        auto * const erode = arguments.add_flag(
            "--erode", m_rules.erode, "the marker shrinks above the image, in place of growing under it");
        arguments.add_option("--marker", m_marker, "the marker: an image of the same size and type");
        arguments.add_option("--lower", m_lower, "the marker: the image, lowered by so much")
            ->check(IsNumberAbove(0.0))
            ->excludes(erode);
        arguments.add_option("--raise", m_raise, "the marker, with --erode: the image, raised by so much")
            ->check(IsNumberAbove(0.0))
            ->needs(erode);
        arguments.add_flag(
            "--frame", m_frame,
            "the marker: the image along its edge, elsewhere its least value, or with --erode its greatest");
    }

    void DeclareRules(CLI::App & arguments)
    {
        auto * const shape = DeclareShape(arguments, m_rules.shape);
        auto * const size = arguments.add_option("--size", m_rules.size, "the side of the element, 3 by default")
                                ->check(CLI::Range(1, kLargestElement));
        auto * const viscosity = arguments
                                     .add_option(
                                         "--viscosity", m_rules.viscosity,
                                         "the side of a second element: nothing spreads through what is narrower")
                                     ->check(CLI::Range(1, kLargestElement));
        DeclareConnexity(arguments, m_rules.connexity, "by one priority flood over the neighbourhood")
            ->excludes(shape)
            ->excludes(size)
            ->excludes(viscosity);
    }

    [[nodiscard]] cv::Mat MarkerOf(cv::Mat const & image) const
    {
        if (m_lower) return image - cv::Scalar(*m_lower);
        if (m_raise) return image + cv::Scalar(*m_raise);
        if (m_frame) return FrameOf(image, m_rules.erode);
        cv::Mat marker = ReadScalarsLike(m_marker, image, m_image);
        if (marker.type() != image.type())
        {
            throw ProgramError(
                m_marker, "has the type " + DescribeType(marker.type()) + ", but " + m_image.string() + " has " +
                              DescribeType(image.type()));
        }
        return marker;
    }

    static constexpr int kLargestElement = 1023;

    fs::path m_image;
    fs::path m_marker;
    fs::path m_output;
    fs::path m_picture;
    std::optional<double> m_lower;
    std::optional<double> m_raise;
    bool m_frame = false;
    SpreadRules m_rules;
};

Registered<ReconstructCommand> const registered;

} // namespace

} // namespace program
