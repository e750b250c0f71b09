#include <morvane/algorithm/MatchingScores.h>
#include <morvane/algorithm/TemplateMatching.h>
#include <morvane/common/Conversions.h>

#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace morvane::algorithm::OpenCV
{

namespace
{

/// Tells whether two images can be matched.
bool CanBeMatched(cv::Mat const & image, cv::Mat const & templ)
{
    bool const haveOneChannel = image.channels() == 1 && templ.channels() == 1;
    return !image.empty() && !templ.empty() && haveOneChannel && image.depth() == templ.depth();
}

/// How far the middle of the larger image lies from that of the smaller one at the first position, rounded down.
int MiddleOffset(int smaller, int larger)
{
    return common::TruncateTo<int>(std::floor(-(smaller * 0.5) - larger * 0.5));
}

/// The best translation at one angle.
struct AtAngle
{
    bool isFound = false;
    double score = 0.0;
    int x = 0;
    int y = 0;
};

} // namespace

bool FindBestMatching(cv::Mat const & image, cv::Mat const & templ, int & x, int & y, double & score, int method)
{
    if (!CanBeMatched(image, templ)) return false;
    cv::Mat imageValues;
    cv::Mat templValues;
    image.convertTo(imageValues, CV_32F);
    templ.convertTo(templValues, CV_32F);
    cv::Mat result;
    cv::matchTemplate(imageValues, templValues, result, method, cv::noArray());
    double least = 0.0;
    double greatest = 0.0;
    cv::Point leastPlace;
    cv::Point greatestPlace;
    cv::minMaxLoc(result, &least, &greatest, &leastPlace, &greatestPlace);
    bool const isDifference = method < cv::TM_CCORR;
    cv::Point const place = isDifference ? leastPlace : greatestPlace;
    x = place.x;
    y = place.y;
    score = isDifference ? -least : greatest;
    return true;
}

bool FindBestTranslation(cv::Mat const & image, cv::Mat const & templ, int & x, int & y, double & score, int method)
{
    if (!CanBeMatched(image, templ)) return false;
    bool const isSwapped = image.total() < templ.total();
    cv::Mat const & larger = isSwapped ? templ : image;
    cv::Mat const & smaller = isSwapped ? image : templ;
    cv::Size const border(smaller.cols - 1, smaller.rows - 1);
    cv::Mat canvas = cv::Mat::zeros(larger.size() + border + border, larger.type());
    larger.copyTo(canvas(cv::Rect(cv::Point(border), larger.size())));
    if (!FindBestMatching(canvas, smaller, x, y, score, method)) return false;
    int const sign = isSwapped ? -1 : 1;
    x = sign * (x + MiddleOffset(smaller.cols, larger.cols));
    y = sign * (y + MiddleOffset(smaller.rows, larger.rows));
    score /= static_cast<double>(smaller.total());
    return true;
}

bool FindBestTransformation(
    cv::Mat const & image, cv::Mat const & templ, int & x, int & y, double & angle, double & score, int method,
    double angleStart, double angleEnd, double angleStep)
{
    // A negative number becomes a length that no vector has.
    int const count = common::TruncateTo<int>(std::ceil((angleEnd - angleStart) / angleStep));
    std::vector<double> angles(static_cast<std::size_t>(count));
    double next = angleStart;
    for (double & value : angles)
    {
        value = next;
        next += angleStep;
    }
    std::vector<AtAngle> found(angles.size());
    auto const search = [&](cv::Range const & range) {
        for (int i = range.start; i < range.end; ++i)
        {
            AtAngle & best = found[static_cast<std::size_t>(i)];
            cv::Mat rotated;
            double dx = 0.0;
            double dy = 0.0;
            (void)utils::RotateImage(templ, angles[static_cast<std::size_t>(i)], rotated, dx, dy);
            best.isFound = FindBestTranslation(image, rotated, best.x, best.y, best.score, method);
        }
    };
    if (count > 0) cv::parallel_for_({0, count}, search);
    // One after the other, so that of equals the first wins whatever the threads.
    bool areAllFound = true;
    score = std::numeric_limits<double>::lowest();
    for (std::size_t i = 0; i < found.size(); ++i)
    {
        areAllFound = areAllFound && found[i].isFound;
        if (!found[i].isFound || !(found[i].score > score)) continue;
        score = found[i].score;
        x = found[i].x;
        y = found[i].y;
        angle = angles[i];
    }
    return areAllFound;
}

} // namespace morvane::algorithm::OpenCV
