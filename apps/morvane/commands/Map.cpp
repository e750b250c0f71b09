#include "morvane/Command.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/ProgramError.h"

#include <morvane/visual/ColorMaps.h>

#include <filesystem>
#include <limits>
#include <utility>

namespace program
{

namespace
{

namespace fs = std::filesystem;

/// The image with 0 in place of NaN, for which the maps have no place: it counts as nothing measured elsewhere.
cv::Mat WithoutNaN(cv::Mat const & image)
{
    cv::Mat isNaN;
    cv::compare(image, image, isNaN, cv::CMP_NE);
    cv::Mat numbers = image.clone();
    numbers.setTo(0.0, isNaN);
    return numbers;
}

class MapCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "map"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Make a grey or a false-colour picture of an image of one channel";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments.add_option("image", m_image, "an image of one channel")->required();
        arguments.add_option("--grey", m_grey, "the grey picture: black is low, white is high");
        arguments.add_option(
            "--colour,--color", m_colour,
            "the false-colour picture; black is below the range, white at its upper end and above");
        arguments.add_flag(
            "--no-zero", m_noZero,
            "the range is that of the measured pixels alone; for --colour, a scale "
            "from black over blue, cyan, green and yellow to red");
        arguments.add_option("--range", m_range, "cut the range: where it starts, where it ends")
            ->type_name("LOW HIGH");
    }

    void Run() override
    {
        if (m_grey.empty() && m_colour.empty()) throw ProgramError("there is nothing to do without --grey or --colour");
        Outputs outputs;
        outputs.Declare(m_grey, {}, {m_image});
        outputs.Declare(m_colour, {}, {m_image});

        cv::Mat const image = ReadImage(m_image);
        CheckChannels(m_image, image, {1});
        cv::Mat const numbers = WithoutNaN(image);
        if (!m_grey.empty()) outputs.Write(m_grey, GreyPicture(numbers));
        if (!m_colour.empty()) outputs.Write(m_colour, ColourPicture(numbers));
        outputs.Commit();
        PrintImage(m_image, image);
    }

private:
    [[nodiscard]] cv::Mat GreyPicture(cv::Mat const & image) const
    {
        using namespace morvane::visual;
        cv::Mat picture(image.size(), CV_8UC1);
        auto const [low, high] = m_range;
        bool const done =
            m_noZero ? GrayMapNoZero(image, picture, low, high, true) : GrayMap(image, picture, low, high, true);
        if (!done) throw ProgramError(m_image, "was refused");
        return picture;
    }

    [[nodiscard]] cv::Mat ColourPicture(cv::Mat const & image) const
    {
        using namespace morvane::visual;
        cv::Mat picture(image.size(), CV_8UC3);
        auto const [low, high] = m_range;
        bool const done =
            m_noZero ? ColorMapNoZero(image, picture, low, high, true) : ColorMap(image, picture, low, high, true);
        if (!done) throw ProgramError(m_image, "was refused");
        return picture;
    }

    fs::path m_image;
    fs::path m_grey;
    fs::path m_colour;
    bool m_noZero = false;
    std::pair<double, double> m_range{std::numeric_limits<double>::lowest(), std::numeric_limits<double>::max()};
};

Registered<MapCommand> const registered;

} // namespace

} // namespace program
