#include "Section.h"

#include <string>
#include <vector>

namespace gallery
{

namespace
{

void FloodStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    Figure const & shown, std::vector<std::string> const & switches)
{
    std::string const name = "flood-" + std::to_string(studio.NextNumber()) + ".png";
    std::vector<std::string> arguments{"flood", input};
    arguments.insert(arguments.end(), switches.begin(), switches.end());
    arguments.insert(arguments.end(), {"--picture", name});
    studio.Step(title, text, arguments, {shown, {name, "One colour for each label"}});
}

void DrawFlooding(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Flooding",
        "Markers spread over an image, the cheapest pixel first, until they meet. Here the markers are the minima of "
        "some dynamic: each basin that is deep enough becomes a zone.");
    FloodStep(
        studio, "The basins of an intensity image",
        "Flooding takes dark and similar pixels first. The lines where two floods meet are black.",
        "room_intensity.png", {"room_intensity-preview.png", "Intensity in the room"},
        {"--dynamic", "1500", "--connexity", "8"});
    FloodStep(
        studio, "Zones inside basins",
        "FloodingDeltaNoZero splits the image into zones of small differences inside the basins of a watershed, and "
        "gives each the highest marker in it; zones without a marker become black.",
        "yard_depth.tif", {"yard_depth-preview.png", "Depth in the yard"},
        {"--dynamic", "0.2", "--connexity", "8", "--delta", "0.15", "--no-zero"});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (own.image.channels() != 1 || own.image.depth() == CV_32S) return;
    Stretch const stretch = StretchOf(own.image);
    studio.ThePage().BeginSection(
        "Flooding", "The minima whose dynamic is a twentieth of the range or more flood the image.");
    FloodStep(
        studio, "Basins", "The lines where two floods meet are black.", own.file.string(),
        {"own-relief-preview.png", "The image"},
        {"--dynamic", Number((stretch.high - stretch.low) / 20.0), "--connexity", "8"});
}

RegisteredSection const registered({60, DrawFlooding, DrawUserImage});

} // namespace

} // namespace gallery
