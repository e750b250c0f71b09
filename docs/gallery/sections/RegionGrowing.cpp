#include "Section.h"

#include <string>
#include <vector>

namespace gallery
{

namespace
{

/// Runs a command that makes zones, and shows what it was given beside them.
void ZoneStep(
    Studio & studio, std::string const & title, std::string const & text, std::vector<std::string> arguments,
    Figure const & shown)
{
    std::string const name = arguments.front() + "-" + std::to_string(studio.NextNumber()) + ".png";
    arguments.insert(arguments.end(), {"--picture", name});
    studio.Step(title, text, arguments, {shown, {name, "One colour for each zone, black where there is none"}});
}

/// What the steps on one image have in common.
std::vector<std::string> WithSeeds(std::vector<std::string> arguments, std::vector<std::string> const & seeds)
{
    for (std::string const & seed : seeds)
    {
        arguments.insert(arguments.end(), {"--seed", seed});
    }
    return arguments;
}

void DrawBudgets(Studio & studio)
{
    Figure const depth{"room_depth-preview.png", "Depth in the room"};
    std::vector<std::string> const seeds{"285,250", "704,260", "888,340"};
    ZoneStep(
        studio, "A budget spent on the nearest",
        "MagicWandBasedOnAccumulator lets each zone grow, ring by ring, while the depths of its pixels sum to less "
        "than 15 000 m: all squares, the larger the nearer the surface is.",
        WithSeeds({"wand", "room_depth.tif", "--connexity", "8", "--budget", "15000"}, seeds), depth);
    ZoneStep(
        studio, "The same budget spent on the lowest",
        "MagicWandBasedOnPriorityAccumulator takes what is cheapest next. Two zones climb the column and the wall to "
        "where these are nearest to the scanner. The third finds a way down from the crates to the floor under it, and "
        "spends the rest there.",
        WithSeeds({"wand", "room_depth.tif", "--connexity", "8", "--budget", "15000", "--lowest-first"}, seeds), depth);
}

void DrawGrowing(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Region growing", "A magic wand grows a zone of similar pixels from each seed that it is given; GrowRegion "
                          "finds its seeds itself "
                          "and splits the whole image.");
    ZoneStep(
        studio, "A wand on a door",
        "The plain wand: from one seed, over steps that are small in every channel of a colour image.",
        {"wand", "room_colour.png", "--flood", "--seed", "420,300", "--delta", "20"},
        {"room_colour.png", "Colour in the room"});
    ZoneStep(
        studio, "Several seeds",
        "Four crowns, three of them with their stems, a pillar and a piece of a wall are picked by their depth, with a "
        "bound of 15 cm from neighbour to neighbour. The last seed lies on a pillar that stands near: its zone runs "
        "down "
        "to the ground and over all that stands on it.",
        WithSeeds(
            {"wand", "yard_depth.tif", "--connexity", "8-wrapped", "--delta", "0.15"},
            {"114,205", "195,215", "384,216", "572,205", "440,260", "700,265", "534,270"}),
        {"yard_depth-preview.png", "Depth in the yard"});
    DrawBudgets(studio);
    ZoneStep(
        studio, "Zones that never span more",
        "GrowRegion compares each pixel with the one that opened its zone: no zone goes further than 30 cm in depth, "
        "nor 4000 in intensity, however slow the ramp. Zones of fewer than 50 pixels are dropped.",
        {"grow", "room_depth.tif", "--second", "room_intensity.png", "--connexity", "8-wrapped", "--delta", "0.3",
         "--second-delta", "4000", "--min-area", "50"},
        {"room_depth-preview.png", "Depth in the room"});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (own.image.channels() != 1) return;
    Stretch const stretch = StretchOf(own.image);
    std::string const file = own.file.string();
    studio.ThePage().BeginSection("Region growing", "From the middle of the image, and over the whole of it.");
    Figure const shown{"own-relief-preview.png", "The image"};
    std::string const middle = std::to_string(own.image.cols / 2) + "," + std::to_string(own.image.rows / 2);
    ZoneStep(
        studio, "A wand in the middle", "Neighbours differ by at most a fiftieth of the range.",
        {"wand", file, "--connexity", "8", "--delta", Number((stretch.high - stretch.low) / 50.0), "--seed", middle},
        shown);
    std::string const delta = Number((stretch.high - stretch.low) / 10.0);
    ZoneStep(
        studio, "Zones that never span more", "No zone spans more than a tenth of the range to either side.",
        {"grow", file, "--second", file, "--connexity", "8", "--delta", delta, "--min-area", "50"}, shown);
}

RegisteredSection const registered({140, DrawGrowing, DrawUserImage});

} // namespace

} // namespace gallery
