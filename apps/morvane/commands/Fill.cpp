#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"

#include <morvane/algorithm/Filling.h>

#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace program
{

namespace
{

namespace fs = std::filesystem;

/// Where the values come from.
enum class Method
{
    Closing,
    Dilation,
    Erosion,
    Opening,
    Mean,
    Median,
    MedianNoZero,
    HolesMax,
    HolesMin
};

/// The methods that look at a neighbourhood; the others look at a square.
bool HasNeighbourhood(Method method)
{
    return method == Method::Mean || method == Method::Median || method == Method::MedianNoZero;
}

bool IsOfHoles(Method method)
{
    return method == Method::HolesMax || method == Method::HolesMin;
}

class FillCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "fill"; }

    [[nodiscard]] std::string Summary() const override { return "Give empty pixels values from what lies around them"; }

    void Declare(CLI::App & arguments) override
    {
        arguments.add_option("image", m_image, "an image of one channel; NaN counts as 0")->required();
        DeclareNamed<Method>(
            arguments, "--method", m_method,
            {{"closing", Method::Closing},
             {"dilation", Method::Dilation},
             {"erosion", Method::Erosion},
             {"opening", Method::Opening},
             {"mean", Method::Mean},
             {"median", Method::Median},
             {"median-no-zero", Method::MedianNoZero},
             {"holes-max", Method::HolesMax},
             {"holes-min", Method::HolesMin}},
            "what is filled in: from a square around, closing (the level of the rim, where the square does not fit in) "
            "or dilation (the highest); where the largest value stands for what is empty, erosion (the lowest) or "
            "opening; from a neighbourhood, mean (of what is measured), median (of all, one above the middle) or "
            "median-no-zero (with less weight for zeros); of whole holes, whatever their size, holes-max or holes-min "
            "(the highest or lowest at their rim)")
            ->required();
        DeclareRules(arguments);
        arguments.add_option("-o,--output", m_output, "the filled image, a TIFF of the image's type");
        arguments.add_option("--picture", m_picture, "a grey picture of it, over the range of the measured pixels");
    }

    void Run() override
    {
        CheckSwitches();
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image, m_mask});
        outputs.Declare(m_picture, {}, {m_image, m_mask});

        cv::Mat const image = ReadScalars(m_image);
        if (!HasNeighbourhood(m_method)) CheckDepth(m_image, image, MorphologyDepths());
        cv::Mat const filled = Filled(image);

        if (!m_output.empty()) outputs.Write(m_output, filled);
        if (!m_picture.empty()) outputs.Write(m_picture, GreyPicture(filled, {.isOfMeasured = true}));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "filled  " << cv::countNonZero(filled != image) << '\n';
    }

private:
    void DeclareRules(CLI::App & arguments)
    {
        constexpr int kLeastSize = 3;
        constexpr int kLargestSize = 32767;
        arguments
            .add_option(
                "--size", m_size, "the side of the square, 3 unless it is given; 3 or 5 for holes-max and holes-min")
            ->check(CLI::Range(kLeastSize, kLargestSize));
        DeclareConnexity(arguments, m_connexity, "for mean, median and median-no-zero, the neighbourhood");
        arguments.add_option(
            "--mask", m_mask,
            "for mean: an image of the same size that is 0 where pixels are to be filled; else the image itself");
    }

    void CheckSwitches() const
    {
        constexpr int kLargerMask = 5;
        bool const isNear = HasNeighbourhood(m_method);
        if (isNear && !m_connexity) throw ProgramError("--connexity is needed by mean, median and median-no-zero");
        if (isNear && m_size) throw ProgramError("--size does not go with mean, median and median-no-zero");
        if (!isNear && m_connexity) throw ProgramError("--connexity goes with mean, median and median-no-zero alone");
        if (!m_mask.empty() && m_method != Method::Mean) throw ProgramError("--mask goes with mean alone");
        if (IsOfHoles(m_method) && Size() != kDefaultSize && Size() != kLargerMask)
        {
            throw ProgramError("--size must be 3 or 5 for holes-max and holes-min");
        }
    }

    [[nodiscard]] int Size() const { return m_size.value_or(kDefaultSize); }

    /// Not 0 where a pixel is to stay, in the depth of the image.
    [[nodiscard]] cv::Mat MaskOf(cv::Mat const & image) const
    {
        if (m_mask.empty()) return image;
        cv::Mat mask;
        cv::Mat(ReadScalarsLike(m_mask, image, m_image) != 0.0).convertTo(mask, image.depth());
        return mask;
    }

    [[nodiscard]] cv::Mat Filled(cv::Mat const & image) const
    {
        cv::Mat filled(image.size(), image.type());
        if (!Fill(image, filled)) throw ProgramError(m_image, "was refused");
        return filled;
    }

    [[nodiscard]] bool Fill(cv::Mat const & image, cv::Mat & filled) const
    {
        using namespace morvane::algorithm;
        switch (m_method)
        {
        case Method::Closing:
            return FillImageWithClosing(image, filled, Size());
        case Method::Dilation:
            return FillImageWithDilation(image, filled, Size());
        case Method::Erosion:
            return FillImageWithErosion(image, filled, Size());
        case Method::Opening:
            return FillImageWithOpening(image, filled, Size());
        case Method::Mean:
            return FillImageWithMean(image, MaskOf(image), filled, *m_connexity);
        case Method::Median:
            return FillImageWithMedian(image, filled, *m_connexity);
        case Method::MedianNoZero:
            return FillImageWithMedianNoZero(image, filled, *m_connexity);
        default:
            return FillHoles(image, filled);
        }
    }

    [[nodiscard]] bool FillHoles(cv::Mat const & image, cv::Mat & filled) const
    {
        using namespace morvane::algorithm;
        // The library finds values for holes among floats alone; these hold all that 8 and 16 bits do.
        cv::Mat numbers;
        image.convertTo(numbers, image.depth() == CV_64F ? CV_64F : CV_32F);
        cv::Mat whole;
        bool const done = m_method == Method::HolesMax ? FillHolesInterpolationWithMax(numbers, whole, Size())
                                                       : FillHolesInterpolationWithMin(numbers, whole, Size());
        whole.convertTo(filled, image.depth());
        return done;
    }

    static constexpr int kDefaultSize = 3;

    fs::path m_image;
    fs::path m_mask;
    fs::path m_output;
    fs::path m_picture;
    Method m_method = Method::Closing;
    std::optional<int> m_size;
    std::optional<morvane::connexity::eConnexityType> m_connexity;
};

Registered<FillCommand> const registered;

} // namespace

} // namespace program
