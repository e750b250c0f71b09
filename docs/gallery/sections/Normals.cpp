#include "Section.h"

#include "scansim/Scan.h"

#include <string>
#include <vector>

namespace gallery
{

namespace
{

/// What the area of a user's image is wide when its relief is 1 high.
constexpr double kWidthOfRelief = 20.0;

/// Writes the coordinates of a scan as its scanner sees them: normals turn towards the origin.
void SaveCoordinates(std::string const & name, scansim::Scan const & scan)
{
    cv::Mat const isMeasured = scan.depth != 0.0;
    std::vector<cv::Mat> const coordinates{scan.x, scan.y, scan.z};
    for (int axis = 0; axis < 3; ++axis)
    {
        cv::Mat seen = cv::Mat::zeros(scan.depth.size(), CV_32FC1);
        cv::Mat const shifted = coordinates[static_cast<std::size_t>(axis)] - scan.station.position[axis];
        shifted.copyTo(seen, isMeasured);
        Save(name + "_" + std::string("xyz").substr(static_cast<std::size_t>(axis), 1) + ".tif", seen);
    }
}

void SlopeStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    Figure const & shown, std::vector<std::string> const & switches)
{
    std::string const name = "slope-" + std::to_string(studio.NextNumber()) + ".png";
    std::vector<std::string> arguments{"slope", input};
    arguments.insert(arguments.end(), switches.begin(), switches.end());
    arguments.insert(arguments.end(), {"--picture", name});
    studio.Step(
        title, text, arguments, {shown, {name, "The slope: blue is level, red is steep, black where there is none"}});
}

void DrawNormals(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Surface normals",
        "At each point, the plane that fits the points around it best: its normal says which way the surface looks, "
        "and "
        "the distances of the points from it how flat the surface is. A scan in metres whose noise is of millimetres "
        "is scaled to millimetres first, as points that fit a plane too well have no normal.");
    SaveCoordinates("room", scansim::Simulate(scansim::MakeRoom(), scansim::RoomStation(0), {}));
    studio.Step(
        "Which way the surfaces look",
        "ComputeMatNormal with windows of 7 by 7 pixels round the full circle. X, Y, Z are red, green, blue: each wall "
        "has its colour, whatever the light on it, floor and table top are light blue, the ceiling is olive; the sides "
        "of the boxes have the colours of the walls they are parallel to, the round column and the balls run through "
        "many. Points are further from their plane where a window looks across an edge.",
        {"normals", "--x", "room_x.tif", "--y", "room_y.tif", "--z", "room_z.tif", "--scale", "1000", "--wrap",
         "--picture", "normals.png", "--rms-picture", "normals-rms.png"},
        {{"normals.png", "The normals, black where there is none"},
         {"normals-rms.png", "How far the points are from their plane: blue is flat, white is an edge"}});
    SlopeStep(
        studio, "How steep is the yard?",
        "ComputeNormalSlopeAndRms of the heights seen from above, in pixels of 10 cm. The ground is level and blue; "
        "the "
        "mounds rise in lighter blue, and blocks, trees and the wall, of which the scanner saw little more than the "
        "near "
        "side, have steep rims.",
        "yard_elevation.tif", {"yard_elevation-preview.png", "Elevation from above"},
        {"--pixel-size", "0.1", "--scale", "1000"});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    // Images of bytes are hardly ever heights.
    if (own.image.channels() != 1 || own.image.depth() == CV_8U) return;
    Stretch const stretch = StretchOf(own.image);
    double const range = stretch.high - stretch.low;
    if (!(range > 0.0)) return;
    studio.ThePage().BeginSection("Surface normals", "How steep the surface is, if the image holds heights.");
    // Nobody knows the size of the pixels: as if the relief were gentle, in pixels of 100 units.
    double const pixelSize = kWidthOfRelief * range / own.image.cols;
    SlopeStep(
        studio, "The slope", "As if the area were twenty times as wide as its relief is high.", own.file.string(),
        {"own-relief-preview.png", "The image"},
        {"--pixel-size", Number(pixelSize), "--scale", Number(100.0 / pixelSize)});
}

RegisteredSection const registered({130, DrawNormals, DrawUserImage});

} // namespace

} // namespace gallery
