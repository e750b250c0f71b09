#include "ImageStep.h"

#include <algorithm>

namespace gallery
{

namespace
{

void DrawFilters(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Alternating sequential filters",
        "Openings and closings in turns, with elements that grow: bright and dark details go in the order of their "
        "size, and edges of what is larger do not move.");
    ImageStep(
        studio,
        {"Small things taken off the ground",
         "ASF_Close with discs of up to 21 pixels, 2.1 m. Boxes, thin trees and the speckle of the ground are gone. "
         "What is larger keeps its outline, but for corners that no disc fits into.",
         "Without what is smaller than the disc"},
        {"asf", "yard_surface.tif", "--size", "21", "--shape", "ellipse"},
        {"yard_surface-preview.png", "Heights in the yard"}, Look::Relief);
    ImageStep(
        studio,
        {"Specks taken out of a window",
         "ASF_Open with squares of up to 5 pixels. The few echoes that the glass gave back are gone, and the window is "
         "empty. So is the cord of the lamp, which is thinner than the squares; the legs of the table are not.",
         "Without specks"},
        {"asf", "room_depth.tif", "--size", "5", "--first", "open"}, {"room_depth-preview.png", "Depth in the room"},
        Look::Relief);
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    constexpr int kSize = 7;
    bool const hasMorphology = own.image.channels() == 1 && own.image.depth() != CV_32S;
    if (!hasMorphology || std::min(own.image.rows, own.image.cols) < kSize) return;
    studio.ThePage().BeginSection(
        "Alternating sequential filters", "Bright and dark details go in the order of their size.");
    ImageStep(
        studio, {"Details of up to 7 pixels", "Edges of what is larger do not move.", "The filtered image"},
        {"asf", own.file.string(), "--size", std::to_string(kSize)}, {"own-relief-preview.png", "The image"},
        Look::Relief);
}

RegisteredSection const registered({120, DrawFilters, DrawUserImage});

} // namespace

} // namespace gallery
