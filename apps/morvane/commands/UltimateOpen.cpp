#include "morvane/Command.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Levels.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"

#include <morvane/connexity/UltimateAttributeOpening.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>

namespace program
{

namespace
{

namespace fs = std::filesystem;

class UltimateOpenCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "ultimate-open"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Find for each pixel the largest residue of growing openings, and the size at which it appears";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments.add_option("image", m_image, "an image of one channel without negative numbers; NaN counts as 0")
            ->required();
        DeclareAttribute(arguments, m_attribute);
        DeclareConnexity(arguments, m_connexity);
        auto * const limit =
            arguments.add_option("--max", m_limit, "components that measure so much or more count for nothing");
        arguments
            .add_option(
                "--delta", m_delta,
                "with --max: components whose measures differ by less count as one, else equal ones")
            ->needs(limit);
        DeclareScale(arguments, m_scale);
        arguments.add_option("--residues", m_residues, "the largest residues, a TIFF of the image's type");
        arguments.add_option(
            "--sizes", m_sizes, "the measures at which they appear, plus one, 32-bit TIFF; 0 for none");
        arguments.add_option("--residue-picture", m_residuePicture, "a grey picture of the residues");
        arguments.add_option(
            "--size-picture", m_sizePicture, "a picture of the sizes in false colours, black for none");
    }

    void Run() override
    {
        Outputs outputs;
        outputs.Declare(m_residues, {".tif", ".tiff"}, {m_image});
        outputs.Declare(m_sizes, {".tif", ".tiff"}, {m_image});
        outputs.Declare(m_residuePicture, {}, {m_image});
        outputs.Declare(m_sizePicture, {}, {m_image});

        cv::Mat const image = ReadScalars(m_image);
        cv::Mat const levels = LevelsOf(m_image, image, m_scale);
        cv::Mat residues(levels.size(), levels.type());
        cv::Mat sizes(levels.size(), CV_32SC1);
        if (!Open(levels, residues, sizes)) throw ProgramError(m_image, "was refused");
        cv::Mat const numbers = NumbersOf(residues, image.type(), m_scale);

        if (!m_residues.empty()) outputs.Write(m_residues, numbers);
        if (!m_sizes.empty()) outputs.Write(m_sizes, sizes);
        if (!m_residuePicture.empty()) outputs.Write(m_residuePicture, GreyPicture(numbers, {}));
        if (!m_sizePicture.empty())
        {
            outputs.Write(m_sizePicture, FalseColourPicture(sizes, {.isOfMeasured = true}));
        }
        outputs.Commit();

        PrintImage(m_image, image);
        double largest = 0.0;
        cv::minMaxIdx(sizes, nullptr, &largest);
        std::cout << "largest  " << std::max(static_cast<int>(largest) - 1, 0) << '\n';
    }

private:
    bool Open(cv::Mat const & levels, cv::Mat & residues, cv::Mat & sizes) const
    {
        using morvane::connexity::UltimateAttributeOpening;
        if (m_delta)
        {
            return UltimateAttributeOpening(
                levels, m_attribute, *m_delta, m_connexity, m_limit.value_or(-1), residues, sizes);
        }
        if (m_limit) return UltimateAttributeOpening(levels, m_attribute, m_connexity, *m_limit, residues, sizes);
        return UltimateAttributeOpening(levels, m_attribute, m_connexity, residues, sizes);
    }

    fs::path m_image;
    fs::path m_residues;
    fs::path m_sizes;
    fs::path m_residuePicture;
    fs::path m_sizePicture;
    morvane::common::eAttributeType m_attribute = morvane::common::eAttributeArea;
    morvane::connexity::eConnexityType m_connexity = morvane::connexity::eConnexity4;
    std::optional<int> m_limit;
    std::optional<int> m_delta;
    std::optional<double> m_scale;
};

Registered<UltimateOpenCommand> const registered;

} // namespace

} // namespace program
