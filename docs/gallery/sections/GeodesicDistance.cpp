#include "Section.h"

#include <string>

namespace gallery
{

namespace
{

void DrawDistance(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Geodesic distance",
        "How far it is from a marker if paths may only lead over a mask. What lies behind something is further away "
        "than it looks, and what is walled in is never reached.");
    cv::Mat const ground = Load("yard_surface.tif") < 0.3;
    Save("yard_ground.png", ground);
    cv::Point const station(ground.cols / 2, ground.rows / 2);
    studio.Step(
        "A walk through the yard",
        "GeodesicDistance from the scanner over all that is lower than 30 cm, the ground, in steps of 10 cm to the "
        "side or "
        "diagonally: blue is near. Around the shed and the blocks the distances have to go round.",
        {"distance", "yard_ground.png", "--from", std::to_string(station.x), std::to_string(station.y), "--picture",
         "walk.png"},
        {{Show("yard_ground", ground, Look::Grey), "Where one can walk"},
         {"walk.png", "How far it is from the scanner"}});
}

void DrawUserImage(Studio & /*studio*/, UserImage const & /*own*/)
{
    // What is a marker in an image that nobody has seen?
}

RegisteredSection const registered({70, DrawDistance, DrawUserImage});

} // namespace

} // namespace gallery
