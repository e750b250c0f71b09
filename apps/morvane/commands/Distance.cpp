#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Shapes.h"

#include <morvane/geodesy/GeodesicOperators.h>

#include <opencv2/imgproc.hpp>

#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace program
{

namespace
{

namespace fs = std::filesystem;

/// 1 where a pixel is not 0, else 0: floats, in which distances are counted up to 2^24.
cv::Mat Indicator(cv::Mat const & image)
{
    cv::Mat indicator;
    cv::Mat((image != 0.0) & 1).convertTo(indicator, CV_32F);
    return indicator;
}

class DistanceCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "distance"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Count the steps from a marker to each pixel, on measured pixels alone";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option("image", m_image, "an image of one channel: paths lead over the pixels that are measured there")
            ->required();
        arguments.add_option(
            "--marker", m_marker, "where paths start: the measured pixels that are not 0 in an image of the same size");
        arguments.add_option("--from", m_from, "where paths start: column and row of a measured pixel, from 0")
            ->expected(2)
            ->type_name("X Y");
        DeclareShape(arguments, m_shape);
        arguments.add_option(
            "-o,--output", m_output,
            "the distances, a TIFF of floats: 1 at the marker, one more for each step, 0 where no path leads");
        arguments.add_option(
            "--picture", m_picture, "a picture of them in false colours, black at the marker and where no path leads");
    }

    void Run() override
    {
        CheckExactlyOne({{"--marker", !m_marker.empty()}, {"--from", !m_from.empty()}});
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image, m_marker});
        outputs.Declare(m_picture, {}, {m_image, m_marker});

        cv::Mat const image = ReadScalars(m_image);
        cv::Mat const mask = Indicator(image);
        cv::Mat distance;
        if (!morvane::geodesy::GeodesicDistance(MarkerOn(mask), mask, m_shape, distance))
        {
            throw ProgramError(m_image, "was refused");
        }
        double greatest = 0.0;
        cv::minMaxIdx(distance, nullptr, &greatest);

        if (!m_output.empty()) outputs.Write(m_output, distance);
        if (!m_picture.empty()) outputs.Write(m_picture, FalseColourPicture(distance, {.isOfMeasured = true}));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "greatest  " << static_cast<int>(greatest) << '\n';
    }

private:
    /// The marker inside the mask: what lies outside would not count as a distance of 1.
    [[nodiscard]] cv::Mat MarkerOn(cv::Mat const & mask) const
    {
        if (!m_marker.empty())
        {
            cv::Mat marker = Indicator(ReadScalarsLike(m_marker, mask, m_image)).mul(mask);
            if (cv::countNonZero(marker) == 0)
            {
                throw ProgramError(m_marker, "marks no pixel that is measured in " + m_image.string());
            }
            return marker;
        }
        cv::Point const from(m_from[0], m_from[1]);
        std::string const place = "column " + std::to_string(from.x) + ", row " + std::to_string(from.y);
        if (!cv::Rect(cv::Point(), mask.size()).contains(from))
        {
            throw ProgramError(m_image, place + " lies outside the image");
        }
        if (mask.at<float>(from) == 0.0F) throw ProgramError(m_image, "nothing was measured at " + place);
        cv::Mat marker = cv::Mat::zeros(mask.size(), CV_32FC1);
        marker.at<float>(from) = 1.0F;
        return marker;
    }

    fs::path m_image;
    fs::path m_marker;
    fs::path m_output;
    fs::path m_picture;
    std::vector<int> m_from;
    int m_shape = cv::MORPH_RECT;
};

Registered<DistanceCommand> const registered;

} // namespace

} // namespace program
