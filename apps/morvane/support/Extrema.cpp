#include "morvane/support/Extrema.h"

#include "morvane/support/ProgramError.h"

#include <morvane/connexity/Labelling.h>
#include <morvane/connexity/RegionalExtrema.h>
#include <morvane/geodesy/Reconstruction.h>

#include <opencv2/imgproc.hpp>

namespace program
{

using namespace morvane::connexity;

namespace
{

/// The element of the paths between extrema.
int ShapeOf(eConnexityType connexity)
{
    return connexity == eConnexity4 || connexity == eConnexity4Wrapped ? cv::MORPH_CROSS : cv::MORPH_RECT;
}

} // namespace

cv::Mat LabelExtrema(cv::Mat const & image, Extremum kind, eConnexityType connexity)
{
    cv::Mat labels(image.size(), CV_32SC1);
    bool const done =
        kind == Extremum::Maximum ? LabelMaxima(image, connexity, labels) : LabelMinima(image, connexity, labels);
    if (!done) throw ProgramError("the extrema cannot be labelled");
    return labels;
}

cv::Mat LabelExtremaOfDynamic(cv::Mat const & image, Extremum kind, double dynamic, eConnexityType connexity)
{
    using namespace morvane::geodesy;
    // In double nothing saturates at the ends of a type, nor is rounded before it is compared.
    cv::Mat numbers;
    image.convertTo(numbers, CV_64F);
    int const shape = ShapeOf(connexity);
    cv::Mat marks(image.size(), CV_8UC1);
    bool const marked =
        kind == Extremum::Maximum ? HMaxima(numbers, shape, dynamic, marks) : HMinima(numbers, shape, dynamic, marks);
    cv::Mat labels(image.size(), CV_32SC1);
    if (!marked || !Label(marks, connexity, labels)) throw ProgramError("the extrema cannot be labelled");
    return labels;
}

} // namespace program
