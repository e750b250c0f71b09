#include <morvane/filters/AlternatingSequentialFilters.h>

#include "common/Dispatch.h"
#include "common/Morphology.h"

#include <opencv2/imgproc.hpp>

#include <array>

namespace morvane::filters
{

namespace
{

/// Applies two operations of OpenCV's morphology in turns, with elements that grow.
bool FilterInTurns(cv::Mat const & src, cv::Mat & dst, int maxSize, int shape, std::array<int, 2> const & operations)
{
    if (!common::IsRaster(src) || src.rows < maxSize || src.cols < maxSize) return false;
    src.copyTo(dst);
    for (int size = 3; size <= maxSize; size += 2)
    {
        cv::Mat const element = common::StructuringElement(shape, size);
        for (int const operation : operations)
        {
            common::Filter(dst, dst, operation, element);
        }
    }
    return true;
}

} // namespace

bool ASF_Close(cv::Mat const & src, cv::Mat & dst, int maxSize, int shape)
{
    return FilterInTurns(src, dst, maxSize, shape, {cv::MORPH_CLOSE, cv::MORPH_OPEN});
}

bool ASF_Open(cv::Mat const & src, cv::Mat & dst, int maxSize, int shape)
{
    return FilterInTurns(src, dst, maxSize, shape, {cv::MORPH_OPEN, cv::MORPH_CLOSE});
}

} // namespace morvane::filters
