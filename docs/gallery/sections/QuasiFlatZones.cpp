#include "Section.h"

#include <string>
#include <vector>

namespace gallery
{

namespace
{

/// Runs the command, and shows zones and mask beside the heights.
void QuasiFlatStep(
    Studio & studio, std::string const & title, std::string const & text, std::vector<std::string> const & rules,
    Figure const & shown)
{
    std::string const name = "quasi-flat-" + std::to_string(studio.NextNumber());
    std::vector<std::string> arguments{"quasi-flat"};
    arguments.insert(arguments.end(), rules.begin(), rules.end());
    arguments.insert(arguments.end(), {"--zones-picture", name + "-zones.png", "--picture", name + ".png"});
    studio.Step(
        title, text, arguments,
        {shown,
         {name + "-zones.png", "One colour for each zone, black where there is none"},
         {name + ".png", "The mask, orange, on the heights; seeds light blue"}});
}

void DrawQuasiFlatZones(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Quasi-flat zones",
        "What can be walked without a high step is one zone, however far it rises on the way. Some of the zones make a "
        "mask: those with seeds, the largest, or the ground that everything else stands on.");
    Figure const heights{"yard_elevation-preview.png", "Heights in the yard, seen from above; dark is not measured"};
    QuasiFlatStep(
        studio, "From seeds",
        "Steps of at most 6 cm after one closing and opening by 3 x 3 pixels. A seed on the open ground floods it and "
        "climbs the mounds, which rise slowly; one on a block takes its top, one on a crown what is not ragged of it.",
        {"yard_elevation.tif", "--connexity", "8", "--delta", "0.06", "--window", "3", "--filter", "closing-first",
         "--seed", "250,250", "--seed", "180,270", "--seed", "230,100"},
        heights);
    QuasiFlatStep(
        studio, "The base surface of a scanned yard",
        "No seeds: QuasiFlatZonesPropagation searches. Steep pixels and small zones fall out, and zones that stand "
        "more than 40 cm above the local floor: of the blocks, the shed, the trees and the walls nothing is left, the "
        "ground beyond the wall, which no step reaches, is in.",
        {"yard_elevation.tif", "--connexity", "8", "--delta", "0.06", "--window", "3", "--filter", "closing-first",
         "--base", "--pixel-size", "0.1", "--unit", "10000"},
        heights);
    QuasiFlatStep(
        studio, "The same where gaps are filled",
        "The gaps between the rings of the scan take what was measured nearest, and the ground is closed. The search "
        "leaves blocks and building alone; only slanted pieces of the roof pass for ground, each the largest zone of "
        "its "
        "part of the image or near the floor there.",
        {"yard_surface.tif", "--connexity", "8", "--delta", "0.06", "--window", "3", "--filter", "closing-first",
         "--base", "--pixel-size", "0.1", "--unit", "10000"},
        {"yard_surface-preview.png", "Heights with the gaps filled"});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (own.image.channels() != 1) return;
    Stretch const stretch = StretchOf(own.image);
    studio.ThePage().BeginSection(
        "Quasi-flat zones", "What can be walked in steps of at most a fiftieth of the range; the largest zone is the "
                            "mask.");
    QuasiFlatStep(
        studio, "The largest zone", "After one closing and opening by 3 x 3 pixels.",
        {own.file.string(), "--connexity", "8", "--delta", Number((stretch.high - stretch.low) / 50.0), "--window", "3",
         "--filter", "closing-first"},
        {"own-relief-preview.png", "The image"});
}

RegisteredSection const registered({190, DrawQuasiFlatZones, DrawUserImage});

} // namespace

} // namespace gallery
