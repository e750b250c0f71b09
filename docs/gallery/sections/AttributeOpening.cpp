#include "Section.h"

#include <string>
#include <vector>

namespace gallery
{

namespace
{

void UltimateStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    Figure const & shown, std::vector<std::string> const & switches)
{
    std::string const name = "ultimate-" + std::to_string(studio.NextNumber());
    std::vector<std::string> arguments{"ultimate-open", input};
    arguments.insert(arguments.end(), switches.begin(), switches.end());
    arguments.insert(
        arguments.end(), {"--residue-picture", name + "-residues.png", "--size-picture", name + "-sizes.png"});
    studio.Step(
        title, text, arguments,
        {shown,
         {name + "-residues.png", "The largest residue: how much stands out"},
         {name + "-sizes.png", "The size at which it stands out, blue is small"}});
}

void DrawOpenings(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Attribute openings",
        "An attribute opening removes bright components by what they measure (area, width, height), whatever their "
        "shape. It works on the max-tree: the components of all levels, each inside the next lower one.");
    studio.Step(
        "Small bright things removed",
        "AttributeOpening by area: components of fewer than 400 pixels take the level of what they stand on. Edges of "
        "what remains do not move by a pixel.",
        {"attribute-open", "room_intensity.png", "--attribute", "area", "--threshold", "400", "--connexity", "8",
         "--picture", "opened.png"},
        {{"room_intensity-preview.png", "Intensity in the room"}, {"opened.png", "The opened image"}});
    UltimateStep(
        studio, "How large are the things that stand out?",
        "UltimateAttributeOpening finds for each pixel the opening that takes most away. In the yard, in centimetres, "
        "residues are heights above the surroundings, and sizes are the smaller sides of the boxes around them.",
        "yard_surface.tif", {"yard_surface-preview.png", "Heights in the yard"},
        {"--attribute", "min-hw", "--connexity", "8", "--max", "200", "--scale", "100"});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (own.image.channels() != 1) return;
    double least = 0.0;
    cv::minMaxIdx(own.image, &least, nullptr);
    if (!(least >= 0.0)) return;
    studio.ThePage().BeginSection("Attribute openings", "For each pixel, the opening that takes most away.");
    std::vector<std::string> switches{"--attribute", "min-hw", "--connexity", "8"};
    if (own.image.depth() == CV_32F || own.image.depth() == CV_64F)
    {
        Stretch const stretch = StretchOf(own.image);
        switches.insert(switches.end(), {"--scale", Number(1000.0 / (stretch.high - stretch.low))});
    }
    UltimateStep(
        studio, "What stands out, and how large it is", "Sizes are the smaller sides of the boxes around components.",
        own.file.string(), {"own-relief-preview.png", "The image"}, switches);
}

RegisteredSection const registered({80, DrawOpenings, DrawUserImage});

} // namespace

} // namespace gallery
