#include <morvane/algorithm/Filling.h>

#include <morvane/common/ImageCompare.h>
#include <morvane/connexity/ZoneMeasures.h>

#include "common/Comparisons.h"
#include "common/Morphology.h"

#include <opencv2/imgproc.hpp>

namespace morvane::algorithm
{

using common::ImageCompare;
using common::kEqual;
using common::kGreater;

namespace
{

constexpr int kSmallestSize = 3;

/// Applies one of OpenCV's morphological operations with a square.
void FilterBySquare(cv::Mat const & image, cv::Mat & out, int operation, int size)
{
    common::Filter(image, out, operation, common::StructuringElement(cv::MORPH_RECT, size));
}

/// Filters the pixels that are 0; the others stay.
bool FilterZeros(cv::Mat const & image, cv::Mat & out, int operation, int size)
{
    if (size < kSmallestSize) return false;
    FilterBySquare(image, out, operation, size);
    return ImageCompare(image, kEqual, 0.0, out, image, out);
}

/// Filters the pixels that hold the maximum; the others stay.
bool FilterMaxima(cv::Mat const & image, cv::Mat & out, int operation, int size)
{
    if (size < kSmallestSize) return false;
    FilterBySquare(image, out, operation, size);
    double maximum = 0.0;
    cv::minMaxLoc(image, nullptr, &maximum);
    return ImageCompare(image, kEqual, maximum, out, image, out);
}

/// The pixels of @p image that are 0, each with the number of the measured region to which it is nearest; 0 elsewhere.
bool DivideHoles(cv::Mat const & image, int size, cv::Mat & holes)
{
    cv::Mat isZero;
    cv::compare(image, 0.0, isZero, cv::CMP_EQ);
    cv::Mat distances;
    cv::distanceTransform(isZero, distances, holes, cv::DIST_L2, size, cv::DIST_LABEL_CCOMP);
    return ImageCompare(image, kGreater, 0.0, cv::Scalar(0.0), holes, holes);
}

/// Steps that both interpolations begin with.
///
/// @param out the closed image
/// @param holes what the closing has left, see DivideHoles()
/// @param dilated the dilation of @p out, from which the holes take their values
bool PrepareHoles(cv::Mat const & image, cv::Mat & out, int size, cv::Mat & holes, cv::Mat & dilated)
{
    if (!FillImageWithClosing(image, out, size) || !DivideHoles(out, size, holes)) return false;
    FilterBySquare(out, dilated, cv::MORPH_DILATE, size);
    return true;
}

} // namespace

bool FillImageWithClosing(cv::Mat const & image, cv::Mat & out, int size)
{
    return FilterZeros(image, out, cv::MORPH_CLOSE, size);
}

bool FillImageWithDilation(cv::Mat const & image, cv::Mat & out, int size)
{
    return FilterZeros(image, out, cv::MORPH_DILATE, size);
}

bool FillImageWithErosion(cv::Mat const & image, cv::Mat & out, int size)
{
    return FilterMaxima(image, out, cv::MORPH_ERODE, size);
}

bool FillImageWithOpening(cv::Mat const & image, cv::Mat & out, int size)
{
    return FilterMaxima(image, out, cv::MORPH_OPEN, size);
}

// The values of the holes come from a table of zone measures, which is CV_32S for all integer types: of integer images,
// only CV_32S would fit, and this the morphology does not take.

bool FillHolesInterpolationWithMax(cv::Mat const & image, cv::Mat & out, int size)
{
    cv::Mat holes;
    cv::Mat dilated;
    if (!PrepareHoles(image, out, size, holes, dilated)) return false;
    cv::Mat const values = connexity::LabelFlatZonesNoZeroWithMax(holes, dilated, connexity::eConnexity8);
    return ImageCompare(out, kEqual, 0.0, values, out, out);
}

bool FillHolesInterpolationWithMin(cv::Mat const & image, cv::Mat & out, int size)
{
    cv::Mat holes;
    cv::Mat dilated;
    if (!PrepareHoles(image, out, size, holes, dilated)) return false;
    double maximum = 0.0;
    cv::minMaxLoc(out, nullptr, &maximum);
    // No empty pixel is to be the minimum of a hole.
    if (!ImageCompare(dilated, kEqual, 0.0, cv::Scalar(maximum + 1.0), dilated, dilated)) return false;
    cv::Mat const values = connexity::LabelFlatZonesNoZeroWithMin(holes, dilated, connexity::eConnexity8);
    return ImageCompare(out, kEqual, 0.0, values, out, out);
}

} // namespace morvane::algorithm
