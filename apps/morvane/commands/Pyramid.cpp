#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"

#include <morvane/filters/Sampling.h>

#include <cstddef>
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
using namespace morvane::filters;

enum class Reduction
{
    Mean,
    Or,
    Max,
    Min
};

bool Reduce(Reduction by, cv::Mat const & image, cv::Mat & low, cv::Mat & details)
{
    switch (by)
    {
    case Reduction::Or:
        return DownSamplingWithLogicalOr(image, low, details);
    case Reduction::Max:
        return DownSamplingWithMax(image, low, details);
    case Reduction::Min:
        return DownSamplingWithMin(image, low, details);
    case Reduction::Mean:
        break;
    }
    return DownSampling(image, low, details);
}

bool IsWhole(cv::Mat const & image)
{
    return image.depth() != CV_32F && image.depth() != CV_64F;
}

/// Wide enough for any difference of two pixels, so that nothing is clamped on the way back; in 32 bits what wraps on the
/// way down wraps back.
int DepthOfDetails(cv::Mat const & image)
{
    if (!IsWhole(image)) return image.depth();
    return image.depth() == CV_8U ? CV_16S : CV_32S;
}

/// A level, and what leads from it to the next finer one.
struct Level
{
    cv::Mat image;
    cv::Mat details; ///< of the size of the finer one
};

/// The levels under an image, the finest first.
std::vector<Level> LevelsUnder(fs::path const & file, cv::Mat const & image, Reduction by, int count)
{
    std::vector<Level> levels;
    for (int i = 0; i < count; ++i)
    {
        cv::Mat const & finer = levels.empty() ? image : levels.back().image;
        Level level{{}, cv::Mat::zeros(finer.size(), DepthOfDetails(image))};
        if (!Reduce(by, finer, level.image, level.details)) throw ProgramError(file, "was refused");
        levels.push_back(level);
    }
    return levels;
}

/// The way back up. The last row or column of an odd number is in no block, and comes from the finer level itself.
cv::Mat Restored(fs::path const & file, cv::Mat const & image, std::vector<Level> const & levels)
{
    cv::Mat restored = levels.back().image;
    for (std::size_t i = levels.size(); i > 0; --i)
    {
        cv::Mat finer = (i > 1 ? levels[i - 2].image : image).clone();
        finer(cv::Rect(0, 0, 2 * restored.cols, 2 * restored.rows)).setTo(0);
        if (!UpSampling(restored, levels[i - 1].details, finer)) throw ProgramError(file, "was refused");
        restored = finer;
    }
    return restored;
}

/// The image with the levels beside it, one under the other; 0 elsewhere.
cv::Mat SideBySide(cv::Mat const & image, std::vector<Level> const & levels)
{
    cv::Mat all = cv::Mat::zeros(image.rows, image.cols + levels.front().image.cols, image.type());
    image.copyTo(all(cv::Rect(cv::Point(), image.size())));
    cv::Point corner(image.cols, 0);
    for (Level const & level : levels)
    {
        level.image.copyTo(all(cv::Rect(corner, level.image.size())));
        corner.y += level.image.rows;
    }
    return all;
}

/// A line for each level.
std::string Describe(std::vector<Level> const & levels)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(1);
    for (std::size_t i = 0; i < levels.size(); ++i)
    {
        cv::Mat const & details = levels[i].details;
        double const share = static_cast<double>(cv::countNonZero(details)) / static_cast<double>(details.total());
        text << "level " << i + 1 << "  " << DescribeSize(levels[i].image) << ", " << 100.0 * share
             << " % of its details are not 0\n";
    }
    return text.str();
}

class PyramidCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "pyramid"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Halve an image again and again, by one value for each block of 2 by 2 pixels";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option("image", m_image, "an image of one channel; empty pixels and NaN count as 0, like any value")
            ->required();
        DeclareNamed<Reduction>(
            arguments, "--by", m_by,
            {{"mean", Reduction::Mean}, {"or", Reduction::Or}, {"max", Reduction::Max}, {"min", Reduction::Min}},
            "the value of a block: mean, max, min, or the bitwise or (of integers)")
            ->required();
        arguments.add_option("--levels", m_levels, "how many times the image is halved")
            ->check(CLI::Range(1, kMostHalvings))
            ->required();
        arguments.add_option("-o,--output", m_output, "the coarsest level, a TIFF of the image's type");
        arguments.add_option("--picture", m_picture, "a grey picture of the image with all levels beside it");
    }

    void Run() override
    {
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image});
        outputs.Declare(m_picture, {}, {m_image});

        cv::Mat const image = ReadScalars(m_image);
        if (m_by == Reduction::Or) CheckDepth(m_image, image, {CV_8U, CV_16U, CV_16S, CV_32S});
        CheckHalvings(m_image, image, m_levels);
        std::vector<Level> const levels = LevelsUnder(m_image, image, m_by, m_levels);
        std::string const wayBack = m_by == Reduction::Mean && IsWhole(image) ? WayBack(image, levels) : "";

        if (!m_output.empty()) outputs.Write(m_output, levels.back().image);
        if (!m_picture.empty())
        {
            outputs.Write(m_picture, GreyPicture(SideBySide(image, levels), {.isOfMeasured = true}));
        }
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << Describe(levels) << wayBack;
    }

private:
    [[nodiscard]] std::string WayBack(cv::Mat const & image, std::vector<Level> const & levels) const
    {
        int const different = cv::countNonZero(Restored(m_image, image, levels) != image);
        return "restored  " + (different == 0 ? "exactly" : "but for " + std::to_string(different) + " pixels") +
               ", by details of " + cv::typeToString(levels.front().details.type()) + '\n';
    }

    fs::path m_image;
    fs::path m_output;
    fs::path m_picture;
    Reduction m_by = Reduction::Mean;
    int m_levels = 0;
};

Registered<PyramidCommand> const registered;

} // namespace

} // namespace program
