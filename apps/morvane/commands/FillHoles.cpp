#include "morvane/Command.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Shapes.h"

#include <morvane/geodesy/Reconstruction.h>

#include <opencv2/imgproc.hpp>

#include <filesystem>
#include <iostream>
#include <optional>

namespace program
{

namespace
{

namespace fs = std::filesystem;

class FillHolesCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "fill-holes"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Raise hollows to the lowest rim over which they would run out";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option(
                "image", m_image,
                "an image of one channel; NaN counts as 0. Images of floats are filled to the whole number below their "
                "greatest value at most")
            ->required();
        arguments.add_option(
            "--seeds", m_seeds,
            "where hollows run out: the pixels that are not 0 in an image of the same size; else the image's edge");
        auto * const shape = DeclareShape(arguments, m_shape);
        DeclareConnexity(arguments, m_connexity, "by one priority flood over the neighbourhood")->excludes(shape);
        arguments.add_option("-o,--output", m_output, "the filled image, a TIFF of the image's type");
        arguments.add_option("--picture", m_picture, "a grey picture of it, over the range of the measured pixels");
    }

    void Run() override
    {
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image, m_seeds});
        outputs.Declare(m_picture, {}, {m_image, m_seeds});

        cv::Mat const image = ReadScalars(m_image);
        CheckDepth(m_image, image, m_connexity ? PriorityFloodDepths() : MorphologyDepths());
        cv::Mat const filled = Filled(image);

        if (!m_output.empty()) outputs.Write(m_output, filled);
        if (!m_picture.empty()) outputs.Write(m_picture, GreyPicture(filled, {.isOfMeasured = true}));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "filled  " << cv::countNonZero(filled != image) << '\n';
    }

private:
    [[nodiscard]] cv::Mat Filled(cv::Mat const & image) const
    {
        using namespace morvane::geodesy;
        cv::Mat filled;
        bool done = false;
        if (m_seeds.empty())
        {
            done = m_connexity ? FillHolesbyOverBuild(image, *m_connexity, filled)
                               : FillHolesbyReconstruction(image, m_shape, filled);
        }
        else
        {
            cv::Mat const seeds = ReadScalarsLike(m_seeds, image, m_image) != 0.0;
            if (cv::countNonZero(seeds) == 0) throw ProgramError(m_seeds, "holds no seed: all its pixels are 0");
            done = m_connexity ? FillHolesbyOverBuild(image, seeds, *m_connexity, filled)
                               : FillHolesbyReconstruction(image, seeds, m_shape, filled);
        }
        if (!done) throw ProgramError(m_image, "was refused");
        return filled;
    }

    fs::path m_image;
    fs::path m_seeds;
    fs::path m_output;
    fs::path m_picture;
    int m_shape = cv::MORPH_RECT;
    std::optional<morvane::connexity::eConnexityType> m_connexity;
};

Registered<FillHolesCommand> const registered;

} // namespace

} // namespace program
