#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/Pixels.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Zones.h"

#include <morvane/connexity/QuasiFlatZones.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
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

using morvane::projection::ProjectionType;

constexpr int kSmallestWindow = 3;

/// The image in a type that the filters take and that holds its values.
cv::Mat AsFloatingPoint(cv::Mat const & image)
{
    if (image.depth() == CV_32F || image.depth() == CV_64F) return image;
    cv::Mat converted;
    image.convertTo(converted, image.depth() == CV_32S ? CV_64F : CV_32F);
    return converted;
}

/// The image in greys, its masked pixels orange, its seeds crosses in light blue.
cv::Mat PictureOfMask(cv::Mat const & image, cv::Mat const & mask, std::vector<cv::Point> const & seeds)
{
    constexpr int kArm = 9;
    cv::Vec3b const tint(0, 120, 255);
    cv::Scalar const cross(255, 220, 120);
    cv::Mat picture;
    cv::cvtColor(GreyPicture(image, {.isOfMeasured = true}), picture, cv::COLOR_GRAY2BGR);
    cv::Mat const tinted = picture * 0.5 + cv::Mat(picture.size(), picture.type(), cv::Scalar(tint)) * 0.5;
    tinted.copyTo(picture, mask);
    for (cv::Point const & seed : seeds)
    {
        cv::drawMarker(picture, seed, cross, cv::MARKER_CROSS, kArm);
    }
    return picture;
}

class QuasiFlatCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "quasi-flat"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Find what can be walked without a high step: from seeds, most often, or the base surface";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments.add_option("image", m_image, "heights, an image of one channel; 0 where nothing was measured")
            ->required();
        DeclareConnexity(arguments, m_connexity);
        arguments
            .add_option("--delta", m_delta, "the highest step between neighbours of a zone, in the unit of the image")
            ->required()
            ->check(CLI::NonNegativeNumber);
        DeclarePreparation(arguments);
        DeclareSearch(arguments);
        arguments.add_option("-o,--output", m_output, "the mask, an 8-bit image: 255 in it, 0 elsewhere");
        arguments.add_option("--zones", m_zones, "the labels of all zones, 32-bit TIFF: from 1, 0 where there is none");
        arguments.add_option("--zones-picture", m_zonesPicture, "a picture: a colour for each zone");
        arguments.add_option(
            "--picture", m_picture, "a picture: the mask orange on the heights in greys, the seeds light blue");
    }

    void Run() override
    {
        CheckSwitches();
        Outputs outputs;
        outputs.Declare(m_output, {}, {m_image, m_seedImage});
        outputs.Declare(m_zones, {".tif", ".tiff"}, {m_image, m_seedImage});
        outputs.Declare(m_zonesPicture, {}, {m_image, m_seedImage});
        outputs.Declare(m_picture, {}, {m_image, m_seedImage});

        cv::Mat const image = ReadScalars(m_image);
        std::vector<cv::Point> seeds = PixelsAt(m_seeds, image, m_image);
        cv::Mat seedImage;
        if (!m_seedImage.empty())
        {
            seedImage = ReadScalarsLike(m_seedImage, image, m_image);
            CheckDepth(m_seedImage, seedImage, {CV_8U, CV_16U, CV_16S, CV_32S});
            cv::findNonZero(seedImage, seeds);
        }
        cv::Mat const labels = Zones(AsFloatingPoint(image));
        cv::Mat const mask = m_isBase ? BaseSurface(image) : Mask(AsFloatingPoint(image), seeds, seedImage);

        if (!m_output.empty()) outputs.Write(m_output, mask);
        if (!m_zones.empty()) outputs.Write(m_zones, labels);
        if (!m_zonesPicture.empty()) outputs.Write(m_zonesPicture, PictureOfZones(labels));
        if (!m_picture.empty()) outputs.Write(m_picture, PictureOfMask(image, mask, seeds));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "zones  " << LargestLabel(labels) << "\nmask  " << cv::countNonZero(mask) << '\n';
    }

