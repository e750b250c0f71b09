#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/Planes.h"
#include "morvane/support/ProgramError.h"

#include <morvane/features/Normals.h>

#include <opencv2/core.hpp>

#include <filesystem>
#include <iostream>

namespace program
{

namespace
{

namespace fs = std::filesystem;

constexpr int kLargestKernel = 1000;

/// The slopes in false colours from blue for 0 to white for the steepest, black where there is none.
cv::Mat PictureOfSlopes(cv::Mat const & slope)
{
    double steepest = 0.0;
    cv::minMaxIdx(slope, nullptr, &steepest);
    // The first fifth of the scale, black to blue, stays unused: its foot is a row of its own.
    constexpr double kFoot = 1.0;
    double const level = kFoot + (steepest > 0.0 ? steepest / 4.0 : 1.0);
    cv::Mat numbers = slope + level;
    numbers.setTo(0.0, slope < 0.0);
    numbers.push_back(cv::Mat(1, slope.cols, CV_32FC1, cv::Scalar(kFoot)));
    return FalseColourPicture(numbers, {.isOfMeasured = true}).rowRange(0, slope.rows);
}

class SlopeCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "slope"; }

    [[nodiscard]] std::string Summary() const override { return "Find the slope of a height field in degrees"; }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option(
                "image", m_image, "heights over a regular grid, one channel; those of exactly 0 count as no points")
            ->required();
        arguments.add_option(
            "--mask", m_mask,
            "where heights were measured: the pixels that are not 0 in an image of the same size; else those of the "
            "image itself");
        arguments
            .add_option("--pixel-size", m_pixelSize, "distance of neighbouring pixels, in the unit of the heights")
            ->required()
            ->check(IsNumberAbove(0.0));
        arguments
            .add_option(
                "--kernel", m_kernel,
                "side of the square whose heights fill a gap, in pixels, 3 by default; gaps themselves have no slope")
            ->check(CLI::Range(1, kLargestKernel));
        DeclareLengthScale(arguments, m_scale, "heights and pixel size");
        arguments.add_option(
            "-o,--output", m_output,
            "the slopes, 0 to 90 degrees, a TIFF of floats: -1 where nothing was measured or no plane fits");
        arguments.add_option(
            "--rms", m_rms,
            "the root mean square distance of the points from their plane, in the unit of the scaled heights, a TIFF "
            "of floats; 0 where there is no slope");
        arguments.add_option(
            "--picture", m_picture,
            "a picture of the slopes in false colours: blue is level, the steepest is white, black where there is "
            "none");
    }

    void Run() override
    {
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image, m_mask});
        outputs.Declare(m_rms, {".tif", ".tiff"}, {m_image, m_mask});
        outputs.Declare(m_picture, {}, {m_image, m_mask});

        cv::Mat const image = ReadScalars(m_image);
        cv::Mat const heights = ScaledLengths(image, CV_32F, m_scale);
        cv::Mat const mask = (m_mask.empty() ? heights : ReadScalarsLike(m_mask, image, m_image)) != 0.0;
        cv::Mat normals;
        cv::Mat slope;
        cv::Mat rms;
        auto const pixelSize = static_cast<float>(m_pixelSize * m_scale);
        if (!morvane::features::ComputeNormalSlopeAndRms(heights, mask, pixelSize, m_kernel, normals, slope, rms))
        {
            throw ProgramError(m_image, "was refused");
        }
        cv::Mat const hasSlope = slope >= 0.0;
        rms.setTo(0.0, ~hasSlope);

        if (!m_output.empty()) outputs.Write(m_output, slope);
        if (!m_rms.empty()) outputs.Write(m_rms, rms);
        if (!m_picture.empty()) outputs.Write(m_picture, PictureOfSlopes(slope));
        outputs.Commit();

        int const measured = cv::countNonZero(mask);
        int const slopes = cv::countNonZero(hasSlope);
        PrintImage(m_image, image);
        std::cout << "measured  " << measured << "\nslopes  " << slopes << "\nmean slope  "
                  << cv::mean(slope, hasSlope)[0] << '\n';
        if (measured > 0 && slopes == 0) PrintAdviceOnScale();
    }

private:
    fs::path m_image;
    fs::path m_mask;
    fs::path m_output;
    fs::path m_rms;
    fs::path m_picture;
    double m_pixelSize = 0.0;
    unsigned int m_kernel = 3;
    double m_scale = 1.0;
};

Registered<SlopeCommand> const registered;

} // namespace

} // namespace program
