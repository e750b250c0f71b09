#include "Section.h"

#include <string>
#include <vector>

namespace gallery
{

namespace
{

/// Labels extrema and shows them.
void ExtremaStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    Figure const & shown, std::vector<std::string> const & switches)
{
    std::string const name = "extrema-" + std::to_string(studio.NextNumber()) + ".png";
    std::vector<std::string> arguments{"extrema", input, "--connexity", "8"};
    arguments.insert(arguments.end(), switches.begin(), switches.end());
    arguments.insert(arguments.end(), {"--picture", name});
    studio.Step(title, text, arguments, {shown, {name, "One colour for each extremum, black elsewhere"}});
}

void DrawExtrema(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Regional extrema",
        "A regional maximum is a flat zone without a higher neighbour. In a noisy scan nearly every bump is one; what "
        "stands out is told by the dynamic: how far every path to something higher has to go down.");
    Figure const shown{"yard_surface-preview.png", "Heights in the yard"};
    ExtremaStep(
        studio, "Every maximum",
        "LabelMaxima finds more than a thousand: the noise of the scanner makes one at every few pixels.",
        "yard_surface.tif", shown, {});
    ExtremaStep(
        studio, "The maxima that stand out",
        "HMaxima asks for a dynamic of half a metre: one point is left for each thing in the yard, its top.",
        "yard_surface.tif", shown, {"--dynamic", "0.5"});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (own.image.channels() != 1) return;
    studio.ThePage().BeginSection("Regional extrema", "The flat zones without a higher neighbour.");
    ExtremaStep(
        studio, "Every maximum", "One colour for each.", own.file.string(), {"own-relief-preview.png", "The image"},
        {});
}

RegisteredSection const registered({40, DrawExtrema, DrawUserImage});

} // namespace

} // namespace gallery
