#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Images.h"
#include "morvane/support/Levels.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Progress.h"

#include <morvane/filters/NonLocalMeans.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <limits>
#include <optional>
#include <sstream>
#include <string>

namespace program
{

namespace
{

namespace fs = std::filesystem;
using namespace morvane::filters;

enum class Method
{
    Plain,
    Parallel,
    Iterative,
    MultiScale,
    MultiScaleParallel
};

struct Settings
{
    Method method = Method::Parallel;
    int patch = 5;
    int search = 21;
    float strength = 0.0F;
    std::optional<int> iterations;
    std::optional<int> levels;
};

constexpr int kIterations = 3;
constexpr int kLevels = 3;

bool IsMultiScale(Method method)
{
    return method == Method::MultiScale || method == Method::MultiScaleParallel;
}

/// One pass over an image, band by band, so that the part which is done is known.
///
/// Each band is filtered with the rows around it that its pixels look at, and those are then left out: the result is
/// that of the whole image.
///
/// @return false where a band was refused
bool FilterInBands(cv::Mat const & levels, Settings const & settings, Progress & progress, cv::Mat & filtered)
{
    bool const isParallel = settings.method == Method::Parallel;
    auto const filter = isParallel ? NLMeansParallel : NLMeans;
    // Enough for each thread to have something to do in a band.
    int const rowsOfBand = 32 * (isParallel ? std::max(cv::getNumThreads(), 1) : 1);
    int const margin = std::min(settings.patch / 2, levels.rows) + std::min(settings.search / 2, levels.rows);
    filtered.create(levels.size(), levels.type());
    for (int first = 0; first < levels.rows; first += rowsOfBand)
    {
        cv::Range const band(first, std::min(first + rowsOfBand, levels.rows));
        cv::Range const around(std::max(band.start - margin, 0), std::min(band.end + margin, levels.rows));
        cv::Mat part;
        if (!filter(levels.rowRange(around), settings.patch, settings.search, settings.strength, part)) return false;
        part.rowRange(band.start - around.start, band.end - around.start).copyTo(filtered.rowRange(band));
        progress.Set(static_cast<double>(band.end) / levels.rows);
    }
    return true;
}

bool Filter(cv::Mat const & levels, Settings const & settings, Progress & progress, cv::Mat & filtered)
{
    int const count = settings.levels.value_or(kLevels);
    filtered.create(levels.size(), levels.type());
    switch (settings.method)
    {
    case Method::Iterative:
        return NLMeansIterative(
            levels, settings.patch, settings.search, settings.strength, settings.iterations.value_or(kIterations),
            filtered);
    case Method::MultiScale:
        return MSD_NLMeans(levels, settings.patch, settings.search, settings.strength, count, filtered);
    case Method::MultiScaleParallel:
        return MSD_NLMeansParallel(levels, settings.patch, settings.search, settings.strength, count, filtered);
    case Method::Plain:
    case Method::Parallel:
        break;
    }
    return FilterInBands(levels, settings, progress, filtered);
}

/// Checks that the levels survive in 16 bits.
void Check16Bits(fs::path const & file, cv::Mat const & levels)
{
    using Limits = std::numeric_limits<short>;
    double least = 0.0;
    double greatest = 0.0;
    cv::minMaxIdx(levels, &least, &greatest);
    if (least >= Limits::min() && greatest <= Limits::max()) return;
    std::ostringstream reason;
    reason << std::fixed;
    reason.precision(0);
    reason << "has levels from " << least << " to " << greatest << "; the multi-scale methods take " << Limits::min()
           << " to " << Limits::max();
    throw ProgramError(file, reason.str());
}

class DenoiseCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "denoise"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Remove noise by non-local means: each pixel becomes a mean of those around it whose patches look alike";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option("image", m_image, "an image of one channel; empty pixels and NaN count as 0, like any value")
            ->required();
        DeclareSettings(arguments);
        DeclareScale(arguments, m_scale);
        DeclareProgress(arguments, m_isProgressWanted);
        arguments.add_option("-o,--output", m_output, "the filtered image, a TIFF of the image's type");
        arguments.add_option("--picture", m_picture, "a grey picture of it, over the range of the measured pixels");
    }

