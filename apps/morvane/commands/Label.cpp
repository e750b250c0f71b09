#include "morvane/Command.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Zones.h"

#include <morvane/connexity/Labelling.h>

#include <filesystem>
#include <iostream>
#include <optional>

namespace program
{

namespace
{

namespace fs = std::filesystem;

/// What makes pixels neighbours of one zone.
struct ZoneRules
{
    morvane::connexity::eConnexityType connexity = morvane::connexity::eConnexity4;
    bool flat = false;
    std::optional<double> delta;
    std::optional<double> secondDelta; ///< on the second image
    bool noZero = false;
};

bool LabelOne(cv::Mat const & image, ZoneRules const & rules, cv::Mat & labels)
{
    using namespace morvane::connexity;
    if (rules.delta)
    {
        return rules.noZero ? LabelDeltaFlatZonesNoZero(image, rules.connexity, *rules.delta, labels)
                            : LabelDeltaFlatZones(image, rules.connexity, *rules.delta, labels);
    }
    if (rules.flat)
    {
        return rules.noZero ? LabelFlatZonesNoZero(image, rules.connexity, labels)
                            : LabelFlatZones(image, rules.connexity, labels);
    }
    return Label(image, rules.connexity, labels);
}

bool LabelTwo(cv::Mat const & image, cv::Mat const & second, ZoneRules const & rules, cv::Mat & labels)
{
    using namespace morvane::connexity;
    if (!rules.delta) return LabelFlatZonesNoZero(image, second, rules.connexity, labels);
    double const delta = *rules.delta;
    double const secondDelta = rules.secondDelta.value_or(delta);
    return rules.noZero ? LabelDeltaFlatZonesNoZero(image, second, rules.connexity, delta, secondDelta, labels)
                        : LabelDeltaFlatZones(image, second, rules.connexity, delta, secondDelta, labels);
}

class LabelCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "label"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Give each connected zone, or each flat zone, a label of its own";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments.add_option("image", m_image, "an image, as any that OpenCV reads")->required();
        DeclareConnexity(arguments, m_rules.connexity);
        DeclareRules(arguments);
        arguments.add_option("--min-area", m_minimalArea, "keep zones of at least so many pixels")
            ->check(CLI::PositiveNumber);
        arguments.add_option("-o,--output", m_output, "the labels, 32-bit TIFF: zones from 1, 0 where there is none");
        arguments.add_option("--picture", m_picture, "a picture: a colour for each zone, black where there is none");
    }

    void Run() override
    {
        CheckRules();
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image, m_second});
        outputs.Declare(m_picture, {}, {m_image, m_second});

        cv::Mat const image = ReadImage(m_image);
        cv::Mat labels = LabelsOf(image);
        if (m_minimalArea > 1) DropSmallZones(m_minimalArea, labels);

        if (!m_output.empty()) outputs.Write(m_output, labels);
        if (!m_picture.empty()) outputs.Write(m_picture, PictureOfZones(labels));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "zones  " << LargestLabel(labels) << '\n';
    }

private:
    void DeclareRules(CLI::App & arguments)
    {
        auto * const flat = arguments.add_flag("--flat", m_rules.flat, "zones of equal values, empty ones included");
        auto * const delta = arguments.add_option(
            "--delta", m_rules.delta, "zones in which neighbours differ by at most so much, empty ones included");
        delta->excludes(flat);
        arguments.add_flag(
            "--no-zero", m_rules.noZero, "with --flat or --delta: empty pixels belong to no zone and separate zones");
        auto * const second = arguments.add_option(
            "--second", m_second, "a second image of the same size, in which neighbours must be alike as well");
        arguments
            .add_option(
                "--second-delta", m_rules.secondDelta, "with --delta: the bound in the second image; else the same")
            ->needs(second)
            ->needs(delta);
    }

    void CheckRules() const
    {
        if (m_second.empty()) return;
        if (!m_rules.flat && !m_rules.delta) throw ProgramError("--second needs --delta, or --flat and --no-zero");
        if (m_rules.flat && !m_rules.noZero) throw ProgramError("--second with --flat needs --no-zero");
    }

    [[nodiscard]] cv::Mat LabelsOf(cv::Mat const & image) const
    {
        cv::Mat labels(image.size(), CV_32SC1);
        if (m_second.empty())
        {
            if (!LabelOne(image, m_rules, labels)) throw ProgramError(m_image, "was refused");
            return labels;
        }
        cv::Mat const second = ReadImageLike(m_second, image, m_image);
        if (m_rules.flat)
        {
            CheckChannels(m_image, image, {1});
            CheckChannels(m_second, second, {1});
        }
        CheckChannels(m_second, second, {image.channels()});
        if (!LabelTwo(image, second, m_rules, labels)) throw ProgramError(m_image, "was refused");
        return labels;
    }

    fs::path m_image;
    fs::path m_second;
    fs::path m_output;
    fs::path m_picture;
    ZoneRules m_rules;
    int m_minimalArea = 1;
};

Registered<LabelCommand> const registered;

} // namespace

} // namespace program
