#include "Section.h"

#include "scansim/Scan.h"
#include "scansim/TopView.h"

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <string>
#include <vector>

namespace gallery
{

namespace
{

using namespace scansim;

/// Writes a view from above as if the scanner had been set up turned counter-clockwise.
void SaveTurned(std::string const & file, cv::Mat const & elevation, double degrees)
{
    int const side = cvCeil(std::hypot(elevation.cols, elevation.rows));
    cv::Point2f const middle(static_cast<float>(elevation.cols) * 0.5F, static_cast<float>(elevation.rows) * 0.5F);
    cv::Mat matrix = cv::getRotationMatrix2D(middle, degrees, 1.0);
    matrix.at<double>(0, 2) += (side - elevation.cols) * 0.5;
    matrix.at<double>(1, 2) += (side - elevation.rows) * 0.5;
    cv::Mat turned;
    cv::warpAffine(elevation, turned, matrix, {side, side}, cv::INTER_NEAREST);
    Save(file, turned);
}

/// Registers a view on that of the first station, which is there.
void RegistrationStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & name,
    std::vector<std::string> const & rules)
{
    std::string const picture = name + "_registered.png";
    std::vector<std::string> arguments{"register", name + "_elevation.tif", name + "_turned.tif"};
    arguments.insert(arguments.end(), rules.begin(), rules.end());
    arguments.insert(arguments.end(), {"--picture", picture});
    Figure const moving{
        Show(name + "_turned", Load(name + "_turned.tif"), Look::Relief), "Heights seen from the second station"};
    studio.Step(
        title, text, arguments,
        {{name + "_elevation-preview.png", "Heights seen from the first station"},
         moving,
         {picture, "The first violet, the second green, grey where they agree"}});
}

void DrawRegistration(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Registration",
        "Two stations saw the same place; the second scanner stood elsewhere and was turned. At which angle and shift "
        "does its view from above lie on that of the first?");
    Scan const yard = Simulate(MakeYard(), YardStation(1), {});
    SaveTurned("yard_turned.tif", SeeFromAbove(yard, AreaAround(yard.station, 22.0, 0.1)).elevation, 30.0);
    RegistrationStep(
        studio, "Two scans of a yard",
        "The second view was turned by 30 degrees, and its station is 4.5 m and 4 m away: 45 and 40 pixels of 10 cm. "
        "Only what stands on the ground is compared: blocks, trunks, walls. All angles are tried in small images, then "
        "a few in larger ones, with TemplateMatchingFullAuto and TemplateMatchingFullManual.",
        "yard", {"--structure", "0.3"});
    Scan const room = Simulate(MakeRoom(), RoomStation(1), {});
    cv::Mat const fromAbove = SeeFromAbove(room, AreaAround(room.station, 5.5, 0.03), kDatum + 2.8).elevation;
    SaveTurned("room_turned.tif", fromAbove, -75.0);
    RegistrationStep(
        studio, "Two scans of a room",
        "Turned by 75 degrees, and 1 m and 3 m away, 33 and 100 pixels: the walls fall on the walls, and what one "
        "station "
        "could not see behind a column, the other shows.",
        "room", {"--structure", "0.3"});
}

// An image of the user's has no second station.
RegisteredSection const registered({200, DrawRegistration, [](Studio &, UserImage const &) {
                                    }});

} // namespace

} // namespace gallery
