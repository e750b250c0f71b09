#include "Mask.h"
#include "Section.h"

#include <string>

namespace gallery
{

namespace
{

void ShapeStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    Figure const & shown, std::string const & measure)
{
    std::string const name = "shape-" + std::to_string(studio.NextNumber());
    studio.Step(
        title, text,
        {"shape", input, "--measure", measure, "--picture", name + ".png", "--extremity-picture", name + "-ends.png",
         "-o", name + ".csv"},
        {shown,
         {name + ".png", "Blue is the least " + measure + ", white the greatest"},
         {name + "-ends.png", "The ends of the longest path in each zone, white"}});
}

void CornerStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    Figure const & shown)
{
    std::string const name = "corners-" + std::to_string(studio.NextNumber()) + ".png";
    studio.Step(
        title, text, {"shape", input, "--harris-picture", name}, {shown, {name, "Corners are bright, edges are dark"}});
}

void DrawShapes(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Shapes",
        "How long is a zone when a path must stay inside, and what does that say about it? Two walks find the ends of "
        "the longest path, a third one its length: with the area comes the elongation, with the straight way between "
        "the ends the tortuosity.");
    Save("yard_things.png", Load("yard_objects.tif") != 0.0F);
    Figure const things{"yard_objects-preview.png", "What stands 35 cm or more above the ground"};
    ShapeStep(
        studio, "What is long and thin?",
        "LabelFlatZonesNoZeroWithGeodesicElongation: blocks and the shed are compact and blue, a tree on its trunk is "
        "longer, the wall with its posts and the mound beside it is the longest.",
        "yard_things.png", things, "elongation");
    ShapeStep(
        studio, "What is bent?",
        "LabelFlatZonesNoZeroWithGeodesicTortuosity: the way from crown to crown leads down one trunk, over the mound "
        "and up the other, and is three times the straight line.",
        "yard_things.png", things, "tortuosity");
    studio.Step(
        "The table",
        "The same zones with all measures: area, bounding box, length, elongation, tortuosity, and the two ends. The "
        "ratio of the axes is 0: no outline starts in the first corner of the image.",
        {"shape", "yard_things.png"}, std::vector<Figure>());
    studio.Step(
        "Boxes, and shapes closed",
        "BoundingRectangles of the parts, and BoundingConvexHulls, which fills what a square of 11 pixels, six times, "
        "cannot enter: trunks and posts merge with what stands beside them.",
        {"shape", "yard_objects.tif", "--boxes", "boxes.png", "--closed", "closed.png"},
        {{"boxes.png", "A box round each part"}, {"closed.png", "The parts, closed"}});
    CornerStep(
        studio, "Corners",
        "ExtractHarrisCorners of the intensity: the corners of the window, the door and the boxes are bright dots; "
        "edges, which "
        "are no corners, are dark lines.",
        "room_intensity.png", {"room_intensity-preview.png", "Intensity in the room"});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (!SaveBrightParts(own)) return;
    studio.ThePage().BeginSection("Shapes", "How long the bright parts of the image are when a path must stay inside.");
    ShapeStep(
        studio, "What is long and thin?",
        "The parts above the middle of the range, without what is narrower than 3 pixels.", kBrightParts,
        {kBrightParts, "The bright parts"}, "elongation");
    if (own.image.rows < 3 || own.image.cols < 3) return;
    CornerStep(studio, "Corners", "ExtractHarrisCorners.", own.file.string(), {"own-grey-preview.png", "The image"});
}

RegisteredSection const registered({170, DrawShapes, DrawUserImage});

} // namespace

} // namespace gallery
