#include "LabelStep.h"

#include "scansim/Scan.h"

namespace gallery
{

namespace
{

using namespace scansim;

/// The depth of what stands out of the ground.
cv::Mat ObjectsOf(Scan const & scan)
{
    cv::Mat objects = scan.depth.clone();
    objects.setTo(0.0, scan.z < kDatum + 0.35);
    return objects;
}

void DrawZones(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Connected zones",
        "Label gives each connected component of measured pixels a number of its own, in the order of the zones' first "
        "pixels. What counts as connected is the caller's choice: 4 neighbours, 8, more, and with or without the seam "
        "between the last and the first column.");

    Scan const yard = Simulate(MakeYard(), YardStation(0), {});
    cv::Mat const objects = ObjectsOf(yard);
    Save("yard_objects.tif", objects);
    Figure const shown{
        Show("yard_objects", objects, Look::Relief), "Depth of everything 35 cm or more above the ground"};
    LabelStep(
        studio, "Things in a yard",
        "Once the ground is gone, each thing that stands free is a zone. The shed and the blocks at the left border "
        "and "
        "at the right border are the same things, seen across the seam: here they have two colours.",
        "yard_objects.tif", shown, {"--connexity", "8"});
    LabelStep(
        studio, "The same, round the circle",
        "A wrapped neighbourhood joins the two borders of a panorama. The things at the seam now have one colour.",
        "yard_objects.tif", shown, {"--connexity", "8-wrapped"});
    LabelStep(
        studio, "Scattered points",
        "From above, far ground is hit in thin rings. With 4 neighbours they fall apart into thousands of zones.",
        "yard_elevation.tif", {"yard_elevation-preview.png", "Elevation of the yard from above"}, {"--connexity", "4"});
    LabelStep(
        studio, "Further reach",
        "With 24 neighbours, gaps of one pixel are bridged: the rings hold together, shadows still separate.",
        "yard_elevation.tif", {"yard_elevation-preview.png", "Elevation of the yard from above"},
        {"--connexity", "24-interleaved"});
    LabelStep(
        studio, "Echoes of a pane",
        "The window of the room lets nine rays of ten pass; the rest come back as single points, each a zone of its "
        "own.",
        "room_depth.tif", {"room_depth-preview.png", "Depth in the room; the window lies at the seam"},
        {"--connexity", "4-wrapped"});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    studio.ThePage().BeginSection(
        "Connected zones", "Each connected component of pixels that are not 0, under three neighbourhoods.");
    Figure const shown{"own-relief-preview.png", "The image"};
    LabelStep(studio, "4 neighbours", "Pixels touch by their sides.", own.file.string(), shown, {"--connexity", "4"});
    LabelStep(
        studio, "8 neighbours", "Pixels touch by sides and corners.", own.file.string(), shown, {"--connexity", "8"});
    LabelStep(
        studio, "24 neighbours", "Gaps of one pixel are bridged.", own.file.string(), shown,
        {"--connexity", "24-interleaved"});
}

RegisteredSection const registered({10, DrawZones, DrawUserImage});

} // namespace

} // namespace gallery
