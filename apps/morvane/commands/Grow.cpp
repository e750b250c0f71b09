#include "morvane/Command.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Zones.h"

#include <morvane/algorithm/RegionGrowing.h>

#include <filesystem>
#include <iostream>
#include <optional>

namespace program
{

namespace
{

namespace fs = std::filesystem;

class GrowCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "grow"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Split two images into common zones that stay near the values they begin with";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments.add_option("image", m_image, "an image of one channel; empty pixels are values like others")
            ->required();
        arguments.add_option("--second", m_second, "a second image of one channel, of the same size")->required();
        DeclareConnexity(arguments, m_connexity);
        arguments.add_option("--delta", m_delta, "how far a zone goes from its first pixel, in the unit of the image")
            ->required();
        arguments.add_option("--second-delta", m_secondDelta, "how far in the second image; else the same");
        arguments.add_option("--min-area", m_minimalArea, "keep zones of at least so many pixels")
            ->check(CLI::PositiveNumber);
        arguments.add_option("-o,--output", m_output, "the labels, 32-bit TIFF: zones from 1, 0 where there is none");
        arguments.add_option("--picture", m_picture, "a picture: a colour for each zone, black where there is none");
    }

    void Run() override
    {
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image, m_second});
        outputs.Declare(m_picture, {}, {m_image, m_second});

        cv::Mat const image = ReadImage(m_image);
        CheckChannels(m_image, image, {1});
        cv::Mat const second = ReadImageLike(m_second, image, m_image);
        CheckChannels(m_second, second, {1});
        cv::Mat labels(image.size(), CV_32SC1);
        auto const delta = static_cast<float>(m_delta);
        auto const secondDelta = static_cast<float>(m_secondDelta.value_or(m_delta));
        if (!morvane::algorithm::GrowRegion(image, second, m_connexity, delta, secondDelta, labels))
        {
            throw ProgramError(m_image, "was refused");
        }
        if (m_minimalArea > 1) DropSmallZones(m_minimalArea, labels);

        if (!m_output.empty()) outputs.Write(m_output, labels);
        if (!m_picture.empty()) outputs.Write(m_picture, PictureOfZones(labels));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "zones  " << LargestLabel(labels) << '\n';
    }

private:
    fs::path m_image;
    fs::path m_second;
    fs::path m_output;
    fs::path m_picture;
    morvane::connexity::eConnexityType m_connexity = morvane::connexity::eConnexity4;
    double m_delta = 0.0;
    std::optional<double> m_secondDelta;
    int m_minimalArea = 1;
};

Registered<GrowCommand> const registered;

} // namespace

} // namespace program
