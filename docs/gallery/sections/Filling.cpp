#include "ImageStep.h"

namespace gallery
{

namespace
{

void DrawFilling(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Filling",
        "Empty pixels take values from what lies around them; what was measured stays. `fill` has nine ways: from a "
        "square, from a neighbourhood, or for whole holes at once.");
    Figure const above{"yard_elevation-preview.png", "Elevation of the yard from above"};
    ImageStep(
        studio,
        {"The mean of the neighbours",
         "FillImageWithMean closes the gaps between the rings of the scan, and leaves shadows empty but for their "
         "rims.",
         "What was empty within two pixels of an echo has a value"},
        {"fill", "yard_elevation.tif", "--method", "mean", "--connexity", "24-interleaved"}, above, Look::Relief);
    ImageStep(
        studio,
        {"What a square does not fit into",
         "FillImageWithClosing fills holes in which there is no place for the square, here of 5 by 5 pixels, with the "
         "level of their rim, and those only.",
         "Small holes are filled to their rim"},
        {"fill", "yard_elevation.tif", "--method", "closing", "--size", "5"}, above, Look::Relief);
    ImageStep(
        studio,
        {"Whole holes",
         "FillHolesInterpolationWithMin leaves nothing empty. What remains of each hole goes to the measured regions "
         "to "
         "which it is nearest, and takes the lowest value at the rim that it has there: shadows become ground.",
         "Every pixel has a value"},
        {"fill", "yard_elevation.tif", "--method", "holes-min", "--size", "5"}, above, Look::Relief);
    ImageStep(
        studio,
        {"Behind glass",
         "In the panorama the window loses most echoes, and the doorway all. With the highest value at the rims of the "
         "holes, they become as far away as the furthest thing beside them.",
         "No echo is missing"},
        {"fill", "room_depth.tif", "--method", "holes-max", "--size", "5"},
        {"room_depth-preview.png", "Depth in the room"}, Look::Relief);
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (own.image.channels() != 1 || own.image.depth() == CV_32S) return;
    studio.ThePage().BeginSection("Filling", "Empty pixels take values from what lies around them.");
    Figure const shown{"own-relief-preview.png", "The image"};
    ImageStep(
        studio, {"The mean of the neighbours", "Of 24 neighbours, those that are measured.", "Filled once"},
        {"fill", own.file.string(), "--method", "mean", "--connexity", "24-interleaved"}, shown, Look::Relief);
    ImageStep(
        studio, {"Whole holes", "Each takes the lowest value at its rim.", "Every pixel has a value"},
        {"fill", own.file.string(), "--method", "holes-min", "--size", "5"}, shown, Look::Relief);
}

RegisteredSection const registered({150, DrawFilling, DrawUserImage});

} // namespace

} // namespace gallery
