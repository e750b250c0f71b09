#include "Mask.h"

#include <opencv2/imgproc.hpp>

namespace gallery
{

bool SaveBrightParts(UserImage const & own)
{
    constexpr int kMostParts = 2000;
    if (own.image.channels() != 1) return false;
    Stretch const stretch = StretchOf(own.image);
    if (!(stretch.high > stretch.low)) return false;
    cv::Mat isBright = own.image > (stretch.low + stretch.high) / 2.0;
    // What is empty is no part, where the range lies below 0.
    isBright &= own.image != 0;
    cv::morphologyEx(isBright, isBright, cv::MORPH_OPEN, cv::Mat());
    cv::Mat labels;
    // The ground has a label, too.
    int const parts = cv::connectedComponents(isBright, labels) - 1;
    if (parts < 1 || parts > kMostParts) return false;
    Save(kBrightParts, isBright);
    return true;
}

} // namespace gallery
