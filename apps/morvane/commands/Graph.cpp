#include "morvane/Command.h"
#include "morvane/support/Connexities.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"
#include "morvane/support/Zones.h"

#include <morvane/connexity/Labelling.h>
#include <morvane/connexity/ZoneGraph.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace program
{

namespace
{

namespace fs = std::filesystem;
using morvane::connexity::Graph;

/// Zones, which of them touch, and where they are shown.
struct PlacedGraph
{
    Graph graph;
    std::vector<std::optional<cv::Point>> places; ///< by label

    [[nodiscard]] cv::Point PlaceOf(std::size_t label) const { return places[label].value(); }
};

/// Calls @p use with the labels at the two ends of each edge.
template <class Use>
void ForEachEdge(Graph const & graph, Use && use)
{
    auto const [first, last] = boost::edges(graph.BoostGraph());
    for (auto edge = first; edge != last; ++edge)
    {
        use(boost::source(*edge, graph.BoostGraph()), boost::target(*edge, graph.BoostGraph()));
    }
}

std::size_t CountZones(PlacedGraph const & zones)
{
    return static_cast<std::size_t>(
        std::count_if(zones.places.begin(), zones.places.end(), [](auto const & place) { return place.has_value(); }));
}

/// The graph in the language of Graphviz, in which rows grow upwards.
///
/// @param rows of the image where the places are to be told
std::string DotOf(PlacedGraph const & zones, std::optional<int> const & rows)
{
    std::ostringstream text;
    text << "graph zones {\n";
    for (std::size_t label = 0; label < zones.places.size(); ++label)
    {
        if (!zones.places[label]) continue;
        text << "  " << label;
        if (rows)
        {
            cv::Point const place = zones.PlaceOf(label);
            text << " [pos=\"" << place.x << ',' << *rows - 1 - place.y << "\"]";
        }
        text << ";\n";
    }
    ForEachEdge(
        zones.graph, [&](std::size_t one, std::size_t other) { text << "  " << one << " -- " << other << ";\n"; });
    text << "}\n";
    return text.str();
}

void DrawEdge(cv::Mat & picture, cv::Point const & from, cv::Point const & to, bool wraps)
{
    cv::Scalar const white = cv::Scalar::all(255);
    cv::Point const turn(picture.cols, 0);
    int const way = to.x - from.x;
    if (!wraps || 2 * std::abs(way) <= picture.cols)
    {
        cv::line(picture, from, to, white, 1, cv::LINE_AA);
        return;
    }
    // Round the seam it is shorter: out at one border and in at the other.
    cv::Point const shift = way > 0 ? -turn : turn;
    cv::line(picture, from, to + shift, white, 1, cv::LINE_AA);
    cv::line(picture, from - shift, to, white, 1, cv::LINE_AA);
}

/// The zones with a dot on each, and lines between those that touch.
cv::Mat PictureOfGraph(cv::Mat const & labels, PlacedGraph const & zones, bool wraps)
{
    constexpr int kDot = 2;
    constexpr double kDimmed = 0.5;
    cv::Mat picture = PictureOfZones(labels) * kDimmed;
    ForEachEdge(zones.graph, [&](std::size_t one, std::size_t other) {
        DrawEdge(picture, zones.PlaceOf(one), zones.PlaceOf(other), wraps);
    });
    for (auto const & place : zones.places)
    {
        if (!place) continue;
        cv::circle(picture, *place, kDot + 1, cv::Scalar::all(0), cv::FILLED);
        cv::circle(picture, *place, kDot, cv::Scalar::all(255), cv::FILLED);
    }
    return picture;
}

class GraphCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "graph"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Tell which zones touch, as a graph in the language of Graphviz";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option(
                "zones", m_zones,
                "an image of labels, as `label` writes it; 0 and below is no zone. With --flat or --zone-delta, an "
                "image whose zones are labelled first")
            ->required();
        DeclareConnexity(arguments, m_connexity);
        DeclareZones(arguments);
        DeclareCondition(arguments);
        arguments.add_option(
            "-o,--output", m_output, "the file for the graph, in place of the standard output: DOT, vertices by label");
        arguments.add_flag(
            "--positions", m_hasPositions, "say where each zone lies, in pixels, as `neato -n` takes it");
        arguments.add_option(
            "--picture", m_picture, "a picture: the zones, a dot on each, lines between those that touch");
    }

    void Run() override
    {
        CheckSwitches();
        Outputs outputs;
        outputs.DeclareText(m_output, {m_zones, m_image});
        outputs.Declare(m_picture, {}, {m_zones, m_image});

        cv::Mat const read = IsLabelledHere() ? ReadImage(m_zones) : ReadLabels(m_zones);
        cv::Mat const labels = LabelsOf(read);
        PlacedGraph const zones{Extract(labels, ImageOf(read)), PlacesOf(labels)};
        std::string const dot = DotOf(zones, m_hasPositions ? std::optional(labels.rows) : std::nullopt);

        if (!m_picture.empty()) outputs.Write(m_picture, PictureOfGraph(labels, zones, IsWrapped(labels.size())));
        if (!m_output.empty()) outputs.WriteText(m_output, dot);
        outputs.Commit();
        if (m_output.empty())
        {
            std::cout << dot;
            return;
        }
        PrintImage(m_zones, read);
        std::cout << "zones  " << CountZones(zones) << '\n' << "edges  " << zones.graph.EdgeCount() << '\n';
    }

