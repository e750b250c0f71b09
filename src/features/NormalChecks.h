/// @file
/// What the normal classes ask of their images.
#pragma once

#include "common/Dispatch.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <initializer_list>

namespace morvane::normal_internals
{

/// 1 where a point exists, which a NaN counts as, else 0; empty for what is no image of one channel and one of the six element types.
inline cv::Mat ValidityOf(cv::Mat const & depth)
{
    if (!common::IsRaster(depth) || !common::IsSingleChannel(depth) || depth.empty()) return {};
    return common::VisitElement(depth, [&]<class T> {
        cv::Mat validity(depth.size(), CV_8UC1);
        for (int row = 0; row < depth.rows; ++row)
        {
            // Not by OpenCV's comparison, for which a NaN is or is not a point by its place in the row.
            T const * const values = depth.ptr<T>(row);
            std::transform(values, values + depth.cols, validity.ptr(row), [](T value) {
                return static_cast<uchar>(value != T{0} ? 1 : 0);
            });
        }
        return validity;
    });
}

/// Tells whether all images are coordinates of type @p T beside that of the points.
template <class T>
bool AreCoordinates(cv::Mat const & validity, std::initializer_list<cv::Mat> images)
{
    bool areFit = !validity.empty();
    for (cv::Mat const & image : images)
    {
        areFit = areFit && common::SameSize(validity, image) && image.type() == cv::DataType<T>::type;
    }
    return areFit;
}

} // namespace morvane::normal_internals
