#include "morvane/Command.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"

#include <filesystem>
#include <utility>

namespace program
{

namespace
{

namespace fs = std::filesystem;

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
        arguments.add_option("--range", m_cut, "cut the range: where it starts, where it ends")->type_name("LOW HIGH");
    }

    void Run() override
    {
        if (m_grey.empty() && m_colour.empty()) throw ProgramError("there is nothing to do without --grey or --colour");
        Outputs outputs;
        outputs.Declare(m_grey, {}, {m_image});
        outputs.Declare(m_colour, {}, {m_image});

        cv::Mat const image = ReadScalars(m_image);
        PictureRange const range{m_noZero, m_cut.first, m_cut.second};
        if (!m_grey.empty()) outputs.Write(m_grey, GreyPicture(image, range));
        if (!m_colour.empty()) outputs.Write(m_colour, FalseColourPicture(image, range));
        outputs.Commit();
        PrintImage(m_image, image);
    }

private:
    fs::path m_image;
    fs::path m_grey;
    fs::path m_colour;
    std::pair<double, double> m_cut{PictureRange().low, PictureRange().high};
    bool m_noZero = false;
};

Registered<MapCommand> const registered;

} // namespace

} // namespace program