private:
    void DeclareZones(CLI::App & arguments)
    {
        auto * const flat = arguments.add_flag("--flat", m_isFlat, "the zones: those of equal values");
        arguments
            .add_option("--zone-delta", m_zoneDelta, "the zones: those in which neighbours differ by at most so much")
            ->excludes(flat);
        arguments.add_flag(
            "--no-zero", m_noZero, "with --flat or --zone-delta: empty pixels belong to no zone and separate zones");
    }

    void DeclareCondition(CLI::App & arguments)
    {
        auto * const delta = arguments.add_option(
            "--delta", m_delta,
            "only edges between zones of which touching pixels somewhere differ by at most so much");
        arguments
            .add_option(
                "--min-delta", m_minDelta,
                "only edges between zones of which touching pixels somewhere differ by more than so much")
            ->excludes(delta);
        arguments.add_option(
            "--image", m_image,
            "the image of --delta and --min-delta, of one channel; needed where the zones are not labelled first, else "
            "the same");
    }

    [[nodiscard]] bool IsLabelledHere() const { return m_isFlat || m_zoneDelta; }

    [[nodiscard]] bool HasCondition() const { return m_delta || m_minDelta; }

    void CheckSwitches() const
    {
        if (m_noZero && !IsLabelledHere()) throw ProgramError("--no-zero needs --flat or --zone-delta");
        if (!m_image.empty() && !HasCondition()) throw ProgramError("--image needs --delta or --min-delta");
        if (m_image.empty() && HasCondition() && !IsLabelledHere())
        {
            throw ProgramError("--delta and --min-delta need --image, as labels are no values");
        }
    }

    [[nodiscard]] bool IsWrapped(cv::Size const & size) const
    {
        return NeighbourhoodOver(morvane::connexity::Connexity(m_connexity), size).WrapsInX();
    }

    [[nodiscard]] cv::Mat LabelsOf(cv::Mat const & read) const
    {
        using namespace morvane::connexity;
        if (!IsLabelledHere())
        {
            CheckDenseLabels(m_zones, read);
            return read;
        }
        cv::Mat labels(read.size(), CV_32SC1);
        bool done = false;
        if (m_zoneDelta)
        {
            done = m_noZero ? LabelDeltaFlatZonesNoZero(read, m_connexity, *m_zoneDelta, labels)
                            : LabelDeltaFlatZones(read, m_connexity, *m_zoneDelta, labels);
        }
        else
        {
            done =
                m_noZero ? LabelFlatZonesNoZero(read, m_connexity, labels) : LabelFlatZones(read, m_connexity, labels);
        }
        if (!done) throw ProgramError(m_zones, "was refused");
        return labels;
    }

    /// The image that the edges depend on, none without a condition.
    [[nodiscard]] cv::Mat ImageOf(cv::Mat const & read) const
    {
        if (!HasCondition()) return {};
        cv::Mat image = m_image.empty() ? read : ReadImageLike(m_image, read, m_zones);
        CheckChannels(m_image.empty() ? m_zones : m_image, image, {1});
        return image;
    }

    [[nodiscard]] Graph Extract(cv::Mat const & labels, cv::Mat const & image) const
    {
        using namespace morvane::connexity;
        Graph graph;
        bool done = false;
        if (m_delta)
        {
            done = ExtractGraphWithDeltaConnectedCondition(image, labels, m_connexity, *m_delta, graph);
        }
        else if (m_minDelta)
        {
            done = ExtractGraphWithDeltaNoConnectedCondition(image, labels, m_connexity, *m_minDelta, graph);
        }
        else
        {
            done = ExtractGraph(labels, m_connexity, graph);
        }
        if (!done) throw ProgramError(m_zones, "was refused");
        return graph;
    }

    fs::path m_zones;
    fs::path m_image;
    fs::path m_output;
    fs::path m_picture;
    morvane::connexity::eConnexityType m_connexity = morvane::connexity::eConnexity4;
    bool m_isFlat = false;
    bool m_noZero = false;
    bool m_hasPositions = false;
    std::optional<double> m_zoneDelta;
    std::optional<double> m_delta;
    std::optional<double> m_minDelta;
};

Registered<GraphCommand> const registered;

} // namespace

} // namespace program
