#include "morvane/Command.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"

#include <morvane/connexity/Labelling.h>

#include <filesystem>
#include <iostream>

namespace program
{

namespace
{

class LabelCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "label"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Give each connected zone of measured pixels a label of its own";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments.add_option("image", m_image, "an image, as any that OpenCV reads")->required();
        DeclareConnexity(arguments, m_connexity);
        arguments.add_option("-o,--output", m_output, "the labels, 32-bit TIFF: zones from 1, 0 where there is none");
        arguments.add_option("--picture", m_picture, "a picture: a colour for each zone, black where there is none");
    }

    void Run() override
    {
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image});
        outputs.Declare(m_picture, {}, {m_image});

        cv::Mat const image = ReadImage(m_image);
        cv::Mat labels(image.size(), CV_32SC1);
        if (!morvane::connexity::Label(image, m_connexity, labels)) throw ProgramError(m_image, "was refused");
        double zones = 0.0;
        cv::minMaxIdx(labels, nullptr, &zones);

        if (!m_output.empty()) outputs.Write(m_output, labels);
        if (!m_picture.empty()) outputs.Write(m_picture, PictureOfZones(labels));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "zones  " << static_cast<int>(zones) << '\n';
    }

private:
    std::filesystem::path m_image;
    std::filesystem::path m_output;
    std::filesystem::path m_picture;
    morvane::connexity::eConnexityType m_connexity = morvane::connexity::eConnexity4;
};

Registered<LabelCommand> const registered;

} // namespace

} // namespace program
