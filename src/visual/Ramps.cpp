#include "visual/Ramps.h"

#include <morvane/common/Conversions.h>

namespace morvane::visual
{

namespace
{

Bgr Colour(int blue, int green, int red)
{
    // Ramps are written as sums of which the low 8 bits count.
    return {{common::WrapTo<uchar>(blue), common::WrapTo<uchar>(green), common::WrapTo<uchar>(red), 0}};
}

Bgr NoZeroStep(int step)
{
    if (step < 255) return Colour(step, 0, 0);
    if (step < 510) return Colour(255, step + 1, 0);
    if (step < 765) return Colour(253 - step, 255, 0);
    if (step < 1020) return Colour(0, 255, step + 3);
    return Colour(0, 251 - step, 255);
}

template <class StepColour>
std::vector<Bgr> BetweenBlackAndWhite(int steps, StepColour const & colourOf)
{
    std::vector<Bgr> entries{Colour(0, 0, 0)};
    for (int step = 0; step < steps; ++step)
    {
        entries.push_back(colourOf(step));
    }
    entries.push_back(Colour(255, 255, 255));
    return entries;
}

} // namespace

std::vector<uchar> GreyEntries()
{
    std::vector<uchar> entries{0};
    for (int step = 0; step < 255; ++step)
    {
        entries.push_back(static_cast<uchar>(step));
    }
    entries.push_back(255);
    return entries;
}

std::vector<Bgr> ColorEntries()
{
    return BetweenBlackAndWhite(
        511, [](int step) { return step < 255 ? Colour(0, 255, step) : Colour(0, 254 - step, 255); });
}

std::vector<Bgr> ColorNoZeroEntries()
{
    return BetweenBlackAndWhite(1275, NoZeroStep);
}

} // namespace morvane::visual
