#include "morvane/support/Extrema.h"
#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"

#include <filesystem>
#include <iostream>
#include <optional>

namespace program
{

namespace
{

namespace fs = std::filesystem;

class ExtremaCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "extrema"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Label the regional maxima or minima, all of them or those that stand out";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option("image", m_image, "an image of one channel; empty pixels and NaN count as 0, like any value")
            ->required();
        arguments.add_flag("--minima", m_minima, "the minima, in place of the maxima");
        DeclareConnexity(arguments, m_connexity);
        arguments
            .add_option(
                "--dynamic", m_dynamic,
                "only those from which every path to a higher pixel (lower, for minima) goes down (up) by so much at "
                "least, within 0.001; paths go by sides with --connexity 4 and 4-wrapped, else by sides and corners, "
                "and never across the seam")
            ->check(IsNumberAbove(kDynamicTolerance));
        arguments.add_option("-o,--output", m_output, "the labels, 32-bit TIFF: extrema from 1, 0 elsewhere");
        arguments.add_option("--picture", m_picture, "a picture: a colour for each extremum, black elsewhere");
    }

    void Run() override
    {
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image});
        outputs.Declare(m_picture, {}, {m_image});

        cv::Mat const image = ReadScalars(m_image);
        Extremum const kind = m_minima ? Extremum::Minimum : Extremum::Maximum;
        cv::Mat const labels = m_dynamic ? LabelExtremaOfDynamic(image, kind, *m_dynamic, m_connexity)
                                         : LabelExtrema(image, kind, m_connexity);
        double count = 0.0;
        cv::minMaxIdx(labels, nullptr, &count);

        if (!m_output.empty()) outputs.Write(m_output, labels);
        if (!m_picture.empty()) outputs.Write(m_picture, PictureOfZones(labels));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << (m_minima ? "minima  " : "maxima  ") << static_cast<int>(count) << '\n';
    }

private:
    fs::path m_image;
    fs::path m_output;
    fs::path m_picture;
    morvane::connexity::eConnexityType m_connexity = morvane::connexity::eConnexity4;
    std::optional<double> m_dynamic;
    bool m_minima = false;
};

Registered<ExtremaCommand> const registered;

} // namespace

} // namespace program
