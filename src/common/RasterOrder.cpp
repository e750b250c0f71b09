#include "common/RasterOrder.h"

#include <algorithm>
#include <cstring>

namespace morvane::common
{

void CopyInRasterOrder(cv::Mat const & from, cv::Mat & to, std::size_t pixels)
{
    auto const fromCols = static_cast<std::size_t>(from.cols);
    auto const toCols = static_cast<std::size_t>(to.cols);
    std::size_t const pixelSize = from.elemSize();
    std::size_t count = 0;
    for (std::size_t place = 0; place < pixels; place += count)
    {
        std::size_t const fromCol = place % fromCols;
        std::size_t const toCol = place % toCols;
        // As far as neither row ends.
        count = std::min({fromCols - fromCol, toCols - toCol, pixels - place});
        std::memcpy(
            to.ptr(static_cast<int>(place / toCols)) + toCol * pixelSize,
            from.ptr(static_cast<int>(place / fromCols)) + fromCol * pixelSize, count * pixelSize);
    }
}

cv::Mat InSize(cv::Size size, cv::Mat const & image)
{
    if (image.size() == size) return image;
    cv::Mat result = cv::Mat::zeros(size, image.type());
    CopyInRasterOrder(image, result, std::min(image.total(), result.total()));
    return result;
}

} // namespace morvane::common
