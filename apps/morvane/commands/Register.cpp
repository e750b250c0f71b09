#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Images.h"
#include "morvane/support/Interruption.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Progress.h"
#include "morvane/support/Registration.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <limits>
#include <optional>

namespace program
{

namespace
{

namespace fs = std::filesystem;

/// The range of the measured heights of two images.
struct HeightRange
{
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();

    void Add(cv::Mat const & heights)
    {
        cv::Mat const measured = heights != 0.0;
        if (cv::countNonZero(measured) == 0) return;
        double least = 0.0;
        double greatest = 0.0;
        cv::minMaxLoc(heights, &least, &greatest, nullptr, nullptr, measured);
        low = std::min(low, least);
        high = std::max(high, greatest);
    }
};

class RegisterCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "register"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Find how one image of heights from above lies on another: turned and shifted";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option("reference", m_reference, "heights from above, an image of one channel; 0 is not measured")
            ->required();
        arguments
            .add_option(
                "moving", m_moving, "heights in the same unit and in pixels of the same size, turned and shifted")
            ->required();
        arguments
            .add_option(
                "--height-step", m_levels.step,
                "heights between two multiples of it count as equal; a 24th of the range by default")
            ->check(IsNumberAbove(0.0));
        arguments
            .add_option(
                "--structure", m_levels.structure,
                "count only pixels around which heights differ by so much and more, of 3 x 3: what stands on the "
                "ground, not the ground")
            ->check(IsNumberAbove(0.0));
        arguments
            .add_option(
                "--margin", m_margin,
                "how far the moving image may reach over the reference, as a share of its diagonal, 1 by default")
            ->check(CLI::Range(0.0, kLargestMargin));
        DeclareProgress(arguments, m_isProgressWanted);
        arguments.add_option(
            "--picture", m_picture,
            "a picture of both: the reference violet, the moving image green, grey where they agree");
    }

    void Run() override
    {
        Outputs outputs;
        outputs.Declare(m_picture, {}, {m_reference, m_moving});

        cv::Mat const reference = ReadScalars(m_reference);
        cv::Mat const moving = ReadScalars(m_moving);
        Pose const pose = Find(reference, moving);

        if (!m_picture.empty()) outputs.Write(m_picture, Overlay(reference, moving, pose));
        outputs.Commit();

        PrintImage(m_reference, reference);
        PrintImage(m_moving, moving);
        std::cout << "angle  " << pose.angle << "\nmiddle  " << pose.middle.x << "  " << pose.middle.y << "\nshift  "
                  << pose.middle.x - reference.cols * 0.5 << "  " << pose.middle.y - reference.rows * 0.5 << "\nscore  "
                  << pose.score << '\n';
        if (!pose.isFinest) std::cout << "search  interrupted: the best so far\n";
    }

private:
    /// The line of the progress is gone before anything else is said.
    [[nodiscard]] Pose Find(cv::Mat const & reference, cv::Mat const & moving)
    {
        constexpr double kLevels = 24.0;
        HeightRange range;
        range.Add(reference);
        range.Add(moving);
        HeightLevels levels = m_levels;
        if (levels.step == 0.0) levels.step = std::max((range.high - range.low) / kLevels, kLeastStep);

        Interruption const interruption;
        Progress progress(Name(), m_isProgressWanted);
        auto const report = [&](double share) {
            progress.Set(share);
            return !Interruption::IsRequested();
        };
        auto const pose =
            FindPose(LevelsOf(reference, range.low, levels), LevelsOf(moving, range.low, levels), m_margin, report);
        progress.Finish(pose && !pose->isFinest ? "interrupted" : "done");
        if (!pose && Interruption::IsRequested()) throw ProgramError("interrupted before a pose was found");
        if (!pose) throw ProgramError(m_moving, "has nothing that equals something of the reference");
        return *pose;
    }

    /// Greys in which the lowest height can be told from what was not measured.
    [[nodiscard]] static cv::Mat Greys(cv::Mat const & heights)
    {
        constexpr double kShare = 0.7;
        constexpr double kDarkest = 76.0;
        cv::Mat greys;
        GreyPicture(heights, {.isOfMeasured = true}).convertTo(greys, CV_8U, kShare, kDarkest);
        greys.setTo(0, heights == 0.0);
        return greys;
    }

    [[nodiscard]] static cv::Mat Overlay(cv::Mat const & reference, cv::Mat const & moving, Pose const & pose)
    {
        return OverlayOf(Greys(reference), Greys(moving), pose);
    }

    static constexpr double kLargestMargin = 4.0;
    static constexpr double kLeastStep = 1e-6;

    fs::path m_reference;
    fs::path m_moving;
    fs::path m_picture;
    HeightLevels m_levels;
    double m_margin = 1.0;
    bool m_isProgressWanted = false;
};

Registered<RegisterCommand> const registered;

} // namespace

} // namespace program
