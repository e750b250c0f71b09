#include "algorithm/RotationSquare.h"
#include "common/Dispatch.h"
#include "warping/AffineMap.h"

#include <morvane/algorithm/MatchingScores.h>

#include <opencv2/imgproc.hpp>

namespace morvane::algorithm::utils
{

namespace
{

/// The size by rows and columns, of which matrices of more than two dimensions have -1.
cv::Size SizeOf(cv::Mat const & image)
{
    return {image.cols, image.rows};
}

/// The matrix that turns a square about its middle, and what is told of it.
cv::Mat TurnAbout(int side, double angle, double & dx, double & dy)
{
    float const middle = static_cast<float>(side) * 0.5F;
    cv::Mat matrix = cv::getRotationMatrix2D({middle, middle}, angle, 1.0);
    dx = matrix.at<double>(0, 2) - double{middle};
    dy = matrix.at<double>(1, 2) - double{middle};
    return matrix;
}

/// Copies the pixels of an image to where a map leads to them, from a square that is 0 around the image.
template <class T>
void Turn(cv::Mat const & image, cv::Mat const & matrix, cv::Mat & out)
{
    warping::AffineMap const map(matrix, out.cols);
    cv::Rect const place = PlaceInSquare(SizeOf(image));
    if (place.empty()) return;
    T const * const pixels = image.ptr<T>();
    auto const stride = static_cast<std::ptrdiff_t>(image.step1());
    std::ptrdiff_t const origin = place.y * stride + place.x;
    for (int y = 0; y < out.rows; ++y)
    {
        T * const row = out.ptr<T>(y);
        map.ForEachWithin(y, place, stride, [&](int x, std::ptrdiff_t found) { row[x] = pixels[found - origin]; });
    }
}

/// Makes the square and its matrix.
cv::Mat Prepare(cv::Mat const & image, double angle, cv::Mat & out, double & dx, double & dy)
{
    int const side = SideOfSquare(SizeOf(image));
    cv::Mat matrix = TurnAbout(side, angle, dx, dy);
    out = cv::Mat::zeros(side, side, image.type());
    return matrix;
}

} // namespace

bool RotateImage(cv::Mat const & image, double angle, cv::Mat & out, double & dx, double & dy)
{
    cv::Mat const matrix = Prepare(image, angle, out, dx, dy);
    if (!common::IsSingleChannel(image)) return true;
    // The result of the transform is not told.
    (void)common::VisitElement(image, [&]<class T> {
        Turn<T>(image, matrix, out);
        return true;
    });
    return true;
}

bool RotateBinaryImage(cv::Mat const & image, double angle, cv::Mat & out, double & dx, double & dy)
{
    // Bits are merged into 0: nothing but copies.
    bool const isBinary = image.depth() == CV_8U || image.depth() == CV_16U || image.depth() == CV_32S;
    if (isBinary) return RotateImage(image, angle, out, dx, dy);
    (void)Prepare(image, angle, out, dx, dy);
    return true;
}

bool RotateImageUsingOpenCVTransform(cv::Mat const & image, double angle, cv::Mat & out, double & dx, double & dy)
{
    int const side = SideOfSquare(SizeOf(image));
    cv::Mat canvas = cv::Mat::zeros(side, side, image.type());
    if (!image.empty()) image.copyTo(canvas(PlaceInSquare(SizeOf(image))));
    cv::Mat const matrix = Prepare(image, angle, out, dx, dy);
    cv::warpAffine(canvas, out, matrix, out.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar());
    return true;
}

cv::Point_<double>
UpdateStationPosition(cv::Point_<int> const & size, cv::Point_<double> const & station, double const & angleRadians)
{
    cv::Rect const place = PlaceInSquare(cv::Size(size.x, size.y));
    cv::Point_<double> const centre(size.x * 0.5 + place.x, size.y * 0.5 + place.y);
    double const dx = place.x + station.x - centre.x;
    double const dy = place.y + station.y - centre.y;
    double const cosine = std::cos(angleRadians);
    double const sine = std::sin(angleRadians);
    return {cosine * dx - sine * dy + centre.x, cosine * dy + sine * dx + centre.y};
}

} // namespace morvane::algorithm::utils
