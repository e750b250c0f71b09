#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/Pixels.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Zones.h"

#include <morvane/algorithm/RegionGrowing.h>

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

class WandCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "wand"; }

    [[nodiscard]] std::string Summary() const override { return "Grow a zone of similar pixels from each seed"; }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option(
                "image", m_image,
                "an image of one channel, with --flood also of three; empty pixels are values like others")
            ->required();
        DeclareSeeds(arguments, m_seeds, "A seed in a zone adds none")->required();
        DeclareRules(arguments);
        arguments.add_option(
            "-o,--output", m_output, "the labels, 32-bit TIFF: zones from 1 in the order of the seeds, 0 elsewhere");
        arguments.add_option("--picture", m_picture, "a picture: a colour for each zone, black where there is none");
    }

    void Run() override
    {
        CheckSwitches();
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image, m_second});
        outputs.Declare(m_picture, {}, {m_image, m_second});

        cv::Mat const image = ReadImage(m_image);
        CheckImage(m_image, image);
        cv::Mat second;
        if (!m_second.empty())
        {
            second = ReadImageLike(m_second, image, m_image);
            CheckImage(m_second, second);
        }
        std::vector<cv::Point> const seeds = PixelsAt(m_seeds, image, m_image);
        cv::Mat const labels = m_isFlood ? Flooded(image, second, seeds.front()) : Grown(image, second, seeds);

        if (!m_output.empty()) outputs.Write(m_output, labels);
        if (!m_picture.empty()) outputs.Write(m_picture, PictureOfZones(labels));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "zones  " << LargestLabel(labels) << '\n' << "pixels  " << cv::countNonZero(labels) << '\n';
    }

private:
    void DeclareRules(CLI::App & arguments)
    {
        auto * const connexity = DeclareConnexity(arguments, m_connexity, "without --flood, the neighbourhood");
        auto * const delta =
            arguments.add_option("--delta", m_delta, "zones grow over steps of at most so much between neighbours");
        auto * const second = arguments.add_option(
            "--second", m_second,
            "with --delta: a second image of the same size, in which steps must be small as well");
        second->needs(delta);
        arguments.add_option("--second-delta", m_secondDelta, "the bound in the second image; else the same")
            ->needs(second);
        auto * const budget = arguments.add_option(
            "--budget", m_budget, "in place of --delta: zones grow while their values sum to less than this");
        arguments
            .add_flag(
                "--lowest-first", m_isLowestFirst,
                "with --budget: zones grow from the lowest pixel to the next, in place of the nearest")
            ->needs(budget);
        arguments
            .add_flag(
                "--flood", m_isFlood,
                "with --delta and one seed: grow by sides and corners, over steps that are small in every channel")
            ->needs(delta)
            ->excludes(connexity);
    }

    void CheckSwitches() const
    {
        CheckExactlyOne({{"--delta", m_delta.has_value()}, {"--budget", m_budget.has_value()}});
        if (!m_isFlood && !m_connexity) throw ProgramError("--connexity is needed without --flood");
        if (!m_isFlood) return;
        if (m_seeds.size() > 1) throw ProgramError("--flood takes one --seed");
        if (*m_delta < 0.0) throw ProgramError("--delta must not be negative with --flood");
        if (m_secondDelta.value_or(0.0) < 0.0) throw ProgramError("--second-delta must not be negative with --flood");
    }

    void CheckImage(fs::path const & file, cv::Mat const & image) const
    {
        if (!m_isFlood)
        {
            CheckChannels(file, image, {1});
            return;
        }
        CheckChannels(file, image, {1, 3});
        CheckDepth(file, image, {CV_8U, CV_32S, CV_32F});
    }

    [[nodiscard]] double SecondDelta() const { return m_secondDelta.value_or(*m_delta); }

    [[nodiscard]] cv::Mat Flooded(cv::Mat const & image, cv::Mat const & second, cv::Point const & seed) const
    {
        using morvane::algorithm::MagicWand;
        cv::Scalar const delta = cv::Scalar::all(*m_delta);
        // The wand over two images takes its size from here.
        cv::Mat mask(image.size(), CV_8UC1);
        if (second.empty())
        {
            MagicWand(image, delta, seed, mask);
        }
        else
        {
            MagicWand(image, second, delta, cv::Scalar::all(SecondDelta()), seed, mask);
        }
        // The mask has a frame of one pixel.
        cv::Mat const inside = mask(cv::Rect(cv::Point(1, 1), image.size())) != 0;
        cv::Mat labels = cv::Mat::zeros(image.size(), CV_32SC1);
        labels.setTo(1, inside);
        return labels;
    }

    [[nodiscard]] cv::Mat
    Grown(cv::Mat const & image, cv::Mat const & second, std::vector<cv::Point> const & seeds) const
    {
        using namespace morvane::algorithm;
        cv::Mat labels(image.size(), CV_32SC1);
        bool done = false;
        if (m_budget)
        {
            auto const budget = static_cast<float>(*m_budget);
            done = m_isLowestFirst ? MagicWandBasedOnPriorityAccumulator(image, *m_connexity, seeds, budget, labels)
                                   : MagicWandBasedOnAccumulator(image, *m_connexity, seeds, budget, labels);
        }
        else
        {
            auto const delta = static_cast<float>(*m_delta);
            auto const secondDelta = static_cast<float>(SecondDelta());
            done = second.empty() ? MagicWand(image, *m_connexity, seeds, delta, labels)
                                  : MagicWand(image, second, *m_connexity, seeds, delta, secondDelta, labels);
        }
        if (!done) throw ProgramError(m_image, "was refused");
        return labels;
    }

    fs::path m_image;
    fs::path m_second;
    fs::path m_output;
    fs::path m_picture;
    std::vector<std::string> m_seeds;
    std::optional<morvane::connexity::eConnexityType> m_connexity;
    std::optional<double> m_delta;
    std::optional<double> m_secondDelta;
    std::optional<double> m_budget;
    bool m_isLowestFirst = false;
    bool m_isFlood = false;
};

Registered<WandCommand> const registered;

} // namespace

} // namespace program