private:
    void DeclarePreparation(CLI::App & arguments)
    {
        arguments.add_flag("--fill-holes", m_fillsHoles, "first interpolate the empty pixels; needs --window");
        auto * const first = DeclareNamed<ProjectionType>(
            arguments, "--filter", m_projection,
            {{"closing-first", morvane::projection::ProjectionClosingFirst},
             {"opening-first", morvane::projection::ProjectionOpeningFirst}},
            "filter by squares of 3, 5, 7... pixels, each time closing-first or opening-first; needs --window");
        m_filterOption = first;
        m_windowOption = arguments
                             .add_option(
                                 "--window", m_window,
                                 "the largest square of the filter, and that of --fill-holes, in pixels; 3 or more")
                             ->check(CLI::Range(kSmallestWindow, kLargestWindow));
    }

    void DeclareSearch(CLI::App & arguments)
    {
        DeclareSeeds(arguments, m_seeds, "The mask is the zones with seeds; without any, the largest zone");
        arguments.add_option("--seeds", m_seedImage, "an image of integers, not 0 in the seeds, of the same size");
        auto * const base = arguments.add_flag("--base", m_isBase, "search for the base surface; needs --pixel-size");
        arguments.add_option("--pixel-size", m_pixelSize, "with --base: the side of a pixel, in the unit of the image")
            ->check(IsNumberAbove(0.0))
            ->needs(base);
        arguments
            .add_option(
                "--unit", m_unit,
                "with --base: what a unit of the image counts, 1000 by default. Zones are taken whose mean height is "
                "within 4000 of the floor, which is sought in cells of 25000: 4 m and 25 m for an image in metres")
            ->check(IsNumberAbove(0.0))
            ->needs(base);
        arguments.add_option("--area-limit", m_areaLimit, "with --base: zones must have more pixels, 100 by default")
            ->check(CLI::PositiveNumber)
            ->needs(base);
        arguments
            .add_option("--radius", m_radius, "with --base: how far around the mask slopes are tested, 20 by default")
            ->check(CLI::NonNegativeNumber)
            ->needs(base);
        arguments.add_option("--slope", m_slope, "with --base: the steepest slope that passes, 0.3 by default")
            ->check(CLI::NonNegativeNumber)
            ->needs(base);
    }

    void CheckSwitches() const
    {
        bool const needsWindow = m_fillsHoles || m_filterOption->count() > 0;
        bool const hasWindow = m_windowOption->count() > 0;
        if (needsWindow && !hasWindow) throw ProgramError("--fill-holes and --filter need --window");
        if (hasWindow && !needsWindow) throw ProgramError("--window is for --fill-holes and --filter");
        if (m_isBase && !m_pixelSize) throw ProgramError("--base needs --pixel-size");
        std::array const masks{m_isBase, !m_seeds.empty(), !m_seedImage.empty()};
        if (std::ranges::count(masks, true) > 1)
        {
            throw ProgramError("--seed, --seeds and --base exclude each other");
        }
    }

    [[nodiscard]] bool IsFiltered() const { return m_filterOption->count() > 0; }

    [[nodiscard]] cv::Mat Zones(cv::Mat const & image) const
    {
        cv::Mat filtered;
        cv::Mat labels;
        if (!morvane::ComputeQuasiFlatZones(
                image, m_projection, m_delta, m_connexity, m_window, m_fillsHoles, IsFiltered(), filtered, labels))
        {
            throw ProgramError(m_image, "was refused");
        }
        return labels;
    }

    [[nodiscard]] cv::Mat
    Mask(cv::Mat const & image, std::vector<cv::Point> const & points, cv::Mat const & seeds) const
    {
        cv::Mat filtered;
        cv::Mat mask;
        bool const done = m_seedImage.empty() ? morvane::QuasiFlatZonesPropagation(
                                                    image, m_projection, m_delta, m_connexity, m_window, m_fillsHoles,
                                                    IsFiltered(), points, filtered, mask)
                                              : morvane::QuasiFlatZonesPropagation(
                                                    image, m_projection, m_delta, m_connexity, m_window, m_fillsHoles,
                                                    IsFiltered(), seeds, filtered, mask);
        if (!done || mask.empty()) throw ProgramError(m_image, "was refused");
        return mask;
    }

    /// The search, in units that suit its limits.
    [[nodiscard]] cv::Mat BaseSurface(cv::Mat const & image) const
    {
        cv::Mat heights;
        image.convertTo(heights, CV_32F, m_unit);
        cv::Mat filtered;
        cv::Mat mask;
        if (!morvane::QuasiFlatZonesPropagation(
                heights, m_projection, m_delta * m_unit, m_connexity, m_window, m_fillsHoles, IsFiltered(), cv::Mat(),
                m_areaLimit, 0, m_radius, *m_pixelSize * m_unit, m_slope, filtered, mask))
        {
            throw ProgramError(m_image, "has no zone that could be a base surface");
        }
        return mask;
    }

    static constexpr int kLargestWindow = 1001;

    fs::path m_image;
    fs::path m_seedImage;
    fs::path m_output;
    fs::path m_zones;
    fs::path m_zonesPicture;
    fs::path m_picture;
    std::vector<std::string> m_seeds;
    morvane::connexity::eConnexityType m_connexity = morvane::connexity::eConnexity4;
    ProjectionType m_projection = morvane::projection::ProjectionClosingFirst;
    CLI::Option * m_filterOption = nullptr;
    CLI::Option * m_windowOption = nullptr;
    std::optional<double> m_pixelSize;
    double m_delta = 0.0;
    double m_unit = 1000.0;
    double m_slope = 0.3;
    int m_window = kSmallestWindow;
    int m_areaLimit = 100;
    int m_radius = 20;
    bool m_fillsHoles = false;
    bool m_isBase = false;
};

Registered<QuasiFlatCommand> const registered;

} // namespace

} // namespace program
