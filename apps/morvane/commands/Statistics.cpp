#include "morvane/Command.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"

#include <morvane/filters/Statistics.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace program
{

namespace
{

namespace fs = std::filesystem;

/// The number with as many digits as the image's type has.
std::string Digits(double number, int depth)
{
    std::ostringstream text;
    text << std::setprecision(depth == CV_32F ? 7 : 10) << number;
    return text.str();
}

/// Checks that there is a range to scale to grey levels.
void CheckRange(fs::path const & file, cv::Mat const & image)
{
    double least = 0.0;
    double greatest = 0.0;
    cv::minMaxIdx(image, &least, &greatest);
    if (least == greatest)
    {
        throw ProgramError(
            file, "is flat: every pixel is " + Digits(least, image.depth()) + ", and there are no grey levels");
    }
    if (!std::isfinite(greatest - least)) throw ProgramError(file, "holds infinite numbers, and has no grey levels");
}

/// One of the statistics in a window.
struct Local
{
    std::string name;
    std::string help;
    cv::Mat image = {};
    fs::path output = {};
    fs::path picture = {};
};

class StatisticsCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "statistics"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Measure entropy, mean, deviation and median in a window around each pixel, and of the whole image";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option(
                "image", m_image,
                "an image of one channel; NaN counts as 0. Windows are measured in grey levels: its numbers times 256 "
                "over its range, modulo 256, 0 being empty")
            ->required();
        arguments
            .add_option(
                "--kernel", m_kernel,
                "the side of the window, which is a multiple of 4: 2 to 5 stand for 4 pixels, 6 to 9 for 8, and so on")
            ->required();
        for (Local & local : m_locals)
        {
            arguments.add_option("--" + local.name, local.output, local.help + ", a TIFF; 0 at empty pixels");
        }
        for (Local & local : m_locals)
        {
            arguments.add_option(
                "--" + local.name + "-picture", local.picture,
                "a picture of it in false colours, over the range of the pixels that are not 0");
        }
    }

    void Run() override
    {
        if (m_kernel < 2) throw ProgramError("--kernel " + std::to_string(m_kernel) + " is no window; it starts at 2");
        Outputs outputs;
        for (Local const & local : m_locals)
        {
            outputs.Declare(local.output, {".tif", ".tiff"}, {m_image});
            outputs.Declare(local.picture, {}, {m_image});
        }

        cv::Mat const image = ReadScalars(m_image);
        CheckRange(m_image, image);
        auto & [entropy, mean, deviation, median] = m_locals;
        if (!morvane::filters::LocalStatisticsNoZero(
                image, static_cast<unsigned int>(m_kernel), entropy.image, mean.image, deviation.image, median.image))
        {
            throw ProgramError(m_image, "was refused");
        }

        for (Local const & local : m_locals)
        {
            if (!local.output.empty()) outputs.Write(local.output, local.image);
            if (!local.picture.empty())
            {
                outputs.Write(local.picture, FalseColourPicture(local.image, {.isOfMeasured = true}));
            }
        }
        std::string const whole = OfWholeImage(image);
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << whole;
    }

private:
    [[nodiscard]] std::string OfWholeImage(cv::Mat const & image) const
    {
        double median = 0.0;
        double mean = 0.0;
        double deviation = 0.0;
        if (!morvane::filters::MedianNoZero(image, median) || !morvane::filters::MeanAndStdDev(image, mean, deviation))
        {
            throw ProgramError(m_image, "was refused");
        }
        auto const digits = [&image](double number) {
            return Digits(number, image.depth());
        };
        return "median     " + digits(median) + " of those above 0\nmean       " + digits(mean) + "\ndeviation  " +
               digits(deviation) + '\n';
    }

    fs::path m_image;
    int m_kernel = 0;
    std::array<Local, 4> m_locals{
        {{"entropy", "the entropy of the grey levels in nats, floats"},
         {"mean", "the mean of the grey levels, floats"},
         {"deviation", "their standard deviation, floats"},
         {"median", "the median of the grey levels above 0, 8 bits"}}};
};

Registered<StatisticsCommand> const registered;

} // namespace

} // namespace program
