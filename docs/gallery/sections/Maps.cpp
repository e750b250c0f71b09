#include "Section.h"

#include <string>
#include <vector>

namespace gallery
{

namespace
{

/// Maps an image and shows both pictures.
void MapStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    std::vector<std::string> const & switches)
{
    std::string const name = "map-" + std::to_string(studio.NextNumber());
    std::vector<std::string> arguments{"map", input, "--grey", name + "-grey.png", "--colour", name + "-colour.png"};
    arguments.insert(arguments.end(), switches.begin(), switches.end());
    studio.Step(
        title, text, arguments,
        {{name + "-grey.png", "The grey map"}, {name + "-colour.png", "The map in false colours"}});
}

void DrawMaps(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Maps", "GrayMap and ColorMap spread the range of an image over a grey or a colour scale, so that depths and "
                "elevations "
                "can be looked at.");
    MapStep(
        studio, "The whole range",
        "Empty pixels are the lowest value, 0, and what was measured is crowded into the upper end of the scale.",
        "yard_elevation.tif", {});
    MapStep(
        studio, "The range of what was measured",
        "GrayMapNoZero and ColorMapNoZero look at the measured pixels alone. Their colours run from black over blue, "
        "cyan, green and yellow to red; what lies below the range is black.",
        "yard_elevation.tif", {"--no-zero"});
    MapStep(
        studio, "A part of the range",
        "The first ten metres around the scanner. In the colour map, white marks what lies above.", "yard_depth.tif",
        {"--no-zero", "--range", "0", "10"});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (own.image.channels() != 1) return;
    studio.ThePage().BeginSection("Maps", "The range of the measured pixels over a grey and a colour scale.");
    MapStep(studio, "The map", "Empty pixels are black.", own.file.string(), {"--no-zero"});
}

RegisteredSection const registered({30, DrawMaps, DrawUserImage});

} // namespace

} // namespace gallery
