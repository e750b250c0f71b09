/// @file
/// What the normal classes ask of their images.
#pragma once

#include "common/Dispatch.h"

#include <opencv2/core.hpp>

#include <initializer_list>

namespace morvane::normal_internals
{

/// 1 where a point exists, else 0; empty for what is no image of one channel and one of the six element types.
inline cv::Mat ValidityOf(cv::Mat const & depth)
{
    if (!common::IsRaster(depth) || !common::IsSingleChannel(depth) || depth.empty()) return {};
    return common::VisitElement(depth, [&]<class T> {
        cv::Mat validity;
        cv::compare(depth, 0, validity, cv::CMP_NE);
        validity.setTo(1.0, validity);
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
