#include "LabelStep.h"

#include "scansim/Scan.h"
#include "scansim/TopView.h"

#include <string>

namespace gallery
{

namespace
{

using namespace scansim;

/// Heights in storeys of half a metre, 8-bit.
cv::Mat Storeys(cv::Mat const & elevation)
{
    cv::Mat storeys;
    elevation.convertTo(storeys, CV_8U, 2.0, -2.0 * kDatum + 3.0);
    storeys.setTo(0, elevation == 0.0F);
    return storeys;
}

/// What each zone measures, below its step.
void MeasureStep(Studio & studio, std::string const & text, std::string const & labels, std::string const & values)
{
    studio.Step("What the zones measure", text, {"measure", labels, "--values", values}, std::vector<Figure>());
}

void DrawFlatZones(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Flat zones",
        "LabelFlatZones joins neighbours of equal values; LabelDeltaFlatZones joins neighbours that differ by at most "
        "a "
        "delta, so that a slow ramp stays in one zone however far its ends lie apart. With a second image, neighbours "
        "must be alike in both.");

    TopView const above = SeeFromAbove(Simulate(MakeYard(), YardStation(0), {}), AreaAround(YardStation(0), 22.0, 0.1));
    cv::Mat const storeys = Storeys(above.elevation);
    Save("yard_storeys.png", storeys);
    LabelStep(
        studio, "Storeys", "The yard from above, its heights in steps of half a metre: each terrace is a flat zone.",
        "yard_storeys.png", {Show("yard_storeys", storeys, Look::Relief), "Heights in steps of 50 cm"},
        {"--connexity", "24-interleaved", "--flat", "--no-zero", "--min-area", "10"});

    LabelStep(
        studio, "Where the depth jumps",
        "Neighbours whose depths differ by 15 cm or less belong together: what stands in front of something else comes "
        "off. The block in the middle stands on the ground and stays one with it.",
        "yard_depth.tif", {"yard_depth-preview.png", "Depth in the yard"},
        {"--connexity", "8-wrapped", "--delta", "0.15", "--no-zero", "--min-area", "200"});

    std::string const labels = LabelStep(
        studio, "Where depth or intensity jump",
        "In the room all surfaces meet. A second image tells them apart: here the intensity of the echo, which changes "
        "with the material. Zones of fewer than 200 pixels are dropped.",
        "room_depth.tif", {"room_intensity-preview.png", "Intensity in the room, the second image"},
        {"--connexity", "8-wrapped", "--delta", "0.05", "--no-zero", "--second", "room_intensity.png", "--second-delta",
         "3000", "--min-area", "200"});
    MeasureStep(
        studio, "The table of these zones, with their depths in metres: one line each, ready for a spreadsheet.",
        labels, "room_depth.tif");
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (own.image.channels() != 1) return;
    studio.ThePage().BeginSection(
        "Flat zones", "Neighbours that differ by at most a fiftieth of the range of the image belong together.");
    Stretch const stretch = StretchOf(own.image);
    std::string const labels = LabelStep(
        studio, "Delta flat zones", "Zones of fewer than 500 pixels are dropped.", own.file.string(),
        {"own-relief-preview.png", "The image"},
        {"--connexity", "8", "--delta", Number((stretch.high - stretch.low) / 50.0), "--no-zero", "--min-area", "500"});
    MeasureStep(studio, "One line for each zone.", labels, own.file.string());
}

RegisteredSection const registered({20, DrawFlatZones, DrawUserImage});

} // namespace

} // namespace gallery
