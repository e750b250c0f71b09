#include "Section.h"

#include <algorithm>
#include <string>
#include <vector>

namespace gallery
{

namespace
{

/// Halves an image and shows all levels side by side.
void PyramidStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    std::string const & by, int levels)
{
    std::string const name = "pyramid-" + std::to_string(studio.NextNumber()) + ".png";
    studio.Step(
        title, text, {"pyramid", input, "--by", by, "--levels", std::to_string(levels), "--picture", name},
        {{name, "The image, and its levels below each other"}});
}

void DrawPyramid(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Pyramid",
        "Each level has one value for each block of 2 by 2 pixels of the level before, and beside it the detail that "
        "leads back.");
    PyramidStep(
        studio, "Means and differences",
        "DownSampling, four times. The differences from the means are stored in 32 bits, which hold them all; "
        "UpSampling adds them to the coarsest level, from there to the next, and gives the image back exactly.",
        "room_intensity.png", "mean", 4);
    PyramidStep(
        studio, "Maxima",
        "DownSamplingWithMax keeps what is thin and bright before a dark background: trunks and poles of two pixels "
        "stand before the sky on every level, and grow thicker.",
        "yard_intensity.png", "max", 4);
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    int levels = 0;
    while (levels < 4 && std::min(own.image.rows, own.image.cols) >> levels >= 8)
    {
        ++levels;
    }
    if (own.image.channels() != 1 || levels == 0) return;
    studio.ThePage().BeginSection("Pyramid", "One value for each block of 2 by 2 pixels, again and again.");
    PyramidStep(studio, "Means", "Empty pixels are black, and count as 0.", own.file.string(), "mean", levels);
}

RegisteredSection const registered({110, DrawPyramid, DrawUserImage});

} // namespace

} // namespace gallery