    void Run() override
    {
        CheckSettings();
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image});
        outputs.Declare(m_picture, {}, {m_image});

        cv::Mat const image = ReadScalars(m_image);
        cv::Mat const levels = SignedLevelsOf(m_image, image, m_scale);
        if (IsMultiScale(m_settings.method))
        {
            Check16Bits(m_image, levels);
            CheckHalvings(m_image, image, m_settings.levels.value_or(kLevels));
        }
        cv::Mat const filtered = Denoised(levels);
        cv::Mat const numbers = NumbersOf(filtered, image.type(), m_scale);

        if (!m_output.empty()) outputs.Write(m_output, numbers);
        if (!m_picture.empty()) outputs.Write(m_picture, GreyPicture(numbers, {.isOfMeasured = true}));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "changed  " << cv::countNonZero(filtered != levels) << '\n';
    }

private:
    void DeclareSettings(CLI::App & arguments)
    {
        DeclareNamed<Method>(
            arguments, "--method", m_settings.method,
            {{"plain", Method::Plain},
             {"parallel", Method::Parallel},
             {"iterative", Method::Iterative},
             {"multi-scale", Method::MultiScale},
             {"multi-scale-parallel", Method::MultiScaleParallel}},
            "parallel (the default): one pass on all threads; plain: the same on one thread; iterative: several passes "
            "in which a pixel counts more and more itself; multi-scale: over the levels of a pyramid, with some of the "
            "detail given back; multi-scale-parallel: likewise, with none given back");
        arguments
            .add_option(
                "--patch", m_settings.patch, "the side of the patches, 5 by default; an even one is raised by 1")
            ->check(CLI::Range(1, kLargestSide));
        arguments
            .add_option(
                "--search", m_settings.search,
                "the side of the square in which pixels are looked for, 21 by default; an even one is raised by 1")
            ->check(CLI::Range(1, kLargestSide));
        arguments
            .add_option(
                "--strength", m_settings.strength,
                "how far patches may differ that count, in levels: a third of the deviation of the noise keeps edges, "
                "all of it takes the last of the noise")
            ->check(IsNumberAbove(0.0))
            ->required();
        arguments
            .add_option(
                "--iterations", m_settings.iterations, "with --method iterative: the number of passes, 3 by default")
            ->check(CLI::Range(1, kMostIterations));
        arguments
            .add_option(
                "--levels", m_settings.levels,
                "with the multi-scale methods: how many times the image is halved, 3 by default")
            ->check(CLI::Range(1, kMostHalvings));
    }

    void CheckSettings() const
    {
        if (m_settings.iterations && m_settings.method != Method::Iterative)
        {
            throw ProgramError("--iterations goes with --method iterative");
        }
        if (m_settings.levels && !IsMultiScale(m_settings.method))
        {
            throw ProgramError("--levels goes with --method multi-scale and --method multi-scale-parallel");
        }
    }

    /// The line of the progress is gone before anything else is said.
    [[nodiscard]] cv::Mat Denoised(cv::Mat const & levels) const
    {
        Progress progress(Name(), m_isProgressWanted);
        cv::Mat filtered;
        if (!Filter(levels, m_settings, progress, filtered)) throw ProgramError(m_image, "was refused");
        progress.Finish();
        return filtered;
    }

    static constexpr int kLargestSide = 1023;
    static constexpr int kMostIterations = 1000;

    fs::path m_image;
    fs::path m_output;
    fs::path m_picture;
    Settings m_settings;
    std::optional<double> m_scale;
    bool m_isProgressWanted = false;
};

Registered<DenoiseCommand> const registered;

} // namespace

} // namespace program
