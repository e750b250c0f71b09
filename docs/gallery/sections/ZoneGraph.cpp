#include "LabelStep.h"

#include <string>
#include <vector>

namespace gallery
{

namespace
{

void GraphStep(
    Studio & studio, std::string const & title, std::string const & text, std::vector<std::string> const & switches)
{
    std::string const name = "graph-" + std::to_string(studio.NextNumber());
    std::vector<std::string> arguments{"graph"};
    arguments.insert(arguments.end(), switches.begin(), switches.end());
    arguments.insert(arguments.end(), {"-o", name + ".dot", "--picture", name + ".png"});
    studio.Step(title, text, arguments, {{name + ".png", "A dot for each zone, a line for each two that touch"}});
}

void DrawGraph(Studio & studio)
{
    studio.ThePage().BeginSection(
        "The zone graph",
        "ExtractGraph tells which zones of a label image touch, as a graph of Boost.Graph: a vertex for each label, an "
        "edge for each two that are neighbours somewhere. `graph` writes it for Graphviz.");
    std::string const labels = LabelStep(
        studio, "Surfaces of the room", "Zones in which neither depth nor intensity jumps.", "room_depth.tif",
        {"room_depth-preview.png", "Depth in the room"},
        {"--connexity", "8-wrapped", "--delta", "0.05", "--no-zero", "--second", "room_intensity.png", "--second-delta",
         "3000", "--min-area", "200"});
    std::vector<std::string> const shared{labels, "--connexity", "24-interleaved-wrapped"};
    auto const with = [&](std::vector<std::string> more) {
        more.insert(more.begin(), shared.begin(), shared.end());
        return more;
    };
    GraphStep(
        studio, "Which of them touch",
        "With a reach of two pixels, over the lines of lost echoes between them. An edge that is shorter round the "
        "seam leaves at one border and comes in at the other.",
        with({}));
    GraphStep(
        studio, "What stands before what",
        "Edges with a jump: somewhere along the border, depth differs by more than 30 cm from pixel to pixel, because "
        "one thing hides a part of the other.",
        with({"--image", "room_depth.tif", "--min-delta", "0.3"}));
    GraphStep(
        studio, "What meets in space",
        "Edges without a jump: somewhere, depths differ by 5 cm or less, as at the corners of the room.",
        with({"--image", "room_depth.tif", "--delta", "0.05"}));
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (own.image.channels() != 1) return;
    studio.ThePage().BeginSection("The zone graph", "Which zones touch, of those that have 500 pixels or more.");
    Stretch const stretch = StretchOf(own.image);
    std::string const labels = LabelStep(
        studio, "Zones", "Neighbours differ by at most a fiftieth of the range of the image.", own.file.string(),
        {"own-relief-preview.png", "The image"},
        {"--connexity", "8", "--delta", Number((stretch.high - stretch.low) / 50.0), "--no-zero", "--min-area", "500"});
    GraphStep(studio, "Which of them touch", "With a reach of two pixels.", {labels, "--connexity", "24-interleaved"});
}

RegisteredSection const registered({160, DrawGraph, DrawUserImage});

} // namespace

} // namespace gallery
