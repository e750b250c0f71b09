#include "support/FitOracle.h"

#include <morvane/algorithm/MatchingScores.h>
#include <morvane/algorithm/TemplateMatching.h>

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <limits>
#include <ostream>

namespace morvane::tests
{

namespace
{

bool IsRefused(cv::Mat const & image, cv::Mat const & templ)
{
    return image.empty() || templ.empty() || image.channels() > 1 || templ.channels() > 1 ||
           image.depth() != templ.depth();
}

} // namespace

void PrintTo(Fit const & fit, std::ostream * stream)
{
    *stream << (fit.answer ? "true" : "false") << ", x " << fit.x << ", y " << fit.y << ", angle " << fit.angle
            << ", score " << fit.score;
}

Fit OracleMatching(cv::Mat const & image, cv::Mat const & templ, int method)
{
    Fit fit;
    if (IsRefused(image, templ)) return fit;
    cv::Mat wide;
    cv::Mat small;
    image.convertTo(wide, CV_32F, 1.0, 0.0);
    templ.convertTo(small, CV_32F, 1.0, 0.0);
    cv::Mat result;
    cv::matchTemplate(wide, small, result, method, cv::noArray());
    double least = 0.0;
    double most = 0.0;
    cv::Point atLeast;
    cv::Point atMost;
    cv::minMaxLoc(result, &least, &most, &atLeast, &atMost);
    bool const seeksLeast = method < 2;
    fit.answer = true;
    fit.x = seeksLeast ? atLeast.x : atMost.x;
    fit.y = seeksLeast ? atLeast.y : atMost.y;
    fit.score = seeksLeast ? -least : most;
    return fit;
}

Fit OracleTranslation(cv::Mat const & image, cv::Mat const & templ, int method)
{
    if (IsRefused(image, templ)) return {};
    bool const isSwapped = image.total() < templ.total();
    cv::Mat const & large = isSwapped ? templ : image;
    cv::Mat const & small = isSwapped ? image : templ;
    cv::Mat canvas = cv::Mat::zeros(large.rows + 2 * (small.rows - 1), large.cols + 2 * (small.cols - 1), large.type());
    large.copyTo(canvas(cv::Rect({small.cols - 1, small.rows - 1}, large.size())));
    Fit fit = OracleMatching(canvas, small, method);
    fit.x += static_cast<int>(std::floor(-(small.cols * 0.5) - large.cols * 0.5));
    fit.y += static_cast<int>(std::floor(-(small.rows * 0.5) - large.rows * 0.5));
    if (isSwapped)
    {
        fit.x = -fit.x;
        fit.y = -fit.y;
    }
    fit.score /= static_cast<double>(small.total());
    return fit;
}

Fit OracleTransformation(cv::Mat const & image, cv::Mat const & templ, int method, Angles const & angles)
{
    Fit best;
    best.answer = true;
    best.score = std::numeric_limits<double>::lowest();
    int const count = static_cast<int>(std::ceil((angles.end - angles.start) / angles.step));
    double angle = angles.start;
    for (int i = 0; i < count; ++i, angle += angles.step)
    {
        cv::Mat rotated;
        double dx = 0.0;
        double dy = 0.0;
        algorithm::utils::RotateImage(templ, angle, rotated, dx, dy);
        Fit const fit = OracleTranslation(image, rotated, method);
        best.answer = best.answer && fit.answer;
        if (!fit.answer || !(fit.score > best.score)) continue;
        best.x = fit.x;
        best.y = fit.y;
        best.angle = angle;
        best.score = fit.score;
    }
    return best;
}

Fit FitOf(cv::Mat const & image, cv::Mat const & templ, int method)
{
    Fit fit;
    fit.answer = algorithm::OpenCV::FindBestMatching(image, templ, fit.x, fit.y, fit.score, method);
    return fit;
}

Fit TranslationOf(cv::Mat const & image, cv::Mat const & templ, int method)
{
    Fit fit;
    fit.answer = algorithm::OpenCV::FindBestTranslation(image, templ, fit.x, fit.y, fit.score, method);
    return fit;
}

Fit TransformationOf(cv::Mat const & image, cv::Mat const & templ, int method, Angles const & angles)
{
    Fit fit;
    fit.answer = algorithm::OpenCV::FindBestTransformation(
        image, templ, fit.x, fit.y, fit.angle, fit.score, method, angles.start, angles.end, angles.step);
    return fit;
}

} // namespace morvane::tests
