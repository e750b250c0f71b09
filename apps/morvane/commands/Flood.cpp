#include "morvane/Command.h"
#include "morvane/support/Choices.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Extrema.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"

#include <morvane/connexity/Flooding.h>

#include <filesystem>
#include <iostream>
#include <optional>
#include <unordered_set>

namespace program
{

namespace
{

namespace fs = std::filesystem;

/// How many different labels above 0 there are.
std::size_t CountDistinctLabels(cv::Mat1i const & labels)
{
    std::unordered_set<int> distinct;
    for (int const label : labels)
    {
        if (label > 0) distinct.insert(label);
    }
    return distinct.size();
}

class FloodCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "flood"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Let markers spread over an image, dark pixels first, until they meet";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option(
                "image", m_image,
                "an image of one channel; NaN counts as 0. Images that are not 8-bit are flooded as their grey map "
                "over the range of the measured pixels; deltas and dynamics are in the unit of the image itself")
            ->required();
        DeclareMarkers(arguments);
        DeclareZones(arguments);
        arguments.add_option(
            "-o,--output", m_output,
            "the labels, 32-bit TIFF; without --delta and --no-zero, lines between them and the border are -1");
        arguments.add_option("--picture", m_picture, "a picture: a colour for each label, black where there is none");
    }

    void Run() override
    {
        CheckSwitches();
        Outputs outputs;
        outputs.Declare(m_output, {".tif", ".tiff"}, {m_image, m_markers, m_second});
        outputs.Declare(m_picture, {}, {m_image, m_markers, m_second});

        cv::Mat const image = ReadScalars(m_image);
        cv::Mat const second = m_second.empty() ? cv::Mat() : ReadScalarsLike(m_second, image, m_image);
        cv::Mat labels = MarkersOf(image);
        Flood(image, second, labels);

        if (!m_output.empty()) outputs.Write(m_output, labels);
        if (!m_picture.empty()) outputs.Write(m_picture, PictureOfZones(labels));
        outputs.Commit();

        PrintImage(m_image, image);
        std::cout << "labels  " << CountDistinctLabels(labels) << '\n';
    }

private:
    void DeclareMarkers(CLI::App & arguments)
    {
        arguments.add_option(
            "--markers", m_markers, "the markers: an image of the same size whose numbers above 0 are labels");
        arguments
            .add_option(
                "--dynamic", m_dynamic,
                "the markers: the regional minima of at least this dynamic, as of `extrema --minima`")
            ->check(IsNumberAbove(kDynamicTolerance));
    }

    void DeclareZones(CLI::App & arguments)
    {
        auto * const delta = arguments.add_option(
            "--delta", m_delta,
            "give each zone in which neighbours differ by at most so much, inside one basin, the highest marker in it");
        arguments.add_flag(
            "--no-zero", m_noZero,
            "empty pixels belong to no zone and separate zones; without --delta, zones are those of measured pixels");
        auto * const second =
            arguments
                .add_option(
                    "--second", m_second,
                    "with --delta: a second image of the same size, in which neighbours must be alike as well")
                ->needs(delta);
        arguments.add_option("--second-delta", m_secondDelta, "the bound in the second image; else the same")
            ->needs(second);
        DeclareConnexity(arguments, m_connexity, "with --dynamic, --delta or --no-zero, the neighbourhood");
    }

    [[nodiscard]] bool HasZones() const { return m_delta || m_noZero; }

    void CheckSwitches() const
    {
        CheckExactlyOne({{"--markers", !m_markers.empty()}, {"--dynamic", m_dynamic.has_value()}});
        bool const isNeeded = m_dynamic || HasZones();
        if (isNeeded && !m_connexity) throw ProgramError("--connexity is needed by --dynamic, --delta and --no-zero");
        if (!isNeeded && m_connexity)
        {
            throw ProgramError("--connexity needs --dynamic, --delta or --no-zero; markers alone spread by sides");
        }
    }

    [[nodiscard]] cv::Mat MarkersOf(cv::Mat const & image) const
    {
        if (m_dynamic) return LabelExtremaOfDynamic(image, Extremum::Minimum, *m_dynamic, *m_connexity);
        cv::Mat const labels = ReadLabels(m_markers);
        CheckSize(m_markers, labels, image, m_image);
        cv::Mat markers = cv::max(labels, 0);
        if (cv::countNonZero(markers) == 0) throw ProgramError(m_markers, "holds no marker: no number is above 0");
        return markers;
    }

    void Flood(cv::Mat const & image, cv::Mat const & second, cv::Mat & labels) const
    {
        if (HasZones())
        {
            if (!FloodZones(image, second, labels)) throw ProgramError(m_image, "was refused");
            return;
        }
        cv::Mat grey = image.depth() == CV_8U ? image : GreyPicture(image, {.isOfMeasured = true});
        if (!morvane::connexity::Flooding(grey, labels))
        {
            throw ProgramError(m_image, "no marker can spread: those on the image's border are lost");
        }
    }

    [[nodiscard]] bool FloodZones(cv::Mat const & image, cv::Mat const & second, cv::Mat & labels) const
    {
        using namespace morvane::connexity;
        if (!m_delta) return FloodingNoZero(image, *m_connexity, labels);
        if (second.empty())
        {
            return m_noZero ? FloodingDeltaNoZero(image, *m_connexity, *m_delta, labels)
                            : FloodingDelta(image, *m_connexity, *m_delta, labels);
        }
        double const secondDelta = m_secondDelta.value_or(*m_delta);
        return m_noZero ? FloodingDeltaNoZero(image, second, *m_connexity, *m_delta, secondDelta, labels)
                        : FloodingDelta(image, second, *m_connexity, *m_delta, secondDelta, labels);
    }

    fs::path m_image;
    fs::path m_markers;
    fs::path m_second;
    fs::path m_output;
    fs::path m_picture;
    std::optional<double> m_dynamic;
    std::optional<double> m_delta;
    std::optional<double> m_secondDelta;
    std::optional<morvane::connexity::eConnexityType> m_connexity;
    bool m_noZero = false;
};

Registered<FloodCommand> const registered;

} // namespace

} // namespace program
