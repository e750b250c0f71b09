#include "morvane/Command.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Levels.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"

#include <morvane/connexity/AttributeOpening.h>

#include <filesystem>
#include <iostream>
#include <optional>

namespace program
{

namespace
{

namespace fs = std::filesystem;

class AttributeOpenCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "attribute-open"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Remove the bright components that measure less than a threshold";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments.add_option("image", m_image, "an image of one channel without negative numbers; NaN counts as 0")
            ->required();
        DeclareAttribute(arguments, m_attribute);
        arguments.add_option("--threshold", m_threshold, "the least measure that stays")->required();
        DeclareConnexity(arguments, m_connexity);
        DeclareScale(arguments, m_scale);
        arguments.add_option("-o,--output", m_output, "the filtered image, a TIFF of the image's type");
        arguments.add_option("--picture", m_picture, "a grey picture of it, over the range of the measured pixels");
    }

    void Run() override
    {
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image});
        outputs.Declare(m_picture, {}, {m_image});

        cv::Mat const image = ReadScalars(m_image);
        cv::Mat const levels = LevelsOf(m_image, image, m_scale);
        cv::Mat opened(levels.size(), levels.type());
        if (!morvane::connexity::AttributeOpening(levels, m_attribute, m_connexity, m_threshold, opened))
        {
            throw ProgramError(m_image, "was refused");
        }
        cv::Mat const numbers = NumbersOf(opened, image.type(), m_scale);

        if (!m_output.empty()) outputs.Write(m_output, numbers);
        if (!m_picture.empty()) outputs.Write(m_picture, GreyPicture(numbers, {.isOfMeasured = true}));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "changed  " << cv::countNonZero(opened != levels) << '\n';
    }

private:
    fs::path m_image;
    fs::path m_output;
    fs::path m_picture;
    morvane::common::eAttributeType m_attribute = morvane::common::eAttributeArea;
    unsigned int m_threshold = 0;
    morvane::connexity::eConnexityType m_connexity = morvane::connexity::eConnexity4;
    std::optional<double> m_scale;
};

Registered<AttributeOpenCommand> const registered;

} // namespace

} // namespace program
