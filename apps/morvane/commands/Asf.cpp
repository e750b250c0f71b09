#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Shapes.h"

#include <morvane/filters/AlternatingSequentialFilters.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>

namespace program
{

namespace
{

namespace fs = std::filesystem;

class AsfCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "asf"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Smooth an image by closings and openings in turns, with elements that grow";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments.add_option("image", m_image, "an image of one channel; empty pixels and NaN count as 0")->required();
        arguments
            .add_option(
                "--size", m_size, "the side of the largest element; of an even one, the odd one below it counts")
            ->check(CLI::Range(3, kLargestElement))
            ->required();
        DeclareShape(arguments, m_shape);
        DeclareNamed<bool>(
            arguments, "--first", m_isCloseFirst, {{"close", true}, {"open", false}},
            "what each turn begins with: close (the default), against dark details, or open, against bright ones");
        arguments.add_option("-o,--output", m_output, "the filtered image, a TIFF of the image's type");
        arguments.add_option("--picture", m_picture, "a grey picture of it, over the range of the measured pixels");
    }

    void Run() override
    {
        using namespace morvane::filters;
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image});
        outputs.Declare(m_picture, {}, {m_image});

        cv::Mat const image = ReadScalars(m_image);
        CheckDepth(m_image, image, MorphologyDepths());
        if (std::min(image.rows, image.cols) < m_size)
        {
            throw ProgramError(
                m_image, "is " + DescribeSize(image) + ", smaller than an element of --size " + std::to_string(m_size));
        }
        cv::Mat smooth;
        bool const isDone =
            m_isCloseFirst ? ASF_Close(image, smooth, m_size, m_shape) : ASF_Open(image, smooth, m_size, m_shape);
        if (!isDone) throw ProgramError(m_image, "was refused");

        if (!m_output.empty()) outputs.Write(m_output, smooth);
        if (!m_picture.empty()) outputs.Write(m_picture, GreyPicture(smooth, {.isOfMeasured = true}));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "changed  " << cv::countNonZero(smooth != image) << '\n';
    }

private:
    static constexpr int kLargestElement = 1023;

    fs::path m_image;
    fs::path m_output;
    fs::path m_picture;
    int m_size = 0;
    int m_shape = cv::MORPH_RECT;
    bool m_isCloseFirst = true;
};

Registered<AsfCommand> const registered;

} // namespace

} // namespace program
