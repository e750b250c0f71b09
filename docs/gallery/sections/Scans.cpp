#include "Section.h"
#include "Surface.h"

#include "scansim/Scan.h"
#include "scansim/TopView.h"

#include <string>

namespace gallery
{

namespace
{

using namespace scansim;

/// Writes the images of a scan and shows those that tell most.
void ShowScan(Studio & studio, std::string const & name, Scan const & scan, TopView const & above)
{
    Save(name + "_colour.png", scan.colour);
    Save(name + "_intensity.png", scan.intensity);
    Save(name + "_depth.tif", scan.depth);
    Save(name + "_elevation.tif", above.elevation);
    studio.ThePage().AddFigures({
        {name + "_colour.png", "Colour, 8-bit: the full circle, so that the left and the right border meet"},
        {Show(name + "_intensity", scan.intensity, Look::Grey), "Intensity of the echo, 16-bit"},
        {Show(name + "_depth", scan.depth, Look::Relief), "Depth in metres, float: dark blue is near"},
        {Show(name + "_elevation", above.elevation, Look::Relief),
         "Elevation from above in metres, float: shadows and the place under the scanner are empty"},
    });
}

void DrawScans(Studio & studio)
{
    studio.ThePage().BeginSection(
        "The scans",
        "A simulated scanner stands in a room and in a yard and sends rays over the full circle. Ranges are noisy, "
        "glass "
        "lets most rays pass, flat hits are lost, and nothing comes back from the sky: there the images are 0.");
    Scan const room = Simulate(MakeRoom(), RoomStation(0), {});
    Scan const yard = Simulate(MakeYard(), YardStation(0), {});
    // The room is seen from just below its ceiling.
    ShowScan(studio, "room", room, SeeFromAbove(room, AreaAround(room.station, 5.5, 0.03), kDatum + 2.8));
    TopView const above = SeeFromAbove(yard, AreaAround(yard.station, 22.0, 0.1));
    ShowScan(studio, "yard", yard, above);
    cv::Mat const surface = SurfaceOf(above.elevation);
    Save("yard_surface.tif", surface);
    studio.ThePage().AddFigures(
        {{Show("yard_surface", surface, Look::Relief),
          "Heights in the yard in metres, gaps filled with the nearest that was measured"}});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    studio.ThePage().BeginSection("The image", own.file.filename().string());
    studio.ThePage().AddFigures({
        {Show("own-grey", own.image, Look::Grey), "As it is; empty pixels have the darkest tone"},
        {Show("own-relief", own.image, Look::Relief), "Dark blue is low, yellow is high"},
    });
}

RegisteredSection const registered({0, DrawScans, DrawUserImage});

} // namespace

} // namespace gallery
