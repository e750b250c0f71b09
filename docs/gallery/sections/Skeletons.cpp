#include "Mask.h"
#include "Section.h"

#include <string>
#include <vector>

namespace gallery
{

namespace
{

void SkeletonStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    Figure const & shown, std::vector<std::string> const & switches)
{
    std::string const name = "skeleton-" + std::to_string(studio.NextNumber());
    std::vector<std::string> arguments{"skeleton", input};
    arguments.insert(arguments.end(), switches.begin(), switches.end());
    arguments.insert(
        arguments.end(),
        {"-o", name + ".png", "--segment-picture", name + "-segments.png", "--segments", name + ".csv"});
    studio.Step(
        title, text, arguments,
        {shown,
         {name + ".png", "The skeleton"},
         {name + "-segments.png", "Straight segments, a colour for each, over the image"}});
}

void DrawSkeletons(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Skeletons",
        "Thinning takes a shape away from all sides until lines of one pixel are left, without parting it. "
        "ExtractSegmentsFromSkeleton cuts the lines where they fork and replaces each piece by straight segments.");
    Figure const things{"yard_objects-preview.png", "What stands 35 cm or more above the ground"};
    SkeletonStep(
        studio, "Trunks and posts",
        "thinning with the tests of Zhang and Suen: a tree becomes its trunk up to the middle of the crown, the wall a "
        "line from which its posts rise. The table has a line for each segment: posts are those that stand upright.",
        "yard_objects.tif", things, {"--tolerance", "2"});
    SkeletonStep(
        studio, "By erosion",
        "ExtractSkeletonByErosion collects what openings of growing size take away: branches reach to the corners, "
        "and lines may break.",
        "yard_objects.tif", things, {"--method", "erosion", "--tolerance", "2"});
    SkeletonStep(
        studio, "From above",
        "What rises more than a metre above the yard, thinned with the tests of Guo and Hall. The teeth at the shed "
        "are "
        "the rays of the scanner.",
        "yard_surface.tif", {"yard_surface-preview.png", "Heights in the yard"},
        {"--from", "1", "--method", "guo-hall"});
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (!SaveBrightParts(own)) return;
    studio.ThePage().BeginSection("Skeletons", "The bright parts of the image as lines, and as straight segments.");
    SkeletonStep(
        studio, "Thinned", "The parts above the middle of the range, without what is narrower than 3 pixels.",
        kBrightParts, {kBrightParts, "The bright parts"}, {});
}

RegisteredSection const registered({180, DrawSkeletons, DrawUserImage});

} // namespace

} // namespace gallery
