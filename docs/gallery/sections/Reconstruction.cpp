#include "ImageStep.h"

namespace gallery
{

namespace
{

bool HasMorphology(cv::Mat const & image)
{
    return image.channels() == 1 && image.depth() != CV_32S;
}

void DrawReconstruction(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Reconstruction and holes",
        "A reconstruction lets a marker spread under an image, as far as the image lets it. What the marker cannot "
        "reach is cut off; turned upside down, what it cannot reach is filled.");
    ImageStep(
        studio,
        {"Domes cut off",
         "The marker is the image, lowered by a metre. It spreads back under the image, but not up to tops that rise "
         "by less than that: these are gone, and higher ones are a metre lower.",
         "The reconstruction"},
        {"reconstruct", "yard_surface.tif", "--lower", "1"}, {"yard_surface-preview.png", "Heights in the yard"},
        Look::Relief);
    ImageStep(
        studio,
        {"Drop-outs filled",
         "Upside down: empty pixels are the deepest hollows, and each is raised to the lowest rim over which it would "
         "run out. FillHolesbyOverBuild floods the image once, by priority, here round the seam of the panorama.",
         "Lost echoes have the depth of the nearest around them"},
        {"fill-holes", "room_depth.tif", "--connexity", "8-wrapped"}, {"room_depth-preview.png", "Depth in the room"},
        Look::Relief);
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (!HasMorphology(own.image)) return;
    studio.ThePage().BeginSection("Holes", "Each hollow is raised to the lowest rim over which it would run out.");
    ImageStep(
        studio, {"Holes filled", "Those that do not touch the image's edge.", "The filled image"},
        {"fill-holes", own.file.string()}, {"own-relief-preview.png", "The image"}, Look::Relief);
}

RegisteredSection const registered({50, DrawReconstruction, DrawUserImage});

} // namespace

} // namespace gallery
