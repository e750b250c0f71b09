/// @file
/// Calls of Label as tests make them.
#pragma once

#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

namespace morvane::tests
{

/// A label image full of rubbish, so that an element that is not written shows.
inline cv::Mat DirtyLabels(cv::Size size, int type)
{
    cv::Mat labels(size.height, size.width, type);
    FillBytes(labels, 0x5A);
    return labels;
}

/// The labels of @p image in a fresh label image; expects that the call succeeds and writes in place.
inline cv::Mat Labelled(cv::Mat const & image, int connexity, int type = CV_32SC1)
{
    cv::Mat labels = DirtyLabels(image.size(), type);
    uchar const * const place = labels.data;
    EXPECT_TRUE(connexity::Label(image, Shape(connexity), labels));
    EXPECT_EQ(labels.data, place) << "the label image was reallocated";
    return labels;
}

} // namespace morvane::tests
